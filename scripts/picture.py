#!/usr/bin/env python3
"""Draws a text as it stands in a terminal, as an SVG: `scripts/demo.sh --recording | scripts/picture.py OUT`.

Takes the lines from the standard input; commands, remarks and messages have colours of their own.
"""

import sys
from html import escape

LINE_HEIGHT = 18
CHARACTER_WIDTH = 8.4
MARGIN = 16
COLOURS = (("$ ", "#8be9a8"), ("# ", "#7fb4ff"), ("qrv: ", "#ffb86b"))
PLAIN = "#e6e6e6"


def colour_of(line):
    return next((colour for start, colour in COLOURS if line.startswith(start)), PLAIN)


def picture(lines):
    width = max(map(len, lines)) * CHARACTER_WIDTH + 2 * MARGIN
    height = len(lines) * LINE_HEIGHT + 2 * MARGIN
    rows = "".join(
        f'<text x="{MARGIN}" y="{MARGIN + (number + 1) * LINE_HEIGHT - 4}" fill="{colour_of(line)}">'
        f"{escape(line)}</text>\n"
        for number, line in enumerate(lines) if line)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width:.0f}" height="{height}">\n'
            '<rect width="100%" height="100%" rx="8" fill="#1e2430"/>\n'
            f'<g font-family="monospace" font-size="14" xml:space="preserve">\n{rows}</g>\n</svg>\n')


if __name__ == "__main__":
    with open(sys.argv[1], "w", encoding="utf-8") as output:
        output.write(picture(sys.stdin.read().strip("\n").split("\n")))
