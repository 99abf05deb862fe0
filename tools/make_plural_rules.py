#!/usr/bin/env python3
"""Writes the plural rules of CLDR as C++, and CLDR's samples of them as data for a test.

    make_plural_rules.py            rewrites both files from the package unicode-cldr-core
    make_plural_rules.py --check    fails if a file would change; skips without the package, or if its
                                    version is not that of the files
    make_plural_rules.py --self-test

A rule such as `n % 10 = 2..4 and n % 100 != 12..14` becomes a condition over the operands of a number.
The locales of one set of rules share a function.
"""
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = pathlib.Path("/usr/share/unicode/cldr/common/supplemental")
HEADER = ROOT / "include/tova/extras/_private/plural_table.hpp"
SAMPLES = ROOT / "tests/data/extras/plural_samples.txt"
SKIPPED = 77  # the exit code that ctest takes as "skipped"

WIDTH = 100


def relation(text):
    """One relation, `n % 10 != 1,3..5`, as a C++ condition.

    The values of a relation are whole numbers, so n fits only if it has no fraction.
    """
    match = re.fullmatch(r"([nivwftce])(?: % (\d+))? (!?=) ([\d.,]+)", text)
    if not match:
        sys.exit(f"unknown relation: {text}")
    operand, divisor, sign, values = match.groups()
    value = "o." + {"n": "i", "e": "c"}.get(operand, operand)
    if divisor:
        value += f" % {divisor}"
    tests = []
    for part in values.split(","):
        first, _, last = part.partition("..")
        tests.append(f"between({value}, {first}, {last})" if last else f"{value} == {first}")
    if operand == "n":
        whole = tests[0] if len(tests) == 1 else f"({' || '.join(tests)})"
        condition = f"(o.w == 0 && {whole})"
        return "!" + condition if sign == "!=" else condition
    if sign == "!=":
        if len(tests) == 1 and "==" in tests[0]:
            return tests[0].replace("==", "!=")
        return f"!({' || '.join(tests)})"
    return tests[0] if len(tests) == 1 else f"({' || '.join(tests)})"


def condition(text):
    """A rule without its samples as a C++ condition."""
    alternatives = []
    for alternative in text.split(" or "):
        relations = [relation(part.strip()) for part in alternative.split(" and ")]
        alternatives.append(" && ".join(relations))
    if len(alternatives) == 1:
        return alternatives[0]
    return " || ".join(f"({a})" if " && " in a and not is_one(a) else a for a in alternatives)


def is_one(text):
    """Whether the text is a single expression in parentheses."""
    depth = 0
    for index, character in enumerate(text):
        depth += {"(": 1, ")": -1}.get(character, 0)
        if depth == 0 and index + 1 < len(text):
            return False
    return text.startswith("(")


def rules(path):
    """Yields (locales, [(category, rule, samples)]) for each set of rules of a file."""
    for element in xml.etree.ElementTree.parse(path).getroot().iter("pluralRules"):
        found = []
        for rule in element.iter("pluralRule"):
            text, *samples = rule.text.split("@")
            found.append((rule.get("count"), text.strip(), " ".join(samples)))
        yield element.get("locales").split(), found


def sample_numbers(text):
    """The numbers of a sample list, including the ends of its ranges."""
    numbers = []
    for part in re.sub(r"integer|decimal|…", "", text).replace(",", " ").split():
        numbers.extend(part.split("~"))
    return numbers


def lines_of(items, indent):
    """The items joined by spaces, in lines of at most WIDTH."""
    lines = [indent]
    for item in items:
        if len(lines[-1]) + len(item) + 1 > WIDTH:
            lines.append(indent)
        lines[-1] += ("" if lines[-1] == indent else " ") + item
    return "\n".join(lines) + "\n"


def functions(kind, path):
    """The functions of one file, and its rows (locale, function)."""
    code = ""
    rows = []
    for number, (locales, found) in enumerate(rules(path)):
        name = f"{kind}_{number}"
        conditions = [(category, condition(text)) for category, text, _ in found if text]
        argument = "const operands& o" if conditions else "const operands&"
        code += f"// {' '.join(locales)}\n"
        code += f"inline plural_category {name}({argument}) {{\n"
        for category, text in conditions:
            code += f"if {text if is_one(text) else f'({text})'}\nreturn plural_category::{category};\n"
        code += "return plural_category::other;\n}\n"
        rows += [(locale, name) for locale in locales]
    return code, sorted(rows)


def parents(path):
    """The parents of locales whose rules are not those of the locale without its last part.

    A script does not change the rules of a language, so parents that are the root are left out.
    """
    found = {}
    for element in xml.etree.ElementTree.parse(path).getroot().iter("parentLocale"):
        for locale in element.get("locales").split():
            if element.get("parent") != "root":
                found[locale] = element.get("parent")

    rows = {}
    for kind, file in (("cardinal", "plurals.xml"), ("ordinal", "ordinals.xml")):
        rows[kind] = dict(functions(kind, SOURCE / file)[1])

    def rule(kind, locale, known):
        while locale and locale not in rows[kind]:
            locale = known.get(locale) or locale.rpartition("_")[0]
        return rows[kind].get(locale)

    return {locale: parent for locale, parent in found.items()
            if any(rule(kind, locale, found) != rule(kind, locale, {}) for kind in rows)}


def version():
    """The version of the package that the data come from."""
    query = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", "unicode-cldr-core"],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return query.stdout.split("-")[0] or "unknown"


def header():
    text = f"""/// @file
/// The plural rules of CLDR {version()}, cardinal and ordinal, and the parents of locales.
///
/// Generated by tools/make_plural_rules.py; do not edit. Copyright © 1991-2022 Unicode, Inc.;
/// see the terms of use at http://www.unicode.org/copyright.html. `plural.hpp` is the interface.
/// Constant tables: threads may read them at the same time.
#pragma once

#include <tova/abi.hpp>

#include <cstddef>

namespace TOVA_2_18 {{
namespace extras {{

/// The plural categories of CLDR. A language uses some of them, always including `other`.
enum class plural_category {{
    zero,  ///< Arabic and Welsh 0, Latvian 10 and 20.
    one,   ///< The singular of most languages.
    two,   ///< A dual.
    few,   ///< A small number: Polish 2 to 4.
    many,  ///< A larger number: Polish 5 to 21.
    other  ///< Everything else. Each language has it.
}};

namespace _private {{

// The operands of a rule, for the number as it is shown. n equals i if w is 0; otherwise it is not
// a whole number.
struct operands {{
    unsigned long i;  // the whole part
    unsigned long v;  // the number of visible fraction digits
    unsigned long w;  // the same without trailing zeros
    unsigned long f;  // the visible fraction digits as a number
    unsigned long t;  // the same without trailing zeros
    unsigned long c;  // the exponent of the compact form, 6 in "1.2c6"; also named e
}};

inline bool between(unsigned long value, unsigned long first, unsigned long last) {{
    return value >= first && value <= last;
}}

struct plural_row {{
    const char* locale;
    plural_category (*rule)(const operands&);
}};

struct parent_row {{
    const char* locale;
    const char* parent;
}};

// clang-format off

"""
    for kind, file in (("cardinal", "plurals.xml"), ("ordinal", "ordinals.xml")):
        code, rows = functions(kind, SOURCE / file)
        text += wrap(code).lstrip("\n") if kind == "cardinal" else wrap(code)
        text += f"\n// Sorted by locale. The function is long because it is a table.\ninline const plural_row* {kind}_rows(std::size_t& count) {{\n"
        text += "    static const plural_row rows[] = {\n"
        text += lines_of([f'{{"{locale}", {name}}},' for locale, name in rows], " " * 8)
        text += "    };\n    count = sizeof rows / sizeof rows[0];\n    return rows;\n}\n\n"
    text += "// Parents that are not the locale without its last part, if their rules differ from its."
    text += "\ninline const parent_row* parent_rows(std::size_t& count) {\n"
    text += "    static const parent_row rows[] = {\n"
    found = parents(SOURCE / "supplementalData.xml")
    text += lines_of([f'{{"{locale}", "{found[locale]}"}},' for locale in sorted(found)], " " * 8)
    text += "    };\n    count = sizeof rows / sizeof rows[0];\n    return rows;\n}\n\n"
    return text + """// clang-format on

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18
"""


def wrap(code):
    """Indents the generated functions and breaks their long lines at operators."""
    lines = []
    for line in code.splitlines():
        if line.startswith("//"):
            lines.append("")
            words = line[3:].split()
            lines += lines_of(words, "// ").replace("//  ", "// ").rstrip("\n").split("\n")
            continue
        if line.startswith("return") and "::other" not in line:
            line = " " * 8 + line
        elif line.startswith(("if", "return")):
            line = " " * 4 + line
        while len(line) > WIDTH:
            cut = max(line.rfind(sign, 0, WIDTH - 3) for sign in (" || ", " && "))
            lines.append(line[:cut + 3])
            line = " " * 8 + line[cut + 4:]
        lines.append(line)
    return "\n".join(lines) + "\n"


def samples():
    """Lines of kind, locales, category and numbers, separated by tabs."""
    text = "# CLDR's samples of its plural rules. Generated by tools/make_plural_rules.py.\n"
    for kind, file in (("cardinal", "plurals.xml"), ("ordinal", "ordinals.xml")):
        for locales, found in rules(SOURCE / file):
            for category, _, numbers in found:
                text += "\t".join([kind, " ".join(locales), category,
                                   " ".join(sample_numbers(numbers))]) + "\n"
    return text


def self_test():
    assert relation("i % 10 = 1") == "o.i % 10 == 1"
    assert relation("v != 0") == "o.v != 0"
    assert relation("e != 0..5") == "!(between(o.c, 0, 5))"
    assert relation("n = 1") == "(o.w == 0 && o.i == 1)"
    assert relation("n % 100 != 11,13..14") == \
        "!(o.w == 0 && (o.i % 100 == 11 || between(o.i % 100, 13, 14)))"
    assert condition("i = 1 and v = 0 or t != 0") == "(o.i == 1 && o.v == 0) || o.t != 0"
    assert condition("n = 1 or n = 2") == "(o.w == 0 && o.i == 1) || (o.w == 0 && o.i == 2)"
    assert sample_numbers("integer 0, 2~16, 100, … decimal 1c3, 0.0~1.5, …") == \
        ["0", "2", "16", "100", "1c3", "0.0", "1.5"]


def main():
    self_test()
    if sys.argv[1:] == ["--self-test"]:
        return 0
    if not (SOURCE / "plurals.xml").is_file():
        print("the package unicode-cldr-core is not installed")
        return SKIPPED
    if sys.argv[1:] == ["--check"] and f"CLDR {version()}, " not in HEADER.read_text(encoding="utf-8"):
        print(f"the files do not come from version {version()} of unicode-cldr-core")
        return SKIPPED
    changed = False
    for path, text in ((HEADER, header()), (SAMPLES, samples())):
        if sys.argv[1:] == ["--check"]:
            if not path.is_file() or path.read_text(encoding="utf-8") != text:
                print(f"{path.relative_to(ROOT)}: tools/make_plural_rules.py writes another file")
                changed = True
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    return 1 if changed else 0


if __name__ == "__main__":
    sys.exit(main())
