#!/usr/bin/env python3
"""Measures how well the library is tested, and writes docs/testing.md.

    prove.py                    every measure in its long form; writes the page
    prove.py --quick            every measure in the form that CI runs; writes nothing
    prove.py [--quick] NAME...  the named measures only; writes nothing
    prove.py --list             the names of the measures

A measure is a module of this folder with four names:

    TITLE                       the heading of its section
    measure(context)            does the work and returns a dictionary that JSON can hold
    report(result)              the section of the page, in Markdown
    failures(result)            what misses its limit, a sentence each; an empty list passes

SOURCES may name the files and folders that the result depends on beside the library. If there is DETAILS,
the name of a page in docs/, then details(result) is what prove.py writes there.

A result is kept in build/prove/NAME.json with a fingerprint of the files that it depends on. If a
run is interrupted, the next one continues after the last complete measure, and after a change only
the measures that depend on it are made again. The files with reasons (tools/prove/*.txt) only
matter to the page.
"""
import argparse
import hashlib
import importlib
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
RESULTS = ROOT / "build" / "prove"
PAGE = ROOT / "docs" / "testing.md"

# In the order of the page.
MEASURES = ("coverage", "mutants", "allocations", "io_failures", "fuzzing", "exhaustive", "gates", "golden",
            "growth", "depth", "hazards_matrix", "abi", "hardening", "traceability")

# What every result depends on, and what those depend on that do not name their own SOURCES.
LIBRARY = ("CMakeLists.txt", "CMakePresets.json", "cmake", "include", "src")
SOURCES = ("benchmarks", "examples", "fuzz", "programs", "proofs", "tests", "tools")


class Context:
    """What a measure may use: the tree, the form of the run, and ways to build and to report."""

    def __init__(self, name, quick, seed, jobs):
        self.name = name
        self.quick = quick
        self.seed = seed
        self.jobs = jobs
        self.root = ROOT
        self.scratch = RESULTS / name
        self.scratch.mkdir(parents=True, exist_ok=True)

    def say(self, text):
        print(f"prove {self.name}: {text}", file=sys.stderr, flush=True)

    def run(self, *command, **options):
        """Runs a command in the root; its output is shown only if it fails."""
        options.setdefault("cwd", self.root)
        done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, errors="replace", **options)
        if done.returncode != 0:
            sys.stderr.write(done.stdout[-6000:])
            raise SystemExit(f"prove {self.name}: failed: {' '.join(map(str, command))}")
        return done.stdout

    def build(self, preset, *targets, folder=None, settings=()):
        """Configures a preset, in a folder of its own if one is named, and builds it."""
        folder = ROOT / "build" / (folder or preset)
        self.run("cmake", "--preset", preset, "-B", folder, *settings)
        self.say(f"building in {folder.relative_to(ROOT)}")
        self.run("cmake", "--build", folder, "-j", self.jobs,
                 *(("--target", *targets) if targets else ()))
        return folder


def output_of(*command):
    return subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout


def fingerprint(name, module):
    """A hash over the contents of all files that git tracks and that a measure depends on."""
    sources = (*LIBRARY, f"tools/prove/{name}.py", *getattr(module, "SOURCES", SOURCES))
    names = output_of("git", "ls-files", "-z", "--", *sources, ":!tools/prove/*.txt",
                      ":!tools/prove/*.json").split("\0")
    digest = hashlib.sha256()
    for name in sorted(filter(None, names)):
        path = ROOT / name
        if path.is_file():
            digest.update(name.encode() + b"\0" + hashlib.sha256(path.read_bytes()).digest())
    return digest.hexdigest()


def commit():
    name = output_of("git", "rev-parse", "--short=12", "HEAD").strip()
    # The tally of the fuzz targets is written by the run itself.
    changed = output_of("git", "status", "--porcelain", "-uno", "--", ":!docs/testing.md", ":!docs/traceability.md",
                        ":!tools/prove/fuzz_tally.json")
    return name + (", changed" if changed else "")


def stored(name, state):
    """The record of an earlier run of the same form on the same sources, or None."""
    path = RESULTS / f"{name}.json"
    record = json.loads(path.read_text()) if path.is_file() else {}
    return record if record.get("state") == state else None


def run_measure(name, arguments):
    module = importlib.import_module(name)
    state = {"sources": fingerprint(name, module), "quick": arguments.quick, "seed": arguments.seed}
    record = None if arguments.again else stored(name, state)
    if record is not None:
        print(f"prove {name}: measured before, on the same sources", file=sys.stderr)
        return module, record["result"], record.get("minutes", 0)
    context = Context(name, arguments.quick, arguments.seed, arguments.jobs)
    begin = time.monotonic()
    result = module.measure(context)
    context.say(f"done after {(time.monotonic() - begin) / 60:.1f} min")
    temporary = RESULTS / f"{name}.json.new"
    minutes = (time.monotonic() - begin) / 60
    temporary.write_text(json.dumps({"state": state, "minutes": minutes, "result": result}, indent=1))
    temporary.replace(RESULTS / f"{name}.json")
    return module, result, minutes


def page_of(sections, minutes):
    model = re.search(r"^model name\s*:\s*(.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    head = f"""# How the library is tested

`./run prove` writes this page; nothing in it is written by hand. It was measured on {time.strftime("%Y-%m-%d")},
commit {commit()}, on {model.group(1) if model else platform.machine()} with {os.cpu_count()} cores.
All measures together took {minutes:.0f} minutes. `./run prove --quick` measures the same in the short form that
each change must pass.
"""
    return "\n".join([head] + [f"## {title}\n\n{text.strip()}\n" for title, text in sections])


def main():
    parser = argparse.ArgumentParser(prog="./run prove")
    parser.add_argument("names", nargs="*", metavar="NAME")
    parser.add_argument("--quick", action="store_true", help="the short form that CI runs")
    parser.add_argument("--list", action="store_true", help="print the names of the measures")
    parser.add_argument("--again", action="store_true", help="measure even what was measured before")
    parser.add_argument("--seed", type=int, default=1, help="of everything random (1)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    if arguments.list:
        print("\n".join(MEASURES))
        return 0
    unknown = set(arguments.names) - set(MEASURES)
    if unknown:
        parser.error(f"no such measure: {', '.join(sorted(unknown))}; --list prints them")

    RESULTS.mkdir(parents=True, exist_ok=True)
    missed = []
    sections = []
    pages = {}
    together = 0
    for name in arguments.names or MEASURES:
        module, result, minutes = run_measure(name, arguments)
        together += minutes
        text = module.report(result)
        sections.append((module.TITLE, text))
        if hasattr(module, "DETAILS"):
            pages[ROOT / "docs" / module.DETAILS] = module.details(result)
        missed += [f"{name}: {sentence}" for sentence in module.failures(result)]
        if arguments.names or arguments.quick:
            print(f"## {module.TITLE}\n\n{text}\n")
    if not arguments.names and not arguments.quick:
        pages[PAGE] = page_of(sections, together)
        for path, text in pages.items():
            path.write_text(text)
            print(f"prove: wrote {path.relative_to(ROOT)}")
    for sentence in missed:
        print(f"prove: MISSED: {sentence}")
    print(f"prove: {len(arguments.names or MEASURES)} measures in {together:.0f} min, {len(missed)} limits missed")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
