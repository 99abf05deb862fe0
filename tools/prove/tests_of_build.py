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
FILE_SIZE = 1 << 34  # some tests make sparse files of 8 GiB
FORMS = ("portable", "sse2", "avx2", "avx512")  # of the kernels


class TestProgram:
    def __init__(self, name, command, form=None):
        self.name = name
        self.path = pathlib.Path(command[0])
        self.arguments = command[1:]
        self.family = self.path.parent.name
        self.form = form  # the form of the kernels that the library has to use, or None


def tests_of(build):
    """Every test of a build that is a program of ours. The scripts among the tests are left out."""
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True,
                             capture_output=True, text=True).stdout
    found = []
    for test in json.loads(listing)["tests"]:
        command, form = test.get("command", [""]), None
        if pathlib.Path(command[0]).name == "with_kernel_form":
            form, command = command[1], command[3:]
        path = pathlib.Path(command[0])
        if build / "tests" in path.parents and path.is_file() and path.open("rb").read(4) == b"\x7fELF":
            found.append(TestProgram(test["name"], command, form))
    return found


def programs_of(build):
    """The programs that run with the library as it is, without the repetitions for each form of the kernels."""
    return [program for program in tests_of(build) if program.form is None]


def is_googletest(program):
    return "--gtest_brief=1" in program.arguments


def run(program, library_folder, scratch, timeout, arguments=(), environment=()):
    """Runs a program with a library from another folder. Returns whether it passed, and the time.

    Further arguments only go to programs that GoogleTest makes.
    """

    def prepare():
        os.setsid()
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))

    scratch.mkdir(parents=True, exist_ok=True)
    settings = dict(os.environ, TMPDIR=str(scratch), LD_LIBRARY_PATH=str(library_folder),
                    **dict(environment))
    if not is_googletest(program):
        arguments = ()
    begin = time.monotonic()
    child = subprocess.Popen([program.path, *program.arguments, *arguments], cwd=scratch, env=settings,
                             stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, preexec_fn=prepare)
    try:
        passed = child.wait(timeout) in (0, 77)  # 77: the processor lacks a form of the kernels
    except subprocess.TimeoutExpired:
        passed = False
    # The children of a test that fails must not outlive it.
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    child.wait()
    return passed, time.monotonic() - begin


def programs_in_each_form(build):
    """The programs of a build, repeated for each form of the kernels that this processor has."""
    probe = build / "tests/forms/with_kernel_form"
    present = {form for form in FORMS if subprocess.run([probe, form, build, "/bin/true"]).returncode == 0}
    return [program for program in tests_of(build) if program.form is None or program.form in present]


def folder_of(program, build):
    """Where the library is in a build that a program is to run with."""
    return build if program.form is None else build / "forms" / program.form


def run_all(context, build, counting, environment, timeout=1800):
    """Runs the programs of a build with the libraries of another one, in every form of the kernels that
    this processor has. Returns the names of the programs that fail.
    """
    def one(program):
        scratch = context.scratch / f"run-{program.name}"
        passed, _ = run(program, folder_of(program, counting), scratch, timeout, (), environment)
        shutil.rmtree(scratch, ignore_errors=True)
        return [] if passed else [program.name]

    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        return sum(pool.map(one, programs_in_each_form(build)), [])
