"""Reads the protections of the shared object, and measures what they cost."""
import json
import re
import statistics
import subprocess

TITLE = "Hardening"
SOURCES = ("benchmarks", "tests/abi/hardening_test.py")
REQUIRED = 1.05  # our time with the protections, as a ratio to the time without them
ROUNDS = 5

# One benchmark of each kind of work, as patterns of Google Benchmark.
SAMPLES = {
    "unicode": "utf8_to_utf16/(latin|cjk)/4KiB/tova$",
    "strings": "(split_string/short|replace_all/grow)/tova$",
    "numbers": "(parse_int|print_int|parse_double|print_double)/.*/tova$",
    "variant": "(construct|copy|convert)/.*/tova$",
    "xml": "/tova$",
    "catalogs": "/tova$",
    "messages": "/tova$",
    "config": "/tova$",
    "serialization": "/tova$",
    "dates": "/tova$",
}


def times(program, pattern, library):
    done = subprocess.run([program, f"--benchmark_filter={pattern}", "--benchmark_format=json",
                           "--benchmark_min_time=0.05"], env={"LD_LIBRARY_PATH": str(library), "PATH": "/usr/bin:/bin"},
                          capture_output=True, text=True)
    text = done.stdout[done.stdout.find("{"):]
    return {one["name"]: one["cpu_time"] for one in json.loads(text)["benchmarks"]} if text else {}


def measure(context):
    release = context.build("release", "tova")
    checked = subprocess.run([context.root / "tests/abi/hardening_test.py", release / "libtova.so"],
                             capture_output=True, text=True)
    result = {"protections": checked.stdout.splitlines(), "costs": {}, "largest": None}
    if context.quick:
        return result
    hard = context.build("bench")
    plain = context.build("bench", "tova", folder="bench-plain", settings=("-DTOVA_HARDENING=OFF",))
    ratios = {}
    for program, pattern in SAMPLES.items():
        path = hard / "benchmarks" / f"bench_{program}"
        for _ in range(ROUNDS):
            with_them, without = times(path, pattern, hard), times(path, pattern, plain)
            for name in with_them.keys() & without.keys():
                ratios.setdefault((program, name), []).append(with_them[name] / without[name])
        of_program = [statistics.median(one) for (owner, _), one in ratios.items() if owner == program]
        if of_program:
            result["costs"][program] = statistics.geometric_mean(of_program)
            context.say(f"{program}: {result['costs'][program]:.3f} over {len(of_program)} benchmarks")
    if ratios:
        (program, name), largest = max(((key, statistics.median(one)) for key, one in ratios.items()),
                                       key=lambda entry: entry[1])
        result["largest"] = {"name": f"{program}: {name.removesuffix('/tova')}", "ratio": largest}
    return result


def report(result):
    protections = "\n".join("- " + re.sub(r"^ok +", "", line).replace(" []", "") for line in result["protections"])
    rows = "\n".join(f"| {name} | {ratio:.3f} |" for name, ratio in sorted(result["costs"].items()))
    whole = statistics.geometric_mean(result["costs"].values()) if result["costs"] else None
    costs = f"""

Time with these protections, as a ratio to the time of the same sources without them (`TOVA_HARDENING=OFF`;
medians of {ROUNDS} rounds, geometric means): **{whole:.3f}** over all. The largest of a single benchmark is
{result['largest']['ratio']:.3f}, of `{result['largest']['name']}`.

| benchmarks | ratio |
|---|---|
{rows}""" if whole else ""
    return f"""`tests/abi/hardening_test.py` reads these from the built library:

{protections}{costs}"""


def failures(result):
    missed = [line for line in result["protections"] if not line.startswith("ok")]
    if result["costs"] and statistics.geometric_mean(result["costs"].values()) > REQUIRED:
        missed.append(f"the protections cost more than {REQUIRED:.2f}")
    return missed
