"""Runs every tool that must find nothing: sanitizers, memcheck, static analysers.

The quick form takes a part of the sources or of the tests, and leaves out the address sanitizer, under
which CI runs the whole suite anyway. What each tool found is kept in the folder of the measure with a
hash of the sources, so an interrupted run goes on after the last complete tool.
"""
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import time

import tests_of_build

TITLE = "Tools that must find nothing"

# The tests in which threads meet; the others have one thread, and the sanitizer has nothing to find.
THREADED = ("cpu_features_test", "extras_follow_test", "shared_objects_test", "strings_code_page_sweep_test")
# A few tests of each kind of work, short enough for memcheck in CI.
QUICK_TESTS = ("exhausted_memory_test", "serialization_test", "config_test", "parser_test", "shared_objects_test")


def files_of(context, *patterns):
    listing = context.run("git", "ls-files", "-z", "--", *patterns)
    return [name for name in listing.split("\0") if name]


def changed(context, sources, most):
    """In the quick form the sources that differ from the main branch, or a sample; at most so many."""
    if not context.quick:
        return sources
    for branch in ("origin/main", "main"):
        done = subprocess.run(["git", "diff", "--name-only", f"{branch}...HEAD"], cwd=context.root,
                              capture_output=True, text=True)
        names = set(done.stdout.split()) if done.returncode == 0 else set()
        chosen = [name for name in sources if name in names]
        if chosen:
            return chosen[:most]
    step = -(-len(sources) // most)
    return sources[context.seed % step::step]


def in_parallel(context, work, items):
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return list(pool.map(work, items))


def suite(context, preset, folder, settings=(), arguments=(), targets=(), environment=()):
    """Builds tests in a flavor and runs them. Returns what failed."""
    build = context.build(preset, *targets, folder=folder, settings=settings)
    done = subprocess.run(["ctest", "--test-dir", build, "-j", str(context.jobs), "--output-on-failure",
                           *arguments], capture_output=True, text=True, errors="replace",
                          env=dict(os.environ, **dict(environment)))
    (context.scratch / f"{folder}.log").write_text(done.stdout)
    count = re.search(r"tests failed out of (\d+)", done.stdout)
    failed = re.findall(r"^\t *\d+ - (\S+)", done.stdout, re.M)
    count = int(count.group(1)) if count else 0
    return {"found": failed or ([] if count else ["no test ran"]), "amount": f"{count} test programs"}


def sanitizers(context):
    return suite(context, "asan", "asan", ("-DTOVA_BUILD_TOOLS=ON", "-DTOVA_BUILD_EXAMPLES=ON"))


def threads(context):
    """Eight threads with objects of their own and with shared constant ones."""
    # The quick form compiles without optimization, which takes less time.
    folder, flags = ("tsan-quick", "-O0 -g1") if context.quick else ("tsan", "-O1 -g1")
    settings = ("-DTOVA_BUILD_PROOFS=ON", "-DTOVA_BUILD_EXAMPLES=OFF", "-DTOVA_BUILD_TOOLS=OFF",
                f"-DCMAKE_CXX_FLAGS_RELWITHDEBINFO={flags}")
    options = {"TSAN_OPTIONS": f"suppressions={context.root / 'tools/tsan.supp'}"}
    build = context.build("tsan", "proof_threads", "shared_objects_test", folder=folder, settings=settings)
    found = []
    work = context.scratch / "threads"
    work.mkdir(exist_ok=True)
    amount = ""
    for program in (build / "proofs/proof_threads", build / "tests/hazards/shared_objects_test"):
        done = subprocess.run([program], cwd=work, capture_output=True, text=True, errors="replace",
                              env=dict(os.environ, **options))
        report = done.stdout + done.stderr
        (context.scratch / f"{program.name}.log").write_text(report)
        found += re.findall(r"^SUMMARY: .*|^.*: a thread has another result|^\[  FAILED  \] .*", report, re.M)
        if done.returncode != 0 and not found:
            found.append(f"{program.name} ends with {done.returncode}")
        amount += "".join(re.findall(r"^\d+ scenarios, \d+ threads", done.stdout, re.M))
    if context.quick:
        return {"found": found, "amount": f"{amount}; 1 test program"}
    tests = suite(context, "tsan", folder, settings, ("-R", f"^({'|'.join(THREADED)})$"), THREADED, options)
    return {"found": found + tests["found"], "amount": f"{amount}; {tests['amount']}"}


def release_tests(context):
    """The release build with its tests; in the quick form with some of them."""
    build = context.build("release", *(QUICK_TESTS if context.quick else ()), settings=("-DTOVA_BUILD_TESTS=ON",))
    programs = [one for one in tests_of_build.programs_of(build)
                if not context.quick or one.name in QUICK_TESTS]
    return build, programs


def checked_library(context):
    """The tests of the release build with a library that checks its use of the standard library."""
    # The add-ons are compiled into their tests, so these have to check as well.
    targets = () if context.quick else ("tests/extras/all",)
    checking = context.build("debug" if context.quick else "release", "tova", *targets, folder="assertions",
                             settings=("-DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS", "-DTOVA_BUILD_EXAMPLES=OFF",
                                       "-DTOVA_BUILD_TOOLS=OFF"))
    _, programs = release_tests(context)
    if not context.quick:
        programs += [one for one in tests_of_build.programs_of(checking) if one.family == "extras"]

    def run(program):
        passed, _ = tests_of_build.run(program, checking, context.scratch / f"run-{program.name}", 1200)
        return [] if passed else [f"{program.family}/{program.name} fails"]

    found = sum(in_parallel(context, run, programs), [])
    return {"found": found, "amount": f"{len(programs)} test programs"}


def memcheck(context):
    build, _ = release_tests(context)
    done = subprocess.run([context.root / "tools/valgrind_tests", build, *(QUICK_TESTS if context.quick else ())],
                          capture_output=True, text=True, errors="replace",
                          env=dict(os.environ, TOVA_JOBS=str(context.jobs)))
    lines = [line for line in done.stdout.splitlines() if line.startswith("valgrind ")]
    found = [line for line in lines if not line.endswith(": clean")]
    return {"found": found or ([] if lines else ["no program ran"]), "amount": f"{len(lines)} test programs"}


def tidy(context):
    # Only the commands are needed, nothing is built.
    build = context.root / "build" / "clang"
    context.run("cmake", "--preset", "clang", "-B", build)
    sources = changed(context, files_of(context, "src/*.cpp", "programs/*.cpp"), 8)

    def run(source):
        done = subprocess.run(["clang-tidy", "--quiet", "-p", build, source], cwd=context.root,
                              capture_output=True, text=True, errors="replace")
        found = re.findall(r"^\S+:\d+:\d+: (?:warning|error): .*", done.stdout, re.M)
        return found or ([f"{source}: clang-tidy ends with {done.returncode}"] if done.returncode else [])

    found = {line.replace(f"{context.root}/", "") for lines in in_parallel(context, run, sources) for line in lines}
    return {"found": sorted(found), "amount": f"{len(sources)} sources"}


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
    if done.returncode != 0:
        found.append(f"cppcheck ends with {done.returncode}")
    return {"found": found, "amount": f"{len(files_of(context, 'src/*.cpp'))} sources"}


# What g++ 12 reports because it was made for C and lacks a part of C++. Other findings fail the gate.
NOT_MODELED = (
    # It has no name for temporaries and for objects that are constructed in the caller's return slot, and
    # takes them for uninitialized or lost. memcheck and the leak check watch both.
    r"(use of uninitialized value|leak of) '<(unknown|anonymous)>",
    r"/variant\.cpp:.*leak of '\S*make_body<",
    # After the check that a pointer isn't null, it follows the branch for null in the conversion to a base.
    r"/pointers\.hpp:.*dereference of NULL '(0|state)'",
    # It takes the fresh memory of a std::vector for null.
    r"/argument\.hpp:.*dereference of NULL '<unknown>'",
    # operator new raises std::bad_alloc and never returns null.
    r"use of possibly-NULL 'operator new\(\d+\)'",
    # `to` is inside a string, whose memory comes from operator new.
    r"/(string_fill|unfilled)\.hpp:.*possibly-NULL 'to'",
    # memcpy takes the first four bytes of a number of eight bytes, all of which have a value.
    r"/ascii_run\.hpp:.*uninitialized value '\*\(unsigned int\*\)&units'",
)
# It follows the unrolled vector code of this file for more than a minute without an end.
NOT_ANALYZED = ("src/strings/unicode_avx512_kernels.cpp",)


def analyzer(context):
    """g++'s own analyser."""
    build = context.root / "build" / "analyzer"
    context.run("cmake", "--preset", "release", "-B", build, "-DTOVA_BUILD_TESTS=OFF", "-DTOVA_BUILD_EXAMPLES=OFF",
                "-DTOVA_BUILD_TOOLS=OFF")
    commands = {os.path.relpath(one["file"], context.root): one
                for one in json.loads((build / "compile_commands.json").read_text())}
    sources = changed(context, sorted(set(commands) - set(NOT_ANALYZED)), 8)

    def run(source):
        words = shlex.split(commands[source]["command"])
        words = words[words.index(next(word for word in words if word.endswith(("g++", "c++")))):]
        words[words.index("-o") + 1] = "/dev/null"
        # It looks at the code before it is optimized.
        done = subprocess.run([*words, "-O0", "-g0", "-U_FORTIFY_SOURCE", "-S", "-fanalyzer"],
                              cwd=commands[source]["directory"], capture_output=True, text=True, errors="replace",
                              env=dict(os.environ, LC_ALL="C"))  # plain quotation marks
        found = [line for line in re.findall(r"^\S+:\d+:\d+: warning: .*\[-Wanalyzer.*", done.stderr, re.M)
                 if not any(re.search(pattern, line) for pattern in NOT_MODELED)]
        return found or ([f"{source}: g++ ends with {done.returncode}"] if done.returncode else [])

    found = {line for lines in in_parallel(context, run, sources) for line in lines}
    return {"found": sorted(found), "amount": f"{len(sources)} sources"}


# Name, function, and whether the quick form has it.
TOOLS = (
    ("address and undefined-behaviour sanitizers", sanitizers, False),
    ("thread sanitizer", threads, True),
    ("valgrind memcheck", memcheck, True),
    ("checked standard library (`_GLIBCXX_ASSERTIONS`)", checked_library, True),
    ("clang-tidy (analyzer, bugprone, cert, concurrency, performance)", tidy, True),
    ("cppcheck", cppcheck, True),
    ("g++ `-fanalyzer`", analyzer, True),
)


def state_of_sources(context):
    """A hash of everything that the tools look at."""
    digest = hashlib.sha256(f"{context.quick} {context.seed}".encode())
    for name in sorted(files_of(context, "src", "include", "programs", "proofs", "tests", "cmake", "*CMakeLists.txt",
                                "CMakePresets.json", ".clang-tidy", "tools/*.supp", "tools/valgrind_tests",
                                "tools/prove/gates.py")):
        path = context.root / name
        if path.is_file():
            digest.update(name.encode() + b"\0" + hashlib.sha256(path.read_bytes()).digest())
    return digest.hexdigest()


def measure(context):
    kept = context.scratch / ("quick.json" if context.quick else "tools.json")
    state = state_of_sources(context)
    record = json.loads(kept.read_text()) if kept.is_file() else {}
    done = record["done"] if record.get("state") == state else {}
    results = []
    for name, function, in_quick in TOOLS:
        if context.quick and not in_quick:
            continue
        if name not in done:
            begin = time.monotonic()
            result = function(context)
            done[name] = dict(result, name=name, minutes=(time.monotonic() - begin) / 60)
            kept.write_text(json.dumps({"state": state, "done": done}, indent=1))
            context.say(f"{name}: {len(result['found'])} findings, {done[name]['minutes']:.1f} min")
        results.append(done[name])
    return {"tools": results}


def report(result):
    rows = "\n".join(f"| {one['name']} | {one['amount']} | {len(one['found'])} |" for one in result["tools"])
    return f"""What is suppressed or switched off is listed with its reason in `.clang-tidy`, `tools/*.supp`,
`tools/prove/gates.py` and at `NOLINT` in the sources.

| tool | looks at | findings |
|---|---|---|
{rows}"""


def failures(result):
    return [f"{one['name']}: {found}" for one in result["tools"] for found in one["found"]]
