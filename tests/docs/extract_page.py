#!/usr/bin/env python3
"""Writes the code blocks of a guide as one C++ source: extract_page.py PAGE.md OUTPUT.cpp

A page is written for its readers; these are the rules that let a test run it:

- A ```cpp block is a piece of a function, or a whole program if it defines `main`. What it prints is
  in the ```output block that follows it; without one it prints nothing.
- ```cpp part is the first part of a program. The next block of code, which has a `main`, is the rest.
- ```cpp hazard marks code that must not end normally. It runs with limits of memory, stack and time.
- ```xml NAME, ```cfg NAME and ```text NAME are files. Each block of code finds all files of the page
  in its working directory.
- <!-- cpp ... --> holds lines that readers need not see; they go before the next block of code.

Other blocks, such as ```sh, are no business of this script.
"""
import pathlib
import re
import sys

FENCE = re.compile(r"^(```+)(\w*) ?(.*)$")


def blocks(page):
    """Yields (line number, kind, detail, text); a hidden comment has the kind "setup"."""
    lines = page.read_text(encoding="utf-8").splitlines()
    index = 0
    while index < len(lines):
        if lines[index] == "<!-- cpp":
            start = index + 1
            while lines[index] != "-->":
                index += 1
            yield start, "setup", "", "\n".join(lines[start:index]) + "\n"
        else:
            match = FENCE.match(lines[index])
            if match:
                start = index + 1
                index = lines.index(match.group(1), start)
                text = "".join(line + "\n" for line in lines[start:index])
                yield start + 1, match.group(2), match.group(3), text
        index += 1


def raw(text):
    """A C++ literal of the text; long ones are cut, since compilers limit their length."""
    pieces = [text[i:i + 8000] for i in range(0, len(text), 8000)] or [""]
    return " ".join(f'R"page({piece})page"' for piece in pieces)


def snippets(page):
    """The code blocks as dictionaries, and the files of the page as (name, text)."""
    found = []
    files = []
    setup = ""
    for line, kind, detail, text in blocks(page):
        if kind == "setup":
            setup += text
        elif kind == "cpp":
            if detail == "part":
                setup += text
                continue
            if detail not in ("", "hazard"):
                sys.exit(f"{page}:{line}: unknown word after cpp: {detail}")
            found.append({"line": line, "code": text, "setup": setup, "output": "",
                          "hazard": detail == "hazard"})
            setup = ""
        elif kind == "output":
            if not found or found[-1]["output"]:
                sys.exit(f"{page}:{line}: output without code before it")
            found[-1]["output"] = text
        elif kind in ("xml", "cfg", "text") and detail:
            files.append((detail, text))
    if setup:
        sys.exit(f"{page}: the last part or hidden comment has no block of code after it")
    return found, files


def function(page, snippet):
    """The snippet as a namespace with a function `run`, and the #include lines it needs."""
    code = snippet["setup"] + snippet["code"]
    includes = [l for l in code.splitlines() if l.startswith("#include")]
    line = f'#line {snippet["line"]} "docs/{page.name}"\n'
    body = re.sub(r"^#include.*$", "", snippet["code"], flags=re.M)
    setup = re.sub(r"^#include.*$", "", snippet["setup"], flags=re.M)
    name = f"at_line_{snippet['line']}"
    if re.search(r"^int main\(", code, flags=re.M):
        body, count = re.subn(r"^int main\(\)", "static int program()", body, flags=re.M)
        if count != 1:
            sys.exit(f"{page}:{snippet['line']}: a program of a page is `int main()`")
        last = body.rstrip().rfind("}")
        if not re.search(r"return [^;]*;\s*$", body[:last]):
            body = body[:last] + "    return 0;\n}\n"
        body = f"{setup}\n{line}{body}\nvoid run() {{ if (program() != 0) _exit(1); }}\n"
    else:
        body = f"void run() {{\n{setup}\n{line}{body}}}\n"
    return includes, f"namespace {name} {{\nusing namespace tova;\n{body}}}  // namespace {name}\n"


def main():
    page = pathlib.Path(sys.argv[1])
    found, files = snippets(page)
    includes = set()
    functions = []
    for snippet in found:
        needed, text = function(page, snippet)
        includes.update(needed)
        functions.append(text)
    rows = "".join(
        f'    {{{s["line"]}, at_line_{s["line"]}::run, {raw(s["output"])}, '
        f'{"true" if s["hazard"] else "false"}}},\n' for s in found)
    file_rows = "".join(f"    {{{raw(name)}, {raw(text)}}},\n" for name, text in files)
    source = "\n".join([
        f"// The code blocks of docs/{page.name}. Generated; do not edit.",
        '#include "docs/page.hpp"',
        *sorted(includes - {"#include <tova/tova.hpp>"}),
        "namespace {",
        *functions,
        "}  // namespace",
        f'const char* const docs_test::page_name = "{page.name}";',
        f"const std::vector<docs_test::snippet> docs_test::snippets = {{\n{rows}}};",
        f"const std::vector<docs_test::file> docs_test::files = {{\n{file_rows}}};",
        ""])
    output = pathlib.Path(sys.argv[2])
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text(source, encoding="utf-8")


if __name__ == "__main__":
    main()
