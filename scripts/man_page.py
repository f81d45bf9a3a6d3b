#!/usr/bin/env python3
"""man_page.py [--check] PAGE COMMAND...: writes the man page PAGE from what the tool says about itself.

COMMAND... runs the tool.  With --check nothing is written: the exit status is 1 where the page is not
what the tool says.
"""

import json
import pathlib
import subprocess
import sys


def escaped(text: str) -> str:
    """Text as troff takes it: backslashes, hyphens, and lines that begin as requests do."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("…", "...")
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in text.split("\n"))


def block(text: str) -> str:
    """Lines as they are."""
    return ".nf\n" + escaped(text.rstrip("\n")) + "\n.fi\n"


def page(command: list[str]) -> str:
    def said(*words: str) -> str:
        return subprocess.run(
            [*command, *words], check=True, stdout=subprocess.PIPE, encoding="utf-8"
        ).stdout

    version = said("--version").splitlines()[0]
    introduction, rest = said("--help").split("\n\n", 1)
    usage, verbs, conclusion = rest.split("\n\n")
    text = f'.TH TARV 1 "" "{version}" "User Commands"\n'
    text += ".SH NAME\n" + escaped(introduction.replace(":", " -", 1)) + "\n"
    text += ".SH SYNOPSIS\n" + block(usage.replace("Usage: ", "       "))
    text += ".SH DESCRIPTION\n" + block(verbs)
    text += '.SH "EXIT STATUS"\n' + escaped(conclusion.replace("Exit status: ", "")).rstrip() + "\n"
    text += ".SH VERBS\n"
    for line in said("help", "--json").splitlines():
        verb = json.loads(line)
        text += f'.SS "tarv {verb["verb"]}"\n' + block(verb["help"])
    return text


def main() -> int:
    words = sys.argv[1:]
    check = words[:1] == ["--check"]
    if check:
        words.pop(0)
    if len(words) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    out = pathlib.Path(words[0])
    text = page(words[1:])
    if not check:
        out.write_text(text, encoding="utf-8")
    elif not out.exists() or out.read_text(encoding="utf-8") != text:
        print(f"{out} is not what the tool says: make man", file=sys.stderr)
        return 1
    return 0


sys.exit(main())
