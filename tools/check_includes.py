#!/usr/bin/env python3
"""Checks that no include goes upward: each family includes itself and the families below it.

A header's family is its folder, except for a few headers of `generic` and `types` that belong to the
foundation. The table of layers in CONTRIBUTING.md must show the same directions.

    check_includes.py              checks the tree
    check_includes.py --self-test  checks that each kind of wrong include is found
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

FOUNDATION_FOLDERS = {"detail", "exceptions", "debug", "memory", "functor", "traits"}
FOUNDATION_FILES = {"abi", "tova", "types/nil", "generic/abilities", "generic/clone_interface"}

BELOW = {
    "foundation": set(),
    "strings": {"foundation"},
    "values": {"foundation", "strings"},
    "system": {"foundation", "strings"},
    "parser": {"foundation", "strings", "values"},
    "serialization": {"foundation", "strings", "values", "system"},
    "config": {"foundation", "strings", "values", "system"},
    "i18n": {"foundation", "strings", "values", "system", "parser"},
    "extras": {"foundation", "strings", "values", "system", "parser", "serialization", "config",
               "i18n"},
}
NOT_FOR = {"i18n": {"parser/xml_stream_parser"}}


def family(path):
    """The family of a path below include/tova or src."""
    stem = str(path.with_suffix(""))
    if stem in FOUNDATION_FILES or path.parts[0] in FOUNDATION_FOLDERS:
        return "foundation"
    return "values" if path.parts[0] in ("generic", "types") else path.parts[0]


def problems_of(path, text):
    """The findings in one file, whose path is below include/tova or src: (line, message)."""
    own = family(path)
    for number, line in enumerate(text.splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*(?:<tova/([^>]+)>|"([^"]+)")', line)
        if not match:
            continue
        target = pathlib.PurePosixPath(match.group(1) or match.group(2))
        if len(target.parts) == 1 and match.group(2):
            target = path.parent / target
        other = family(target)
        if str(target) == "tova.hpp":
            yield number, "the umbrella header is for users"
        elif other != own and other not in BELOW[own]:
            yield number, f"{own} must not include {target}"
        elif str(target.with_suffix("")) in NOT_FOR.get(own, ()):
            yield number, f"{own} must not include {target}"


def problems_of_page(text):
    """The differences between the table of CONTRIBUTING.md and BELOW."""
    rows = re.findall(r"^\| (\w+) \|[^|]*\|([^|]*)\|$", text, re.MULTILINE)
    shown = {name: set(re.findall(r"\w+", below)) for name, below in rows if name in BELOW}
    for name, below in BELOW.items():
        if shown.get(name) != below:
            yield f"CONTRIBUTING.md: the row of {name} must show {', '.join(sorted(below))}"


def self_test():
    cases = [
        ("strings/a.cpp", "#include <tova/abi.hpp>", 0),
        ("strings/a.cpp", '#include "strings/b.hpp"', 0),
        ("strings/a.cpp", "#include <tova/types/variant.hpp>", 1),
        ("strings/a.cpp", "#include <tova/types/nil.hpp>", 0),
        ("generic/abilities.cpp", "#include <tova/strings/ustring.hpp>", 1),
        ("i18n/a.cpp", "#include <tova/parser/xml_parser.hpp>", 0),
        ("i18n/a.cpp", "#include <tova/parser/xml_stream_parser.hpp>", 1),
        ("config/a.cpp", '#include "serialization/b.hpp"', 1),
        ("config/a.cpp", "#include <tova/tova.hpp>", 1),
    ]
    failures = [case for case in cases
                if len(list(problems_of(pathlib.PurePosixPath(case[0]), case[1]))) != case[2]]
    row = "| strings | `strings` | foundation |\n"
    if len(list(problems_of_page(row))) != len(BELOW) - 1:
        failures.append(row)
    print(f"include directions: {len(cases) + 1} examples, {len(failures)} failures {failures or ''}")
    return 1 if failures else 0


def main():
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    problems = list(problems_of_page((ROOT / "CONTRIBUTING.md").read_text()))
    files = 0
    for root in (ROOT / "include" / "tova", ROOT / "src"):
        for source in sorted(root.rglob("*.[ch]pp")):
            inner = source.relative_to(root)
            if str(inner) in ("tova.hpp", "extras.hpp"):
                continue
            files += 1
            problems += [f"{source.relative_to(ROOT)}:{number}: {message}"
                         for number, message in problems_of(inner, source.read_text())]
    print("\n".join(problems) if problems else f"include directions: {files} files, all downward")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
