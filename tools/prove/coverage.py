"""Counts the lines, branches and conditions of src/ that the tests run.

Two libraries that clang 19 builds count: one lines and branches, in counters that a killed child leaves
in the profile as well, one the conditions of each decision (MC/DC). The test programs of the release
build run with them. The missing branches are listed with their reasons, which coverage.txt keeps by the
text of the source line.

The quick form takes the counters of the suite under the sanitizers, which CI runs anyway. There a few
tests leave out what needs more memory, and the tests of the programs and the examples are left out to save
time, so its limits are lower.
"""
import json
import os
import pathlib
import shutil

import tests_of_build

TITLE = "Coverage"
REQUIRED = {"lines": 100.0, "branches": 99.5, "mcdc": 95.0}
REQUIRED_OF_CI = {"lines": 95.0, "branches": 93.0}
REASONS = pathlib.Path(__file__).with_name("coverage.txt")
SOURCES = ("examples", "programs", "tests")


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


def missing_branches(files, context):
    """One entry for each side of a branch that no instantiation ever takes."""
    for name, entry in files:
        sides = {}
        for branch in entry.get("branches", ()):
            line, column, true_count, false_count = branch[0], branch[1], branch[4], branch[5]
            for side, count in (("true", true_count), ("false", false_count)):
                key = (line, column, side)
                sides[key] = sides.get(key, 0) + count
        lines = (context.root / name).read_text().splitlines()
        for (line, column, side), count in sorted(sides.items()):
            if count == 0:
                text = lines[line - 1].strip()
                yield {"source": name, "line": line, "column": column, "side": side, "text": text}


def missing_lines(files, context):
    """The lines that have code and never ran, by file, from the segments of the export."""
    for name, entry in files:
        text = (context.root / name).read_text().splitlines()
        counts = {}
        for segment in entry["segments"]:
            line, _, count, has_count, is_entry = segment[0], segment[1], segment[2], segment[3], segment[4]
            if has_count and is_entry:
                counts[line] = max(counts.get(line, 0), count)
        for line, count in sorted(counts.items()):
            if count == 0:
                yield {"source": name, "line": line, "text": text[line - 1].strip()}


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
    files = list(files_of_src(context, export(context, counting, merged)))
    result = {"quick": context.quick, "lines": sum_of(files, "lines"), "branches": sum_of(files, "branches"),
              "functions": sum_of(files, "functions"),
              "missing_lines": list(missing_lines(files, context)),
              "missing_branches": list(missing_branches(files, context))}
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


def report(result):
    limits = required(result)
    rows = []
    for kind, title in (("functions", "functions"), ("lines", "lines"), ("branches", "branches"),
                        ("mcdc", "conditions (MC/DC)")):
        if kind in result:
            limit = f"{limits[kind]:g} %" if kind in limits else ""
            rows.append(f"| {title} | {result[kind]['count']:,} | {per_cent(result[kind]):.2f} % | {limit} |")
    known = reasons()
    gaps = [f"| `{one['source']}:{one['line']}` | {one.get('side', 'line')} | "
            f"{known.get((one['source'], one['text'])) or '**none yet**'} |"
            for one in result["missing_lines"] + result["missing_branches"]]
    return f"""Of `src/`, counted by clang 19 over all tests:

| what | number | covered | required |
|---|---|---|---|
{chr(10).join(rows)}

What no test runs, and why:

| place | side | reason |
|---|---|---|
{chr(10).join(gaps)}"""


def failures(result):
    missed = [f"{per_cent(result[kind]):.2f} % of the {kind} are covered, {limit:g} % are required"
              for kind, limit in required(result).items() if kind in result and per_cent(result[kind]) < limit]
    if result["quick"]:
        return missed
    known = reasons()
    missed += [f"{one['source']}:{one['line']} ({one['side']}) has no reason"
               for one in result["missing_branches"] if (one["source"], one["text"]) not in known]
    return missed
