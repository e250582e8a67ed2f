"""Checks of arguments: whatever a caller has, as contiguous arrays of one type and shape."""

from __future__ import annotations

from typing import Any, overload

import numpy as np
from numpy.typing import ArrayLike, DTypeLike, NDArray

#: A reflectivity (dBZ) so weak that it is noise at any range.
NO_ECHO = -999.0


def as_numbers(name: str, value: ArrayLike, dtype: DTypeLike = np.float64,
               masked: float = np.nan) -> NDArray[Any]:
    """An array of real numbers as a contiguous one of `dtype`; masked elements become `masked`.

    No copy is made of an array that is already so. The argument itself is never modified.
    """
    if type(value) is np.ndarray and value.dtype == dtype and value.flags.c_contiguous:
        return value
    data = np.ma.getdata(value)
    if data.dtype.kind not in "fiub":
        raise TypeError(f"{name} must hold real numbers, not {data.dtype}")
    mask = np.ma.getmask(value)
    with np.errstate(over="ignore"):  # a double beyond the range of a float is infinite
        numbers = np.ascontiguousarray(data, dtype=dtype).reshape(data.shape)
    if mask is not np.ma.nomask and mask.any():
        numbers = np.where(mask, np.asarray(masked, dtype=dtype), numbers)
    return numbers


def as_field(name: str, value: ArrayLike, dtype: DTypeLike = np.float64,
             masked: float = np.nan) -> NDArray[Any]:
    """One scan, or several: an array whose last two dimensions are azimuth and range."""
    field = as_numbers(name, value, dtype, masked)
    if field.ndim < 2:
        raise ValueError(f"{name} must have the dimensions (azimuth, range), not the shape {field.shape}")
    if field.size == 0:
        raise ValueError(f"{name} is empty: its shape is {field.shape}")
    if field.shape[-1] * field.shape[-2] > np.iinfo(np.int32).max:
        raise ValueError(f"{name} has more gates than the library counts: its shape is {field.shape}")
    return field


@overload
def as_field_like(name: str, value: ArrayLike, reference: NDArray[Any],
                  reference_name: str, masked: float = ...) -> NDArray[Any]: ...
@overload
def as_field_like(name: str, value: None, reference: NDArray[Any],
                  reference_name: str, masked: float = ...) -> None: ...
def as_field_like(name: str, value: ArrayLike | None, reference: NDArray[Any],
                  reference_name: str, masked: float = np.nan) -> NDArray[Any] | None:
    """A field of the type and shape of `reference`; None stays None."""
    if value is None:
        return None
    field = as_numbers(name, value, reference.dtype, masked)
    if field.shape != reference.shape:
        raise ValueError(f"{name} has the shape {field.shape}, but {reference_name} has {reference.shape}")
    return field


def only_given(**fields: ArrayLike | None) -> dict[str, ArrayLike]:
    """The arguments by their names, without those that are None."""
    return {name: value for name, value in fields.items() if value is not None}


def gate_spacing(range: ArrayLike, ngates: int) -> float:
    """The gate spacing (m) of the ranges of `ngates` gates; a single number is the spacing itself."""
    ranges = as_numbers("range", range)
    if ranges.ndim == 0:
        spacing = float(ranges)
    elif ranges.shape != (ngates,):
        raise ValueError(f"range has the shape {ranges.shape}, but there are {ngates} gates")
    else:
        spacing = float(ranges[1] - ranges[0]) if ngates > 1 else float(ranges[0])
    if not 1 <= spacing < np.iinfo(np.int32).max:
        raise ValueError(f"range must rise by at least 1 m a gate, not by {spacing:g} m")
    return spacing


def finite(name: str, value: float) -> float:
    """A single finite number."""
    number = float(value)
    if not np.isfinite(number):
        raise ValueError(f"{name} must be a finite number, not {number}")
    return number
