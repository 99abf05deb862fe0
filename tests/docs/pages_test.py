#!/usr/bin/env python3
"""Checks the pages as a whole: pages_test.py PROJECT PAGE...

- Something runs every C++ block of every page. PAGE is a page that extract_page.py turns into a test, as
  its path below PROJECT. The code of the README is examples/hello, which has a test of its own.
- The manual or the list of surprises links to every guide.
- Each entry of the changelog says what happens to the binary interface.
"""
import pathlib
import re
import sys
import tempfile

FENCE = re.compile(r"^\s*(```+|~~~+)\s*\{?\.?([\w+]*)")
CPP = {"cpp", "c++", "cc", "cxx", "hpp"}
EXAMPLE_OF_README = "examples/hello/main.cpp"


def pages(project):
    """Every page that users read."""
    yield from sorted(project.glob("*.md"))
    for folder in ("docs", "examples"):
        yield from sorted((project / folder).rglob("*.md"))


def cpp_blocks(page):
    """The C++ blocks of a page as (line number, language, text)."""
    fence = None
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        mark = FENCE.match(line)
        if fence is None and mark:
            fence, language, start, text = mark.group(1), mark.group(2).lower(), number, ""
        elif fence is not None and line.strip() == fence:
            if language in CPP:
                yield start, language, text
            fence = None
        elif fence is not None:
            text += line + "\n"


def lost_guides(project):
    """Guides that no table of contents links to."""
    docs = project / "docs"
    linked = set()
    for name in ("manual.md", "surprises.md"):
        if (docs / name).is_file():
            linked.update(re.findall(r"\]\(([\w/]+\.md)\)", (docs / name).read_text(encoding="utf-8")))
    for page in sorted(docs.glob("*.md")):
        if page.name != "manual.md" and page.name not in linked:
            yield f"docs/{page.name}: docs/manual.md does not link to this page"


def silent_entries(project):
    """Entries of the changelog that do not say how they affect compiled programs."""
    path = project / "CHANGELOG.md"
    text = path.read_text(encoding="utf-8") if path.is_file() else ""
    for entry in re.split(r"^## ", text, flags=re.M)[1:]:
        if "Binary interface: " not in entry:
            yield f"CHANGELOG.md: the entry {entry.splitlines()[0]} says nothing after Binary interface:"


def findings(project, listed):
    found = [*lost_guides(project), *silent_entries(project)]
    for name in listed:
        if not (project / name).is_file():
            found.append(f"{name}: listed, but there is no such page")
    for page in pages(project):
        name = str(page.relative_to(project))
        for line, language, text in cpp_blocks(page):
            if name == "README.md":
                if text != (project / EXAMPLE_OF_README).read_text(encoding="utf-8"):
                    found.append(f"{name}:{line}: not the code of {EXAMPLE_OF_README}")
            elif name not in listed:
                found.append(f"{name}:{line}: nothing runs this block; list the page in "
                             "tests/docs/CMakeLists.txt")
            elif language != "cpp":
                found.append(f"{name}:{line}: write ```cpp, or the block does not run")
    return found


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        project = pathlib.Path(folder)
        (project / "docs" / "more").mkdir(parents=True)
        (project / "examples" / "hello").mkdir(parents=True)
        (project / EXAMPLE_OF_README).write_text("int main() {}\n")
        (project / "README.md").write_text("```cpp\nint main() {}\n```\n")
        (project / "docs" / "manual.md").write_text("[Run](run.md)\n")
        (project / "CHANGELOG.md").write_text("# Changes\n\n## 1\n\nBinary interface: new.\n")
        (project / "docs" / "run.md").write_text("```cpp\nint a;\n```\n```sh\nls\n```\n")
        assert findings(project, ["docs/run.md"]) == []
        assert len(findings(project, [])) == 1
        assert len(findings(project, ["docs/run.md", "docs/gone.md"])) == 1
        (project / "docs" / "more" / "new.md").write_text("text\n\n~~~ c++\nint a;\n~~~\n")
        assert findings(project, ["docs/run.md"])[0].startswith("docs/more/new.md:3: nothing runs")
        assert findings(project, ["docs/run.md", "docs/more/new.md"])[0].endswith("does not run")
        (project / "docs" / "more" / "new.md").unlink()
        (project / "README.md").write_text("```cpp\nint other;\n```\n")
        assert findings(project, ["docs/run.md"]) == [
            "README.md:1: not the code of examples/hello/main.cpp"]
        (project / "README.md").unlink()
        (project / "docs" / "manual.md").write_text("Nothing yet.\n")
        assert findings(project, ["docs/run.md"]) == [
            "docs/run.md: docs/manual.md does not link to this page"]
        (project / "docs" / "manual.md").write_text("[Run](run.md)\n")
        (project / "CHANGELOG.md").write_text("## 2\n\nBinary interface: same.\n\n## 1\n\nFirst.\n")
        assert findings(project, ["docs/run.md"]) == [
            "CHANGELOG.md: the entry 1 says nothing after Binary interface:"]


if __name__ == "__main__":
    self_test()
    problems = findings(pathlib.Path(sys.argv[1]), sys.argv[2:])
    print("\n".join(problems))
    sys.exit(1 if problems else 0)
