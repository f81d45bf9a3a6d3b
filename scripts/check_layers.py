#!/usr/bin/env python3
"""Holds the library's files against cmake/layers.txt.

Every file is listed once, includes go sideways or down, every source file names itself, the header
of everything includes all public headers, and every test belongs to a topic.

    check_layers.py                  checks; prints what is wrong, one line each
    check_layers.py --write-header   writes tarvcore/tarvcore.h
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARY = ROOT / "tarvcore"
ALL_HEADER = LIBRARY / "tarvcore.h"
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.M)
IDENTIFICATION = re.compile(r'^TARVCORE_SOURCE_FILE\("\$Id: //(\S+)#\d+ \$"\);$', re.M)

faults = []


def fault(path, text):
    name = path.relative_to(ROOT) if path.is_absolute() else path
    faults.append(f"{name}: {text}")


def read_layers():
    """The layer number of each topic, and the layers' names."""
    path = ROOT / "cmake" / "layers.txt"
    rank, names = {}, []
    for line in path.read_text().splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        topic = line.strip()
        if topic == line:
            names.append(line)
        elif topic in rank:
            fault(path, f"{topic} is listed twice")
        else:
            rank[topic] = len(names) - 1
    files = {}
    for topic in rank:
        if not any((LIBRARY / (topic + end)).exists() for end in (".h", ".cpp")):
            fault(path, f"{topic} is listed, but there is neither {topic}.h nor {topic}.cpp")
        name = topic.split("/")[-1]
        if name in files:
            fault(path, f"{topic} and {files[name]} would share their test file")
        files[name] = topic
    return rank, names


def public_headers(rank):
    topics = (t for t in rank if not t.startswith("impl/") and (LIBRARY / f"{t}.h").exists())
    return sorted(f"tarvcore/{t}.h" for t in topics)


def all_header_text(rank):
    lines = ["// Every public header of the library.", "#pragma once", ""]
    lines += [f'#include "{header}"' for header in public_headers(rank)]
    return "\n".join(lines) + "\n"


def check_library(rank, names):
    for path in sorted(LIBRARY.rglob("*")):
        if path.suffix not in (".h", ".cpp") or path == ALL_HEADER:
            continue
        topic = str(path.relative_to(LIBRARY).with_suffix(""))
        if topic not in rank:
            fault(path, "is not listed in cmake/layers.txt")
            continue
        includes = INCLUDE.findall(path.read_text())
        if path.suffix == ".cpp" and path.with_suffix(".h").exists():
            if not includes or includes[0][1] != f"tarvcore/{topic}.h":
                fault(path, "does not include its own header first")
        for quote, name in includes:
            if quote == "<":
                if name.startswith("tarvcore/"):
                    fault(path, f'includes <{name}>: write "{name}"')
                continue
            if name.startswith(("ace/", "tarvmoduleregistry/")):
                continue
            other = name.removeprefix("tarvcore/").removesuffix(".h")
            if not name.startswith("tarvcore/"):
                fault(path, f'includes "{name}": write it as "tarvcore/..."')
            elif other not in rank:
                fault(path, f"includes {name}, which is in no layer")
            elif rank[other] > rank[topic]:
                fault(path, f"includes {name} of the layer {names[rank[other]]}, "
                            f"which is above its own layer {names[rank[topic]]}")


def check_identification():
    for folder in ("tarvcore", "tarvcoremain", "tarvmoduleregistry", "tools"):
        for path in sorted((ROOT / folder).rglob("*.cpp")):
            own = str(path.relative_to(ROOT))
            found = IDENTIFICATION.findall(path.read_text())
            if found != [own]:
                fault(path, f'needs one line TARVCORE_SOURCE_FILE("$Id: //{own}#1 $");')


def check_tests(rank):
    topics = {topic.split("/")[-1] for topic in rank}
    listed = (ROOT / "tests" / "CMakeLists.txt").read_text()
    for path in sorted((ROOT / "tests").rglob("*_test.cpp")):
        if path.name.removesuffix("_test.cpp") not in topics and path.name not in listed:
            fault(path, "is named after no topic, nor listed in tests/CMakeLists.txt")


def main():
    rank, names = read_layers()
    if sys.argv[1:] == ["--write-header"]:
        ALL_HEADER.write_text(all_header_text(rank))
        return
    check_library(rank, names)
    check_identification()
    check_tests(rank)
    if not ALL_HEADER.exists() or ALL_HEADER.read_text() != all_header_text(rank):
        fault(ALL_HEADER, "is not the list of public headers: scripts/check_layers.py --write-header")
    for line in faults:
        print(line, file=sys.stderr)
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
