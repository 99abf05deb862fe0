#!/usr/bin/env python3
"""Prepares a header for Doxygen: prints it with a text for each declaration.

Headers are written for people who read them from top to bottom; a reader of the reference lands on one
member. So this filter says at each member what the header says once:

 - One comment describes the declarations that follow it without an empty line, and one `@name` comment
   those up to its `@}`. Each of them gets the text. A comment inside such a group is added to the
   group's text.
 - Copy constructors and assignments without a comment get the sentences of the class comment that say
   something about copies, or those of its base class or of the file comment. Destructors get what
   their declaration says. A class that never says what a copy shares has members without a text,
   which is a warning.
 - A path such as docs/dates.md becomes a link to that page.
 - A declaration that a page of surprises names gets links to the sections that do. FAMILIES says which
   pages are about which headers.
"""
import fnmatch
import functools
import pathlib
import re
import sys

import filter_markdown

ROOT = filter_markdown.ROOT
INCLUDE = ROOT / "include" / "tova"

FAMILIES = {
    "surprises_foundation": ["abi.hpp", "exceptions/*", "debug/*", "memory/*", "functor/*", "traits/*",
                             "generic/abilities.hpp", "generic/clone_interface.hpp", "types/nil.hpp"],
    "surprises_strings": ["strings/*"],
    "surprises_code_pages": ["strings/code_page.hpp"],
    "surprises_numbers": ["generic/convert/*_to_*", "generic/convert/binary.hpp", "types/radix.hpp"],
    "surprises_variant": ["types/variant*", "generic/argument.hpp", "generic/varg_list.hpp"],
    "surprises_files": ["system/*.hpp"],
    "surprises_xml": ["parser/xml_parser.hpp", "parser/xml_token_stream.hpp"],
    "surprises_rendering": ["i18n/format.hpp", "i18n/message*.hpp"],
    "surprises_catalogs": ["i18n/catalog.hpp", "i18n/message_catalogs.hpp"],
    "surprises_dates": ["system/date_time/*"],
    "surprises_units": ["types/*_unit.hpp", "types/color.hpp", "generic/convert/units.hpp"],
    "surprises_stream_parser": ["parser/xml_stream_parser.hpp"],
    "surprises_serialization": ["serialization/*"],
    "surprises_configuration": ["config/*"],
}

DOC = re.compile(r"^\s*///(?!<)")
PASSED_ON = re.compile(r"^\s*(//|/\*|\}|public:|protected:|private:|namespace\b|extern \"C)")
TEMPLATE = r"(?:template\s*<[^;{]*>\s*)?"
TYPE = re.compile(
    rf"^\s*{TEMPLATE}(class|struct|union|enum)\s+(?:TOVA_API\s+|__attribute__\(\(.*?\)\)\s*)?(\w+)")
COPIES = re.compile(r"\b[Cc]op(y|ies)\b")
DELETED = "Deleted: objects of this class cannot be copied."


def code_of(line):
    return re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'|//.*', "", line)


def statement_end(lines, index):
    """The index of the last line of the declaration that begins at `index`."""
    depth = 0
    while index < len(lines):
        code = code_of(lines[index])
        depth += code.count("{") + code.count("(") - code.count("}") - code.count(")")
        if depth <= 0 and re.search(r"[;}]\s*$", code):
            return index
        index += 1
    return len(lines) - 1


def plain(comment):
    """The words of a comment, without its marks."""
    return " ".join(re.sub(r"^\s*/// ?", "", line) for line in comment)


def copy_sentences(comment):
    prose = [line for line in comment if not re.match(r"^\s*///     ", line)]
    sentences = re.split(r"(?<=[.!])\s+(?=[A-Z`])", re.sub(r"\s+", " ", plain(prose)))
    return " ".join(re.sub(r"^Threads: (.)", lambda m: m.group(1).upper(), s.strip()) for s in sentences
                    if COPIES.search(s) and "@file" not in s)


def declared_name(statement):
    """The name that a declaration declares, `operator==` and `~timer` included."""
    code = " ".join(code_of(line).strip() for line in statement)
    code = re.sub(r"__attribute__\s*\(\(.*?\)\)|\bTOVA_API\b", "", code)
    code = re.sub(rf"^\s*{TEMPLATE}", "", code)
    match = re.search(r"\boperator\s*(\(\)|[^\s\w(]+|\w[\w ]*?)\s*\(", code)
    if match:
        return "operator" + (" " if match.group(1)[0].isalpha() else "") + match.group(1)
    match = re.search(r"(~?\w+)\s*\(", code) or re.search(r"(\w+)\s*(=[^;]*)?;", code)
    return match.group(1) if match else ""


@functools.lru_cache(maxsize=None)
def surprises(header):
    """The sections about surprises of a header, as (reference, title, the names that it is about)."""
    found = []
    for path in sorted((ROOT / "docs").glob("surprises_*.md")):
        if not any(fnmatch.fnmatch(header, pattern) for pattern in FAMILIES.get(path.stem, ())):
            continue
        anchors = dict(filter_markdown.headings(path))
        section, fences, is_rule, code = None, 0, True, set()
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines() + ["## "], 1):
            if filter_markdown.FENCE.match(line):
                fences += 1
            elif line.startswith("## ") and (number in anchors or line == "## "):
                if section and not section[2]:
                    section[2].update(code)
                if line == "## ":
                    break
                section = (f"{filter_markdown.page_name(path)}-{anchors[number]}", line[3:].strip(),
                           {name for name in re.findall(r"[\w:~]+", line) if re.search("[_:]", name)})
                found.append(section)
                fences, is_rule, code = 0, True, set()
            elif section and fences % 2 == 0:
                is_rule = is_rule and not line.startswith("**Instead")
                for span in re.findall(r"`([^`]+)`", line) if is_rule else []:
                    section[2].update(re.findall(r"[\w:~]+", span))
            elif section and fences == 1:  # a section that names nothing shows it in its first block
                code.update(name for name in re.findall(r"\w+", line) if "_" in name)
    return found


def links(header, name, owner, indent):
    """The comment lines with the surprises of one declaration."""
    if not name or name.startswith(("~", "operator")):
        return []
    # The surprises of a class are at the class, not at each of its constructors. A free function may
    # be named with its namespace, which the path of the header contains.
    if owner:
        wanted = {f"{owner}::{name}"} | ({name} if name != owner else set())
    else:
        wanted = {name} | {f"{part}::{name}" for part in re.split("[/.]", header)}
    sections = [s for s in surprises(header) if s[2] & wanted]
    if not sections:
        return []
    lines = [f"{indent}///", f"{indent}/// @par Surprises"]
    if len(sections) > 5:
        pages = {anchor.split("-")[0]: None for anchor, _, _ in sections}
        return lines + [f"{indent}/// See @ref {page}." for page in pages]
    return lines + [f"{indent}/// - [{title}](@ref {anchor})" for anchor, title, _ in sections]


class Scope:
    """A class that is being read."""

    def __init__(self, name, bases, indent, comment, outer, file_comment):
        self.name = name
        self.indent = indent
        self.copies = copy_sentences(comment)
        for base in bases:
            self.copies = self.copies or (outer[base].copies if base in outer else "")
        self.copies = self.copies or copy_sentences(file_comment)
        outer[name] = self


def special_text(scope, statement):
    """What a copy operation or a destructor says if no comment says it."""
    code = re.sub(r"\s+", " ", " ".join(code_of(line) for line in statement)).strip()
    name = re.escape(scope.name)
    parameter = rf"\(\s*const {name}(<[^()]*>)?&\s*\w*\s*\)"
    is_copy = re.match(rf"(constexpr |inline )?{name}{parameter}", code)
    is_assignment = re.search(rf"\b(operator=|assign)\s*{parameter}", code)
    if (is_copy or is_assignment) and "= delete" in code:
        return DELETED
    if is_copy and scope.copies:
        return f"A copy of the argument. {scope.copies}"
    if is_assignment and scope.copies:
        return f"Becomes a copy of the argument, and returns this object. {scope.copies}"
    if re.match(rf"(virtual )?~{name}\s*\(", code):
        if re.search(r"\bvirtual\b|\boverride\b", code):
            return ("Virtual: an object of a derived class may be deleted through a pointer to this "
                    "class. Never fails.")
        return ("Not virtual: an object of a derived class must not be deleted through a pointer to "
                "this class. Never fails.")
    return ""


def convert(lines, header=""):
    out = []
    text = []  # the comment that holds for the declarations to come
    group = []  # the text of an open @name group
    scopes = []  # the classes around the line
    known = {}
    file_comment = []
    comment = []  # the comment that ends right above the line
    index = 0
    while index < len(lines):
        line = lines[index]
        if DOC.match(line):
            comment = []
            while index < len(lines) and DOC.match(lines[index]):
                comment.append(lines[index])
                index += 1
            joined = "\n".join(comment)
            if "@file" in joined:
                file_comment = comment
                out.extend(comment)
                if surprises(header):
                    pages = {}
                    for anchor, _, _ in surprises(header):
                        pages[anchor.split("-")[0]] = None
                    out.append("///")
                    out.extend(f"/// See also @ref {page}." for page in pages)
                comment = []
            elif "@{" in joined:
                group = [c for c in comment if "@{" not in c and "@name" not in c]
                text = group
                # A group without a text of its own above its members: they carry it.
                out.extend(c for c in comment if c not in group)
                out.append("")
                comment = []
            elif "@}" in joined:
                group = text = []
                out.extend(comment)
                comment = []
            continue
        if line.strip() == "":
            out.extend(comment)
            comment = []
            text = group
            out.append(line)
            index += 1
            continue
        if line.startswith("#"):
            out.extend(comment)
            comment = []
            while lines[index].endswith("\\"):
                out.append(lines[index])
                index += 1
            out.append(lines[index])
            index += 1
            continue
        if PASSED_ON.match(line):
            if scopes and re.match(rf"^{scopes[-1].indent}\}};", line):
                scopes.pop()
            out.extend(comment)
            comment = []
            if not re.match(r"^\s*//", line):
                text = group
            out.append(line)
            index += 1
            continue

        end = statement_end(lines, index)
        opening = " ".join(code_of(l) for l in lines[index:end + 1])
        kind = TYPE.match(opening)
        if kind and "{" not in opening.split(";")[0]:  # declared only
            # A template that is declared for its specialization would get a page without a text.
            if not opening.lstrip().startswith("template"):
                out.extend(comment)
                out.extend(lines[index:end + 1])
            comment = []
            index = end + 1
            continue
        if kind and kind.group(1) == "enum":
            out.extend(comment)
            comment = []
            out.extend(lines[index:end + 1])
            index = end + 1
            continue
        if kind:
            name = kind.group(2)
            indent = re.match(r"\s*", line).group(0)
            head = opening.split("{")[0]
            bases = re.findall(r"(?:public|private)\s+(?:\w+::)*(\w+)", head)
            # Only a class whose body spans lines has members to describe.
            out.extend(comment)
            if comment:
                out.extend(links(header, name, "", indent))
            while "{" not in code_of(lines[index]):
                out.append(lines[index])
                index += 1
            out.append(lines[index])
            if "}" not in code_of(lines[index]):
                scopes.append(Scope(name, bases, indent, comment, known, file_comment))
            comment = []
            text = group
            index += 1
            continue

        statement = lines[index:end + 1]
        indent = re.match(r"\s*", line).group(0)
        owner = scopes[-1] if scopes else None
        own = text
        if comment and group:  # for this declaration alone
            own = group + [f"{indent}///"] + comment
        elif comment:
            own = text = comment
        if owner and not comment:
            special = special_text(owner, statement)
            # What the first declaration of a block does is not what a copy or a destructor does.
            is_assignment = re.search(r"\b(operator=|assign)\s*\(", " ".join(statement))
            if special and (special == DELETED or not (is_assignment and text)):
                own = [f"{indent}/// {special}"]
        if own and own != comment and "`!=`" not in "\n".join(own) and (
                declared_name(statement) == "operator!="):
            own = [f"{indent}/// Returns the opposite of `==`.", f"{indent}///"] + own
        if "///<" in "\n".join(statement):
            own = []
        out.extend(own)
        if own:
            out.extend(links(header, declared_name(statement), owner.name if owner else "", indent))
        out.extend(statement)
        comment = []
        index = end + 1
    return out


def mark_code(lines):
    """Puts indented examples between @code and @endcode, which gives them colors and a copy button."""
    out = []
    index = 0
    while index < len(lines):
        match = re.match(r"^(\s*///)     ", lines[index])
        if not match or not re.match(r"^\s*///\s*$", lines[index - 1]):
            out.append(lines[index])
            index += 1
            continue
        mark = match.group(1)
        end = index
        while end < len(lines) and re.match(r"^\s*///(     .*|\s*)$", lines[end]):
            end += 1
        while re.match(r"^\s*///\s*$", lines[end - 1]):
            end -= 1
        example = [mark + line[len(mark) + 5:] for line in lines[index:end]]
        is_code = any(re.search(r"[;{]\s*$|(^|\s)// ", line) for line in example)
        out.append(f"{mark} @code{{.{'cpp' if is_code else 'unparsed'}}}")
        out.extend(mark + " " + line[len(mark):] for line in example)
        out.append(f"{mark} @endcode")
        index = end
    return out


def link_pages(line):
    """Turns the name of a page into a link to it."""
    if not DOC.match(line):
        return line

    def replace(match):
        path = ROOT / match.group(1)
        if not path.exists():
            sys.exit(f"{match.group(1)} is named in a comment and does not exist")
        return f"@ref {filter_markdown.page_name(path)}"
    return re.sub(r"`?(docs/\w+\.md)`?", replace, line)


def main():
    path = pathlib.Path(sys.argv[1]).resolve()
    with open(path, encoding="utf-8") as header:
        lines = header.read().splitlines()
    # An alias of the namespace to itself, as Doxygen sees it, and instantiations, which are declared
    # elsewhere, have no text of their own.
    kept = [line for line in lines if line != "namespace tova = TOVA_2_18;"]
    text = re.sub(r"^ *extern template [^;]*;\n", "", "\n".join(kept) + "\n", flags=re.M)
    name = path.relative_to(INCLUDE).as_posix() if INCLUDE in path.parents else path.name
    sys.stdout.write("\n".join(link_pages(l) for l in mark_code(convert(text.splitlines(), name))) + "\n")


if __name__ == "__main__":
    main()
