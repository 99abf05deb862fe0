#!/usr/bin/env python3
"""Runs the commands of a guide and compares what they print: programs_page.py PAGE.md PROGRAM...

- A ```console block holds commands, each on a line that begins with "$ ", followed by the output of the
  command on standard output and standard error. A line "(exit code N)" ends the output if N is not 0.
- ```xml NAME, ```text NAME and ```cpp NAME are files. Commands run in one directory, which contains the
  preceding files of the page and the output of earlier commands.
- A line of output that is only "..." stands for any number of lines.

PROGRAM is the path of a program that the commands may run. With --update as the first argument, the output
in the page is replaced with the output of the commands.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^(```+)(\w*) ?(.*)$")


def run(command, folder, programs):
    path = os.pathsep.join([*sorted({str(program.parent) for program in programs}), os.environ["PATH"]])
    environment = {"PATH": path, "HOME": folder, "LANG": "C.UTF-8", "NO_COLOR": "1"}
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    lines = done.stdout.splitlines()
    return lines + ([f"(exit code {done.returncode})"] if done.returncode else [])


def matches(expected, actual):
    """Whether the output matches the expected one, in which "..." means any number of lines."""
    if not expected:
        return not actual
    if expected[0] == "...":
        return any(matches(expected[1:], actual[i:]) for i in range(len(actual) + 1))
    return bool(actual) and expected[0] == actual[0] and matches(expected[1:], actual[1:])


def console(lines, folder, programs, start, errors):
    """The lines of a block with the actual output of its commands."""
    result = []
    index = 0
    while index < len(lines):
        if not lines[index].startswith("$ "):
            errors.append(f"line {start + index}: expected a command")
            return lines
        command = lines[index][2:]
        end = index + 1
        while end < len(lines) and not lines[end].startswith("$ "):
            end += 1
        expected = lines[index + 1:end]
        actual = run(command, folder, programs)
        if not matches(expected, actual):
            errors.append(f"line {start + index}: {command} prints\n" + "\n".join(actual))
            expected = actual
        result += [lines[index], *expected]
        index = end
    return result


def check(page, programs):
    lines = page.read_text(encoding="utf-8").splitlines()
    result = []
    errors = []
    commands = 0
    with tempfile.TemporaryDirectory() as folder:
        index = 0
        while index < len(lines):
            match = FENCE.match(lines[index])
            result.append(lines[index])
            index += 1
            if not match:
                continue
            end = lines.index(match.group(1), index)
            block = lines[index:end]
            if match.group(2) == "console":
                commands += sum(line.startswith("$ ") for line in block)
                block = console(block, folder, programs, index + 1, errors)
            elif match.group(2) in ("xml", "text", "cpp") and match.group(3):
                path = pathlib.Path(folder) / match.group(3)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text("".join(line + "\n" for line in block), encoding="utf-8")
            result += block
            result.append(lines[end])
            index = end + 1
    if commands == 0:
        errors.append("no command in the page")
    return "\n".join(result) + "\n", errors


def self_test():
    assert matches(["a", "...", "c"], ["a", "b", "b", "c"])
    assert matches(["...", "c"], ["c"])
    assert not matches(["a", "..."], ["b"])
    assert not matches(["a"], ["a", "b"])
    with tempfile.TemporaryDirectory() as folder:
        page = pathlib.Path(folder) / "page.md"
        page.write_text("```text a/b\none\n```\n```console\n$ cat a/b\none\n$ false\n(exit code 1)\n```\n")
        assert check(page, [])[1] == []
        page.write_text("```console\n$ echo one\ntwo\n```\n")
        text, errors = check(page, [])
        assert len(errors) == 1 and "$ echo one\none\n" in text


if __name__ == "__main__":
    self_test()
    arguments = sys.argv[1:]
    update = arguments[0] == "--update"
    guide = pathlib.Path(arguments[int(update)])
    fresh, problems = check(guide, [pathlib.Path(name).resolve() for name in arguments[int(update) + 1:]])
    if update:
        guide.write_text(fresh, encoding="utf-8")
        sys.exit(0)
    print("\n".join(problems))
    sys.exit(1 if problems else 0)
