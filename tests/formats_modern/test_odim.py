"""ODIM_H5: what writers of the format do, in made files; real files against h5py."""

import re

import h5py
import numpy as np
import pytest
from conftest import dump, real

RAW = np.array([[0, 1, 2, 255], [10, 20, 30, 40], [255, 0, 200, 254]], "u1")
BASE = {
    "": {"Conventions": np.bytes_("ODIM_H5/V2_2")},
    "what": {"object": np.bytes_("PVOL"), "date": np.bytes_("20151018"), "time": np.bytes_("180000"),
             "source": np.bytes_("WMO:02606,NOD:seang,PLC:Angelholm")},
    "where": {"lat": 56.25, "lon": 12.5, "height": 209.0},
    "how": {"beamwH": 1.0, "wavelength": 5.0},
    "dataset1/what": {"product": np.bytes_("SCAN"), "startdate": np.bytes_("20151018"),
                      "starttime": np.bytes_("180000"), "enddate": np.bytes_("20151018"),
                      "endtime": np.bytes_("180030")},
    "dataset1/where": {"elangle": 0.5, "nrays": 3, "nbins": 4, "rscale": 500.0, "rstart": 0.0, "a1gate": 1},
    "dataset1/how": {"NI": 24.0},
    "dataset1/data1/what": {"quantity": np.bytes_("DBZH"), "gain": 0.5, "offset": -32.0,
                            "nodata": 255.0, "undetect": 0.0},
}


def make(path, changes=(), data=None, **create):
    """A small volume; changes: (group, attribute, value), where None removes it."""
    with h5py.File(path, "w", **create) as file:
        for group, attributes in BASE.items():
            for name, value in attributes.items():
                file.require_group(group or "/").attrs[name] = value
        for group, name, value in changes:
            attributes = file.require_group(group or "/").attrs
            attributes.pop(name, None)
            if value is not None:
                attributes[name] = value
        for name, values in (data or {"dataset1/data1/data": RAW}).items():
            file.create_dataset(name, data=values, compression="gzip")
    return path


def test_a_small_volume(tmp_path):
    scan = dump(make(tmp_path / "a.h5"))
    assert (scan.format, scan.radar, scan.site) == ("ODIM_H5", "seang", "Angelholm")
    assert (scan.lat, scan.lon, scan.alt, scan.beam, scan.wavelength) == (56.25, 12.5, 209, 1, 0.05)
    (sweep,) = scan.sweeps
    assert (sweep.number, sweep.fixed, sweep.spacing, sweep.first, sweep.nyquist) == (1, 0.5, 500, 250, 24)
    assert sweep.azimuth == [60, 180, 300]
    assert sweep.time == [scan.time + 25, scan.time + 5, scan.time + 15]  # a1gate is the first in time
    nan = np.nan
    expected = np.float32([[-32, -31.5, -31, nan], [-27, -22, -17, -12], [nan, -32, 68, 95]])
    np.testing.assert_array_equal(sweep.values["DBZH"], expected)
    assert sweep.no_echo == {"DBZH": -32}
    hidden = dump(tmp_path / "a.h5", "--hide-no-echo").sweeps[0].values["DBZH"]
    np.testing.assert_array_equal(hidden, np.where(expected == -32, nan, expected))


W, H, WHAT = "dataset1/where", "dataset1/how", "dataset1/data1/what"
START = np.array([359.0, 119.0, 239.0])
GEOMETRY = {
    "start and stop": ([(H, "startazA", START), (H, "stopazA", START + 2)], "azimuth", [0, 120, 240]),
    "start only": ([(H, "startazA", START)], "azimuth", [59, 179, 299]),
    "pairs in a text": ([(H, "azangles", "0:1,1:2,2:3")], "azimuth", [0.5, 1.5, 2.5]),
    "one a ray": ([(H, "azangles", START)], "azimuth", list(START)),
    "of another length": ([(H, "startazA", START[:2])], "azimuth", [60, 180, 300]),
    "offset of the first ray": ([(H, "astart", -60.0)], "azimuth", [0, 120, 240]),
    "an array of one": ([(W, "rscale", np.array([250.0]))], "spacing", 250),
    "text in place of a number": ([(W, "rscale", "250")], "spacing", 250),
    "32 bits, big-endian": ([(W, "rscale", np.array(250, ">i4"))], "spacing", 250),
    "start in km": ([(W, "rstart", 0.125)], "first", 375),
    "start in m": ([(W, "rstart", 125.0), ("", "Conventions", "ODIM_H5/V2_4")], "first", 375),
    "time of rays": ([(H, "startazT", START), (H, "stopazT", START + 1)], "time", list(START + 0.5)),
    "elevation of rays": ([(H, "elangles", START / 100), (W, "elangle", None)], "fixed", 1.19),
    "no how at all": ([(H, "NI", None), ("how", "beamwH", None)], "nyquist", 0),
}


@pytest.mark.parametrize("changes, name, value", GEOMETRY.values(), ids=GEOMETRY)
def test_geometry(tmp_path, changes, name, value):
    np.testing.assert_allclose(getattr(dump(make(tmp_path / "a.h5", changes)).sweeps[0], name), value)


@pytest.mark.parametrize("marks, raw, missing, no_echo", [
    ({"nodata": np.nan}, np.float32([[1, 0, np.nan]]), [2], 1),
    ({"nodata": 65535.0, "undetect": 256.0}, np.array([[65535, 256, 255]], ">u2"), [0], 1),
    ({"nodata": -32768.0, "undetect": -32767.0}, np.array([[-32768, -32767, 5]], ">i2"), [0], 1),
    ({"nodata": 9.96921e36, "undetect": -9.96921e36}, np.array([[9.96921e36, -9.96921e36, 1]]), [0], 1),
    ({"nodata": 9.96921e36, "undetect": -8.8e33}, np.float32([[9.96921e36, -8.8e33, 1]]), [0], 1),
    ({"nodata": 0.0, "undetect": 0.0}, np.array([[4, 0, 1]], "u1"), [], 1),
    ({"nodata": 256.0, "undetect": 0.0}, np.array([[255, 0, 1]], "u1"), [], 1),
])
def test_marks_of_missing_and_of_no_echo(tmp_path, marks, raw, missing, no_echo):
    changes = [(WHAT, "gain", 1.0), (WHAT, "offset", 0.5)] + [(WHAT, *mark) for mark in marks.items()]
    path = make(tmp_path / "a.h5", changes, {"dataset1/data1/data": raw})
    sweep = dump(path).sweeps[0]
    values = sweep.values["DBZH"][0]
    assert list(np.flatnonzero(np.isnan(values))) == missing
    assert values[no_echo] == np.float32(sweep.no_echo["DBZH"])
    kept = [i for i in range(3) if i not in missing]
    np.testing.assert_array_equal(values[kept], np.float32(raw[0, kept].astype(float) + 0.5))


def test_sweeps_in_the_order_of_their_numbers_with_fields_of_their_own(tmp_path):
    data = {f"dataset{n}/data1/data": np.full((2, n), 100, "u1") for n in (1, 2, 10)}
    data["dataset2/quality1/data"] = RAW[:2, :2]
    data["dataset2/data2/data"] = RAW[:2, :3]
    changes = [(f"dataset{n}/where", *pair) for n in (2, 10) for pair in [("rscale", 1e3), ("elangle", n)]]
    changes += [("dataset2/data1/what", "quantity", "VRADH"), ("dataset2/data2/what", "quantity", "VRADH"),
                ("dataset2/quality1/how", "task", "fi.fmi.ropo.detector.classification")]
    scan = dump(make(tmp_path / "a.h5", changes, data))
    assert [(s.number, s.gates) for s in scan.sweeps] == [(1, 1), (2, 3), (10, 10)]
    assert list(scan.sweeps[1].values) == ["VRADH", "VRADH_2", "classification"]
    assert np.isnan(scan.sweeps[1].values["VRADH"][:, 2]).all()


def test_an_elevation_scan(tmp_path):
    changes = [("what", "object", "ELEV"), (W, "elangle", None), (W, "az_angle", 123.0),
               (H, "startelA", np.array([0.0, 1, 2])), (H, "stopelA", np.array([1.0, 2, 3]))]
    sweep = dump(make(tmp_path / "a.h5", changes)).sweeps[0]
    assert (sweep.rhi, sweep.mode, sweep.fixed) == (1, "rhi", 123)
    assert sweep.elevation == [0.5, 1.5, 2.5]
    assert sweep.azimuth == [123] * 3


@pytest.mark.parametrize("changes, data, message", [
    ([(W, "rscale", None)], None, "dataset1/where has no usable rscale"),
    ([(W, "rscale", "far")], None, "dataset1/where has no usable rscale"),
    ([(W, "elangle", None)], None, "dataset1/where has no usable elangle"),
    ([("what", "object", "COMP")], None, "object COMP"),
    ([], {"dataset1/data1/data": RAW.reshape(1, 3, 4)}, "dataset1/data1/data does not have two dimensions"),
    ([], {"dataset1/data1/data": np.array([[b"a"]])}, "dataset1/data1/data does not hold numbers"),
    ([], {"other": RAW}, "holds no sweeps"),
    ([("", "Conventions", None), ("what", "object", None)], None, "neither ODIM_H5 nor CfRadial"),
])
def test_what_is_wrong_is_named(tmp_path, changes, data, message):
    with pytest.raises(ValueError, match=re.escape(message)):
        dump(make(tmp_path / "a.h5", changes, data))


def test_declared_sizes_are_not_believed(tmp_path):
    path = make(tmp_path / "a.h5")
    with h5py.File(path, "a") as file:
        del file["dataset1/data1/data"]
        file.create_dataset("dataset1/data1/data", (1 << 20, 1 << 20), "u1", chunks=(1, 1 << 20))
    with pytest.raises(ValueError, match="more than a file of this size can hold"):
        dump(path)


@pytest.mark.parametrize("target", ["external", "link"])
def test_data_of_other_files_are_not_read(tmp_path, target):
    path = make(tmp_path / "a.h5")
    make(tmp_path / "other.h5")
    with h5py.File(path, "a") as file:
        del file["dataset1/data1/data"]
        if target == "link":
            file["dataset1/data1/data"] = h5py.ExternalLink("other.h5", "/dataset1/data1/data")
        else:
            file.create_dataset("dataset1/data1/data", (2, 2), "u1", external=[("other.h5", 0, 4)])
    with pytest.raises(ValueError, match="another file|is missing"):
        dump(path)


def test_every_cut_is_reported(tmp_path):
    whole = make(tmp_path / "a.h5", libver="earliest").read_bytes()
    for length in range(10, len(whole) - 1, 397):
        (tmp_path / "cut.h5").write_bytes(whole[:length])
        with pytest.raises(ValueError, match="damaged HDF5|holds no sweeps|cannot be read"):
            dump(tmp_path / "cut.h5")


@pytest.mark.parametrize("name", ["odim_angelholm_20151018.h5", "odim_captains_flat_20181220.h5"])
def test_real_files_against_h5py(name):
    scan = dump(real(name))
    with h5py.File(real(name)) as file:
        assert len(scan.sweeps) == sum(key.startswith("dataset") for key in file)
        for sweep in scan.sweeps:
            group = file[f"dataset{sweep.number}"]
            assert sweep.fixed == group["where"].attrs["elangle"]
            assert sweep.first == 1000 * group["where"].attrs["rstart"] + 250
            if "startazT" in group["how"].attrs:
                middle = (group["how"].attrs["startazT"] + group["how"].attrs["stopazT"]) / 2
                np.testing.assert_allclose(sweep.time, middle, rtol=0, atol=1e-6)
            for key in filter(re.compile("data|quality").match, group):
                what = dict(group[key]["what"].attrs)
                raw = group[key]["data"][...].astype(float)
                values = (raw * what["gain"] + what["offset"]).astype("f4")
                values[(raw == what["nodata"]) & (raw != what["undetect"])] = np.nan
                np.testing.assert_array_equal(sweep.values[what["quantity"].decode()], values)


def test_fields_are_not_widened_beyond_what_the_file_may_declare(tmp_path):
    narrow = {f"dataset1/data{n}/data": np.ones((2000, 1), "u1") for n in range(1, 21)}
    wide = {"dataset1/data21/data": np.ones((2000, 1000), "u1")}
    scan = dump(make(tmp_path / "a.h5", [], narrow | wide))
    assert "more than a file of this size can hold" in scan.damage[0]
    assert (len(scan.sweeps[0].fields), scan.sweeps[0].gates) == (20, 1)
