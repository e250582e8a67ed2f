"""Archives: which files are done, what is written, and what happens when something goes wrong."""

from __future__ import annotations

import csv
import io
import os
import re
import signal
import subprocess
import sys
import time
from pathlib import Path

import clutterclassifier as cc
import netCDF4
import numpy as np
import psutil
import pytest
import xarray as xr
from clutterclassifier import _archive_dask, sweeps
from clutterclassifier._archive_netcdf import read_netcdf, write_sweeps
from clutterclassifier._archive_plan import plan_jobs
from clutterclassifier._progress import Progress
from clutterclassifier.archive import classify_archive

COMMAND = [sys.executable, "-m", "clutterclassifier.archive"]


def make_scan(path: Path, seed: int = 1) -> Path:
    path.parent.mkdir(parents=True, exist_ok=True)
    cc.synthetic_scan(seed, nrays=30, ngates=50).to_netcdf(path)
    return path


def make_archive(folder: Path, count: int) -> list[str]:
    return [make_scan(folder / f"scan{i:03}.nc", seed=i).name for i in range(count)]


def serial(files, out: Path, **options):
    return classify_archive(files, out, workers=0, **options)


def names_in(folder: Path) -> list[str]:
    """All files at any depth, hidden ones too."""
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def content(path: Path):
    """All that an output holds, but for the time in its history."""
    def of(group: netCDF4.Group):
        attributes = {name: np.asarray(group.getncattr(name)).tolist() for name in group.ncattrs()}
        attributes["history"] = re.sub(r"\d{4}-\S+Z", "TIME", attributes.get("history", ""))
        variables = {name: repr((variable.dimensions, variable.dtype, np.asarray(variable[...]).tolist(),
                                 {key: variable.getncattr(key) for key in variable.ncattrs()}))
                     for name, variable in group.variables.items()}
        return attributes, variables, {name: of(inner) for name, inner in group.groups.items()}

    with netCDF4.Dataset(path) as file:
        file.set_auto_maskandscale(False)
        file.set_always_mask(False)
        return of(file)


def failures(out: Path) -> dict[str, str]:
    path = out / "failures.csv"
    if not path.exists():
        return {}
    with open(path, newline="") as table:
        return {Path(row["file"]).name: row["reason"] for row in csv.DictReader(table)}


def wait_until(condition, seconds: float = 60):
    deadline = time.monotonic() + seconds
    while not (found := condition()):
        assert time.monotonic() < deadline, "waited in vain"
        time.sleep(0.01)
    return found


# Which inputs, which outputs


def test_outputs_keep_the_folders_of_their_inputs(tmp_path):
    for name in ("a/x.nc", "b/x.nc", "b/deep/x.nc"):
        make_scan(tmp_path / "in" / name)
    summary = serial([tmp_path / "in/a", tmp_path / "in/b"], tmp_path / "out")
    assert summary.done == 3
    assert names_in(tmp_path / "out") == ["a/x.nc.nc", "b/deep/x.nc.nc", "b/x.nc.nc"]


def planned(inputs, out, **options) -> dict[str, str]:
    """Outputs of inputs, both as paths from here."""
    plan = plan_jobs(inputs, out, **options)
    return {os.path.relpath(job.source): os.path.relpath(job.output, out) for job in plan.jobs}


@pytest.fixture
def tree(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    for name in ("d/a/x.uf", "d/a/x.dx", "d/b/x.uf", "d/b/.hidden.uf", "d/out/x.uf.nc", "d/out/x.uf",
                 "d/[1].uf"):
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("radar")
    return tmp_path


@pytest.mark.parametrize("inputs, options, expected", [
    (["d"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/a/x.dx": "a/x.dx.nc", "d/b/x.uf": "b/x.uf.nc",
                 "d/[1].uf": "[1].uf.nc"}),
    (["d/a"], {"pattern": "*.dx"}, {"d/a/x.dx": "x.dx.nc"}),
    (["d/a"], {"base": "."}, {"d/a/x.uf": "d/a/x.uf.nc", "d/a/x.dx": "d/a/x.dx.nc"}),
    (["d/a/x.uf", "d/b/x.uf"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/a/x.uf", "d/a/x.uf", "./d/a"], {}, {"d/a/x.uf": "x.uf.nc", "d/a/x.dx": "x.dx.nc"}),
    (["d/*/x.uf"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/**/*.dx"], {}, {"d/a/x.dx": "a/x.dx.nc"}),
    (["d/[ab]"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/a/x.dx": "a/x.dx.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/[1].uf"], {}, {"d/[1].uf": "[1].uf.nc"}),
    (["d/out/*"], {}, {"d/out/x.uf": "x.uf.nc"}),
    (["d/b/.hidden.uf"], {}, {"d/b/.hidden.uf": ".hidden.uf.nc"}),
])
def test_rule_of_names(tree, inputs, options, expected):
    assert planned(inputs, "d/out", **options) == expected


@pytest.mark.parametrize("inputs, options, error", [
    ([], {}, ValueError), (["d/out"], {}, ValueError), (["d"], {"base": "d/a"}, ValueError),
    (["d/c.uf"], {}, FileNotFoundError), (["d/*.c"], {}, FileNotFoundError),
])
def test_inputs_that_make_no_sense(tree, inputs, options, error):
    with pytest.raises(error):
        plan_jobs(inputs, "d/out", **options)


def test_links_are_followed_but_not_in_circles(tree):
    os.symlink("../b", "d/a/link")
    os.symlink("..", "d/b/circle")
    os.symlink("nowhere", "d/a/dangling")
    os.mkfifo("d/a/pipe")
    found = planned(["d/a"], "out")
    assert found.pop("d/a/link/x.uf") == "link/x.uf.nc"
    assert "d/a/x.uf" in found and not any("circle/b/circle" in path for path in found)
    assert planned(["d/a/**/*.uf"], "out").keys() >= {"d/a/x.uf", "d/a/link/x.uf"}
    plan = plan_jobs("d/a", "out")
    assert {Path(path).name: reason for path, reason in plan.failures.items()} == {
        "dangling": "No such file or directory", "pipe": "not a regular file"}


# What is written


def test_output_holds_the_classes_and_where_they_are_from(tmp_path):
    source = make_scan(tmp_path / "in/scan.nc", seed=3)
    summary = serial(source, tmp_path / "out", min_snr=12.0, inputs=["dbzh_texture", "vrad"])
    assert (summary.done, summary.gates) == (1, 1500)
    path = tmp_path / "out/scan.nc.nc"
    result = xr.open_dataset(path, group="sweep_0", mask_and_scale=False)
    expected = sweeps.classify(xr.load_dataset(source), min_snr=12.0, inputs=["dbzh_texture", "vrad"])
    np.testing.assert_array_equal(result.CLASS, expected.CLASS)
    assert [name for name, variable in result.data_vars.items() if variable.ndim > 1] == ["CLASS"]
    assert result.CLASS.attrs["_FillValue"] == 255
    assert result.CLASS.attrs["flag_meanings"] == expected.CLASS.attrs["flag_meanings"]
    assert result.CLASS.encoding["zlib"]
    xr.testing.assert_equal(xr.load_dataset(path, group="sweep_0").coords.to_dataset(),
                            xr.load_dataset(source).coords.to_dataset())
    root = xr.open_dataset(path)
    assert root.sweep_group_name.values.tolist() == ["sweep_0"]
    assert root.attrs["source_file"] == str(source)
    assert "scan.nc" in root.attrs["history"] and '"min_snr": 12.0' in root.attrs["settings"]


@pytest.mark.parametrize("process", [False, True])
def test_fields_are_kept_on_request(tmp_path, process):
    source = make_scan(tmp_path / "in/scan.nc")
    serial(source, tmp_path / "out", with_fields=True, process=process)
    result = xr.load_dataset(tmp_path / "out/scan.nc.nc", group="sweep_0")
    before = xr.load_dataset(source)
    assert {"DBZH", "ZDR", "WRADH", "TRUTH", "CLASS"} <= set(result.data_vars)
    xr.testing.assert_equal(result.TRUTH, before.TRUTH)
    if not process:
        xr.testing.assert_equal(result.DBZH, before.DBZH)


def test_the_chain_with_its_settings(tmp_path):
    source = make_scan(tmp_path / "in/scan.nc")
    config = tmp_path / "chain.cfg"
    config.write_text("ATTENUATION_ALG 4\n")
    serial(source, tmp_path / "out", process=True, config=config)
    result = xr.load_dataset(tmp_path / "out/scan.nc.nc", group="sweep_0")
    expected = sweeps.process(xr.load_dataset(source), {"ATTENUATION_ALG": 4})
    xr.testing.assert_equal(result.RATE, expected.RATE)
    assert set(result.data_vars) == set(expected.data_vars)
    config.write_text("ATTENUATION_ALG 1\n")
    assert serial(source, tmp_path / "out", process=True, config=config).done == 1


def test_volumes_stay_together(tmp_path):
    volume = [cc.synthetic_scan(seed, nrays=30, ngates=40 + 5 * seed) for seed in range(3)]
    untouched = [sweep.copy(deep=True) for sweep in volume]
    write_sweeps(str(tmp_path / "volume.nc"), volume, {"site_name": "Hill", "nothing": None})
    for sweep, before in zip(volume, untouched):
        xr.testing.assert_identical(sweep, before)
        assert sweep.DBZH.encoding == before.DBZH.encoding
    again = read_netcdf(str(tmp_path / "volume.nc"))
    assert [sweep.sizes["range"] for sweep in again] == [40, 45, 50]
    xr.testing.assert_equal(again[2].DBZH, volume[2].DBZH)
    assert serial(tmp_path / "volume.nc", tmp_path / "out").gates == 30 * (40 + 45 + 50)
    for number, sweep in enumerate(volume):
        result = xr.open_dataset(tmp_path / "out/volume.nc.nc", group=f"sweep_{number}",
                                 mask_and_scale=False)
        np.testing.assert_array_equal(result.CLASS, sweeps.classify(sweep).CLASS)


def test_rays_counted_by_time(tmp_path):
    scan = cc.synthetic_scan(1, nrays=30, ngates=50)
    by_time = scan.assign_coords(time=scan.time + np.arange(30) * np.timedelta64(1, "s")).swap_dims(
        {"azimuth": "time"})
    by_time.to_netcdf(tmp_path / "scan.nc")
    [sweep] = read_netcdf(str(tmp_path / "scan.nc"))
    xr.testing.assert_equal(sweep.ZDR.drop_vars("time"), scan.ZDR.drop_vars("time"))


# Going on, and making again


def test_only_what_is_not_current_is_made(tmp_path):
    names = make_archive(tmp_path / "in", 5)
    out = tmp_path / "out"
    assert serial(tmp_path / "in", out).done == 5
    before = {name: (out / f"{name}.nc").stat().st_mtime_ns for name in names}
    (out / "scan000.nc.nc").unlink()
    (out / "scan001.nc.nc").write_bytes((out / "scan001.nc.nc").read_bytes()[:3000])  # not by this program
    os.utime(out / "scan002.nc.nc", (1, 1))  # older than its input
    make_scan(tmp_path / "in/scan003.nc", seed=77)
    summary = serial(tmp_path / "in", out)
    assert (summary.done, summary.skipped, summary.failed) == (4, 1, 0)
    assert (out / "scan004.nc.nc").stat().st_mtime_ns == before["scan004.nc"]
    assert serial(tmp_path / "in", out).skipped == 5
    assert serial(tmp_path / "in", out, min_snr=20.0).done == 5
    assert serial(tmp_path / "in", out, min_snr=20.0, overwrite=True).done == 5


def test_an_input_newer_than_the_clock_is_not_made_for_ever(tmp_path):
    source = make_scan(tmp_path / "in/scan.nc")
    ahead = time.time() + 3600
    os.utime(source, (ahead, ahead))
    assert serial(source, tmp_path / "out").done == 1
    assert serial(source, tmp_path / "out").skipped == 1


def test_the_result_of_another_input_is_not_replaced(tmp_path):
    first, second = make_scan(tmp_path / "a/scan.nc"), make_scan(tmp_path / "b/scan.nc", seed=2)
    serial(first, tmp_path / "out")
    before = content(tmp_path / "out/scan.nc.nc")
    assert serial(second, tmp_path / "out").failed == 1
    assert "another input" in failures(tmp_path / "out")["scan.nc"]
    assert content(tmp_path / "out/scan.nc.nc") == before


def test_what_a_killed_worker_left_is_removed(tmp_path):
    make_archive(tmp_path / "in", 1)
    (tmp_path / "out").mkdir()
    (tmp_path / "out/.scan000.nc.nc.0123456789abcdef.part").write_text("half")
    (tmp_path / "out/.mine.part").write_text("of somebody else")
    serial(tmp_path / "in", tmp_path / "out")
    assert names_in(tmp_path / "out") == [".mine.part", "scan000.nc.nc"]


# Failures


def test_bad_files_are_listed_and_do_not_stop_the_run(tmp_path):
    names = make_archive(tmp_path / "in", 3)
    bad = tmp_path / "in" / "scan001.nc"
    whole = bad.read_bytes()
    bad.write_bytes(whole[:5000])
    (tmp_path / "in/empty").touch()
    (tmp_path / "in/text.uf").write_text("no radar data " * 100)
    xr.Dataset({"a": ("x", [1.0])}).to_netcdf(tmp_path / "in/other.nc")
    out = tmp_path / "out"
    summary = serial(tmp_path / "in", out)
    assert (summary.done, summary.failed) == (2, 4)
    found = failures(out)
    assert set(found) == {"empty", "other.nc", "scan001.nc", "text.uf"}
    assert "no sweep" in found["other.nc"] and all(found.values())
    assert names_in(out) == ["failures.csv", "scan000.nc.nc", "scan002.nc.nc"]
    bad.write_bytes(whole)
    summary = serial([tmp_path / "in" / name for name in names], out)
    assert (summary.done, summary.skipped) == (1, 2)
    assert set(failures(out)) == {"empty", "other.nc", "text.uf"}  # not asked for again, not mended


def test_without_failures_there_is_no_table(tmp_path):
    make_archive(tmp_path / "in", 1)
    (tmp_path / "in/empty").touch()
    assert serial(tmp_path / "in", tmp_path / "out").failed == 1
    (tmp_path / "in/empty").unlink()
    make_scan(tmp_path / "in/empty")
    assert serial(tmp_path / "in", tmp_path / "out").failed == 0
    assert "failures.csv" not in names_in(tmp_path / "out")


def test_names_that_are_no_text(tmp_path):
    source = os.fsencode(tmp_path / "in") + b"/caf\xe9.uf"
    os.makedirs(tmp_path / "in")
    with open(source, "w") as file:
        file.write("no radar data")
    for _ in range(2):
        assert serial(tmp_path / "in", tmp_path / "out").failed == 1
    assert source in (tmp_path / "out/failures.csv").read_bytes()


@pytest.mark.parametrize("options, error", [
    ({"workers": -1}, ValueError), ({"timeout": 0}, ValueError), ({"layout": 1}, ValueError),
    ({"config": "x"}, ValueError), ({"inputs": "velocity"}, ValueError), ({"no_such": 1}, TypeError),
    ({"membership": "/nowhere"}, FileNotFoundError), ({"fields": {"no_such": "DZ"}}, ValueError),
    ({"texture_window": (4, 3)}, ValueError), ({"scheduler": "host"}, ValueError),
])
def test_calls_that_make_no_sense_touch_nothing(tmp_path, options, error):
    make_archive(tmp_path / "in", 1)
    with pytest.raises(error):
        classify_archive(tmp_path / "in", tmp_path / "out", **{"workers": 0} | options)
    assert not (tmp_path / "out").exists()


# Dask


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
    assert run.returncode == 130 and "goes on" in errors and "Traceback" not in errors
    made = [name for name in names_in(out) if name.endswith(".nc")]
    assert set(names_in(out)) <= {*results, "failures.csv"} and 5 <= len(made) < len(results)
    again = subprocess.run(command, capture_output=True, text=True, timeout=120)
    assert f"{len(made)} skipped" in again.stdout
    assert_all_there(out, results)


def test_only_the_file_that_kills_its_workers_fails(tmp_path, monkeypatch):
    from clutterclassifier import _archive_dask
    from clutterclassifier._archive_plan import Job
    from clutterclassifier._archive_worker import Outcome

    def work(job: Job) -> Outcome:
        if job.source == "deadly":
            os._exit(1)
        if job.source == "unlucky" and not os.listdir(job.output):  # blamed for others' deaths
            open(f"{job.output}/{os.getpid()}", "w").close()
            os._exit(1)
        return Outcome(job.source, gates=1)

    names = [f"good{i}" for i in range(6)]
    jobs = [Job(name, str(tmp_path)) for name in [*names[:3], "deadly", "unlucky", *names[3:]]]
    monkeypatch.setattr(_archive_dask, "_LOCAL_FAILURES", 0)
    with _archive_dask.local_client(2) as client:
        outcomes = list(_archive_dask.run_jobs(client, work, jobs))
    reasons = {outcome.source: outcome.reason for outcome in outcomes}
    assert len(outcomes) == 8 and "died" in reasons.pop("deadly")
    assert reasons == dict.fromkeys([*names, "unlucky"], "")


def test_no_more_files_are_under_way_than_needed():
    from clutterclassifier import _archive_dask
    from clutterclassifier._archive_plan import Job
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
        for outcome in _archive_dask.run_jobs(client, lambda job: job, jobs):
            under_way.remove(outcome.source)
            done += 1
    assert done == 100


def test_a_lost_scheduler_ends_the_run(cluster):
    from clutterclassifier._archive_dask import remote_client, run_jobs
    from clutterclassifier._archive_plan import Job
    from clutterclassifier._archive_run import LostScheduler

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
        with _archive_dask.remote_client(address, timeout=1):
            pass


# A process for the files of a worker


@pytest.fixture
def apart(tmp_path):
    """Runs a file in a process of its own."""
    from clutterclassifier._archive_child import run_apart
    from clutterclassifier._archive_plan import Job
    from clutterclassifier._archive_worker import Settings

    def run(source: Path, seconds: float | None = None):
        job = Job(str(source), str(tmp_path / "out" / f"{source.name}.nc"))
        return run_apart(job, Settings(), "", seconds)

    os.mkfifo(tmp_path / "endless")
    return run


def test_a_file_that_never_ends_is_given_up(apart, tmp_path):
    assert apart(tmp_path / "endless", 0.2).reason == "not done after 0.2 seconds"
    assert apart(make_scan(tmp_path / "scan.nc")).gates == 1500


def test_a_file_that_kills_its_process_is_told(apart, tmp_path):
    import threading

    assert apart(make_scan(tmp_path / "scan.nc")).gates == 1500
    [reader] = [pid for pid in children(os.getpid())
                if "_archive_child" in Path(f"/proc/{pid}/cmdline").read_text()]

    def kill_at_work() -> None:
        with open(tmp_path / "endless", "w"):  # waits for the process to read
            os.kill(reader, signal.SIGSEGV)

    opened = threading.Thread(target=kill_at_work)
    opened.start()
    assert apart(tmp_path / "endless").reason == "its process died of SIGSEGV"
    opened.join()
    assert apart(tmp_path / "scan.nc").gates == 1500


def test_no_process_outlives_its_worker(apart, tmp_path):
    text = ("from clutterclassifier._archive_child import run_apart as run, Job, Settings\n"
            f"run(Job({str(tmp_path / 'endless')!r}, ''), Settings(), '')")
    worker = subprocess.Popen([sys.executable, "-c", text])
    opened = open(tmp_path / "endless", "w")  # waits for the process to read: it is at work then
    [reader] = children(worker.pid)
    worker.kill()
    worker.wait()
    wait_until(lambda: not is_running(reader))
    opened.close()


# Progress


class Terminal(io.StringIO):
    def isatty(self) -> bool:
        return True


def shown(stream: io.StringIO, failed: int, notes: int = 0, wanted: bool = True, step: float = 0.1) -> str:
    """What is shown of 150 files of 1200, one each `step` seconds, some of which fail."""
    now = [0.0]
    progress = Progress(1200, stream, wanted=wanted, clock=lambda: now[0])
    for i in range(150):
        now[0] += step
        progress.advance(failed=i < failed)
        if i < notes:
            progress.note(f"note {i}")
    now[0] += 0.5
    progress.refresh()
    return stream.getvalue()


def test_bar_on_a_terminal(monkeypatch):
    monkeypatch.setenv("COLUMNS", "100")
    last = shown(Terminal(), failed=2).split("\r\033[K")[-1]
    assert last == f"[{'#' * 3:24}] 150 of 1200 files, 9.7 a second, 1:48 left, 2 failed"
    monkeypatch.setenv("COLUMNS", "30")
    assert all(len(line) < 30 for line in shown(Terminal(), failed=2).split("\r\033[K"))


def test_lines_elsewhere():
    assert shown(io.StringIO(), failed=0) == ""  # 30 seconds are not over yet
    lines = shown(io.StringIO(), failed=0, step=0.375).splitlines()
    assert lines == ["80 of 1200 files, 2.7 a second, 7:00 left"]
    text = shown(io.StringIO(), failed=0, notes=100)
    assert text.splitlines()[0] == "note 0" and text.splitlines()[-1] == "more such lines are not shown"
    assert len(text.splitlines()) == 20
    assert shown(Terminal(), failed=3, notes=3, wanted=False) == ""


# The command


def test_exit_codes(tmp_path, capsys):
    from clutterclassifier._archive_command import main

    make_archive(tmp_path / "in", 2)
    call = [str(tmp_path / "in"), "--out", str(tmp_path / "out"), "--workers", "0"]
    assert main([*call, "--inputs", "dbzh_texture,zdr_texture", "--texture-window", "7x3"]) == 0
    assert "2 done" in capsys.readouterr().out
    (tmp_path / "in/bad.uf").write_text("no radar data")
    assert main(call) == 1
    output = capsys.readouterr()
    assert "2 done" in output.out and "bad.uf" in output.err and "failures.csv" in output.err
    assert main([*call, "--quiet"]) == 1
    output = capsys.readouterr()
    assert output.out == "" and len(output.err.splitlines()) == 1
    for wrong in (["--inputs", "nothing"], ["--base", str(tmp_path / "elsewhere")], ["--min-snr", "high"],
                  ["--config", "none"], ["--out", str(tmp_path / "in/bad.uf")], ["--fields", "dbzh"], ["--membership", "/nowhere"]):
        with pytest.raises(SystemExit) if wrong[1] in ("high", "dbzh") else open(os.devnull) as caught:
            assert main([*call, *wrong]) == 2
        assert getattr(getattr(caught, "value", None), "code", 2) == 2


def test_a_batch_system_ends_a_run_as_a_user_does(tmp_path, capsys, monkeypatch):
    from clutterclassifier import _archive_command

    make_archive(tmp_path / "in", 1)
    before = signal.getsignal(signal.SIGTERM)
    monkeypatch.setattr(_archive_command.Run, "perform", lambda run: os.kill(os.getpid(), signal.SIGTERM))
    try:
        assert _archive_command.main([str(tmp_path / "in"), "--out", str(tmp_path / "out")]) == 130
    finally:
        signal.signal(signal.SIGTERM, before)
    assert "goes on from here" in capsys.readouterr().err


def test_two_runs_do_not_share_a_folder(tmp_path, capsys):
    from clutterclassifier._archive_command import main
    from clutterclassifier._archive_files import alone_in

    make_archive(tmp_path / "in", 1)
    (tmp_path / "out").mkdir()
    with alone_in(str(tmp_path / "out"), ".archive.lock"):
        assert main([str(tmp_path / "in"), "--out", str(tmp_path / "out"), "--workers", "0"]) == 2
    assert "another run" in capsys.readouterr().err
    assert names_in(tmp_path / "out") == []


def test_the_local_cluster_is_not_reachable_from_others() -> None:
    with _archive_dask.local_client(1):
        family = [psutil.Process(), *psutil.Process().children(recursive=True)]
        listening = [one.laddr.ip for process in family for one in process.connections("tcp")
                     if one.status == psutil.CONN_LISTEN]
    assert len(listening) > 2 and set(listening) == {"127.0.0.1"}
