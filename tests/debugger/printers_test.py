#!/usr/bin/env python3
"""Drives gdb over a program, values.cpp, and compares what it prints: printers_test.py BUILD_FOLDER PROGRAM

The library is installed into a temporary directory and stripped, as packages install it. gdb loads the
printers from there automatically. Addresses are shown as 0x. The test prints variables of every type,
variants with every type, and uninitialized memory. The program is compiled by g++ and by clang++, and the
terminal supports UTF-8 or not. The examples in docs/debugging.md are among these values.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SERVER = '["name"] = config_tree ustring8 "mia", ["port"] = config_tree int 8080'
SETTINGS = ('config_tree = {["old"] = config_tree alias of ustring8 "server.port", '
            '["ports"] = config_tree array bool true = {["0"] = config_tree int 1}, '
            '["server"] = config_tree = {' + SERVER + '}}')
COPIED = 'message "copied" (de_AT) = {"Copied ", <n: int base=hex>, " files."}'
ADD = "counter::add(TOVA_2_18::strings::ustring8 const&)"


def raw(name, kind):
    return f"*(TOVA_2_18::{kind}*){name}.bytes"


# The expressions, and what gdb prints for them.
EXPECTED = [
    ("text8", '"Grüß \\"you\\""'),
    ("text16", 'u"Grüß \\"you\\""'),
    ("text32", 'L"Grüß \\"you\\""'),
    ("empty8", '""'),
    ("invalid8", '"caf\\xe9!"'),
    ("zero8", '"a\\x00b"'),
    ("long8", '"' + 200 * "x" + '"...'),
    ("&text8", "(const TOVA_2_18::strings::ustring8 *) 0x"),
    ("reference8", '"Grüß \\"you\\""'),
    ("v_nil", "nil"),
    ("v_int8", "signed char -5"),
    ("v_short", "short -300"),
    ("v_int", "int -70000"),
    ("v_long", "long -5000000000"),
    ("v_uint8", "unsigned char 65 'A'"),
    ("v_ushort", "unsigned short 65535"),
    ("v_uint", "unsigned int 4294967295"),
    ("v_ulong", "unsigned long 18446744073709551615"),
    ("v_bool", "bool true"),
    ("v_float", "float 1.5"),
    ("v_double", "double 2.25"),
    ("v_long_double", "long double -3.125"),
    ("v_ustring8", 'ustring8 "Grüß \\"you\\""'),
    ("v_ustring16", 'ustring16 u"Grüß \\"you\\""'),
    ("v_ustring32", 'ustring32 L"Grüß \\"you\\""'),
    ("v_string", 'std::string "plain\\n"'),
    ("v_wstring", 'std::wstring L"wide"'),
    ("unnamed", "int 3"),
    ("named", '"count" = int 3'),
    ("arguments", 'varg_list of 2 = {"count" = int 3, ustring8 "two"}'),
    ("no_arguments", "varg_list of 0"),
    ("no_tree", "rc_pointer (empty)"),
    ("tree_on_stack", "rc_pointer (count 1, not on the heap) = {object = config_tree}"),
    ("settings", SETTINGS),
    ("tree", "rc_pointer (count 2) = {object = " + SETTINGS + "}"),
    ("shared", 'shared_pointer (count 1) = {object = catalog "app", 0 messages}'),
    ("no_call", "delegate_t (empty)"),
    ("call", "delegate_t of (anonymous namespace)::" + ADD + " on 0x"),
    ("virtual_call", "delegate_t of (anonymous namespace)::" + ADD.replace("add", "change") + " on 0x"),
    ("other_call", "delegate_t of (anonymous namespace)::silent"),
    ("message", COPIED),
    ("no_message", 'message ""'),
    ("catalog", 'catalog "app", 6 messages, languages: de_AT = {'
     + "".join(f'["{key}"] = message "{key}" = {{"{key}"}}, ' for key in "abcde")
     + '["f"] = ' + COPIED + "}"),
    ("no_catalog", 'catalog "app", 0 messages'),
    ("moment", "2026-02-03 04:05:06.007"),
    ("day", "1999-02-31"),
    ("midnight", "00:00:00.000"),
    (raw("raw_text", "strings::ustring8"), "<unreadable>"),
    (raw("raw_variant", "types::variant"), "<unreadable>"),
    (raw("raw_argument", "generic::argument"), "<unreadable>"),
    (raw("raw_arguments", "generic::varg_list"), "varg_list of 0"),
    (raw("raw_message", "i18n::message_t"), "<unreadable>"),
    (raw("raw_catalog", "i18n::catalog_t"), "<unreadable>"),
    ("*raw_tree_pointer", "<unreadable>"),
    (raw("raw_call", "functor::delegate_t<void(const TOVA_2_18::strings::ustring8&)>"),
     "<unreadable>"),
    (raw("raw_holder", "memory::pointers::rc_pointer<TOVA_2_18::config::config_tree>"),
     "<unreadable>"),
]
# In a terminal without UTF-8, gdb prints escapes.
PLAIN = [
    ("text8", '"Gr\\u00fc\\u00df \\"you\\""'),
    ("v_ustring16", 'ustring16 u"Gr\\u00fc\\u00df \\"you\\""'),
    ("message", COPIED),
]
# gdb's limits apply inside the values, too.
LIMITED = [
    ("text16", 'u"Gr"...'),
    ("v_string", 'std::string "pl"...'),
    ("catalog", 'catalog "ap"..., 6 messages, languages: de...'
     ' = {["a"] = message "a" = {"a"}...}'),
]


def run(*command, **options):
    result = subprocess.run(command, text=True, capture_output=True, check=False, **options)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def printed(program, prefix, expressions, charset, *settings):
    """What gdb prints for each expression."""
    scripts = prefix / "share/gdb/auto-load"
    command = ["gdb", "-nx", "-batch", "-iex", f"add-auto-load-scripts-directory {scripts}",
               "-iex", f"add-auto-load-safe-path {scripts}", "-iex", f"set host-charset {charset}",
               "-iex", "set width 0", "-ex", "set startup-with-shell off"]
    for setting in settings:
        command += ["-ex", setting]
    command += ["-ex", "break look_here", "-ex", "run", "-ex", "up"]
    for expression in expressions:
        command += ["-ex", "echo @@", "-ex", f"output {expression}", "-ex", "echo \\n"]
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "LD_LIBRARY_PATH": str(prefix / "lib")}
    result = subprocess.run([*command, str(program)], stdout=subprocess.PIPE, env=environment,
                            stderr=subprocess.PIPE, encoding="utf-8", check=False)
    pieces = re.sub(r"0x[0-9a-f]+", "0x", result.stdout).split("@@")[1:]
    if len(pieces) != len(expressions):
        sys.exit(f"gdb printed {len(pieces)} of {len(expressions)} values\n"
                 f"{result.stdout}{result.stderr}")
    return [piece.strip() for piece in pieces]


def wrong_in_guide():
    """The examples in the guide that no test expects."""
    guide = (HERE.parents[1] / "docs/debugging.md").read_text(encoding="utf-8")
    shown = re.findall(r"^\(gdb\) print (.*)\n(.*)$", guide, re.MULTILINE)
    assert shown, "the guide shows nothing"
    return [f"docs/debugging.md: print {case[0]}" for case in shown if case not in EXPECTED]


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    failures = wrong_in_guide()
    values = 0
    with tempfile.TemporaryDirectory(prefix="tova_printers_") as folder:
        prefix = pathlib.Path(folder) / "prefix"
        for component in ("tova-runtime", "tova-development"):
            run("cmake", "--install", build, "--component", component, "--prefix", prefix)
        library = next(prefix.glob("lib*/**/libtova.so"))
        run("strip", "--strip-unneeded", library.resolve())
        for compiler in (["g++"], ["clang++", "-fstandalone-debug"]):
            program = pathlib.Path(folder) / compiler[0]
            run(*compiler, "-std=c++14", "-g", "-O0", "-I", prefix / "include", sys.argv[2],
                "-L", library.parent, "-ltova", "-o", program)
            for cases, charset, settings in ((EXPECTED, "UTF-8", ["set print elements 200"]),
                                             (PLAIN, "ASCII", []),
                                             (LIMITED, "UTF-8", ["set print elements 2"])):
                found = printed(program, prefix, [case[0] for case in cases], charset, *settings)
                for (expression, expected), text in zip(cases, found):
                    values += 1
                    if text != expected:
                        failures.append(f"{compiler[0]}, {charset}: {expression}\n"
                                        f"  expected {expected}\n  printed  {text}")
    for failure in failures:
        print(failure)
    print(f"{values} values printed, {len(failures)} wrong")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
