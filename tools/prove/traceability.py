"""Finds the tests of each surprise, each exported name and each published text.

- A surprise is a heading of docs/surprises_*.md. The test of its page runs its code and compares the
  output.
- An exported name is tested by the programs that link against it. Of a name that is only called through a
  table of virtual functions or by the library itself, clang 19 counts the calls in each test program.
- A published text is a string of src/ with letters. A test has it letter by letter.

The page shows the numbers, and docs/traceability.md the whole tables. The quick form leaves out the calls
that clang counts.
"""
import collections
import concurrent.futures
import re
import shutil
import subprocess

import tests_of_build

TITLE = "What tests what"
DETAILS = "traceability.md"
SOURCES = ("docs", ":!docs/testing.md", f":!docs/{DETAILS}", "examples", "tests", "tools/prove/tests_of_build.py")


def surprises(root):
    for page in sorted((root / "docs").glob("surprises_*.md")):
        for section in re.split(r"^###? ", page.read_text(), flags=re.M)[1:]:
            heading, _, body = section.partition("\n")
            if body.strip():  # or else it is the heading of a group
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


def callers(context, build):
    """Each function that a test program runs, with the programs, as clang counts them."""
    counting = context.build("coverage", "tova")

    def run(program):
        folder = context.scratch / f"profiles-{program.name}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        tests_of_build.run(program, counting, folder, 1800, (), {"LLVM_PROFILE_FILE": str(folder / "%p.profraw")})
        counts = ""
        for profile in folder.glob("*.profraw"):
            counts += subprocess.run(["llvm-profdata-19", "show", "--all-functions", profile], capture_output=True,
                                     text=True).stdout
        shutil.rmtree(folder)
        return program.name, set(re.findall(r"^  (?:\S*[:;])?(\S+):\n(?:    .*\n)*?    Function count: [1-9]", counts, re.M))

    found = collections.defaultdict(set)
    with concurrent.futures.ThreadPoolExecutor(context.jobs) as pool:
        for program, names in pool.map(run, tests_of_build.programs_of(build)):
            for name in names:
                found[name].add(program)
    return found


def exported_names(context, build):
    """Each exported function with the test programs that refer to it, and those that run it otherwise."""
    exported = {name for name in symbols(build / "libtova.so.2.18.0", "--defined-only")
                if re.match("_ZNK?9TOVA_2_18", name)}
    users = collections.defaultdict(set)
    for program in tests_of_build.programs_of(build):
        for name in symbols(program.path) & exported:  # copied objects are defined in the program
            users[name].add(program.name)
    running = {} if context.quick else callers(context, build)
    # The versions of one constructor or destructor are one name for a reader.
    readable = demangled(exported | set(running))
    merged = {readable[name]: (set(), set()) for name in exported}
    for name in exported:
        merged[readable[name]][0].update(users[name])
    for name, programs in running.items():
        if readable[name] in merged:
            merged[readable[name]][1].update(programs)
    return merged


# A literal that begins after a quote that no backslash precedes; prefixes of wide strings aside.
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')


def published_texts(root):
    for source in sorted((root / "src").rglob("*.cpp")) + sorted((root / "src").rglob("*.hpp")):
        for number, line in enumerate(source.read_text().splitlines(), 1):
            code = line.split("//")[0]
            if re.match(r"\s*(#|\*|__asm__|__attribute__)", code) or "__builtin_cpu_supports" in code:
                continue
            for text in LITERAL.findall(code):
                if re.search(r"[A-Za-z]{2}", text):
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
    names = exported_names(context, build)
    return {"quick": context.quick, "surprises": list(surprises(root)),
            "names": [{"name": name.replace("TOVA_2_18::", ""), "tests": sorted(direct), "callers": sorted(otherwise),
                       "reason": known.get(name.replace("TOVA_2_18::", ""), "")}
                      for name, (direct, otherwise) in sorted(names.items())],
            "texts": texts}


def shown(tests):
    more = f" and {len(tests) - 3} more" if len(tests) > 3 else ""
    return ", ".join(f"`{name.split('/')[-1]}`" for name in tests[:3]) + more


def escaped(text):
    return text.replace("|", "\\|")


def table(head, rows):
    return "\n".join([f"| {' | '.join(head)} |", "|---" * len(head) + "|", *(f"| {' | '.join(row)} |" for row in rows)])


def report(result):
    pages = collections.Counter(one["page"] for one in result["surprises"])
    families = collections.defaultdict(lambda: [0, 0, 0])
    for one in result["names"]:
        family = families[re.sub(r"^(.*? )?(\w+)::.*", r"\2", one["name"].split("(")[0])]
        family[0] += 1
        family[1] += bool(one["tests"])
        family[2] += bool(not one["tests"] and one["callers"])
    with_test = sum(bool(one["tests"]) for one in result["texts"])
    return f"""[The whole tables]({DETAILS}) name the tests of each surprise, each exported name and each text.

Every surprise has code that a test runs, whose output it compares:

{table(("page", "surprises", "test"), ((f"[{page}]({page})", str(count), f"`docs_{page[:-3]}_test`")
                                       for page, count in sorted(pages.items())))}

Exported names. A name is called directly if a test program links against it, and otherwise through virtual
functions or by the library:

{table(("family", "names", "called directly", "called otherwise"),
       ((f"`{family}`", *(f"{count:,}" for count in counts)) for family, counts in sorted(families.items())))}

Of {len(result["texts"])} texts in the library's sources, {with_test} are in a test letter by letter, and the others
have a reason."""


def details(result):
    """The whole tables, for a page of their own."""
    return f"""# Traceability

`./run prove` writes this page; nothing in it is written by hand. It names at most three tests for each row.

## Surprises

{table(("surprise", "page", "test"), ((one["heading"], f"[{one['page']}]({one['page']})", f"`{one['test']}`")
                                      for one in result["surprises"]))}

## Exported names

{table(("name", "called directly by", "called otherwise by"),
       ((f"`{escaped(one['name'])}`", shown(one["tests"]), one["reason"] or shown(one["callers"]))
        for one in result["names"]))}

## Texts

{table(("place", "text", "tests"), ((f"`{one['place']}`", f"`{escaped(one['text'])}`", shown(one["tests"]) or one["reason"])
                                    for one in result["texts"]))}
"""


def failures(result):
    missed = [f"no test has the text of {one['place']}: {one['text']}"
              for one in result["texts"] if not one["tests"] and not one["reason"]]
    missed += [f"the surprise has no code: {one['page']}: {one['heading']}"
               for one in result["surprises"] if not one["blocks"]]
    if not result["quick"]:
        missed += [f"no test runs {one['name']}" for one in result["names"]
                   if not (one["tests"] or one["callers"] or one["reason"])]
    return missed
