"""Counts the instructions of work of one size and of its double.

The workloads are those of proofs/growth.cpp; valgrind counts. What takes more than 2.5 times as long for
twice as much is a hole for whoever may choose the input.

What takes 5 % more instructions than instructions.json says has lost a fast way. After a change that is meant,
`python3 tools/prove/growth.py` writes that file anew. Its processor had AVX2, which valgrind knows.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess

TITLE = "Growth"
SOURCES = ("proofs",)
REQUIRED = 2.5
FOR_CI = 16  # the quick form counts each so manieth workload
USUAL = pathlib.Path(__file__).with_name("instructions.json")
MORE = 1.05  # times the usual instructions

# Workloads that may grow faster, and why.
EXCEPTIONS = {
    "a list of arguments, filled, copied and cleared":
        "not bound by its output: the names of a varg_list are unique, and the list is a vector without an index, "
        "so each new name is compared with all others",
    "settings: a deep key saved": "bound by its output: each level repeats the key of the level above",
    "settings: names of a deep tree": "bound by its output: each level repeats the key of the level above",
}

# What a page lacks may take so many times the instructions of what the page has. The quick form always counts
# the first two pairs.
TIMES_CLEAN = 20
PAIRS = (
    ("code page 1252, encoded: Chinese", "code page 1252, encoded: its own characters"),
    ("gh2::to_ansi in the C locale: German", "gh2::to_ansi in the C locale: ASCII"),
    *((f"code page, what it lacks: {page}", f"code page, what it has: {page}")
      for page in (932, 936, 949, 950, 1252, 1255, 20866, 28591)),
)


def instructions(program, name, size, folder, library=None, seconds=None):
    """The instructions of a workload with a library from another folder, or None if it fails."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    found = None
    try:
        done = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, name,
                               str(size)], cwd=folder, capture_output=True, text=True, errors="replace",
                              env=dict(os.environ, **({"LD_LIBRARY_PATH": str(library)} if library else {})),
                              timeout=seconds)
        if done.returncode == 0:
            found = re.search(r"Collected : (\d+)", done.stderr)
    except subprocess.TimeoutExpired:
        pass
    shutil.rmtree(folder, ignore_errors=True)
    return int(found.group(1)) if found else None


def workloads_of(context, program):
    """The size of each workload, whether it grows faster by rule, and its name."""
    listing = [line.split("\t") for line in context.run(program, "--list").splitlines()]
    return [(int(size), known == "1", name) for size, known, name in listing]


def measure(context):
    build = context.build("release", "proofs", settings=("-DTOVA_BUILD_PROOFS=ON",))
    program = build / "proofs" / "proof_growth"
    listing = workloads_of(context, program)
    if context.quick:
        always = {name for pair in PAIRS[:2] for name in pair}
        chosen = listing[context.seed % FOR_CI::FOR_CI]
        listing = chosen + [one for one in listing if one[2] in always and one not in chosen]

    def count(name, size):
        counted = instructions(program, name, size, context.scratch / re.sub(r"\W+", "-", name))
        if counted is None:
            raise SystemExit(f"prove growth: {name} {size} failed")
        return counted

    start = count(listing[0][2], 0)

    def both(entry):
        size, known, name = entry
        once, twice = (count(name, size * times) - start for times in (1, 2))
        return {"name": name, "size": size, "once": once, "twice": twice, "known": known}

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return {"workloads": list(pool.map(both, listing))}


def usual():
    return json.loads(USUAL.read_text()) if USUAL.is_file() else {}


def ratio(one):
    return one["twice"] / one["once"]


def pairs_of(result):
    """The pairs of which both were counted, each with its ratio."""
    once = {one["name"]: one["once"] for one in result["workloads"]}
    return [(lacking, having, once[lacking] / once[having]) for lacking, having in PAIRS
            if lacking in once and having in once]


def report(result):
    above = [one for one in result["workloads"] if ratio(one) >= REQUIRED]
    rows = "\n".join(f"| {one['name']} | {one['size']:,} | {one['once']:,} | {ratio(one):.2f} | "
                     f"{EXCEPTIONS.get(one['name'], '') if one['known'] else ''} |"
                     for one in sorted(result["workloads"], key=ratio, reverse=True))
    worst = max(pairs_of(result), key=lambda pair: pair[2])
    return f"""{len(result['workloads'])} workloads, each with the instructions of one size and of its double (valgrind's
callgrind). {len(result['workloads']) - len(above)} grow by less than {REQUIRED}; the reason of each other one is in
its row. None takes {MORE - 1:.0%} more instructions than the last time they were recorded
(`tools/prove/{USUAL.name}`). Characters that a code page lacks take at most {worst[2]:.1f} times the instructions of
those that it has ({worst[0]}); {TIMES_CLEAN} times are allowed.

| workload | size | instructions | twice the size | why more than {REQUIRED} is allowed |
|---|---|---|---|---|
{rows}"""


def failures(result):
    missed = [f"{one['name']} grows by {ratio(one):.2f}" for one in result["workloads"]
              if ratio(one) >= REQUIRED and not one["known"]]
    missed += [f"{one['name']} may grow faster, but has no reason" for one in result["workloads"]
               if one["known"] and one["name"] not in EXCEPTIONS]
    missed += [f"{lacking} takes {times:.1f} times the instructions of {having}"
               for lacking, having, times in pairs_of(result) if times > TIMES_CLEAN]
    recorded = usual()
    for one in result["workloads"]:
        before = recorded.get(one["name"])
        if before is None:
            missed.append(f"{one['name']} is not recorded; write {USUAL.name} anew")
        elif one["once"] > before * MORE:
            missed.append(f"{one['name']} takes {one['once'] / before:.2f} times its instructions in {USUAL.name}")
    return missed


def main():
    import prove

    result = measure(prove.Context("growth", False, 1, os.cpu_count()))
    recorded = {one["name"]: one["once"] for one in result["workloads"]}
    USUAL.write_text(json.dumps(recorded, indent=1, sort_keys=True) + "\n")


if __name__ == "__main__":
    main()
