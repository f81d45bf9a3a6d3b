#!/usr/bin/env python3
"""Draws the layers of cmake/layers.txt as an SVG picture, the lowest layer at the bottom.

    draw_layers.py            writes docs/layers.svg
    draw_layers.py --check    fails where docs/layers.svg shows something else
"""
import pathlib
import sys
import textwrap
from xml.sax.saxutils import escape

import check_layers

PICTURE = check_layers.ROOT / "docs" / "layers.svg"

WIDTH, MARGIN, NAME_WIDTH = 860, 16, 130
LINE, PADDING, GAP = 19, 12, 8
TOPIC_COLUMNS = 100
FILL, EDGE, TEXT, FAINT = "#eef3f8", "#6a8caf", "#1d2b3a", "#5b6b7b"


def topic_lines(topics):
    """Public topics first, then those for internal use, wrapped to the width of the picture."""
    public = [t for t in topics if not t.startswith("impl/")]
    internal = [t.removeprefix("impl/") for t in topics if t.startswith("impl/")]
    lines = [(line, TEXT) for line in textwrap.wrap(" · ".join(public), TOPIC_COLUMNS)]
    if internal:
        text = "impl: " + " · ".join(internal)
        lines += [(line, FAINT) for line in textwrap.wrap(text, TOPIC_COLUMNS)]
    return lines


def drawing():
    rank, names = check_layers.read_layers()
    boxes, y = [], MARGIN
    for number in range(len(names) - 1, -1, -1):
        lines = topic_lines([t for t in rank if rank[t] == number])
        height = 2 * PADDING + LINE * max(1, len(lines))
        boxes.append(f'<rect x="{MARGIN}" y="{y}" width="{WIDTH - 2 * MARGIN}" height="{height}" '
                     f'rx="6" fill="{FILL}" stroke="{EDGE}"/>')
        boxes.append(f'<text x="{MARGIN + 12}" y="{y + PADDING + 14}" font-weight="bold" '
                     f'fill="{TEXT}">{escape(names[number])}</text>')
        for i, (line, colour) in enumerate(lines):
            boxes.append(f'<text x="{MARGIN + NAME_WIDTH}" y="{y + PADDING + 14 + LINE * i}" '
                         f'fill="{colour}">{escape(line)}</text>')
        y += height + GAP
    height = y + MARGIN - GAP
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" '
            f'width="{WIDTH}" height="{height}" font-family="sans-serif" font-size="13">')
    title = "<title>The layers of tarvcore: each uses itself and those below</title>"
    back = f'<rect width="{WIDTH}" height="{height}" fill="white"/>'
    return "\n".join([head, title, back, *boxes, "</svg>"]) + "\n"


def main():
    if sys.argv[1:] == ["--check"]:
        if not PICTURE.exists() or PICTURE.read_text() != drawing():
            sys.exit(f"{PICTURE.relative_to(check_layers.ROOT)} does not show cmake/layers.txt: "
                     "run scripts/draw_layers.py")
    elif sys.argv[1:]:
        sys.exit(__doc__)
    else:
        PICTURE.write_text(drawing())


if __name__ == "__main__":
    main()
