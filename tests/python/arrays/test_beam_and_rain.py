"""Rain rates, geometry of the beam and vertical profiles."""

from __future__ import annotations

import clutterclassifier as cc
import numpy as np
import pytest

NAN = np.nan
SPACING = 250.0
EARTH = 6.378e6

#: As the documentation of `rain_rate` has them, with z = 10^(0.1 dbzh).
RELATIONS = {
    "z": lambda z, zdr, kdp: (z / 200) ** (1 / 1.6),
    "z_zdr": lambda z, zdr, kdp: 0.01583 * z**0.8349 * 10 ** (-0.3732 * zdr),
    "kdp_zdr": lambda z, zdr, kdp: 49.2144 * kdp**0.9429 * 10 ** (-0.2731 * zdr),
    "kdp": lambda z, zdr, kdp: 20.47 * kdp**0.75,
    "z_zdr_polynomial": lambda z, zdr, kdp: z / 10 ** (
        0.1 * (18.996 + 16.9758 * zdr - 9.4325 * zdr**2 + 2.1542 * zdr**3)),
}


@pytest.mark.parametrize("relation", RELATIONS)
@pytest.mark.filterwarnings("ignore:invalid value")
def test_rain_rates_are_those_of_the_formulas(relation):
    random = np.random.default_rng(6)
    fields = {"dbzh": random.uniform(-10, 55, 90), "zdr": random.uniform(-1, 4, 90),
              "kdp": random.uniform(-0.5, 3, 90)}
    needed = {"z": ["dbzh"], "kdp": ["kdp"]}.get(relation.split("_")[0], []) + ["zdr"] * ("zdr" in relation)
    fields[needed[0]][7] = NAN
    result = cc.rain_rate(**{name: fields[name] for name in needed}, relation=relation)
    expected = RELATIONS[relation](10 ** (0.1 * fields["dbzh"]), fields["zdr"], fields["kdp"])
    np.testing.assert_allclose(result, expected, rtol=2e-5)
    assert np.isnan(result[7]) and np.isfinite(result).sum() > 60


def test_coefficients_are_those_of_one_call():
    assert cc.rain_rate([40.0], coefficients=[100.0, 2.0])[0] == pytest.approx(10)
    assert cc.rain_rate([40.0]) == cc.rain_rate([40.0], coefficients=[200.0, 1.6])


@pytest.mark.parametrize("relation, own", [
    ("z", [200, 1.6]), ("z_zdr", [0.01583, 0.8349, -0.3732]), ("kdp_zdr", [49.2144, 0.9429, -0.2731]),
    ("kdp", [20.47, 0.75]), ("z_zdr_polynomial", [18.996, 16.9758, -9.4325, 2.1542])])
def test_coefficients_of_the_documentation_are_the_own_ones(relation, own):
    needed = {"z": ["dbzh"], "kdp": ["kdp"]}.get(relation.split("_")[0], []) + ["zdr"] * ("zdr" in relation)
    fields = {name: [1.5, 2.5] for name in needed}
    usual = cc.rain_rate(**fields, relation=relation)
    for count in range(len(own) + 1):
        np.testing.assert_array_equal(cc.rain_rate(**fields, relation=relation, coefficients=own[:count]), usual)
    with pytest.raises(ValueError, match=f"has {len(own)} coefficients"):
        cc.rain_rate(**fields, relation=relation, coefficients=[*own, 1])


def test_rain_and_reflectivity():
    dbzh = np.append(np.linspace(-30, 60, 50), NAN).astype(np.float32)
    for a, b in ((200.0, 1.6), (300.0, 1.4)):
        rate = cc.z_to_rain(dbzh, a=a, b=b)
        np.testing.assert_allclose(rate[:50], (10 ** (0.1 * dbzh[:50]) / a) ** (1 / b), rtol=2e-5)
        np.testing.assert_allclose(cc.rain_to_z(rate[10:50], a=a, b=b), dbzh[10:50], rtol=1e-5)
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


def test_corrected_profiles_are_values_at_the_ground(profiles):
    path, values = profiles
    random = np.random.default_rng(3)
    dbzh = random.uniform(-5, 60, (5, 90)).astype(np.float32)
    level = np.linspace(900, 2500, 90) * np.ones((5, 1))
    elevation, width = 2.0, 0.8
    result = cc.correct_profile(dbzh, profiles=str(path), range=500.0, elevation=elevation,
                                freezing_level=level, beamwidth=width)
    changed = np.abs(result - dbzh) > 0.01
    assert 50 < changed.sum() < dbzh.size - 50
    ground = values[:, 0]
    assert np.abs(result[changed][:, np.newaxis] - ground).min(axis=1).max() < 1e-4


def test_the_polynomial_may_have_any_sign():
    rate = cc.rain_rate([30.0], zdr=[1.0], relation="z_zdr_polynomial", coefficients=[0, -1, 0, 1])
    assert rate[0] == pytest.approx(1000)


def test_profiles_that_cannot_be_read_are_named(tmp_path):
    for path, error in ((tmp_path / "none.dat", FileNotFoundError), (tmp_path, IsADirectoryError)):
        for call in (lambda: cc.vertical_profiles(path),
                     lambda: cc.correct_profile([[0.0]], profiles=path, range=1.0)):
            with pytest.raises(error, match=path.name):
                call()
