#!/usr/bin/env python3
"""Runs the benchmarks and writes docs/performance.md: our time as a ratio to other libraries'.

    bench_table.py BUILD                 every row; writes the page, its charts and the baseline
    bench_table.py BUILD --check         every row, compared with the baseline; writes nothing
    bench_table.py BUILD 5 numbers       row 5 and all of the program bench_numbers; writes nothing
    bench_table.py BUILD --quick 5       one round instead of five, for developers: noisy

benchmarks/rows.json lists the rows: patterns of cells with the limits that they must reach. A limit
is a ratio to the fastest of the libraries that its key names; "best" names all peers. A cell is
OPERATION/CASE, and its benchmarks are called OPERATION/CASE/LIBRARY. Two libraries are not peers: "floor"
does only what the interface cannot avoid, and "plain" is our code without its fast paths. A program
measures its plain form itself. For the rows with "kernels", the plain form is the same program with a copy
of the library that uses the portable form of the kernels.

Each cell runs once a round, in a process of its own on one core, all libraries in random order. A
ratio is our CPU time divided by the other's: the median over the rounds of the ratios within them.
"""
import argparse
import collections
import fnmatch
import html
import json
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "performance.md"
IMAGES = ROOT / "docs" / "images"
ROWS = ROOT / "benchmarks" / "rows.json"
NOTES = ROOT / "benchmarks" / "notes.md"
BASELINE = ROOT / "benchmarks" / "baseline.json"

NO_PEERS = ("floor", "plain")
TOLERANCE = 1.25  # how much slower a cell may be than the baseline
SLOWER_THAN_PLAIN = 1.05  # a ratio up to this may be noise

# The fastest of the libraries that a limit names, and our ratio to it. None if none is installed.
Limit = collections.namedtuple("Limit", "names bound peer ratio")


# --- The machine ------------------------------------------------------------------------------------

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


# --- Measuring --------------------------------------------------------------------------------------

def base_name(name):
    """The name of a benchmark without what Google Benchmark appends."""
    return re.sub(r"(/(real_time|process_time|iterations:\d+))+$", "", name)


def cells_of(program):
    """The cells of a program in the order of their first benchmark."""
    done = subprocess.run([str(program), "--benchmark_list_tests"], capture_output=True, text=True,
                          check=True)
    return list(dict.fromkeys(base_name(line).rpartition("/")[0] for line in done.stdout.split("\n")
                              if "/" in line))


def times_of(report):
    """Time in ns by library, and the errors, from the JSON that a benchmark prints for one cell."""
    times, errors = {}, []
    for row in report["benchmarks"]:
        name = base_name(row["run_name"])
        if row.get("error_occurred"):
            errors.append(f"{name} {row['error_message']}")
        elif row.get("run_type") == "iteration":
            unit = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]
            times[name.rpartition("/")[2]] = row["cpu_time"] * unit
    return times, errors


def run_program(program, cell, libraries, seconds, environment=None):
    done = subprocess.run([str(program), "--benchmark_format=json",
                           "--benchmark_enable_random_interleaving=true",
                           f"--benchmark_min_time={seconds}",
                           f"--benchmark_filter=^{re.escape(cell)}/{libraries}(/iterations:.*)?$"],
                          capture_output=True, text=True, check=True, env=environment)
    return times_of(json.loads(done.stdout))


def run_cell(program, cell, seconds, portable=None):
    """Times by library, and errors. `portable` is the directory of the library that provides the plain time
    if the cell has no other."""
    times, errors = run_program(program, cell, "[^/]+", seconds)
    if portable is not None and "plain" not in times:
        plain, more = run_program(program, cell, "tova", seconds,
                                  {**os.environ, "LD_LIBRARY_PATH": str(portable)})
        errors += more
        if "tova" in plain:
            times["plain"] = plain["tova"]
    return times, errors


def ratios(rounds):
    """Our time divided by each library's: the median of the ratios within each round."""
    return {library: statistics.median(times["tova"] / times[library] for times in rounds)
            for library in rounds[0] if library != "tova" and all(library in t for t in rounds)}


# --- Judging ----------------------------------------------------------------------------------------

def best_peer(by_library, names=None):
    """The fastest of the named libraries, or of all peers: (name, our ratio to it), or None."""
    chosen = {name: ratio for name, ratio in by_library.items()
              if (name in names if names else name not in NO_PEERS)}
    return max(chosen.items(), key=lambda item: item[1]) if chosen else None


def judge(by_library, limits):
    """The limits of a cell with the ratio reached for each."""
    found = []
    for names, bound in limits.items():
        best = best_peer(by_library, None if names == "best" else names.split())
        found.append(Limit(names, bound, *(best or (None, None))))
    return found


def is_met(limits):
    """Whether a cell is within all limits that could be measured; None if none could."""
    measured = [limit.ratio <= limit.bound for limit in limits if limit.ratio is not None]
    return all(measured) if measured else None


def deciding(limits):
    """The measured limit that is furthest from being met, or None."""
    return max((limit for limit in limits if limit.ratio is not None),
               key=lambda limit: limit.ratio / limit.bound, default=None)


def limits_of(row, cell):
    """The limits of a cell in a row, or None. A cell belongs to the first pattern that matches."""
    for pattern, limits in row["cells"].items():
        if fnmatch.fnmatchcase(cell, pattern):
            return limits
    return None


def regressions(results, baseline, tolerance=TOLERANCE):
    """One line for each cell that is slower than in the baseline beside every reference that both
    have. A peer that has become faster, or a noisy one, is therefore no regression."""
    lines = []
    for cell, by_library in sorted(results.items()):
        before = baseline.get(cell, {})
        changes = {name: ratio / before[name] for name, ratio in by_library.items()
                   if name in before and name != "plain"}
        if changes and min(changes.values()) > tolerance:
            name = min(changes, key=changes.get)
            lines.append(f"{cell}: {ratio_text(by_library[name])} of {name}, "
                         f"was {ratio_text(before[name])}")
    return lines


# --- The page ---------------------------------------------------------------------------------------

def ratio_text(ratio):
    """A ratio with at least three significant digits and no exponent, so that none reads 0.00."""
    if ratio <= 0:
        raise ValueError(f"not a ratio of two times: {ratio}")

    def decimals(value):
        return max(2 - math.floor(math.log10(value)), 0)

    rounded = round(ratio, decimals(ratio))
    return f"{rounded:.{decimals(rounded)}f}"  # 0.9996 becomes 1.00 and not 1.000


def limit_text(limit):
    reference = {"best": "the best peer", "floor": "the floor"}.get(limit.names,
                                                                    limit.names.replace(" ", ", "))
    if limit.ratio is None:
        return f"{limit.bound:g} of {reference}: skipped, not installed"
    verdict = "met" if limit.ratio <= limit.bound else f"missed ({ratio_text(limit.ratio)})"
    return f"{limit.bound:g} of {reference}: {verdict}"


def judged(row, results):
    """The cells of a row with their ratios and limits, in the order of the patterns."""
    order = list(row["cells"].values())
    cells = [(cell, by_library, limits_of(row, cell)) for cell, by_library in results.items()
             if limits_of(row, cell) is not None and by_library]
    cells.sort(key=lambda cell: order.index(cell[2]))
    return [(cell, by_library, judge(by_library, limits)) for cell, by_library, limits in cells]


def table(cells):
    """One Markdown table from the judged cells of a row."""
    lines = ["| cell | best peer | of the best peer | of the floor | of the plain form | limits |",
             "|---|---|---:|---:|---:|---|"]
    for cell, by_library, limits in cells:
        best = best_peer(by_library)
        others = [ratio_text(by_library[name]) if name in by_library else "" for name in NO_PEERS]
        lines.append(f"| {cell} | {best[0] if best else ''} | {ratio_text(best[1]) if best else ''} | "
                     f"{others[0]} | {others[1]} | {'; '.join(map(limit_text, limits))} |")
    return "\n".join(lines)


def read_notes(text):
    """The notes by their headings."""
    parts = re.split(r"^## (.*)$", text, flags=re.M)
    return {heading.strip(): note.strip() for heading, note in zip(parts[1::2], parts[2::2])}


def notes_for(row, cells, notes):
    """The notes on a row and on those of its cells that miss a limit."""
    missed = [cell for cell, _, limits in cells if is_met(limits) is False]
    return [note for heading, note in notes.items()
            if heading == f"row {row['row']}" or fnmatch.filter(missed, heading)]


def program_results(results, row):
    return results.get(row["program"], {})


def chart_name(row):
    return f"performance_{row['row']:02}.svg"


def page(machine_line, rows, results, notes):
    """The whole page. `results` has our ratios by program, cell and library."""
    sections = []
    verdicts = []
    for row in rows:
        cells = judged(row, program_results(results, row))
        if not cells:
            continue
        verdicts += [is_met(limits) for _, _, limits in cells]
        sections += [f"## {row['row']}. {row['title']}", "",
                     f"![Ratios and limits: {row['title']}](images/{chart_name(row)})", "",
                     table(cells), ""]
        for note in notes_for(row, cells, notes):
            sections += [note, ""]
    judged_cells = [verdict for verdict in verdicts if verdict is not None]
    lines = ["# Performance", "",
             "Each number is our CPU time divided by another library's for the same work with the same",
             "result: below 1, ours is faster. The floor is a program that does only what the interface",
             "cannot avoid, such as one allocation and one copy. The plain form is our own code without",
             "its fast paths. `./run bench` writes this page; the inputs and the calls are in",
             "`benchmarks/`, and `benchmarks/rows.json` has the limits.", "",
             f"Measured on: {machine_line}.", "",
             f"{sum(judged_cells)} of {len(judged_cells)} cells are within their limits.", ""]
    return "\n".join(lines + sections).rstrip() + "\n"


# --- The charts -------------------------------------------------------------------------------------

STYLE = """
text { font: 12px sans-serif; fill: #57606a }
.axis { stroke: #8b949e }
.one { stroke: #57606a; stroke-dasharray: 3 3 }
.limit { stroke: #0969da; stroke-width: 2 }
.met { fill: #2da44e }
.missed { fill: #d4702a }
@media (prefers-color-scheme: dark) {
  text { fill: #adbac7 }
  .one { stroke: #adbac7 }
  .limit { stroke: #6cb6ff }
}
"""


def chart(row, cells):
    """An SVG with the limit of each cell that is furthest from being met: our ratio as a bar on a
    logarithmic scale, the limit as a mark, and a line at 1. It has no background and follows the reader's
    color scheme."""
    shown = [(cell, deciding(limits)) for cell, _, limits in cells if deciding(limits) is not None]
    values = [1.0] + [value for _, limit in shown for value in (limit.ratio, limit.bound)]
    low = 10 ** math.floor(math.log10(min(values) * 0.999))
    high = 10 ** math.ceil(math.log10(max(values) * 1.001))
    left, width, step = 250, 340, 22
    bottom = 34 + step * len(shown)

    def x(value):
        return left + width * math.log(value / low) / math.log(high / low)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="800" height="{bottom + 30}" '
             f'viewBox="0 0 800 {bottom + 30}" role="img">',
             f"<title>{html.escape(row['title'])}: our time divided by that of others</title>",
             f"<style>{STYLE}</style>"]
    for power in range(round(math.log10(low)), round(math.log10(high)) + 1):
        parts.append(f'<line class="axis" x1="{x(10 ** power):.1f}" y1="{bottom}" '
                     f'x2="{x(10 ** power):.1f}" y2="{bottom + 5}"/>'
                     f'<text x="{x(10 ** power):.1f}" y="{bottom + 19}" text-anchor="middle">'
                     f"{10.0 ** power:g}</text>")
    parts.append(f'<line class="axis" x1="{left}" y1="{bottom}" x2="{left + width}" y2="{bottom}"/>')
    parts.append(f'<text x="{left}" y="16">shorter is faster; the marks are the limits</text>')
    for number, (cell, limit) in enumerate(shown):
        y = 28 + step * number
        kind = "met" if limit.ratio <= limit.bound else "missed"
        label = f"{ratio_text(limit.ratio)} of {limit.peer}, {kind}"
        parts.append(f'<text x="{left - 8}" y="{y + 12}" text-anchor="end">{html.escape(cell)}</text>'
                     f'<rect class="{kind}" x="{left}" y="{y}" height="16" '
                     f'width="{max(x(limit.ratio) - left, 1):.1f}"/>'
                     f'<line class="limit" x1="{x(limit.bound):.1f}" y1="{y - 2}" '
                     f'x2="{x(limit.bound):.1f}" y2="{y + 18}"/>'
                     f'<text x="{x(max(limit.ratio, limit.bound)) + 6:.1f}" y="{y + 12}">'
                     f"{html.escape(label)}</text>")
    parts.append(f'<line class="one" x1="{x(1):.1f}" y1="22" x2="{x(1):.1f}" y2="{bottom}"/>')
    return "\n".join(parts + ["</svg>", ""])


# --- The command ------------------------------------------------------------------------------------

def select(rows, programs, arguments):
    """The cells to run, as pairs of a program and a cell. Arguments are numbers of rows and names of
    programs; a program runs all its cells, those without limits as well."""
    unknown = [argument for argument in arguments
               if argument not in programs and argument not in [str(row["row"]) for row in rows]]
    if unknown:
        sys.exit(f"no such row or program: {' '.join(unknown)}")
    chosen = []
    for name, cells in programs.items():
        for cell in cells:
            in_rows = [str(row["row"]) for row in rows
                       if row["program"] == name and limits_of(row, cell) is not None]
            if name in arguments or (in_rows if not arguments else set(in_rows) & set(arguments)):
                chosen.append((name, cell))
    return chosen


def uses_kernels(rows, name, cell):
    return any(row.get("kernels") and row["program"] == name and limits_of(row, cell) is not None
               for row in rows)


def measure(folder, rows, chosen, round_count, seconds):
    """Our ratios by program, cell and library, and the errors."""
    portable = folder.parent / "forms" / "portable"
    rounds = collections.defaultdict(list)
    errors = set()
    for number in range(round_count):
        for done, (name, cell) in enumerate(chosen):
            if sys.stderr.isatty():
                print(f"\r\033[Kround {number + 1} of {round_count}, cell {done + 1} of {len(chosen)}: "
                      f"{cell}", end="", file=sys.stderr, flush=True)
            times, failed = run_cell(folder / f"bench_{name}", cell, seconds,
                                     portable if uses_kernels(rows, name, cell) else None)
            errors.update(failed)
            if "tova" in times:
                rounds[name, cell].append(times)
    if sys.stderr.isatty():
        print("\r\033[K", end="", file=sys.stderr)
    results = {}
    for name, cell in chosen:
        if rounds[name, cell]:
            results.setdefault(name, {})[cell] = ratios(rounds[name, cell])
    return results, sorted(errors)


def print_results(rows, results):
    """Every cell on one line: row, name, ratios and limits. Cells without limits come last."""
    lines, verdicts, listed = [], [], set()
    for row in rows:
        for cell, by_library, limits in judged(row, program_results(results, row)):
            listed.add((row["program"], cell))
            lines.append((str(row["row"]), cell, by_library, limits))
            verdicts.append(is_met(limits))
    for program, cells in results.items():
        lines += [("", cell, by_library, []) for cell, by_library in cells.items()
                  if (program, cell) not in listed]
    print(f"{'row':>3}  {'cell':36} {'best peer':24} {'floor':>7} {'plain':>7}  limits")
    for row, cell, by_library, limits in lines:
        best = best_peer(by_library)
        others = [ratio_text(by_library[name]) if name in by_library else "" for name in NO_PEERS]
        print(f"{row:>3}  {cell:36} {f'{ratio_text(best[1])} of {best[0]}' if best else '':24} "
              f"{others[0]:>7} {others[1]:>7}  {'; '.join(map(limit_text, limits))}")
        if by_library.get("plain", 0) > SLOWER_THAN_PLAIN:
            print(f"     slower than its plain form: {cell}")
    judged_cells = [verdict for verdict in verdicts if verdict is not None]
    if judged_cells:
        print(f"{sum(judged_cells)} of {len(judged_cells)} cells are within their limits")


def rounded(results):
    """The ratios as the page shows them, so that the baseline gives the same page."""
    return {program: {cell: {name: float(ratio_text(ratio)) for name, ratio in by_library.items()}
                      for cell, by_library in cells.items()} for program, cells in results.items()}


def write(machine_line, rows, results, notes):
    results = rounded(results)
    PAGE.write_text(page(machine_line, rows, results, notes))
    for row in rows:
        cells = judged(row, program_results(results, row))
        if cells:
            (IMAGES / chart_name(row)).write_text(chart(row, cells))
    BASELINE.write_text(json.dumps({"machine": machine_line, "ratios": results}, indent=1) + "\n")
    print(f"wrote {PAGE.relative_to(ROOT)}, its charts and {BASELINE.relative_to(ROOT)}")


def check(results):
    """Compares with the baseline and returns the exit code."""
    if not BASELINE.exists():
        print(f"{BASELINE.relative_to(ROOT)} is missing: run without --check first", file=sys.stderr)
        return 2
    baseline = json.loads(BASELINE.read_text())["ratios"]
    lines = [line for program, cells in results.items()
             for line in regressions(cells, baseline.get(program, {}))]
    for line in lines:
        print(f"slower than the baseline: {line}", file=sys.stderr)
    return 1 if lines else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("rows", nargs="*", help="numbers of rows and names of programs")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=0.03, help="minimum time of a measurement")
    options = parser.parse_intermixed_args()

    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})  # programs inherit it
    folder = pathlib.Path(options.build) / "benchmarks"
    rows = json.loads(ROWS.read_text())
    programs = {p.name[len("bench_"):]: cells_of(p) for p in sorted(folder.glob("bench_*"))
                if p.is_file() and os.access(p, os.X_OK)}
    chosen = select(rows, programs, options.rows)
    results, errors = measure(folder, rows, chosen, 1 if options.quick else options.rounds,
                              options.seconds)
    print_results(rows, results)

    missing = folder / "missing_peers.txt"
    if missing.exists() and missing.read_text().strip():
        print(f"skipped, not installed: {missing.read_text().strip()}")
    for error in errors:
        print(f"not measured: {error}", file=sys.stderr)
    if options.check:
        return check(results) or bool(errors)
    if not options.quick and not options.rows and not errors:
        write(machine(), rows, results, read_notes(NOTES.read_text()))
    return bool(errors)


if __name__ == "__main__":
    sys.exit(main())
