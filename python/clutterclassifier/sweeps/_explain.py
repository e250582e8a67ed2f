"""Why a gate of a sweep has its class."""

from __future__ import annotations

from typing import Any

import numpy as np
import xarray as xr

from .. import _core
from .._arrays.arguments import finite
from .._arrays.classify import (ARRAYS, InputSelection, Membership, as_contiguous, check_options,
                                membership_directory, settings_of)
from .._model.echo import EchoClass, Inputs
from .._model.fields import BY_ARGUMENT
from ._calibration import find_calibration
from ._classify import NEIGHBOURHOOD, examine
from ._geometry import is_closed, is_rhi
from ._prepare import prepare
from ._sweep import RANGE, FieldMap, Sweep

_SHARES = ("value", "precipitation", "clutter", "contribution", "turning_value")
_WORDS = {"value": "the field's value, or its texture", "precipitation": "degree in precipitation",
          "clutter": "degree in clutter", "contribution": "logarithm of the ratio of the degrees",
          "turning_value": "nearest value that would turn the verdict"}


class Explanation(xr.Dataset):
    """A dataset with a line for each input that prints as a table."""

    __slots__ = ()

    def __repr__(self) -> str:
        try:
            return _table(self)
        except (AttributeError, KeyError):  # a part of an explanation
            return super().__repr__()


def explain(ds: xr.Dataset, *, range: float, azimuth: float | None = None, elevation: float | None = None,
            fields: FieldMap = None, inputs: InputSelection = None, radar_constant: float | None = None,
            min_snr: float | None = None, membership: Membership = None,
            texture_window: tuple[int, int] = (5, 3),
            neighbourhood: tuple[int, int] | None = NEIGHBOURHOOD, all_classes: bool = False,
            closed: bool | None = None) -> xr.Dataset:
    """Why the gate at a place has its class.

    Parameters
    ----------
    ds : xarray.Dataset
        One sweep.
    range : float
        Range of the gate, m; the nearest one is explained.
    azimuth, elevation : float
        Angle of the ray, degrees: the azimuth, of a range-height scan the elevation.
    fields, inputs, radar_constant, min_snr, membership, texture_window, neighbourhood, all_classes, closed
        As for `classify`.

    Returns
    -------
    xarray.Dataset
        For each ``input`` in use its ``value``, the degrees in ``precipitation`` and ``clutter``, the
        ``contribution`` to the margin and the ``turning_value`` that would turn the verdict if
        nothing else changed (NaN: none would); ``neighbourhood`` (its share of the margin),
        ``MARGIN``, ``PROBABILITY`` and ``CLASS`` of the gate; the ``deciding`` and the ``turning`` input.
        It prints as a table.

    Raises
    ------
    ValueError
        The sweep has no gate there.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> print(scan.clutter.explain(azimuth=90, range=15e3, inputs="textures"))  # doctest: +ELLIPSIS
    precipitation at azimuth 90.00 degrees, elevation 0.50 degrees, range 15.000 km: margin ...
    input                    value  precipitation   clutter  contribution   turns at
    dbzh_texture ...
    zdr_texture ...
    phidp_texture ...
    rhohv_texture ...
    neighbourhood ...
    """
    options = check_options(texture_window, neighbourhood, False, all_classes)
    sweep, how, arrays = examine(ds, fields, inputs, find_calibration(ds, radar_constant, min_snr), "mask")
    if sweep.dbzh.ndim > 2:
        raise ValueError(f"one sweep can be explained, not all along {sweep.dbzh.dims}: choose one by isel")
    ray, gate = _ray_at(ds, sweep, azimuth, elevation), _gate_at(ds, sweep, range)
    values = {name: field.transpose(sweep.rays, RANGE).values for name, field in arrays.items()}
    scan = prepare(values.pop("dbzh"), values, values.pop("filtered", None), how)
    settings = settings_of(how.spacing, scan.radar_constant, scan.min_snr, scan.inputs, options,
                           not is_closed(ds, sweep.rays, closed))
    contiguous = {name: as_contiguous(field) for name, field in scan.fields.items()}
    found = _core.explain(membership_directory(membership), contiguous, settings, ray, gate + how.front)
    place = {name: ds[name].isel({sweep.rays: ray}, missing_dims="ignore").variable
             for name in ("azimuth", "elevation") if name in ds.variables}
    return _dataset(found, place | {RANGE: ds[RANGE][gate].variable})


def _ray_at(ds: xr.Dataset, sweep: Sweep, azimuth: float | None, elevation: float | None) -> int:
    rhi = is_rhi(ds, sweep.rays)
    name, wanted = ("elevation", elevation) if rhi else ("azimuth", azimuth)
    if wanted is None:
        raise ValueError(f"{name} of the ray must be given")
    if name not in ds.variables or ds[name].dims != (sweep.rays,):
        raise ValueError(f"the dataset has no {name} along {sweep.rays}")
    away = np.abs(ds[name].values - finite(name, wanted))
    if not rhi:
        away = np.abs((away + 180) % 360 - 180)
    ray = int(np.nanargmin(away))
    steps = np.diff(np.sort(ds[name].values))
    if away[ray] > max(1.0, float(np.nanmedian(steps)) if steps.size else 0.0):
        raise ValueError(f"{name}: the nearest ray is {away[ray]:g} degrees from {wanted:g}")
    return ray


def _gate_at(ds: xr.Dataset, sweep: Sweep, wanted: float) -> int:
    away = np.abs(ds[RANGE].values - finite("range", wanted))
    gate = int(away.argmin())
    if away[gate] > sweep.spacing:
        raise ValueError(f"range: the nearest gate is {away[gate]:g} m from {wanted:g} m")
    return gate


def _input_name(number: int) -> str:
    if 0 <= number < len(ARRAYS):
        return str(Inputs(1 << number).name).lower()
    return "neighbourhood" if number == len(ARRAYS) else "none"


def _dataset(found: dict[str, Any], place: dict[str, Any]) -> Explanation:
    used = [bit for bit in ARRAYS if bit & found["inputs"]]
    rows = [found["shares"][int(bit).bit_length() - 1] for bit in used]
    columns = np.array(rows, np.float64).reshape(len(rows), len(_SHARES))
    units = [BY_ARGUMENT[ARRAYS[bit]].units for bit in used]
    variables: dict[str, Any] = {name: ("input", column, {"long_name": _WORDS[name]})
                                 for name, column in zip(_SHARES, columns.T)}
    variables |= {"units": ("input", np.array(units, dtype=str)), "neighbourhood": found["neighbourhood"],
                  "MARGIN": found["margin"], "PROBABILITY": found["probability"],
                  "CLASS": np.uint8(found["class"]), "deciding": _input_name(found["deciding"]),
                  "turning": _input_name(found["turning"])}
    names = np.array([str(bit.name).lower() for bit in used], dtype=str)
    return Explanation(variables, {"input": names, **place})


def _table(found: xr.Dataset) -> str:
    """One line for each input."""
    code = int(found.CLASS)
    meaning = EchoClass(code).meaning.replace("_", " ") if code in set(EchoClass) else "not measured"
    angles = ", ".join(f"{name} {float(found[name]):.2f} degrees" for name in ("azimuth", "elevation")
                       if name in found)
    lines = [f"{meaning} at {angles}, range {float(found[RANGE]) / 1000:.3f} km"]
    if found.sizes["input"]:
        lines[0] += (f": margin {float(found.MARGIN):.3g}, probability of precipitation "
                     f"{float(found.PROBABILITY):.3g}, decided by {found.deciding.item()}")
        lines.append(f"{'input':<20}{'value':>10}{'precipitation':>15}{'clutter':>10}{'contribution':>14}"
                     f"{'turns at':>11}")
    for number, name in enumerate(found.input.values):
        value, rain, clutter, share, turning = (float(found[key][number]) for key in _SHARES)
        lines.append(f"{name:<20}{value:>10.4g}{rain:>15.3g}{clutter:>10.3g}{share:>14.3g}"
                     f"{'-' if np.isnan(turning) else format(turning, '.4g'):>11}")
    if float(found.neighbourhood):
        lines.append(f"{'neighbourhood':<20}{float(found.neighbourhood):>49.3g}")
    return "\n".join(lines)
