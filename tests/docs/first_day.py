#!/usr/bin/env python3
"""Runs the tables of docs/first_day.md.

    first_day.py extract library|addons PAGE OUTPUT.cpp
    first_day.py refused PAGE INCLUDE_DIRECTORY [COMPILER...]

A row of a table is `| typed | result | with |`. The last cell says how the row is tested:

- empty: the library alone compiles the expression, and its result is the second cell;
- `NAME.hpp`: the same with that add-on and `using namespace tova::extras`;
- "write `code`", perhaps with an add-on: what was typed is rejected, and `code` has the result;
- "the compiler says `word`": what was typed is rejected, and the first line of the error from every
  compiler contains the word. There is no result.

Each row is code in a function that begins with the page's first ```cpp block. All of its statements except
the last run first; the last one is an expression that is shown, unless it writes to a stream itself.
`extract` writes the rows that compile as snippets for page_test.cpp, `refused` compiles all others in one
go for each compiler.
"""
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import tempfile

import extract_page

ADDON = re.compile(r"`(\w+\.hpp)`")
SHOW = """#include <tova/tova.hpp>
template <typename T>
void show(const T& value) {
    std::cout << std::boolalpha << value;
}
inline void show(const std::ostream&) {}
"""
ROWS = 120


class Row:
    def __init__(self, line, cells):
        self.line = line
        self.typed, self.result, self.note = cells
        says = re.search(r"the compiler says `([^`]+)`", self.note)
        write = re.search(r"write `([^`]+)`", self.note)
        addon = ADDON.search(self.note)
        self.word = says.group(1) if says else None
        self.addon = addon.group(1) if addon else None
        self.is_refused = bool(says or write)
        self.code = None if says else write.group(1) if write else self.typed
        if not (says or write or addon) and self.note:
            sys.exit(f"line {line}: unknown note: {self.note}")
        if (self.code is None) != (self.result == ""):
            sys.exit(f"line {line}: a row has a result if it compiles")


def code_of(cell):
    """The content of the code span of a cell, or of the cell itself."""
    match = re.fullmatch(r"(`+) ?(.*?) ?\1", cell)
    return match.group(2) if match else cell


def rows(page):
    found = []
    fence = None
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("```"):
            fence = None if fence else line
        if fence or not line.startswith("| ") or line.startswith("| You type"):
            continue
        cells = [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        if len(cells) != 3:
            sys.exit(f"line {number}: a row has three cells")
        found.append(Row(number, [code_of(cells[0]), code_of(cells[1]), cells[2]]))
    return found


def setup(page):
    return next(text for _, kind, _, text in extract_page.blocks(page) if kind == "cpp")


def body(code):
    """The statements of a row. The last one is shown."""
    depth = 0
    cut = 0
    for index, character in enumerate(re.sub(r'"[^"]*"', lambda text: "x" * len(text.group()), code)):
        depth += {"(": 1, "{": 1, ")": -1, "}": -1}.get(character, 0)
        if depth == 0 and character in ";}" and code[index + 1:index + 2] == " ":
            cut = index + 1
    return f"{code[:cut]} show({code[cut:].strip()});\n"


def extract(kind, page, output):
    snippets = []
    for row in rows(page):
        if row.code is None or (kind == "library") != (row.addon is None):
            continue
        using = "using namespace tova::extras;\n" if row.addon else ""
        snippets.append({"line": row.line, "code": body(row.code), "setup": using + setup(page),
                         "output": row.result, "hazard": False})
    _, files = extract_page.snippets(page)
    addons = "" if kind == "library" else "#include <tova/extras.hpp>\n"
    functions = [extract_page.function(page, snippet)[1] for snippet in snippets]
    table = "".join(f'    {{{s["line"]}, at_line_{s["line"]}::run, {extract_page.raw(s["output"])}, '
                    "false},\n" for s in snippets)
    names = "".join(f"    {{{extract_page.raw(name)}, {extract_page.raw(text)}}},\n"
                    for name, text in files)
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text("\n".join([
        f"// Rows of docs/{page.name}. Generated; do not edit.",
        '#include "docs/page.hpp"',
        "#include <unordered_map>", "#include <unordered_set>",
        addons, SHOW, "namespace {",
        *functions,
        "}  // namespace",
        f'const char* const docs_test::page_name = "{page.name}";',
        f"const std::vector<docs_test::snippet> docs_test::snippets = {{\n{table}}};",
        f"const std::vector<docs_test::file> docs_test::files = {{\n{names}}};",
        ""]), encoding="utf-8")


def refused_source(page, refused):
    parts = ["#include <tova/extras.hpp>\n#include <fstream>\n#include <iostream>\n"
             "#include <unordered_map>\n", SHOW,
             "using namespace tova;\nusing namespace tova::extras;\n"]
    for row in refused:
        parts.append(f"void row_{row.line}() {{\n{setup(page)}#line {row.line} \"row\"\n"
                     f"{body(row.typed)}}}\n#line 1 \"between\"\n")
    return "".join(parts)


def first_errors(compiler, include, source):
    """The first line of the errors of each row, by line of the page."""
    limits = ["-ferror-limit=0"] if "clang" in compiler else ["-fmax-errors=0"]
    result = subprocess.run([compiler, "-std=c++17", "-fsyntax-only", "-w", "-fno-diagnostics-color",
                             *limits, "-I", include, source],
                            stderr=subprocess.PIPE, text=True, check=False)
    found = {}
    for line in result.stderr.splitlines():
        match = re.match(r"(\w+):(\d+):\d+: (?:fatal )?error: (.*)", line)
        if match and match.group(1) == "row":
            found.setdefault(int(match.group(2)), match.group(3))
        elif re.match(r"\S*(?:refused.cpp|between):\d+:\d+: (?:fatal )?error: ", line):
            found.setdefault(0, line)
    return found


def counts(all_rows):
    """The sentence with the numbers of rows that the page must contain."""
    count = lambda test: sum(1 for row in all_rows if test(row))
    written = [row for row in all_rows if row.is_refused and row.code]
    return (f"Of {len(all_rows)} rows, {count(lambda row: not row.is_refused and not row.addon)} compile "
            f"with the library alone and {count(lambda row: not row.is_refused and row.addon)} with an "
            f"add-on. {len(written)} are rejected, but an add-on "
            f"({sum(1 for row in written if row.addon)}) or the library itself "
            f"({sum(1 for row in written if not row.addon)}) has an equally short form. "
            f"In {count(lambda row: row.word)} the compiler suggests the right name.")


def refused(page, include, compilers):
    all_rows = rows(page)
    problems = []
    if len(all_rows) < ROWS:
        problems.append(f"{len(all_rows)} rows instead of at least {ROWS}")
    typed = [row.typed for row in all_rows]
    problems += [f"{name}: twice" for name in set(typed) if typed.count(name) > 1]
    wrong = [row for row in all_rows if row.is_refused]
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder) / "refused.cpp"
        source.write_text(refused_source(page, wrong), encoding="utf-8")
        with concurrent.futures.ThreadPoolExecutor() as pool:
            answers = pool.map(lambda compiler: first_errors(compiler, include, source), compilers)
        for compiler, found in zip(compilers, answers):
            if 0 in found:
                problems.append(f"{compiler}: error outside the rows: {found[0]}")
            for row in wrong:
                message = found.get(row.line)
                if message is None:
                    problems.append(f"{page.name}:{row.line}: {compiler} compiles {row.typed}")
                elif row.word and row.word not in message:
                    problems.append(f"{page.name}:{row.line}: {compiler} says: {message}")
    summary = counts(all_rows)
    print(summary)
    if summary not in " ".join(page.read_text(encoding="utf-8").split()):
        problems.append(f"{page.name} has other numbers")
    print("\n".join(problems))
    return 1 if problems else 0


def main():
    if sys.argv[1] == "extract":
        extract(sys.argv[2], pathlib.Path(sys.argv[3]), pathlib.Path(sys.argv[4]))
        return 0
    return refused(pathlib.Path(sys.argv[2]), sys.argv[3], sys.argv[4:])


if __name__ == "__main__":
    sys.exit(main())
