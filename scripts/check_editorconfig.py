#!/usr/bin/python3
"""Holds every text file of the tree against .editorconfig; prints what is wrong, one line each.

Of the system's own Python: Debian's package python3-editorconfig is there."""
import pathlib
import subprocess
import sys

import editorconfig

ROOT = pathlib.Path(__file__).resolve().parent.parent


def faults(data: bytes, wanted: dict) -> list[str]:
    found = []
    try:
        text = data.decode(wanted["charset"])
    except UnicodeDecodeError as error:
        return [f"1: is not {wanted['charset']}: {error}"]
    if text and wanted.get("insert_final_newline") == "true" and not text.endswith("\n"):
        found.append(f"{text.count(chr(10)) + 1}: has no line end")
    for number, line in enumerate(text.split("\n"), 1):
        if wanted.get("end_of_line") == "lf" and line.endswith("\r"):
            found.append(f"{number}: ends in CR LF")
        if wanted.get("trim_trailing_whitespace") == "true" and line.rstrip(" \t") != line:
            found.append(f"{number}: has blanks at its end")
        other = {"space": "\t", "tab": " "}.get(wanted.get("indent_style"))
        if line[:1] == other:
            found.append(f"{number}: is not indented by {wanted['indent_style']}s")
    return found


def main() -> int:
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True)
    bad = 0
    for name in listed.stdout.decode().split("\0")[:-1]:
        path = ROOT / name
        wanted = editorconfig.get_properties(str(path))
        if wanted.get("charset", "unset") == "unset" or not path.is_file():
            continue
        for fault in faults(path.read_bytes(), wanted):
            print(f"{name}:{fault}", file=sys.stderr)
            bad += 1
    return bad > 0


sys.exit(main())
