#!/usr/bin/env python3
"""Compiles against the headers in ways that cannot work and checks that the first error says why.

    unsupported_builds_test.py INCLUDE_FOLDER

Targets and libraries that are not installed are simulated through the compiler's predefined macros.
clang++ also checks real foreign targets: the sentence comes before the first standard header.
"""
import itertools
import subprocess
import sys

# What makes the build impossible, the options, and a piece of the expected sentence.
BOTH = [
    ("an old standard", ["-std=c++11"], "tova needs C++14 or later"),
    ("libc++", ["-D_LIBCPP_VERSION=14000"], "tova needs libstdc++"),
    ("the old std::string", ["-D_GLIBCXX_USE_CXX11_ABI=0"], "tova needs _GLIBCXX_USE_CXX11_ABI=1"),
    ("no type information", ["-fno-rtti"], "tova needs type information"),
    ("no exceptions", ["-fno-exceptions"], "tova needs exceptions"),
    ("big-endian", ["-U__BYTE_ORDER__", "-D__BYTE_ORDER__=__ORDER_BIG_ENDIAN__"],
     "tova needs a little-endian target"),
    ("32-bit pointers", ["-U__SIZEOF_POINTER__", "-D__SIZEOF_POINTER__=4"],
     "tova needs a 64-bit target"),
    ("a 32-bit long", ["-U__SIZEOF_LONG__", "-D__SIZEOF_LONG__=4"], "tova needs a 64-bit target"),
]
CLANG = [
    ("i686", ["--target=i686-linux-gnu"], "tova needs a 64-bit target"),
    ("x32", ["--target=x86_64-linux-gnux32"], "tova needs a 64-bit target"),
    ("powerpc64", ["--target=powerpc64-linux-gnu"], "tova needs a little-endian target"),
    ("aarch64_be", ["--target=aarch64_be-linux-gnu"], "tova needs a little-endian target"),
]
# One header that includes abi.hpp directly, one that reaches it through another header, and all.
HEADERS = ["tova/abi.hpp", "tova/strings/strings.hpp", "tova/tova.hpp"]


def errors(compiler, include, options, header):
    """The messages of the errors that the compiler reports for a source with this one include."""
    command = [compiler, "-std=c++14", *options, "-I", include, "-fsyntax-only", "-x", "c++", "-"]
    run = subprocess.run(command, input=f"#include <{header}>\n", text=True, capture_output=True,
                         check=False)
    lines = [line for line in run.stderr.splitlines() if "error:" in line]
    return lines if run.returncode != 0 else []


def main():
    include = sys.argv[1]
    failures = []
    checks = 0
    cases = list(itertools.product(["g++", "clang++"], BOTH))
    cases += [("clang++", case) for case in CLANG]
    for compiler, (name, options, sentence) in cases:
        # Real flags are compiled in full; simulated ones stop at the first header.
        headers = HEADERS if options[0].startswith("-f") else HEADERS[:2]
        for header in headers:
            found = errors(compiler, include, options, header)
            checks += 1
            if not found or sentence not in found[0]:
                failures.append(f"{compiler}, {name}, <{header}>: the first error is "
                                f"{found[0] if found else 'missing'!r}, not \"{sentence}\"")
    for compiler in ("g++", "clang++"):
        checks += 1
        found = errors(compiler, include, [], HEADERS[0])
        if found:
            failures.append(f"{compiler}: a supported build fails: {found[0]}")
    print("\n".join(failures) or f"{checks} builds, each error says why")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
