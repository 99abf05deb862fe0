#!/usr/bin/env python3
"""Compares the tables of every code page with Python's codecs.

    code_page_codecs_test.py PROGRAM [--write FILE]

PROGRAM is code_page_tables, which prints what the library converts. What differs is listed in
tests/data/strings/code_page_codecs.txt, with a reason for each group; a difference that is not listed fails
the test, and so does a listed one that no longer occurs. Two kinds of difference have rules instead, and the
list has their numbers:

    composed    the same characters, composed by one side only (pages 1255 and 1258)
    moved       a letter that is held back comes out after the "?" of an invalid byte that follows it

--write stores the differences without reasons, for a new version of the C library or of Python.
"""
import codecs
import collections
import pathlib
import subprocess
import sys
import unicodedata

LISTED = pathlib.Path(__file__).resolve().parent.parent / "data/strings/code_page_codecs.txt"
CODECS = {4: "utf-8", 932: "cp932", 936: "gbk", 949: "cp949", 950: "cp950", 20866: "koi8_r", 21866: "koi8_u",
          **{page: f"cp{page}" for page in range(1250, 1259)},
          **{28590 + part: f"iso8859_{part}" for part in range(1, 10)}, 28605: "iso8859_15", 125100: "ascii"}
COMPOSE = (1255, 1258)

codecs.register_error("one_byte", lambda error: ("?", error.start + 1))


def decoded(codec, data):
    """As `code_page` decodes: one "?" for each byte that is skipped. The line end completes a character."""
    return (data + b"\n").decode(codec, "one_byte").removesuffix("\n")


def encoded(codec, text):
    try:
        return text.encode(codec)
    except UnicodeEncodeError:
        return b"?" * len(text.encode())


def same_characters(one, other):
    return unicodedata.normalize("NFD", one) == unicodedata.normalize("NFD", other)


class Page:
    def __init__(self, number):
        self.number = number
        self.codec = CODECS[number]
        self.compared = 0
        self.differences = []
        self.rules = collections.Counter()
        self.single = {}

    def compare(self, kind, key, ours):
        self.compared += 1
        if kind == "decode":
            theirs = self.decode(bytes.fromhex(key), bytes.fromhex(ours).decode())
        else:
            theirs = self.encode(chr(int(key, 16)), bytes.fromhex(ours))
        if theirs is not None:
            self.differences.append(f"{self.number} {kind} {key} {theirs.hex().upper() or '-'} {ours or '-'}")

    def decode(self, data, ours):
        """What Python makes of the bytes if that is a difference of their own, otherwise None."""
        theirs = decoded(self.codec, data)
        if len(data) == 1:
            self.single[data] = (theirs, ours)
        else:
            first, second = self.single[data[:1]], self.single[data[1:]]
            if (theirs, ours) == (first[0] + second[0], first[1] + second[1]):
                return None  # what the two bytes make separately, which is compared already
        if theirs == ours:
            return None
        if self.number in COMPOSE:
            if same_characters(theirs, ours):
                self.rules["decode composed"] += 1
                return None
            if theirs[1:] == "?" and ours == "?" + theirs[0]:
                self.rules["decode moved"] += 1
                return None
        return theirs.encode()

    def encode(self, text, ours):
        theirs = encoded(self.codec, text)
        if theirs == ours:
            return None
        if self.number in COMPOSE and theirs.strip(b"?") == b"" and same_characters(decoded(self.codec, ours), text):
            self.rules["encode composed"] += 1
            return None
        return theirs


def main():
    program = sys.argv[1]
    found, compared, by_rule = [], 0, 0
    for number in CODECS:
        page = Page(number)
        done = subprocess.run([program, str(number)], stdout=subprocess.PIPE, text=True, check=True)
        for line in done.stdout.splitlines():
            kind, key, ours = line.split()
            page.compare(kind, key, "" if ours == "-" else ours)
        assert page.compared >= 63488 + 256, f"{number}: only {page.compared} lines"
        compared += page.compared
        found += page.differences
        found += [f"{number} {rule} rule {count}" for rule, count in sorted(page.rules.items())]
        by_rule += sum(page.rules.values())
    if sys.argv[2:3] == ["--write"]:
        pathlib.Path(sys.argv[3]).write_text("\n".join(found) + "\n")
        return 0
    listed = [line for line in LISTED.read_text().splitlines() if line and not line.startswith("#")]
    unlisted, gone = sorted(set(found) - set(listed)), sorted(set(listed) - set(found))
    for line in unlisted[:50]:
        print("not listed:", line)
    for line in gone[:50]:
        print("listed, but not found:", line)
    explained = len([line for line in set(found) & set(listed) if " rule " not in line])
    print(f"code pages and CPython: {compared} compared, {explained} listed differences, {by_rule} by rule, "
          f"{len(unlisted) + len(gone)} unexplained")
    return 1 if unlisted or gone else 0


sys.exit(main())
