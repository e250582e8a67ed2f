"""Includes of src, scan and cli point one way: no circle between files or folders, no arrow upwards.

    include_arrows_test.py PROJECT
"""

from __future__ import annotations

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

#: Each folder includes those before it only; formats and driver do not know each other.
FLOORS = ["base", "dsp", "model", "fuzzy", "corrections", "formats driver", "classifier"]
#: What scan takes from src: tables of constants, and what a standard library may lack.
SHARED_TABLES = {"src/formats/polar/packing.h", "src/formats/polar/layout.h",
                 "src/formats/uf/fields.h", "src/formats/uf/layout.h", "src/base/charconv.h"}


def read_includes(project: Path) -> dict[str, set[str]]:
    """The project's files that each file includes."""
    files = {str(path.relative_to(project)): path for top in ("src", "scan", "cli", "python/src")
             for pattern in ("*.h", "*.cpp") for path in (project / top).rglob(pattern)}
    result = {}
    for name, path in files.items():
        quoted = re.findall(r'^\s*#\s*include\s*"([^"]+)"', path.read_text(), re.MULTILINE)
        places = [(include, f"src/{include}", f"cli/{include}", f"{Path(name).parent}/{include}")
                  for include in quoted]
        result[name] = {place for candidates in places for place in candidates if place in files}
    return result


def is_upwards(one: str, other: str) -> bool:
    """Whether `one` may not include `other`."""
    tops = [name.split("/")[0] for name in (one, other)]
    if tops[1] == "src" and tops[0] != "src":
        return other not in SHARED_TABLES or tops[0] != "scan"
    if tops == ["src", "src"]:
        folders = [name.split("/")[1] for name in (one, other)]
        floors = [next(at for at, floor in enumerate(FLOORS) if folder in floor.split()) for folder in folders]
        return floors[1] > floors[0] or (floors[0] == floors[1] and folders[0] != folders[1])
    order = {"src": 0, "scan": 1, "cli": 2, "python": 2}
    return order[tops[1]] > order[tops[0]] or (tops[0] != tops[1] and order[tops[0]] == order[tops[1]])


def circle(includes: dict[str, set[str]], node_of) -> str:
    """A circle between the nodes that files belong to; empty where there is none."""
    graph: dict[str, set[str]] = {}
    for name, others in includes.items():
        node = node_of(name)
        graph.setdefault(node, set()).update(set(map(node_of, others)) - {node})
    try:
        TopologicalSorter(graph).prepare()
    except CycleError as error:
        return " <- ".join(error.args[1])
    return ""


def faults(includes: dict[str, set[str]]) -> list[str]:
    found = [f"{name} includes {other}, which is above it" for name, others in includes.items()
             for other in sorted(others) if is_upwards(name, other)]
    circles = [circle(includes, lambda name: name.rsplit(".", 1)[0]),
               circle(includes, lambda name: name.rsplit("/", 1)[0])]
    return found + [f"circle: {one}" for one in circles if one]


def check_that_faults_are_found() -> None:
    assert not faults({"src/base/a.cpp": {"src/base/a.h"}, "src/dsp/b.h": {"src/base/a.h"}})
    for name, other in (("src/base/a.h", "src/dsp/b.h"), ("scan/a.cpp", "cli/b.h"), ("src/driver/a.h", "scan/b.h"),
                        ("src/driver/a.h", "src/formats/b.h"), ("scan/a.cpp", "src/base/b.h"),
                        ("cli/a.cpp", "src/formats/uf/layout.h"), ("python/src/a.cpp", "cli/a.h")):
        assert faults({name: {other}}), (name, other)
    assert faults({"scan/a.cpp": {"scan/b.h"}, "scan/b.cpp": {"scan/a.h"}})
    assert faults({"scan/a/x.cpp": {"scan/b/y.h"}, "scan/b/z.cpp": {"scan/a/w.h"}})


if __name__ == "__main__":
    check_that_faults_are_found()
    includes = read_includes(Path(sys.argv[1]))
    assert len(includes) > 300, len(includes)
    sys.exit("\n".join(faults(includes)) or 0)
