#!/usr/bin/env python3
"""Compares the reference with the exported symbols: check_names.py [XML_DIRECTORY]

 1. Every public and protected name in the reference has a text: classes, functions, fields, types, and
    the values of enumerations.
 2. Every symbol in tests/abi/symbols has its entry in the reference, overload by overload.
 3. Every function and object in the reference that the library defines is one of those symbols.
 4. Every page of surprises is linked from some header.

The lists of symbols name what the library exports, and the ABI tests keep them equal to it. Names in
`_private` are exported and not documented. `check_names.py --self-test` checks this script itself.
"""
import collections
import pathlib
import re
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

import filter_header

ROOT = pathlib.Path(__file__).resolve().parents[2]
KINDS = {"class", "struct", "namespace"}

Member = collections.namedtuple("Member", "name kind has_text is_elsewhere in_template signature")


def text_of(element):
    return "" if element is None else " ".join("".join(element.itertext()).split())


def without_arguments(name):
    """A name without template arguments: `delegate_t< Result(Arguments...)>::invoke` loses them."""
    name = re.sub(r"operator(<<|->|<|>)", lambda m: "operator" + m.group(1).translate({60: 1, 62: 2}),
                  name)
    previous = None
    while previous != name:
        previous, name = name, re.sub(r"\s*<[^<>]*>", "", name)
    return name.replace("\1", "<").replace("\2", ">")


def documented(directory):
    """What the reference shows, as (members, classes with whether they have a text, private names)."""
    members, classes, has_text, overrides = [], {}, {}, {}
    found, private = [], set()
    for path in sorted(directory.glob("*.xml")):
        for compound in ElementTree.parse(path).getroot().findall("compounddef"):
            if compound.get("kind") not in KINDS:
                continue
            scope = text_of(compound.find("compoundname"))
            if "_private" in scope or not scope.startswith("tova") or compound.get("prot") == "private":
                continue
            in_template = compound.find("templateparamlist") is not None
            own = bool(text_of(compound.find("briefdescription")) or
                       text_of(compound.find("detaileddescription")))
            classes[without_arguments(scope)] = own
            for member in compound.iter("memberdef"):
                if member.get("prot") == "private":
                    private.add(f"{without_arguments(scope)}::{text_of(member.find('name'))}")
                    continue
                if member.get("kind") == "friend":
                    continue
                found.append((without_arguments(scope), in_template, member))
                identity = member.get("id")
                has_text[identity] = bool(text_of(member.find("briefdescription")) or
                                          text_of(member.find("detaileddescription")))
                base = member.find("reimplements")
                if base is not None:
                    overrides[identity] = base.get("refid")
    for scope, in_template, member in found:
        identity = member.get("id")
        while not has_text.get(identity, False) and identity in overrides:
            identity = overrides[identity]
        name = text_of(member.find("name"))
        arguments = text_of(member.find("argsstring"))
        # What no library defines: templates, inline functions, slots without a body.
        is_elsewhere = (member.get("inline") == "yes" or member.find("templateparamlist") is not None or
                        member.get("virt") == "pure-virtual" or
                        re.search(r"=\s*(delete|default|0)$", arguments) is not None)
        members.append(Member(f"{scope}::{name}", member.get("kind"), has_text.get(identity, False),
                              is_elsewhere, in_template, arguments))
        for value in member.findall("enumvalue"):
            has = text_of(value.find("briefdescription")) or text_of(value.find("detaileddescription"))
            members.append(Member(f"{scope}::{text_of(value.find('name'))}", "value", bool(has), True,
                                  in_template, ""))
    return members, classes, private


def exported(lines):
    """The symbols by name, as ({name: its declarations}, {class})."""
    names, classes = collections.defaultdict(set), set()
    for line in lines:
        line = line.strip()
        if not line or line.startswith("#"):
            continue
        symbol = line.replace("TOVA_2_18", "tova").replace("[abi:cxx11]", "")
        about = re.match(r"(vtable|typeinfo|typeinfo name|VTT) for (.*)", symbol)
        if about:
            if "_private" not in about.group(2):
                classes.add(without_arguments(about.group(2)))
            continue
        plain = without_arguments(symbol)
        match = re.match(r"(?:.* )?(tova::[\w:~]*?(?:operator ?(?:\(\)|[^\s(]+)|[~\w]+))(?:\(|$)", plain)
        if not match:
            sys.exit(f"check_names.py cannot read the symbol {line}")
        if "_private" not in match.group(1):
            names[match.group(1)].add(symbol)
    return names, classes


def compare(directory, lines):
    members, classes, private = documented(directory)
    names, exported_classes = exported(lines)
    errors = [f"{name} has no text" for name, has_text in classes.items() if not has_text]
    errors += [f"{m.name}{m.signature} has no text" for m in members if not m.has_text]
    enumerations = {m.name for m in members if m.kind == "enum"}
    errors += [f"{name} is exported and has no page"
               for name in exported_classes - set(classes) - enumerations]

    by_name = collections.defaultdict(list)
    for member in members:
        by_name[member.name].append(member)
    for name, symbols in names.items():
        entries = by_name[name]
        if not entries and name in private:
            continue
        if not entries:
            errors.append(f"{name} is exported and not in the reference")
        elif not any("<" in symbol.split("(")[0].replace("operator<<", "") for symbol in symbols):
            if len(entries) < len(symbols):
                errors.append(f"{name} has {len(entries)} entries for {len(symbols)} symbols")
    for name, entries in by_name.items():
        defined = [m for m in entries if m.kind in ("function", "variable") and not m.is_elsewhere and
                   not m.in_template]
        # The fields of a class have no symbol.
        is_field = all(m.kind == "variable" for m in defined) and name.rsplit("::", 1)[0] in classes
        if defined and len(names.get(name, ())) < len(defined):
            if not (is_field and name not in names):
                errors.append(f"{name} has {len(defined)} entries for {len(names.get(name, ()))} symbols")
    return sorted(set(errors)), len(members) + len(classes), sum(map(len, names.values()))


def unlinked_pages():
    headers = [path.relative_to(filter_header.INCLUDE).as_posix()
               for path in filter_header.INCLUDE.rglob("*.hpp")]
    linked = {anchor.split("-")[0] for header in headers for anchor, _, _ in
              filter_header.surprises(header)}
    return [f"docs/{path.name}: FAMILIES in filter_header.py names no header for this page"
            for path in sorted((ROOT / "docs").glob("surprises_*.md"))
            if filter_header.filter_markdown.page_name(path) not in linked]


def self_test():
    """A reference with one error of each kind, and the symbols that go with it."""
    xml = """<doxygen><compounddef kind="class" prot="public"><compoundname>tova::a::box</compoundname>
      <briefdescription><para>A box.</para></briefdescription><sectiondef>
      <memberdef kind="function" id="1" prot="public" inline="no"><name>open</name>
        <argsstring>(int)</argsstring><briefdescription><para>Opens.</para></briefdescription>
      </memberdef>
      <memberdef kind="function" id="2" prot="public" inline="no"><name>shut</name>
        <argsstring>()</argsstring><briefdescription/></memberdef>
      <memberdef kind="function" id="3" prot="public" inline="no"><name>gone</name>
        <argsstring>()</argsstring><briefdescription><para>Gone.</para></briefdescription></memberdef>
      <memberdef kind="variable" id="4" prot="public"><name>size</name>
        <briefdescription><para>A field.</para></briefdescription></memberdef>
      <memberdef kind="function" id="5" prot="private"><name>grow</name></memberdef>
      </sectiondef></compounddef></doxygen>"""
    symbols = ["# a comment", "", "vtable for TOVA_2_18::a::box", "typeinfo for TOVA_2_18::a::lid",
               "TOVA_2_18::a::box::open(int)", "TOVA_2_18::a::box::open(long)",
               "TOVA_2_18::a::box::shut()", "TOVA_2_18::a::box::grow()", "TOVA_2_18::a::operator<<(std::ostream&, int)",
               "TOVA_2_18::a::_private::hidden()",
               "TOVA_2_18::a::str<char>[abi:cxx11](std::vector<int, std::allocator<int> > const&)"]
    expected = ["tova::a::box::gone has 1 entries for 0 symbols",
                "tova::a::box::open has 1 entries for 2 symbols",
                "tova::a::box::shut() has no text",
                "tova::a::lid is exported and has no page",
                "tova::a::operator<< is exported and not in the reference",
                "tova::a::str is exported and not in the reference"]
    with tempfile.TemporaryDirectory() as directory:
        (pathlib.Path(directory) / "box.xml").write_text(xml, encoding="utf-8")
        errors, _, _ = compare(pathlib.Path(directory), symbols)
    if errors != expected:
        sys.exit("names: the self-test found\n" + "\n".join(errors))
    if without_arguments("tova::x< a::b<int>, void (int)>::operator->") != "tova::x::operator->":
        sys.exit("names: template arguments are not removed")
    print("names: the self-test finds one error of each kind")


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
        return
    directory = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/docs/xml")
    lines = [line for path in sorted((ROOT / "tests/abi/symbols").glob("*.txt"))
             for line in path.read_text(encoding="utf-8").splitlines()]
    errors, entries, symbols = compare(directory, lines)
    errors += unlinked_pages()
    if errors:
        print("\n".join(errors[:60]))
        sys.exit(f"names: {len(errors)} errors")
    print(f"names: {entries} entries, all with a text, and {symbols} symbols, all with an entry")


if __name__ == "__main__":
    main()
