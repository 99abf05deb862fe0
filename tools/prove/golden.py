"""Builds the library and the examples in many ways, and compares every byte that they print."""
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
    ("clang 19 -O0", "clang++-19", "-O0"),
    ("clang 19 -O2", "clang++-19", "-O2"),
    ("clang 19 -O3 -march=native", "clang++-19", "-O3 -march=native"),
)
QUICK = ("g++ 12 -O2", "clang 14 -O0")
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


def libraries(build, name):
    """The folders of the libraries to run with: the one as built, then those with one form of the kernels."""
    yield name, build
    for form in tests_of_build.FORMS if name in EVERY_FORM else ():
        folder = build / "forms" / form
        probe = subprocess.run([build / "tests/forms/with_kernel_form", form, folder, "/bin/true"])
        if probe.returncode == 0:  # else the processor lacks the form
            yield f"{name}, {form}", folder


def measure(context):
    reference = None
    results = []
    for name, compiler, flags in BUILDS:
        if context.quick and name not in QUICK:
            continue
        forms = [f"tova_{form}" for form in tests_of_build.FORMS] + ["with_kernel_form"] if name in EVERY_FORM else []
        build = context.build("release", "examples/all", *forms, folder="golden",
                              settings=("--fresh", f"-DCMAKE_CXX_COMPILER={compiler}", "-DTOVA_BUILD_TOOLS=OFF",
                                        f"-DCMAKE_CXX_FLAGS_RELWITHDEBINFO={flags} -g1"))
        for title, library in libraries(build, name):
            found = outputs(build, context, library)
            reference = reference or found
            different = sorted(key for key in reference if found.get(key) != reference[key])
            context.say(f"{title}: {len(found)} programs, {len(different)} differ")
            results.append({"name": title, "programs": len(found), "different": different})
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
