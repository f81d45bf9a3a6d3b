#!/usr/bin/env python3
"""mutate.py [--count N] [--jobs N] [SOURCE...]: whether the tests notice faults in the library's code.

Plants one small fault at a time into a copy of the tree, builds the library and runs the tests of the
source's layer, and if they pass those of the two layers above.  A fault that they notice is killed,
also by never ending; one that they do not is a survivor, and shown.  Each SOURCE ("impl/hex_codec" or
just "hex_codec"; all, unless some are named) gets N (20) faults, drawn by its name: the same in every
run.
"""

import argparse
import concurrent.futures
import os
import pathlib
import queue
import random
import re
import shutil
import signal
import subprocess
import sys
import time

from check_layers import ROOT, read_layers

FOLDER = ROOT / "build" / "mutate"

SWAPS = [
    ("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="), ("!=", "=="),
    ("&&", "||"), ("||", "&&"), ("+", "-"), ("-", "+"), ("*", "+"), ("/", "*"), ("%", "/"),
    ("+=", "-="), ("-=", "+="), ("&", "|"), ("|", "&"), ("^", "|"), ("<<", ">>"), (">>", "<<"),
]  # fmt: skip


def masked(code: str) -> str:
    """The code with comments, texts and characters blanked, letter for letter."""
    tokens = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
    return re.sub(tokens, lambda m: " " * len(m[0]), code, flags=re.DOTALL)


def faults(code: str) -> list[tuple[int, int, str]]:
    """All places where a fault can be planted: begin, end, and what stands there instead."""
    plain = masked(code)
    found = []
    for old, new in SWAPS:
        for m in re.finditer(rf"(?<= ){re.escape(old)}(?= |\n)", plain):
            found.append((m.start(), m.end(), new))
    for m in re.finditer(r"(?<![\w.'])\d+(?![\w.'])", plain):
        found.append((m.start(), m.end(), str(int(m[0]) + 1)))
    for m in re.finditer(r"(?<=[( ])!(?=[\w(])", plain):
        found.append((m.start(), m.end(), ""))
    for m in re.finditer(r"\b(true|false)\b", plain):
        found.append((m.start(), m.end(), "false" if m[0] == "true" else "true"))
    for m in re.finditer(r"\+\+|--", plain):
        found.append((m.start(), m.end(), "--" if m[0] == "++" else "++"))
    # A statement left out: an assignment or a call on a line of its own.
    statement = r"^ +(?!return|else|using|throw)([\w.>\[\]*-]+ [-+|&^]?= |[\w.:>-]+\()[^;{}\n]*;$"
    for m in re.finditer(statement, plain, re.MULTILINE):
        found.append((m.start(), m.end(), ";"))

    def is_code(place: int) -> bool:
        line = plain[plain.rfind("\n", 0, place) + 1 :].split("\n", 1)[0]
        no_code = r"\s*(#|static_assert|TARVCORE_|template|using|operator)|.*= (default|delete);"
        return not re.match(no_code, line)

    return sorted(fault for fault in found if is_code(fault[0]))


class Tree:
    """A copy of the tree with a build of its own."""

    def __init__(self, number: int) -> None:
        self.source = FOLDER / str(number)
        self.build = FOLDER / f"{number}-build"
        self.limits: dict[str, float] = {}
        names = subprocess.run(
            ["git", "-C", ROOT, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            check=True, stdout=subprocess.PIPE)  # fmt: skip
        for name in names.stdout.decode().split("\0")[:-1]:
            old, new = ROOT / name, self.source / name
            new.parent.mkdir(parents=True, exist_ok=True)
            if old.is_file() and not (new.exists() and new.read_bytes() == old.read_bytes()):
                shutil.copy2(old, new)
                new.touch()
        self.run("cmake", "--preset", "release", "-B", self.build)

    def run(self, *command: object, limit: float | None = None) -> None:
        """Raises where the command fails, or takes longer; nothing of it is left running then."""
        words = [str(word) for word in command]
        process = subprocess.Popen(words, cwd=self.source, stdin=subprocess.DEVNULL, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   errors="replace", start_new_session=True)  # fmt: skip
        try:
            output, _ = process.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            raise
        if process.returncode != 0:
            raise subprocess.CalledProcessError(process.returncode, words, output)

    def make(self, *targets: str) -> None:
        self.run("cmake", "--build", self.build, "-j1", "--target", *targets)

    def test(self, layer: str) -> None:
        """Raises unless the tests pass, in some times what they took before the first fault."""
        program = self.build / "bin" / f"{layer}_test.exe"
        start = time.monotonic()
        self.run("tests/run_test.sh", "scripts/wine-run", self.build, program, "--gtest_fail_fast",
                 limit=self.limits.get(layer, 600))  # fmt: skip
        self.limits.setdefault(layer, 30 + 8 * (time.monotonic() - start))


class Report:
    """What came of one source's faults."""

    def __init__(self, topic: str) -> None:
        self.topic = topic
        self.killed = 0
        self.survivors: list[str] = []

    def row(self) -> str:
        all_faults = self.killed + len(self.survivors)
        share = 100 * self.killed // all_faults if all_faults else "-"
        return f"{self.topic:32} {all_faults:4} faults {self.killed:4} killed {share:>4} %"


def examine(tree: Tree, topic: str, layers: list[str], count: int) -> Report:
    report = Report(topic)
    path = tree.source / "tarvcore" / f"{topic}.cpp"
    code = path.read_text(encoding="utf-8")
    candidates = faults(code)
    random.Random(topic).shuffle(candidates)
    tree.make("tarvcore", *(f"{layer}_test" for layer in layers))
    for layer in layers:
        if layer not in tree.limits:
            tree.test(layer)
    try:
        for begin, end, new in candidates:
            if report.killed + len(report.survivors) == count:
                break
            path.write_text(code[:begin] + new + code[end:], encoding="utf-8")
            try:
                tree.make("tarvcore")
            except subprocess.CalledProcessError as failure:
                if " error: " in failure.output or "undefined reference" in failure.output:
                    continue  # the compiler has noticed, or the linker
                raise
            try:
                for layer in layers:
                    tree.test(layer)
            except (subprocess.CalledProcessError, subprocess.TimeoutExpired):
                report.killed += 1
                continue
            number = code.count("\n", 0, begin) + 1
            line = code.split("\n")[number - 1].strip()
            old = code[begin:end].strip()
            report.survivors.append(f"{topic}.cpp:{number}: {old!r} -> {new!r}: {line}")
    finally:
        path.write_text(code, encoding="utf-8")
    return report


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--count", type=int, default=20)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("source", nargs="*")
    arguments = parser.parse_args()

    rank, names = read_layers()
    topics = {
        topic: names[layer : layer + 3]
        for topic, layer in rank.items()
        if (ROOT / "tarvcore" / f"{topic}.cpp").exists()
    }
    named = set(arguments.source or topics)
    wanted = [topic for topic in topics if named & {topic, topic.split("/")[-1]}]
    if not wanted:
        print(f"no source of the library: {' '.join(arguments.source)}", file=sys.stderr)
        return 2

    trees: queue.Queue[Tree] = queue.Queue()

    def work(topic: str) -> Report:
        tree = trees.get()
        try:
            report = examine(tree, topic, topics[topic], arguments.count)
        finally:
            trees.put(tree)
        print("\n".join([report.row()] + ["    " + line for line in report.survivors]), flush=True)
        return report

    try:
        for number in range(arguments.jobs):
            trees.put(Tree(number))
        with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
            reports = list(pool.map(work, wanted))
    except subprocess.CalledProcessError as failure:
        print(f"without a fault, this fails: {' '.join(failure.cmd)}", file=sys.stderr)
        print("\n".join(failure.output.splitlines()[-20:]), file=sys.stderr)
        return 1
    except subprocess.TimeoutExpired as failure:
        print(f"without a fault, this does not end: {' '.join(failure.cmd)}", file=sys.stderr)
        return 1
    total = Report("all")
    total.killed = sum(report.killed for report in reports)
    total.survivors = [line for report in reports for line in report.survivors]
    print(total.row())
    return 0


sys.exit(main())
