#!/usr/bin/env python3
"""Checks tova.natvis: natvis_test.py PROJECT

No debugger for Natvis is available here. So the test checks that the file is well-formed, describes every
class that has a gdb printer, and uses only fields that the headers declare.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

SCHEMA = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
# Fields of libstdc++.
FOREIGN = {"_M_dataplus", "_M_p", "_M_string_length", "_M_impl", "_M_start", "_M_finish", "_M_t",
           "_M_node_count", "first", "second"}


def class_names(root):
    for element in root.iter():
        if element.tag in (SCHEMA + "Type", SCHEMA + "AlternativeType"):
            yield re.sub(r"<.*", "", element.get("Name"))


def expressions(root):
    """The expressions that a debugger evaluates: conditions, values, and the braces of display strings."""
    for element in root.iter():
        if element.get("Condition"):
            yield element.get("Condition")
        text = element.text or ""
        if element.tag == SCHEMA + "DisplayString":
            yield from re.findall(r"\{([^{}]*)\}", text)
        elif not list(element):
            yield text


def fields_used(expression):
    expression = re.sub(r",.*", "", expression.replace("[_M_string_length]", ""))  # formats
    expression = re.sub(r"\(char(?:16|32)_t\*\)", "", expression)
    return set(re.findall(r"[A-Za-z_]\w*", expression))


def main():
    project = pathlib.Path(sys.argv[1])
    root = ElementTree.parse(project / "tools/debugger/tova.natvis").getroot()
    headers = "\n".join(path.read_text() for path in (project / "include/tova").rglob("*.hpp"))
    printers = (project / "tools/debugger/tova_printers.py").read_text()
    failures = []

    described = set(class_names(root))
    for name in re.findall(r'\("([\w:]+)(?:<\.\*>)?", (?:one_line|\w+Printer)', printers):
        if f"TOVA_2_18::{name}" not in described:
            failures.append(f"{name} has a gdb printer but is not in tova.natvis")
    for name in sorted(described):
        if not re.search(rf"\bclass TOVA_API {name.split('::')[-1]}\b", headers):
            failures.append(f"{name} is in tova.natvis but in no header")
    used = set().union(*map(fields_used, expressions(root))) - FOREIGN
    for field in sorted(used):
        if not re.search(rf"[\w>*&] {field};|[\w>*&] {field};  //", headers):
            failures.append(f"{field} is used in tova.natvis, but no header declares it")

    print("\n".join(failures or [f"{len(described)} classes, {len(used)} fields"]))
    return 1 if failures or not used else 0


if __name__ == "__main__":
    sys.exit(main())
