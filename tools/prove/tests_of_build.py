"""The test programs of a build, and how to run one of them against another libtova.so."""
import os
import pathlib
import resource
import signal
import subprocess
import time

MEMORY = 8 << 30  # of the address space: a test must fail, not the machine


class TestProgram:
    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.family = self.path.parent.name
        self.name = self.path.name
        self.seconds = None  # of an ordinary run


def programs(build):
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
