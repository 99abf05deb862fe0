"""Builds the library and the examples in many ways, and compares every byte that they print.

The quick form builds nothing of its own: the examples of the release build run with its library, with
each form of the kernels, and with the library of clang 19 that counts what the tests run.
"""
import hashlib
import shutil
import subprocess

import tests_of_build

TITLE = "One output, whatever the build"
SOURCES = ("examples", "tests", "tools/prove/tests_of_build.py")

# Name, compiler, flags. The first one is what the others are compared with.
BUILDS = (
    ("g++ 12 -O2", "g++", "-O2"),
    ("g++ 12 -O0", "g++", "-O0"),
    ("g++ 12 -O3", "g++", "-O3"),
    ("g++ 12 -O3 -march=native", "g++", "-O3 -march=native"),
    ("clang 14 -O0", "clang++", "-O0"),
    ("clang 14 -O2", "clang++", "-O2"),
    ("clang 14 -O3", "clang++", "-O3"),
    ("clang 14 -O3 -march=native", "clang++", "-O3 -march=native"),
    ("clang 19 -O0", "clang++-19", "-O0"),
    ("clang 19 -O2", "clang++-19", "-O2"),
    ("clang 19 -O3", "clang++-19", "-O3"),
    ("clang 19 -O3 -march=native", "clang++-19", "-O3 -march=native"),
)
# The builds that run once more with each form of the kernels.
EVERY_FORM = ("g++ 12 -O2", "g++ 12 -O3 -march=native", "clang 14 -O2", "clang 19 -O3 -march=native")

LOCALES = ("en_US", "de_AT", "fr", "ru", "ja", "xx")


def commands(build, context):
    """What is run: every example, the longer ones in several ways."""
    examples = build / "examples"
    yield "demo", [examples / "demo" / "tova_example_demo", "--color=never"], None
    for locale in LOCALES:
        yield f"messages {locale}", [examples / "messages" / "tova_example_messages", locale], None
        yield (f"settings {locale}",
               [examples / "settings" / "settings.example", "-server.port=9090", f"-locale={locale}"],
               context.root / "examples" / "settings" / "settings.cfg")
    yield "state", [examples / "state" / "tova_example_state"], None
    yield "tail", [examples / "tail" / "tova_example_tail"], None
    for path in sorted((examples / "tour").glob("tova_example_*")):
        if path.is_file():
            yield path.name, [path], None


def outputs(build, context, library):
    found = {}
    work = context.scratch / "work"
    for name, command, file in commands(build, context):
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        if file:
            shutil.copy(file, work)
        done = subprocess.run(command, cwd=work, stdin=subprocess.DEVNULL, capture_output=True,
                              env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "TZ": "UTC",
                                   "LD_LIBRARY_PATH": str(library)})
        kept = b"".join(path.read_bytes() for path in sorted(work.rglob("*")) if path.is_file())
        found[name] = hashlib.sha256(done.stdout + done.stderr + kept + bytes([done.returncode & 255])).hexdigest()
    return found


def forms_of(build):
    """The forms of the kernels that this processor has, and the folder of the library for each."""
    for form in tests_of_build.FORMS:
        folder = build / "forms" / form
        if subprocess.run([build / "tests/forms/with_kernel_form", form, folder, "/bin/true"]).returncode == 0:
            yield form, folder


def quick_builds(context):
    """The folders of the examples and of the libraries, with a name for each pair."""
    forms = [f"tova_{form}" for form in tests_of_build.FORMS]
    build = context.build("release", "examples/all", "with_kernel_form", *forms)
    yield "g++ 12 -O2", build, build
    for form, folder in forms_of(build):
        yield f"g++ 12 -O2, {form}", build, folder
    yield "clang 19 -O1", build, context.build("coverage", "tova")


def all_builds(context):
    for name, compiler, flags in BUILDS:
        forms = [f"tova_{form}" for form in tests_of_build.FORMS] + ["with_kernel_form"] if name in EVERY_FORM else []
        build = context.build("release", "examples/all", *forms, folder="golden",
                              settings=("--fresh", f"-DCMAKE_CXX_COMPILER={compiler}", "-DTOVA_BUILD_TOOLS=OFF",
                                        f"-DCMAKE_CXX_FLAGS_RELWITHDEBINFO={flags} -g1"))
        yield name, build, build
        for form, folder in forms_of(build) if name in EVERY_FORM else ():
            yield f"{name}, {form}", build, folder


def measure(context):
    reference = None
    results = []
    for name, examples, library in quick_builds(context) if context.quick else all_builds(context):
        found = outputs(examples, context, library)
        reference = reference or found
        different = sorted(key for key in reference if found.get(key) != reference[key])
        context.say(f"{name}: {len(found)} programs, {len(different)} differ")
        results.append({"name": name, "programs": len(found), "different": different})
    return {"builds": results}


def report(result):
    rows = "\n".join(f"| {one['name']} | {one['programs']} | {', '.join(one['different']) or 'none'} |"
                     for one in result["builds"])
    return f"""All examples run with the library of each build, in some builds also with each form of the vector kernels
alone. Their output and the files that they write are compared
byte by byte with those of the first row.

| build | runs | different |
|---|---|---|
{rows}"""


def failures(result):
    return [f"{one['name']}: {name} prints something else" for one in result["builds"]
            for name in one["different"]]
