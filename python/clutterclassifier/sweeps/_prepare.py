"""Prepares the scans of sweeps for the classification: calibration, no echo, gates before the first one."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays.arguments import NO_ECHO
from .._model.echo import Inputs
from .._model.fields import FILTER_SHARE
from ._apply import is_no_echo, with_front
from ._calibration import Calibration, estimated
from ._sweep import FieldMap, Sweep, is_unfiltered, other_reflectivity

def is_filtered(one: NDArray[Any], other: NDArray[Any]) -> bool:
    """Whether two reflectivities differ as they do before and after a clutter filter."""
    known = other[~np.isnan(other)]
    if known.size == 0 or (known == known[0]).all():
        return False
    same = (one == other) | (np.isnan(one) & np.isnan(other))
    return bool(np.count_nonzero(~same) >= FILTER_SHARE * same.size)


def filtered_reflectivity(ds: xr.Dataset, sweep: Sweep, fields: FieldMap) -> xr.DataArray | None:
    """The reflectivity that shows whether the velocity is from after the clutter filter; None where
    the caller or the names of the fields say it."""
    named = {str(key).lower() for key in fields or {}}
    velocity = sweep.fields.get("vrad")
    if velocity is None or named & {"vrad", "vradh"} or is_unfiltered(velocity):
        return None
    return other_reflectivity(ds, sweep.dbzh)


class How(NamedTuple):
    """How scans are prepared; the same for all scans of a sweep."""

    spacing: float
    front: int  # gates that are missing before the first one
    calibration: Calibration
    inputs: Inputs
    no_echo: float | None
    missing: str


class Prepared(NamedTuple):
    """One scan, ready to be classified."""

    fields: dict[str, NDArray[Any]]
    radar_constant: float
    min_snr: float
    inputs: Inputs
    unknown: NDArray[np.bool_] | None  # gates that were not measured, where they get a class of their own


def prepare(dbzh: NDArray[Any], others: dict[str, NDArray[Any]], filtered: NDArray[Any] | None,
            how: How) -> Prepared:
    """One scan: `others` are its further fields, `filtered` its reflectivity after the clutter filter."""
    if dbzh.dtype.kind != "f":
        dbzh = dbzh.astype(np.float64)
    constant, ratio, _ = how.calibration
    if constant is None:
        constant, ratio = estimated(dbzh, others.get("rhohv"), how.spacing, ratio, how.no_echo, how.front)
    assert ratio is not None  # it is known wherever the constant is
    inputs = how.inputs
    if filtered is not None and is_filtered(dbzh, filtered):
        inputs &= ~Inputs.VRAD
    unknown = np.isnan(dbzh) if how.missing == "mask" else None
    fields: dict[str, Any] = {"dbzh": dbzh, **others}
    if how.missing != "keep":
        nothing = is_no_echo(dbzh, how.no_echo) | np.isnan(dbzh)
        if nothing.any():
            fields["dbzh"] = np.where(nothing, dbzh.dtype.type(NO_ECHO), dbzh)
    fields = {name: with_front(values, how.front, NO_ECHO if name == "dbzh" else np.nan)
              for name, values in fields.items()}
    return Prepared(fields, constant, ratio, inputs, unknown)
