#!/usr/bin/env python3
"""Prepares a header for Doxygen: prints it with the text of a group at each of its members.

In a header, one comment describes the declarations that follow it without an empty line, and one
`@name` comment those up to its `@}`. A reader of the reference lands on one member, so each
gets the text.
"""
import re
import sys

DOC = re.compile(r"^\s*///(?!<)")
NO_DECLARATION = re.compile(
    r"^\s*(#|//|/\*|\}|public:|protected:|private:|namespace\b|extern \"C|$)")
TYPE = re.compile(r"^\s*(template\s*<.*>\s*)?(class|struct|enum|union)\b[^;]*$")


def statement_end(lines, index):
    """The index of the last line of the declaration that begins at `index`."""
    depth = 0
    while index < len(lines):
        code = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'|//.*', "", lines[index])
        depth += code.count("{") + code.count("(") - code.count("}") - code.count(")")
        if depth <= 0 and re.search(r"[;}]\s*$", code):
            return index
        index += 1
    return len(lines) - 1


def convert(lines):
    out = []
    text = []  # the comment that holds for the declarations to come
    group = None  # the text of an open @name group
    index = 0
    while index < len(lines):
        line = lines[index]
        if DOC.match(line):
            block = []
            while index < len(lines) and DOC.match(lines[index]):
                block.append(lines[index])
                index += 1
            joined = "\n".join(block)
            if "@{" in joined:
                group = [b for b in block if "@{" not in b and "@name" not in b]
                text = group
                out.extend(b for b in block)
            elif "@}" in joined:
                group = None
                text = []
                out.extend(block)
            else:
                text = [b for b in block if "@file" not in joined]
                if index < len(lines) and lines[index].strip() == "":
                    text = []
                out.extend(block)
                if text and index < len(lines) and not TYPE.match(lines[index]):
                    end = statement_end(lines, index)
                    out.extend(lines[index:end + 1])
                    index = end + 1
                else:
                    text = []
            continue
        if line.strip() == "":
            text = group or []
            out.append(line)
            index += 1
            continue
        if text and not NO_DECLARATION.match(line) and not TYPE.match(line):
            end = statement_end(lines, index)
            if "///<" not in "".join(lines[index:end + 1]):
                out.extend(text)
            out.extend(lines[index:end + 1])
            index = end + 1
            continue
        if TYPE.match(line) or line.startswith("namespace"):
            text = []
        out.append(line)
        index += 1
    return out


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as header:
        lines = header.read().splitlines()
    # An alias of the namespace to itself, as Doxygen sees it, and instantiations, which are declared
    # elsewhere, have no text of their own.
    kept = [line for line in lines if line != "namespace tova = TOVA_2_18;"]
    text = re.sub(r"^ *extern template [^;]*;\n", "", "\n".join(kept) + "\n", flags=re.M)
    sys.stdout.write("\n".join(convert(text.splitlines())) + "\n")
