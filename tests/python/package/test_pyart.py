"""The bridge to radar objects of the Py-ART kind, with an object of the same structure."""

from __future__ import annotations

import copy
from types import SimpleNamespace

import clutterclassifier as cc
import numpy as np
import pytest
from clutterclassifier import pyart, sweeps
from conftest import CONSTANT, SPACING
from entry_point import entry_point, scan_fields

pytestmark = pytest.mark.usefixtures("gate_by_gate")

LONG_NAMES = {"dbzh": "reflectivity", "zdr": "differential_reflectivity", "phidp": "differential_phase",
              "rhohv": "cross_correlation_ratio", "vrad": "velocity", "ldr": "linear_depolarization_ratio"}
SIZES = (24, 30)
KEYWORDS = {"radar_constant": CONSTANT, "min_snr": 10.0}


def arrays(sweep: int) -> dict[str, np.ndarray]:
    fields = scan_fields(SIZES[sweep], seed=sweep + 1)
    return {name: fields[name] for name in LONG_NAMES}


def expected(sweep: int, mask: int = 255 & ~64) -> np.ndarray:
    return entry_point(arrays(sweep), SPACING, CONSTANT, 10.0, mask)


@pytest.fixture
def radar() -> SimpleNamespace:
    """Two sweeps of different numbers of rays, stacked."""
    both = [arrays(0), arrays(1)]
    stacked = {argument: np.vstack([one[argument] for one in both]) for argument in LONG_NAMES}
    fields = {name: {"data": np.ma.masked_invalid(stacked[argument]), "units": "raw", "_FillValue": -9999.0}
              for argument, name in LONG_NAMES.items()}
    rays = sum(SIZES)
    return SimpleNamespace(
        fields=fields, range={"data": (np.arange(60, dtype=np.float32) + 0.5) * SPACING},
        azimuth={"data": np.concatenate([np.arange(n) * 360.0 / n for n in SIZES])},
        elevation={"data": np.repeat([0.5, 2.5], SIZES)},
        sweep_start_ray_index={"data": np.array([0, SIZES[0]], np.int32)},
        sweep_end_ray_index={"data": np.array([SIZES[0] - 1, rays - 1], np.int32)},
        fixed_angle={"data": np.array([0.5, 2.5], np.float32)},
        sweep_mode={"data": np.array(["azimuth_surveillance"] * 2)},
        time={"data": np.arange(rays) * 0.5, "units": "seconds since 2024-05-01T12:00:00Z"},
        latitude={"data": np.array([50.7])}, longitude={"data": np.array([7.1])},
        altitude={"data": np.array([99.0])})


def test_each_sweep_is_classified_on_its_own(radar: SimpleNamespace) -> None:
    before = copy.deepcopy(radar)
    field = pyart.classify_radar(radar, **KEYWORDS)
    np.testing.assert_array_equal(field["data"][:24], expected(0))
    np.testing.assert_array_equal(field["data"][24:], expected(1))
    assert isinstance(field["data"], np.ma.MaskedArray) and field["data"].dtype == np.uint8
    assert field["flag_meanings"].startswith("precipitation") and field["_FillValue"] == cc.MISSING
    for name in LONG_NAMES.values():
        np.testing.assert_array_equal(radar.fields[name]["data"], before.fields[name]["data"])
        assert set(radar.fields[name]) == set(before.fields[name])


def test_masked_gates_have_no_class_and_are_excluded(radar: SimpleNamespace) -> None:
    radar.fields["reflectivity"]["data"][3, :7] = np.ma.masked
    field = pyart.classify_radar(radar, **KEYWORDS)
    assert field["data"].mask[3, :7].all() and field["data"].mask.sum() == 7
    out = pyart.gate_excluded(radar, **KEYWORDS)
    np.testing.assert_array_equal(out, field["data"].filled(cc.NOISE) != cc.PRECIPITATION)
    noise = pyart.gate_excluded(radar, drop="noise", **KEYWORDS)
    np.testing.assert_array_equal(noise, field["data"].filled(cc.NOISE) == cc.NOISE)


def test_a_gate_filter_receives_the_gates(radar: SimpleNamespace) -> None:
    seen: list[np.ndarray] = []
    given = SimpleNamespace(exclude_gates=seen.append)
    assert pyart.to_gatefilter(radar, drop="noise", gatefilter=given, **KEYWORDS) is given
    np.testing.assert_array_equal(seen[0], pyart.gate_excluded(radar, drop="noise", **KEYWORDS))


def test_certainty_comes_as_fields_of_their_own(radar: SimpleNamespace) -> None:
    found = pyart.classify_radar(radar, certainty=True, **KEYWORDS)
    assert list(found) == ["CLASS", *found["CLASS"]["ancillary_variables"].split()]
    np.testing.assert_array_equal(found["CLASS"]["data"], pyart.classify_radar(radar, **KEYWORDS)["data"])
    echo = np.isin(found["CLASS"]["data"].filled(255), [cc.PRECIPITATION, cc.GROUND_CLUTTER])
    for field in (found["PROBABILITY"], found["MARGIN"]):
        np.testing.assert_array_equal(np.ma.getmaskarray(field["data"]), ~echo)
        assert field["data"].dtype == np.float32
    np.testing.assert_array_equal(found["MARGIN"]["data"][echo] < 0,
                                  found["CLASS"]["data"][echo] == cc.GROUND_CLUTTER)
    np.testing.assert_array_equal(pyart.gate_excluded(radar, certainty=True, **KEYWORDS), ~(
        found["CLASS"]["data"].filled(255) == cc.PRECIPITATION))


def test_the_other_numbering(radar: SimpleNamespace) -> None:
    radar.fields["reflectivity"]["data"][3, :7] = np.ma.masked
    own, other = (pyart.classify_radar(radar, codes=codes, **KEYWORDS) for codes in ("library", "pyrad"))
    for code, number in ((3, 1), (5, 2), (0, 3)):
        np.testing.assert_array_equal((other["data"] == number).filled(False),
                                      (own["data"] == code).filled(False))
    assert other["_FillValue"] == 0 and other["data"].mask[3, :7].all()
    np.testing.assert_array_equal(pyart.gate_excluded(radar, codes="pyrad", **KEYWORDS),
                                  pyart.gate_excluded(radar, **KEYWORDS))


def test_fields_by_the_names_of_the_radar(radar: SimpleNamespace) -> None:
    radar.fields["mine"] = radar.fields.pop("reflectivity")
    with pytest.raises(ValueError, match="reflectivity"):
        pyart.classify_radar(radar, **KEYWORDS)
    field = pyart.classify_radar(radar, fields={"dbzh": "mine", "vrad": None}, **KEYWORDS)
    np.testing.assert_array_equal(field["data"][24:], expected(1, 255 & ~64 & ~16))
    with pytest.raises(TypeError, match="fields must be a dict"):
        pyart.classify_radar(radar, fields=["mine"], **KEYWORDS)
    radar.fields["reflectivity"] = radar.fields["velocity"]
    field = pyart.classify_radar(radar, fields={"dbzh": "mine"}, **KEYWORDS)
    np.testing.assert_array_equal(field["data"][:24], expected(0))


def test_sweeps_in_the_data_model(radar: SimpleNamespace) -> None:
    one, two = pyart.from_radar(radar)
    assert one.DBZH.shape == (24, 60) and two.DBZH.shape == (30, 60)
    assert two.DBZH.dims == ("azimuth", "range")
    assert two.DBZH.attrs["raw_name"] == "reflectivity" and two.DBZH.attrs["units"] == "dBZ"
    np.testing.assert_array_equal(two.VRADH, arrays(1)["vrad"])
    assert float(two.sweep_fixed_angle) == 2.5 and int(two.sweep_number) == 1 and float(two.altitude) == 99
    assert two.time.values[1] == np.datetime64("2024-05-01T12:00:12.500")
    assert two.range.attrs["meters_between_gates"] == SPACING
    np.testing.assert_array_equal(sweeps.classify(two, **KEYWORDS).CLASS, expected(1))


def test_a_range_height_scan(radar: SimpleNamespace) -> None:
    radar.sweep_mode["data"] = np.array([list("azimuth_surveillance"), list("rhi".ljust(20))], "S1")
    radar.elevation["data"][24:] = np.arange(30) + 0.5
    one, two = pyart.from_radar(radar)
    assert one.DBZH.dims == ("azimuth", "range") and two.DBZH.dims == ("elevation", "range")
    np.testing.assert_array_equal(pyart.classify_radar(radar, **KEYWORDS)["data"][24:], expected(1))


def test_ranges_without_a_spacing_are_named(radar: SimpleNamespace) -> None:
    for ranges, words in (([], "range is empty"), (radar.range["data"] ** 2, "range must rise evenly")):
        radar.range["data"] = ranges
        with pytest.raises(ValueError, match=words):
            pyart.from_radar(radar)


def test_what_an_object_may_lack(radar: SimpleNamespace) -> None:
    for name in ("fixed_angle", "sweep_mode", "time", "latitude", "longitude", "altitude"):
        delattr(radar, name)
    np.testing.assert_array_equal(pyart.classify_radar(radar, **KEYWORDS)["data"][:24], expected(0))
    assert float(pyart.from_radar(radar)[1].sweep_fixed_angle) == 2.5


@pytest.mark.parametrize("units, begin", [
    ("seconds since 2020-01-01 00:00:00 UTC", "2020-01-01T00:00:00"),
    ("seconds since 2020-01-01T06:30:00Z", "2020-01-01T06:30:00"),
    ("Seconds since 2020-01-01 00:00:00.25+00:00", "2020-01-01T00:00:00.250"),
    ("secs since 2020-01-01 00:00 +0130", "2019-12-31T22:30"),
    ("s since 2020-1-1 1:2:3 -2", "2020-01-01T03:02:03"),
    ("seconds since 2020-1-1", "2020-01-01")])
def test_times_however_their_beginning_is_written(radar: SimpleNamespace, units: str, begin: str) -> None:
    radar.time["units"] = units
    expected = np.datetime64(begin, "ns") + np.arange(24) * np.timedelta64(500, "ms")
    np.testing.assert_array_equal(pyart.from_radar(radar)[0].time, expected)


@pytest.mark.parametrize("unit, seconds", [("minutes", 60), ("hours", 3600), ("days", 86400), ("ms", 0.001)])
def test_times_in_other_units(radar: SimpleNamespace, unit: str, seconds: float) -> None:
    radar.time["units"] = f"{unit} since 2020-02-29T00:00:00Z"
    expected = np.datetime64("2020-02-29", "ns") + np.timedelta64(round(6e6 * seconds), "us")
    assert pyart.from_radar(radar)[0].time.values[12] == expected


@pytest.mark.parametrize("change", [
    {"units": "seconds since the beginning"}, {"units": "fortnights since 2020-01-01"}, {"units": None},
    {"units": "seconds since 2020-13-01"}, {"units": "days since 0001-01-01"}, {"data": np.arange(3.0)},
    {"data": np.array(["soon"] * 54)}, {"data": np.full(54, 1e300)}])
def test_times_without_meaning_break_nothing(radar: SimpleNamespace, change: dict[str, object]) -> None:
    radar.time.update(change)
    two = pyart.from_radar(radar)[1]
    assert np.isnat(two.time.values).all() and two.time.shape == (30,)
    np.testing.assert_array_equal(pyart.classify_radar(radar, **KEYWORDS)["data"][24:], expected(1))


def test_single_times_may_be_missing(radar: SimpleNamespace) -> None:
    radar.time["data"] = np.ma.masked_equal(radar.time["data"], 0.5)
    radar.time["data"][3] = np.nan
    times = pyart.from_radar(radar)[0].time.values
    assert np.flatnonzero(np.isnat(times)).tolist() == [1, 3]
    assert times[4] == np.datetime64("2024-05-01T12:00:02")
