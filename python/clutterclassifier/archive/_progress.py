"""Progress of a long run: a bar on a terminal, a line now and then elsewhere."""

from __future__ import annotations

import shutil
import sys
import time
from collections import deque
from collections.abc import Callable
from typing import TextIO

_BAR_WIDTH = 24
_BAR_PERIOD = 0.1  # seconds between two drawings
_LINE_PERIOD = 30.0  # seconds between two lines where there is no terminal
_MEMORY = 200  # files whose pace counts for the rate
_MOST_NOTES = 20  # notes shown before the rest is only counted


def duration(seconds: float) -> str:
    """Seconds as a clock shows them.

    >>> duration(75), duration(3675)
    ('1:15', '1:01:15')
    """
    minutes, rest = divmod(int(seconds + 0.5), 60)
    hours, minutes = divmod(minutes, 60)
    return f"{hours}:{minutes:02}:{rest:02}" if hours else f"{minutes}:{rest:02}"


def printable(text: str) -> str:
    """Text that any stream accepts: bytes of a file's name that are not characters become \\x.."""
    return "".join(char if char.isprintable() else ascii(char)[1:-1] for char in text)


class Progress:
    """Counts `total` files.

    Parameters
    ----------
    total : int
        Files of the run.
    stream : text stream, optional
        Where to show it, standard error by default.
    wanted : bool
        False shows nothing, no notes either.
    clock : callable
        Seconds from any start.
    """

    def __init__(self, total: int, stream: TextIO | None = None, *, wanted: bool = True,
                 clock: Callable[[], float] = time.monotonic) -> None:
        self.total, self.done, self.failed = total, 0, 0
        self._stream = sys.stderr if stream is None else stream
        self._clock = clock
        self._bar = wanted and self._stream.isatty()
        self._lines = wanted and not self._bar
        self._shown_at = clock() if self._lines else float("-inf")
        self._paces: deque[tuple[float, int]] = deque(maxlen=_MEMORY)
        self.restart()
        self._notes = 0

    def advance(self, *, failed: bool = False) -> None:
        """One more file is done."""
        self.done += 1
        self.failed += failed
        self._paces.append((self._clock(), self.done))
        self.refresh()

    def restart(self) -> None:
        """The pace counts from here."""
        self._paces = deque([(self._clock(), self.done)], maxlen=_MEMORY)

    def refresh(self) -> None:
        """Shows the progress, unless that was just done."""
        period = _BAR_PERIOD if self._bar else _LINE_PERIOD
        if not (self._bar or self._lines) or self._clock() - self._shown_at < period:
            return
        self._shown_at = self._clock()
        if self._bar:
            self._write("\r\033[K" + self._bar_text()[: shutil.get_terminal_size().columns - 1])
        else:
            self._write(self.text() + "\n")

    def note(self, text: str) -> None:
        """A line of its own. After the first few only their number is shown, with the files."""
        self._notes += 1
        if self._notes > _MOST_NOTES or not (self._bar or self._lines):
            return
        if self._notes == _MOST_NOTES:
            text = "more such lines are not shown"
        self.clear()
        self._write(printable(text) + "\n")

    def clear(self) -> None:
        """Removes the bar, so that other output may follow."""
        if self._bar and self._shown_at > float("-inf"):
            self._write("\r\033[K")
            self._shown_at = float("-inf")

    def rate(self) -> float:
        """Files a second over the last few hundred; 0 when not known yet."""
        (start, first), now = self._paces[0], self._clock()
        return (self.done - first) / (now - start) if self.done > first and now > start else 0.0

    def text(self) -> str:
        """``"120 of 1000 files, 8.3 a second, 1:46 left, 2 failed"``."""
        parts = [f"{self.done} of {self.total} files"]
        rate = self.rate()
        if rate:
            parts.append(f"{rate:.1f} a second" if rate >= 0.1 else f"{60 * rate:.1f} a minute")
            parts.append(f"{duration((self.total - self.done) / rate)} left")
        if self.failed:
            parts.append(f"{self.failed} failed")
        return ", ".join(parts)

    def _bar_text(self) -> str:
        filled = _BAR_WIDTH * self.done // self.total if self.total else _BAR_WIDTH
        return f"[{'#' * filled:<{_BAR_WIDTH}}] {self.text()}"

    def _write(self, text: str) -> None:
        self._stream.write(text)
        self._stream.flush()
