"""Readers: values, geometry and names, from small files of each format and from real ones."""

import os
import re
from pathlib import Path

import numpy as np
import pytest
import radar_files as files
from hypothesis import given
from hypothesis import strategies as st

import clutterclassifier as cc
from clutterclassifier._model.names import RESERVED, field_names

xr = pytest.importorskip("xarray")

DATA = os.environ.get("CLUTTERCLASSIFIER_DATA")


# --- Universal Format ---

def test_uf_values_and_geometry(tmp_path):
    sweep = files.read_one(tmp_path, files.uf_scan(8, 6))
    assert sweep.DBZH.dims == ("azimuth", "range") and sweep.DBZH.dtype == np.float32
    np.testing.assert_array_equal(sweep.DBZH, 10 * np.arange(8)[:, None] + np.arange(6))
    np.testing.assert_array_equal(sweep.VRADH, -np.arange(6) * np.ones((8, 1)))
    np.testing.assert_array_equal(sweep.azimuth, 45 * np.arange(8) + 22.5)
    np.testing.assert_array_equal(sweep.elevation, 1.5)
    np.testing.assert_array_equal(sweep.range, 1125 + 250 * np.arange(6))
    assert sweep.range.attrs["meters_to_center_of_first_gate"] == 1125
    assert sweep.range.attrs["meters_between_gates"] == 250
    assert set(sweep.time.values) == {np.datetime64("2014-08-10T18:20:07", "ns")}
    assert float(sweep.latitude) == pytest.approx(50 + 44 / 60 + 20 / 3600)
    assert float(sweep.altitude) == 100
    assert sweep.attrs["instrument_name"] == "radar" and sweep.attrs["site_name"] == "site"
    assert "_Undetect" not in sweep.DBZH.attrs and "radar_constant" not in sweep.attrs


def test_uf_missing_words_and_short_rays_are_nan(tmp_path):
    content = (files.uf_ray(0, 1, {"DZ": [0, files.MISSING, 200]})
               + files.uf_ray(120, 1, {"DZ": [100]}) + files.uf_ray(240, 1, {"DZ": [1, 2, 3]}))
    nan = np.nan
    np.testing.assert_array_equal(
        files.read_one(tmp_path, content).DBZH,
        np.array([[0, nan, 2], [1, nan, nan], [0.01, 0.02, 0.03]], np.float32))


def test_uf_sweeps_are_datasets(tmp_path):
    content = files.uf_scan(8, 6, sweep=1) + files.uf_scan(6, 9, sweep=2, mode=1)
    sweeps = cc.read(files.written(tmp_path, content))
    assert [sweep.DBZH.shape for sweep in sweeps] == [(8, 6), (6, 9)]
    assert [int(sweep.sweep_number) for sweep in sweeps] == [0, 1]
    assert [sweep.attrs["raw_sweep_number"] for sweep in sweeps] == [1, 2]


def test_range_height_scan_has_elevation_first(tmp_path):
    content = b"".join(files.uf_ray(77, 2.0 * r, {"DZ": [0, 100]}, mode=3, fixed=77) for r in range(5))
    sweep = files.read_one(tmp_path, content)
    assert sweep.DBZH.dims == ("elevation", "range")
    np.testing.assert_array_equal(sweep.elevation, 2.0 * np.arange(5))
    assert sweep.azimuth.dims == ("elevation",) and np.all(sweep.azimuth == 77)
    assert str(sweep.sweep_mode.values) == "rhi" and float(sweep.sweep_fixed_angle) == 77


@pytest.mark.parametrize(("azimuths", "mode"), [(range(40, 80, 2), "sector"), ([7], "sector"),
                                                (range(0, 360, 2), "azimuth_surveillance"),
                                                ([*range(180, 360, 2), *range(0, 180, 2)],
                                                 "azimuth_surveillance")])
def test_sweep_mode_and_file_order(tmp_path, azimuths, mode):
    content = b"".join(files.uf_ray(a, 1, {"DZ": [0, 100]}) for a in azimuths)
    sweep = files.read_one(tmp_path, content)
    assert str(sweep.sweep_mode.values) == mode
    np.testing.assert_array_equal(sweep.azimuth, list(azimuths))


def test_rays_may_share_their_azimuth(tmp_path):
    content = b"".join(files.uf_ray(a, 1, {"DZ": [a]}) for a in (10, 10, 130, 250))
    sweep = files.read_one(tmp_path, content)
    assert sweep.indexes["azimuth"].tolist() == [10, 10, 130, 250]
    assert sweep.sel(azimuth=10).sizes["azimuth"] == 2


@pytest.mark.parametrize("date", [(2014, 13, 1, 0, 0, 0), (2015, 2, 29, 0, 0, 0), (2014, 1, 1, 24, 0, 0),
                                  (2014, 1, 1, 0, 60, 0), (2014, 1, 1, 0, 0, 61), (1600, 1, 1, 0, 0, 0),
                                  (3000, 1, 1, 0, 0, 0)])
@pytest.mark.filterwarnings("ignore:invalid value:RuntimeWarning")
def test_impossible_date_is_no_time(tmp_path, date):
    sweep = files.read_one(tmp_path, files.uf_scan(3, 2, date=date))
    assert np.isnat(sweep.time.values).all()
    sweep.to_netcdf(tmp_path / "scan.nc")
    with xr.open_dataset(tmp_path / "scan.nc") as back:
        assert np.isnat(back.time.values).all()


def test_leap_second_is_the_next_minute(tmp_path):
    sweep = files.read_one(tmp_path, files.uf_scan(3, 2, date=(2016, 12, 31, 23, 59, 60)))
    assert set(sweep.time.values) == {np.datetime64("2017-01-01", "ns")}


def test_only_files_of_the_library_have_its_mark_of_no_rain(tmp_path):
    fields = {"DZ": [-3200, 100], "VR": [-3200, 100]}
    content = b"".join(files.uf_ray(a, 1, fields, facility=b"PLUVEK  ") for a in (0, 120, 240))
    sweep = files.read_one(tmp_path, content)
    assert sweep.DBZH.attrs["_Undetect"] == -32 and sweep.DBZH.values[0, 0] == -32
    assert "_Undetect" not in sweep.VRADH.attrs


# --- the other formats ---

def test_dx_keeps_no_echo(tmp_path):
    codes = files.dx_codes()
    sweep = files.read_one(tmp_path, files.dx_scan(codes))
    np.testing.assert_array_equal(sweep.DBZH, (0.5 * codes - 32.5).astype(np.float32))
    assert sweep.DBZH.attrs["_Undetect"] == -32.5
    assert (sweep.DBZH == sweep.DBZH.attrs["_Undetect"]).sum() == (codes == 0).sum() > 0
    assert sweep.DBZH.attrs["raw_name"] == "Z" and sweep.DBZH.attrs["units"] == "dBZ"
    assert sweep.range.attrs["meters_between_gates"] == 1000
    assert np.isnan(sweep.latitude) and np.isnan(sweep.longitude) and np.isnan(sweep.altitude)
    np.testing.assert_allclose(sweep.elevation, 0.8)
    assert set(sweep.time.values) == {np.datetime64("2008-06-02T16:55", "ns")}


def test_polar_values_constant_and_no_echo(tmp_path):
    codes = np.arange(40).reshape(5, 8) * 20
    codes[2, 3], codes[0, 0] = 4095, 0
    sweep = files.read_one(tmp_path, files.polar_scan(2213, files.polar_2213(codes)))
    expected = 0.1 * codes - 32
    expected[2, 3] = -32
    np.testing.assert_allclose(sweep.DBZH, expected, atol=1e-5)
    assert sweep.DBZH.attrs["_Undetect"] == -32
    assert sweep.DBZH.values[2, 3] == sweep.DBZH.values[0, 0] == np.float32(-32)
    assert {"ZDR", "PHIDP", "RHOHV", "VRADH", "WRADH", "CI", "SQI"} < set(sweep)
    np.testing.assert_allclose(sweep.ZDR, 7 / 16 - 8)
    assert sweep.attrs["radar_constant"] == pytest.approx(40.2)
    assert sweep.attrs["nyquist_velocity"] == 8
    np.testing.assert_allclose(sweep.azimuth, 72 * np.arange(5), atol=1e-4)
    assert float(sweep.range[0]) == 600 and float(sweep.latitude) == 48


def test_polar_layout_is_asked_for(tmp_path):
    path = files.written(tmp_path, files.polar_scan(2211, np.zeros((4, 6, 10))))
    with pytest.raises(ValueError, match="scan.dat: .*layout=252, 260 or 280"):
        cc.read(path)
    with pytest.raises(ValueError, match="layout must be one of 252, 260, 280, not 250"):
        cc.read(path, layout=250)
    [sweep] = cc.open_polar(path, layout=280)
    assert np.all(sweep.DBZH == -32) and np.all(sweep.ZDR == -8)


def test_record_values(tmp_path):
    raw = np.arange(40).reshape(5, 8)
    sweep = files.read_one(tmp_path, files.record_scan({"Zh": raw}, kind=3, scale=0.5, offset=-32))
    np.testing.assert_array_equal(sweep.DBZH, 0.5 * raw - 32)
    assert sweep.DBZH.attrs["_Undetect"] == -32
    np.testing.assert_array_equal(sweep.range, 1000 + 250 * np.arange(8))
    np.testing.assert_allclose(sweep.azimuth, 72 * np.arange(5), atol=1e-4)
    np.testing.assert_allclose(sweep.elevation, 2.5, atol=1e-5)
    assert set(sweep.time.values) == {np.datetime64("2020-02-29T23:59:58", "ns")}


def test_record_of_classes_becomes_flags(tmp_path):
    codes = np.array([[0, 3, 5, 5], [3, 0, 0, 3]])
    sweep = files.read_one(tmp_path, files.record_scan({"CCl": codes}, kind=2))
    assert sweep.CLASS.dtype == np.uint8
    np.testing.assert_array_equal(sweep.CLASS, codes)
    assert sweep.CLASS.encoding["_FillValue"] == cc.MISSING
    assert sweep.CLASS.attrs["raw_name"] == "CCl" and "flag_meanings" in sweep.CLASS.attrs
    other = files.read_one(tmp_path, files.record_scan({"CCl": codes}, kind=2), names={"CCl": "ECHO"})
    np.testing.assert_array_equal(other.ECHO, codes)
    assert other.ECHO.dtype == np.uint8 and "CLASS" not in other
    holes = files.read_one(tmp_path, files.record_scan({"CCl": np.array([[0, np.nan], [3, 5]])}))
    np.testing.assert_array_equal(holes.CLASS, [[0, 255], [3, 5]])


def test_field_that_only_looks_like_classes_stays_numbers(tmp_path):
    sweep = files.read_one(tmp_path, files.record_scan({"CC": np.array([[0.9, 0.3], [0.5, 1.0]])}))
    assert sweep.CC.dtype == np.float32 and "flag_values" not in sweep.CC.attrs


def test_units_of_the_file_go_first(tmp_path):
    content = files.record_scan({"Abs Phase": np.ones((3, 4))}, units="rad")
    assert files.read_one(tmp_path, content, names={"Abs Phase": "PHIDP"}).PHIDP.attrs["units"] == "rad"
    content = files.record_scan({"V": np.ones((3, 4))}, units="m/s")
    assert files.read_one(tmp_path, content).VRADH.attrs["units"] == "m s-1"


def test_grid_is_refused(tmp_path):
    with pytest.raises(ValueError, match="scan.dat: is a grid"):
        files.read_one(tmp_path, files.record_scan({"Zh": np.ones((4, 4))}, grid=True))


# --- names ---

def test_preferred_field_gets_the_name(tmp_path):
    content = b"".join(files.uf_ray(a, 1, {"DZ": [a], "ZT": [2 * a], "FH": [3]}) for a in (0, 120, 240))
    sweep = files.read_one(tmp_path, content)
    np.testing.assert_allclose(sweep.DBZH.values[:, 0], [0, 2.4, 4.8])
    assert sweep.DBZH.attrs["raw_name"] == "ZT"
    assert sweep.DZ.attrs["raw_name"] == "DZ" and "FH" in sweep


def test_user_names_go_before(tmp_path):
    content = b"".join(files.uf_ray(a, 1, {"ZD": [1], "DR": [2], "DZ": [3]}) for a in (0, 120, 240))
    sweep = files.read_one(tmp_path, content, names={"DR": "ZDR"})
    assert sweep.ZDR.attrs["raw_name"] == "DR" and sweep.ZD.attrs["raw_name"] == "ZD"
    assert sweep.ZDR.attrs["units"] == "dB"
    assert sweep.DBZH.attrs["raw_name"] == "DZ"


@pytest.mark.parametrize(("names", "message"), [
    ({"XX": "ZDR"}, "no field is called XX"), ({"DZ": "range"}, "range cannot be"),
    ({"DZ": "A", "VR": "A"}, "the same new name")])
def test_names_that_do_not_fit(tmp_path, names, message):
    with pytest.raises(ValueError, match=f"scan.dat: names: .*{message}"):
        files.read_one(tmp_path, files.uf_scan(), names=names)


@given(st.lists(st.sampled_from(["", "DZ", "ZT", "dz", "range", "DBZH", "CCl", "a/b", "a_b", "DZ_2"])
                | st.text(max_size=3), max_size=12), st.booleans())
def test_names_all_differ(raw, mapped):
    names = {raw[0]: "DBZH"} if raw and mapped else {}
    result = field_names(raw, names, [i for i, name in enumerate(raw) if name == "CCl"])
    assert len(result) == len(raw) == len(set(result))
    assert not RESERVED & set(result)
    assert all(name and "/" not in name for name in result)


@pytest.mark.parametrize("function", [cc.read, cc.recognise])
def test_numbers_of_open_files_are_no_paths(tmp_path, function):
    with open(tmp_path / "scan.uf", "w+b") as file:
        with pytest.raises(TypeError, match="path"):
            function(file.fileno())
        assert os.fstat(file.fileno()).st_size == 0  # it is still open


def test_program_writes_what_is_read(tmp_path):
    """The synthetic scan through the program's writers: as exact as each format stores it."""
    files.run_program("demo", "--scan", tmp_path / "demo.uf", "-o", tmp_path / "demo.png",
                      "--width", 720, "--inputs", "zhh-texture")
    files.run_program("convert", tmp_path / "demo.uf", tmp_path / "demo.plv")
    truth = cc.synthetic_arrays(5)
    [uf], [record] = cc.open_uf(tmp_path / "demo.uf"), cc.open_record(tmp_path / "demo.plv")
    for name, argument in (("DBZH", "dbzh"), ("ZDR", "zdr"), ("VRADH", "vrad"), ("LDR", "ldr")):
        np.testing.assert_allclose(uf[name], truth[argument], atol=0.0101)
        np.testing.assert_array_equal(record[name], uf[name])
    np.testing.assert_allclose(uf.azimuth, truth["azimuth"], atol=1 / 64)
    files.run_program("classify", tmp_path / "demo.uf", "-o", tmp_path / "classes.uf")
    [classes] = cc.read(tmp_path / "classes.uf")
    assert (classes.CLASS == truth["truth"]).mean() > 0.8


# --- real files ---

needs_data = pytest.mark.skipif(not DATA or not Path(DATA).is_dir(), reason="no real files")


@needs_data
@pytest.mark.parametrize(("name", "shapes", "fields"), [
    ("rma1_20181111_000457_el1.uf", [(360, 956)], {"DBZH": "ZT", "PHIDP": "PH", "CM": "CM"}),
    ("boxpol_20140810_1820.uf", [(360, 1000)], {"DBZH": "ZT", "ZDR": "DR", "RHOHV": "RH"}),
    ("npol_20110524_2356_rhi.uf", [(195, 999), (196, 999), (194, 999)], {"DBZH": "ZT", "FH": "FH"}),
    ("xsapr_20110520_1054_one_ray.uf", [(1, 667)], {"VRADH": "VR"}),
    ("dx_10908_20080602_1655.bin", [(360, 128)], {"DBZH": "Z"})])
def test_real_files(name, shapes, fields):
    sweeps = cc.read(Path(DATA) / name)
    assert [sweep.DBZH.shape for sweep in sweeps] == shapes
    for sweep in sweeps:
        assert {field: sweep[field].attrs["raw_name"] for field in fields} == fields
        year = re.search("_(20[01][0-9])", name)[1]
        assert {str(time)[:4] for time in sweep.time.values} == {year}
        assert 5 < float(sweep.DBZH.max()) < 80


@needs_data
def test_real_dx_is_half_without_echo():
    [sweep] = cc.open_dx(Path(DATA) / "dx_10908_20080602_1655.bin")
    assert not np.isnan(sweep.DBZH).any() and float(sweep.DBZH.max()) == 57.5
    assert 0.4 < float((sweep.DBZH == sweep.DBZH.attrs["_Undetect"]).mean()) < 0.6
