"""Runs every fuzz target for a fixed number of inputs, and keeps a tally over all runs.

Each target runs 100,000 inputs, the fast ones as many more as make 10 million together. The tally,
fuzz_tally.json, is committed: it says which commit was fuzzed with which seed, and how often. CI runs
the targets for a fixed time by `./run fuzz`, so the quick form has nothing to do.
"""
import concurrent.futures
import json
import re
import subprocess
import time

TITLE = "Fuzzing"
SOURCES = ("fuzz", "programs", "tests")
TALLY = "tools/prove/fuzz_tally.json"
EACH = 100_000
TOGETHER = 10_000_000
TARGETS = 20


def run_target(context, build, name, runs, seed):
    """Runs one target. Returns the executions, the time and what libFuzzer found."""
    corpus = context.scratch / "corpus" / name
    found = context.scratch / "found" / name
    for folder in (corpus, found):
        folder.mkdir(parents=True, exist_ok=True)
    command = [build / "fuzz" / f"fuzz_{name}", f"-runs={runs}", f"-seed={seed}", "-timeout=20",
               "-rss_limit_mb=4096", f"-artifact_prefix={found}/", "-print_final_stats=1"]
    dictionary = context.root / "fuzz" / f"{name}.dict"
    if dictionary.is_file():
        command.append(f"-dict={dictionary}")
    seeds = context.root / "fuzz" / "seeds" / name
    begin = time.monotonic()
    done = subprocess.run([str(part) for part in command + [corpus] + ([seeds] if seeds.is_dir() else [])],
                          cwd=context.scratch, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True, errors="replace")
    (context.scratch / f"{name}.log").write_text(done.stderr)
    count = re.search(r"number_of_executed_units:\s*(\d+)", done.stderr)
    return int(count.group(1)) if count else 0, time.monotonic() - begin, done.returncode != 0


def measure(context):
    if context.quick:
        return {"targets": [], "tally": tally(context)}
    build = context.build("fuzz")
    names = sorted(path.stem for path in (context.root / "fuzz").glob("*.cpp"))
    targets = {name: {"name": name, "runs": 0, "seconds": 0.0, "failed": False} for name in names}

    def run(name, runs, seed):
        count, seconds, failed = run_target(context, build, name, runs, seed)
        target = targets[name]
        target["runs"] += count
        target["seconds"] += seconds
        target["failed"] |= failed
        context.say(f"{name}: {count:,} inputs in {seconds:.0f} s{', FAILED' if failed else ''}")

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        list(pool.map(lambda name: run(name, EACH, context.seed), names))
        # What is left goes to the targets by their speed, so that all of them take the same time.
        left = TOGETHER - sum(target["runs"] for target in targets.values())
        speeds = {name: target["runs"] / target["seconds"] for name, target in targets.items()}
        if left > 0:
            list(pool.map(lambda name: run(name, int(left * speeds[name] / sum(speeds.values())) + 1,
                                           context.seed + 1), names))
    record(context, targets)
    return {"targets": list(targets.values()), "tally": tally(context)}


def tally(context):
    path = context.root / TALLY
    return json.loads(path.read_text()) if path.is_file() else []


def record(context, targets):
    commit = context.run("git", "rev-parse", "--short=12", "HEAD").strip()
    runs = [run for run in tally(context) if (run["commit"], run["seed"]) != (commit, context.seed)]
    runs.append({"commit": commit, "seed": context.seed,
                 "executions": {name: target["runs"] for name, target in sorted(targets.items())}})
    (context.root / TALLY).write_text(json.dumps(runs, indent=1) + "\n")


def report(result):
    rows = "\n".join(f"| `{one['name']}` | {one['runs']:,} | {'**yes**' if one['failed'] else 'none'} |"
                     for one in result["targets"])
    total = sum(one["runs"] for one in result["targets"])
    ever = sum(sum(run["executions"].values()) for run in result["tally"])
    return f"""{len(result['targets'])} targets read what comes from outside, under the address and undefined-behaviour
sanitizers, each with an oracle that knows the right result. This run: **{total:,}** inputs. Over the
{len(result['tally'])} recorded runs: {ever:,} (`{TALLY}`).

| target | inputs | findings |
|---|---|---|
{rows}"""


def failures(result):
    missed = [f"{one['name']} found an input that fails" for one in result["targets"] if one["failed"]]
    missed += [f"{one['name']} ran {one['runs']:,} inputs only" for one in result["targets"]
               if one["runs"] < EACH]
    if result["targets"] and len(result["targets"]) < TARGETS:
        missed.append(f"there are {len(result['targets'])} targets, {TARGETS} are required")
    return missed
