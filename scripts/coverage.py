#!/usr/bin/env python3
"""coverage.py BUILD: which lines and branches of the library and the tool the tests of BUILD reached.

Prints a row for each file and one for each layer, and writes to BUILD/unreached.txt each line of code
that was not reached, or of which a branch was not taken.

What counts is the source: a branch of a template is taken when one of its instantiations takes it.
The ways that exceptions take out of calls are no branches, nor is what the compiler makes of a line
without a condition; and a brace is no line.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
from collections import Counter, defaultdict

from check_layers import ROOT, read_layers

GCOV = "i686-w64-mingw32-gcov-posix"
CONDITION = re.compile(r"\b(if|for|while|switch|case)\b|default:|&&|\|\||\?")
CONTINUED = re.compile(r"(&&|\|\||\?|\bif \(|:|\()\s*(//.*)?$")


class Source:
    """What was reached of one file."""

    def __init__(self, name: str) -> None:
        self.code = (ROOT / name).read_text(encoding="utf-8").split("\n")
        self.lines: Counter[int] = Counter()
        # By line: the counts of the branches there, for each time that it was compiled.
        self.compiled: defaultdict[int, list[list[int]]] = defaultdict(list)

    def add(self, line: dict) -> None:
        number = line["line_number"]
        if self.code[number - 1].strip() in ("}", "};"):
            return
        # Threads count without waiting for each other: now and then less than nothing.
        self.lines[number] += abs(line["count"])
        counts = [abs(branch["count"]) for branch in line["branches"] if not branch["throw"]]
        if len(counts) > 1 and self.has_condition(number):
            self.compiled[number].append(counts)

    def has_condition(self, number: int) -> bool:
        """Whether one stands on the line, or ends there."""
        return bool(CONDITION.search(self.code[number - 1])
                    or CONTINUED.search(self.code[number - 2]))  # fmt: skip

    def branches(self) -> Counter[tuple[int, int]]:
        """The counts of the branches, by line and place in it."""
        merged: Counter[tuple[int, int]] = Counter()
        for number, compiled in self.compiled.items():
            for counts in compiled:
                for place, count in enumerate(counts):
                    merged[number, place] += count
        return merged

    def unreached(self) -> list[str]:
        numbers = {number for number, count in self.lines.items() if count == 0}
        numbers |= {number for (number, _), count in self.branches().items() if count == 0}
        return [f"{number}: {self.code[number - 1].strip()}" for number in sorted(numbers)]


class Share:
    """How many there are, and how many of them were reached."""

    def __init__(self) -> None:
        self.reached = self.all = 0

    def add(self, counts: Counter) -> None:
        self.reached += sum(count != 0 for count in counts.values())
        self.all += len(counts)

    def __str__(self) -> str:
        share = f"{100 * self.reached / self.all:.1f}" if self.all else "-"
        return f"{share:>6} % of {self.all:<5}"


def counted_files(build: pathlib.Path, counts: pathlib.Path) -> list[dict]:
    """What gcov says of the files that one object was compiled from."""
    gcov = subprocess.run(
        [GCOV, "--json-format", "--branch-probabilities", "--stdout", counts], cwd=build,
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip
    return [file for line in gcov.stdout.splitlines() for file in json.loads(line)["files"]]


def main() -> int:
    build = pathlib.Path(sys.argv[1]).resolve()
    folders = ("tarvcore", "tarvcoremain", "tarvmoduleregistry", "tools", "tests")
    counts = [path for folder in folders for path in (build / folder).rglob("*.gcda")]
    sources: dict[str, Source] = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for files in pool.map(lambda path: counted_files(build, path), counts):
            for file in files:
                path = (build / file["file"]).resolve()
                if not any(path.is_relative_to(ROOT / folder) for folder in folders[:-1]):
                    continue
                name = str(path.relative_to(ROOT))
                source = sources.setdefault(name, Source(name))
                for line in file["lines"]:
                    source.add(line)

    rank, layers = read_layers()
    groups: defaultdict[str, tuple[Share, Share]] = defaultdict(lambda: (Share(), Share()))
    for name in sorted(sources):
        topic = name.removeprefix("tarvcore/").rpartition(".")[0]
        group = layers[rank[topic]] if topic in rank else name.partition("/")[0]
        for key in (name, f"all of {group}", "all"):
            groups[key][0].add(sources[name].lines)
            groups[key][1].add(sources[name].branches())
    print(f"{'':46}{'lines':17} branches")
    for name in [*sorted(sources), *sorted(groups.keys() - sources.keys(), reverse=True)]:
        lines, branches = groups[name]
        if branches.all or name not in sources:
            print(f"{name:46}{lines} {branches}".rstrip())

    with open(build / "unreached.txt", "w", encoding="utf-8") as report:
        for name in sorted(sources):
            for line in sources[name].unreached():
                print(f"{name}:{line}", file=report)
    return 0


sys.exit(main())
