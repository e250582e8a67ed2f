"""Phase, attenuation and statistics of differential reflectivity: the library's own bits."""

from __future__ import annotations

from ctypes import c_float

import clutterclassifier as cc
import numpy as np
import pytest
from library_calls import radar_call
from rain_scans import SPACING, attenuated, rain_scan

NAN = np.nan

# The differential phase.


def test_system_phase_equals_the_library():
    scan = rain_scan()
    nrays, ngates = scan["phidp"].shape
    classes = scan["classes"].astype(np.float32)
    rhohv = scan["rhohv"].copy()
    rhohv[:, 0:20:4] = 0.9  # not above it
    for gates in (10, 3, 14):
        by_class = radar_call("GetInitialPDP_usingCPI", scan["phidp"], classes, ngates, nrays, gates,
                              result=c_float)
        by_correlation = radar_call("GetInitialPDP", scan["phidp"], rhohv, ngates, nrays, gates,
                                    result=c_float)
        assert cc.system_phase(scan["phidp"], classes=scan["classes"], gates=gates) == by_class != 0
        assert cc.system_phase(scan["phidp"], rhohv=rhohv, gates=gates) == by_correlation != by_class
    with_clutter = scan["classes"].copy()
    with_clutter[:, :50] = cc.NOISE
    later = cc.system_phase(np.stack([scan["phidp"]] * 2),
                            classes=np.stack([with_clutter, scan["classes"]]))
    assert later.shape == (2,) and later[0] > later[1] + 1


@pytest.mark.parametrize("lowest", [0, -180])
def test_unfolding_adds_a_circle_behind_the_jump(lowest):
    ngates = 120
    phidp = np.linspace(lowest + 300, lowest + 420, 120)[np.newaxis] * np.ones((3, 1))
    folded = (phidp - lowest) % 360 + lowest
    folded[1] = phidp[1] - 360  # a ray without a jump
    classes = np.zeros(folded.shape)
    classes[2, 100] = cc.NOISE
    result = cc.unfold_phase(folded, classes)
    expected = folded.astype(np.float32)
    radar_call("CorrectPDPFolding", expected, classes.astype(np.float32), ngates, 3)
    np.testing.assert_array_equal(result, expected)
    behind = phidp[0] >= lowest + 360
    np.testing.assert_allclose(result[0, behind], phidp[0, behind], rtol=1e-5)
    assert ((result[0] != phidp[0].astype(np.float32)) & ~behind).sum() <= 6
    np.testing.assert_array_equal(result[1], folded[1].astype(np.float32))
    assert result[2, 100] == np.float32(folded[2, 100]) != result[0, 100]


def test_gaps_of_the_phase_equal_the_library():
    random = np.random.default_rng(2)
    phidp = 40 * random.random((9, 33))
    valid = random.random(phidp.shape) < np.linspace(0, 1, 9)[:, np.newaxis]
    for function, name, settings in ((cc.fill_phase, "interpPDP", {}),
                                     (cc.extend_phase, "CompletePhidp", {"gates": 4, "average": 3})):
        result = function(phidp, valid, **settings)
        for ray, mask, row in zip(phidp, (~valid).astype(float), result):
            expected = np.empty(33)
            if name == "interpPDP":
                radar_call(name, ray, mask, 33, expected)
            else:
                radar_call(name, ray, expected, 33, 4, 3, mask)
            np.testing.assert_array_equal(row, expected)
        with_nan = np.where(valid, phidp, NAN)
        np.testing.assert_array_equal(function(with_nan, **settings),
                                      function(with_nan, valid, **settings))
        masked = np.ma.MaskedArray(phidp, ~valid)
        np.testing.assert_array_equal(function(masked, **settings), function(with_nan, **settings))


def test_closing_gaps_leaves_none():
    phidp = np.array([[NAN, 5, NAN, NAN, 8, np.inf], [NAN] * 6, [9, 9, 9, 9, 9, 9], [2, NAN, 4, 5, 6, 7]])
    expected = [[5, 5, 6, 7, 8, 8], [5] * 6, [9] * 6, [2, 3, 4, 5, 6, 7]]
    np.testing.assert_array_equal(cc.close_phase_gaps(phidp), np.float32(expected))


# Attenuation.


def library_attenuation(scan: dict[str, np.ndarray], phase: np.ndarray, algorithm: int, least: float,
                        path: int) -> dict[str, np.ndarray]:
    """Ray by ray with a searching-free algorithm, `path` gates of each, from the smoothed phase."""
    nrays, ngates = phase.shape
    out = {"dbzh": scan["dbzh"].copy(), "rise": np.zeros(nrays, np.float32),
           "pia": np.zeros(nrays, np.float32), "ah": np.zeros(phase.shape, np.float32),
           "rebuilt": np.full(phase.shape, -30, np.float32)}
    for r in range(nrays):
        z = 10.0 ** (0.1 * scan["dbzh"][r].astype(float))
        mask = scan["classes"][r].astype(float)
        ah, rebuilt, alpha, a, b = np.zeros((5, ngates))
        rise, pia, zcorr = np.zeros(1), np.zeros(1), z.copy()
        done = radar_call("Ah_optimal", phase[r].astype(float), z, path, SPACING / 1000, mask, ah, zcorr,
                          rebuilt, alpha, a, b, rise, pia, algorithm, None, least)
        out["rise"][r], out["pia"][r] = rise[0], pia[0]
        if done == 1:
            rain = (mask == 0) & (np.arange(ngates) < path)
            out["dbzh"][r, rain] = (10 * np.log10(zcorr[rain])).astype(np.float32)
            out["ah"][r], out["rebuilt"][r, :path] = ah, rebuilt[:path]
        out["dbzh"][r, path:] += np.float32(pia[0])
    return out


@pytest.mark.parametrize("algorithm", [3, 4, 5, 6])
@pytest.mark.parametrize("path, least", [(159, 100.0), (110, 45.0)])
def test_the_attenuation_stage_is_its_parts(algorithm, path, least):
    scan = rain_scan()
    level = 2e4 if path == 159 else cc.beam_height((path - 0.5) * SPACING, 1.5) + 500
    settings = {"elevation": 1.5, "freezing_level": level, "min_phase_rise": least, "phase_window": (9, 3)}
    result = attenuated(scan, **settings, algorithm=algorithm)
    offset = cc.system_phase(scan["phidp"], classes=scan["classes"])
    phase = cc.smooth(scan["phidp"] - offset, mask=scan["classes"] != 0, gates=9, rays=3)
    np.testing.assert_array_equal(result.phidp, phase)
    expected = library_attenuation(scan, phase, algorithm, least, path)
    np.testing.assert_array_equal(result.phase_rise, expected["rise"])
    np.testing.assert_array_equal(result.specific_attenuation, expected["ah"])
    np.testing.assert_array_equal(result.path_attenuation, expected["pia"])
    np.testing.assert_array_equal(result.phidp_rebuilt, expected["rebuilt"])
    np.testing.assert_allclose(result.dbzh, expected["dbzh"], rtol=3e-7)  # numpy's powers may differ
    corrected = result.alpha > 0
    assert corrected.any() and (algorithm == 6 or not corrected.all())
    for values, nominal in ((result.alpha, 0.073), (result.a, 3e-5), (result.b, 0.78)):
        np.testing.assert_array_equal(values, np.where(corrected, np.float32(nominal), 0))
    assert (result.dbzh >= scan["dbzh"] - 1e-5).all()


@pytest.mark.parametrize("algorithm, method", [(0, "profile"), (1, "final_value"), (2, "forward"),
                                               (8, "profile")])
def test_searched_coefficients_give_the_attenuation(algorithm, method):
    """The draws are random, but what is told about them must fit together."""
    scan = rain_scan(ngates=150)
    scan["classes"][...] = 0
    result = attenuated(scan, algorithm=algorithm, phase_window=(1, 1))
    rays = np.flatnonzero(result.alpha > 0)
    assert rays.size and 0.02 <= result.alpha[rays].min() and result.alpha[rays].max() <= 0.1
    assert (len(set(result.b[rays])) > 1) == (algorithm != 0)
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
    """The profile solution of a uniform path holds the attenuation that the phase tells."""
    shape, rise = (2, 400), np.array([30.0, 60.0])
    rain = np.full(shape, 45.0)
    ah = cc.specific_attenuation(rain, classes=np.zeros(shape), range=100.0, phase_rise=rise, alpha=0.08)
    np.testing.assert_allclose((2 * ah * 0.1).sum(axis=1), 0.08 * rise, rtol=0.02)
    assert (np.diff(ah) > 0).all()  # the measured reflectivity does not fall, so the true one rises
    slope = cc.specific_attenuation(rain, classes=np.zeros(shape), range=100.0, alpha=[0.1, 0.2],
                                    phidp=np.arange(400) * np.ones((2, 1)), method="phase_slope")
    np.testing.assert_allclose(slope[:, 3:-3], np.array([[0.5], [1.0]]) * np.ones(394), rtol=1e-12)
    assert (slope[:, :3] == 0).all() and (slope[:, -3:] == 0).all()


@pytest.mark.parametrize("number, method", enumerate(["profile", "final_value", "forward", "phase_slope"]))
def test_specific_attenuation_equals_the_library(number, method):
    scan = rain_scan()
    dbzh, classes, phidp = (scan[name].astype(float) for name in ("dbzh", "classes", "phidp"))
    random = np.random.default_rng(4)
    alpha, a, b = (low + (high - low) * random.random(dbzh.shape)
                   for low, high in ((0.02, 0.1), (1e-5, 9e-5), (0.65, 0.85)))
    rise = 20 + 30 * random.random(len(dbzh))
    result = cc.specific_attenuation(dbzh, classes=classes, range=SPACING, phase_rise=rise, phidp=phidp,
                                     alpha=alpha, a=a, b=b, method=method)
    assert (result[classes != 0] == 0).all() and (result[classes == 0] != 0).sum() > 100
    for r, ray in enumerate(dbzh):
        expected = np.empty(len(ray))
        radar_call("Ah", 10.0 ** (0.1 * ray), classes[r], phidp[r], len(ray), alpha[r], a[r], b[r],
                   float(rise[r]), SPACING / 1000, expected, number)
        np.testing.assert_allclose(result[r], expected, rtol=1e-12)


def test_corrected_zdr_equals_the_library():
    scan = rain_scan()
    z, ah = (scan[name].astype(float) for name in ("dbzh", "rhohv"))
    ah, rise, alpha = 0.05 * ah, np.array([30.0, 30, 20, 80, 40, 50]), np.linspace(0.05, 0.1, 6)
    zdr, mask = scan["zdr"].astype(float), scan["classes"].astype(float)
    result = cc.correct_zdr(zdr, dbzh=z, specific_attenuation=ah, classes=mask, range=SPACING, alpha=alpha,
                            phase_rise=rise)
    for r in range(6):
        expected, gamma, pida = zdr[r].copy(), np.full(1, NAN), np.zeros(1)
        done = radar_call("Adp_optimal", 10.0 ** (0.1 * z[r]), zdr[r], ah[r], 160, SPACING / 1000,
                          float(alpha[r]), float(rise[r]), mask[r], expected, gamma, pida)
        assert done == (r != 2)
        np.testing.assert_allclose(result.zdr[r], expected, rtol=1e-12)
        np.testing.assert_allclose(result.ratio[r], gamma[0], rtol=1e-12)
        np.testing.assert_allclose(result.path_attenuation[r], pida[0], rtol=1e-12)


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


F, C = np.zeros((2, 3, 30)), np.zeros((2, 3, 30), np.uint8)
STATISTICS = {"zdr": F, "rhohv": F, "range": 100.0, "min_rhohv": 0, "min_dbzh": 0}


@pytest.mark.parametrize("call, message", [
    (lambda: cc.system_phase(F), "either rhohv or classes"),
    (lambda: cc.system_phase(F, rhohv=F, classes=C), "either rhohv or classes"),
    (lambda: cc.system_phase(F, classes=C[0]),
     r"classes has the shape \(3, 30\), but phidp has \(2, 3, 30\)"),
    (lambda: cc.unfold_phase(F, C[..., 1:]), r"classes .*\(2, 3, 29\).*phidp.*\(2, 3, 30\)"),
    (lambda: cc.fill_phase(F, C[0]), r"valid has the shape \(3, 30\), but phidp has \(2, 3, 30\)"),
    (lambda: cc.extend_phase(F, gates=0), "gates must be a whole number of at least 1"),
    (lambda: cc.attenuation(F, phidp=F[0], classes=C, range=1.0), r"phidp .*\(3, 30\).*dbzh.*\(2, 3, 30\)"),
    (lambda: cc.attenuation(F, phidp=F, classes=C[0], range=1.0),
     r"classes .*\(3, 30\).*dbzh.*\(2, 3, 30\)"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, algorithm=7), "no such algorithm: 7"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, algorithm="best"),
     "no such algorithm: 'best'"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, phase_window=(0, 1)), "phase_window"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, elevation=np.zeros(3)),
     r"elevation .*\(3,\).*\(2,\)"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, elevation=NAN), "elevation must be a finite"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, freezing_level=np.zeros(30)),
     r"freezing_level .*\(30,\).*\(2, 3, 30\)"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, method="zphi"), "no such method: 'zphi'"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, method=["profile"]), "no such method"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, method="phase_slope"), "needs phidp"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, a=-1e-5), "a must hold finite"),
    (lambda: cc.correct_zdr(F, dbzh=F, specific_attenuation=F, classes=C, range=1.0, alpha=np.inf,
                            phase_rise=9), "alpha must hold finite"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, phase_rise=np.zeros(30)),
     r"phase_rise .*\(30,\).*\(2, 3\)"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, b=np.zeros(4)), r"b has the shape \(4,\)"),
    (lambda: cc.hot_spots(F, dbzh=F, rhohv=F[0], classes=C, range=1.0), r"rhohv .*\(3, 30\).*\(2, 3, 30\)"),
    (lambda: cc.vertical_statistics(F, **STATISTICS, between=(0, 500), elevation=45.0), "within 88 and 92"),
    (lambda: cc.vertical_statistics(F, **STATISTICS, between=(500, 500)), "between must be two ranges"),
    (lambda: cc.rain_statistics(F, **STATISTICS, classes=C, max_dbzh=1, between=(0, 3000)),
     "within 30 gates"),
])
def test_bad_calls_are_named(call, message):
    with pytest.raises(ValueError, match=message):
        call()
