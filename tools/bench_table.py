#!/usr/bin/env python3
"""Runs the benchmarks and writes docs/performance.md: tova beside its peers, as ratios.

A benchmark's name is OPERATION/CASE/LIBRARY; all libraries of one operation and case run in one
process, in turn, repeatedly, and a ratio is a peer's median time over ours: above 1 we are faster.
"""
import argparse
import collections
import json
import pathlib
import platform
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def machine():
    info = pathlib.Path("/proc/cpuinfo").read_text()
    model = re.search(r"model name\s*:\s*(.*)", info)
    cores = len(re.findall(r"^processor", info, re.M))
    memory = int(re.search(r"MemTotal:\s*(\d+)", pathlib.Path("/proc/meminfo").read_text()).group(1))
    compiler = subprocess.run(["g++", "--version"], capture_output=True, text=True).stdout
    system = re.search(r'PRETTY_NAME="([^"]*)"', pathlib.Path("/etc/os-release").read_text())
    return (f"{model.group(1) if model else platform.machine()}, {cores} cores, "
            f"{memory / 2**20:.0f} GiB; {system.group(1)}, Linux {platform.release()}; "
            f"{compiler.splitlines()[0]}, -O2")


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
    """One Markdown table: a row an operation and case, a column a peer."""
    groups = {}
    for name, time in times.items():
        head, _, library = name.rpartition("/")
        groups.setdefault(head, {})[library] = time
    peers = sorted({library for group in groups.values() for library in group} - {"tova"})
    lines = ["| operation | " + " | ".join(peers) + " |", "|---|" + "---:|" * len(peers)]
    for head, group in sorted(groups.items()):
        if "tova" not in group or len(group) == 1:
            continue
        cells = [f"{group[peer] / group['tova']:.2f}" if peer in group else "" for peer in peers]
        lines.append(f"| {head} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("families", nargs="*", help="run only these; the page is then not written")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=0.05, help="least time a repetition")
    parser.add_argument("--filter", default="")
    options = parser.parse_args()

    programs = sorted((pathlib.Path(options.build) / "benchmarks").glob("bench_*"))
    programs = [p for p in programs if p.is_file() and p.stat().st_mode & 0o100
                and (not options.families or p.name[len("bench_"):] in options.families)]
    page = ["# Performance", "",
            "Each number is a peer's median CPU time over ours, both measured in one process of one",
            "run, in random order: above 1 we are faster. Written by `./run bench`; a peer that was",
            "not installed leaves its column out. Inputs and calls stand in `benchmarks/`.", "",
            f"Measured on: {machine()}.", ""]
    for program in programs:
        print(f"running {program.name}", file=sys.stderr)
        times = run(program, options.repetitions, options.seconds, options.filter)
        page += [f"## {program.name[len('bench_'):]}", "", table(times), ""]
    text = "\n".join(page)
    print(text)
    if not options.families and not options.filter:
        (ROOT / "docs" / "performance.md").write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
