"""Runs the tests of the hazards with every compiler and optimization, by tools/hazards_matrix."""
import os
import re
import subprocess

TITLE = "Hazards, whatever the compiler"
SOURCES = ("tests/hazards", "tests/support", "tools/hazards_matrix")
COMPILERS = ("g++-12", "clang++-14", "clang++-19")
LEVELS = "0123"


def measure(context):
    # The quick form takes the end that the ordinary tests are farthest from.
    compilers, levels = (COMPILERS[:1], "0") if context.quick else (COMPILERS, LEVELS)
    done = subprocess.run([context.root / "tools" / "hazards_matrix", *compilers], capture_output=True, text=True,
                          env=dict(os.environ, TOVA_JOBS=str(context.jobs), TOVA_LEVELS=" ".join(levels)))
    rows = []
    for line in done.stdout.splitlines():
        found = re.match(r"hazards (\S+) -O(\d): (.*?)\.?$", line)
        if found:
            rows.append({"compiler": found.group(1), "level": found.group(2), "outcome": found.group(3)})
    if len(rows) != len(compilers) * len(levels):
        raise SystemExit(f"prove hazards_matrix: failed:\n{done.stderr[-2000:]}")
    return {"rows": rows}


def report(result):
    lines = "\n".join(f"| {one['compiler']} | -O{one['level']} | {one['outcome']} |" for one in result["rows"])
    return f"""What is dangerous by rule stays as it is documented, whatever a compiler makes of it: a recursion
still ends at the limit of the stack and a loop still never ends. Each runs in a child with limits.

| compiler | level | passed |
|---|---|---|
{lines}"""


def failures(result):
    return [f"{one['compiler']} -O{one['level']}: {one['outcome']}" for one in result["rows"]
            if not re.fullmatch(r"\d+ tests?", one["outcome"])]
