#!/usr/bin/env python3
"""Checks how the shared object is hardened, from its own headers, notes and code.

usage: hardening_test.py LIBTOVA_SO
"""
import re
import subprocess
import sys


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def main():
    library = sys.argv[1]
    dynamic = output_of("readelf", "--wide", "--dynamic", library)
    segments = output_of("readelf", "--wide", "--segments", library)
    symbols = output_of("readelf", "--wide", "--dyn-syms", library)
    notes = output_of("readelf", "--wide", "--notes", library)
    stack = re.search(r"GNU_STACK.*", segments).group()

    checks = {
        "relocations become read-only": "GNU_RELRO" in segments,
        "relocations are resolved at load time": re.search(r"FLAGS_1.*NOW", dynamic) is not None,
        "the code has no relocation": "TEXTREL" not in dynamic,
        "the stack is not executable": re.search(r"\bRWE\b", stack) is None,
        "no segment is both writable and executable": re.search(r"\bRWE\b", segments) is None,
        "no path to other libraries is built in": not re.search(r"R(UN)?PATH", dynamic),
        "a canary guards arrays on the stack": "__stack_chk_fail" in symbols,
        "calls of the C library are checked": re.search(r"__\w+_chk\b", symbols.replace(
            "__stack_chk_fail", "")) is not None,
    }
    if "X86-64" in output_of("readelf", "--file-header", library):
        checks["the note claims marked branch targets"] = "IBT" in notes
        checks["the note claims a shadow stack"] = "SHSTK" in notes
        # The start file's _init has no branch target, so the loader must not call it.
        checks["the loader calls no _init and no _fini"] = not re.search(r"\((INIT|FINI)\)", dynamic)
        # The note covers each function whose address is taken. Vtables hold such addresses, so each
        # exported function must begin with a mark.
        code = output_of("objdump", "--disassemble", "--no-show-raw-insn", library)
        unmarked = re.findall(r"^[0-9a-f]+ <(_ZNK?9TOVA_2_18[^>@]*)>:\n\s+[0-9a-f]+:\s+(?!endbr64)",
                              code, re.MULTILINE)
        unmarked = [name for name in unmarked if not name.endswith(".cold") and ".part." not in name
                    and ".isra." not in name and ".constprop." not in name]
        exported = set(re.findall(r"FUNC +\w+ +DEFAULT +\d+ (\S+)", symbols))
        unmarked = [name for name in unmarked if name in exported]
        checks[f"every exported function begins with a mark {unmarked[:3]}"] = not unmarked

    for text, holds in checks.items():
        print("ok    " if holds else "FAILED", text)
    return 0 if all(checks.values()) else 1


if __name__ == "__main__":
    sys.exit(main())
