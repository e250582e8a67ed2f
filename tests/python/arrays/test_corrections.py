"""Phase, attenuation and statistics of differential reflectivity."""

from __future__ import annotations

import clutterclassifier as cc
import numpy as np
import pytest
from rain_scans import SPACING, attenuated, rain_scan

NAN = np.nan

# The differential phase.


def test_the_system_phase_is_that_of_the_first_rain():
    rising = np.arange(60.0) * np.ones((4, 1))
    for gates, mean in ((3, 1.0), (10, 4.5)):
        assert cc.system_phase(rising, classes=np.zeros(rising.shape), gates=gates) == mean
        assert cc.system_phase(rising, rhohv=np.ones(rising.shape), gates=gates) == mean
    scan = rain_scan()
    later = scan["classes"].copy()
    later[:, :50] = cc.NOISE
    both = cc.system_phase(np.stack([scan["phidp"]] * 2), classes=np.stack([later, scan["classes"]]))
    assert both.shape == (2,) and both[0] > both[1] + 1


@pytest.mark.parametrize("lowest", [0, -180])
def test_unfolding_adds_a_circle_after_the_jump(lowest):
    phidp = np.linspace(lowest + 300, lowest + 420, 120)[np.newaxis] * np.ones((3, 1))
    folded = (phidp - lowest) % 360 + lowest
    folded[1] = phidp[1] - 360  # a ray without a jump
    classes = np.zeros(folded.shape)
    classes[2, 100] = cc.NOISE
    result = cc.unfold_phase(folded, classes)
    beyond = phidp[0] >= lowest + 360
    np.testing.assert_allclose(result[0, beyond], phidp[0, beyond], rtol=1e-5)
    assert ((result[0] != phidp[0].astype(np.float32)) & ~beyond).sum() <= 6
    np.testing.assert_array_equal(result[1], folded[1].astype(np.float32))
    assert result[2, 100] == np.float32(folded[2, 100]) != result[0, 100]


def test_gaps_are_gates_that_are_invalid_masked_or_no_number():
    random = np.random.default_rng(2)
    phidp = 40 * random.random((9, 33))
    valid = random.random(phidp.shape) < np.linspace(0, 1, 9)[:, np.newaxis]
    for function, settings in ((cc.fill_phase, {}), (cc.extend_phase, {"gates": 4, "average": 3})):
        with_nan = np.where(valid, phidp, NAN)
        filled = function(with_nan, **settings)
        assert np.isnan(filled).sum() < np.isnan(with_nan).sum()
        np.testing.assert_array_equal(filled, function(with_nan, valid, **settings))
        np.testing.assert_array_equal(filled, function(np.ma.MaskedArray(phidp, ~valid), **settings))


def test_closing_gaps_leaves_none():
    phidp = np.array([[NAN, 5, NAN, NAN, 8, np.inf], [NAN] * 6, [9, 9, 9, 9, 9, 9], [2, NAN, 4, 5, 6, 7]])
    expected = [[5, 5, 6, 7, 8, 8], [5] * 6, [9] * 6, [2, 3, 4, 5, 6, 7]]
    np.testing.assert_array_equal(cc.close_phase_gaps(phidp), np.float32(expected))


# Attenuation.


def test_the_attenuation_stage_prepares_the_phase_and_chooses_its_rays():
    scan = rain_scan()
    least = float(np.median(attenuated(scan, algorithm=5, phase_window=(9, 3)).phase_rise))
    result = attenuated(scan, algorithm=5, phase_window=(9, 3), min_phase_rise=least)
    offset = cc.system_phase(scan["phidp"], classes=scan["classes"])
    phase = cc.smooth(scan["phidp"] - offset, mask=scan["classes"] != 0, gates=9, rays=3)
    np.testing.assert_array_equal(result.phidp, phase)
    corrected = result.phase_rise > least
    assert corrected.any() and not corrected.all()
    for values, nominal in ((result.alpha, 0.073), (result.a, 3e-5), (result.b, 0.78)):
        np.testing.assert_array_equal(values, np.where(corrected, np.float32(nominal), 0))
    np.testing.assert_array_equal(result.path_attenuation > 1, corrected)
    assert (result.dbzh >= scan["dbzh"] - 1e-5).all()
    rain = scan["classes"] == cc.PRECIPITATION
    np.testing.assert_array_equal((result.specific_attenuation > 0).any(axis=1), corrected)
    assert (result.specific_attenuation[~rain] == 0).all()


def test_the_freezing_level_ends_the_path_of_the_attenuation():
    scan = rain_scan()
    level = float(cc.beam_height(110 * SPACING, 1.5)) + 500
    result = attenuated(scan, algorithm=4, elevation=1.5, freezing_level=level)
    used = np.flatnonzero((result.specific_attenuation > 0).any(axis=0))
    assert 100 < used.max() <= 111
    beyond = result.dbzh[:, 120:] - scan["dbzh"][:, 120:]
    np.testing.assert_allclose(beyond, result.path_attenuation[:, np.newaxis] * np.ones(40), atol=1e-4)


@pytest.mark.parametrize("algorithm, method", [
    (0, "profile"), (1, "final_value"), (2, "forward"), (8, "profile"), (4, "profile"), (5, "final_value"),
    (6, "forward")])
def test_the_coefficients_give_the_attenuation(algorithm, method):
    """Those of the first four are drawn at random; the results must fit together."""
    scan = rain_scan(ngates=150)
    scan["classes"][...] = 0
    result = attenuated(scan, algorithm=algorithm, phase_window=(1, 1))
    rays = np.flatnonzero(result.alpha > 0)
    assert rays.size and 0.02 <= result.alpha[rays].min() and result.alpha[rays].max() <= 0.1
    assert (len(set(result.b[rays])) > 1) == (algorithm in (1, 2, 8))
    again = cc.specific_attenuation(scan["dbzh"][rays, :-1], classes=scan["classes"][rays, :-1],
                                    range=SPACING, phase_rise=result.phase_rise[rays],
                                    alpha=result.alpha[rays], a=result.a[rays], b=result.b[rays],
                                    method=method)
    np.testing.assert_allclose(result.specific_attenuation[rays, :-1], again, rtol=1e-4)
    rebuilt = np.cumsum(2 * again * SPACING / 1000 / result.alpha[rays][:, np.newaxis], axis=1)
    shift = result.phidp_rebuilt[rays, :-1] - rebuilt
    np.testing.assert_array_less(np.ptp(shift, axis=1), 0.01)


def test_gaps_of_the_phase_spoil_nothing_unless_they_are_kept():
    scan = rain_scan()
    scan["phidp"][0, 3] = NAN
    filled = attenuated(scan, algorithm="profile_nominal")
    by_hand = attenuated(scan | {"phidp": cc.close_phase_gaps(scan["phidp"])}, algorithm="profile_nominal",
                         fill_gaps=False)
    kept = attenuated(scan, algorithm="profile_nominal", fill_gaps=False)
    for one, other in zip(filled, by_hand):
        np.testing.assert_array_equal(one, other)
    assert (filled.alpha > 0).any() and (kept.alpha == 0).all() and np.isnan(kept.phidp).all()


def test_algorithms_by_name_and_number_and_the_correlation_does_not_matter():
    scan = rain_scan()
    results = [attenuated(scan, algorithm=name) for name in ("forward_nominal", 6)]
    results.append(attenuated(scan | {"rhohv": None}, algorithm=cc.AttenuationAlgorithm.FORWARD_NOMINAL))
    for other in results[1:]:
        for one, same in zip(results[0], other):
            np.testing.assert_array_equal(one, same)


def test_specific_attenuation_has_the_closed_form_of_uniform_rain():
    """The profile solution of a uniform path holds the attenuation that follows from the phase."""
    shape, rise = (2, 400), np.array([30.0, 60.0])
    rain = np.full(shape, 45.0)
    ah = cc.specific_attenuation(rain, classes=np.zeros(shape), range=100.0, phase_rise=rise, alpha=0.08)
    np.testing.assert_allclose((2 * ah * 0.1).sum(axis=1), 0.08 * rise, rtol=0.02)
    assert (np.diff(ah) > 0).all()  # the measured reflectivity does not fall, so the true one rises
    slope = cc.specific_attenuation(rain, classes=np.zeros(shape), range=100.0, alpha=[0.1, 0.2],
                                    phidp=np.arange(400) * np.ones((2, 1)), method="phase_slope")
    np.testing.assert_allclose(slope[:, 3:-3], np.array([[0.5], [1.0]]) * np.ones(394), rtol=1e-12)
    assert (slope[:, :3] == 0).all() and (slope[:, -3:] == 0).all()


@pytest.mark.parametrize("method, tolerance", [("profile", 0.02), ("final_value", 0.02), ("forward", 0.05)])
def test_specific_attenuation_is_that_which_was_made(method, tolerance):
    """Reflectivity that is attenuated gate by gate gives the attenuation back."""
    alpha, a, b, step = 0.08, 3e-5, 0.78, 0.05
    true = 40 + 8 * np.sin(np.arange(600) / 40) * np.ones((2, 1))
    ah = a * (10 ** (0.1 * true)) ** b
    path = np.cumsum(2 * ah * step, axis=1)
    found = cc.specific_attenuation(true - path, classes=np.zeros(true.shape), range=1000 * step,
                                    alpha=alpha, a=a, b=b, phase_rise=path[:, -1] / alpha, method=method)
    np.testing.assert_allclose(found[:, 20:-20], ah[:, 20:-20], rtol=tolerance)
    clutter = np.zeros(true.shape)
    clutter[:, 100:120] = cc.GROUND_CLUTTER
    found = cc.specific_attenuation(true, classes=clutter, range=1000 * step, phase_rise=20, method=method)
    np.testing.assert_array_equal(found == 0, clutter != 0)


def test_corrected_zdr_follows_the_attenuation():
    shape = (3, 200)
    rain, ah = np.zeros(shape), 0.04 * np.ones(shape)
    zdr = np.linspace(1.3, -0.2, 200) * np.ones((3, 1))
    rain[1, 50:60] = cc.GROUND_CLUTTER
    result = cc.correct_zdr(zdr, dbzh=np.full(shape, 45.0), specific_attenuation=ah, classes=rain,
                            range=250.0, alpha=0.073, phase_rise=[60.0, 60.0, 20.0])
    assert (result.ratio > 0).tolist() == [True, True, False]
    np.testing.assert_array_equal(result.zdr[2], zdr[2])
    np.testing.assert_allclose(result.zdr[0, -20:].mean(), 0.48 * 4.5 - 0.774, atol=0.15)
    gained = result.zdr[0] - zdr[0]
    np.testing.assert_allclose(np.diff(gained), 2 * result.ratio[0] / 0.073 * 0.04 * 0.25, rtol=1e-6)
    np.testing.assert_allclose(gained[-1], result.path_attenuation[0], rtol=0.02)


def test_hot_spots_are_found_in_every_ray():
    phidp = np.cumsum(np.full((2, 3, 200), 2.5), axis=-1)
    dbzh, ones = np.full(phidp.shape, 30.0), np.ones(phidp.shape)
    places = {(0, 1): [(k * 14, k * 14 + 11) for k in range(12)], (1, 2): [(50, 90)]}
    for ray, stretches in places.items():
        for first, last in stretches:
            dbzh[ray][first:last + 1] = 50.0
    found = cc.hot_spots(phidp, dbzh=dbzh, rhohv=ones, classes=0 * ones, range=SPACING)
    np.testing.assert_array_equal(found.gates, dbzh > 40)
    assert found.count.tolist() == [[0, 12, 0], [0, 0, 1]]
    expected = [(ray, *stretch) for ray in places for stretch in places[ray][:10]]
    assert [spot[:3] for spot in found.spots] == expected
    assert found.spots[-1].phase_rise == 100.0 and type(found.spots[0].first) is int
    for change in ({"rhohv": 0.6 * ones}, {"classes": 5 * ones}, {"range": 150.0}):
        call = {"dbzh": dbzh, "rhohv": ones, "classes": 0 * ones, "range": SPACING} | change
        assert cc.hot_spots(phidp, **call).gates.sum() == (41 if change == {"range": 150.0} else 0)


# Statistics of differential reflectivity.


def test_statistics_are_means_over_the_chosen_gates():
    random = np.random.default_rng(1)
    fields = {name: random.normal(middle, 0.5, (30, 60)).astype(np.float32)
              for name, middle in (("dbzh", 20), ("zdr", 0.4), ("phidp", 30), ("vrad", 3), ("wrad", 2))}
    fields["rhohv"] = random.uniform(0.9, 1, (30, 60)).astype(np.float32)
    classes = np.where(random.random((30, 60)) < 0.5, 0, 5)
    inside = (np.arange(60) >= 4) & (np.arange(60) < 40)  # 300 m and 3,000 m
    settings = {"range": 75.0, "between": (300.0, 3000.0), "min_rhohv": 0.93, "min_dbzh": 19.5}
    good = inside & (fields["rhohv"] >= 0.93) & (fields["dbzh"] >= 19.5)
    in_rain = good & (classes == 0) & (fields["dbzh"] <= 20.5)
    for result, chosen, elevation in (
            (cc.vertical_statistics(**fields, **settings, elevation=89.5), good, 89.5),
            (cc.rain_statistics(**fields, **settings, classes=classes, max_dbzh=20.5), in_rain, 0)):
        assert result.elevation == pytest.approx(elevation, abs=1e-4)
        for name in ("dbzh", "zdr"):
            mean = (1 + (10 ** (0.1 * fields[name][chosen].astype(float))).sum()) / chosen.sum()
            assert getattr(result, name) == pytest.approx(10 * np.log10(mean), abs=1e-5)
        for name in ("phidp", "rhohv", "vrad", "wrad"):
            assert getattr(result, name) == pytest.approx(fields[name][chosen].mean(dtype=float), rel=1e-4)


def test_statistics_without_fields_or_gates_are_no_numbers():
    dbzh = np.full((2, 20, 30), 20.0)
    call = {"zdr": 0 * dbzh, "rhohv": np.ones(dbzh.shape), "range": 100.0, "between": (0, 2000),
            "min_rhohv": 0.9, "min_dbzh": 15, "elevation": [90, 91]}
    dbzh[1, :, 5:] = 10
    found = cc.vertical_statistics(dbzh, **call)
    np.testing.assert_allclose(found.elevation, [90, 91], rtol=1e-6)
    assert np.isnan(found.dbzh).tolist() == np.isnan(found.zdr).tolist() == [False, True]
    assert np.isnan([found.phidp, found.vrad, found.wrad]).all()
    np.testing.assert_array_equal(np.isnan(found.rhohv), [False, True])
