"""The test programs of a build, and how to run one of them against another libtova.so."""
import concurrent.futures
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import time

MEMORY = 8 << 30  # of the address space: a test must fail, not the machine
FORMS = ("portable", "sse2", "avx2", "avx512")  # of the kernels


class TestProgram:
    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.family = self.path.parent.name
        self.name = self.path.name
        self.seconds = None  # of an ordinary run
        self.places = None  # the lines of the library that it runs, if known; see `find_places`


def programs_of(build):
    """Every GoogleTest program, by name. The scripts among the tests are left out."""
    found = []
    for path in sorted((build / "tests").rglob("*_test")):
        if path.is_file() and os.access(path, os.X_OK) and path.open("rb").read(4) == b"\x7fELF":
            found.append(TestProgram(path))
    return found


def run(program, library_folder, scratch, timeout, arguments=("--gtest_brief=1",), environment=()):
    """Runs a program with a library from another folder. Returns whether it passed, and the time."""

    def prepare():
        os.setsid()
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 33, 1 << 33))

    scratch.mkdir(parents=True, exist_ok=True)
    settings = dict(os.environ, TMPDIR=str(scratch), LD_LIBRARY_PATH=str(library_folder),
                    **dict(environment))
    begin = time.monotonic()
    child = subprocess.Popen([program.path, *arguments], cwd=scratch, env=settings,
                             stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, preexec_fn=prepare)
    try:
        passed = child.wait(timeout) == 0
    except subprocess.TimeoutExpired:
        passed = False
    # The children of a test that fails must not outlive it.
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    child.wait()
    return passed, time.monotonic() - begin


def forms_of(build):
    """The programs that the suite repeats with each form of the kernels that this processor has.

    Returns pairs of a form and the name of a program.
    """
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True,
                             capture_output=True, text=True).stdout
    commands = [one.get("command", []) for one in json.loads(listing)["tests"]]
    pairs = [(command[1], pathlib.Path(command[3]).name) for command in commands
             if command and pathlib.Path(command[0]).name == "with_kernel_form"]
    probe = build / "tests/forms/with_kernel_form"
    present = {form for form in {form for form, _ in pairs}
               if subprocess.run([probe, form, build, "/bin/true"]).returncode == 0}
    return [(form, name) for form, name in pairs if form in present]


def run_all(context, build, counting, environment, timeout=1800):
    """Runs the programs of a build with the libraries of another one, in every form of the kernels.

    Returns the names of the programs that fail.
    """
    programs = {program.name: program for program in programs_of(build)}
    work = [(program, counting, ()) for program in programs.values()]
    work += [(programs[name], counting / "forms" / form, (f"--form={form}",) if name == "kernel_form_test" else ())
             for form, name in forms_of(build)]

    def one(number):
        program, folder, arguments = work[number]
        scratch = context.scratch / f"run-{number}"
        passed, _ = run(program, folder, scratch, timeout, ("--gtest_brief=1", *arguments), environment)
        shutil.rmtree(scratch, ignore_errors=True)
        return [] if passed else [f"{program.name} with {folder}"]

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return sum(pool.map(one, range(len(work))), [])


def find_places(context, programs, counting):
    """Fills in the places of each program: file and number of the lines that it runs.

    `counting` is the folder of a library of the same sources that counts its lines.
    """
    library = counting / "libtova.so.2.18.0"

    def find(program):
        folder = context.scratch / f"places-{program.name}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        run(program, counting, folder / "work", 900,
            environment={"LLVM_PROFILE_FILE": str(folder / "%m%c.profraw")})
        profiles = [path for path in folder.glob("*.profraw") if path.stat().st_size]
        merged = folder / "merged"
        places = set()
        if profiles:
            context.run("llvm-profdata-19", "merge", "--failure-mode=all", "-o", merged, *profiles)
            name = None
            for line in context.run("llvm-cov-19", "export", "--format=lcov", library,
                                    f"--instr-profile={merged}").splitlines():
                if line.startswith("SF:"):
                    path = pathlib.Path(line[3:])
                    name = str(path.relative_to(context.root)) if path.is_absolute() else str(path)
                elif line.startswith("DA:"):
                    number, count = line[3:].split(",")[:2]
                    if count != "0":
                        places.add((name, int(number)))
        program.places = frozenset(places)
        shutil.rmtree(folder, ignore_errors=True)

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        list(pool.map(find, programs))
