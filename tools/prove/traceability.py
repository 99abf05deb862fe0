"""Finds the tests of each surprise, each exported name and each published text.

- A surprise is a heading of docs/surprises_*.md. The test of its page runs its code and compares the
  output.
- An exported name is tested by the programs that link against it, or, if it is only called through a
  table of virtual functions or by the library itself, by those of its family.
- A published text is a string with a space in src/. A test has it letter by letter.
"""
import collections
import re
import subprocess

import tests_of_build

TITLE = "What tests what"
SOURCES = ("docs", "examples", "tests", "tools/prove/tests_of_build.py")


def surprises(root):
    for page in sorted((root / "docs").glob("surprises_*.md")):
        for section in re.split(r"^## ", page.read_text(), flags=re.M)[1:]:
            heading, _, body = section.partition("\n")
            yield {"page": page.name, "heading": heading.strip(), "test": f"docs_{page.stem}_test",
                   "blocks": len(re.findall(r"^```cpp", body, re.M))}


def symbols(path, *options):
    listing = subprocess.run(["nm", "--dynamic", *options, path], check=True, capture_output=True,
                             text=True).stdout
    return {line.split()[-1].split("@")[0] for line in listing.splitlines() if line.strip()}


def demangled(names):
    names = sorted(names)
    done = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True)
    return dict(zip(names, done.stdout.splitlines()))


def exported_names(build):
    """Each exported function with the test programs that refer to it."""
    exported = {name for name in symbols(build / "libtova.so.2.18.0", "--defined-only")
                if "9TOVA_2_18" in name and not name.startswith(("_ZTV", "_ZTI", "_ZTS", "_ZTT"))}
    users = collections.defaultdict(set)
    for program in tests_of_build.programs_of(build):
        for name in symbols(program.path, "--undefined-only") & exported:
            users[name].add(program.name)
    # Complete and base object versions of one constructor or destructor are one name for a reader.
    readable = demangled(exported)
    merged = collections.defaultdict(set)
    for name in exported:
        merged[re.sub(r" \[clone .*\]", "", readable[name])] |= users[name]
    return merged


# A literal that begins after a quote that no backslash precedes; prefixes of wide strings aside.
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')


def published_texts(root):
    for source in sorted((root / "src").rglob("*.cpp")) + sorted((root / "src").rglob("*.hpp")):
        for number, line in enumerate(source.read_text().splitlines(), 1):
            code = line.split("//")[0]
            if code.lstrip().startswith(("#", "*", "__asm__")):
                continue
            for text in LITERAL.findall(code):
                if " " in text.strip() and re.search(r"[A-Za-z]{3}", text):
                    yield str(source.relative_to(root)), number, text


def reasons(root):
    lines = (root / "tools/prove/traceability.txt").read_text().splitlines()
    return dict(tuple(part.strip() for part in line.split(" ||| "))
                for line in lines if line and not line.startswith("#"))


def measure(context):
    build = context.build("release")
    root = context.root
    # Long literals are broken over lines; the compiler joins them, and so does this.
    haystack = {path.relative_to(root).as_posix(): re.sub(r'"\s*\n\s*(?:L|u8?|U)?"', "", path.read_text(errors="replace"))
                for folder in ("tests", "docs", "examples") for path in (root / folder).rglob("*")
                if path.is_file() and path.suffix in (".cpp", ".hpp", ".txt", ".md", ".py")}
    known = reasons(root)
    texts = []
    for source, number, text in published_texts(root):
        # A test has the text with numbers instead of conversions, and may quote it inside a longer one.
        wanted = [piece.strip(" +\\\"") for piece in re.split(r"%\w+|\\n", text)]
        found = sorted(name for name, content in haystack.items()
                       if not name.startswith("docs/") and all(piece in content for piece in wanted))
        texts.append({"place": f"{source}:{number}", "text": text, "tests": found,
                      "reason": known.get(text, "")})
    names = exported_names(build)
    return {"surprises": list(surprises(root)),
            "names": [{"name": name, "tests": sorted(tests)} for name, tests in sorted(names.items())],
            "texts": texts}


def shown(tests):
    more = f" and {len(tests) - 3} more" if len(tests) > 3 else ""
    return ", ".join(f"`{name.split('/')[-1]}`" for name in tests[:3]) + more


def report(result):
    families = collections.defaultdict(lambda: [0, 0])
    for one in result["names"]:
        family = one["name"].split("TOVA_2_18::", 1)[1].split("::")[0] if "TOVA_2_18::" in one["name"] else "?"
        families[family][0] += 1
        families[family][1] += bool(one["tests"])
    names = "\n".join(f"| `{family}` | {count:,} | {direct:,} | {count - direct:,} |"
                      for family, (count, direct) in sorted(families.items()))
    surprises_of_page = collections.Counter(one["page"] for one in result["surprises"])
    with_code = collections.Counter(one["page"] for one in result["surprises"] if one["blocks"])
    pages = "\n".join(f"| [{page}]({page}) | {count} | {with_code[page]} | `docs_{page[:-3]}_test` |"
                      for page, count in sorted(surprises_of_page.items()))
    texts = "\n".join(f"| `{one['place']}` | {one['text'].replace('|', chr(92) + '|')} | {shown(one['tests']) or one['reason'] or '**none**'} |"
                      for one in result["texts"])
    return f"""Every surprise, by page; the test runs the code of each and compares the output:

| page | surprises | with code that runs | test |
|---|---|---|---|
{pages}

Every exported name, by family. A name is called directly if a test program links against it; the others
are called through virtual functions or by the library:

| family | names | called directly | called otherwise |
|---|---|---|---|
{names}

Every text with a space in the library's sources:

| place | text | tests |
|---|---|---|
{texts}"""


def failures(result):
    missed = [f"no test has the text of {one['place']}: {one['text']}"
              for one in result["texts"] if not one["tests"] and not one["reason"]]
    missed += [f"the surprise has no code: {one['page']}: {one['heading']}"
               for one in result["surprises"] if not one["blocks"]]
    return missed
