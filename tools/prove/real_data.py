"""Runs the tests that compare the library with other implementations on data that was not made for it.

Each test prints one line for each comparison: a name, how many items were compared, how many differences are
listed with a reason, and how many are unexplained. A test that is skipped prints none, and a missing line
fails. The short form takes five languages of iso-codes instead of all.
"""
import os
import re
import subprocess

TITLE = "Real data"
SOURCES = ("tests",)

# The program below tests/ of the build, the test in it, and the names of the lines that it prints.
TESTS = (
    ("programs/xmc/programs_xmc_test", "ImportedPo.SaysWhatGettextSaysForTheIsoCodes", ("iso-codes and gettext",)),
    ("extras/extras_cxx14_test", "ExtrasPlural.AgreesWithTheSamplesOfItsRules", ("CLDR's samples",)),
    ("extras/extras_plural_icu_test", "PluralRulesAndIcu.*", ("ICU's cardinals", "ICU's ordinals")),
    ("strings/strings_code_page_icu_test", "*", ("code pages and ICU",)),
)
SCRIPTS = (("code_page_tables", "strings/code_page_codecs_test.py", "strings/code_page_tables",
            ("code pages and CPython",)),)

LINE = re.compile(r"^(?P<name>[^:\n]+): (?P<compared>\d+) compared(?:, (?P<listed>\d+) listed differences)?"
                  r"(?:, (?P<by_rule>\d+) by rule)?, (?P<unexplained>\d+) unexplained$", re.M)


def lines_of(context, names, command, **options):
    """Runs a test and reads its lines. None stands for a line that it did not print."""
    done = subprocess.run([str(part) for part in command], cwd=context.root, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", **options)
    found = {line["name"]: {key: int(line[key] or 0) for key in ("compared", "listed", "by_rule", "unexplained")}
             for line in LINE.finditer(done.stdout)}
    if done.returncode != 0 or any(name not in found for name in names):
        context.say(done.stdout[-3000:])
    for name in names:
        if name in found:
            context.say(f"{name}: {found[name]['compared']} compared, {found[name]['unexplained']} unexplained")
    return {name: dict(found[name], passed=done.returncode == 0) if name in found else None for name in names}


def measure(context):
    programs = [program for program, _, _ in TESTS]
    release = context.build("release", *(path.rpartition("/")[2] for path in programs),
                            *(target for target, *_ in SCRIPTS))
    result = {}
    settings = dict(os.environ)
    settings.pop("TOVA_EXCHANGE_ALL", None)
    if not context.quick:
        settings["TOVA_EXCHANGE_ALL"] = "1"
    for program, test, names in TESTS:
        result.update(lines_of(context, names, (release / "tests" / program, f"--gtest_filter={test}"), env=settings))
    for _, script, program, names in SCRIPTS:
        result.update(lines_of(context, names, ("python3", context.root / "tests" / script,
                                                release / "tests" / program)))
    return result


def report(result):
    rows = "\n".join(f"| {name} | {one['compared']:,} | {one['listed']:,} | {one['by_rule']:,} | {one['unexplained']} |"
                     for name, one in result.items() if one)
    return f"""The library compared with other implementations, on data that was not made for it. A listed difference has its
reason in the test, and one by rule is of a kind that the test describes and counts; a number that changes fails
the test. No test is skipped.

| comparison | items | listed differences | by rule | unexplained |
|---|---|---|---|---|
{rows}"""


def failures(result):
    missed = []
    for name, one in result.items():
        if one is None:
            missed.append(f"{name}: the test was skipped, or ended before its result")
        elif one["unexplained"] or not one["passed"]:
            missed.append(f"{name}: {one['unexplained']} differences are unexplained, or the test failed")
        elif not one["compared"]:
            missed.append(f"{name}: nothing was compared")
    return missed
