#!/usr/bin/env python3
"""Runs the benchmarks and writes docs/performance.md: other libraries beside ours, as ratios.

A benchmark's name is OPERATION/CASE/LIBRARY. All libraries of one operation and case run in one
process, repeatedly and in random order. A ratio is the other library's median CPU time divided by
ours, so above 1 ours is faster.
"""
import argparse
import collections
import json
import math
import pathlib
import platform
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def describe_machine(cpuinfo, meminfo, os_release, compiler_version):
    """One line that lets a reader compare: processor, memory, distribution and compiler.

    The kernel is left out: its version names a build of the machine that measured, and says nothing
    about the speed of the library.
    """
    model = re.search(r"^model name\s*:\s*(.*)$", cpuinfo, re.M)
    cores = len(re.findall(r"^processor\b", cpuinfo, re.M))
    memory = int(re.search(r"^MemTotal:\s*(\d+) kB", meminfo, re.M).group(1))
    system = re.search(r'^PRETTY_NAME="?([^"\n]*)', os_release, re.M)
    return (f"{model.group(1) if model else platform.machine()}, {cores} cores, "
            f"{memory / 2**20:.0f} GiB; {system.group(1) if system else 'unknown distribution'}; "
            f"g++ {compiler_version}, -O2")


def machine():
    compiler = subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True, check=True)
    return describe_machine(pathlib.Path("/proc/cpuinfo").read_text(),
                            pathlib.Path("/proc/meminfo").read_text(),
                            pathlib.Path("/etc/os-release").read_text(), compiler.stdout.strip())


def ratio_text(ratio):
    """A ratio with at least three significant digits and no exponent, so that none reads 0.00."""
    if ratio <= 0:
        raise ValueError(f"not a ratio of two times: {ratio}")

    def decimals(value):
        return max(2 - math.floor(math.log10(value)), 0)

    rounded = round(ratio, decimals(ratio))
    return f"{rounded:.{decimals(rounded)}f}"  # 0.9996 becomes 1.00 and not 1.000


def run(program, repetitions, seconds, pattern):
    command = [str(program), "--benchmark_format=json", f"--benchmark_repetitions={repetitions}",
               "--benchmark_enable_random_interleaving=true",
               f"--benchmark_min_time={seconds}"]
    if pattern:
        command.append(f"--benchmark_filter={pattern}")
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    times = collections.defaultdict(list)
    for row in json.loads(done.stdout)["benchmarks"]:
        if row.get("run_type") == "iteration" and not row.get("error_occurred"):
            name = re.sub(r"/(real_time|process_time|iterations:\d+)$", "", row["run_name"])
            times[re.sub(r"/(real_time|process_time|iterations:\d+)$", "", name)].append(
                row["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]])
    return {name: statistics.median(values) for name, values in times.items()}


def table(times):
    """One Markdown table: a row for each operation and case, a column for each other library."""
    groups = {}
    for name, time in times.items():
        head, _, library = name.rpartition("/")
        groups.setdefault(head, {})[library] = time
    peers = sorted({library for group in groups.values() for library in group} - {"tova"})
    lines = ["| operation | " + " | ".join(peers) + " |", "|---|" + "---:|" * len(peers)]
    for head, group in sorted(groups.items()):
        if "tova" not in group or len(group) == 1:
            continue
        cells = [ratio_text(group[peer] / group["tova"]) if peer in group else "" for peer in peers]
        lines.append(f"| {head} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def page(machine_line, tables):
    """The whole page, from the pairs of a family's name and its table."""
    lines = ["# Performance", "",
             "Each number is another library's median CPU time divided by ours, for the same work in the",
             "same process: above 1, ours is faster. `./run bench` writes this page. A library that is not",
             "installed has no column. The inputs and the calls are in `benchmarks/`.", "",
             f"Measured on: {machine_line}.", ""]
    for family, text in tables:
        lines += [f"## {family}", "", text, ""]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("families", nargs="*",
                        help="run only these; the page is then printed and not written")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=0.05, help="minimum time of a repetition")
    parser.add_argument("--filter", default="", help="run only benchmarks that match; as above")
    options = parser.parse_args()

    programs = sorted((pathlib.Path(options.build) / "benchmarks").glob("bench_*"))
    programs = [p for p in programs if p.is_file() and p.stat().st_mode & 0o100
                and (not options.families or p.name[len("bench_"):] in options.families)]
    tables = []
    for program in programs:
        print(f"running {program.name}", file=sys.stderr)
        times = run(program, options.repetitions, options.seconds, options.filter)
        tables.append((program.name[len("bench_"):], table(times)))
    text = page(machine(), tables)
    print(text)
    if not options.families and not options.filter:
        (ROOT / "docs" / "performance.md").write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
