"""Rain rates, geometry of the beam and vertical profiles: the library's own bits."""

from __future__ import annotations

import clutterclassifier as cc
import numpy as np
import pytest
from library_calls import radar_call

NAN = np.nan
SPACING = 250.0
EARTH = 6.378e6

RELATIONS = {"z": ("dbzh",), "z_zdr": ("dbzh", "zdr"), "kdp_zdr": ("kdp", "zdr"), "kdp": ("kdp",),
             "z_zdr_polynomial": ("dbzh", "zdr")}


@pytest.mark.parametrize("number, relation", enumerate(RELATIONS))
def test_rain_rates_equal_the_library(number, relation):
    random = np.random.default_rng(6)
    all_fields = {"dbzh": random.uniform(-10, 55, 90), "zdr": random.uniform(-1, 4, 90),
                  "kdp": random.uniform(-0.5, 3, 90)}
    fields = {name: all_fields[name].astype(np.float32) for name in RELATIONS[relation]}
    next(iter(fields.values()))[7] = NAN
    for coefficients in (None, [100.0, 1.5]):
        expected = np.empty(90, np.float32)
        given = None if coefficients is None else np.float32(coefficients)
        radar_call("RainfallEstimation", *(fields.get(name) for name in ("dbzh", "zdr", "kdp")), 90, number,
                   given, 0 if given is None else 2, expected)
        result = cc.rain_rate(**fields, relation=relation, coefficients=coefficients)
        np.testing.assert_array_equal(result, expected)
        assert np.isnan(result[7]) and np.isfinite(result).sum() > 60
    # Coefficients of one call do not stay, and are those of a double.
    np.testing.assert_array_equal(cc.rain_rate([30.0]), cc.rain_rate([30.0], coefficients=[200.0, 1.6]))


def test_rain_and_reflectivity_equal_the_library():
    dbzh = np.append(np.linspace(-40, 60, 50), NAN).astype(np.float32)
    for name, function, values in (("ZtoR", cc.z_to_rain, dbzh), ("RtoZ", cc.rain_to_z, dbzh - 10)):
        for a, b in ((200.0, 1.6), (300.0, 1.4)):
            expected = np.empty_like(dbzh)
            pair = (expected, values) if name == "ZtoR" else (values, expected)
            radar_call(name, *pair, len(dbzh), np.float32(a), np.float32(b))
            np.testing.assert_array_equal(function(values, a=a, b=b), expected)
    np.testing.assert_allclose(cc.rain_to_z(cc.z_to_rain(dbzh[10:50])), dbzh[10:50], rtol=1e-5)
    assert cc.z_to_rain(10.0, threshold=10.0) == 0 < cc.z_to_rain(10.0, threshold=9.9)
    assert cc.rain_to_z(NAN, no_rain=-99.0) == -99


def test_hybrid_rain_rate_uses_zdr_where_it_helps():
    random = np.random.default_rng(8)
    dbzh = random.uniform(5, 50, (4, 80)).astype(np.float32)
    zdr = random.uniform(-0.5, 6, (4, 80)).astype(np.float32)
    level = np.array([600.0, 900.0, NAN, 3000.0])
    result = cc.hybrid_rain_rate(dbzh, zdr, range=SPACING, elevation=2.0, freezing_level=level)
    heights = cc.beam_height(np.arange(80) * SPACING, np.rad2deg(np.float32(np.deg2rad(2.0)).astype(float)))
    below = heights.astype(np.float32) <= level[:, np.newaxis] - 500
    better = below & (dbzh > 15) & (zdr > 0.3) & (zdr < 5)
    assert 0 < better[0].sum() < better[1].sum() < better[3].sum() and not better[2].any()
    expected = np.where(better, cc.rain_rate(dbzh, zdr=zdr, relation="z_zdr"), cc.rain_rate(dbzh))
    np.testing.assert_array_equal(result, expected)


# The beam.


def test_beam_geometry_is_that_of_a_straight_line():
    ranges, elevations = np.linspace(0, 300e3, 7), np.array([[-1.0], [0.0], [30.0], [90.0]])
    heights = cc.beam_height(ranges, elevations)
    assert heights.shape == (4, 7)
    up, away = ranges * np.sin(np.deg2rad(elevations)), ranges * np.cos(np.deg2rad(elevations))
    np.testing.assert_allclose(heights, np.hypot(EARTH + up, away) - EARTH, atol=1e-6)
    np.testing.assert_allclose(cc.slant_range(heights[1:], elevations[1:]), ranges * np.ones((3, 1)),
                               atol=1e-3)
    np.testing.assert_allclose(cc.beam_elevation(heights[:3, 1:], ranges[1:]), elevations[:3] * np.ones(6),
                               atol=1e-6)
    assert np.isnan(cc.slant_range(-2000.0, 0.0)) and np.isnan(cc.beam_elevation(5000.0, 100.0))
    for name, function in (("h_beam", cc.beam_height), ("r_beam", cc.slant_range)):
        expected = np.empty(7)
        radar_call(name, ranges, float(np.deg2rad(0.5)), expected, 7)
        np.testing.assert_array_equal(function(ranges, 0.5), expected)


def test_the_beam_pattern_is_half_at_half_its_width():
    pattern = cc.beam_pattern(60e3, elevation=1.0, beamwidth=2.0)
    assert pattern.power.sum() == pytest.approx(1) and pattern.height_power.sum() == pytest.approx(1)
    half = np.interp([-1.0, 0.0, 1.0], pattern.angle, pattern.power)
    assert half[0] / half[1] == pytest.approx(0.5**2, abs=1e-3) == half[2] / half[1]  # there and back
    assert pattern.height[0] == -pattern.height[-1] - 7.5 == pytest.approx(-60e3 * np.deg2rad(1), abs=10)
    assert cc.beam_pattern(60e3, elevation=90.0).height.size == 0


@pytest.fixture
def profiles(tmp_path):
    """Profiles of rain of their own strength, with a bright band around the freezing level."""
    level, number = np.arange(1800)[:, np.newaxis], np.arange(60)
    up = (level - 600) / 133.0
    values = 10 + 0.7 * number + 6 * np.exp(-16 * (up + 0.3) ** 2) - np.where(up > 0, 5 * up, 0)
    path = tmp_path / "profiles of März.dat"
    np.savetxt(path, values, fmt="%.9f")
    return path, values.T


def test_profiles_are_read(profiles):
    path, values = profiles
    read = cc.vertical_profiles(path)
    np.testing.assert_allclose(10 * np.log10(read.z), values, atol=1e-8)
    np.testing.assert_array_equal(read.height, (np.arange(1800) - 600) * 7.5)


def test_corrected_profiles_equal_the_library(profiles):
    path, values = profiles
    random = np.random.default_rng(3)
    dbzh = random.uniform(-5, 60, (5, 90)).astype(np.float32)
    level = np.linspace(900, 2500, 90) * np.ones((5, 1))
    elevation, width = 2.0, 0.8
    result = cc.correct_profile(dbzh, profiles=str(path), range=500.0, elevation=elevation,
                                freezing_level=level, beamwidth=width)
    z = 10 ** (0.1 * dbzh.astype(float)).ravel()
    out, ranges = np.empty_like(z), (np.arange(90) * 500.0 * np.ones((5, 1))).ravel()
    levels = level.astype(np.float32).astype(float).ravel()
    single = [float(np.float32(np.deg2rad(angle))) for angle in (elevation, width)]
    assert radar_call("VPRCorrection", out, z, ranges, levels, z.size, *single, str(path).encode(), 0) == 1
    np.testing.assert_allclose(result.ravel(), (10 * np.log10(out)).astype(np.float32), rtol=3e-7)
    changed = np.abs(result - dbzh) > 0.01
    assert 50 < changed.sum() < dbzh.size - 50
    ground = values[:, 0]
    assert np.abs(result[changed][:, np.newaxis] - ground).min(axis=1).max() < 1e-4


@pytest.mark.parametrize("call, message", [
    (lambda: cc.rain_rate([1.0], relation="best"), "no such relation"),
    (lambda: cc.rain_rate([1.0], relation=["z"]), "no such relation"),
    (lambda: cc.rain_rate([1.0], coefficients=[200, 0]), "coefficients must be positive"),
    (lambda: cc.rain_rate(kdp=[1.0], relation="kdp", coefficients=[-20]), "coefficients must be positive"),
    (lambda: cc.z_to_rain(1.0, a=-1), "a must be positive"),
    (lambda: cc.rain_to_z(1.0, b=0), "b must be positive"),
    (lambda: cc.rain_to_z(1.0, a=1e-60), "a must be positive"),
    (lambda: cc.rain_to_z(1.0, a=1e60), "a must be a finite"),
    (lambda: cc.rain_rate(kdp=[1.0]), "'z' needs dbzh"),
    (lambda: cc.rain_rate([1.0], zdr=[1.0]), "'z' does not use zdr"),
    (lambda: cc.rain_rate([1.0], zdr=[1.0, 2.0], relation="z_zdr"), r"zdr .*\(2,\).*\(1,\)"),
    (lambda: cc.rain_rate([1.0], coefficients=[1, 2, 3]), "has 2 coefficients, not 3"),
    (lambda: cc.z_to_rain(1.0, b=NAN), "b must be a finite"),
    (lambda: cc.beam_height(np.zeros(3), np.zeros(2)), r"elevation has the shape \(2,\).*range.*\(3,\)"),
    (lambda: cc.beam_pattern(0.0), "range must be positive"),
    (lambda: cc.correct_profile([[0.0]], profiles="/dev/null", range=1.0, beamwidth=0),
     "beamwidth must be positive"),
])
def test_bad_calls_are_named(call, message):
    with pytest.raises(ValueError, match=message):
        call()


def test_the_polynomial_may_have_any_sign():
    rate = cc.rain_rate([30.0], zdr=[1.0], relation="z_zdr_polynomial", coefficients=[0, -1, 0, 1])
    assert rate[0] == pytest.approx(1000)


def test_profiles_that_cannot_be_read_are_named(tmp_path):
    for path, error in ((tmp_path / "none.dat", FileNotFoundError), (tmp_path, IsADirectoryError)):
        for call in (lambda: cc.vertical_profiles(path),
                     lambda: cc.correct_profile([[0.0]], profiles=path, range=1.0)):
            with pytest.raises(error, match=path.name):
                call()
