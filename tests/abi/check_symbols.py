#!/usr/bin/env python3
"""Compares the symbols of the shared object with the headers and with the stored lists.

 1. Headers to object: every function, member and object that a public header declares outside a
    template is an exported symbol. None has an inline body, except those in inline_functions.txt.
 2. Lists to object: every line of symbols/*.txt is exported. The lists name what the interface
    promises, as `nm -DC` prints it.
 3. Object to lists: every exported symbol is in a list. What a compiler generates for a listed class
    (typeinfo names, thunks) needs no line of its own.
"""
import argparse
import collections
import json
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
FUNCTIONS = {"FunctionDecl", "CXXMethodDecl", "CXXConstructorDecl", "CXXDestructorDecl",
             "CXXConversionDecl"}
TEMPLATES = {"FunctionTemplateDecl", "ClassTemplateDecl", "ClassTemplatePartialSpecializationDecl",
             "ClassTemplateSpecializationDecl", "VarTemplateDecl", "TypeAliasTemplateDecl"}


def exported(library, demangle):
    command = ["nm", "-D", "--defined-only"] + (["-C"] if demangle else [])
    lines = subprocess.run(command + [str(library)], capture_output=True, text=True,
                           check=True).stdout.splitlines()
    return {line.split(" ", 2)[2] for line in lines}


def declared(headers, compiler):
    """Maps each mangled name that the headers declare to (qualified name, whether it has a body)."""
    command = [compiler, "-std=c++14", "-fsyntax-only", "-w", f"-I{headers}", "-x", "c++",
               "-Xclang", "-ast-dump=json", "-Xclang", "-ast-dump-filter=TOVA_2_18",
               str(headers / "tova" / "tova.hpp")]
    text = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    decoder = json.JSONDecoder()
    found = {}
    position = 0
    while True:
        position = text.find("{", position)
        if position < 0:
            return found
        node, position = decoder.raw_decode(text, position)
        walk(node, [], found)


def walk(node, scope, found):
    kind = node.get("kind")
    if kind in TEMPLATES or node.get("isImplicit"):
        return
    if kind in ("NamespaceDecl", "CXXRecordDecl", "LinkageSpecDecl"):
        inner = scope + [node["name"]] if node.get("name") else scope
        for child in node.get("inner", []):
            walk(child, inner, found)
        return
    is_object = kind == "VarDecl" and not node.get("constexpr") and (
        node.get("storageClass") in ("extern", "static"))
    if kind not in FUNCTIONS and not is_object:
        return
    if node.get("explicitlyDeleted") or node.get("pure") and kind != "CXXDestructorDecl":
        return
    name = node.get("mangledName")
    if not name:
        return
    has_body = any(child.get("kind") in ("CompoundStmt", "CXXTryStmt")
                   for child in node.get("inner", []))
    has_body = has_body or bool(node.get("explicitlyDefaulted"))
    qualified = "::".join(scope + [node["name"]]) + " " + node["type"]["qualType"]
    found[name] = (qualified, has_body or found.get(name, ("", False))[1])


def listed():
    lists = collections.OrderedDict()
    for path in sorted((HERE / "symbols").glob("*.txt")):
        for line in path.read_text().splitlines():
            line = line.strip()
            if line and not line.startswith("#"):
                lists[line] = path.name
    return lists


def implied(name, lists):
    """Whether a compiler generates this symbol along with a listed one."""
    if name.startswith("typeinfo name for TOVA_2_18::"):
        return True
    for prefix, base in (("non-virtual thunk to ", ""), ("virtual thunk to ", ""),
                         ("VTT for ", "vtable for ")):
        if name.startswith(prefix):
            return base + name[len(prefix):] in lists
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--object", type=pathlib.Path, required=True)
    parser.add_argument("--headers", type=pathlib.Path, required=True)
    parser.add_argument("--compiler", default="clang++")
    options = parser.parse_args()

    mangled = exported(options.object, demangle=False)
    plain = exported(options.object, demangle=True)
    lists = listed()
    inline_allowed = {line.strip() for line in
                      (HERE / "inline_functions.txt").read_text().splitlines()
                      if line.strip() and not line.startswith("#")}
    problems = []
    names = declared(options.headers, options.compiler)
    inline_seen = set()
    for name, (qualified, has_body) in sorted(names.items(), key=lambda item: item[1]):
        if has_body:
            inline_seen.add(qualified)
            if qualified not in inline_allowed:
                problems.append(f"inline in a header: {qualified}")
        elif name not in mangled:
            problems.append(f"declared, not exported: {qualified} ({name})")
    problems += [f"no such inline function: {name}" for name in sorted(inline_allowed - inline_seen)]
    problems += [f"listed in {lists[name]}, not exported: {name}" for name in lists
               if name not in plain]
    problems += [f"exported, in no list: {name}" for name in sorted(plain)
               if name not in lists and not implied(name, lists)]

    if problems:
        print("\n".join(problems))
    print(f"{len(names)} declared, {len(lists)} listed, {len(mangled)} exported symbols, "
          f"{len(problems)} problems")
    return 1 if problems or not names or not lists else 0


if __name__ == "__main__":
    sys.exit(main())
