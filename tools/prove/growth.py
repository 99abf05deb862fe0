"""Counts the instructions of work of one size and of its double.

The workloads are those of proofs/growth.cpp; valgrind counts. What takes more than 2.5 times as long for
twice as much is a hole for whoever may choose the input.
"""
import concurrent.futures
import re
import shutil
import subprocess

TITLE = "Growth"
SOURCES = ("proofs",)
REQUIRED = 2.5
FOR_CI = 16  # the quick form counts each so manieth workload


def instructions(program, name, size, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    done = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, name,
                           str(size)], cwd=folder, capture_output=True, text=True, errors="replace")
    shutil.rmtree(folder, ignore_errors=True)
    found = re.search(r"Collected : (\d+)", done.stderr)
    if done.returncode != 0 or not found:
        raise SystemExit(f"prove growth: {name} {size} failed:\n{done.stderr[-2000:]}")
    return int(found.group(1))


def measure(context):
    build = context.build("release", "proofs", settings=("-DTOVA_BUILD_PROOFS=ON",))
    program = build / "proofs" / "proof_growth"
    listing = [line.split("\t") for line in context.run(program, "--list").splitlines()]
    if context.quick:
        listing = listing[context.seed % FOR_CI::FOR_CI]
    start = instructions(program, listing[0][2], 0, context.scratch / "start")

    def count(entry):
        size, known, name = entry
        folder = context.scratch / re.sub(r"\W+", "-", name)
        once, twice = (instructions(program, name, int(size) * times, folder) - start for times in (1, 2))
        return {"name": name, "size": int(size), "once": once, "twice": twice, "known": known == "1"}

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return {"workloads": list(pool.map(count, listing))}


def ratio(one):
    return one["twice"] / one["once"]


def report(result):
    above = [one for one in result["workloads"] if ratio(one) >= REQUIRED]
    rows = "\n".join(f"| {one['name']} | {one['size']:,} | {one['once']:,} | {ratio(one):.2f} | "
                     f"{'by rule' if one['known'] else ''} |"
                     for one in sorted(result["workloads"], key=ratio, reverse=True))
    return f"""{len(result['workloads'])} workloads, each with the instructions of one size and of its double (valgrind's
callgrind). {len(result['workloads']) - len(above)} grow by less than {REQUIRED}; those that grow faster by rule are marked: their output is
longer, or every new name is compared with all others.

| workload | size | instructions | twice the size | |
|---|---|---|---|---|
{rows}"""


def failures(result):
    return [f"{one['name']} grows by {ratio(one):.2f}" for one in result["workloads"]
            if ratio(one) >= REQUIRED and not one["known"]]
