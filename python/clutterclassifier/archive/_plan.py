"""The plan of an archive run: the input files, and the output of each.

The rule of names: an output keeps its input's path below the *base*, with ``.nc`` appended. The base
is the deepest folder that holds everything requested (a folder counts as itself, a pattern as its part
before the first wildcard, a file as its folder), so that two inputs never share an output.
"""

from __future__ import annotations

import fnmatch
import glob
import os
import stat
from collections.abc import Iterable
from dataclasses import dataclass, field
from typing import Union

from ._pattern import Folders, expand, identity, leading_folder

PathLike = Union[str, "os.PathLike[str]"]

#: Files of a run beside its outputs.
FAILURES_NAME = "failures.csv"
LOCK_NAME = ".archive.lock"


@dataclass(frozen=True)
class Job:
    """One input and its output, absolute paths."""

    source: str
    output: str


@dataclass
class Plan:
    """Jobs in the order of their sources, and paths that cannot be one, with the reason."""

    jobs: list[Job] = field(default_factory=list)
    failures: dict[str, str] = field(default_factory=dict)


@dataclass
class _Search:
    """Files found so far; files below `out` are results, not inputs."""

    out: str
    pattern: str | None
    anchors: list[str] = field(default_factory=list)
    files: set[str] = field(default_factory=set)
    failures: dict[str, str] = field(default_factory=dict)


def plan_jobs(inputs: Iterable[PathLike] | PathLike, out: PathLike, *, base: PathLike | None = None,
              pattern: str | None = None) -> Plan:
    """The jobs of a run.

    Parameters
    ----------
    inputs : path or several
        Files, folders (searched with all below them, but no hidden names) and patterns
        (``"2024/*.uf"``, ``**`` for any depth). Links are followed.
    out : path
        Folder of the outputs.
    base : path, optional
        Folder below which outputs keep the paths of their inputs.
    pattern : str, optional
        Names that files of folders must have, for example ``"*.uf"``.

    Raises
    ------
    FileNotFoundError
        An input is not there, or a pattern matches nothing.
    ValueError
        No inputs, an input outside `base`, or `out` is itself an input.
    """
    search = _Search(out=os.path.abspath(out), pattern=pattern)
    for item in [inputs] if isinstance(inputs, (str, os.PathLike)) else inputs:
        _add_input(search, os.fspath(item))
    if not search.anchors:
        raise ValueError("inputs are missing")
    root = os.path.abspath(base) if base is not None else os.path.commonpath(search.anchors)
    outputs = {source: _output_name(source, root, search.out) for source in search.files}
    results = {*outputs.values(), os.path.join(search.out, FAILURES_NAME)}
    jobs = [Job(source, outputs[source]) for source in sorted(search.files - results)]
    return Plan(jobs, search.failures)


def _output_name(source: str, root: str, out: str) -> str:
    if not _is_below(source, root):
        raise ValueError(f"{source} is not below the base {root}")
    return os.path.join(out, os.path.relpath(source, root) + ".nc")


def _is_below(path: str, folder: str) -> bool:
    return os.path.commonpath([path, folder]) == folder and path != folder


def _add_input(search: _Search, item: str) -> None:
    path = os.path.abspath(item)
    if os.path.isdir(path):
        _add_folder(search, path)
    elif os.path.lexists(path):
        search.anchors.append(os.path.dirname(path))
        _add_file(search, path)
    elif glob.has_magic(item):
        _add_pattern(search, item)
    else:
        raise FileNotFoundError(f"{item}: no such file or folder")


def _add_folder(search: _Search, path: str) -> None:
    if os.path.realpath(path) == os.path.realpath(search.out):
        raise ValueError(f"the folder {path} cannot be both input and output")
    search.anchors.append(path)
    _walk(search, path, ())


def _add_pattern(search: _Search, item: str) -> None:
    anchor = leading_folder(item)
    found = expand(item)
    if _is_below(search.out, anchor):
        found = {path for path in found if path != search.out and not _is_below(path, search.out)}
    if not found:
        raise FileNotFoundError(f"{item}: nothing matches")
    search.anchors.append(anchor)
    deep = "**" in item  # has found the contents of folders, and their names
    for path in found:
        if not os.path.isdir(path):
            _add_file(search, path)
        elif not deep:
            _walk(search, path, ())


def _walk(search: _Search, folder: str, above: Folders) -> None:
    """Adds the contents of a folder. `above` are the folders on the way: a link back to one ends there."""
    try:
        names = sorted(os.listdir(folder))
    except OSError as error:
        search.failures[folder] = error.strerror or str(error)
        return
    here = identity(folder)
    if here is None or here in above:
        return
    for name in names:
        path = os.path.join(folder, name)
        if name.startswith(".") or path == search.out:
            continue
        if os.path.isdir(path):
            _walk(search, path, (*above, here))
        elif search.pattern is None or fnmatch.fnmatchcase(name, search.pattern):
            _add_file(search, path)


def _add_file(search: _Search, path: str) -> None:
    try:
        regular = stat.S_ISREG(os.stat(path).st_mode)
    except OSError as error:
        search.failures[path] = error.strerror or str(error)
        return
    if regular:
        search.files.add(path)
    else:
        search.failures[path] = "not a regular file"
