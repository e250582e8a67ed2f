"""Sweeps that are cut, sectors and range-height scans: which gates and rays are neighbours."""

from __future__ import annotations

import clutterclassifier as cc
import dask
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import sweeps
from conftest import NAMES, SPACING, make_sweep
from entry_point import scan_fields
from sweep_classes import MIN_SNR, expected

pytestmark = pytest.mark.usefixtures("gate_by_gate")


@pytest.mark.parametrize("chunks", [None, {"azimuth": 7}])
@pytest.mark.parametrize("step", ["classify", "clean", "process", "signal_to_noise"])
def test_a_cut_in_range_changes_nothing_inside(step: str, chunks: dict | None) -> None:
    """Except for the gates whose windows reach over the edges of the cut."""
    ds = make_sweep(24, 400)
    ds["DBZH"] = ds.DBZH.dims, scan_fields(24, 400)["dbzh"] - 25  # noise and echo, by range
    data = ds if chunks is None else ds.chunk(chunks)
    keywords = {"what": cc.Stage.CLASSIFICATION | cc.Stage.BLANKING} if step == "process" else {}
    function = getattr(sweeps, step)
    whole = function(data, **keywords).isel(range=slice(200, 350))
    part = function(data.isel(range=slice(200, 350)), **keywords)
    inside = {"range": slice(12, -12)}
    for name in {"CLASS", "DBZH", "SNRH"} & set(part):
        np.testing.assert_array_equal(part[name].isel(inside), whole[name].isel(inside), err_msg=name)
    assert "gates_in_front=200" in part.attrs["history"]
    near = data.isel(range=slice(200, 350)).assign_coords(range=data.range.values[:150])
    other = function(near, **keywords)
    assert any((other[name].isel(inside).values != part[name].isel(inside).values).any()
               for name in {"CLASS", "SNRH"} & set(part))


def test_the_estimate_knows_the_ranges_of_a_cut() -> None:
    loss = 20 * np.log10(np.maximum(np.arange(400), 0.5) * SPACING / 1000)
    random = np.random.default_rng(3)
    ds = make_sweep(60, 400)
    ds["DBZH"] = ds.DBZH.dims, loss - 35 + random.normal(0, 1, (60, 400))
    ds["RHOHV"] = ds.RHOHV.dims, random.random((60, 400))
    del ds.attrs["radar_constant"]
    cut = ds.isel(range=slice(150, 400))
    for data in (cut, cut.chunk({"azimuth": 20})):
        ratio = sweeps.signal_to_noise(data).SNRH
        assert float(ratio.mean()) == pytest.approx(0, abs=1)
        assert abs(float(ratio[:, :40].mean() - ratio[:, -40:].mean())) < 0.5
        assert (sweeps.classify(data).CLASS == cc.NOISE).mean() > 0.99


@pytest.mark.parametrize("first, front", [(0.0, 0), (125.0, 0), (250.0, 0), (490.0, 0), (500.0, 2),
                                          (50125.0, 200), (99999.99, 400)])
def test_where_the_gates_begin(made_sweep: xr.Dataset, first: float, front: int) -> None:
    ds = made_sweep.assign_coords(range=(first + np.arange(60) * SPACING).astype(np.float32))
    result = sweeps.classify(ds, min_snr=MIN_SNR)
    assert (f"gates_in_front={front}" in result.attrs["history"]) == (front > 0)
    if front == 0:
        np.testing.assert_array_equal(result.CLASS, expected(255))


def test_the_spacing_of_a_single_gate(made_sweep: xr.Dataset) -> None:
    one = made_sweep.isel(range=[40])
    with pytest.raises(ValueError, match="meters_between_gates"):
        sweeps.signal_to_noise(one)
    one.range.attrs["meters_between_gates"] = SPACING
    xr.testing.assert_equal(sweeps.signal_to_noise(one).SNRH,
                            sweeps.signal_to_noise(made_sweep).SNRH.isel(range=[40]))


@pytest.mark.parametrize("mode, rays, closed", [
    ("azimuth_surveillance", "azimuth", True), ("ppi", "azimuth", True), (None, "azimuth", True),
    ("sector", "azimuth", False), (b"sector", "azimuth", False), ("Sector ", "azimuth", False),
    ("rhi", "azimuth", False), ("manual_rhi", "azimuth", False),
    ("elevation_surveillance", "azimuth", False),
    ("azimuth_surveillance", "elevation", False), (None, "elevation", False)])
def test_which_scans_close_a_circle(mode: object, rays: str, closed: bool) -> None:
    ds = make_sweep(rays=rays).drop_vars("sweep_mode")
    ds = ds if mode is None else ds.assign(sweep_mode=mode)
    ds = sweeps.classify(ds, min_snr=MIN_SNR)
    for step, keywords in ((sweeps.classify, {"min_snr": MIN_SNR, "remove_isolated": True}),
                           (sweeps.clean, {"min_snr": MIN_SNR}), (sweeps.texture, {}),
                           (sweeps.smooth, {"exclude": (), "rays": 3})):
        own, same, other = (step(ds, **keywords, **wish)
                            for wish in ({}, {"closed": closed}, {"closed": not closed}))
        xr.testing.assert_equal(own, same)
        assert not own.equals(other), step.__name__


def test_a_gap_in_azimuth_alone_opens_no_circle(made_sweep: xr.Dataset) -> None:
    """The entry point knows no azimuths."""
    ds = made_sweep.assign_coords(azimuth=made_sweep.azimuth.values / 4)
    np.testing.assert_array_equal(sweeps.classify(ds, min_snr=MIN_SNR).CLASS, expected(255))


def test_despeckling_keeps_the_ends_of_an_rhi_apart() -> None:
    classes = np.full((24, 60), int(cc.NOISE), np.uint8)
    classes[0, 20] = classes[-1, 20] = classes[-2, 20] = classes[-2, 21] = int(cc.PRECIPITATION)
    for rays, expect in (("azimuth", cc.PRECIPITATION), ("elevation", cc.GROUND_CLUTTER)):
        ds = make_sweep(rays=rays)
        ds["CLASS"] = ds.DBZH.dims, classes
        assert sweeps.despeckle(ds).CLASS[0, 20] == expect


def no_computing(*_: object, **__: object) -> None:
    raise AssertionError("something was computed")


def test_a_chunked_scan_mode_stays_lazy() -> None:
    """Of sweeps that were opened together, the mode is an array along them."""
    for rays in ("azimuth", "elevation"):
        one = make_sweep(rays=rays)
        both = xr.concat([one, one], dim="scan", data_vars="all", coords="minimal").chunk({"scan": 1})
        assert both.sweep_mode.chunks is not None
        with dask.config.set(scheduler=no_computing):
            results = [sweeps.process(both, {"ATTENUATION_ALG": 4}), sweeps.classify(both),
                       sweeps.attenuation(sweeps.classify(both), algorithm="profile_nominal"),
                       sweeps.texture(both)]
        computed = [result.compute(scheduler="synchronous") for result in results]
        np.testing.assert_array_equal(computed[1].CLASS.isel(scan=0), sweeps.classify(one).CLASS)
        np.testing.assert_array_equal(computed[0].RATE.isel(scan=1),
                                      sweeps.process(one, {"ATTENUATION_ALG": 4}).RATE)


def test_a_range_height_scan_by_its_angles() -> None:
    """Where neither the dimension nor a mode in memory says it."""
    for rays in ("azimuth", "elevation"):
        ds = make_sweep(rays=rays).drop_vars("sweep_mode")
        angles = {name: ("ray", ds[name].values) for name in ("azimuth", "elevation")}
        other = ds.drop_vars(["azimuth", "elevation"]).rename({rays: "ray"}).assign_coords(angles)
        np.testing.assert_array_equal(sweeps.classify(other).CLASS, sweeps.classify(ds).CLASS)


@pytest.mark.parametrize("step", [sweeps.classify, sweeps.process])
def test_there_is_no_echo_in_front_of_a_cut(step: object) -> None:
    ds = make_sweep(24, 120)
    beyond = ds.range > 40 * SPACING
    empty = ds.assign({name: ds[name].where(beyond) for name in NAMES.values()})
    keywords = {"what": cc.Stage.CLASSIFICATION} if step is sweeps.process else {"remove_isolated": True}
    whole, part = (step(data, **keywords).CLASS for data in (empty, ds.isel(range=slice(40, None))))
    np.testing.assert_array_equal(part, whole.isel(range=slice(40, None)))
