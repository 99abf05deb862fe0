"""Runs every tool that must find nothing: sanitizers, memcheck, static analysers.

The suites under the address sanitizer and the plain one run in CI by themselves, so the quick form
leaves them out here.
"""
import re
import subprocess
import time

TITLE = "Tools that must find nothing"


def files_of(context, *patterns):
    listing = context.run("git", "ls-files", "-z", "--", *patterns)
    return [name for name in listing.split("\0") if name]


def suite(context, preset, folder, settings=(), arguments=()):
    """Builds the suite in a flavor and runs it. Returns what failed."""
    build = context.build(preset, folder=folder, settings=settings)
    done = subprocess.run(["ctest", "--test-dir", build, "-j", str(context.jobs), "--output-on-failure",
                           *arguments], capture_output=True, text=True, errors="replace")
    (context.scratch / f"{folder}.log").write_text(done.stdout)
    count = re.search(r"tests failed out of (\d+)", done.stdout)
    failed = re.findall(r"^\t *\d+ - (\S+)", done.stdout, re.M)
    return {"found": failed, "amount": f"{count.group(1) if count else 0} test programs"}


def sanitizers(context):
    return suite(context, "asan", "asan")


def threads(context):
    """The tests in which threads meet; the others have one thread and nothing to find."""
    return suite(context, "tsan", "tsan", arguments=("-R", THREADED))


def checked_library(context):
    return suite(context, "release", "assertions",
                 settings=("-DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS", "-DTOVA_BUILD_EXAMPLES=OFF"),
                 arguments=("-LE", "docs"))


def memcheck(context):
    build = context.build("debug")
    done = subprocess.run([context.root / "tools/valgrind_tests", build], capture_output=True, text=True,
                          errors="replace")
    lines = [line for line in done.stdout.splitlines() if line.startswith("valgrind ")]
    return {"found": [line for line in lines if not line.endswith(": clean")],
            "amount": f"{len(lines)} test programs"}


def tidy(context):
    build = context.build("clang", "tova")
    sources = files_of(context, "src/*.cpp")
    if context.quick:
        sources = changed(context, sources)
    found = []
    for begin in range(0, len(sources), 2 * context.jobs):
        children = [subprocess.Popen(["clang-tidy", "--quiet", "-p", build, *sources[first:first + 2]],
                                     cwd=context.root, stdout=subprocess.PIPE,
                                     stderr=subprocess.DEVNULL, text=True)
                    for first in range(begin, min(begin + 2 * context.jobs, len(sources)), 2)]
        for child in children:
            found += re.findall(r"^\S+:\d+:\d+: (?:warning|error): .*", child.communicate()[0], re.M)
    return {"found": sorted(set(found)), "amount": f"{len(sources)} sources"}


def changed(context, sources):
    """The sources that differ from the main branch; all of them if there is none to compare with."""
    done = subprocess.run(["git", "diff", "--name-only", "origin/main...HEAD"], cwd=context.root,
                          capture_output=True, text=True)
    if done.returncode != 0:
        return sources[context.seed % 8::8]
    names = set(done.stdout.split())
    return [name for name in sources if name in names] or sources[context.seed % 8::8]


def cppcheck(context):
    # cppcheck has no target of its own: it gets the macros of the compiler.
    macros = context.scratch / "macros.h"
    macros.write_text(context.run("g++", "-std=c++14", "-dM", "-E", "-x", "c++", "/dev/null"))
    done = subprocess.run(
        ["cppcheck", "--quiet", "--std=c++14", "--language=c++", "--enable=warning,performance,portability",
         "--suppressions-list=tools/cppcheck.supp", "-j", str(context.jobs), f"--include={macros}",
         "-Iinclude", "-Isrc", "--template={file}:{line}: {severity}: {message} [{id}]", "src"],
        cwd=context.root, capture_output=True, text=True)
    found = [line for line in done.stderr.splitlines() if re.match(r"\S+:\d+: ", line)]
    return {"found": found, "amount": f"{len(files_of(context, 'src/*.cpp'))} sources"}


def analyzer(context):
    """g++'s own analyser. It was made for C and knows few things of C++, so it finds little."""
    build = context.root / "build" / "analyzer"
    context.run("cmake", "--preset", "release", "-B", build, "-DCMAKE_CXX_FLAGS=-fanalyzer",
                "-DTOVA_BUILD_TESTS=OFF", "-DTOVA_BUILD_EXAMPLES=OFF")
    done = subprocess.run(["cmake", "--build", build, "-j", str(context.jobs), "--target", "tova"],
                          capture_output=True, text=True, errors="replace")
    found = re.findall(r"^\S+:\d+:\d+: warning: .*\[-Wanalyzer.*", done.stdout + done.stderr, re.M)
    return {"found": sorted(set(found)), "amount": f"{len(files_of(context, 'src/*.cpp'))} sources"}


THREADED = "thread|catalog|config_manager|rc_|delegate|variant_test|unicode_test|code_page|cpu"

# Name, function, and whether CI runs it.
TOOLS = (
    ("address and undefined-behaviour sanitizers", sanitizers, False),
    ("thread sanitizer", threads, True),
    ("valgrind memcheck", memcheck, False),
    ("checked standard library (`_GLIBCXX_ASSERTIONS`)", checked_library, False),
    ("clang-tidy (analyzer, bugprone, cert, concurrency, performance)", tidy, True),
    ("cppcheck", cppcheck, True),
    ("g++ `-fanalyzer`", analyzer, False),
)


def measure(context):
    results = []
    for name, function, in_ci in TOOLS:
        if context.quick and not in_ci:
            continue
        begin = time.monotonic()
        result = function(context)
        context.say(f"{name}: {len(result['found'])} findings, {(time.monotonic() - begin) / 60:.1f} min")
        results.append(dict(result, name=name))
    return {"tools": results}


def report(result):
    rows = "\n".join(f"| {one['name']} | {one['amount']} | {len(one['found'])} |" for one in result["tools"])
    return f"| tool | looks at | findings |\n|---|---|---|\n{rows}"


def failures(result):
    return [f"{one['name']}: {found}" for one in result["tools"] for found in one["found"]]
