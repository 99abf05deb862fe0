"""Nests documents and trees deeply on a stack of 8 MiB, by proofs/depth.cpp."""
import resource
import shutil
import subprocess
import time

TITLE = "Depth"
SOURCES = ("proofs",)
STACK = 8 << 20
QUICK = 20  # the quick form nests as many times less
SECONDS = 1200


def measure(context):
    build = context.build("release", "proof_depth", settings=("-DTOVA_BUILD_PROOFS=ON",))
    program = build / "proofs" / "proof_depth"
    # The quick form shrinks the stack as well, so that a recursion is found.
    shrink = QUICK if context.quick else 1

    def limit():
        resource.setrlimit(resource.RLIMIT_STACK, (STACK // shrink, STACK // shrink))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    rows = []
    for line in context.run(program, "--list").splitlines():
        name, required = line.split("\t")
        depth = int(required) // shrink
        work = context.scratch / "work"
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        begin = time.monotonic()
        try:
            done = subprocess.run([program, name, str(depth)], cwd=work, preexec_fn=limit, timeout=SECONDS,
                                  capture_output=True, text=True)
            outcome = "" if done.returncode == 0 else done.stdout.strip() or f"ended with {done.returncode}"
        except subprocess.TimeoutExpired:
            outcome = f"takes more than {SECONDS} s"
        seconds = time.monotonic() - begin
        context.say(f"{name}, {depth:,}: {outcome or 'passed'} after {seconds:.1f} s")
        rows.append({"name": name, "depth": depth, "seconds": seconds, "outcome": outcome})
        shutil.rmtree(work)
    return {"rows": rows}


def report(result):
    lines = "\n".join(f"| {one['name']} | {one['depth']:,} | {one['seconds']:.1f} s | {one['outcome'] or 'passed'} |"
                      for one in result["rows"])
    return f"""Each runs on a stack of 8 MiB and checks what comes out. The quick form has a twentieth of the
depth and of the stack.

| what is nested | depth | time | |
|---|---|---|---|
{lines}"""


def failures(result):
    return [f"{one['name']}, {one['depth']:,}: {one['outcome']}" for one in result["rows"] if one["outcome"]]
