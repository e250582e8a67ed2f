"""Textures, smoothing, isolated gates, signal-to-noise ratio, scores."""

from __future__ import annotations

import clutterclassifier as cc
import numpy as np
import pytest
from entry_point import scan_fields
from hypothesis import given, settings
from hypothesis import strategies as st

NAN = np.nan


def scan(nrays: int = 12, ngates: int = 40, seed: int = 1) -> np.ndarray:
    return scan_fields(nrays, ngates, seed)["dbzh"].astype(np.float32)


def some_gates(shape: tuple[int, ...], share: float = 0.3, seed: int = 5) -> np.ndarray:
    return np.random.default_rng(seed).random(shape) < share


def neighbours(field: np.ndarray, used: np.ndarray, r: int, g: int, gates: int, rays: int) -> np.ndarray:
    """Members of a window that ends at the edges."""
    around = np.s_[max(r - rays // 2, 0):r + rays // 2 + 1, max(g - gates // 2, 0):g + gates // 2 + 1]
    return field[around][used[around]].astype(float)


@pytest.mark.parametrize("nrays, rays", [(12, 5), (3, 9)])
def test_windows_of_an_open_scan_end_at_its_edges(nrays, rays):
    field = scan(nrays, 20)
    used = ~some_gates(field.shape)
    textures = cc.texture(field, mask=~used, gates=3, rays=rays, closed=False)
    means = cc.smooth(field, mask=~used, gates=1, rays=rays, closed=False)
    assert textures.shape == means.shape == field.shape
    for r, g in np.ndindex(field.shape):
        if used[r, g] and 0 < g < 19:
            members = neighbours(field, used, r, g, 3, rays)
            np.testing.assert_allclose(textures[r, g], members.std(), atol=2e-5)
        members = neighbours(field, used, r, g, 1, rays)
        expected = members.mean() if members.size else field[r, g]
        np.testing.assert_allclose(means[r, g], expected, rtol=1e-5)


def test_the_circle_is_closed_by_default():
    field = np.zeros((6, 9))
    field[0] = 3
    assert (cc.smooth(field, gates=1, rays=3)[:, 4] == [1, 1, 0, 0, 0, 1]).all()
    assert (cc.smooth(field, gates=1, rays=3, closed=False)[:, 4] == [1.5, 1, 0, 0, 0, 0]).all()


def test_gates_without_a_value_take_no_part_unless_a_mask_says_so():
    field = scan()
    gaps = some_gates(field.shape, 0.1)
    with_nan = np.where(gaps, np.float32(NAN), field)
    for function in (cc.texture, cc.smooth):
        expected = function(field, mask=gaps)
        np.testing.assert_array_equal(function(with_nan), expected)
        np.testing.assert_array_equal(function(np.ma.MaskedArray(field, gaps)), expected)
        np.testing.assert_array_equal(function(np.ma.MaskedArray(field, gaps), mask=gaps & False), expected)
        spoilt = function(with_nan, mask=np.zeros(field.shape, bool))
        assert np.isnan(spoilt).sum() > gaps.sum()


def test_a_window_of_one_gate_smooths_nothing():
    field = scan()
    result = cc.smooth(field, gates=1)
    np.testing.assert_array_equal(result, field)
    assert result.base is None and result is not field


def test_decibels_are_averaged_as_powers():
    field = np.array([[10.0, 20.0, 10.0]] * 3)
    assert cc.smooth(field, gates=3, decibels=True)[1, 1] == pytest.approx(10 * np.log10(120 / 3), abs=1e-5)


def test_isolated_gates_have_no_company_in_their_window():
    classes = np.full((40, 50), cc.NOISE)
    alone, along, across = [(5, 5)], [(15, 10), (15, 12)], [(24, 30), (26, 30)]
    for place in (*alone, *along, *across):
        classes[place] = cc.PRECIPITATION
    for gates, rays, most, expected in (
            (5, 5, 1, alone), (3, 5, 1, alone + along), (5, 3, 1, alone + across),
            (5, 5, 2, alone + along + across), (5, 5, 0, [])):
        found = cc.isolated_gates(classes, gates=gates, rays=rays, at_most=most)
        assert [tuple(place) for place in np.argwhere(found)] == expected
        despeckled = cc.despeckle(classes, window=(gates, rays), at_most=most)
        np.testing.assert_array_equal(despeckled, np.where(found, cc.GROUND_CLUTTER, classes))


def test_despeckling_takes_two_passes():
    random = np.random.default_rng(3).random((30, 50))
    classes = np.where(random < 0.02, cc.PRECIPITATION, cc.GROUND_CLUTTER).astype(np.uint8)
    classes[8:20, 10:30] = cc.PRECIPITATION
    expected = classes.copy()
    for window, most in ((5, 1), (10, 2)):
        expected[cc.isolated_gates(expected, gates=window, rays=window, at_most=most)] = cc.GROUND_CLUTTER
    result = cc.despeckle(classes)
    assert result.dtype == np.uint8 and (result != classes).sum() > 10
    np.testing.assert_array_equal(result, expected)


def test_despeckling_equals_that_of_the_classification():
    fields = {name: values.astype(np.float32) for name, values in scan_fields(40, 60).items()}
    ratio = cc.signal_to_noise(fields["dbzh"], range=2500.0, radar_constant=10.0)
    call = {"range": 2500.0, "radar_constant": 10.0, "min_snr": np.quantile(ratio, 0.98)}
    classes = cc.classify(**fields, **call)
    cleaned = cc.classify(**fields, **call, remove_isolated=True)
    assert (cleaned != classes).any()
    np.testing.assert_array_equal(cc.despeckle(classes), cleaned)


def test_an_open_scan_has_no_neighbours_beyond_its_edge():
    classes = np.full((12, 15), cc.NOISE)
    classes[0, 7] = classes[-1, 7] = cc.PRECIPITATION
    near = {"gates": 3, "rays": 3}
    assert not cc.isolated_gates(classes, **near).any()
    assert cc.isolated_gates(classes, **near, closed=False).sum() == 2
    classes[0, 8:10] = classes[-1, 8:10] = cc.PRECIPITATION
    assert (cc.despeckle(classes) == classes).all()
    classes[-1, 8:10] = cc.NOISE
    assert cc.despeckle(classes)[-1, 7] == cc.PRECIPITATION
    assert cc.despeckle(classes, closed=False)[-1, 7] == cc.GROUND_CLUTTER


def test_classes_without_a_value_are_missing_and_no_neighbours():
    classes = np.full((7, 7), float(cc.PRECIPITATION))
    classes[0] = NAN
    result = cc.despeckle(classes)
    assert (result[0] == cc.MISSING).all() and (result[1:] == cc.PRECIPITATION).all()
    masked = np.ma.MaskedArray(np.nan_to_num(classes), np.isnan(classes))
    np.testing.assert_array_equal(cc.despeckle(masked), result)


@pytest.mark.parametrize("spacing", [250.0, 62.9])
def test_signal_to_noise_is_what_classification_compares(spacing):
    field = scan(20, 70)
    ratio = cc.signal_to_noise(field, range=spacing, radar_constant=7.5)
    gates = np.maximum(np.arange(70, dtype=np.float32), 1)
    loss = (20 * np.log10((gates * np.float32(int(spacing)) / np.float32(1000)).astype(float)))
    expected = field - loss.astype(np.float32) + np.float32(7.5)
    np.testing.assert_array_equal(ratio, expected)
    for least in (-5.0, 12.0):
        classes = cc.classify(field, range=spacing, radar_constant=7.5, min_snr=least)
        np.testing.assert_array_equal(classes == cc.NOISE, ratio < least)


def noise_scan(level: float, nrays: int = 90, ngates: int = 300, spacing: float = 300.0) -> np.ndarray:
    km = np.maximum(np.arange(ngates), 1) * spacing / 1000
    noise = np.random.default_rng(7).normal(level, 0.8, (nrays, ngates)) + 20 * np.log10(km)
    noise[10:30, 60:200] = np.random.default_rng(8).normal(35, 5, (20, 140))  # a shower
    return noise


def test_the_radar_constant_is_found_in_the_noise():
    found = cc.estimate_radar_constant(noise_scan(-37.0), range=300.0)
    assert found.evidence == "noise_gates" and found.min_snr == 10
    assert found.radar_constant == pytest.approx(37, abs=0.6)
    echo = np.full((90, 300), NAN)
    echo[:, 30:] = np.random.default_rng(9).uniform(5, 40, (90, 270))
    assert cc.estimate_radar_constant(echo, range=300.0).evidence == "lower_envelope"
    assert cc.estimate_radar_constant(echo * NAN, range=300.0).evidence == "nothing"


def test_correlation_separates_rain_from_noise():
    level = noise_scan(-37.0)
    rain = cc.estimate_radar_constant(level, rhohv=np.full(level.shape, 0.99), range=300.0)
    noise = cc.estimate_radar_constant(level, rhohv=np.full(level.shape, 0.4), range=300.0)
    assert (rain.evidence, noise.evidence) == ("lower_envelope", "noise_gates")


def test_radar_constants_of_several_scans():
    scans = np.stack([noise_scan(-37.0), noise_scan(-52.0), np.full((90, 300), NAN)])
    found = cc.estimate_radar_constant(scans, range=300.0)
    assert found.evidence.tolist() == ["noise_gates", "noise_gates", "nothing"]
    one = cc.estimate_radar_constant(scans[1], range=300.0)
    assert found.radar_constant[1] == one.radar_constant != found.radar_constant[0]
    assert isinstance(one.radar_constant, float) and isinstance(one.evidence, str)


def test_contingency_counts_pairs():
    first = [1, 1, 1, 1, 0, 0, NAN, 2, 0, 0, 0]
    second = [1, 0, NAN, 0, 0, 2, 0, 5, 0, 0, 0.9]
    assert cc.contingency(first, second, threshold=1) == (2, 1, 3, 5, 0.25, 0.4)
    scores = cc.contingency([[0.0]], [[0.0]], threshold=1)
    assert scores[:4] == (0, 0, 0, 1) and np.isnan(scores[4:]).all()


def test_decibels_and_back():
    np.testing.assert_allclose(cc.to_linear([0.0, 10.0, -30.0]), [1, 10, 1e-3], rtol=1e-6)
    np.testing.assert_allclose(cc.to_decibels(cc.to_linear(scan())), scan(), atol=1e-5)
    assert cc.to_linear([]).shape == (0,)
    assert cc.to_decibels(0) == -np.inf and np.isnan(cc.to_decibels(-1.0))


@settings(max_examples=40, deadline=None)
@given(nrays=st.integers(1, 6), ngates=st.integers(1, 12), gates=st.integers(1, 15), rays=st.integers(1, 9),
       closed=st.booleans(), seed=st.integers(0, 99))
def test_any_small_scan_and_window(nrays, ngates, gates, rays, closed, seed):
    """Nothing is read beyond a scan: the memory after it does not matter."""
    memory = np.full((nrays + 2, ngates), 1e6, np.float32)
    memory[1:-1] = scan(nrays, ngates, seed)
    inside, alone = memory[1:-1], memory[1:-1].copy()
    mask = some_gates(alone.shape, 0.3, seed)
    for function, window in ((cc.texture, (gates | 1, rays | 1)), (cc.smooth, (gates, rays))):
        if window == (1, 1):
            continue
        settings = {"mask": mask, "gates": window[0], "rays": window[1], "closed": closed}
        result = function(inside, **settings)
        np.testing.assert_array_equal(result, function(alone, **settings))
        assert np.abs(result).max() <= np.abs(alone).max() + 1
