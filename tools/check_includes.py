#!/usr/bin/env python3
"""No include goes upward: each family includes itself and the families below it.

A header's family is its folder; the few headers of `generic` and `types` that lie under everything
are named one by one.
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
    "i18n": {"foundation", "strings", "values", "system", "parser"},
    "serialization": {"foundation", "strings", "values", "system"},
    "config": {"foundation", "strings", "values", "system"},
}
NOT_FOR = {"i18n": {"parser/xml_stream_parser"}}


def family(path):
    """The family of a path below include/tova or src, without its extension."""
    stem = str(path.with_suffix(""))
    if stem in FOUNDATION_FILES or any(stem.startswith(f + "/") for f in FOUNDATION_FILES):
        return "foundation"
    folder = path.parts[0]
    if folder in FOUNDATION_FOLDERS:
        return "foundation"
    if folder in ("generic", "types"):
        return "values"
    return folder


def main():
    faults = []
    files = 0
    for root in (ROOT / "include" / "tova", ROOT / "src"):
        for source in sorted(root.rglob("*.[ch]pp")):
            inner = source.relative_to(root)
            if str(inner) == "tova.hpp":
                continue
            files += 1
            own = family(inner)
            for number, line in enumerate(source.read_text().splitlines(), 1):
                match = re.match(r'\s*#\s*include\s*(?:<tova/([^>]+)>|"([^"]+)")', line)
                if not match:
                    continue
                target = pathlib.PurePosixPath(match.group(1) or match.group(2))
                if len(target.parts) == 1 and match.group(2):
                    target = inner.parent / target
                other = family(target)
                if str(target) == "tova.hpp":
                    faults.append(f"{source}:{number}: the umbrella header is for users")
                elif other != own and other not in BELOW[own]:
                    faults.append(f"{source}:{number}: {own} must not include {target}")
                elif str(target.with_suffix("")) in NOT_FOR.get(own, ()):
                    faults.append(f"{source}:{number}: {own} must not include {target}")
    print("\n".join(faults) if faults else f"includes: {files} files point one way")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
