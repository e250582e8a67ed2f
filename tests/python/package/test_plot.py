"""Pictures: right colours at the right places."""

from __future__ import annotations

import io
from collections.abc import Iterator

import clutterclassifier as cc
import matplotlib
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import plot, sweeps
from conftest import SPACING, make_sweep

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402
from matplotlib.colors import to_rgb  # noqa: E402


@pytest.fixture(autouse=True)
def closed_figures() -> Iterator[None]:
    yield
    pyplot.close("all")


def four_quarters() -> xr.Dataset:
    """One class in each quarter of the compass, and gates without data beyond half of the range."""
    ds = make_sweep(72, 80)
    quarter = (ds.azimuth.values // 90).astype(int)
    classes = np.array([cc.PRECIPITATION, cc.NOISE, cc.GROUND_CLUTTER, cc.SEA_CLUTTER], np.uint8)[quarter]
    classes = np.where(np.arange(80) < 40, classes[:, np.newaxis], np.uint8(cc.MISSING))
    dbzh = np.where(np.arange(80) < 40, -20.0 + 30 * quarter[:, np.newaxis], np.nan)
    return ds.assign(CLASS=(ds.DBZH.dims, classes), DBZH=(ds.DBZH.dims, dbzh))


def colour_at(figure: pyplot.Figure, panel: int, x_km: float, y_km: float) -> np.ndarray:
    """The colour that is seen at a place of one panel."""
    figure.canvas.draw()
    seen = np.asarray(figure.canvas.buffer_rgba())[::-1]
    column, row = figure.axes[panel].transData.transform((x_km, y_km)).round().astype(int)
    return seen[row, column, :3] / 255


#: Of the paper, where the radar did not look.
WHITE = pytest.approx([1, 1, 1])


def test_classes_and_reflectivity_are_drawn_where_they_were_measured() -> None:
    figure = four_quarters().clutter.plot()
    near = 5.0  # km; data end at 10
    places = {cc.PRECIPITATION: (near, near), cc.NOISE: (near, -near), cc.GROUND_CLUTTER: (-near, -near),
              cc.SEA_CLUTTER: (-near, near)}
    for echo, place in places.items():
        expected = to_rgb(plot.CLASS_COLOURS[echo])
        np.testing.assert_allclose(colour_at(figure, 1, *place), expected, atol=3e-3)
    brightness = [colour_at(figure, 0, *place).sum() for place in places.values()]
    assert brightness == sorted(brightness, reverse=True) and brightness[0] > brightness[-1] + 0.5
    for panel in (0, 1):
        assert colour_at(figure, panel, 11.5, 11.5) == pytest.approx(to_rgb("#d5d8dc"), abs=3e-3)
        assert colour_at(figure, panel, 19.0, 19.0) == WHITE  # beyond the last gate


def test_a_sector_leaves_the_rest_empty() -> None:
    figure = four_quarters().isel(azimuth=slice(0, 18)).clutter.plot()
    assert colour_at(figure, 1, 5.0, 5.0) != WHITE
    for place in ((5.0, -5.0), (-5.0, -5.0), (-5.0, 5.0)):
        assert colour_at(figure, 1, *place) == WHITE


def test_the_first_ray_goes_on_across_north() -> None:
    ds = four_quarters().assign_coords(azimuth=np.arange(72) * 5.0)
    place = 8 * np.sin(np.radians(-1.8)), 8 * np.cos(np.radians(-1.8))
    expected = to_rgb(plot.CLASS_COLOURS[cc.PRECIPITATION])
    np.testing.assert_allclose(colour_at(ds.clutter.plot(), 1, *place), expected, atol=3e-3)


def test_rays_in_any_order() -> None:
    ds = four_quarters()
    mixed = ds.isel(azimuth=np.random.default_rng(1).permutation(72))
    one, two = (data.clutter.plot().axes[1].images[0].get_array() for data in (ds, mixed))
    np.testing.assert_array_equal(one, two)


def test_axes_legend_and_titles() -> None:
    ds = four_quarters().assign_attrs(instrument_name="the radar")
    figure = ds.clutter.plot()
    reflectivity, classes, scale, legend = figure.axes
    for axes in (reflectivity, classes):
        assert axes.get_aspect() == 1 and "(km)" in axes.get_xlabel()
        assert axes.get_xlim() == axes.get_ylim() == (-80 * SPACING / 1000, 80 * SPACING / 1000)
    assert scale.get_xlabel() == "dBZ"
    words = [text.get_text() for text in legend.get_legend().get_texts()]
    assert words == ["precipitation  12.5 %", "ground clutter  12.5 %", "sea clutter  12.5 %",
                     "noise  12.5 %", "no data  50.0 %"]
    shown = [text.get_text() for text in figure.texts]
    assert shown[0] == "the radar"
    assert "elevation 1.5°" in shown[1] and "2024-05-01 12:00:00 UTC" in shown[1]
    assert "DBZH" in reflectivity.get_title("left")


def test_a_range_height_scan_seen_from_the_side() -> None:
    ds = make_sweep(40, 80, rays="elevation")
    classes = np.full(ds.DBZH.shape, cc.NOISE, np.uint8)
    classes[ds.elevation.values < 20] = cc.PRECIPITATION
    figure = ds.assign(CLASS=(ds.DBZH.dims, classes)).clutter.plot()
    for (distance, height), echo in {(11.2, 1.0): cc.PRECIPITATION, (11.2, 6.2): cc.NOISE}.items():
        expected = to_rgb(plot.CLASS_COLOURS[echo])
        np.testing.assert_allclose(colour_at(figure, 1, distance, height), expected, atol=3e-3)
    assert "height" in figure.axes[1].get_ylabel()


def test_the_sweep_is_classified_where_it_has_no_classes(made_sweep: xr.Dataset) -> None:
    given = sweeps.classify(made_sweep, min_snr=30.0)
    one, two, other = (figure.axes[1].images[0].get_array() for figure in (
        given.clutter.plot(), made_sweep.clutter.plot(min_snr=30.0), made_sweep.clutter.plot()))
    np.testing.assert_array_equal(one, two)
    assert (one != other).any()


def test_a_picture_can_be_written(made_sweep: xr.Dataset) -> None:
    figure = pyplot.figure(figsize=(6, 4))
    assert made_sweep.chunk().clutter.plot(figure=figure, title="mine", reach_km=10) is figure
    assert figure.axes[0].get_xlim() == (-10, 10) and figure.texts[0].get_text() == "mine"
    for kind, head in (("png", b"\x89PNG"), ("svg", b"<?xml"), ("pdf", b"%PDF")):
        stream = io.BytesIO()
        figure.savefig(stream, format=kind)
        assert stream.getvalue().startswith(head)


def test_one_sweep_at_a_time(made_sweep: xr.Dataset) -> None:
    with pytest.raises(ValueError, match="isel"):
        made_sweep.expand_dims("scan").clutter.plot()
    with pytest.raises(ValueError, match="azimuth"):
        made_sweep.drop_vars("azimuth").clutter.plot()


def test_a_lazy_sweep_has_the_same_title(made_sweep: xr.Dataset) -> None:
    times = made_sweep.time.values + np.arange(24)[::-1] * np.timedelta64(1, "s")
    times[3] = np.datetime64("NaT")
    ds = made_sweep.assign_coords(time=("azimuth", times))
    lazy = ds.assign_coords(time=ds.time.chunk()).chunk()
    for data in (ds, lazy):
        assert "2024-05-01 12:00:00 UTC" in data.clutter.plot().texts[1].get_text()
    assert "UTC" not in ds.isel(azimuth=[3]).clutter.plot().texts[1].get_text()


def test_gates_that_cannot_be_shown_are_named(made_sweep: xr.Dataset) -> None:
    for gates, words in (([], "range is empty"), ([0, 1, 20, 50], "range must rise evenly"),
                         ([0], "range needs the attribute meters_between_gates")):
        with pytest.raises(ValueError, match=words):
            made_sweep.isel(range=gates).clutter.plot()
    with pytest.raises(ValueError, match="range: the last gate ends at -1"):
        made_sweep.assign_coords(range=made_sweep.range - 16e3).clutter.plot()


@pytest.mark.parametrize("first", [0.0, 5125.0])
def test_a_single_gate_has_its_place(first: float) -> None:
    one = four_quarters().isel(range=[0]).assign_coords(range=[first])
    one.range.attrs["meters_between_gates"] = SPACING
    figure = one.clutter.plot()
    assert figure.axes[1].get_xlim()[1] == pytest.approx(first / 1000 + 0.125)
    place = max(first / 1000, 0.06) * np.sqrt(0.5)
    np.testing.assert_allclose(colour_at(figure, 1, place, place), to_rgb(
        plot.CLASS_COLOURS[cc.PRECIPITATION]), atol=3e-3)


@pytest.mark.parametrize("reach", [0, -10, np.nan])
def test_a_reach_that_shows_nothing_is_named(made_sweep: xr.Dataset, reach: float) -> None:
    with pytest.raises(ValueError, match="reach_km"):
        made_sweep.clutter.plot(reach_km=reach)
