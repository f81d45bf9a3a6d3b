#!/usr/bin/env python3
"""Checks that links between the Markdown files lead somewhere: to an existing file and heading."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
FENCE = re.compile(r"^```.*?^```", re.M | re.S)


def anchors(path):
    """The names that a heading can be reached by, as code hosts derive them."""
    headings = re.findall(r"^#+ +(.*?) *$", FENCE.sub("", path.read_text()), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def faults(path):
    for link in LINK.findall(FENCE.sub("", path.read_text())):
        if re.match(r"[a-z]+:", link):
            continue
        name, _, anchor = link.partition("#")
        target = (path.parent / name).resolve() if name else path
        if not target.exists():
            yield f"{link}: no such file"
        elif anchor and anchor not in anchors(target):
            yield f"{link}: no such heading"


def main():
    found = False
    for path in sorted(ROOT.rglob("*.md")):
        if "build" in path.relative_to(ROOT).parts:
            continue
        for text in faults(path):
            print(f"{path.relative_to(ROOT)}: {text}", file=sys.stderr)
            found = True
    sys.exit(found)


if __name__ == "__main__":
    main()
