"""Classification of numpy arrays: the same bits as the C entry point, and every bad call named."""

from __future__ import annotations

import itertools
from pathlib import Path

import clutterclassifier as cc
import numpy as np
import pytest
from clutterclassifier import _core
from entry_point import NAMES, entry_point, scan_fields

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


def test_inputs_have_the_names_and_bits_of_the_library():
    table = {name.replace("-", "_"): bit for name, _, _, bit, _ in _core.input_table()}
    ours = {"vel": "VRAD", "pdf": "CLUTTER_LIKELIHOOD", "rhv": "RHOHV", "wid": "WRAD", "ldr": "LDR",
            "zhh_texture": "DBZH_TEXTURE", "pdp_texture": "PHIDP_TEXTURE", "rhv_texture": "RHOHV_TEXTURE"}
    assert {ours.get(name, name.upper()): bit for name, bit in table.items()} == {
        bit.name: int(bit) for bit in cc.Inputs if bit in table.values()}


@pytest.mark.parametrize("suffix, expected", [
    ("precipi", cc.PRECIPITATION), ("clutter", cc.GROUND_CLUTTER), ("seaclut", cc.SEA_CLUTTER),
    ("turclut", cc.TURBINE_CLUTTER)])
def test_the_class_whose_functions_alone_are_high_is_found(tmp_path, suffix, expected):
    for file in Path(cc.membership_directory()).glob("*.dat"):
        (tmp_path / file.name).write_text(f"0 {0.9 if file.stem.endswith(suffix) else 0.1}")
    fields = {name: values for name, values in scan_fields().items() if name != "clutter_likelihood"}
    found = cc.classify(**fields, **CALL, membership=f"{tmp_path}/", all_classes=True)
    assert set(np.unique(found)) == {cc.NOISE, expected}


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
