#!/usr/bin/env python3
"""Checks the tables of docs/security.md: hazard_table_test.py PROJECT

Every test named on the page must exist, and every test in hazards_test.cpp must be on the page.
"""
import pathlib
import re
import sys


def main(project):
    page = (project / "docs/security.md").read_text(encoding="utf-8")
    named = set(re.findall(r"`([A-Z]\w+)\.([A-Z]\w+)`", page))
    existing = set()
    for source in (project / "tests").rglob("*.cpp"):
        existing.update(re.findall(r"TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)",
                                   source.read_text(encoding="utf-8")))
    hazards = (project / "tests/hazards/hazards_test.cpp").read_text(encoding="utf-8")
    in_list = {("Hazard", name) for name in re.findall(r'^    \{"(\w+)", ending::', hazards, re.M)}
    in_list.update(re.findall(r"^TEST\((\w+),\s*(\w+)\)", hazards, re.M))

    errors = [f"docs/security.md: there is no test {suite}.{name}"
              for suite, name in sorted(named - existing - in_list)]
    errors += [f"docs/security.md: {suite}.{name} of hazards_test.cpp is missing"
               for suite, name in sorted(in_list - named)]
    if len(named) < 50 or len(in_list) < 30:
        errors.append(f"only {len(named)} tests and {len(in_list)} hazards were found")
    print("\n".join(errors) or f"{len(named)} tests, {len(in_list)} hazards: all found")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
