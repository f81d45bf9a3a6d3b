#!/usr/bin/env python3
"""Prints the table of a run of the benchmarks: ours, the peers, the ratio, the goal.

    bench_table.py RESULTS.json                   to standard output
    bench_table.py RESULTS.json --into FILE.md    between the marks <!-- table --> of a document
"""
import json
import pathlib
import re
import sys

HEAD = ["operation", "ours", "allocations", "measured against", "ratio", "goal", "other peers"]
GOAL = re.compile(r"([\d.]+) (ns|x)(?: of (.+))?")
MARK = "<!-- table -->\n"


def read_rows(results):
    """{operation: {candidate: (ns, allocations)}} in the order of registration, ours first."""
    rows = {}
    for run in sorted(results["benchmarks"], key=lambda run: run["family_index"]):
        if run.get("aggregate_name") != "fastest":
            continue
        operation, candidate = run["run_name"].split("/")[:2]
        rows.setdefault(operation, {})[candidate] = (run["real_time"], run["allocations"])
    return rows


def shown(nanoseconds):
    if nanoseconds < 100:
        return f"{nanoseconds:.2g} ns" if nanoseconds < 1 else f"{nanoseconds:.1f} ns"
    return f"{nanoseconds:,.0f} ns"


def with_allocations(candidate, time, allocations):
    return f"{candidate} {shown(time)}" + (f" ({allocations:.2g})" if allocations else "")


def table_row(operation, candidates, goal):
    (_, (time, allocations)), *peers = candidates.items()
    peers.sort(key=lambda peer: peer[1][0])
    limit, unit, name = GOAL.fullmatch(goal).groups() if goal else (None, None, None)
    # The peer that the goal names stands in the place of the fastest one.
    if name:
        peers.sort(key=lambda peer: peer[0] != name)
        assert peers[0][0] == name, f"{operation}: no peer is called {name}"
    ratio = time / peers[0][1][0] if peers else None
    met = not goal or round(time if unit == "ns" else ratio, 2) <= float(limit)
    return [
        operation,
        shown(time),
        f"{allocations:g}",
        with_allocations(peers[0][0], *peers[0][1]) if peers else "",
        f"{ratio:.2f} x" if peers and ratio >= 0.01 else f"{ratio:.3f} x" if peers else "",
        (f"{limit} {unit}" if goal else "") + ("" if met else " **missed**"),
        ", ".join(with_allocations(peer, *values) for peer, values in peers[1:]),
    ]


def aligned(rows):
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = ["| " + " | ".join(map(str.ljust, row, widths)) + " |\n" for row in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|\n")
    return "".join(lines)


def main():
    results = json.loads(pathlib.Path(sys.argv[1]).read_text())
    context = results["context"]
    rows = [HEAD]
    for operation, candidates in read_rows(results).items():
        rows.append(table_row(operation, candidates, context["goal: " + operation]))
    text = (
        aligned(rows) + f"\n{context['date'][:10]}, {context['compiler']}, {context['flags']}; "
        "in brackets: allocations\n"
    )
    if sys.argv[2:3] == ["--into"]:
        document = pathlib.Path(sys.argv[3])
        before, _, after = document.read_text().split(MARK)
        document.write_text(before + MARK + text + MARK + after)
    else:
        sys.stdout.write(text)


if __name__ == "__main__":
    main()
