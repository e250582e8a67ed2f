"""A process of its own for the files of a worker.

A file that crashes the process, or never ends, is an outcome like any other: neither the worker nor
other files are affected. It also keeps HDF5 in a main thread, and its printed output separate.

Parent and child speak in pickled objects over two pipes; the child ends when its input does.
"""

from __future__ import annotations

import ctypes
import os
import pickle
import select
import signal
import subprocess
import sys
import threading
from typing import BinaryIO

from ._plan import Job
from ._worker import Outcome, Settings, run_job

_here = threading.local()

#: prctl(2): a signal for this process when the thread that started it ends.
_PR_SET_PDEATHSIG = 1


def run_apart(job: Job, settings: Settings, settings_text: str, seconds: float | None = None) -> Outcome:
    """As `run_job`, in the process that belongs to this thread.

    After `seconds` the process is ended and the file has failed; the next file gets a new process.
    """
    child = getattr(_here, "child", None)
    if child is None or not child.is_alive():
        child = _here.child = _Child()
    return child.run(job, settings, settings_text, seconds)


class _Child:
    def __init__(self) -> None:
        path = os.pathsep.join(entry or os.getcwd() for entry in sys.path)
        self._process = subprocess.Popen([sys.executable, "-m", __name__], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, env={**os.environ, "PYTHONPATH": path})
        assert self._process.stdin is not None and self._process.stdout is not None  # both are pipes
        self._jobs, self._outcomes = self._process.stdin, self._process.stdout

    def is_alive(self) -> bool:
        return self._process.poll() is None

    def run(self, job: Job, settings: Settings, settings_text: str, seconds: float | None) -> Outcome:
        outcome = None
        try:
            pickle.dump((job, settings, settings_text), self._jobs)
            self._jobs.flush()
            if not self._answers(seconds):
                return Outcome(job.source, f"not done after {seconds:g} seconds")
            outcome = pickle.load(self._outcomes)
            return outcome
        except (OSError, EOFError, pickle.UnpicklingError):
            return Outcome(job.source, f"its process {_end(self._process.wait())}")
        finally:
            if outcome is None:
                self._stop()

    def _answers(self, seconds: float | None) -> bool:
        poll = select.poll()
        poll.register(self._outcomes, select.POLLIN)
        return bool(poll.poll(None if seconds is None else 1000 * seconds))

    def _stop(self) -> None:
        self._process.kill()
        self._process.wait()
        self._outcomes.close()
        try:
            self._jobs.close()
        except BrokenPipeError:  # data that was not sent yet
            pass


def _end(code: int) -> str:
    """How a process ended."""
    if code >= 0:
        return f"ended with exit code {code}"
    try:
        return f"died of {signal.Signals(-code).name}"
    except ValueError:
        return f"died of signal {-code}"


def _serve() -> None:
    """The child: jobs in, outcomes out, until there are no more."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # the process that leads the run handles interruptions
    ctypes.CDLL(None).prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
    answers = os.fdopen(os.dup(sys.stdout.fileno()), "wb")
    os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # for anything that a library prints
    jobs: BinaryIO = sys.stdin.buffer
    while True:
        try:
            job, settings, settings_text = pickle.load(jobs)
        except EOFError:
            return
        pickle.dump(run_job(job, settings, settings_text), answers)
        answers.flush()


if __name__ == "__main__":
    _serve()
