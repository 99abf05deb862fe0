#!/usr/bin/env python3
"""Draws the colored output of a program as an SVG picture.

    build/demo/examples/demo/tova_example_demo --color=always | tools/terminal_picture.py > demo.svg

Reads text with ANSI color sequences from standard input and writes one SVG document to standard
output. The picture has its own background, so it reads the same on light and dark pages.
"""
import argparse
import html
import re
import sys
import unicodedata

CELL_WIDTH = 8.4
LINE_HEIGHT = 19
MARGIN = 18
TITLE_BAR = 30
COLORS = {
    "2": "#8b98a9",
    "31": "#ff7b72",
    "32": "#7ee787",
    "33": "#e3b341",
    "1;36": "#56d4dd",
}
FOREGROUND = "#e6edf3"
BACKGROUND = "#0d1117"
SEQUENCE = re.compile(r"\x1b\[([0-9;]*)m")


def cells(text):
    """The number of terminal cells that a string takes."""
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def runs(line):
    """Yields (code, text) for each run of one color.

    Wide and narrow characters are separate runs, and so are columns, since viewers fold spaces.
    """
    code = ""
    for index, piece in enumerate(SEQUENCE.split(line)):
        if index % 2:
            code = "" if piece in ("", "0") else piece
            continue
        for part in re.findall(r"[\u2e80-\uffe7]+| {2,}|(?:(?! {2})[^\u2e80-\uffe7])+", piece):
            yield code, part


def draw(lines, title):
    width = 2 * MARGIN + CELL_WIDTH * max(
        sum(cells(text) for _, text in runs(line)) for line in lines)
    height = TITLE_BAR + 2 * MARGIN + LINE_HEIGHT * len(lines)
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width:.0f}" height="{height:.0f}" '
        f'viewBox="0 0 {width:.0f} {height:.0f}" role="img" aria-label="{html.escape(title)}">',
        f'<rect width="100%" height="100%" rx="10" fill="{BACKGROUND}"/>',
        *(f'<circle cx="{20 + 20 * i}" cy="17" r="6" fill="{fill}"/>'
          for i, fill in enumerate(("#ff5f57", "#febc2e", "#28c840"))),
        f'<text x="50%" y="22" text-anchor="middle" font-family="sans-serif" font-size="13" '
        f'fill="#8b98a9">{html.escape(title)}</text>',
        '<g font-family="DejaVu Sans Mono, Menlo, Consolas, Noto Sans Mono CJK JP, monospace" '
        f'font-size="14" fill="{FOREGROUND}">',
    ]
    for row, line in enumerate(lines):
        y = TITLE_BAR + MARGIN + LINE_HEIGHT * row + 10
        column = 0
        for code, text in runs(line):
            size = cells(text)
            stripped = text.strip()
            if stripped:
                fill = f' fill="{COLORS[code]}"' if code in COLORS else ""
                weight = ' font-weight="bold"' if code.startswith("1") else ""
                x = MARGIN + CELL_WIDTH * (column + len(text) - len(text.lstrip()))
                length = CELL_WIDTH * cells(stripped)
                out.append(f'<text x="{x:.1f}" y="{y}" textLength="{length:.1f}"'
                           f'{fill}{weight}>{html.escape(stripped)}</text>')
            column += size
    out.append("</g></svg>")
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--title", default="./run demo", help="text of the title bar")
    arguments = parser.parse_args()
    lines = sys.stdin.read().rstrip("\n").split("\n")
    sys.stdout.write(draw([line.rstrip() for line in lines], arguments.title))


if __name__ == "__main__":
    main()
