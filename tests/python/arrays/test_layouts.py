"""Every function whatever the arrays look like, in threads, and what travels between processes."""

from __future__ import annotations

import ctypes
import pickle
from concurrent.futures import ThreadPoolExecutor

import clutterclassifier as cc
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from rain_scans import SPACING, attenuated, rain_scan

NAN = np.nan

FUNCTIONS = {
    "classify": lambda f: cc.classify(f["dbzh"], zdr=f["zdr"], rhohv=f["rhohv"], range=SPACING,
                                      radar_constant=3, min_snr=30),
    "process": lambda f: tuple(cc.process(f["dbzh"], zdr=f["zdr"], phidp=f["phidp"], range=SPACING,
                                          config={"ATTENUATION_ALG": 4}).fields.values()),
    "texture": lambda f: cc.texture(f["dbzh"], mask=f["classes"] != 0),
    "smooth": lambda f: cc.smooth(f["dbzh"], mask=f["classes"] != 0, rays=3, decibels=True),
    "isolated_gates": lambda f: cc.isolated_gates(f["classes"]),
    "despeckle": lambda f: cc.despeckle(f["classes"]),
    "signal_to_noise": lambda f: cc.signal_to_noise(f["dbzh"], range=SPACING, radar_constant=3),
    "estimate_radar_constant": lambda f: cc.estimate_radar_constant(f["dbzh"], rhohv=f["rhohv"],
                                                                    range=SPACING),
    "to_linear": lambda f: cc.to_linear(f["dbzh"]),
    "to_decibels": lambda f: cc.to_decibels(f["rhohv"]),
    "system_phase": lambda f: cc.system_phase(f["phidp"], classes=f["classes"], gates=2),
    "system_phase_rhohv": lambda f: cc.system_phase(f["phidp"], rhohv=f["rhohv"], gates=2),
    "unfold_phase": lambda f: cc.unfold_phase(f["phidp"], f["classes"]),
    "close_phase_gaps": lambda f: cc.close_phase_gaps(f["phidp"]),
    "fill_phase": lambda f: cc.fill_phase(f["phidp"], f["classes"] == 0),
    "extend_phase": lambda f: cc.extend_phase(f["phidp"], f["classes"] == 0, gates=3, average=2),
    "attenuation": lambda f: attenuated(f, algorithm="forward_nominal", elevation=1,
                                            freezing_level=500 + 3 * f["dbzh"]),
    "specific_attenuation": lambda f: cc.specific_attenuation(f["dbzh"], classes=f["classes"],
                                                              range=SPACING, phase_rise=40),
    "correct_zdr": lambda f: cc.correct_zdr(f["zdr"], dbzh=f["dbzh"], specific_attenuation=f["rhohv"],
                                            classes=f["classes"], range=SPACING, alpha=0.07, phase_rise=40),
    "hot_spots": lambda f: cc.hot_spots(f["phidp"], dbzh=f["dbzh"], rhohv=f["rhohv"], classes=f["classes"],
                                        range=SPACING)[:2],
    "vertical_statistics": lambda f: cc.vertical_statistics(
        f["dbzh"], zdr=f["zdr"], rhohv=f["rhohv"], range=SPACING, between=(0, 1000), min_rhohv=0,
        min_dbzh=0),
    "rain_rate": lambda f: cc.rain_rate(f["dbzh"], zdr=f["zdr"], relation="z_zdr"),
    "hybrid_rain_rate": lambda f: cc.hybrid_rain_rate(f["dbzh"], f["zdr"], range=SPACING, elevation=1,
                                                      freezing_level=300 + 7 * f["phidp"]),
    "z_to_rain": lambda f: cc.z_to_rain(f["dbzh"]),
    "rain_to_z": lambda f: cc.rain_to_z(f["dbzh"]),
}


def arrange(values: np.ndarray, layout: str) -> np.ndarray:
    """The same values, differently in memory."""
    if layout == "reversed":
        return values[..., ::-1].copy()[..., ::-1]
    if layout == "strided":
        return np.repeat(values, 3, axis=-1)[..., ::3]
    arranged = np.array(values, order="F" if layout == "F" else "C")
    arranged.flags.writeable = layout != "read-only"
    return arranged


def parts(result: object) -> tuple[np.ndarray, ...]:
    return tuple(map(np.asarray, result)) if isinstance(result, tuple) else (np.asarray(result),)


@pytest.mark.parametrize("name", FUNCTIONS)
@settings(max_examples=12, deadline=None)
@given(nrays=st.integers(1, 6), ngates=st.integers(6, 50), leading=st.sampled_from([(), (2,), (2, 1)]),
       dtype=st.sampled_from([np.float64, np.float32, np.int16, ">f8"]), seed=st.integers(0, 99),
       layout=st.sampled_from(["C", "F", "reversed", "strided", "read-only", "masked"]))
def test_any_layout_and_type_gives_the_same_and_stays_as_it_was(name, nrays, ngates, leading, dtype, seed,
                                                                layout):
    function = FUNCTIONS[name]
    scans = [rain_scan(nrays, ngates, seed + k) for k in range(int(np.prod(leading, dtype=int)))]
    fields = {key: np.stack([scan[key] for scan in scans]).reshape(*leading, nrays, ngates).astype(dtype)
              for key in scans[0]}
    if layout == "masked":
        arranged = {key: np.ma.MaskedArray(values, np.zeros(values.shape, bool))
                    for key, values in fields.items()}
    else:
        arranged = {key: arrange(values, layout) for key, values in fields.items()}
    result = parts(function(arranged))
    for at in np.ndindex(leading):
        one = {key: np.ascontiguousarray(values[at]).astype(float) for key, values in fields.items()}
        for whole, alone in zip(result, parts(function(one))):
            np.testing.assert_array_equal(whole[at], alone)
            assert whole.dtype == alone.dtype or whole.dtype.kind == "U"
    for key, values in fields.items():
        np.testing.assert_array_equal(arranged[key], values)


def test_every_scan_has_its_own_elevation(tmp_path):
    scans = [rain_scan(seed=seed) for seed in (1, 2)]
    fields = {key: np.stack([scan[key] for scan in scans]) for key in scans[0]}
    profiles = tmp_path / "profiles.dat"
    np.savetxt(profiles, np.linspace(60, 0, 1800)[:, np.newaxis] + np.arange(60) / 3, fmt="%.3f")
    settings = {"range": SPACING, "freezing_level": 1200.0}
    for function in (
            lambda f, angle: attenuated(f, algorithm="forward_nominal", elevation=angle, **settings),
            lambda f, angle: cc.hybrid_rain_rate(f["dbzh"], f["zdr"], elevation=angle, **settings),
            lambda f, angle: cc.correct_profile(f["dbzh"], profiles=profiles, elevation=angle, **settings)):
        result = parts(function(fields, [0.5, 4.0]))
        for at, angle in ((0, 0.5), (1, 4.0)):
            for whole, alone in zip(result, parts(function(scans[at], angle))):
                np.testing.assert_array_equal(whole[at], alone)
        other = parts(function(scans[1], 0.5))
        assert any((whole[1] != one).any() for whole, one in zip(result, other))


@pytest.mark.parametrize("name", FUNCTIONS)
def test_rays_without_anything_harm_no_one(name):
    """One gate, one ray, nothing but NaN or masked gates: a result of the right shape, without a crash."""
    for shape in ((1, 1), (1, 30), (5, 6)):
        fields = {key: np.full(shape, NAN) for key in ("dbzh", "zdr", "phidp", "rhohv")}
        fields["classes"] = np.zeros(shape)
        masked = {key: np.ma.MaskedArray(np.ones(shape), True) for key in fields}
        for scans in (fields, masked):
            if name == "vertical_statistics" and shape[1] < 30:
                continue
            for part in parts(FUNCTIONS[name](scans)):
                assert part.shape in (shape, shape[:1], ())


@pytest.mark.parametrize("name", ["classify", "process", "attenuation", "smooth"])
def test_threads_do_not_disturb_each_other(name):
    scans = [rain_scan(20, 100, seed) for seed in range(4)] * 20
    expected = [parts(FUNCTIONS[name](scan)) for scan in scans[:4]]
    with ThreadPoolExecutor(4) as pool:
        for at, result in enumerate(pool.map(lambda scan: parts(FUNCTIONS[name](scan)), scans)):
            for one, other in zip(result, expected[at % 4]):
                np.testing.assert_array_equal(one, other)


def test_only_others_write_to_standard_output(capfd):
    """The library is quiet, and what another thread of C prints meanwhile stays."""
    libc = ctypes.CDLL(None)
    scan, lines = rain_scan(20, 100), 20_000
    with ThreadPoolExecutor(1) as pool:
        printing = pool.submit(lambda: [libc.puts(b"mine") for _ in range(lines)])
        while not printing.done():
            FUNCTIONS["process"](scan)
            FUNCTIONS["attenuation"](scan)
            FUNCTIONS["vertical_statistics"](scan)
    libc.fflush(None)
    assert capfd.readouterr() == ("mine\n" * lines, "")


def test_results_and_functions_travel():
    scan = rain_scan()
    for result in (attenuated(scan, algorithm=4), cc.beam_pattern(5e4),
                   cc.contingency([1], [1], threshold=0)):
        back = pickle.loads(pickle.dumps(result))
        assert type(back) is type(result)
        for one, other in zip(back, result):
            np.testing.assert_array_equal(one, other)
    assert pickle.loads(pickle.dumps(cc.attenuation)) is cc.attenuation
