"""The processing chain: on arrays, on sweeps, with its settings."""

from __future__ import annotations

import pickle

import clutterclassifier as cc
import dask
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import Stage, sweeps
from conftest import CONSTANT, SPACING, make_sweep, rainy, rainy_sweep
from entry_point import scan_fields

#: Without a search for coefficients.
NOMINAL = {"ATTENUATION_ALG": 4}
KEYWORDS = {"range": SPACING, "radar_constant": CONSTANT, "min_snr": 10.0}


def test_classes_are_those_of_the_classification() -> None:
    fields = scan_fields(48, 120)
    result = cc.process(**fields, **KEYWORDS, config=NOMINAL)
    expected = cc.classify(**fields, **KEYWORDS, remove_isolated=True)
    np.testing.assert_array_equal(result.classes, expected)
    assert result.stages == Stage.ALL and result.inputs == 255
    assert (expected == cc.GROUND_CLUTTER).any() and (expected == cc.NOISE).any()


def test_the_chain_classifies_as_the_steps_do(made_sweep: xr.Dataset) -> None:
    for window in ((5, 3), None):
        arrays = cc.process(**scan_fields(), **KEYWORDS, what=Stage.CLASSIFICATION, neighbourhood=window)
        expected = cc.classify(**scan_fields(), **KEYWORDS, remove_isolated=True, neighbourhood=window)
        np.testing.assert_array_equal(arrays.classes, expected)
    result = sweeps.process(made_sweep, what=Stage.CLASSIFICATION).CLASS
    np.testing.assert_array_equal(result, sweeps.classify(made_sweep, remove_isolated=True).CLASS)
    alone = sweeps.classify(made_sweep, remove_isolated=True, neighbourhood=None).CLASS
    assert (result != alone).any()


def test_what_is_blanked_and_what_is_rain() -> None:
    fields = rainy()
    result = cc.process(**fields, **KEYWORDS, config=NOMINAL, what=Stage.ALL & ~Stage.RAIN_TO_DBZH)
    blank = result.classes != cc.PRECIPITATION
    for name in ("DBZH", "ZDR", "PHIDP", "RHOHV", "VRADH", "RATE"):
        np.testing.assert_array_equal(np.isnan(result.fields[name]), blank, err_msg=name)
    np.testing.assert_allclose(result.fields["RATE"][~blank],
                               (10 ** (0.1 * result.fields["DBZH"][~blank]) / 200) ** (1 / 1.6), rtol=1e-4)
    smoothed = cc.smooth(fields["dbzh"], mask=blank, decibels=True)
    gain = (result.fields["DBZH"] - smoothed)[:, 10:150]
    assert gain.min() > -1e-3 and gain[:, -1].min() > gain[:, 0].max() + 1


def test_single_stages() -> None:
    fields = rainy()
    snr = cc.process(**fields, **KEYWORDS, what=Stage.CLASSIFICATION)
    expected = cc.signal_to_noise(fields["dbzh"], range=SPACING, radar_constant=CONSTANT)
    np.testing.assert_array_equal(snr.fields["SNRH"], expected)
    np.testing.assert_array_equal(snr.fields["DBZH"], fields["dbzh"].astype(np.float32))
    rain = cc.process(fields["dbzh"], range=SPACING, what=Stage.RAIN_RATE)
    np.testing.assert_array_equal(rain.fields["RATE"], cc.rain_rate(fields["dbzh"]))
    assert rain.classes is None and set(rain.fields) == {"DBZH", "RATE"}
    offset = cc.process(**fields, range=SPACING, what=Stage.ZDR_OFFSET, config={"ZDR_BIAS": 0.25})
    np.testing.assert_allclose(offset.fields["ZDR"], fields["zdr"] + 0.25, atol=1e-5)


def test_the_search_for_coefficients_repeats() -> None:
    stages = Stage.CLASSIFICATION | Stage.ATTENUATION
    one, again, other = (cc.process(**rainy(), **KEYWORDS, what=stages, seed=seed) for seed in (1, 1, 2))
    np.testing.assert_array_equal(one.fields["alpha"], again.fields["alpha"])
    assert (one.fields["alpha"] != other.fields["alpha"]).any()
    assert (one.seed, other.seed) == (1, 2) and cc.process(**rainy(), **KEYWORDS, config=NOMINAL).seed is None
    assert "seed=1" in sweeps.process(rainy_sweep(), what=stages).attrs["history"]
    with pytest.raises(ValueError, match="seed must be a whole number within 0"):
        cc.process(**rainy(), **KEYWORDS, seed=-1)


def test_classes_can_be_given() -> None:
    fields = scan_fields(48, 120)
    classes = cc.classify(**fields, **KEYWORDS)
    classes[5, :20] = cc.MISSING
    result = cc.process(fields["dbzh"], classes=classes, range=SPACING, what=Stage.BLANKING)
    np.testing.assert_array_equal(np.isnan(result.fields["DBZH"]), classes != cc.PRECIPITATION)


def test_stages_without_their_inputs_are_noted() -> None:
    result = cc.process(scan_fields()["dbzh"], **KEYWORDS, config={"RAINFALL_ALG": 1})
    assert result.stages == Stage.CLASSIFICATION | Stage.SMOOTHING | Stage.DBZH_TO_RAIN | Stage.BLANKING
    assert [note.split(":")[0] for note in result.notes] == [
        "no attenuation correction", "no offset of zdr", "no rain rate", "no reflectivity from rain rate"]


def test_leading_dimensions_and_estimates_of_each_scan() -> None:
    one, two = rainy(), rainy()
    two["dbzh"] = two["dbzh"] - 5
    both = {name: np.stack([one[name], two[name]])[:, np.newaxis] for name in one}
    result = cc.process(**both, range=SPACING, config=NOMINAL)
    assert result.radar_constant.shape == result.min_snr.shape == (2, 1)
    assert result.radar_constant[1, 0] - result.radar_constant[0, 0] == pytest.approx(5, abs=0.1)
    for i, fields in enumerate((one, two)):
        single = cc.process(**fields, range=SPACING, config=NOMINAL)
        np.testing.assert_array_equal(result.classes[i, 0], single.classes)
        for name, values in single.fields.items():
            np.testing.assert_array_equal(result.fields[name][i, 0], values, err_msg=name)


def test_which_lowest_ratio_goes_with_which_constant() -> None:
    assert cc.process(**rainy(), range=SPACING, radar_constant=CONSTANT, what=1).min_snr == 26
    estimated = cc.process(**rainy(), range=SPACING, what=1)
    own = cc.estimate_radar_constant(rainy()["dbzh"], rhohv=rainy()["rhohv"], range=SPACING)
    assert (estimated.radar_constant, estimated.min_snr) == (own.radar_constant, own.min_snr)


def test_one_elevation_counts_for_all_rays() -> None:
    """That of the middle ray of a range-height scan, else the median. Steep beams leave the rain."""
    elevation = np.repeat([80.0, 0.5, 80.0], [10, 16, 10])
    for rhi, corrected in ((True, True), (False, False)):
        result = cc.process(**rainy(), **KEYWORDS, config=NOMINAL, elevation=elevation, rhi=rhi)
        assert (result.fields["TA"].max() > 1) == corrected


def test_settings_as_file_and_as_dict(tmp_path) -> None:
    fields = rainy()
    settings = {"WHAT2DO": 31, "CLUTTER_ALG": 15, "ATTENUATION_ALG": 4, "FREEZING_LEVEL": 2500.0,
                "a_Z-R": 300}
    path = tmp_path / "settings.txt"
    path.write_text("".join(f"{key} {value}\n" for key, value in settings.items()))
    one, two = (cc.process(**fields, **KEYWORDS, config=config) for config in (settings, path))
    assert one.stages == two.stages == 31 and one.inputs == two.inputs == 15
    assert one.freezing_level == two.freezing_level == 2500
    np.testing.assert_array_equal(one.fields["RATE"], two.fields["RATE"])
    usual = cc.process(**fields, **KEYWORDS, config=settings | {"a_Z-R": 200})
    assert np.nanmax(usual.fields["RATE"]) > 1.2 * np.nanmax(one.fields["RATE"])
    other = cc.process(**fields, **KEYWORDS, config=settings, what=1, inputs="vrad", freezing_level=100)
    assert (other.stages, other.inputs, other.freezing_level) == (1, 16, 100)


def test_the_directory_of_the_settings(tmp_path) -> None:
    with pytest.raises(FileNotFoundError, match="cal_mf"):
        cc.process(**scan_fields(), **KEYWORDS, config={"CLUTTER_MFS": tmp_path})
    directory = cc.membership_directory()
    if " " not in directory:
        result = cc.process(**scan_fields(), **KEYWORDS, config={"CLUTTER_MFS": directory + "/", **NOMINAL})
        np.testing.assert_array_equal(result.classes, cc.process(**scan_fields(), **KEYWORDS).classes)


@pytest.mark.parametrize(("config", "words"), [
    ({"NO_SUCH": 1}, "unknown key NO_SUCH"), ({"RAINFALL_ALG": 9}, "9 is more than"),
    ({"RAINFALL_ALG": 0.5}, "not a whole number"), ({"CLUTTER_MFS": "a b/"}, "not a single word"),
    ({"ZDR_BIAS": "much"}, "much is not a number"), ({"zdr_bias": 1}, "case matters"),
])
def test_wrong_settings_are_named(config: dict[str, object], words: str, tmp_path) -> None:
    with pytest.raises(ValueError, match=words):
        cc.process(**scan_fields(), **KEYWORDS, config=config)
    path = tmp_path / "settings.txt"
    path.write_text("ATTENUATION_ALG 4\n" + " ".join(f"{key} {value}" for key, value in config.items()))
    problems = cc.check_config(path)
    assert problems and problems[0].startswith("line 2: ")
    with pytest.raises(ValueError, match="settings.txt"):
        cc.process(**scan_fields(), **KEYWORDS, config=path)


def test_the_example_is_valid(tmp_path) -> None:
    path = tmp_path / "settings.txt"
    path.write_text(cc.example_config(membership="/some/where"))
    assert cc.check_config(path) == []
    assert "CLUTTER_MFS /some/where/" in path.read_text()
    assert all(line.split()[0] in cc.config_table() for line in path.read_text().splitlines())


@pytest.mark.parametrize("chunks", [None, {"azimuth": 10}])
def test_a_sweep_equals_the_arrays(chunks: dict | None) -> None:
    ds = rainy_sweep()
    before = ds.copy(deep=True)
    data = ds if chunks is None else ds.chunk(chunks)
    result = sweeps.process(data, NOMINAL)
    if chunks is not None:
        assert all(isinstance(result[name].data, dask.array.Array) for name in ("DBZH", "RATE", "CLASS"))
    expected = cc.process(**rainy(), **KEYWORDS, config=NOMINAL, elevation=1.5, azimuth=ds.azimuth.values,
                          neighbourhood=(5, 3))
    for name, values in expected.fields.items():
        np.testing.assert_array_equal(result[name], values, err_msg=name)
    np.testing.assert_array_equal(result.CLASS, expected.classes)
    xr.testing.assert_identical(ds, before)
    assert result.DBZH.attrs["raw_name"] == "dbzh" and result.RATE.attrs["units"] == "mm h-1"
    assert result.Ah.attrs["units"] == "dB/km"
    assert set(result.coords) == set(ds.coords) and result.sweep_mode == ds.sweep_mode
    assert "settings=ATTENUATION_ALG 4" in result.attrs["history"]
    assert pickle.loads(pickle.dumps(result)).identical(result)


def test_the_elevation_of_each_sweep_counts() -> None:
    """The beam of the steep sweep leaves the rain at once, so that there is nothing to correct."""
    low, steep = rainy_sweep(), rainy_sweep()
    steep["sweep_fixed_angle"] = 80.0
    for data in (low, low.chunk({"azimuth": 12})):
        volume = xr.concat([data, data.assign(sweep_fixed_angle=80.0)], dim="sweep")
        result = sweeps.process(volume, NOMINAL)
        assert result.TA.isel(sweep=0).max() > 1 and result.TA.isel(sweep=1).max() == 0


def test_no_echo_is_no_rain_and_not_measured_is_nothing() -> None:
    ds = rainy_sweep()
    ds.DBZH[3, :5] = np.nan
    ds.DBZH[4, :5] = -32.0
    ds.DBZH.attrs["_Undetect"] = -32.0
    result = sweeps.process(ds, what=Stage.CLASSIFICATION | Stage.RAIN_RATE)
    assert result.RATE[3, :5].isnull().all() and (result.RATE[4, :5] == 0).all()
    assert (result.CLASS[3, :5] == cc.MISSING).all() and (result.CLASS[4, :5] == cc.NOISE).all()
    assert (result.DBZH[4, :5] == -32).all() and result.DBZH.attrs["_Undetect"] == -32
    blanked = sweeps.process(ds, what=Stage.CLASSIFICATION | Stage.BLANKING)
    assert blanked.DBZH[3:5, :5].isnull().all()


def test_velocity_from_after_the_filter_is_left_out() -> None:
    one = make_sweep().rename({"DBZH": "DBTH"})
    two = make_sweep(seed=2).rename({"DBZH": "DBTH"})
    every = np.arange(24 * 60).reshape(24, 60)
    one["DBZH"] = one.DBTH.where(every % 50 > 0, -30.0)
    two["DBZH"] = two.DBTH.where(every % 500 > 0, -30.0)
    both = xr.concat([one, two], dim="scan")
    for data in (both, both.chunk({"scan": 1})):
        result = sweeps.process(data, what=Stage.CLASSIFICATION).CLASS
        for at, ds, inputs in ((0, one, 255 & ~16), (1, two, 255)):
            expected = sweeps.process(ds, what=Stage.CLASSIFICATION, inputs=inputs).CLASS
            np.testing.assert_array_equal(result.isel(scan=at), expected)
    all_of_it = sweeps.process(one, what=Stage.CLASSIFICATION, inputs=255).CLASS
    assert (all_of_it != result.isel(scan=0)).any()


def test_classes_of_the_sweep_serve_the_other_stages() -> None:
    ds = rainy_sweep()
    ds = sweeps.classify(ds, codes="pyrad")
    result = sweeps.process(ds, what=Stage.BLANKING)
    np.testing.assert_array_equal(result.DBZH.isnull(), ds.CLASS != 3)


def test_settings_that_leave_no_input_are_named() -> None:
    with pytest.raises(ValueError, match="inputs 2 of the settings"):
        cc.process(scan_fields()["dbzh"], **KEYWORDS, config={"CLUTTER_ALG": 2})


@pytest.mark.usefixtures("gate_by_gate")
def test_ends_of_a_range_height_scan_are_no_neighbours() -> None:
    ds = make_sweep(rays="elevation")
    result = sweeps.process(ds, what=Stage.CLASSIFICATION)
    expected = sweeps.classify(ds, remove_isolated=True).CLASS
    np.testing.assert_array_equal(result.CLASS, expected)
    assert (expected != sweeps.classify(ds, closed=True, remove_isolated=True).CLASS).any()


def test_a_speck_on_the_first_ray_has_no_company_on_the_last() -> None:
    ds = make_sweep(24, 60, rays="elevation")
    ds.DBZH[:] = -60.0
    ds.DBZH[0, 20] = 30.0
    ds.DBZH[-3:, 10:30] = 30.0
    keywords = {"inputs": "dbzh_texture", "min_snr": 10.0}
    for result in (sweeps.process(ds, what=Stage.CLASSIFICATION, **keywords),
                   sweeps.classify(ds, remove_isolated=True, **keywords)):
        assert result.CLASS[0, 20] == cc.GROUND_CLUTTER
    closed = sweeps.classify(ds, closed=True, remove_isolated=True, **keywords)
    assert closed.CLASS[0, 20] == cc.PRECIPITATION
