"""Outputs of an archive run on disk: complete or absent, with a record of their origin."""

from __future__ import annotations

import contextlib
import os
import re
import secrets
import stat
from collections.abc import Iterator
from typing import Any

from ._pattern import identity
from ._progress import printable

#: Names of files that are not complete yet: short, so that an output may have the longest name.
_PREFIX = ".clutterclassifier-"
_TEMPORARY = re.compile(re.escape(_PREFIX) + "[0-9a-f]{16}")

#: Attributes of an output that record its origin.
STAMP_NAMES = ("source_file", "source_size", "source_modified_ns", "settings")


def stamp(source: str, settings: str) -> dict[str, Any]:
    """The record of origin of an output from this input with these settings."""
    status = os.stat(source)
    return {"source_file": printable(source), "source_size": status.st_size,
            "source_modified_ns": status.st_mtime_ns, "settings": settings}


def read_stamp(output: str) -> dict[str, Any] | None:
    """The record of origin in an output; None where there is none that can be read."""
    import netCDF4

    if not os.path.isfile(output):
        return None
    try:
        with by_descriptor(output) as path, netCDF4.Dataset(path) as file:
            found = {name: file.getncattr(name) for name in STAMP_NAMES}
        return {name: value if isinstance(value, str) else int(value) for name, value in found.items()}
    except (OSError, AttributeError, RuntimeError, UnicodeError, TypeError, ValueError, OverflowError):
        return None


def is_current(output: str, wanted: dict[str, Any]) -> bool:
    """Whether an output exists that was made from the input as it is now, by the same settings.

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
def by_descriptor(path: str, flags: int = os.O_RDONLY) -> Iterator[str]:
    """A name that the NetCDF library takes for any file: it refuses names that are not UTF-8."""
    descriptor = os.open(path, flags)
    try:
        yield _name_of(descriptor, path)
    finally:
        os.close(descriptor)


def _name_of(descriptor: int, path: str) -> str:
    name = f"/proc/self/fd/{descriptor}"
    return name if os.path.exists(name) else path


def _new_file(folder: str) -> tuple[int, str]:
    """A new file under an unpredictable name; never an existing one, nor one reached through a link."""
    path = os.path.join(folder, _PREFIX + secrets.token_hex(8))
    return os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW, 0o666), path


@contextlib.contextmanager
def complete_or_not_at_all(output: str, not_older_than_ns: int = 0) -> Iterator[str]:
    """A name to write to; the new file becomes `output` in one step, with the mode of the old one.

    When the block raises, or is never left, `output` stays as it was. The file is on the disk before
    it gets its name, so that an output is always complete, even after a loss of power.
    """
    folder = os.path.dirname(output)
    os.makedirs(folder, exist_ok=True)
    descriptor, temporary = _new_file(folder)
    try:
        yield _name_of(descriptor, temporary)
        with contextlib.suppress(FileNotFoundError):
            os.fchmod(descriptor, stat.S_IMODE(os.stat(output).st_mode))
        status = os.fstat(descriptor)
        if status.st_mtime_ns < not_older_than_ns:  # clocks of two machines that do not agree
            os.utime(descriptor, ns=(status.st_atime_ns, not_older_than_ns))
        os.fsync(descriptor)
        os.replace(temporary, output)
        _flush(folder)
    finally:
        os.close(descriptor)
        with contextlib.suppress(FileNotFoundError):
            os.unlink(temporary)


def _flush(folder: str) -> None:
    descriptor = os.open(folder, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)


def open_unlinked(path: str, flags: int) -> int:
    """An opener that does not follow a link: the file is in a folder that others may write to."""
    return os.open(path, flags | os.O_NOFOLLOW, 0o666)


def remove_temporaries(folder: str) -> int:
    """Removes the files that killed workers left, at any depth; returns their number.

    Folders that are links are followed, as they are when outputs are written.
    """
    removed = 0
    known = {identity(folder)}
    for here, inner, names in os.walk(folder, followlinks=True):
        found = {name: identity(os.path.join(here, name)) for name in inner}
        inner[:] = [name for name in inner if found[name] not in known]
        known.update(found.values())
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
    with open(path, "a", opener=open_unlinked) as lock:
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
