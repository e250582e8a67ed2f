"""Your own membership functions: check the files of a directory, train them from labelled sweeps, draw them.

The same as ``clutterclassifier membership`` of the program; see docs/membership.md.
"""

from __future__ import annotations

import os
import shutil
from collections.abc import Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np
import xarray as xr

from . import _core
from ._arrays.arguments import finite
from ._arrays.classify import check_options, membership_directory
from ._model.echo import Inputs
from .sweeps._calibration import find_calibration
from .sweeps._classify import examine
from .sweeps._geometry import is_closed
from .sweeps._prepare import prepare
from .sweeps._sweep import RANGE, FieldMap

if TYPE_CHECKING:
    from matplotlib.figure import Figure
    from numpy.typing import ArrayLike, NDArray

    from ._arrays.classify import InputSelection

#: Quantities by the tags of their files.
TAGS = {"sZhh": "SD of reflectivity (dB)", "sZdr": "SD of differential reflectivity (dB)",
        "sPdp": "SD of differential phase (degrees)", "sRhv": "SD of co-polar correlation",
        "Vel": "velocity (m/s)", "LDR": "linear depolarisation ratio (dB)", "Rhv": "co-polar correlation",
        "Wid": "spectrum width (m/s)"}
_LABELS = (0, 1, 3)  # not judged, weather, clutter, as the extension numbers them


class Finding(NamedTuple):
    """What is wrong with a file, or worth knowing; `line` is 0 for the file as a whole."""

    file: str
    line: int
    error: bool
    text: str


class Scores(NamedTuple):
    """How classes compare with labels on rays that took no part in a training.

    ``kept`` is the share of weather that stays precipitation, ``found`` that of clutter that is found,
    ``hss`` the Heidke skill score, ``hss_one_to_nine`` that with a tenth of clutter; strict ones also
    judge the weather beside clutter. The last three are numbers of gates.
    """

    kept: float
    kept_strict: float
    found: float
    hss: float
    hss_strict: float
    hss_one_to_nine: float
    clutter: int
    weather: int
    beside: int


class Training(NamedTuple):
    """A training: weight and lean of each input, scores of each sweep, warnings, names of the files."""

    weights: dict[str, tuple[float, float]]
    scores: list[Scores]
    warnings: list[str]
    files: list[str]


def check(membership: str | os.PathLike[str] | None = None) -> list[Finding]:
    """What is wrong with the files of a directory of membership functions.

    Parameters
    ----------
    membership : path, optional
        The directory; by default the one in use.

    Returns
    -------
    list of Finding
        Empty where all is well.

    Raises
    ------
    OSError
        The directory cannot be read.

    Examples
    --------
    >>> from clutterclassifier import membership
    >>> membership.check()
    []
    """
    directory = membership_directory(membership)
    os.listdir(directory)
    return [Finding(*finding) for finding in _core.find_membership_faults(directory)]


def train(scans: xr.Dataset | Sequence[xr.Dataset], labels: Any, out: str | os.PathLike[str], *,
          inputs: InputSelection = None, fields: FieldMap = None, radar_constant: float | None = None,
          min_snr: float | None = None, texture_window: tuple[int, int] = (5, 3),
          neighbourhood: tuple[int, int] | None = (5, 3), prior: float = 0.2,
          membership: str | os.PathLike[str] | None = None) -> Training:
    """Membership files from labelled sweeps.

    Parameters
    ----------
    scans : xarray.Dataset or several of them
        Sweeps with fields from before the clutter filter.
    labels : array, str, or one for each sweep
        1 clutter, 0 weather, NaN not judged, rays x gates; or the name of a variable that holds it.
    out : path
        Directory to write, new or empty. Tables of quantities that no sweep has are copied from
        `membership`.
    inputs, fields, radar_constant, min_snr, texture_window, neighbourhood
        As for `sweeps.classify`: as the functions will be used.
    prior : float
        Share of clutter among all echoes.
    membership : path, optional
        Directory of the tables to copy; by default the one in use.

    Returns
    -------
    Training

    Raises
    ------
    TypeError, ValueError
        Wrong arguments, or labels that are too few: less than 1,000 gates of a class, or clutter in
        less than two sectors of ten rays.
    FileExistsError
        `out` is not empty.

    Examples
    --------
    >>> import tempfile
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import membership
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=300)
    >>> labels = (scan.TRUTH == cc.GROUND_CLUTTER).values
    >>> with tempfile.TemporaryDirectory() as out:
    ...     found = membership.train(scan, labels, out, inputs=["dbzh_texture", "zdr_texture"])
    >>> sorted(found.weights), found.scores[0].kept > 0.9
    (['dbzh_texture', 'zdr_texture'], True)
    """
    sweeps = [scans] if isinstance(scans, xr.Dataset) else list(scans)
    per_sweep = [labels] if isinstance(scans, xr.Dataset) else _one_each(labels, len(sweeps))
    options = check_options(texture_window, neighbourhood, False, False)
    if not 0.01 <= finite("prior", prior) <= 0.99:
        raise ValueError(f"prior must be within 0.01 and 0.99, not {prior:g}")
    target = Path(out)
    if target.exists() and any(target.iterdir()):
        raise FileExistsError(f"{out} is not empty")
    given = [_labelled(ds, label, number, inputs, fields, radar_constant, min_snr)
             for number, (ds, label) in enumerate(zip(sweeps, per_sweep))]
    gates, rays = options.neighbourhood or (0, 0)
    settings = {"texture_gates": texture_window[0], "texture_rays": texture_window[1],
                "neighbourhood_gates": gates, "neighbourhood_rays": rays, "prior": float(prior)}
    existed = target.exists()
    target.mkdir(parents=True, exist_ok=True)
    try:
        found = _core.train_membership(given, settings, str(target))
    except RuntimeError as error:
        if not existed:
            target.rmdir()
        raise ValueError(str(error)) from None
    _copy_others(Path(membership_directory(membership)), target, found["files"])
    weights = {str(Inputs(1 << bit).name).lower(): (weight, lean) for bit, weight, lean in found["weights"]}
    return Training(weights, [Scores(**scores) for scores in found["scores"]], found["warnings"],
                    found["files"])


def plot(membership: str | os.PathLike[str] | None = None,
         other: str | os.PathLike[str] | None = None) -> Figure:
    """All pairs of a directory as panels: degrees of both classes, and the logarithm of their ratio.

    Parameters
    ----------
    membership : path, optional
        The directory; by default the one in use.
    other : path, optional
        A second directory, drawn over the first with dashed lines.

    Returns
    -------
    matplotlib.figure.Figure

    Raises
    ------
    OSError, ValueError
        A directory holds no pair, or a file cannot be read.

    Examples
    --------
    >>> from clutterclassifier import membership
    >>> len(membership.plot().axes)
    16
    """
    from matplotlib.figure import Figure

    directories = [membership_directory(membership)]
    if other is not None:
        directories.append(membership_directory(other))
    pairs = [{tag: pair for tag in TAGS if (pair := _pair(directory, tag)) is not None} for directory in directories]
    for directory, found in zip(directories, pairs):
        if not found:
            raise ValueError(f"{directory} holds no pair of membership functions")
    tags = [tag for tag in TAGS if any(tag in found for found in pairs)]
    figure = Figure(figsize=(3.2 * len(tags), 5.2), layout="constrained")
    axes = figure.subplots(2, len(tags), squeeze=False, sharex="col")
    for column, tag in enumerate(tags):
        low, high = _interesting([found[tag] for found in pairs if tag in found])
        x = np.linspace(low, high, 600)
        for found, style in zip(pairs, ("-", "--")):
            if tag not in found:
                continue
            rain, clutter = (np.interp(x, *table) for table in found[tag])
            axes[0, column].plot(x, rain, style, color="#0072b2", label="precipitation")
            axes[0, column].plot(x, clutter, style, color="#d55e00", label="ground clutter")
            with np.errstate(divide="ignore"):
                axes[1, column].plot(x, np.log(rain) - np.log(clutter), style, color="#333333")
        axes[1, column].axhline(0, color="#aaaaaa", linewidth=0.8)
        axes[0, column].set(title=tag, ylim=(0, 1))
        axes[1, column].set(xlabel=TAGS[tag])
    axes[0, 0].set(ylabel="degree")
    axes[1, 0].set(ylabel="ln (precipitation / clutter)")
    axes[0, 0].legend(*[one[:2] for one in axes[0, 0].get_legend_handles_labels()], fontsize=8)
    return figure


def _one_each(labels: Any, count: int) -> list[Any]:
    if isinstance(labels, str):
        return [labels] * count
    if len(labels) != count:
        raise ValueError(f"labels: {len(labels)} for {count} sweeps")
    return list(labels)


def _labelled(ds: xr.Dataset, labels: Any, number: int, inputs: InputSelection, fields: FieldMap,
              radar_constant: float | None, min_snr: float | None) -> dict[str, Any]:
    """One sweep as the extension takes it."""
    sweep, how, arrays = examine(ds, fields, inputs, find_calibration(ds, radar_constant, min_snr), "no_echo")
    order = (sweep.rays, RANGE)
    if sweep.dbzh.ndim != 2:
        raise ValueError("scans must be single sweeps, rays x gates")
    if isinstance(labels, str):
        if labels not in ds:
            raise ValueError(f"labels: there is no variable {labels!r}")
        labels = ds[labels]
    if isinstance(labels, xr.DataArray):
        labels = labels.transpose(*order).values
    codes = _codes(labels, sweep.dbzh.transpose(*order).shape)
    values = {name: field.transpose(*order).values for name, field in arrays.items()}
    scan = prepare(values.pop("dbzh"), values, values.pop("filtered", None), how)
    if how.front:
        codes = np.concatenate([np.zeros((len(codes), how.front), np.uint8), codes], 1)
    return {"name": f"sweep {number}", "labels": np.ascontiguousarray(codes), "spacing": how.spacing,
            "radar_constant": scan.radar_constant, "min_snr": scan.min_snr, "inputs": int(scan.inputs),
            "closed": is_closed(ds, sweep.rays, None),
            "fields": {name: np.ascontiguousarray(field, np.float32) for name, field in scan.fields.items()}}


def _codes(labels: ArrayLike, shape: tuple[int, ...]) -> NDArray[np.uint8]:
    values = np.ma.filled(np.ma.asarray(labels, np.float64), np.nan)
    if values.shape != shape:
        raise ValueError(f"labels have the shape {values.shape}, but the sweep has {shape}")
    if not np.isin(values[~np.isnan(values)], (0, 1)).all():
        raise ValueError("labels must be 1 (clutter), 0 (weather) or NaN (not judged)")
    nothing, weather, clutter = _LABELS
    return np.where(values == 1, clutter, np.where(values == 0, weather, nothing)).astype(np.uint8)


def _copy_others(source: Path, target: Path, trained: Sequence[str]) -> None:
    """Copies the tables of quantities that were not trained."""
    tags = {name.split("_")[2] for name in trained}
    for path in sorted(source.glob("cal_mf_*.dat")):
        if path.name.split("_")[2] not in tags:
            shutil.copyfile(path, target / path.name)


def _pair(directory: str, tag: str) -> tuple[NDArray[Any], ...] | None:
    """The tables of precipitation and clutter, each abscissas and degrees."""
    names = [f"cal_mf_{tag}_{suffix}.dat" for suffix in ("precipi", "clutter")]
    if not all(os.path.exists(os.path.join(directory, name)) for name in names):
        return None
    return tuple(np.array(_core.read_membership_table(directory, name)).T for name in names)


def _interesting(pairs: Sequence[tuple[NDArray[Any], ...]]) -> tuple[float, float]:
    """The abscissas between which something is decided, with the neutral ends beside them."""
    low, high = np.inf, -np.inf
    for rain, clutter in pairs:
        x = np.union1d(rain[0], clutter[0])
        decides = np.flatnonzero(np.abs(np.interp(x, *rain) - np.interp(x, *clutter)) > 0.01)
        if decides.size:
            low, high = min(low, x[decides[0]]), max(high, x[decides[-1]])
    return (low, high) if low < high else (0.0, 1.0)
