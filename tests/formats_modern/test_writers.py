"""What was read, written in every format and read again: equal arrays and geometry; classes beside the input."""

import os
import subprocess

import h5py
import netCDF4
import numpy as np
import pytest
import xarray as xr
from conftest import dump, real
from test_cfradial import make as make_cfradial
from test_cfradial import variable
from test_nexrad import REF, VEL, message31, moment, volume
from test_odim import make as make_odim

ENDINGS = {".h5": "ODIM_H5", ".nc": "CfRadial 1", ".nc4": "CfRadial 2"}
REAL = ["odim_angelholm_20151018.h5", "odim_captains_flat_20181220.h5", "cfradial_mxpol_20120929_rhi.nc",
        "cfradial_xsapr_ppi.nc", "nexrad_KDMX_20220305.bin", "npol_20110524_2356_rhi.uf", "boxpol_20140810_1820.uf"]


def write(source, mode, target):
    run = subprocess.run([os.environ["DUMP_SCAN"], source, mode, target], capture_output=True, text=True, check=False)
    assert (run.returncode, run.stderr) == (0, "")
    return run.stdout


def made(tmp_path, kind):
    path = tmp_path / "in"
    if kind == "odim":
        make_odim(path, [("dataset1/how", "astart", -60.0), ("how", "NEZ", -42.5)])
    elif kind == "nexrad":
        path.write_bytes(volume([message31(azimuth, [REF, VEL]) for azimuth in [*range(180, 360), *range(180)]] +
                                [message31(azimuth, [VEL], 2) for azimuth in range(0, 360, 2)]))
    elif kind == "one gate":
        one = moment("REF", np.array([66], "u1"), 2, 66)
        path.write_bytes(volume([message31(azimuth, [one]) for azimuth in range(0, 360, 2)]))
    elif kind == "numbered alike":
        make_cfradial(path, change=lambda file: file["sweep_number"].__setitem__(slice(None), 0))
    elif kind == "ragged":
        def change(file):
            variable(file, "ray_n_gates", ("time",), [5, 2, 3, 1, 2, 3])
            variable(file, "ray_start_index", ("time",), [0, 5, 7, 10, 11, 13])
            variable(file, "V", ("n_points",), np.arange(16, dtype="f4"))
        make_cfradial(path, change=change, fields=False)
    else:
        make_cfradial(path)
    return path


def check_same(before, after, ending):
    """Equal sweeps; ODIM_H5 begins full circles at north, counts sweeps from 1, and knows no short rays."""
    for name in ("lat", "lon", "alt", "beam", "time", "constant"):
        assert getattr(after, name) == pytest.approx(getattr(before, name), rel=1e-12), name
    assert after.wavelength == pytest.approx(before.wavelength)
    assert len(after.sweeps) == len(before.sweeps)
    for old, new in zip(before.sweeps, after.sweeps):
        roll = 0
        if ending == ".h5" and not np.allclose(old.azimuth, new.azimuth):
            roll = int(np.argmin(old.azimuth))
        else:
            assert old.number == new.number or ending == ".h5"
        for name in ("azimuth", "elevation", "time"):
            given = getattr(old, name)
            np.testing.assert_allclose(getattr(new, name) if given else [], np.roll(given, -roll), rtol=0, atol=1e-5)
        for name in ("rhi", "fixed", "rays", "gates", "spacing", "first", "nyquist"):
            assert getattr(new, name) == pytest.approx(getattr(old, name), rel=1e-9), name
        if ending != ".h5":
            mode = old.mode or ("rhi" if old.rhi else "azimuth_surveillance")
            lengths = old.ray_gates if set(old.ray_gates) - {old.gates} else []
            assert (mode, lengths) == (new.mode, new.ray_gates)
        for name, values in old.values.items():
            name_in_file = name if name in new.values or ending == ".h5" else f"field_{name}"
            written = new.values[name_in_file]
            silent = new.no_echo[name_in_file]
            expected = np.roll(values, -roll, axis=0)
            if old.no_echo[name] is not None and silent != old.no_echo[name]:
                expected = np.where(expected == np.float32(old.no_echo[name]), np.float32(silent), expected)
            np.testing.assert_array_equal(written, expected)


@pytest.mark.parametrize("ending", ENDINGS)
@pytest.mark.parametrize("kind", ["odim", "nexrad", "one gate", "cfradial", "ragged"])
def test_round_trips(tmp_path, kind, ending):
    source, target = made(tmp_path, kind), tmp_path / f"out{ending}"
    notes = write(source, "--convert", target)
    assert ("different lengths" in notes) == (kind == "ragged" and ending == ".h5")
    after = dump(target)
    assert after.format == ENDINGS[ending]
    check_same(dump(source), after, ending)


@pytest.mark.parametrize("ending", ENDINGS)
@pytest.mark.parametrize("name", REAL)
def test_round_trips_of_real_files(tmp_path, name, ending):
    target = tmp_path / f"out{ending}"
    write(real(name), "--convert", target)
    check_same(dump(real(name)), dump(target), ending)


@pytest.mark.parametrize("ending", ENDINGS)
def test_a_site_outside_the_earth_is_reported(tmp_path, ending):
    make_odim(tmp_path / "in", [("where", "lat", 66645.5)])
    notes = write(tmp_path / "in", "--convert", tmp_path / f"out{ending}")
    assert "outside the Earth's coordinates and is written as it is: 66645.5 N" in notes
    assert dump(tmp_path / f"out{ending}").lat == pytest.approx(66645.5)


def codes_of(sweep):
    codes = np.resize([0, 3, 5], sweep.rays * sweep.gates).astype(float).reshape(sweep.rays, sweep.gates)
    codes[0, 0] = np.nan
    return codes


@pytest.mark.parametrize("ending, kind, model", [
    (".h5", "odim", ""), (".nc", "cfradial", "NETCDF4"), (".nc", "cfradial", "NETCDF3_64BIT_DATA"), (".nc", "ragged", ""),
    (".nc", "numbered alike", ""), (".nc", "cfradial", "NETCDF3_CLASSIC"),
    (".nc4", "group", ""), (".h5", "nexrad", ""), (".nc", "nexrad", ""), (".nc4", "odim", "")])
def test_classes_beside_what_was_there(tmp_path, ending, kind, model):
    if kind == "group":
        source = tmp_path / "in.nc4"
        write(made(tmp_path, "cfradial"), "--convert", source)
    elif model:
        source = make_cfradial(tmp_path / "in", model)
    else:
        source = made(tmp_path, kind)
    target = tmp_path / f"out{ending}"
    write(source, "--classify", target)
    before, after = dump(source), dump(target)
    for old, new in zip(before.sweeps, after.sweeps):
        codes = codes_of(old)
        if old.ray_gates:
            codes[np.arange(old.gates) >= np.array(old.ray_gates)[:, None]] = np.nan
        if ending == ".h5" and old.azimuth != new.azimuth and kind == "nexrad":
            codes = np.roll(codes, -int(np.argmin(old.azimuth)), axis=0)
        np.testing.assert_array_equal(new.values.pop("CLASS"), codes)
        np.testing.assert_array_equal(new.values.pop("PROBABILITY"), codes)
    check_same(before, after, ending)


def contents(group):
    """All attributes and values in an HDF5 file, by path."""
    found = {("/", name): bytes(np.asarray(value)) for name, value in group.attrs.items()}

    def add(path, item):
        found.update({(path, name): np.asarray(value).tobytes() for name, value in item.attrs.items()})
        if isinstance(item, h5py.Dataset):
            found[path] = item[...].tobytes()
    group.visititems(add)
    return found


@pytest.mark.parametrize("pack", ["", "gzip"])
def test_all_else_in_an_odim_file_stays(tmp_path, pack):
    source = make_odim(tmp_path / "in.h5", [("how", "copyright", "ours"), ("dataset1/data1/how", "odd", [1, 2])])
    if pack:
        subprocess.run(["gzip", "-k", source], check=True)
        source = source.with_suffix(".h5.gz")
    write(source, "--classify", tmp_path / "out.h5")
    with h5py.File(tmp_path / "in.h5") as before, h5py.File(tmp_path / "out.h5") as after:
        old, new = contents(before), contents(after)
        assert old.items() <= new.items()
        added = {key if isinstance(key, str) else key[0] for key in new.keys() - old.keys()}
        assert all(path.startswith("dataset1/quality") for path in added)
        quality = after["dataset1/quality1"]
        assert quality["how"].attrs["task"] == b"clutterclassifier.echo.classification"
        assert (b"precipitation", b"0") in quality["legend"][...].tolist()
        assert quality["data"].dtype == np.uint8
        assert after["dataset1/quality2/how"].attrs["task"] == b"clutterclassifier.echo.probability"


MANDATORY = {  # of release 2.2: group, attribute, type
    "/": {"Conventions": "S"},
    "what": {"object": "S", "version": "S", "date": "S", "time": "S", "source": "S"},
    "where": {"lon": "f", "lat": "f", "height": "f"},
    "dataset1/what": {"product": "S", "startdate": "S", "starttime": "S", "enddate": "S", "endtime": "S"},
    "dataset1/where": {"elangle": "f", "nbins": "i", "nrays": "i", "rstart": "f", "rscale": "f", "a1gate": "i"},
    "dataset1/data1/what": {"quantity": "S", "gain": "f", "offset": "f", "nodata": "f", "undetect": "f"},
    "dataset1/quality1/what": {"gain": "f", "offset": "f", "nodata": "f", "undetect": "f"},
    "dataset1/quality1/how": {"task": "S"},
}


def test_mandatory_attributes_of_odim(tmp_path):
    write(made(tmp_path, "nexrad"), "--classify", tmp_path / "out.h5")
    with h5py.File(tmp_path / "out.h5") as file:
        for group, attributes in MANDATORY.items():
            for name, kind in attributes.items():
                assert file[group].attrs.get_id(name).dtype.kind == kind, (group, name)
        where = file["dataset1/where"].attrs
        assert (where["a1gate"], where["nrays"], where["nbins"]) == (180, 360, 5)
        assert file["what"].attrs["source"] == b"NOD:KDMX"


@pytest.mark.parametrize("ending, group", [(".nc", None), (".nc4", "sweep_0001")])
def test_cfradial_opens_in_xarray(tmp_path, ending, group):
    write(made(tmp_path, "cfradial" if group is None else "nexrad"), "--classify", tmp_path / f"out{ending}")
    with xr.open_dataset(tmp_path / f"out{ending}", group=group) as data:
        assert data.time.dtype.kind == "M"
        classes = data.CLASS
        assert classes.attrs["flag_values"].dtype == classes.encoding["dtype"]
        assert len(classes.attrs["flag_values"]) == len(classes.attrs["flag_meanings"].split()) == 5
        assert classes.encoding["_FillValue"] not in classes.attrs["flag_values"]
        assert classes.encoding["coordinates"] == "elevation azimuth range"
        assert np.isnan(classes.values[0, 0])
    with netCDF4.Dataset(tmp_path / f"out{ending}") as file:
        assert "adial" in file.Conventions
