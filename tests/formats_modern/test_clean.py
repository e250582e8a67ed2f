"""Fields without clutter and noise: only their gates change, in the way that each format marks no echo."""

import os
import subprocess

import h5py
import netCDF4
import numpy as np
import pytest
from conftest import dump
from test_cfradial import variable
from test_odim import make as make_odim
from test_writers import contents

RAYS, GATES = 40, 60
RANDOM = np.random.default_rng(7)
ROUGH = RANDOM.uniform(size=(RAYS, GATES))
CLUTTER = np.zeros((RAYS, GATES), bool)
CLUTTER[:, 30:] = True
MISSING = np.zeros((RAYS, GATES), bool)
MISSING[3, 5:9] = True
SILENT = np.zeros((RAYS, GATES), bool)
SILENT[20, :] = True
DBZ = np.where(CLUTTER, 20 + 60 * ROUGH, 30 + ROUGH)
RHO = np.where(CLUTTER, 0.2 + 0.5 * ROUGH, 0.99)
VEL = np.where(CLUTTER, 0, 8 + ROUGH)
Z = np.where(MISSING, 255, np.where(SILENT, 0, np.round((DBZ + 32) * 2))).astype("u1")
WHAT = {"quantity": np.bytes_("DBZH"), "gain": 0.5, "offset": -32.0, "nodata": 255.0, "undetect": 0.0}


def program(*arguments, stdin=None, code=0):
    run = subprocess.run([os.environ["PROGRAM"], *map(str, arguments)], capture_output=True, text=True, stdin=stdin,
                         check=False)
    assert run.returncode == code, run.stdout + run.stderr
    return run.stdout + run.stderr


def odim(path):
    """Bytes with both marks, big-endian words without a mark of no echo, floats, and the radar's quality index."""
    packings = {"data1": (Z, WHAT),
                "data2": (np.round(VEL * 100).astype(">i2"), {"quantity": np.bytes_("VRADH"), "gain": 0.01, "offset": 0.0}),
                "data3": (RHO.astype("f4"), {"quantity": np.bytes_("RHOHV"), "gain": 1.0, "offset": 0.0,
                                             "nodata": -1.0, "undetect": -2.0}),
                "data4": (np.full((RAYS, GATES), 9, "u1"), {"quantity": np.bytes_("SQIH"), "gain": 1.0, "offset": 0.0})}
    changes = [("dataset1/where", "nrays", RAYS), ("dataset1/where", "nbins", GATES)]
    changes += [(f"dataset1/{name}/what", *pair) for name, (_, what) in packings.items() for pair in what.items()]
    return make_odim(path, changes, {f"dataset1/{name}/data": values for name, (values, _) in packings.items()})


def cfradial(path, model="NETCDF4", undetect=None, group=None):
    """Packed words, with and without a mark of no echo; release 2 with a group."""
    with netCDF4.Dataset(path, "w", format=model) as file:
        file.Conventions, file.history = "CF/Radial", "made by hand"
        place = file.createGroup(group) if group else file
        for name, size in {"time": RAYS, "range": GATES}.items():
            place.createDimension(name, size)
        variable(place, "time", ("time",), np.arange(RAYS, dtype="f8"), units="seconds since 2011-05-20T10:54:08Z")
        variable(place, "range", ("range",), 250.0 + 500 * np.arange(GATES), units="meters")
        variable(place, "azimuth", ("time",), np.arange(RAYS) * 9.0)
        variable(place, "elevation", ("time",), np.full(RAYS, 0.5))
        words = np.where(MISSING, -99, np.where(SILENT, -98, np.round(DBZ * 100))).astype("i2")
        attributes = {"scale_factor": 0.01, "add_offset": 0.0} | ({} if undetect is None else {"_Undetect": np.int16(undetect)})
        variable(place, "DBZ", ("time", "range"), words, fill=-99, **attributes)
        variable(place, "SNR", ("time", "range"), np.full((RAYS, GATES), 5, "f4"), fill=-99)
    return path


def spoiled(classes, kept=(0,)):
    """Gates without a class (255, or NaN) stay as they are."""
    return ~(np.isin(classes, (*kept, 255)) | np.isnan(np.asarray(classes, float)))


def test_odim_keeps_all_else(tmp_path):
    source, target = odim(tmp_path / "in.h5"), tmp_path / "out.h5"
    program("clean", source, "-o", target)
    with h5py.File(source) as before, h5py.File(target) as after:
        group = after["dataset1"]
        blank = spoiled(group["quality1/data"][...])
        assert blank[SILENT].all() and 0.8 < blank[:, 30:].mean() and blank[:, :28][~(SILENT | MISSING)[:, :28]].mean() < 0.2
        np.testing.assert_array_equal(group["data1/data"][...], np.where(blank & (Z != 255), 0, Z))
        words = before["dataset1/data2/data"][...]
        mark = group["data2/what"].attrs["undetect"]
        assert mark not in words and group["data2/data"].dtype == words.dtype
        np.testing.assert_array_equal(group["data2/data"][...], np.where(blank, mark, words))
        np.testing.assert_array_equal(group["data3/data"][...], np.where(blank, np.float32(-2), RHO.astype("f4")))
        assert after["how"].attrs["history"] == b"clutterclassifier: clean(keep=precipitation)"
        old, new = contents(before), contents(after)
        changed = {key for key in old if old[key] != new[key]}
        assert changed == {f"dataset1/data{number}/data" for number in (1, 2, 3)}
    scan = dump(target)
    np.testing.assert_array_equal(np.isnan(scan.sweeps[0].values["DBZH"]), MISSING)


@pytest.mark.parametrize("options, fields, kept", [
    (["--fields", "vradh"], ["VRADH"], (0,)), (["--keep", "noise"], ["DBZH", "VRADH", "RHOHV"], (0, 3)),
    (["--keep", "noise,clutter", "--fields", "DBZH,SQIH"], ["DBZH", "SQIH"], (0, 3, 5, 6, 7))])
def test_what_is_chosen(tmp_path, options, fields, kept):
    source, target = odim(tmp_path / "in.h5"), tmp_path / "out.h5"
    program("clean", source, "-o", target, *options)
    old, new = dump(source, "--hide-no-echo").sweeps[0].values, dump(target, "--hide-no-echo").sweeps[0].values
    blank = spoiled(new["CLASS"], kept)
    for name, values in old.items():
        np.testing.assert_array_equal(new[name], np.where(blank & (name in fields), np.nan, values))


@pytest.mark.parametrize("model, undetect, group", [
    ("NETCDF4", None, None), ("NETCDF3_CLASSIC", None, None), ("NETCDF3_64BIT_OFFSET", -98, None),
    ("NETCDF4", -98, "sweep_0001"), ("NETCDF4", None, "sweep_1")])
def test_cfradial_keeps_all_else(tmp_path, model, undetect, group):
    source, target = cfradial(tmp_path / "in.nc", model, undetect, group), tmp_path / "out.nc"
    said = program("clean", source, "-o", target)
    assert ("No mark of no echo (_Undetect) in DBZ" in said) == (undetect is None)
    with netCDF4.Dataset(source) as before, netCDF4.Dataset(target) as after:
        assert after.history == "made by hand\nclutterclassifier: clean(keep=precipitation)"
        assert after.data_model == before.data_model
        old, new = (file[group] if group else file for file in (before, after))
        old.set_auto_maskandscale(False)
        new.set_auto_maskandscale(False)
        blank = spoiled(new["CLASS"][...])
        mark = -99 if undetect is None else undetect
        np.testing.assert_array_equal(new["DBZ"][...], np.where(blank & (old["DBZ"][...] != -99), mark, old["DBZ"][...]))
        for name in set(old.variables) - {"DBZ"}:
            np.testing.assert_array_equal(new[name][...], old[name][...])
        assert 0 < blank[:, 30:].mean() and not blank[:, :20][~(SILENT | MISSING)[:, :20]].all()


@pytest.mark.parametrize("ending, form", [(".nc", "CfRadial 1"), (".nc4", "CfRadial 2"), (".uf", "Universal Format"),
                                          (".plv", "field record")])
def test_other_formats(tmp_path, ending, form):
    program("clean", odim(tmp_path / "in.h5"), "-o", tmp_path / "same.h5")
    said = program("clean", tmp_path / "in.h5", "-o", tmp_path / f"out{ending}")
    assert ("no mark of no echo" in said) == (ending == ".uf")
    same, other = dump(tmp_path / "same.h5").sweeps[0], dump(tmp_path / f"out{ending}")
    assert other.format == form
    sweep = other.sweeps[0]
    z = sweep.values["DZ" if ending == ".uf" else "DBZH"]
    blank = spoiled(same.values["CLASS"])
    kept = ~blank & ~MISSING
    np.testing.assert_array_equal(z[kept], same.values["DBZH"][kept])
    if ending == ".uf":
        assert np.isnan(z[~kept]).all()
    else:
        assert (z[blank & ~MISSING] == np.float32(sweep.no_echo["DBZH"])).all() and np.isnan(z[MISSING]).all()


def test_words_of_universal_format_stay(tmp_path):
    program("demo", "--scan", tmp_path / "in.uf", "-o", tmp_path / "demo.png")
    program("clean", tmp_path / "in.uf", "-o", tmp_path / "out.uf", "--picture", tmp_path / "both.png")
    assert (tmp_path / "both.png").read_bytes()[:4] == b"\x89PNG"
    old, new = dump(tmp_path / "in.uf").sweeps[0].values, dump(tmp_path / "out.uf").sweeps[0].values
    blank = spoiled(new.pop("CC"))
    assert 0.1 < blank.mean() < 0.9 and old.keys() == new.keys()
    for name, values in old.items():
        np.testing.assert_array_equal(new[name], np.where(blank, np.nan, values))


def test_standard_input_is_copied_too(tmp_path):
    with open(odim(tmp_path / "in.h5"), "rb") as source:
        program("clean", "-", "-o", tmp_path / "out.h5", stdin=source)
    with h5py.File(tmp_path / "out.h5") as file:
        assert file["dataset1/data1/data"].dtype == "u1"


def test_outputs_of_a_directory_have_the_format_of_their_inputs(tmp_path):
    odim(tmp_path / "a.hdf")
    cfradial(tmp_path / "b.nc")
    cfradial(tmp_path / "c.nc", group="sweep_1")
    subprocess.run(["gzip", tmp_path / "b.nc"], check=True)
    program("clean", tmp_path / "a.hdf", tmp_path / "b.nc.gz", tmp_path / "c.nc", "-o", f"{tmp_path}/out/")
    assert [dump(path).format for path in sorted((tmp_path / "out").iterdir())] == ["ODIM_H5", "CfRadial 1", "CfRadial 2"]


def test_codes_of_services(tmp_path):
    source = odim(tmp_path / "in.h5")
    program("classify", source, "-o", tmp_path / "own.h5")
    program("classify", source, "-o", tmp_path / "services.h5", "--codes", "services", "--class-quantity")
    with h5py.File(tmp_path / "own.h5") as own, h5py.File(tmp_path / "services.h5") as file:
        quality = file["dataset1/quality1"]
        table = dict(quality["legend"][...].tolist())
        assert table == {b"precipitation": b"64", b"noise": b"232", b"ground_clutter": b"148", b"sea_clutter": b"152",
                         b"turbine_clutter": b"175"}
        translated = np.vectorize({0: 64, 3: 232, 5: 148, 255: 255}.get)(own["dataset1/quality1/data"][...])
        np.testing.assert_array_equal(quality["data"][...], translated)
        np.testing.assert_array_equal(file["dataset1/data5/data"][...], translated)
        assert file["dataset1/data5/what"].attrs["quantity"] == b"CLASS"
    program("classify", source, "-o", tmp_path / "services.nc", "--codes", "services")
    with netCDF4.Dataset(tmp_path / "services.nc") as file:
        assert list(file["CLASS"].flag_values) == [64, 232, 148, 152, 175]


@pytest.mark.parametrize("arguments, message", [
    (["--keep", "rain"], "no such class: rain"), (["--fields", "XX"], "no field to clean"),
    (["--codes", "services", "-o", "a.uf"], "goes with ODIM_H5 and CfRadial"),
    (["--class-quantity", "-o", "a.nc"], "goes with ODIM_H5"), (["-o", "a.csv"], "cannot be written here"),
    (["--picture", "a.txt"], "picture")])
def test_what_makes_no_sense(tmp_path, arguments, message):
    source = odim(tmp_path / "in.h5")
    output = [] if "-o" in arguments else ["-o", tmp_path / "out.h5"]
    assert message in program("clean", source, *output, *arguments, code=1 if message == "no field to clean" else 2)
    assert not (tmp_path / "out.h5").exists()
