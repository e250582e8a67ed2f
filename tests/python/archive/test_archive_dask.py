"""Archives with Dask: workers, clusters and processes that die in the middle."""

from __future__ import annotations

import os
import signal
import subprocess
import sys
import time
from pathlib import Path

import psutil
import pytest
from clutterclassifier.archive import _dask as archive_dask
from archives import COMMAND, content, failures, make_archive, make_scan, names_in, serial, wait_until


@pytest.fixture(scope="module")
def serial_results(tmp_path_factory):
    """Inputs, and their outputs made without Dask."""
    folder = tmp_path_factory.mktemp("serial")
    make_archive(folder / "in", 36)
    (folder / "in/bad.uf").write_text("no radar data")
    serial(folder / "in", folder / "out")
    return folder / "in", {name: content(folder / "out" / name) for name in names_in(folder / "out")
                           if name.endswith(".nc")}


def assert_all_there(out: Path, results) -> None:
    assert names_in(out) == sorted([*results, "failures.csv"])
    assert list(failures(out)) == ["bad.uf"]
    for name, expected in results.items():
        assert content(out / name) == expected, name


@pytest.fixture
def cluster(tmp_path):
    """A scheduler and two workers as processes of their own, over TCP."""
    processes = []

    def start(what: str, *arguments: str) -> subprocess.Popen:
        with open(tmp_path / "cluster.log", "ab") as log:
            processes.append(subprocess.Popen(
                [sys.executable, "-m", f"distributed.cli.dask_{what}", "--no-dashboard",
                 "--host", "127.0.0.1", "--scheduler-file", str(tmp_path / "scheduler.json"), *arguments],
                stdout=log, stderr=log, cwd=tmp_path))
        return processes[-1]

    scheduler = start("scheduler", "--port", "0")
    wait_until((tmp_path / "scheduler.json").exists)
    workers = [start("worker", "--nthreads", "1", "--no-nanny", "--local-directory", str(tmp_path / name),
                     "--name", name) for name in ("one", "two")]
    from distributed import Client

    with Client(scheduler_file=str(tmp_path / "scheduler.json"), set_as_default=False) as client:
        client.wait_for_workers(2, timeout=60)
        yield client, workers, scheduler
    for process in processes:
        process.kill()
        process.wait()


def children(pid: int) -> list[int]:
    try:
        return [int(child) for task in Path(f"/proc/{pid}/task").iterdir()
                for child in (task / "children").read_text().split()]
    except FileNotFoundError:
        return []


def is_running(pid: int) -> bool:
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


def test_a_lost_worker_loses_nothing(cluster, serial_results, tmp_path):
    client, workers, _ = cluster
    source, results = serial_results
    out = tmp_path / "out"
    run = subprocess.Popen([*COMMAND, source, "--out", out, "--scheduler", client.scheduler.address],
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    addresses = {info["name"]: address for address, info in client.scheduler_info()["workers"].items()}

    def is_caught_at_work() -> bool:
        """Stops a worker, so that what it holds stays with it, and looks whether that is anything."""
        workers[0].send_signal(signal.SIGSTOP)
        if client.processing()[addresses["one"]]:
            return True
        workers[0].send_signal(signal.SIGCONT)
        return False

    wait_until(lambda: out.exists() and len(list(out.glob("*.nc"))) >= 5)
    wait_until(is_caught_at_work)
    assert len(list(out.glob("*.nc"))) < len(results), "the run was over already"
    readers = children(workers[0].pid)
    workers[0].kill()
    output, errors = run.communicate(timeout=120)
    assert run.returncode == 1 and "bad.uf" in errors
    assert f"{len(results)} done" in output
    assert_all_there(out, results)
    assert readers
    wait_until(lambda: not any(map(is_running, readers)))


def test_a_stopped_run_goes_on(serial_results, tmp_path):
    source, results = serial_results
    out = tmp_path / "out"
    command = [*COMMAND, source, "--out", out, "--workers", "2"]
    run = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                           start_new_session=True)
    wait_until(lambda: out.exists() and len(list(out.glob("*.nc"))) >= 5)
    os.killpg(run.pid, signal.SIGINT)  # as a terminal does
    _, errors = run.communicate(timeout=60)
    assert run.returncode == 130 and "continues here" in errors and "Traceback" not in errors
    made = [name for name in names_in(out) if name.endswith(".nc")]
    assert set(names_in(out)) <= {*results, "failures.csv"} and 5 <= len(made) < len(results)
    again = subprocess.run(command, capture_output=True, text=True, timeout=120)
    assert f"{len(made)} skipped" in again.stdout
    assert_all_there(out, results)


def test_only_the_file_that_kills_its_workers_fails(tmp_path, monkeypatch):
    from clutterclassifier.archive import _dask as archive_dask
    from clutterclassifier.archive._plan import Job
    from clutterclassifier.archive._worker import Outcome

    def work(job: Job) -> Outcome:
        if job.source == "deadly":
            while not os.listdir(job.output):  # the unlucky one has had its first run
                time.sleep(0.02)
            os._exit(1)
        if job.source == "unlucky" and not os.listdir(job.output):  # blamed for others' deaths
            open(f"{job.output}/{os.getpid()}", "w").close()
            os._exit(1)
        return Outcome(job.source, gates=1)

    names = [f"good{i}" for i in range(6)]
    jobs = [Job(name, str(tmp_path)) for name in [*names[:3], "unlucky", "deadly", *names[3:]]]
    monkeypatch.setattr(archive_dask, "_LOCAL_FAILURES", 0)
    with archive_dask.local_client(2) as client:
        outcomes = list(archive_dask.run_jobs(client, work, jobs))
    reasons = {outcome.source: outcome.reason for outcome in outcomes}
    assert len(outcomes) == 8 and "died" in reasons.pop("deadly")
    assert reasons == dict.fromkeys([*names, "unlucky"], "")


def test_no_more_files_are_under_way_than_needed():
    from clutterclassifier.archive import _dask as archive_dask
    from clutterclassifier.archive._plan import Job
    from distributed import Client

    under_way = set()

    class Counting(Client):
        def submit(self, work, job, **keywords):
            under_way.add(job.source)
            assert len(under_way) <= 6
            return super().submit(work, job, **keywords)

    with Counting(n_workers=1, threads_per_worker=2, processes=False, dashboard_address=None) as client:
        done = 0
        jobs = [Job(str(i), "") for i in range(100)]
        for outcome in archive_dask.run_jobs(client, lambda job: job, jobs):
            under_way.remove(outcome.source)
            done += 1
    assert done == 100


def test_a_lost_scheduler_ends_the_run(cluster):
    from clutterclassifier.archive._dask import remote_client, run_jobs
    from clutterclassifier.archive._plan import Job
    from clutterclassifier.archive._errors import LostScheduler

    client, _, scheduler = cluster
    with remote_client(client.scheduler.address, timeout=1) as own:
        outcomes = run_jobs(own, lambda job: job, (Job(str(i), "") for i in range(1000)))
        next(outcomes)
        scheduler.kill()
        with pytest.raises(LostScheduler):
            list(outcomes)


@pytest.mark.parametrize("address", ["tcp://127.0.0.1:9", "tcp://no.such.host.invalid:9"])
def test_no_scheduler_at_the_address(address):
    with pytest.raises(ConnectionError, match=f"no scheduler at {address}"):
        with archive_dask.remote_client(address, timeout=1):
            pass


# A process for the files of a worker


@pytest.fixture
def apart(tmp_path):
    """Runs a file in a process of its own."""
    from clutterclassifier.archive._child import run_apart
    from clutterclassifier.archive._plan import Job
    from clutterclassifier.archive._worker import Settings

    def run(source: Path, seconds: float | None = None):
        job = Job(str(source), str(tmp_path / "out" / f"{source.name}.nc"))
        return run_apart(job, Settings(), Settings().text(), seconds)

    os.mkfifo(tmp_path / "endless")
    return run


def test_a_file_that_never_ends_is_given_up(apart, tmp_path):
    assert apart(tmp_path / "endless", 0.2).reason == "not done after 0.2 seconds"
    assert apart(make_scan(tmp_path / "scan.nc")).gates == 1500


def test_a_file_that_kills_its_process_is_reported(apart, tmp_path):
    import threading

    assert apart(make_scan(tmp_path / "scan.nc")).gates == 1500
    [reader] = [pid for pid in children(os.getpid())
                if "archive._child" in Path(f"/proc/{pid}/cmdline").read_text()]

    def kill_at_work() -> None:
        with open(tmp_path / "endless", "w"):  # waits for the process to read
            os.kill(reader, signal.SIGSEGV)

    opened = threading.Thread(target=kill_at_work)
    opened.start()
    assert apart(tmp_path / "endless").reason == "its process died of SIGSEGV"
    opened.join()
    assert apart(tmp_path / "scan.nc").gates == 1500


def test_no_process_outlives_its_worker(apart, tmp_path):
    text = ("from clutterclassifier.archive._child import run_apart as run, Job, Settings\n"
            f"run(Job({str(tmp_path / 'endless')!r}, ''), Settings(), '')")
    worker = subprocess.Popen([sys.executable, "-c", text])
    opened = open(tmp_path / "endless", "w")  # waits for the process to read: it is at work then
    [reader] = children(worker.pid)
    worker.kill()
    worker.wait()
    wait_until(lambda: not is_running(reader))
    opened.close()


def test_the_local_cluster_is_not_reachable_from_others() -> None:
    with archive_dask.local_client(1):
        family = [psutil.Process(), *psutil.Process().children(recursive=True)]
        listening = [one.laddr.ip for process in family for one in process.connections("tcp")
                     if one.status == psutil.CONN_LISTEN]
    assert len(listening) > 2 and set(listening) == {"127.0.0.1"}
