#!/usr/bin/env python3
"""Prepares a guide for Doxygen: prints it with page names, heading names and links that resolve.

The guides are written for people who read them in the source tree, with relative links and plain
headings. Doxygen needs a name for each page and heading instead. docs/files.md becomes the page
`guide_files`, and its heading "Where it fails" gets the name `guide_files-where-it-fails`, which is
also the last part of its address on the site.
"""
import html
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
HEADING = re.compile(r"^(#{1,4}) (.+?)\s*$")
LINK = re.compile(r"(!?)\[([^\]]*)\]\(([^)\s]+)\)")
# Code that Doxygen takes for a tag at the start of a line, or for a link.
MARKUP_CODE = re.compile(r"`(<[^`\\@%|]*>|&#[^`\\@%|]*)`")
FENCE = re.compile(r"^(\s*)(```+|~~~+)(\w*)(.*)$")


def page_name(path):
    if path == ROOT / "README.md":
        return "mainpage"
    return "guide_" + path.stem.lower().replace(".", "_")


def slug(title):
    """The anchor that repository browsers give a heading."""
    text = re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", lambda m: m.group(1) or "", title).lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def headings(path):
    """The anchors of a page, in order and each once, as (line number, anchor)."""
    seen = {}
    fence = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        mark = FENCE.match(line)
        if mark:
            fence = None if fence else mark.group(2)
        match = None if fence else HEADING.match(line)
        if match:
            anchor = slug(match.group(2))
            count = seen.get(anchor, 0)
            seen[anchor] = count + 1
            yield number, anchor if count == 0 else f"{anchor}-{count}"


def target(path, link):
    """What a link of a page becomes, or None to leave it as it is."""
    if re.match(r"[a-z]+:", link):
        return None
    name, _, anchor = link.partition("#")
    other = (path.parent / name).resolve() if name else path
    if not other.exists():
        sys.exit(f"{path}: the link {link} leads nowhere")
    if other.suffix == ".md" and other.parent in (ROOT, ROOT / "docs"):
        if anchor and anchor not in [a for _, a in headings(other)]:
            sys.exit(f"{path}: {other.name} has no heading {anchor}")
        # The lists of pages in these two decide about the tree of pages in the side bar.
        is_list = path.name == "manual.md" or (
            path.name == "surprises.md" and other.name.startswith("surprises_"))
        command = "@subpage " if is_list else "@ref "
        return command + page_name(other) + ("-" + anchor if anchor else "")
    relative = other.relative_to(ROOT)
    if relative.parts[0] == "include" and other.is_file():
        return "@ref " + "/".join(relative.parts[1:])
    if relative.parts[0] == "examples" and other.suffix == ".cpp":
        return "@ref " + "/".join(relative.parts[1:])
    return False


def convert(path):
    names = dict(headings(path))
    is_first = True
    fence = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        mark = FENCE.match(line)
        if mark:
            if fence:
                fence = None
            else:
                fence = mark.group(2)
                # Doxygen takes one word, the language.
                line = mark.group(1) + fence + {"cpp": "{.cpp}", "xml": "{.xml}"}.get(
                    mark.group(3), "{.unparsed}")
        elif fence is None and number in names:
            title = HEADING.match(line).group(2)
            name = page_name(path) if is_first else f"{page_name(path)}-{names[number]}"
            if is_first and name == "mainpage":
                line = f"# {title}"
            else:
                line = f"{HEADING.match(line).group(1)} {title} {{#{name}}}"
            is_first = False
        elif fence is None:
            def replace(match):
                goal = target(path, match.group(3))
                if goal is None or match.group(1):
                    return match.group(0)
                if goal and goal.startswith("@subpage"):
                    return f'{goal} "{match.group(2)}"'
                # What has no page of its own is named without a link.
                return f"[{match.group(2)}]({goal})" if goal else match.group(2)
            line = LINK.sub(replace, line)
            line = MARKUP_CODE.sub(
                lambda m: f"<code>{html.escape(m.group(1), quote=False)}</code>".replace("#", r"\#"), line)
        print(line)


if __name__ == "__main__":
    convert(pathlib.Path(sys.argv[1]).resolve())
