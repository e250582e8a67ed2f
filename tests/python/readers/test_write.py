"""Files that the package writes: what they hold, and what they cannot hold."""

from __future__ import annotations

import os

import clutterclassifier as cc
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import sweeps
from conftest import make_sweep


def volume() -> list[xr.Dataset]:
    """Two classified sweeps, with gates that were not measured."""
    made = [make_sweep(seed=seed).assign(sweep_fixed_angle=float(seed)) for seed in (1, 2)]
    for ds in made:
        ds.DBZH[3, :5] = np.nan
        ds["elevation"] = ds.elevation.copy(data=np.full(24, float(ds.sweep_fixed_angle)))
        for field in ds.data_vars.values():
            field.attrs.pop("raw_name", None)
    return [sweeps.classify(ds, min_snr=3.0) for ds in made]


def same_gates(read: xr.Dataset, ds: xr.Dataset, step: float) -> None:
    np.testing.assert_array_equal(read.CLASS, ds.CLASS)
    for name in ("DBZH", "ZDR", "PHIDP", "RHOHV", "VRADH"):
        np.testing.assert_allclose(read[name], ds[name], atol=step)
    for name in ("azimuth", "elevation", "range"):
        np.testing.assert_allclose(read[name], ds[name], atol=0.01)
    for name in ("latitude", "longitude", "altitude", "sweep_fixed_angle"):
        np.testing.assert_allclose(read[name], ds[name], atol=0.01)
    assert read.time[0] == ds.time[0]


@pytest.mark.parametrize("name", ["volume.UF", "volume.h5", "volume.nc", "volume.nc4"])
def test_one_file_holds_the_volume(name, tmp_path):
    path = tmp_path / name
    assert cc.write(volume(), path) == [str(path)]
    for read, ds in zip(cc.read(path), volume(), strict=True):
        same_gates(read, ds, 0.0101)


@pytest.mark.parametrize("ending", [".h5", ".nc", ".nc4"])
def test_no_echo_and_the_times_of_rays_are_kept(ending, tmp_path):
    made = volume()
    for ds in made:
        ds["DBZH"] = ds.DBZH.where(ds.DBZH > 0, -32.5).where(ds.range > 2000)
        ds.DBZH.attrs["_Undetect"] = -32.5
        ds["time"] = ds.time.copy(data=ds.time.values + np.arange(ds.time.size) * np.timedelta64(1500000, "us"))
    [path] = cc.write(made, tmp_path / f"volume{ending}")
    for read, ds in zip(cc.read(path), made, strict=True):
        np.testing.assert_array_equal(read.DBZH, ds.DBZH.astype(np.float32))
        assert read.DBZH.attrs["_Undetect"] == -32.5
        np.testing.assert_array_equal(read.time, ds.time)
    with pytest.warns(UserWarning, match="no mark of no echo"):
        [packed] = cc.write(made, tmp_path / "volume.uf.gz")
    assert np.isnan(cc.read(packed)[0].DBZH.values[made[0].DBZH.values == -32.5]).all()


def test_field_records_hold_a_sweep_each(tmp_path):
    written = cc.write((ds.chunk() for ds in volume()), tmp_path / "scan.plv")
    assert [os.path.basename(name) for name in written] == ["scan_sweep1.plv", "scan_sweep2.plv"]
    for name, ds in zip(written, volume(), strict=True):
        [read] = cc.read(name)
        np.testing.assert_array_equal(read.CLASS, ds.CLASS)
        np.testing.assert_array_equal(read.DBZH, ds.DBZH.astype(np.float32))


def test_tables_hold_the_classes(tmp_path):
    [ds, _] = volume()
    os.makedirs(os.fsencode(tmp_path) + b"/caf\xe9")
    [name] = cc.write(ds, os.fsencode(tmp_path) + b"/caf\xe9/scan.csv")
    with open(name) as table:
        rows = [line.replace(",", " ").split() for line in table if line.strip()]
    codes = np.array([row[-24:] for row in rows[-60:]], float)
    classes = np.where(ds.CLASS == cc.MISSING, np.nan, ds.CLASS.values.astype(float)).T
    known = ~np.isnan(classes)
    np.testing.assert_array_equal(codes[known], classes[known])


def test_a_range_height_scan_keeps_its_elevations_where_there_is_room(tmp_path):
    ds = sweeps.classify(make_sweep(rays="elevation"), min_snr=3.0)
    cc.write(ds, tmp_path / "scan.uf")
    [read] = cc.read(tmp_path / "scan.uf")
    np.testing.assert_allclose(read.elevation, ds.elevation, atol=0.01)
    with pytest.warns(UserWarning, match="elevations of a range-height scan"):
        cc.write(ds, tmp_path / "scan.plv")


@pytest.mark.parametrize("change, name, error, message", [
    (lambda ds: [], "a.uf", ValueError, "none to write"),
    (lambda ds: ds, "a.pol", ValueError, ".pol file cannot be written"),
    (lambda ds: ds, "no/a.uf", FileNotFoundError, "No such directory"),
    (lambda ds: ds.drop_vars("CLASS"), "a.csv", ValueError, "a.csv: sweep 1 has no classes"),
    (lambda ds: [ds, ds[["sweep_mode"]]], "a.uf", ValueError, r"sweeps\[1\] has no field"),
    (lambda ds: ds.expand_dims("scan"), "a.uf", ValueError, r"sweeps\[0\]: \w+ has the dimensions"),
    (lambda ds: ds.drop_vars("azimuth").drop_vars("sweep_fixed_angle"), "a.uf", ValueError, "no azimuth"),
    (lambda ds: ds.assign({f"F{k}": ds.DBZH for k in range(20)}), "a.uf", ValueError, "holds 20 fields"),
])
def test_what_cannot_be_written_is_named_and_leaves_nothing(change, name, error, message, tmp_path):
    with pytest.raises(error, match=message):
        cc.write(change(volume()[0]), tmp_path / name)
    assert list(tmp_path.iterdir()) == []
