"""Lets each system call of every operation on files fail, by proofs/io_failures.cpp."""
import shutil
import subprocess

TITLE = "Failing system calls"
SOURCES = ("proofs", "tests/support")


def measure(context):
    build = context.build("release", "proof_io_failures", settings=("-DTOVA_BUILD_PROOFS=ON",))
    work = context.scratch / "work"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    done = subprocess.run([build / "proofs" / "proof_io_failures"], cwd=work, capture_output=True, text=True,
                          errors="replace")
    if done.returncode not in (0, 1):
        raise SystemExit(f"prove io_failures: failed:\n{done.stderr[-2000:]}")
    rows = []
    for line in done.stdout.splitlines():
        operation, call, count, outcomes, verdict = line.split("\t")
        rows.append({"operation": operation, "call": call, "failures": int(count), "outcomes": outcomes,
                     "verdict": verdict})
    shutil.rmtree(work)
    return {"rows": rows}


def report(result):
    rows = result["rows"]
    operations = {one["operation"] for one in rows}
    lines = "\n".join(f"| {one['operation']} | {one['call']} | {one['failures']} | "
                      f"{', '.join(f'`{part}`' if part else 'nothing' for part in one['outcomes'].split('; '))} |"
                      for one in rows)
    return f"""{len(operations)} operations read, write, list or change files. Each system call that one of them makes fails
once at each place, with EIO, ENOSPC, EINTR and EACCES; then all reads and writes transfer one byte
at a time and every other one is interrupted. **{sum(one['failures'] for one in rows)}** failures;
{sum(one['verdict'] != 'ok' for one in rows)} rows have an outcome that the headers don't document. An outcome is the result, then the
content; `as undisturbed` is that of a run without a failure.

| operation | call | failures | outcomes |
|---|---|---|---|
{lines}"""


def failures(result):
    return [f"{one['operation']}, {one['call']}: {one['verdict']}" for one in result["rows"] if one["verdict"] != "ok"]
