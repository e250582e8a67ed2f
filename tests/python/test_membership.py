"""Membership functions: faults by file and line, training from labelled sweeps, pictures."""

from __future__ import annotations

from pathlib import Path

import clutterclassifier as cc
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import membership, sweeps

INPUTS = ["dbzh_texture", "zdr_texture"]


def labels_of(scan: xr.Dataset) -> np.ndarray:
    return np.where(scan.TRUTH == cc.NOISE, np.nan, scan.TRUTH == cc.GROUND_CLUTTER)


@pytest.fixture(scope="module")
def scans() -> list[xr.Dataset]:
    return [cc.synthetic_scan(seed, nrays=90, ngates=300) for seed in (1, 2)]


def test_findings_name_file_and_line(tmp_path: Path) -> None:
    assert membership.check() == []
    (tmp_path / "cal_mf_sZhh_clutter.dat").write_text("0 .1\n4 2\n")
    found = membership.check(tmp_path)
    assert [(finding.line, finding.error) for finding in found] == [(2, True), (0, True)]
    assert "twin" in found[1].text and found[0].file == "cal_mf_sZhh_clutter.dat"
    with pytest.raises(FileNotFoundError):
        membership.check(tmp_path / "nowhere")


def test_trained_functions_classify_another_scan(scans: list[xr.Dataset], tmp_path: Path) -> None:
    training = membership.train(scans, [labels_of(scan) for scan in scans], tmp_path / "mine", inputs=INPUTS)
    assert set(training.weights) == set(INPUTS) and len(training.files) == 4
    assert len(training.scores) == 2 and all(scores.hss > 0.7 for scores in training.scores)
    assert membership.check(tmp_path / "mine") == []
    other = cc.synthetic_scan(3, nrays=90, ngates=300)
    found = sweeps.classify(other, inputs=INPUTS, membership=tmp_path / "mine").CLASS
    for echo, least in ((cc.GROUND_CLUTTER, 0.95), (cc.PRECIPITATION, 0.8)):
        assert (found == echo).values[other.TRUTH == echo].mean() > least
    sweeps.classify(other, membership=tmp_path / "mine")  # with the tables of all other inputs


def test_labels_may_be_a_variable_in_any_order(scans: list[xr.Dataset], tmp_path: Path) -> None:
    named = scans[0].assign(LABEL=(("range", "azimuth"), labels_of(scans[0]).T))
    by_name = membership.train(named, "LABEL", tmp_path / "a", inputs=INPUTS)
    by_array = membership.train(scans[0], labels_of(scans[0]), tmp_path / "b", inputs=INPUTS)
    assert by_name == by_array


@pytest.mark.parametrize("labels, keywords, error, message", [
    ("XX", {}, ValueError, "no variable 'XX'"),
    (np.zeros((2, 2)), {}, ValueError, "labels have the shape"),
    (np.full((90, 300), 2.0), {}, ValueError, "labels must be 1"),
    (np.zeros((90, 300)), {}, ValueError, "0 of clutter"),
    ("TRUTH", {"prior": 2}, ValueError, "prior must be"),
    ("TRUTH", {"neighbourhood": (4, 3)}, ValueError, "neighbourhood"),
])
def test_what_makes_no_sense_leaves_no_directory(scans: list[xr.Dataset], tmp_path: Path, labels: object,
                                                 keywords: dict[str, object], error: type[Exception],
                                                 message: str) -> None:
    with pytest.raises(error, match=message):
        membership.train(scans[0], labels, tmp_path / "mine", **keywords)
    assert not (tmp_path / "mine").exists()
    (tmp_path / "file").write_text("")
    with pytest.raises(FileExistsError):
        membership.train(scans[0], labels_of(scans[0]), tmp_path, inputs=INPUTS)


def test_a_picture_has_two_panels_for_each_pair(tmp_path: Path) -> None:
    for suffix, degrees in (("clutter", "0 .1 10 .9"), ("precipi", "0 .9 10 .1")):
        (tmp_path / f"cal_mf_Wid_{suffix}.dat").write_text(degrees)
    figure = membership.plot(tmp_path)
    upper, lower = figure.axes
    np.testing.assert_allclose(lower.lines[0].get_ydata()[[0, -1]], [np.log(9), -np.log(9)])
    assert len(upper.lines) == 2 and len(membership.plot(tmp_path, cc.membership_directory()).axes) == 16
    with pytest.raises(ValueError, match="no pair"):
        membership.plot(tmp_path / "nowhere")
