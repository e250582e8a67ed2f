"""The table of files without a result: ``failures.csv``."""

from __future__ import annotations

import contextlib
import csv
import os
from collections.abc import Iterable
from datetime import datetime, timezone
from typing import IO

from ._files import complete_or_not_at_all, open_unlinked

_HEADER = ("file", "reason", "time")


class FailureTable:
    """Failures of this run, and those of earlier runs whose files were not done since.

    A failure is written at once; a file that was done since leaves the table when the run ends. Without
    any failure there is no table.
    """

    def __init__(self, path: str) -> None:
        self.path = path
        self._rows = {row[0]: row for row in _read(path)}
        if self._rows:  # a run that was killed may have left half a line
            _replace(path, [_HEADER, *self._rows.values()])

    def add(self, file: str, reason: str) -> None:
        """Records a failure."""
        row = (file, " ".join(reason.split()), datetime.now(timezone.utc).isoformat(timespec="seconds"))
        self._rows[file] = row
        new = not os.path.exists(self.path)
        with _open(self.path, "a") as table:
            csv.writer(table).writerows([_HEADER, row] if new else [row])

    def mended(self, file: str) -> None:
        """The file has a result now."""
        self._rows.pop(file, None)

    def finish(self) -> None:
        """Leaves one line for each file that is still without a result."""
        if self._rows:
            _replace(self.path, [_HEADER, *self._rows.values()])
        else:
            with contextlib.suppress(FileNotFoundError):
                os.unlink(self.path)


def _open(path: str, mode: str) -> IO[str]:
    # File names are bytes: those that are not text pass unchanged.
    return open(path, mode, newline="", encoding="utf-8", errors="surrogateescape", opener=open_unlinked)


def _read(path: str) -> list[tuple[str, ...]]:
    rows: list[tuple[str, ...]] = []
    # A table that is damaged is read up to the damage.
    with contextlib.suppress(FileNotFoundError, csv.Error), _open(path, "r") as table:
        rows.extend(tuple(row) for row in csv.reader(table))
    return [row for row in rows if len(row) == len(_HEADER) and row != _HEADER]


def _replace(path: str, rows: Iterable[tuple[str, ...]]) -> None:
    with complete_or_not_at_all(path) as temporary, open(
            temporary, "w", newline="", encoding="utf-8", errors="surrogateescape") as table:
        csv.writer(table).writerows(rows)
