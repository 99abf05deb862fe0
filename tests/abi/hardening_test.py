#!/usr/bin/env python3
"""Checks how the shared object is hardened, from its own headers, notes, code and debug information.

usage: hardening_test.py LIBTOVA_SO

The flags of the compiler are those that the debug information records. clang records none; then they are those
of compile_commands.json in the folder of the library.
"""
import json
import pathlib
import re
import subprocess
import sys


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def compilations_of(library):
    """The flags of each compiled source, as one string each."""
    entries = output_of("readelf", "--wide", "--debug-dump=info", "--dwarf-depth=1", library)
    recorded = re.findall(r"DW_AT_producer .*?: (GNU C\+\+.* -O.*)", entries)
    commands = pathlib.Path(library).parent / "compile_commands.json"
    if recorded or not commands.is_file():
        return recorded
    return [one["command"] for one in json.loads(commands.read_text())
            if "/CMakeFiles/tova.dir/" in "/" + one.get("output", one["command"])]


def unprobed_frames(code):
    """The instructions that move the stack pointer by a page or more without touching the memory there."""
    moves = re.findall(r"(sub +\$0x[0-9a-f]{4,},%rsp)\n +[0-9a-f]+:\s+(.*)", code)
    return [move for move, after in moves if "$0x1000," not in move
            or not re.match(r"(or|mov)[lq]? +\$0x0,(0x[0-9a-f]+)?\(%rsp\)", after)]


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
    compilations = compilations_of(library)
    for flag, what in (("-fstack-protector-strong", "the canary is the strong one, which also guards small arrays"),
                       ("-fstack-clash-protection", "large stack frames are probed page by page")):
        checks[f"{what} ({flag} in every source)"] = bool(compilations) and all(
            f" {flag} " in one + " " for one in compilations)
    if "X86-64" in output_of("readelf", "--file-header", library):
        checks["the note claims marked branch targets"] = "IBT" in notes
        checks["the note claims a shadow stack"] = "SHSTK" in notes
        # The start file's _init has no branch target, so the loader must not call it.
        checks["the loader calls no _init and no _fini"] = not re.search(r"\((INIT|FINI)\)", dynamic)
        # The note covers each function whose address is taken. Vtables hold such addresses, so each
        # exported function must begin with a mark.
        code = output_of("objdump", "--disassemble", "--no-show-raw-insn", library)
        unprobed = unprobed_frames(code)
        checks[f"no frame of a page or more is without a probe {unprobed[:3]}"] = not unprobed
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
