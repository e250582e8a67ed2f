"""Many files with Dask: a local cluster or an existing scheduler, and a bounded number under way.

A worker that dies takes nothing with it: Dask gives its files to others. Dask blames every file that
the worker held, though, so a file it gives up is tried once more with nothing beside it before it is
called the cause.
"""

from __future__ import annotations

import contextlib
import importlib.util
import logging
import os
import queue
import secrets
import signal
import socket
import time
from collections import deque
from collections.abc import Callable, Iterable, Iterator

import dask
from distributed import CancelledError, Client, Future, KilledWorker, LocalCluster, Worker, WorkerPlugin
from distributed.comm.addressing import parse_host_port

from .._version import __version__
from ._errors import LostScheduler, NotReady
from ._plan import Job
from ._worker import Outcome, reason_of

#: Files submitted for each thread of the workers: one in work, and the next ones ready.
_PER_THREAD = 3

#: Deaths of workers after which a local cluster blames a file.
_LOCAL_FAILURES = 1

_LOST = "the connection to the scheduler is lost"

_TICK = 0.5  # seconds

#: Where the local cluster's web servers listen: without an address they do so on all interfaces.
_LOOPBACK = "127.0.0.1:0"

Work = Callable[[Job], Outcome]


def processors() -> int:
    """Processors that this process may use."""
    return len(os.sched_getaffinity(0))


@contextlib.contextmanager
def local_client(workers: int) -> Iterator[Client]:
    """A client of a cluster of processes on this machine, not reachable from others."""
    environment = dask.config.get("distributed.nanny.pre-spawn-environ", {})
    environment = {**environment, "DASK_LOGGING__DISTRIBUTED": "critical"}
    settings = {"distributed.scheduler.allowed-failures": _LOCAL_FAILURES,
                "distributed.nanny.pre-spawn-environ": environment}
    with dask.config.set(settings), _quiet(), LocalCluster(
            n_workers=workers, threads_per_worker=1, processes=True, host="127.0.0.1",
            dashboard_address=_LOOPBACK, worker_dashboard_address=_LOOPBACK,
            silence_logs=logging.CRITICAL) as cluster:
        with Client(cluster, set_as_default=False) as client:
            client.register_worker_plugin(_IgnoreInterrupts())
            yield client


@contextlib.contextmanager
def _quiet() -> Iterator[None]:
    """Without Dask's messages about processes that come and go."""
    logger = logging.getLogger("distributed")
    level = logger.level
    logger.setLevel(logging.CRITICAL)
    try:
        yield
    finally:
        logger.setLevel(level)


class _IgnoreInterrupts(WorkerPlugin):
    """An interruption from the terminal reaches every process; the one that leads the run ends the
    others."""

    def setup(self, worker: Worker) -> None:
        signal.signal(signal.SIGINT, signal.SIG_IGN)


def _ping(scheduler: str, timeout: float) -> None:
    """Raises OSError where nothing listens: a client would need a minute longer to notice."""
    if scheduler.startswith(("tcp://", "tls://")):
        host, port = parse_host_port(scheduler.partition("://")[2])
        socket.create_connection((host, port), timeout).close()


@contextlib.contextmanager
def remote_client(scheduler: str, timeout: float = 30) -> Iterator[Client]:
    """A client of an existing scheduler.

    Raises
    ------
    ConnectionError
        There is none at this address.
    """
    try:
        _ping(scheduler, timeout)
        client = Client(scheduler, timeout=timeout, set_as_default=False)
    except (OSError, ValueError) as error:
        raise ConnectionError(f"no scheduler at {scheduler}: {reason_of(error)}") from None
    with client:
        yield client


def require_ready(client: Client, out: str, waiting: Callable[[], None]) -> None:
    """Waits for a first worker and makes sure that the workers have the package and see `out`.

    Raises
    ------
    NotReady
        A worker cannot work; the message gives the reason.
    """
    reported = False
    while not client.scheduler_info()["workers"]:
        if not reported:
            waiting()
        reported = True
        with contextlib.suppress(TimeoutError):
            client.wait_for_workers(1, timeout=10 * _TICK)
    try:
        answers = client.run(_ready, out, __version__)
    except Exception as error:
        raise NotReady(f"the workers are not ready: {reason_of(error)}") from error
    for address, answer in answers.items():
        if answer:
            raise NotReady(f"the worker {address} {answer}")


def _ready(out: str, version: str) -> str:
    """Why a worker cannot work for a run; empty when it can."""
    from .. import __version__ as own

    if own != version:
        return f"has version {own} of clutterclassifier, not {version}"
    missing = [name for name in ("netCDF4", "xarray") if importlib.util.find_spec(name) is None]
    if missing:
        return f"lacks the package {missing[0]}"
    return "" if os.path.isdir(out) else f"does not see the folder {out}"


def run_jobs(client: Client, work: Work, jobs: Iterable[Job],
             tick: Callable[[], None] = lambda: None) -> Iterator[Outcome]:
    """Outcomes of `work` on every job, as they come in. `tick` is called now and then meanwhile.

    `work` must be picklable by name. No more jobs are under way than keep the workers busy, however
    many there are.
    """
    suspects: list[Job] = []
    yield from _window(client, work, jobs, tick, suspects)
    for job in suspects:
        again: list[Job] = []
        yield from _window(client, work, [job], tick, again)
        for lost in again:
            yield Outcome(lost.source, "the worker process died, more than once")


def _window(client: Client, work: Work, jobs: Iterable[Job], tick: Callable[[], None],
            suspects: list[Job]) -> Iterator[Outcome]:
    waiting = deque(jobs)
    under_way: dict[str, tuple[Future, Job]] = {}
    finished: queue.SimpleQueue[Future] = queue.SimpleQueue()
    limit = _Limit(client)
    try:
        while waiting or under_way:
            while waiting and len(under_way) < limit.now():
                job = waiting.popleft()
                future = client.submit(work, job, key=f"archive-{secrets.token_hex(12)}", pure=False)
                under_way[future.key] = (future, job)
                future.add_done_callback(finished.put)
            try:
                key = finished.get(timeout=_TICK).key
            except queue.Empty:
                tick()
                continue
            future, job = under_way.pop(key)
            try:
                outcome = _outcome(future, job)
            except KilledWorker:
                suspects.append(job)
            else:
                yield outcome
    finally:
        with contextlib.suppress(Exception):  # the scheduler may be gone
            client.cancel([future for future, _ in under_way.values()])


class _Limit:
    """How many jobs may be under way. Workers come and go: they are counted again now and then."""

    def __init__(self, client: Client) -> None:
        self._client, self._threads, self._counted_at = client, 0, float("-inf")

    def now(self) -> int:
        if time.monotonic() - self._counted_at > 4 * _TICK:
            self._counted_at = time.monotonic()
            try:
                self._threads = sum(self._client.nthreads().values())
            except (OSError, AttributeError):  # there is no connection
                raise LostScheduler(_LOST) from None
        return max(4, _PER_THREAD * self._threads)


def _outcome(future: Future, job: Job) -> Outcome:
    try:
        return future.result()
    except KilledWorker:
        raise
    except (CancelledError, OSError):  # not the job's fault: `work` reports its errors as outcomes
        raise LostScheduler(_LOST) from None
    except Exception as error:  # the worker could not even start it
        return Outcome(job.source, reason_of(error))
