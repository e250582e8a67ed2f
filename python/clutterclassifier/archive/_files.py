"""Outputs of an archive run on disk: there whole or not at all, and knowing what they were made from."""

from __future__ import annotations

import contextlib
import os
import re
import secrets
from collections.abc import Iterator
from typing import Any

from ._progress import printable

#: Names of files that are not complete yet.
_TEMPORARY = re.compile(r"\..+\.nc\.[0-9a-f]{16}\.part")

#: Attributes of an output that tell what it was made from.
STAMP_NAMES = ("source_file", "source_size", "source_modified_ns", "settings")


def stamp(source: str, settings: str) -> dict[str, Any]:
    """What an output of this input with these settings is to say about itself."""
    status = os.stat(source)
    return {"source_file": printable(source), "source_size": status.st_size,
            "source_modified_ns": status.st_mtime_ns, "settings": settings}


def read_stamp(output: str) -> dict[str, Any] | None:
    """What an output says about itself; None when there is none, or none that can be read."""
    import netCDF4

    if not os.path.isfile(output):
        return None
    try:
        with netCDF4.Dataset(output) as file:
            found = {name: file.getncattr(name) for name in STAMP_NAMES}
    except (OSError, AttributeError, RuntimeError, UnicodeError):
        return None
    return {name: value if isinstance(value, str) else int(value) for name, value in found.items()}


def is_current(output: str, wanted: dict[str, Any]) -> bool:
    """Whether an output is there, made from the input as it is now, by the same settings.

    Raises
    ------
    FileExistsError
        It is the result of another input.
    """
    found = read_stamp(output)
    if found is None:
        return False
    if found["source_file"] != wanted["source_file"]:
        raise FileExistsError(f"its output {output} is the result of another input, {found['source_file']}")
    return found == wanted and os.stat(output).st_mtime_ns >= wanted["source_modified_ns"]


@contextlib.contextmanager
def complete_or_not_at_all(output: str, not_older_than_ns: int = 0) -> Iterator[str]:
    """A temporary name beside `output`; what was written there becomes `output` in one step.

    When the block raises, or is never left, `output` stays as it was. The file is on the disk before
    it gets its name, so that a name never stands for a part, even after a loss of power.
    """
    folder, name = os.path.split(output)
    os.makedirs(folder, exist_ok=True)
    temporary = os.path.join(folder, f".{name}.{secrets.token_hex(8)}.part")
    try:
        yield temporary
        _flush(temporary)
        status = os.stat(temporary)
        if status.st_mtime_ns < not_older_than_ns:  # clocks of two machines that do not agree
            os.utime(temporary, ns=(status.st_atime_ns, not_older_than_ns))
        os.replace(temporary, output)
        _flush(folder)
    finally:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(temporary)


def _flush(path: str) -> None:
    descriptor = os.open(path, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)


def remove_temporaries(folder: str) -> int:
    """Removes what killed workers left behind, at any depth; returns how many files that were."""
    removed = 0
    for here, _, names in os.walk(folder):
        for name in filter(_TEMPORARY.fullmatch, names):
            with contextlib.suppress(OSError):
                os.unlink(os.path.join(here, name))
                removed += 1
    return removed


@contextlib.contextmanager
def alone_in(folder: str, lock_name: str) -> Iterator[None]:
    """Keeps a second run out of a folder as long as the block runs.

    Raises
    ------
    BlockingIOError
        Another run has the folder.
    """
    import fcntl

    path = os.path.join(folder, lock_name)
    with open(path, "a") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            held = os.path.exists(path) and os.path.samestat(os.stat(path), os.fstat(lock.fileno()))
            if not held:  # the lock of a run that ended just now and took its file away
                raise BlockingIOError
        except BlockingIOError:
            raise BlockingIOError(f"another run is writing to {folder}") from None
        except OSError:
            pass  # a file system without locks
        try:
            yield
        finally:
            with contextlib.suppress(FileNotFoundError):
                os.unlink(path)
