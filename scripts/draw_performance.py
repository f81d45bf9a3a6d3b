#!/usr/bin/env python3
"""Draws the ratios of the table in docs/performance.md as an SVG picture, a bar for each operation.

    draw_performance.py            writes docs/performance.svg
    draw_performance.py --check    fails where docs/performance.svg shows something else
"""
import math
import pathlib
import re
import sys
from xml.sax.saxutils import escape

from bench_table import MARK

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
TABLE, PICTURE = DOCS / "performance.md", DOCS / "performance.svg"

WIDTH, MARGIN, NAME_WIDTH, LINE = 860, 16, 280, 17
LEAST, MOST = 0.02, 5.0  # ratios at the left and right end; bars end there
FILL, EDGE, TEXT, FAINT = "#eef3f8", "#6a8caf", "#1d2b3a", "#5b6b7b"
AHEAD, BEHIND = "#4f9d78", "#d08a3e"


def ratios():
    """(operation, fastest peer, ratio) of each row that has a peer."""
    rows = []
    for line in TABLE.read_text(encoding="utf-8").split(MARK)[1].splitlines():
        cells = [cell.strip() for cell in line.split("|")[1:-1]]
        if len(cells) > 4 and cells[4].endswith(" x"):
            peer = re.sub(r" [\d.,]+ ns.*$", "", cells[3])
            rows.append((cells[0], peer, float(cells[4].removesuffix(" x"))))
    return rows


def place(ratio):
    """Where a ratio stands: equal factors are equal distances."""
    share = math.log(min(max(ratio, LEAST), MOST) / LEAST) / math.log(MOST / LEAST)
    return round(NAME_WIDTH + share * (WIDTH - MARGIN - NAME_WIDTH))


def drawing():
    rows = ratios()
    height = MARGIN * 2 + LINE * (len(rows) + 2)
    one, bottom = place(1), height - MARGIN - LINE
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
        f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" font-size="12">',
        "<title>Our time as a multiple of a peer's, for each operation</title>",
        f'<rect width="{WIDTH}" height="{height}" rx="6" fill="{FILL}" stroke="{EDGE}"/>',
    ]
    for mark in (0.05, 0.1, 0.2, 0.5, 1, 2):
        x = place(mark)
        parts.append(f'<line x1="{x}" y1="{MARGIN + LINE}" x2="{x}" y2="{bottom}" stroke="{EDGE}" '
                     f'stroke-width="{1.5 if mark == 1 else 0.4}"/>')
        for y in (MARGIN + 8, height - MARGIN):
            parts.append(f'<text x="{x}" y="{y}" text-anchor="middle" fill="{FAINT}">{mark:g} x</text>')
    for number, (operation, peer, ratio) in enumerate(rows):
        y = MARGIN + LINE * (number + 1)
        left, right = sorted((one, place(ratio)))
        colour = AHEAD if ratio <= 1 else BEHIND
        parts.append(f'<text x="{NAME_WIDTH - 8}" y="{y + 12}" text-anchor="end" fill="{TEXT}">'
                     f"{escape(operation)}</text>")
        parts.append(f'<rect x="{left}" y="{y + 2}" width="{max(right - left, 2)}" '
                     f'height="{LINE - 4}" fill="{colour}"/>')
        # The peer's name and the ratio on the side where there is no bar.
        at, anchor = (one + 6, "start") if ratio <= 1 else (one - 6, "end")
        parts.append(f'<text x="{at}" y="{y + 12}" text-anchor="{anchor}" fill="{FAINT}" '
                     f'font-size="11">{ratio:.2f} x {escape(peer)}</text>')
    return "\n".join(parts) + "\n</svg>\n"


def main():
    if sys.argv[1:] != ["--check"]:
        PICTURE.write_text(drawing(), encoding="utf-8")
    elif not PICTURE.exists() or PICTURE.read_text(encoding="utf-8") != drawing():
        print(f"{PICTURE} is not what the table says: scripts/draw_performance.py", file=sys.stderr)
        return 1
    return 0


sys.exit(main())
