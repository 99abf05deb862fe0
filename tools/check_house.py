#!/usr/bin/env python3
"""Checks the rules of CONTRIBUTING.md that a script can decide.

    check_house.py              checks every tracked file
    check_house.py --self-test  checks that each rule finds what it should, and nothing else

Each rule is a function from a file to its findings, (line, message). The examples above a rule are
its self-test. A file that is better without a rule says so in a line "// House: RULE: reason". check_includes.py checks the directions of includes, check_format the format.
"""
import collections
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

LONG_FUNCTION = 50  # lines, from the opening brace to the closing one
LONG_SOURCE = 250  # lines
OVERVIEW = 5  # lines of the comment that opens a long source


# --- Reading C++ ------------------------------------------------------------------------------------

def strip(text):
    """The code alone: comments and the content of literals become spaces, line by line."""
    blank = lambda piece: re.sub(r"[^\n]", " ", piece)
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/'
        r'|(?:u8|[uUL])?R"(?P<delimiter>[^(\s]{0,16})\(.*?\)(?P=delimiter)"'
        r'|"(?:\\.|[^"\\\n])*"'
        r"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])*'", re.DOTALL)

    def replace(match):
        piece = match.group(0)
        if piece.startswith("/"):
            return blank(piece)
        return piece[0] + blank(piece[1:-1]) + piece[-1]

    return pattern.sub(replace, text)


def without_directives(code):
    """Blanks preprocessor lines, continued ones as well."""
    return re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*",
                  lambda match: re.sub(r"[^\n]", " ", match.group(0)), code, flags=re.MULTILINE)


Function = collections.namedtuple("Function", "name first opening closing")

QUALIFIERS = r"(?:\s*\b(?:const|override|final|noexcept|mutable|try|TOVA_NOTHROW)\b|\s*&{1,2}" \
             r"|\s*\b(?:throw|noexcept)\s*\([^()]*\))*\s*$"


def functions(text):
    """Every function with a body, except lambdas and local classes: name and lines, from 1."""
    code = without_directives(strip(text))
    found = []
    stack = []  # (kind, begin of the head, position of the brace)
    head_begin = 0
    for position, character in enumerate(code):
        if character == ";":
            if not stack or stack[-1][0] in ("namespace", "class"):
                head_begin = position + 1
        elif character == "{":
            head = code[head_begin:position]
            kind = brace_kind(head, stack)
            stack.append((kind, head_begin, position))
            if kind in ("namespace", "class"):
                head_begin = position + 1
        elif character == "}" and stack:
            kind, begin, opening = stack.pop()
            if kind == "function":
                head = code[begin:opening]
                first = begin + len(head) - len(head.lstrip())
                line = lambda where: code.count("\n", 0, where) + 1
                names = re.findall(r"([~\w:]+)\s*\(", head)
                found.append(Function(names[0] if names else "?", line(first), line(opening),
                                      line(position)))
            if kind in ("namespace", "class", "function"):
                head_begin = position + 1
        elif character == ":" and re.search(r"\b(?:public|protected|private)\s*$",
                                            code[head_begin:position]):
            head_begin = position + 1
    return found


def brace_kind(head, stack):
    if stack and stack[-1][0] not in ("namespace", "class"):
        return "block"
    plain = re.sub(QUALIFIERS, "", head)
    if re.search(r"\bnamespace\b|\bextern\s*\"", head) and "(" not in head:
        return "namespace"
    if plain.rstrip().endswith(")") or re.search(r"\)\s*(?:const\s*)?->[^=]*$", head):
        return "function"
    if re.search(r"\b(?:class|struct|union)\b", head) and not re.search(r"=\s*$", head):
        return "class"
    return "block"


class File:
    """One tracked file. Rules read `path`, `text` and `lines`."""

    def __init__(self, path, text, siblings=()):
        self.path = pathlib.PurePosixPath(path)
        self.text = text
        self.lines = text.splitlines()
        self.siblings = siblings  # all tracked paths
        self.is_header = self.path.suffix == ".hpp"
        self.is_source = self.path.suffix == ".cpp"
        self.is_cpp = self.is_header or self.is_source
        self.top = self.path.parts[0]

        self._code = None

    def code_lines(self):
        """The lines without comments and without the content of literals, numbered from 1."""
        if self._code is None:
            self._code = strip(self.text).splitlines()
        return enumerate(self._code, 1)


def findings(function, file):
    """What a rule finds in a file that does not except itself."""
    if re.search(rf"^// House: {function.__name__}: \S", file.text, re.MULTILINE):
        return []
    return list(function(file))


RULES = []


def rule(*examples):
    """Registers a rule. An example is (path, text, number of findings) or has siblings as a fourth."""
    def register(function):
        RULES.append((function, examples))
        return function
    return register


# --- Headers ----------------------------------------------------------------------------------------

@rule(("src/a/b.hpp", "/// @file\n/// What it is for.\n#pragma once\n", 0),
      ("src/a/b.hpp", "/// @file\n/// What it is for.\n", 1),
      ("tests/a/b.hpp", "// Helps.\n#ifndef B\n#define B\n#endif\n", 1),
      ("src/a/b.cpp", "int a;\n", 0))
def pragma_once(file):
    """Every header has a #pragma once."""
    if file.is_header and "#pragma once" not in file.lines:
        yield 1, "the header has no #pragma once"


@rule(("include/tova/a.hpp", "/// @file\n/// Colors. Threads may share constant ones.\n", 0),
      ("include/tova/a.hpp", "/// @file\n/// Colors.\n#pragma once\n// thread\n", 1),
      ("src/a.hpp", "/// @file\n/// Colors.\n#pragma once\n", 0),
      ("src/a.hpp", "/// Colors.\n#pragma once\n", 1),
      ("src/a.hpp", "/// @file\n#pragma once\n", 1),
      ("tests/a.hpp", "// Colors for tests.\n#pragma once\n", 0),
      ("tests/a.hpp", "#pragma once\n", 1))
def file_comment(file):
    """Every header says what it is for; public ones also say what two threads may do."""
    if not file.is_header:
        return
    comment = []
    for line in file.lines:
        if not line.startswith("//"):
            break
        comment.append(line)
    if file.top not in ("include", "src"):
        if not comment:
            yield 1, "the header does not open with a comment that says what it is for"
        return
    if not comment or comment[0] != "/// @file" or len(comment) < 2:
        yield 1, "the header does not open with '/// @file' and a description"
    elif file.top == "include" and "thread" not in "\n".join(comment).lower():
        yield 1, "the file comment does not say what two threads may do"


@rule(("include/tova/a/b.hpp", "#include <tova/abi.hpp>\n\n#include <string>\n", 0),
      ("include/tova/a/b.hpp", "#include <string>\n\n#include <tova/abi.hpp>\n", 1),
      ("include/tova/a/b.hpp", "#pragma once\n", 1),
      ("include/tova/abi.hpp", "#include <cstddef>\n", 0))
def limits_first(file):
    """The first include of a public header leads to abi.hpp, whose #error must come first."""
    if file.top != "include" or not file.is_header or file.path.name == "abi.hpp":
        return
    for number, line in enumerate(file.lines, 1):
        match = re.match(r"#include ([<\"].*)", line)
        if match:
            if not match.group(1).startswith("<tova/"):
                yield number, "the first include of a public header must be a <tova/...> header"
            return
    yield 1, "a public header must include <tova/abi.hpp>"


@rule(("src/a.hpp", "using namespace std;\n", 1),
      ("src/a.hpp", "// using namespace std;\nusing std::string;\n", 0),
      ("tests/a_test.cpp", "using namespace tova;\n", 0))
def no_using_namespace(file):
    """A header changes no namespace of those who include it."""
    if file.is_header:
        for number, line in file.code_lines():
            if re.search(r"\busing\s+namespace\b", line):
                yield number, "a header must not contain 'using namespace'"


# --- Includes ---------------------------------------------------------------------------------------

# Headers of the system. They may be with other libraries or with the standard library.
SYSTEM_HEADERS = set("""
    alloca arpa/inet byteswap cxxabi dirent dlfcn elf endian execinfo fcntl features ftw getopt glob grp
    iconv langinfo libgen libintl limits link malloc netdb poll pthread pty pwd regex sched semaphore
    spawn strings syslog termios time ucontext unistd unwind utime xlocale cpuid
    x86intrin immintrin emmintrin arm_neon
""".split())
C_HEADERS = set("""
    assert complex ctype errno fenv float inttypes iso646 limits locale math setjmp signal stdalign
    stdarg stdbool stddef stdint stdio stdlib string tgmath threads time uchar wchar wctype
""".split())

OWN, OURS, OTHER, SYSTEM, STANDARD = range(5)


def include_group(file, spelled):
    name = spelled[1:-1]
    if spelled.startswith('"') or name.startswith("tova/"):
        own = pathlib.PurePosixPath(*file.path.parts[1:]).with_suffix(".hpp")
        return OWN if file.is_source and name in (str(own), f"tova/{own}") else OURS
    stem = name[:-2] if name.endswith(".h") else None
    if stem in C_HEADERS or re.fullmatch(r"[a-z_0-9]+", name):
        return STANDARD
    if stem in SYSTEM_HEADERS or name.startswith(("sys/", "linux/", "gnu/")):
        return SYSTEM
    return OTHER


USER_PROGRAMS = ("examples/", "tools/new_project/", "tests/consumers/")
GROUPS = ["its own header", "our headers", "headers of other libraries", "system headers",
          "standard headers"]


@rule(("src/a/b.cpp", '#include <tova/a/b.hpp>\n\n#include <tova/abi.hpp>\n#include "a/c.hpp"\n\n'
       "#include <boost/any.hpp>\n\n#include <unistd.h>\n#include <vector>\n", 0),
      ("src/a/b.cpp", "#include <vector>\n\n#include <tova/a/b.hpp>\n", 2),
      ("src/a/b.cpp", "#include <tova/abi.hpp>\n\n#include <tova/a/b.hpp>\n", 2),
      ("src/a/b.cpp", "#include <tova/a/b.hpp>\n#include <vector>\n", 1),
      ("src/a/b.cpp", "#include <tova/a/b.hpp>\n\n#if X\n#include <vector>\n#endif\n#include <tova/x.hpp>\n", 0),
      ("tests/a/b_test.cpp", "#include <gtest/gtest.h>\n\n#include <tova/abi.hpp>\n", 1),
      ("tests/a/b_test.cpp", "#include <string>\n\n#include <gtest/gtest.h>\n", 1),
      ("tests/a/b_test.cpp", "#include <gtest/gtest.h>\n#include <unistd.h>\n\n#include <string>\n", 0),
      ("tests/a/b_test.cpp", "#include <string>\n#include <unistd.h>\n", 0),
      ("tests/a/b_test.cpp", "#include <unistd.h>\n\n#include <tova/abi.hpp>\n", 1),
      ("tests/a.cpp", "// House: include_order: b.hpp needs c.\n#include <c>\n\n#include <tova/b.hpp>\n", 0),
      ("tests/a.cpp", "// House: include_order:\n#include <c>\n\n#include <tova/b.hpp>\n", 1),
      ("examples/a/main.cpp", "#include <string>\n\n#include <tova/tova.hpp>\n", 0),
      ("tests/a/b_test.cpp", "#include <Qt/qt.h>\n\n#include <QString>\n\n#include <string>\n", 0))
def include_order(file):
    """Own header, ours, other libraries, the standard library, each group after an empty line."""
    # Examples are written as users write, to whom tova is one of the other libraries.
    if not file.is_cpp or str(file.path).startswith(USER_PROGRAMS):
        return
    depth = 0
    previous = None  # (group, line)
    for number, line in enumerate(file.lines, 1):
        if re.match(r"\s*#\s*if", line):
            depth += 1
        elif re.match(r"\s*#\s*endif", line):
            depth -= 1
        match = re.match(r"\s*#\s*include\s*(<[^>]+>|\"[^\"]+\")", line)
        if not match or depth > 0:
            continue
        group = include_group(file, match.group(1))
        if group == OWN and previous is not None:
            yield number, "the own header must be the first include"
        if previous is None:
            previous = (group, number)
            continue
        before, line_before = previous
        if group == SYSTEM and before == STANDARD or before == SYSTEM and group == OTHER:
            previous = (before if before == STANDARD else group, number)
            continue
        if group < before:
            yield number, f"{GROUPS[group]} come before {GROUPS[before]}"
        elif group > before and line_before == number - 1 and SYSTEM not in (group, before):
            yield number, f"an empty line separates {GROUPS[before]} from {GROUPS[group]}"
        elif group == SYSTEM and before < OTHER and line_before == number - 1:
            yield number, f"an empty line separates {GROUPS[before]} from {GROUPS[group]}"
        previous = (group, number)


@rule(("tests/abi/foreign/a.hpp", "#include <tova/abi.hpp>\n", 1),
      ("tests/abi/a_foreign_test.cpp", '#include "abi/foreign/a.hpp"\n', 0),
      ("tests/abi/a_foreign_test.cpp", "#include <tova/tova.hpp>\n", 1),
      ("tests/abi/a_layout_test.cpp", "#include <tova/tova.hpp>\n", 0))
def foreign_programs(file):
    """A foreign program declares the interface itself."""
    path = str(file.path)
    if path.startswith("tests/abi/foreign/") or path.endswith("_foreign_test.cpp"):
        for number, line in enumerate(file.lines, 1):
            if re.match(r"#include <tova/", line):
                yield number, "a foreign program must not include a header of the library"


# --- Declarations -----------------------------------------------------------------------------------

@rule(("src/a.cpp", "void f(const int& a, char* const& b, int (*c)(int) );\nint f() const&;\n", 0),
      ("src/a.cpp", "void f(int const& a);\nauto const* b = f();\n", 2),
      ("src/a.cpp", "f(std::vector<int> const &a);\n", 1),
      ("src/a.cpp", '// int const& a\nputs("int const& a");\n', 0))
def const_first(file):
    """`const T&`, not `T const&`."""
    if file.is_cpp:
        for number, line in file.code_lines():
            if re.search(r"[\w>]\s+const\s*[&*]", line) and not re.search(r"operator\s+const", line):
                yield number, "write 'const T&' and 'const T*', not 'T const&'"


@rule(("src/a.cpp", "class b : public c {\n    virtual void f() const override;\n};\n", 1),
      ("src/a.cpp", "class b : public c {\n    void f() const override;\n};\n", 0),
      ("src/a.cpp", "class b {\n    virtual void f();\n};\n", 0),
      ("tests/a.hpp", "virtual ~a() throw() override {}\n", 1))
def override_alone(file):
    """`override` says that an operation is virtual; -Wsuggest-override finds those without it."""
    if file.is_cpp:
        for number, line in file.code_lines():
            if re.search(r"\bvirtual\b[^;{]*\boverride\b", line):
                yield number, "an overriding operation says 'override' and not 'virtual'"


@rule(("tests/a/b_test.cpp", "using TOVA_2_18::types::nil;\n", 1),
      ("tests/a/b_test.cpp", "using tova::types::nil;  // TOVA_2_18\n", 0),
      ("tests/abi/b_test.cpp", "using TOVA_2_18::types::nil;\n", 0),
      ("src/a/b.cpp", "namespace TOVA_2_18 {}\n", 0))
def namespace_alias(file):
    """Programs say tova::. Only tests/abi is about the versioned name."""
    if file.is_cpp and file.top not in ("include", "src") and file.path.parts[:2] != ("tests", "abi"):
        for number, line in file.code_lines():
            if "TOVA_2_18" in line:
                yield number, "write 'tova::' instead of 'TOVA_2_18::'"


# --- Size -------------------------------------------------------------------------------------------

@rule(("src/a.cpp", "#include <a>\n\n" + "// overview\n" * 5 + "namespace a {\n" + "int b;\n" * 250 + "}\n", 0),
      ("src/a.cpp", "#include <a>\n\nnamespace a {\n" + "int b;\n" * 250 + "}\n", 1),
      ("src/a.cpp", "#include <a>\n\nnamespace a {\nnamespace {\n\n" + "// overview\n" * 5 + "int b;\n" * 250, 0),
      ("src/a.cpp", "// short\n#include <a>\n" + "int b;\n" * 250, 1),
      ("src/a.cpp", "int b;\n" * 250, 0))
def overview(file):
    """A long source opens with an overview."""
    if file.top != "src" or not file.is_source or len(file.lines) <= LONG_SOURCE:
        return
    longest = run = 0
    for line in file.lines:
        if line.lstrip().startswith("//"):
            run += 1
            longest = max(longest, run)
            continue
        run = 0
        if not re.match(r"\s*$|#|namespace\b.*\{$|using\b.*;$", line):
            break
    if longest < OVERVIEW:
        yield 1, (f"a source of {len(file.lines)} lines opens with an overview of at least {OVERVIEW} "
                  "lines (stages, state, invariants)")


BODY = "    ++i;\n" * 60


@rule(("src/a.cpp", "namespace a {\n\nvoid f(int i) {\n" + BODY + "}\n\n}\n", 1),
      ("src/a.cpp", "// Long because of its table.\nvoid f(int i) {\n" + BODY + "}\n", 0),
      ("src/a.cpp", "void f(int i) {\n    // One long switch.\n" + BODY + "}\n", 0),
      ("src/a.cpp", "// Counts.\nvoid f(int i) {\n" + BODY + "}\n", 1),
      ("src/a.cpp", "c::c(int i)\n    : m_a{i}, m_b(i) {\n" + BODY + "}\n", 1),
      ("src/a.cpp", "const int a[] = {\n" + "    1,\n" * 60 + "};\nclass b {\n" + "    int c;\n" * 60 + "};\n", 0),
      ("src/a.cpp", "struct a {\n    int f() const TOVA_NOTHROW {\n" + BODY + "    }\n};\n", 1),
      ("src/a.cpp", "auto f(int i) -> int {\n" + BODY + "}\n", 1),
      ("src/a.cpp", "void f() {\n" + "    g([] { h(); });\n" * 20 + "}\nvoid g() {\n}\n", 0))
def long_functions(file):
    """A function above 50 lines says in a comment why it is long."""
    if not file.is_cpp or file.top not in ("src", "include", "programs", "tools", "examples"):
        return
    for function in functions(file.text):
        length = function.closing - function.opening + 1
        if length <= LONG_FUNCTION:
            continue
        comment = []
        above = function.first - 2
        while above >= 0 and file.lines[above].lstrip().startswith("//"):
            comment.append(file.lines[above])
            above -= 1
        inside = function.opening
        while inside < len(file.lines) and file.lines[inside].lstrip().startswith("//"):
            comment.append(file.lines[inside])
            inside += 1
        if not re.search(r"\b[Ll]ong(?:er)?\b", " ".join(comment)):
            yield function.first, (f"{function.name} has {length} lines: split it, or say in its "
                                   "comment why it is long")


# --- Names and lists --------------------------------------------------------------------------------

@rule(("tests/a/dates_guide_test.cpp", "", 0, ["docs/dates.md"]),
      ("tests/a/dates_guide_test.cpp", "", 1, ["docs/other.md"]),
      ("tests/a/guide_test.cpp", "", 1, ["docs/dates.md"]),
      ("tests/a/tail_example_test.cpp", "", 0, ["examples/tail/main.cpp"]),
      ("tests/a/example_tail_test.cpp", "", 1, ["examples/tail/main.cpp"]),
      ("tests/a/b_test.cpp", "", 0))
def guide_and_example_tests(file):
    """docs/NAME.md is tested by NAME_guide_test.cpp, examples/NAME by NAME_example_test.cpp."""
    name = file.path.name
    if file.top != "tests" or not name.endswith("_test.cpp"):
        return
    if not re.search(r"(?:^|_)(?:guide|example)s?_", name):
        return
    guide = re.fullmatch(r"(\w+)_guide_test\.cpp", name)
    example = re.fullmatch(r"(\w+)_example_test\.cpp", name)
    if guide and f"docs/{guide.group(1)}.md" in file.siblings:
        return
    if example and any(path.startswith(f"examples/{example.group(1)}/") for path in file.siblings):
        return
    yield 1, "the name must be GUIDE_guide_test.cpp or EXAMPLE_example_test.cpp, of a file in docs/ " \
             "or a folder in examples/"


@rule(("src/a/CMakeLists.txt", "tova_sources(b.cpp c/d.cpp)\n", 0, ["src/a/b.cpp", "src/a/c/d.cpp"]),
      ("src/a/CMakeLists.txt", "tova_sources(b.cpp)\n", 1, ["src/a/b.cpp", "src/a/c/d.cpp"]),
      ("src/a/CMakeLists.txt", "# b.cpp\n", 1, ["src/a/b.cpp"]),
      ("src/a/CMakeLists.txt", "file(GLOB x *.cpp)\n", 1),
      ("src/a/CMakeLists.txt", "tova_sources(../b/c.cpp)\n", 1, ["src/b/c.cpp"]),
      ("tests/a/CMakeLists.txt", "foreach(f IN ITEMS x y)\n  t(${f}_test.cpp)\n", 0,
       ["tests/a/x_test.cpp", "tests/a/y_test.cpp"]),
      ("tests/a/CMakeLists.txt", "tova_add_example_test(b)\n", 0, ["tests/a/b_example_test.cpp"]),
      ("fuzz/CMakeLists.txt", "tova_add_fuzzer(b)\n", 0, ["fuzz/b.cpp"]),
      ("src/CMakeLists.txt", "add_subdirectory(a)\n", 0, ["src/a/b.cpp", "src/a/CMakeLists.txt"]))
def folders_list_their_files(file):
    """Each folder lists its own sources, by name."""
    if file.path.name != "CMakeLists.txt" or file.top not in (
            "src", "programs", "tests", "benchmarks", "fuzz", "examples"):
        return
    if str(file.path) == "tests/consumers/CMakeLists.txt":
        return
    text = re.sub(r"#.*", "", file.text)
    for number, line in enumerate(text.splitlines(), 1):
        if re.search(r"\bGLOB(?:_RECURSE)?\b", line):
            yield number, "list the files by name instead of file(GLOB)"
        for outside in re.findall(r"(?<![\w/}])\.\./[\w./]+\.cpp", line):
            if file.path.parts[:2] == ("tests", "consumers"):
                continue  # its projects all list the one program that they share
            yield number, f"{outside} belongs to another folder"
    words = re.findall(r"[\w./${}]+", text)
    pieces = [word for word in words if word.endswith(".cpp")]
    pieces += [f"{name}_example_test.cpp" for name in
               re.findall(r"tova_add_example_test\((\w+)", text)]
    plain = {word for word in words}
    folder = file.path.parent
    inner_lists = {pathlib.PurePosixPath(path).parent for path in file.siblings
                   if path.endswith("CMakeLists.txt")} - {folder}
    for path in map(pathlib.PurePosixPath, file.siblings):
        if path.suffix != ".cpp" or folder not in path.parents:
            continue
        if any(inner in path.parents and folder in inner.parents for inner in inner_lists):
            continue
        name = str(path.relative_to(folder))
        matches = any(re.fullmatch(re.sub(r"\\\$\\\{\w+\\\}", r"\\w+", re.escape(piece)), name)
                      for piece in pieces)
        if not matches and str(pathlib.PurePosixPath(name).with_suffix("")) not in plain:
            yield 1, f"{name} is not listed"


@rule(("src/a.cpp", "int a;  // TODO later\n", 1), ("src/a.cpp", "int a;\n", 0),
      ("run", "# FIXME\n", 1), ("docs/a.md", "See TODOs.\n", 0))
def unfinished(file):
    """What is left to do is not written into the tree."""
    if str(file.path) == "tools/check_house.py":
        return
    for number, line in enumerate(file.lines, 1):
        if re.search(r"\b(?:TODO|FIXME|XXX)\b", line):
            yield number, "finish it, or leave the remark out"


# --- Running ----------------------------------------------------------------------------------------

def self_test():
    failures = 0
    for function, examples in RULES:
        counts = [example[2] for example in examples]
        if 0 not in counts or not any(counts):
            print(f"{function.__name__}: needs an example that passes and one that does not")
            failures += 1
        for example in examples:
            path, text, expected = example[:3]
            siblings = [path] + list(example[3] if len(example) > 3 else [])
            found = findings(function, File(path, text, siblings))
            if len(found) != expected:
                print(f"{function.__name__}: {expected} findings expected in {path}, got {found}:\n"
                      f"{text[:300]}")
                failures += 1
    print(f"{len(RULES)} rules, {failures} failures of their examples")
    return 1 if failures else 0


def main():
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    names = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, text=True,
                           check=True).stdout.split("\0")[:-1]
    found = collections.Counter()
    for name in names:
        path = ROOT / name
        if not path.is_file() or name.startswith(("fuzz/seeds/", "tests/data/")):
            continue
        try:
            text = path.read_text()
        except UnicodeDecodeError:
            continue
        file = File(name, text, names)
        for function, _ in RULES:
            if sys.argv[1:] and function.__name__ not in sys.argv[1:]:
                continue
            for number, message in findings(function, file):
                print(f"{name}:{number}: {message}")
                found[function.__name__] += 1
    if found:
        print(", ".join(f"{rule}: {count}" for rule, count in found.most_common()))
        return 1
    print(f"house: {len(RULES)} rules hold in {len(names)} files")
    return 0


if __name__ == "__main__":
    sys.exit(main())
