"""Files by pattern, as a shell finds them. The standard library's glob follows circles of links."""

from __future__ import annotations

import fnmatch
import glob
import os
from collections.abc import Iterator

Folders = tuple[tuple[int, int], ...]


def leading_folder(pattern: str) -> str:
    """The folder before the first wildcard."""
    while glob.has_magic(pattern):
        pattern = os.path.dirname(pattern)
    return os.path.abspath(pattern)


def expand(pattern: str) -> set[str]:
    """The files and folders that match a pattern.

    ``*``, ``?`` and ``[...]`` match parts of a name, ``**`` matches folders of any depth. Names that
    begin with a dot match only where the pattern gives the dot.
    """
    folder = leading_folder(pattern)
    parts = os.path.relpath(os.path.join(os.getcwd(), os.path.normpath(pattern)), folder).split(os.sep)
    return set(_expand(folder, parts, ()))


def _expand(folder: str, parts: list[str], above: Folders) -> Iterator[str]:
    """`above` are the folders that ``**`` came through: a link back to one of them ends there."""
    if not parts:
        yield folder
        return
    if parts[0] == "**":
        yield from _expand_deep(folder, parts, above)
        return
    for name in names_in(folder, parts[0]):
        path = os.path.join(folder, name)
        if len(parts) == 1 or os.path.isdir(path):
            yield from _expand(path, parts[1:], above)


def _expand_deep(folder: str, parts: list[str], above: Folders) -> Iterator[str]:
    here = identity(folder)
    if here is None or here in above:
        return
    yield from _expand(folder, parts[1:], ())
    for name in names_in(folder, "*"):
        path = os.path.join(folder, name)
        if os.path.isdir(path):
            yield from _expand_deep(path, parts, (*above, here))
        elif len(parts) == 1:
            yield path


def names_in(folder: str, pattern: str) -> list[str]:
    """Names of a folder that fit, in order; none of a folder that cannot be read."""
    if not glob.has_magic(pattern):
        return [pattern] if os.path.lexists(os.path.join(folder, pattern)) else []
    try:
        names = os.listdir(folder)
    except OSError:
        return []
    return sorted(name for name in names
                  if fnmatch.fnmatchcase(name, pattern) and (pattern.startswith(".") or name[0] != "."))


def identity(folder: str) -> tuple[int, int] | None:
    """The identity of a folder; None where it cannot be read."""
    try:
        status = os.stat(folder)
    except OSError:
        return None
    return status.st_dev, status.st_ino
