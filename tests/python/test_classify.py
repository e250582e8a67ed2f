"""Classification of numpy arrays: the same bits as the C entry point, and every bad call named."""

from __future__ import annotations

import itertools
import threading

import clutterclassifier as cc
import numpy as np
import pytest
from entry_point import NAMES, entry_point, scan_fields
from hypothesis import given, settings
from hypothesis import strategies as st

SPACING, CONSTANT, LEAST = 250.0, 10.0, 12.0
CALL = {"range": SPACING, "radar_constant": CONSTANT, "min_snr": LEAST}
BIT_OF = {"dbzh": 1, "zdr": 2, "phidp": 4, "rhohv": 8 + 128, "vrad": 16, "ldr": 32, "clutter_likelihood": 64}


def test_every_subset_of_inputs_equals_the_entry_point():
    fields = scan_fields()
    seen = set()
    for count in range(7):
        for names in itertools.combinations(NAMES[1:], count):
            some = {name: fields[name] for name in ("dbzh", *names)}
            mask = sum(BIT_OF[name] for name in some)
            expected = entry_point(some, SPACING, CONSTANT, LEAST, mask)
            np.testing.assert_array_equal(cc.classify(**some, **CALL), expected, err_msg=str(names))
            seen.add(expected.tobytes())
    assert len(seen) > 32  # the inputs matter


@pytest.mark.parametrize("bit", [1, 2, 4, 8, 16, 32, 64, 128, 15, 0b10110001])
def test_selected_inputs_equal_the_entry_point(bit):
    fields = scan_fields(seed=3)
    np.testing.assert_array_equal(cc.classify(**fields, **CALL, inputs=bit),
                                  entry_point(fields, SPACING, CONSTANT, LEAST, bit))


def test_not_a_number_reaches_the_library_as_it_is():
    fields = scan_fields(seed=2)
    for step, values in enumerate(fields.values(), start=5):
        values.ravel()[::step] = np.nan
    expected = entry_point(fields, SPACING, CONSTANT, LEAST, 255)
    np.testing.assert_array_equal(cc.classify(**fields, **CALL), expected)
    without_echo = cc.classify(**fields, **CALL, missing="no_echo")
    assert (without_echo[np.isnan(fields["dbzh"])] == cc.NOISE).all()
    fields["dbzh"] = np.nan_to_num(fields["dbzh"], nan=-999.0)
    np.testing.assert_array_equal(without_echo, entry_point(fields, SPACING, CONSTANT, LEAST, 255))


@settings(max_examples=40, deadline=None)
@given(nrays=st.integers(1, 7), ngates=st.integers(1, 12), scans=st.integers(0, 2),
       dtype=st.sampled_from([np.float64, np.float32, np.int16, ">f8", np.float16]),
       layout=st.sampled_from(["C", "F", "reversed", "strided", "read-only"]), seed=st.integers(0, 99))
def test_any_layout_and_type_gives_the_same_and_stays_as_it_was(nrays, ngates, scans, dtype, layout, seed):
    shape = (2,) * scans + (nrays, ngates)
    made = scan_fields(nrays * 2 ** scans, ngates, seed)
    fields = {name: values.reshape(shape).astype(dtype) for name, values in made.items()}
    arranged = {name: arrange(values, layout) for name, values in fields.items()}
    result = cc.classify(**arranged, **CALL)
    assert result.dtype == np.uint8 and result.shape == shape
    for at in np.ndindex(shape[:-2]):
        one = {name: values[at] for name, values in fields.items()}
        np.testing.assert_array_equal(result[at], entry_point(one, SPACING, CONSTANT, LEAST, 255))
    for name, values in fields.items():
        np.testing.assert_array_equal(arranged[name], values)


def arrange(values: np.ndarray, layout: str) -> np.ndarray:
    """The same values, differently in memory."""
    if layout == "reversed":
        return values[..., ::-1].copy()[..., ::-1]
    if layout == "strided":
        return np.repeat(values, 3, axis=-1)[..., ::3]
    arranged = np.array(values, order="F" if layout == "F" else "C")
    arranged.flags.writeable = layout != "read-only"
    return arranged


def test_masked_gates_have_no_echo():
    fields = scan_fields()
    mask = np.zeros(fields["dbzh"].shape, bool)
    mask[3:9, 5:20] = True
    masked = np.ma.MaskedArray(fields["dbzh"], mask, fill_value=70.0)
    zdr = np.ma.MaskedArray(fields["zdr"], mask)
    result = cc.classify(masked, zdr=zdr, **CALL)
    assert (result[mask] == cc.NOISE).all()
    expected = entry_point({"dbzh": np.where(mask, -999, fields["dbzh"]),
                            "zdr": np.where(mask, np.nan, fields["zdr"])}, SPACING, CONSTANT, LEAST, 3)
    np.testing.assert_array_equal(result, expected)
    assert not np.isnan(zdr.data).any()


@pytest.mark.parametrize("ranges, spacing", [
    (np.arange(60) * 250.0 + 125, 250.0), (np.arange(60, dtype=np.float32) * 149.9, 149.0), (75, 75.0),
    (np.arange(60) * 299.99999999999994, 300.0), (np.arange(60, dtype=np.float32) * 0.1 * 1249.9999, 125.0),
    (np.arange(60) * 299.9, 299.0), (np.arange(60) * 124.9998, 124.0), (299.99999999999994, 300.0),
    (np.float32(9e5) + np.arange(60, dtype=np.float32) * np.float32(62.3), 62.0),
    ((np.arange(60) * 250.0).round(-2), 250.0)])
def test_only_the_spacing_in_whole_metres_counts(ranges, spacing):
    fields = scan_fields()
    settings = {"radar_constant": CONSTANT, "min_snr": LEAST}
    np.testing.assert_array_equal(cc.classify(**fields, **settings, range=ranges),
                                  entry_point(fields, spacing, CONSTANT, LEAST, 255))


def test_stage_settings_change_what_they_say():
    fields = scan_fields()
    plain = cc.classify(**fields, **CALL)
    echo = plain != cc.NOISE
    wide = cc.classify(**fields, **CALL, texture_window=(9, 5))
    assert (wide != plain).any() and ((wide != cc.NOISE) == echo).all()
    assert set(np.unique(cc.classify(**fields, **CALL, all_classes=True))) <= set(cc.EchoClass)
    width = np.abs(np.random.default_rng(1).normal(0, 3, echo.shape))
    assert (cc.classify(**fields, **CALL, wrad=width) != plain).any()


def test_isolated_precipitation_becomes_clutter_where_asked_for():
    dbzh = np.full((36, 60), -50.0)
    dbzh[3, 5] = dbzh[20, 40] = 30.0
    dbzh[8:14, 20:30] = 30.0
    plain = cc.classify(dbzh, **CALL)
    tidy = cc.classify(dbzh, **CALL, remove_isolated=True)
    changed = np.argwhere(tidy != plain)
    np.testing.assert_array_equal(changed, [[3, 5], [20, 40]])
    assert tidy[3, 5] == cc.GROUND_CLUTTER and plain[3, 5] == cc.PRECIPITATION


@pytest.mark.parametrize("change, message", [
    ({"zdr": np.zeros((24, 59))}, r"zdr has the shape \(24, 59\), but dbzh has \(24, 60\)"),
    ({"rhohv": np.zeros(60)}, r"rhohv has the shape \(60,\)"),
    ({"range": np.arange(59) * 250}, r"range has the shape \(59,\), but there are 60 gates"),
    ({"range": np.zeros(60)}, "range must rise"),
    ({"range": np.nan}, "range must rise"),
    ({"range": [0, 100, *np.arange(5e3, 19250, 250), 1e5]}, "range must rise evenly, not by 100 to 81000"),
    ({"range": np.delete(np.arange(61), 5) * 250.0}, "range must rise evenly, not by 250 to 500 m"),
    ({"range": np.append(0, np.arange(59)) * 250.0}, "range must rise evenly, not by 0 to 250 m"),
    ({"range": np.where(np.arange(60) == 7, np.nan, np.arange(60) * 250)}, "range must rise evenly"),
    ({"azimuth": np.zeros(23)}, r"azimuth has the shape \(23,\), but one value per ray has \(24,\)"),
    ({"radar_constant": np.inf}, "radar_constant must be a finite number"),
    ({"radar_constant": 10**400}, "radar_constant is too large"),
    ({"inputs": "zhh_textures"}, "no such input: 'zhh_textures'"),
    ({"inputs": 512}, "inputs must be a whole number within 0 and 511"),
    ({"inputs": []}, "selects nothing"),
    ({"inputs": "wrad"}, "an input was asked for, but not given: wrad"),
    ({"texture_window": (4, 3)}, "texture_window must be two odd sizes"),
    ({"missing": "drop"}, "missing must be"),
    ({"elevation": np.zeros(60)}, r"elevation has the shape \(60,\), but one value per ray has \(24,\)"),
    ({"elevation": np.append(np.zeros(23), np.nan)}, "elevation must hold finite numbers"),
    ({"radar_constant": [1, 2]}, r"radar_constant must be a single number, .*\(2,\)"),
    ({"min_snr": np.nan}, "min_snr must be a number, not nan"),
    ({"inputs": 3.7}, "inputs must be a whole number"),
    ({"texture_window": (5,)}, r"texture_window must be a pair, .*\(5,\)"),
    ({"texture_window": (5.5, 3)}, "texture_window must be a whole number"),
    ({"texture_window": (2**33 + 1, 3)}, "texture_window must be a whole number within"),
    ({"texture_window": (2**30 + 1, 3)}, "texture_window: the window has too many gates"),
    ({"zdr": [[1.0, 2.0], [3.0]]}, "zdr is no array"),
])
def test_a_wrong_argument_is_named(change, message):
    with pytest.raises(ValueError, match=message):
        cc.classify(**{**scan_fields(), **CALL, **change})


@pytest.mark.parametrize("name, value", [
    ("radar_constant", None), ("min_snr", None), ("min_snr", "low"), ("texture_window", 5),
    ("texture_window", "53"), ("texture_window", (5, None)), ("azimuth", ["north"] * 24),
    ("elevation", "low"), ("inputs", [None]), ("rhohv", [["a"]]),
    ("membership", {}), ("membership", np.zeros(2))])
def test_an_argument_of_a_wrong_kind_is_named(name, value):
    with pytest.raises(TypeError, match=name):
        cc.classify(**{**scan_fields(), **CALL, name: value})


def test_angles_of_each_ray_do_not_change_the_classes():
    fields = {name: np.stack([values, values]) for name, values in scan_fields().items()}
    expected = cc.classify(**fields, **CALL)
    for elevation in (np.linspace(0, 5, 24), np.array([[1.0], [2.0]]), 1, np.array([3.0])):
        angles = {"azimuth": np.arange(24) * 15, "elevation": elevation}
        np.testing.assert_array_equal(cc.classify(**fields, **CALL, **angles), expected)


def test_infinite_ratios_make_everything_echo_or_noise():
    fields = scan_fields()
    assert (cc.classify(**fields, **CALL | {"min_snr": -np.inf}) != cc.NOISE).all()
    assert (cc.classify(**fields, **CALL | {"min_snr": np.inf}) == cc.NOISE).all()


def test_a_table_serves_as_an_array():
    pandas = pytest.importorskip("pandas")
    fields = scan_fields()
    tables = {name: pandas.DataFrame(values) for name, values in fields.items()}
    np.testing.assert_array_equal(cc.classify(**tables, **CALL), cc.classify(**fields, **CALL))


def test_single_numbers_may_be_arrays_of_one():
    fields = scan_fields()
    single = {"range": SPACING, "radar_constant": np.array([CONSTANT]), "min_snr": np.float32(LEAST)}
    np.testing.assert_array_equal(cc.classify(**fields, **single), cc.classify(**fields, **CALL))


@pytest.mark.parametrize("dbzh, error", [
    (np.zeros(5), ValueError), (np.zeros((0, 5)), ValueError), (np.zeros((5, 0)), ValueError),
    (np.zeros((2, 5), complex), TypeError), (np.array([["a"]]), TypeError), (None, TypeError)])
def test_what_is_no_scan_is_refused(dbzh, error):
    with pytest.raises(error, match="dbzh"):
        cc.classify(dbzh, **CALL)


def test_membership_functions_are_found_or_missed(tmp_path, monkeypatch, capfd):
    fields = scan_fields()
    with pytest.raises(FileNotFoundError, match="cal_mf_sZhh_clutter.dat"):
        cc.classify(**fields, **CALL, membership=tmp_path)
    with pytest.raises(FileNotFoundError, match="absent"):
        cc.classify(**fields, **CALL, membership=tmp_path / "absent")
    monkeypatch.setenv("CLUTTERCLASSIFIER_MEMBERSHIP", str(tmp_path))
    with pytest.raises(FileNotFoundError):
        cc.classify(**fields, **CALL)
    assert capfd.readouterr().out == ""


def test_threads_do_not_disturb_each_other():
    scans = [scan_fields(seed=seed) for seed in range(4)]
    expected = [cc.classify(**fields, **CALL) for fields in scans]
    wrong = []

    def work(number: int) -> None:
        for _ in range(20):
            if not np.array_equal(cc.classify(**scans[number], **CALL), expected[number]):
                wrong.append(number)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong
