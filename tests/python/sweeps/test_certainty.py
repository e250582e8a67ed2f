"""How sure a class is, why, and what happens where no class can be had."""

from __future__ import annotations

import os
import resource
import shutil
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from pathlib import Path

import clutterclassifier as cc
import numpy as np
import pytest
import xarray as xr
from archives import failures, make_archive, serial
from clutterclassifier import archive, sweeps
from conftest import CONSTANT, SPACING, make_sweep
from entry_point import scan_fields

CALL = {"range": SPACING, "radar_constant": CONSTANT, "min_snr": 10.0}


def test_the_margin_says_which_class_and_the_probability_how_surely() -> None:
    fields = scan_fields()
    found = cc.classify(**fields, **CALL, certainty=True)
    np.testing.assert_array_equal(found.classes, cc.classify(**fields, **CALL))
    echo = found.classes != cc.NOISE
    for values in (found.margin, found.probability):
        np.testing.assert_array_equal(np.isnan(values), ~echo)
    np.testing.assert_array_equal(found.margin[echo] < 0, found.classes[echo] == cc.GROUND_CLUTTER)
    np.testing.assert_allclose(found.probability[echo], 1 / (1 + np.exp(-found.margin[echo].astype(float))),
                               rtol=1e-5)
    assert 0.03 < (found.margin[echo] < 0).mean() < 0.9


@pytest.mark.parametrize("window", [(5, 3), (3, 9), None])
@pytest.mark.parametrize("chunks", [None, {"azimuth": 5}, {"scan": 1}])
def test_sweeps_hold_what_the_arrays_do(window: tuple[int, int] | None, chunks: dict[str, int] | None) -> None:
    volume = xr.concat([make_sweep(seed=1), make_sweep(seed=2)], dim="scan")
    volume = volume if chunks is None else volume.chunk(chunks)
    result = sweeps.classify(volume, min_snr=10.0, neighbourhood=window, certainty=True)
    for scan, seed in enumerate((1, 2)):
        found = cc.classify(**scan_fields(seed=seed), **CALL, neighbourhood=window, certainty=True)
        for name, values in (("CLASS", found.classes), ("PROBABILITY", found.probability),
                             ("MARGIN", found.margin)):
            np.testing.assert_array_equal(result[name].isel(scan=scan), values)
    assert result.CLASS.attrs["ancillary_variables"] == "PROBABILITY MARGIN"
    assert result.PROBABILITY.attrs["qualified_variables"] == "CLASS"


def test_sweeps_look_at_the_neighbourhood_by_default(made_sweep: xr.Dataset) -> None:
    given = sweeps.classify(made_sweep, neighbourhood=(5, 3)).CLASS
    alone = sweeps.classify(made_sweep, neighbourhood=None).CLASS
    np.testing.assert_array_equal(sweeps.classify(made_sweep).CLASS, given)
    np.testing.assert_array_equal(sweeps.clean(made_sweep).CLASS, given)
    assert (given != alone).any()
    assert set(made_sweep.clutter.classify(certainty=True)) == {"CLASS", "PROBABILITY", "MARGIN"}
    assert "neighbourhood=(5, 3)" in sweeps.classify(made_sweep).CLASS.attrs["history"]


@pytest.mark.parametrize("rays", ["azimuth", "elevation"])
def test_an_explanation_adds_up(rays: str) -> None:
    ds = make_sweep(rays=rays)
    ds = ds.assign_coords(range=ds.range + 10 * SPACING)  # with gates missing before the first one
    result = sweeps.classify(ds, certainty=True)
    for ray, gate in ((0, 0), (3, 40), (23, 31), (12, 59)):
        place = {rays: float(ds[rays][ray]) + 0.2, "range": float(ds.range[gate]) - 60}
        found = ds.clutter.explain(**place)
        assert found.CLASS == result.CLASS[ray, gate]
        assert float(found.range) == ds.range[gate] and float(found[rays]) == ds[rays][ray]
        if found.CLASS == cc.NOISE:
            assert found.sizes["input"] == 0 and repr(found).startswith("noise at")
            continue
        np.testing.assert_allclose(found.MARGIN, result.MARGIN[ray, gate], rtol=1e-5)
        np.testing.assert_allclose(found.contribution.sum() + found.neighbourhood, found.MARGIN, rtol=1e-4)
        assert found.sel(input="vrad").value == np.float32(ds.VRADH[ray, gate])
        table = repr(found).splitlines()
        assert len(table) == 2 + found.sizes["input"] + 1 and table[2].startswith("dbzh_texture ")


def test_a_turning_value_turns_the_verdict() -> None:
    ds = make_sweep()
    turned = 0
    for ray, gate in np.ndindex(24, 40):
        found = sweeps.explain(ds, azimuth=float(ds.azimuth[ray]), range=float(ds.range[gate]),
                               neighbourhood=None)
        value = float(found.turning_value.sel(input="clutter_likelihood")) if found.sizes["input"] else np.nan
        if np.isnan(value):
            continue
        other = ds.copy(deep=True)
        beyond = value + 1e-4 * np.sign(value - float(ds.CMAP[ray, gate]))
        other.CMAP[ray, gate] = np.clip(beyond, 0, 1)
        classes = sweeps.classify(other, neighbourhood=None).CLASS
        turned += 1
        assert (classes[ray, gate] == cc.PRECIPITATION) != (found.CLASS == cc.PRECIPITATION)
        if turned == 5:
            return
    raise AssertionError("too few verdicts turn on the likelihood")


@pytest.mark.parametrize("place, message", [
    ({"range": 1000}, "azimuth of the ray must be given"), ({"azimuth": 1, "range": 20e3}, "range: the nearest"),
    ({"azimuth": np.nan, "range": 1000}, "azimuth must be a"), ({"azimuth": 170, "range": 1000}, "nearest ray is"),
])
def test_places_outside_the_sweep_are_named(place: dict[str, float], message: str) -> None:
    with pytest.raises(ValueError, match=message):
        make_sweep().isel(azimuth=slice(0, 8)).clutter.explain(**place)


# No result without membership functions.

CLASSIFIERS: dict[str, Callable[..., object]] = {
    "arrays": lambda **options: cc.classify(**scan_fields(), **CALL, **options),
    "chain": lambda **options: cc.process(**scan_fields(), **CALL, what=1, **options),
    "sweep": lambda **options: sweeps.classify(make_sweep(), **options),
    "gate": lambda **options: sweeps.explain(make_sweep(), azimuth=1, range=1000, **options),
}


@contextmanager
def no_descriptors_left() -> Iterator[None]:
    lowest_free = os.open("/", os.O_RDONLY)
    os.close(lowest_free)
    before = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (lowest_free, before[1]))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, before)


@pytest.fixture
def functions(tmp_path: Path) -> Path:
    return Path(shutil.copytree(cc.membership_directory(), tmp_path / "functions"))


@pytest.mark.parametrize("name", CLASSIFIERS)
def test_without_descriptors_there_are_no_classes(name: str) -> None:
    classify = CLASSIFIERS[name]
    classify()
    with no_descriptors_left(), pytest.raises(OSError, match="[Tt]oo many open files|cannot open"):
        classify()
    classify()


@pytest.mark.parametrize("name", CLASSIFIERS)
@pytest.mark.parametrize("damage", [lambda path: os.truncate(path, 0), Path.unlink,
                                    lambda path: (path.unlink(), os.mkfifo(path)),
                                    lambda path: path.write_text("1 2 three")])
def test_a_table_that_is_damaged_in_place_is_named(name: str, damage: Callable[[Path], object],
                                                   functions: Path) -> None:
    table = functions / "cal_mf_sZhh_clutter.dat"
    content, classify = table.read_bytes(), CLASSIFIERS[name]
    classify(membership=functions)
    damage(table)
    with pytest.raises((OSError, ValueError), match="cal_mf_sZhh_clutter.dat"):
        classify(membership=functions)
    table.unlink(missing_ok=True)
    table.write_bytes(content)
    classify(membership=functions)


@pytest.mark.parametrize("options", [{}, {"process": True}])
def test_an_archive_tries_again_what_had_no_functions(options: dict[str, bool], functions: Path, tmp_path: Path,
                                                      monkeypatch: pytest.MonkeyPatch) -> None:
    names = make_archive(tmp_path / "in", 2)
    table = functions / "cal_mf_sPdp_precipi.dat"
    content, plan = table.read_bytes(), archive.plan_jobs

    def plan_and_empty(*arguments: object, **keywords: object) -> object:
        os.truncate(table, 0)
        return plan(*arguments, **keywords)

    monkeypatch.setattr(archive, "plan_jobs", plan_and_empty)
    summary = serial(tmp_path / "in", tmp_path / "out", membership=functions, **options)
    assert (summary.done, summary.failed) == (0, 2)
    assert set(failures(tmp_path / "out")) == set(names)
    table.write_bytes(content)
    monkeypatch.setattr(archive, "plan_jobs", plan)
    assert serial(tmp_path / "in", tmp_path / "out", membership=functions, **options).done == 2
