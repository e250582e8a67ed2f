"""A run over an archive: plan, run, count and report."""

from __future__ import annotations

import contextlib
import functools
import os
import re
import time
from collections.abc import Generator, Iterable, Iterator, Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

from ..readers import check_layout
from ._errors import NotReady
from ._failures import FailureTable
from ._files import alone_in, is_current, remove_temporaries, stamp
from ._main_module import require_importable
from ._plan import FAILURES_NAME, LOCK_NAME, Job, PathLike, Plan
from ._progress import Progress, duration
from ._worker import Outcome, Settings, reason_of, run_job

if TYPE_CHECKING:
    from distributed import Client


@dataclass
class Summary:
    """The counts of a run.

    `done` files were made, `skipped` ones were complete already, `failed` ones are in the table of
    failures; `gates` were classified in `seconds`.
    """

    done: int = 0
    skipped: int = 0
    failed: int = 0
    gates: int = 0
    seconds: float = 0.0

    def __str__(self) -> str:
        rate = f" ({self.done / self.seconds:.1f} a second)" if self.done and self.seconds > 0 else ""
        return (f"{self.done} done in {duration(self.seconds)}{rate}, {self.skipped} skipped (complete "
                f"already), {self.failed} failed; {self.gates:,} gates")


@dataclass(frozen=True)
class Place:
    """Where the work is done: see `classify_archive`."""

    scheduler: str | Client | None = None
    workers: int | None = None
    timeout: float | None = 600.0

    def __post_init__(self) -> None:
        if self.workers is not None and self.workers < 0:
            raise ValueError(f"workers must be 0 or more, not {self.workers}")
        if self.timeout is not None and not self.timeout > 0:
            raise ValueError(f"timeout must be more than 0 seconds, not {self.timeout}")
        if isinstance(self.scheduler, str) and not re.fullmatch(r"\w+://.+:\d+", self.scheduler):
            raise ValueError(f"scheduler must be an address like tcp://host:8786, not {self.scheduler}")


def settings_of(*, process: bool, config: PathLike | dict[str, Any] | None, layout: int | None,
                with_fields: bool, options: dict[str, Any]) -> Settings:
    """The settings of a run as every process can use them: files are read now, paths are absolute.

    A rehearsal on a small synthetic scan finds settings that would fail for every file.
    """
    from .. import sweeps
    from .._arrays.classify import membership_directory
    from .._arrays.settings import read_settings
    from .._synthetic import synthetic_scan

    if config is not None and not process:
        raise ValueError("config is only used with process")
    check_layout(layout)
    options = {name: value for name, value in options.items()
               if value is not None or name == "neighbourhood"}  # where None decides each gate alone
    chain = read_settings(config)
    if process:
        options["config"] = chain
    membership = options.get("membership", chain.membership)
    if membership or "CLUTTERCLASSIFIER_MEMBERSHIP" in os.environ:
        options["membership"] = os.path.abspath(membership_directory(membership))
    scan = synthetic_scan(1, nrays=12, ngates=30)
    names = [name for name in dict(options.get("fields", {})).values() if name is not None]
    scan = scan.assign({name: scan.DBZH for name in names if name not in scan})
    if process:
        sweeps.process(scan, **options)
    else:
        sweeps.classify(scan, **options)
    return Settings(process=process, layout=layout, with_fields=with_fields, options=options)


class Run:
    """One run. `summary` is also valid while it runs."""

    def __init__(self, plan: Plan, out: PathLike, settings: Settings, place: Place, *,
                 overwrite: bool = False, progress: bool = False) -> None:
        self.summary = Summary()
        self.failures_path = os.path.join(os.path.abspath(out), FAILURES_NAME)
        self._plan, self._folder, self._settings, self._place = plan, os.path.abspath(out), settings, place
        self._text = settings.text()
        self._overwrite = overwrite
        self._progress = Progress(len(plan.jobs) + len(plan.failures), wanted=progress)

    def perform(self) -> None:
        """Makes the missing outputs. However it ends, only complete outputs stay."""
        start = time.monotonic()
        try:
            os.makedirs(self._folder, exist_ok=True)
        except OSError as error:
            raise NotReady(f"the folder for the outputs cannot be made: {reason_of(error)}") from error
        with alone_in(self._folder, LOCK_NAME):
            self._failures = FailureTable(self.failures_path)
            try:
                self._perform()
            finally:
                remove_temporaries(self._folder)
                self._failures.finish()
                self._progress.clear()
                self.summary.seconds = time.monotonic() - start

    def _perform(self) -> None:
        for path, reason in self._plan.failures.items():
            self._record(Outcome(path, reason))
        jobs = self._plan.jobs if self._overwrite else list(self._outstanding(self._plan.jobs))
        self._progress.restart()
        # Closed at once on any exception here: it holds the cluster.
        with contextlib.closing(self._outcomes(jobs)) as outcomes:
            for outcome in outcomes:
                self._record(outcome)

    def _outstanding(self, jobs: Iterable[Job]) -> Iterator[Job]:
        """Jobs without a current output; the others are recorded."""
        for job in jobs:
            try:
                current = is_current(job.output, stamp(job.source, self._text))
            except OSError as error:
                self._record(Outcome(job.source, reason_of(error)))
                continue
            if not current:
                yield job
                continue
            self.summary.skipped += 1
            self._failures.mended(job.source)
            self._progress.advance()

    def _outcomes(self, jobs: Sequence[Job]) -> Generator[Outcome, None, None]:
        given: dict[str, Any] = {"settings": self._settings, "settings_text": self._text}
        if not jobs:
            return
        if self._place.workers == 0 and self._place.scheduler is None:
            yield from (run_job(job, **given) for job in jobs)
            return
        from . import _child, _dask

        if self._place.scheduler is None:
            require_importable()
        with self._client(len(jobs)) as client:
            _dask.require_ready(client, self._folder, self._tell_waiting)
            self._progress.restart()
            work = functools.partial(_child.run_apart, **given, seconds=self._place.timeout)
            yield from _dask.run_jobs(client, work, jobs, self._progress.refresh)

    def _client(self, njobs: int) -> contextlib.AbstractContextManager[Client]:
        from . import _dask

        scheduler = self._place.scheduler
        if scheduler is None:
            return _dask.local_client(min(self._place.workers or _dask.processors(), njobs))
        if isinstance(scheduler, str):
            return _dask.remote_client(scheduler)
        return contextlib.nullcontext(scheduler)

    def _record(self, outcome: Outcome) -> None:
        """Counts a file, and records a failure."""
        if outcome.reason:
            self.summary.failed += 1
            self._failures.add(outcome.source, outcome.reason)
            self._progress.note(f"clutterclassifier: {outcome.source}: {outcome.reason}")
        else:
            self.summary.done += 1
            self.summary.gates += outcome.gates
            self._failures.mended(outcome.source)
        self._progress.advance(failed=bool(outcome.reason))

    def _tell_waiting(self) -> None:
        self._progress.note("waiting for workers of the scheduler")
