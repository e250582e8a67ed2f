"""Pictures of sweeps with matplotlib: reflectivity beside classes."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .. import sweeps
from .._model.echo import MISSING, EchoClass
from ..sweeps._codes import CLASS, library_codes
from ..sweeps._geometry import is_rhi
from ..sweeps._sweep import RANGE, FieldMap, find_sweep
from ._view import View, view_of

if TYPE_CHECKING:
    from matplotlib.axes import Axes
    from matplotlib.figure import Figure

#: A path through a perceptual colour space whose lightness only falls, from -10 to 70 dBZ.
_REFLECTIVITY = """
    f0f4f9 eaf1fa e5effa dfecfb d9eafc cfe6fd c4e3ff bae0fe aeddff 9cd8ff 89d4ff 6fd1fd 46d5e4 29dabc 41d997
    4fd77c 64d35a 91c925 b2bd00 c8b108 d7a404 db9400 df8200 df6d00 df5300 dc3116 cd142f b9003f 9f0051 85005d
    6a0062 4f0060 350058""".split()
_LOWEST, _HIGHEST = -10.0, 70.0

#: Colours that colour-blind readers can separate; noise stays in the background.
CLASS_COLOURS = {
    EchoClass.PRECIPITATION: "#0072b2", EchoClass.GROUND_CLUTTER: "#d55e00",
    EchoClass.SEA_CLUTTER: "#009e73", EchoClass.TURBINE_CLUTTER: "#cc79a7", EchoClass.NOISE: "#fbf6e6",
}
_NO_DATA = "#d5d8dc"
_LINES = {"color": "#333333", "linewidth": 0.5, "alpha": 0.45}


def _draw_axes(axes: Axes, view: View, rhi: bool) -> None:
    """Labels in km, and circles at round ranges."""
    from matplotlib import patheffects
    from matplotlib.patches import Circle
    from matplotlib.ticker import MaxNLocator

    left, right, bottom, top = view.extent
    axes.set(xlim=(left, right), ylim=(bottom, top))
    axes.tick_params(labelsize=9, color="#777777", length=3)
    axes.xaxis.label.set_size(9)
    axes.yaxis.label.set_size(9)
    for spine in axes.spines.values():
        spine.set_color("#777777")
    if rhi:
        axes.set(xlabel="distance along the ground (km)", ylabel="height above the antenna (km)",
                 aspect="auto")
        axes.grid(**_LINES)
        return
    axes.set(xlabel="east of the radar (km)", ylabel="north of the radar (km)", aspect="equal")
    axes.xaxis.set_major_locator(MaxNLocator(5, steps=[1, 2, 5, 10]))
    axes.yaxis.set_major_locator(MaxNLocator(5, steps=[1, 2, 5, 10]))
    for radius in MaxNLocator(5, steps=[1, 2, 5, 10]).tick_values(0, right):
        if 0 < radius < right:
            axes.add_patch(Circle((0, 0), radius, fill=False, **_LINES))
            halo = [patheffects.withStroke(linewidth=2, foreground="white", alpha=0.8)]
            axes.text(radius * np.sin(np.pi / 4), radius * np.cos(np.pi / 4), f"{radius:g} km", fontsize=8,
                      ha="center", va="center", color="#333333", path_effects=halo)
    for angle in np.radians(np.arange(0, 360, 30)):
        axes.plot([0, right * np.sin(angle)], [0, right * np.cos(angle)], **_LINES)


def _draw_reflectivity(axes: Axes, view: View, dbzh: NDArray[Any]) -> Any:
    from matplotlib.colors import LinearSegmentedColormap

    colours = LinearSegmentedColormap.from_list("clutter_dbzh", ["#" + colour for colour in _REFLECTIVITY])
    colours.set_bad(_NO_DATA)
    values = view.image(dbzh.astype(np.float32), np.nan)
    shown = np.ma.masked_invalid((values - _LOWEST) / (_HIGHEST - _LOWEST))
    _show(axes, view, colours(shown))
    return colours


def _show(axes: Axes, view: View, rgba: NDArray[Any]) -> None:
    """A picture whose pixels are transparent where the radar did not measure."""
    rgba[~view.inside] = 0
    axes.imshow(rgba, origin="lower", extent=view.extent, interpolation="nearest", aspect=axes.get_aspect())


def _draw_classes(axes: Axes, view: View, classes: NDArray[np.uint8]) -> None:
    from matplotlib.colors import to_rgba

    table = np.tile(np.array(to_rgba(_NO_DATA)), (256, 1))
    for echo, colour in CLASS_COLOURS.items():
        table[echo] = to_rgba(colour)
    _show(axes, view, table[view.image(classes, MISSING)])


def _draw_legend(axes: Axes, classes: NDArray[np.uint8]) -> None:
    """The classes that occur, with their shares of the gates."""
    from matplotlib.patches import Patch

    handles = []
    for code, colour in (*CLASS_COLOURS.items(), (MISSING, _NO_DATA)):
        share = float(np.mean(classes == code))
        if share == 0:
            continue
        word = "no data" if code == MISSING else EchoClass(code).meaning.replace("_", " ")
        handles.append(Patch(facecolor=colour, edgecolor="#555555", linewidth=0.6,
                             label=f"{word}  {100 * share:.1f} %"))
    axes.axis("off")
    axes.legend(handles=handles, ncol=2 if len(handles) < 5 else 3, loc="center left", frameon=False,
                fontsize=9, borderaxespad=0, borderpad=0, handlelength=1.6, handleheight=1.0,
                columnspacing=2.5)


def _titles(ds: xr.Dataset, rhi: bool) -> tuple[str, str]:
    """Radar, angle and time, as far as the dataset has them."""
    heading = next((str(ds.attrs[key]) for key in ("instrument_name", "site_name", "title", "source")
                    if ds.attrs.get(key)), "Radar sweep")
    words = []
    if "sweep_fixed_angle" in ds and ds["sweep_fixed_angle"].size == 1:
        words.append(f"{'azimuth' if rhi else 'elevation'} {float(ds['sweep_fixed_angle']):.1f}°")
    times = np.asarray(ds["time"].values if "time" in ds else ())
    if times.dtype.kind == "M" and not np.isnat(times).all():
        first = np.fmin.reduce(times, axis=None).astype("datetime64[s]")
        words.append(str(first).replace("T", " ") + " UTC")
    return heading, "    ".join(words)


def plot(ds: xr.Dataset, *, fields: FieldMap = None, title: str | None = None,
         reach_km: float | None = None, figure: Figure | None = None, **keywords: Any) -> Figure:
    """Reflectivity beside classes, over km axes.

    Parameters
    ----------
    ds : xarray.Dataset
        One sweep, a plan position or a range-height scan. It is classified unless it has a variable
        ``CLASS`` and no keywords are given.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``.
    title : str, optional
        By default the radar, the angle and the time, as far as the dataset has them.
    reach_km : float, optional
        Range to show, above 0; by default all.
    figure : matplotlib.figure.Figure, optional
        Where to draw; by default a new figure.
    **keywords
        Of `clutterclassifier.sweeps.classify`.

    Returns
    -------
    matplotlib.figure.Figure

    Raises
    ------
    ValueError
        More than one sweep, no angles of the rays, no gate at a positive range, a reach that is not
        positive.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> figure = cc.synthetic_scan(5, nrays=90, ngates=200).clutter.plot()
    >>> figure.savefig("classes.png")  # doctest: +SKIP
    """
    sweep = find_sweep(ds, fields)
    if sweep.dbzh.ndim > 2:
        raise ValueError(f"one sweep can be shown, not all along {sweep.dbzh.dims}: choose one with isel")
    if keywords or CLASS not in ds:
        ds = sweeps.classify(ds, fields=fields, **keywords)
    rhi = is_rhi(ds, sweep.rays)
    order = (sweep.rays, RANGE)
    dbzh = sweep.dbzh.transpose(*order).values
    classes = library_codes(ds[keywords.get("name", CLASS)]).transpose(*order).values
    view = view_of(ds, sweep, rhi, reach_km)
    figure = _new_figure(rhi) if figure is None else figure
    height = figure.get_figheight()
    grid = figure.add_gridspec(2, 2, height_ratios=[1, 0.06 if rhi else 0.035], left=0.065, right=0.985,
                               bottom=0.75 / height, top=1 - 1.05 / height, wspace=0.16,
                               hspace=0.4 if rhi else 0.22)
    left, right = figure.add_subplot(grid[0, 0]), figure.add_subplot(grid[0, 1])
    for axes, heading in ((left, f"Horizontal reflectivity ({sweep.dbzh.name})"), (right, "Classes")):
        _draw_axes(axes, view, rhi)
        axes.set_title(heading, loc="left", fontsize=11, fontweight="bold")
    colours = _draw_reflectivity(left, view, dbzh)
    _draw_classes(right, view, classes)
    _draw_scale(figure, figure.add_subplot(grid[1, 0]), colours)
    _draw_legend(figure.add_subplot(grid[1, 1]), classes)
    heading, below = _titles(ds, rhi) if title is None else (title, "")
    figure.text(0.065, 1 - 0.27 / height, heading, fontsize=15, fontweight="bold", va="center")
    figure.text(0.065, 1 - 0.57 / height, below, fontsize=10, color="#555555", va="center")
    return figure


def _new_figure(rhi: bool) -> Figure:
    from matplotlib import pyplot

    return pyplot.figure(figsize=(12.5, 5.4) if rhi else (12.5, 7.8), facecolor="white")


def _draw_scale(figure: Figure, axes: Axes, colours: Any) -> None:
    from matplotlib.cm import ScalarMappable
    from matplotlib.colors import Normalize

    scale = figure.colorbar(ScalarMappable(Normalize(_LOWEST, _HIGHEST), colours), cax=axes,
                            orientation="horizontal", extend="both")
    scale.set_label("dBZ", fontsize=9)
    scale.ax.tick_params(labelsize=9, length=3)
    scale.outline.set_linewidth(0.6)
