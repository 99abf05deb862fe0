"""Runs the tests of the binary interface, and shows what they compared.

They need a plain g++ build. CI runs them as part of the suite.
"""
import re
import subprocess

TITLE = "Binary interface"
SOURCES = ("tests/abi", "tests/support")
# What each test compares, in the order of the page.
WHAT = {
    "abi_symbols_test": "declared, listed and exported symbols",
    "abi_description_test": "layouts, virtual tables and signatures, with their stored description",
    "abi_copy_relocation_test": "data objects that a program copies",
    "abi_instantiations_test": "exported instantiations of templates",
    "abi_unsupported_builds_test": "builds that the headers refuse",
    "abi_hardening_test": "the hardening of the library",
    "abi_*_foreign_test": "programs that declare the classes themselves",
    "abi_*_test": "sizes, offsets and slots of classes",
}


def measure(context):
    build = context.build("release", settings=("-DTOVA_BUILD_TESTS=ON",))
    done = subprocess.run(["ctest", "--test-dir", build, "-R", "^abi_", "-j", str(context.jobs), "--verbose"],
                          capture_output=True, text=True, errors="replace")
    (context.scratch / "tests.log").write_text(done.stdout)
    passed = dict(re.findall(r"Test +#\d+: (abi_\S+) \.+ *(\w+|\*+\w+)", done.stdout))
    return {"tests": {name: state == "Passed" for name, state in passed.items()},
            "counts": re.search(r"[\d]+ declared, .*", done.stdout).group(0),
            "description": "; ".join(f"{kind.lower()} {changes}" for kind, changes in re.findall(
                r"(Functions|Variables) changes summary: ([^\n]*)", done.stdout))}


def group(name):
    if name in WHAT:
        return name
    return "abi_*_foreign_test" if name.endswith("_foreign_test") else "abi_*_test"


def report(result):
    rows = []
    for name, what in WHAT.items():
        tests = [passed for test, passed in result["tests"].items() if group(test) == name]
        rows.append(f"| {what} | `{name}` | {sum(tests)} of {len(tests)} |")
    return f"""Symbols: {result["counts"]}. Compared with the stored description: {result["description"]}.

| what is compared | tests | passed |
|---|---|---|
{chr(10).join(rows)}"""


def failures(result):
    missed = [f"{name} fails" for name, passed in result["tests"].items() if not passed]
    missed += [f"{name} did not run" for name in WHAT if not any(group(test) == name for test in result["tests"])]
    return missed
