"""Archives: what is written, which files are done, and what happens when something goes wrong."""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import time

import clutterclassifier as cc
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import sweeps
from clutterclassifier._arrays import classify as packaged
from clutterclassifier.archive import _command
from clutterclassifier.archive._netcdf import read_netcdf, write_sweeps
from clutterclassifier.archive import classify_archive
from archives import content, failures, make_archive, make_scan, names_in, serial


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


def test_each_gate_can_be_decided_alone_and_how_surely(tmp_path):
    scan = sweeps.classify(xr.load_dataset(make_scan(tmp_path / "in/scan.nc")), neighbourhood=None, certainty=True)
    assert serial(tmp_path / "in", tmp_path / "out", neighbourhood=None, certainty=True).done == 1
    assert _command.main([str(tmp_path / "in"), "--out", str(tmp_path / "other"), "--workers", "0", "--certainty",
                          "--neighbourhood", "off", "--quiet"]) == 0
    for folder in ("out", "other"):
        with xr.open_dataset(tmp_path / folder / "scan.nc.nc", group="sweep_0", mask_and_scale=False) as made:
            for name in ("CLASS", "PROBABILITY", "MARGIN"):
                np.testing.assert_array_equal(made[name], scan[name])
    assert serial(tmp_path / "in", tmp_path / "out", certainty=True).done == 1


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


@pytest.mark.parametrize("name", ["scan.h5", "scan.nc", "scan.uf"])
def test_formats_of_the_readers(name, tmp_path):
    (tmp_path / "in").mkdir()
    cc.write([cc.synthetic_scan(seed, 30, 50) for seed in (1, 2)], tmp_path / "in" / name)
    assert serial(tmp_path / "in", tmp_path / "out").done == 1
    for number, sweep in enumerate(cc.read(tmp_path / "in" / name)):
        with xr.open_dataset(tmp_path / "out" / f"{name}.nc", group=f"sweep_{number}", mask_and_scale=False) as made:
            np.testing.assert_array_equal(made.CLASS, sweeps.classify(sweep).CLASS)


@pytest.mark.parametrize("mode, angle", [("azimuth_surveillance", "azimuth"), ("rhi", "elevation")])
def test_rays_counted_by_time(tmp_path, mode, angle):
    scan = cc.synthetic_scan(1, nrays=30, ngates=50)
    by_time = scan.assign_coords(time=scan.time + np.arange(30) * np.timedelta64(1, "s")).swap_dims(
        {"azimuth": "time"}).assign(sweep_mode=mode)
    by_time.to_netcdf(tmp_path / "scan.nc")
    [sweep] = read_netcdf(str(tmp_path / "scan.nc"))
    assert sweep.ZDR.dims == (angle, "range")
    np.testing.assert_array_equal(sweep.ZDR.values, scan.ZDR.values)
    np.testing.assert_array_equal(sweep[angle].values, scan[angle].values)


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
    (tmp_path / "out/.clutterclassifier-0123456789abcdef").write_text("half")
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


@pytest.mark.parametrize("name", [b"caf\xe9.nc", b"n" * 249 + b".nc"], ids=["no UTF-8", "252 bytes"])
def test_names_that_are_odd(name, tmp_path):
    make_scan(tmp_path / "in/folder/scan.nc")
    folder = os.fsencode(tmp_path / "in") + b"/caf\xe9"
    os.rename(tmp_path / "in/folder", folder)
    source = folder + b"/" + name
    os.rename(folder + b"/scan.nc", source)
    for done in (1, 0):
        summary = serial(tmp_path / "in", tmp_path / "out")
        assert (summary.done, summary.skipped, failures(tmp_path / "out")) == (done, 1 - done, {})
    with open(source, "w") as file:
        file.write("no radar data")
    assert serial(tmp_path / "in", tmp_path / "out").failed == 1
    assert source in (tmp_path / "out/failures.csv").read_bytes()


def test_an_output_keeps_its_mode_and_no_link_is_written_through(tmp_path):
    make_archive(tmp_path / "in", 1)
    out, victim = tmp_path / "out", tmp_path / "victim"
    out.mkdir()
    victim.write_text("mine")
    for name in ("scan000.nc.nc", "failures.csv"):
        (out / name).symlink_to(victim)
    (tmp_path / "in/empty").touch()
    with pytest.raises(OSError):
        serial(tmp_path / "in", out)
    (out / "failures.csv").unlink()
    (tmp_path / "in/empty").unlink()
    serial(tmp_path / "in", out)
    (out / "scan000.nc.nc").chmod(0o600)
    serial(tmp_path / "in", out, overwrite=True)
    assert (out / "scan000.nc.nc").stat().st_mode & 0o777 == 0o600
    assert victim.read_text() == "mine"


@pytest.mark.parametrize("named", ["by the settings", "by an argument", "by the environment", "as the package's"])
def test_other_membership_functions_make_outputs_again(named, tmp_path, monkeypatch):
    make_archive(tmp_path / "in", 1)
    directory = tmp_path / "functions"
    shutil.copytree(cc.membership_directory(), directory)
    options = {"by the settings": {"process": True, "config": {"WHAT2DO": 1, "CLUTTER_MFS": f"{directory}/"}},
               "by an argument": {"membership": directory}}.get(named, {})
    if named == "by the environment":
        monkeypatch.setenv("CLUTTERCLASSIFIER_MEMBERSHIP", str(directory))
    elif named == "as the package's":
        monkeypatch.setattr(packaged, "_PACKAGED", str(directory))

    def run():
        summary = serial(tmp_path / "in", tmp_path / "out", **options)
        return summary.done, summary.skipped, failures(tmp_path / "out")

    assert [run(), run()] == [(1, 0, {}), (0, 1, {})]
    with open(directory / "cal_mf_sZhh_clutter.dat", "a") as table:
        table.write("\n")
    assert run() == (1, 0, {})


def test_another_version_makes_outputs_again(tmp_path, monkeypatch):
    make_archive(tmp_path / "in", 1)
    serial(tmp_path / "in", tmp_path / "out")
    monkeypatch.setattr(cc, "__version__", "0.0.0")
    assert serial(tmp_path / "in", tmp_path / "out").done == 1


def test_a_script_without_a_guard_fails(tmp_path):
    make_archive(tmp_path / "in", 1)
    script = tmp_path / "script.py"
    script.write_text("from clutterclassifier.archive import classify_archive\n"
                      "classify_archive('in', 'out', workers=1)\n")
    ended = subprocess.run([sys.executable, script], cwd=tmp_path, capture_output=True, text=True, timeout=60)
    assert ended.returncode == 1 and "__main__" in ended.stderr.splitlines()[-1]


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
