#!/usr/bin/env python3
"""Holds the code and the output that the pages in docs show against the files that are tested.

What stands in a page between the fences that follow such a line is that file:

    <!-- examples/time.cpp -->

    embed_examples.py            writes the files into the pages
    embed_examples.py --check    fails where a page shows something else, or an example is in no page
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLACE = re.compile(r"(<!-- (examples/[\w.]+) -->\n+```\w*\n)(.*?)(^```$)", re.M | re.S)


def main():
    is_check, shown, faults = sys.argv[1:] == ["--check"], set(), []
    for page in sorted((ROOT / "docs").glob("*.md")):
        text = page.read_text()
        shown.update(match[2] for match in PLACE.finditer(text))
        as_tested = PLACE.sub(lambda m: m[1] + (ROOT / m[2]).read_text() + m[4], text)
        if as_tested != text and is_check:
            faults.append(f"docs/{page.name} does not show its examples: scripts/embed_examples.py")
        elif as_tested != text:
            page.write_text(as_tested)
    for output in sorted((ROOT / "examples").glob("[a-z]*.txt")):
        for name in (f"examples/{output.stem}.cpp", f"examples/{output.name}"):
            if name not in shown:
                faults.append(f"no page in docs shows {name}")
    sys.exit("\n".join(faults) or None)


if __name__ == "__main__":
    main()
