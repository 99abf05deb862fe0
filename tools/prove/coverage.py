"""Counts the lines, branches and conditions of src/ that the tests run.

Two libraries that clang 19 builds count: one lines and branches, in counters that a killed child leaves
in the profile as well, one the conditions of each decision (MC/DC). The test programs of the release
build run with them.

A line counts once, and so does each side of a branch, however many templates and forms of the kernels
are made of it: it is covered if any of them ran. A condition that is a constant in all of them is no
branch.

Everything missing is listed with its reason, which coverage.txt keeps by the text of the source line. A
block of lines that can't run, with a reason at its first line, is left out of the figures that the
limits apply to, and the branches in it with it. A missing side of a branch on a line that does run
counts as missing, with a reason or without. The report also shows the figures that leave nothing out.

The quick form takes the counters of the suite under the sanitizers, which CI runs anyway. There a few
tests leave out what needs more memory, and the tests of the programs and the examples are left out to save
time, so its limits are lower.
"""
import bisect
import json
import os
import pathlib
import re
import shutil

import tests_of_build

TITLE = "Coverage"
REQUIRED = {"lines": 100.0, "branches": 99.5, "mcdc": 95.0}
REQUIRED_OF_CI = {"lines": 98.5, "branches": 98.0}
REASONS = pathlib.Path(__file__).with_name("coverage.txt")
SOURCES = ("examples", "programs", "tests")
JUMP = re.compile(r"(return( \w+)?|break|continue);")


def profiles_of(context, build):
    """An empty folder for the counters of a build."""
    folder = context.scratch / f"profiles-{build.name}"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def merged_profile(context, folder):
    merged = context.scratch / f"{folder.name}.profdata"
    files = [path for path in folder.glob("*.profraw") if path.stat().st_size]
    listing = context.scratch / "profiles.txt"
    listing.write_text("\n".join(map(str, files)))
    context.run("llvm-profdata-19", "merge", "--failure-mode=all", "-o", merged, "-f", listing)
    return merged


def count_of_suite(context, build):
    """Runs the suite of a build, and merges what its library counts."""
    folder = profiles_of(context, build)
    context.run("ctest", "--test-dir", build, "-j", context.jobs, "--output-on-failure",
                env=dict(os.environ, LLVM_PROFILE_FILE=str(folder / "%m%c.profraw")))
    return merged_profile(context, folder)


def count_of_library(context, build, counting, pattern):
    """Runs the test programs of a build with a library that counts, and merges what it counts."""
    folder = profiles_of(context, counting)
    context.say(f"running the tests with the library of {counting.relative_to(context.root)}")
    failed = tests_of_build.run_all(context, build, counting, {"LLVM_PROFILE_FILE": str(folder / pattern)})
    if failed:
        raise SystemExit(f"prove coverage: failed: {', '.join(failed)}")
    return merged_profile(context, folder)


def export(context, build, merged, *arguments):
    return json.loads(context.run("llvm-cov-19", "export", build / "libtova.so.2.18.0",
                                  f"--instr-profile={merged}", *arguments))["data"][0]


def files_of_src(context, data):
    for entry in data["files"]:
        name = pathlib.Path(entry["filename"])
        name = name.relative_to(context.root) if name.is_absolute() else name
        if str(name).startswith("src/"):
            yield str(name), entry


def sum_of(files, kind):
    count = sum(entry["summary"][kind]["count"] for _, entry in files)
    covered = sum(entry["summary"][kind]["covered"] for _, entry in files)
    return {"count": count, "covered": covered}


def reasons():
    """Known gaps: file and stripped text of a line, and why the tests leave them."""
    known = {}
    if REASONS.is_file():
        for line in REASONS.read_text().splitlines():
            if line and not line.startswith("#"):
                source, text, reason = (part.strip() for part in line.split(" ||| "))
                known[source, text] = reason
    return known


def counts_of_lines(segments):
    """How often each line with code ran, as llvm-cov counts it.

    A segment changes the count from its position on: line, column, count, whether there is a count,
    whether a region begins, whether it is the gap between two statements.
    """
    counts = {}
    starts = {}
    for segment in segments:
        starts.setdefault(segment[0], []).append(segment)
    before = None  # the last segment of the lines above
    for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        here = starts.get(line, ())
        entries = [count for _, _, count, has_count, is_entry, is_gap in here
                   if has_count and is_entry and not is_gap]
        is_skipped = bool(here) and not here[0][3] and here[0][4]
        if not is_skipped and (entries or (before is not None and before[3])):
            counts[line] = max(entries + ([before[2]] if before is not None and before[3] else []))
        before = here[-1] if here else before
    return counts


def counts_of_sides(entry):
    """How often each side of each branch was taken: line, column and side, and the count.

    The compiler leaves out a condition that is a constant, and counts neither side although the code
    around it ran.
    """
    branches = {}
    for line, column, _, _, true_count, false_count, *_ in entry.get("branches", ()):
        taken = branches.setdefault((line, column), [0, 0])
        taken[0] += true_count
        taken[1] += false_count
    segments = entry["segments"]
    positions = [(segment[0], segment[1]) for segment in segments]
    sides = {}
    for position, (true_count, false_count) in branches.items():
        around = segments[bisect.bisect_right(positions, position) - 1]
        if true_count + false_count > 0 or not around[3] or around[2] == 0:
            sides[(*position, "true")] = true_count
            sides[(*position, "false")] = false_count
    return sides


def text_of_line(text, line):
    """The text of a line. A lone jump says too little, so the line above comes before it."""
    own = text[line - 1].strip()
    return f"{text[line - 2].strip()} {own}" if JUMP.match(own) and line > 1 else own


def count_of_file(name, entry, text):
    """The numbers of lines and sides, the blocks of lines that never ran, and the sides never taken."""
    lines = counts_of_lines(entry["segments"])
    sides = counts_of_sides(entry)
    blocks = []
    for line, count in sorted(lines.items()):
        if count > 0:
            continue
        if not blocks or blocks[-1]["line"] + blocks[-1]["lines"] != line:
            blocks.append({"source": name, "line": line, "text": text_of_line(text, line), "lines": 0,
                           "sides": 0})
        blocks[-1]["lines"] += 1
    missing = []
    for (line, column, side), count in sorted(sides.items()):
        if count > 0:
            continue
        block = next((one for one in blocks if one["line"] <= line < one["line"] + one["lines"]), None)
        if block is not None:
            block["sides"] += 1
        else:
            missing.append({"source": name, "line": line, "column": column, "side": side,
                            "text": text[line - 1].strip()})
    return (len(lines), sum(count > 0 for count in lines.values()), len(sides),
            sum(count > 0 for count in sides.values()), blocks, missing)


def count_of_files(context, files):
    """What the report shows of the lines and branches."""
    result = {"lines": {"count": 0, "covered": 0}, "branches": {"count": 0, "covered": 0},
              "functions": sum_of(files, "functions"), "missing_lines": [], "missing_branches": []}
    for name, entry in files:
        lines, lines_run, sides, sides_taken, blocks, missing = count_of_file(
            name, entry, (context.root / name).read_text().splitlines())
        result["lines"]["count"] += lines
        result["lines"]["covered"] += lines_run
        result["branches"]["count"] += sides
        result["branches"]["covered"] += sides_taken
        result["missing_lines"] += blocks
        result["missing_branches"] += missing
    return result


def measure(context):
    if context.quick:
        counting = context.build("asan", settings=("-DTOVA_BUILD_TOOLS=OFF", "-DTOVA_BUILD_EXAMPLES=OFF"))
        merged = count_of_suite(context, counting)
    else:
        # Only the libraries count, so the programs of the release build serve them all.
        tests = context.build("release", settings=("-DTOVA_BUILD_TESTS=ON",))
        libraries = ("tova", *(f"tova_{form}" for form in tests_of_build.FORMS))
        counting = context.build("coverage", *libraries)
        merged = count_of_library(context, tests, counting, "%m%c.profraw")
    result = count_of_files(context, list(files_of_src(context, export(context, counting, merged))))
    result["quick"] = context.quick
    if not context.quick:
        deciding = context.build("coverage", *libraries, folder="conditions",
                                 settings=("-DTOVA_COVERAGE=conditions",))
        merged = count_of_library(context, tests, deciding, "%p-%m.profraw")
        result["mcdc"] = sum_of(list(files_of_src(context, export(context, deciding, merged))), "mcdc")
    return result


def per_cent(counts):
    return 100.0 * counts["covered"] / counts["count"]


def required(result):
    return REQUIRED_OF_CI if result["quick"] else REQUIRED


def after_reasons(result):
    """The figures without the lines that can't run, and without the branches in them."""
    known = reasons()
    left_out = [one for one in result["missing_lines"] if (one["source"], one["text"]) in known]
    figures = {kind: result[kind] for kind in ("functions", "lines", "branches", "mcdc") if kind in result}
    for kind, part in (("lines", "lines"), ("branches", "sides")):
        figures[kind] = {"count": result[kind]["count"] - sum(one[part] for one in left_out),
                         "covered": result[kind]["covered"]}
    return figures


def report(result):
    limits = required(result)
    figures = after_reasons(result)
    rows = []
    for kind, title in (("functions", "functions"), ("lines", "lines"), ("branches", "sides of branches"),
                        ("mcdc", "conditions (MC/DC)")):
        if kind in result:
            limit = f"{limits[kind]:g} %" if kind in limits else ""
            rows.append(f"| {title} | {result[kind]['count']:,} | {per_cent(result[kind]):.2f} % | "
                        f"{figures[kind]['count']:,} | {per_cent(figures[kind]):.2f} % | {limit} |")
    known = reasons()
    gaps = []
    for one in result["missing_lines"] + result["missing_branches"]:
        lines = one.get("lines", 0)
        what = one.get("side") or (f"{lines} lines" if lines > 1 else "line")
        gaps.append(f"| `{one['source']}:{one['line']}` | {what} | "
                    f"{known.get((one['source'], one['text'])) or '**none yet**'} |")
    return f"""Of `src/`, counted by clang 19 over all tests. The limits apply without the lines that can't run, each
of which has its reason below, and without the branches in them. Each side of a branch counts, and a side
that is never taken counts as missing even if it has a reason.

| what | number | covered | without lines that can't run | covered | required |
|---|---|---|---|---|---|
{chr(10).join(rows)}

What no test runs, and why:

| place | what | reason |
|---|---|---|
{chr(10).join(gaps)}"""


def failures(result):
    figures = after_reasons(result)
    missed = [f"{per_cent(figures[kind]):.2f} % of the {kind} are covered, {limit:g} % are required"
              for kind, limit in required(result).items()
              if kind in figures and per_cent(figures[kind]) < limit]
    if result["quick"]:
        return missed
    known = reasons()
    missed += [f"{one['source']}:{one['line']} ({one.get('side', 'line')}) has no reason"
               for one in result["missing_lines"] + result["missing_branches"]
               if (one["source"], one["text"]) not in known]
    return missed
