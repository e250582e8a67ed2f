"""Sweeps as xarray datasets: the variable for each quantity, and where the gates are."""

from __future__ import annotations

from collections.abc import Hashable, Mapping
from typing import NamedTuple, Union

import numpy as np
import xarray as xr

from .._arrays.arguments import gate_spacing
from .._model.fields import BY_ARGUMENT, BY_NAME, QUANTITIES, is_unfiltered_name

#: Variables by quantity: ``{"dbzh": "my_reflectivity", "ldr": None}``; None omits a quantity.
FieldMap = Union[Mapping[str, Union[Hashable, None]], None]

RANGE = "range"


class Sweep(NamedTuple):
    """The fields and sizes of a dataset that functions on arrays need."""

    fields: dict[str, xr.DataArray]
    rays: str  # the dimension along which they lie
    spacing: float  # of the gates, m
    front: int = 0  # gates that are missing before the first one

    @property
    def dbzh(self) -> xr.DataArray:
        return self.fields["dbzh"]

    @property
    def is_lazy(self) -> bool:
        return any(field.chunks is not None for field in self.fields.values())


def ray_dimension(field: xr.DataArray) -> str:
    """The dimension of the rays: azimuth, of an RHI elevation, else the only one beside range."""
    others = [str(name) for name in field.dims if name != RANGE]
    if RANGE not in field.dims or not others:
        raise ValueError(f"{field.name} must have the dimensions (azimuth, range), not {field.dims}")
    if 0 in field.shape:
        raise ValueError(f"{field.name} is empty along {field.dims[field.shape.index(0)]}")
    if np.isnan(field.shape).any():
        raise ValueError(f"{field.name} has chunks of unknown sizes: see compute_chunk_sizes() of Dask")
    for name in ("azimuth", "elevation"):
        if name in others:
            return name
    if len(others) > 1:
        raise ValueError(f"which of the dimensions {field.dims} of {field.name} is that of the rays? "
                         "It must be called azimuth or elevation")
    return others[0]


def has_gates(field: xr.DataArray) -> bool:
    """Whether a variable holds one value a gate."""
    return RANGE in field.dims and field.ndim > 1


def _overrides(ds: xr.Dataset, fields: FieldMap) -> dict[str, Hashable | None]:
    """The caller's choices by names of arguments; CfRadial names work as well."""
    choices: dict[str, Hashable | None] = {}
    if fields is not None and not isinstance(fields, Mapping):
        raise TypeError(f"fields must be a dict such as {{'dbzh': 'my_name'}}, not {fields!r}")
    for key, name in (fields or {}).items():
        quantity = BY_ARGUMENT.get(str(key).lower()) or BY_NAME.get(str(key).upper())
        if quantity is None:
            raise ValueError(f"fields: no such quantity: {key!r} ({', '.join(BY_ARGUMENT)})")
        if name is not None and name not in ds:
            raise ValueError(f"fields: the dataset has no variable {name!r}")
        choices[quantity.argument] = name
    return choices


def find_fields(ds: xr.Dataset, fields: FieldMap = None, *, corrected: bool = False
                ) -> dict[str, xr.DataArray]:
    """The variables of a sweep by names of arguments: those of `fields`, else by their known names.

    Names from before the clutter filter come first, for the classification; for the steps after it
    (`corrected`) the CfRadial name itself, such as DBZH.
    """
    choices = _overrides(ds, fields)
    taken = set(choices.values())
    known = {str(name).lower(): name for name, variable in ds.data_vars.items()
             if has_gates(variable) and variable.dtype.kind in "fiu" and name not in taken}
    found = {}
    for quantity in QUANTITIES:
        if quantity.argument in choices:
            name = choices[quantity.argument]
        else:
            name = next((known[alias] for alias in quantity.aliases if alias in known), None)
            if corrected and quantity.name in known.values():
                name = quantity.name
        if name is not None:
            found[quantity.argument] = ds[name]
    return found


def is_unfiltered(field: xr.DataArray) -> bool:
    """Whether a field is from before the clutter filter, by its name or its name in the file."""
    return is_unfiltered_name(str(field.name)) or is_unfiltered_name(str(field.attrs.get("raw_name")))


def other_reflectivity(ds: xr.Dataset, dbzh: xr.DataArray) -> xr.DataArray | None:
    """The reflectivity from after the clutter filter, where `dbzh` is from before it."""
    if not is_unfiltered(dbzh):
        return None
    for name, field in ds.data_vars.items():
        known = str(name).lower() in BY_NAME["DBZH"].aliases
        if known and not is_unfiltered(field) and field.dims == dbzh.dims:
            return field
    return None


def gate_step(ds: xr.Dataset) -> float:
    """The gate spacing of a sweep, m."""
    if RANGE not in ds.coords:
        raise ValueError("the dataset has no coordinate range (m)")
    ranges = np.atleast_1d(ds[RANGE].values)
    if ranges.size != 1:
        return gate_spacing(ranges, ds.sizes[RANGE])
    if "meters_between_gates" not in ds[RANGE].attrs:
        raise ValueError("a single gate does not give the gate spacing: the coordinate range needs the "
                         "attribute meters_between_gates")
    return gate_spacing(float(ds[RANGE].attrs["meters_between_gates"]), 1)


def gates_in_front(ds: xr.Dataset, spacing: float) -> int:
    """The number of gates that are missing between the radar and the first gate; 0 for fewer than two.

    The library takes gate g at g spacings, gate 0 at one. A first gate at half a spacing, one or
    nearly two counts as gate 0; farther out, gate numbers differ from the library's.
    """
    ranges = np.atleast_1d(ds[RANGE].values).astype(np.float64)
    if not np.isfinite(ranges[[0, -1]]).all():
        raise ValueError("range holds values that are not finite")
    exact = spacing if ranges.size == 1 else (ranges[-1] - ranges[0]) / (ranges.size - 1)
    count = int(np.floor(ranges[0] / exact + 0.01))  # ranges in single precision are a little off
    return count if count >= 2 else 0


def find_sweep(ds: xr.Dataset, fields: FieldMap = None, *, corrected: bool = False) -> Sweep:
    """The fields and sizes of a sweep; `corrected` as for `find_fields`.

    Raises
    ------
    ValueError
        There is no reflectivity, no range, or no dimension of rays.
    """
    found = find_fields(ds, fields, corrected=corrected)
    if "dbzh" not in found:
        names = ", ".join(map(str, ds.data_vars)) or "no variables"
        raise ValueError(f"no reflectivity is known among {names}: name it with fields={{'dbzh': ...}}")
    spacing = gate_step(ds)
    return Sweep(found, ray_dimension(found["dbzh"]), spacing, gates_in_front(ds, spacing))
