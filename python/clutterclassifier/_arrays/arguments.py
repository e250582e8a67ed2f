"""Checks of arguments, which become contiguous arrays of one type and shape."""

from __future__ import annotations

from collections.abc import Collection
from numbers import Real
from typing import TYPE_CHECKING, Any, overload

import numpy as np

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, DTypeLike, NDArray

#: A reflectivity (dBZ) so weak that it is noise at any range.
NO_ECHO = -999.0

#: The largest number that the library can count.
MOST = int(np.iinfo(np.int32).max)

#: Share of a spacing that may be rounding error of its computation from ranges.
_ROUNDING = 1e-6


def as_numbers(name: str, value: ArrayLike, dtype: DTypeLike = np.float64,
               masked: float = np.nan) -> NDArray[Any]:
    """An array of real numbers as a contiguous one of `dtype`; masked elements become `masked`.

    An array that is already so is not copied. The argument itself is never modified.
    """
    if type(value) is np.ndarray and value.dtype == dtype and value.flags.c_contiguous:
        return value
    try:
        data = np.ma.getdata(value) if isinstance(value, np.ma.MaskedArray) else np.asarray(value)
    except ValueError as error:  # lists of different lengths
        raise ValueError(f"{name} is not an array: {error}") from None
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
    _check_field_shape(name, _shape_of(name, value))
    return as_numbers(name, value, dtype, masked)


def _shape_of(name: str, value: ArrayLike) -> tuple[int, ...]:
    """The shape of an array without a copy: it may be a view that repeats a few values very often."""
    shape = getattr(value, "shape", None)
    return tuple(as_numbers(name, value).shape if shape is None else shape)


def _check_field_shape(name: str, shape: tuple[int, ...]) -> None:
    if len(shape) < 2:
        raise ValueError(f"{name} must have the dimensions (azimuth, range), not the shape {shape}")
    if 0 in shape:
        raise ValueError(f"{name} is empty: its shape is {shape}")
    if shape[-1] * shape[-2] > MOST:
        raise ValueError(f"{name} has more gates than the library can count: its shape is {shape}")


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
    shape = _shape_of(name, value)
    if shape != reference.shape:
        raise ValueError(f"{name} has the shape {shape}, but {reference_name} has {reference.shape}")
    return as_numbers(name, value, reference.dtype, masked)


def only_given(**fields: ArrayLike | None) -> dict[str, ArrayLike]:
    """The arguments by their names, without those that are None."""
    return {name: value for name, value in fields.items() if value is not None}


def gate_spacing(range: ArrayLike, ngates: int) -> float:
    """The gate spacing (m) of the ranges of `ngates` gates; a single number is the spacing itself.

    Ranges may be rounded: each lies within half a gate of an even spacing.
    """
    ranges = as_numbers("range", range)
    if ranges.ndim and ranges.shape != (ngates,):
        raise ValueError(f"range has the shape {ranges.shape}, but there are {ngates} gates")
    if ranges.size == 0:
        raise ValueError("range is empty: there are no gates")
    if ranges.size == 1:
        spacing = float(ranges.reshape(()))
    else:  # over all gates, where the rounding of the ends matters least
        spacing = (float(ranges[-1]) - float(ranges[0])) / (ngates - 1)
    if not 1 <= spacing < MOST:
        raise ValueError(f"range must rise by at least 1 m a gate, not by {spacing:g} m")
    if ranges.size > 1:
        _check_even(ranges, spacing)
    return _without_noise(spacing)


def _check_even(ranges: NDArray[np.float64], spacing: float) -> None:
    """Raise ValueError for a range that is half a gate or more from the even spacing."""
    away = np.abs(ranges - (ranges[0] + spacing * np.arange(ranges.size)))
    if not away.max() < 0.5 * spacing:
        steps = np.diff(ranges)
        raise ValueError(f"range must rise evenly, not by {steps.min():g} to {steps.max():g} m a gate")


def _without_noise(spacing: float) -> float:
    """The spacing in whole metres where it differs only by rounding: the library drops fractions."""
    metres = np.round(spacing)
    return float(metres) if abs(spacing - metres) <= _ROUNDING * abs(metres) else spacing


def _single(name: str, value: Any, kind: str) -> float:
    """A single number that is not NaN; `kind` says in messages what is expected."""
    if isinstance(value, (float, Real)):
        try:
            single = float(value)
        except OverflowError:
            raise ValueError(f"{name} is too large a number") from None
    else:
        try:
            values = as_numbers(name, value)
        except TypeError:
            raise TypeError(f"{name} must be {kind}, not {value!r}") from None
        if values.size != 1:
            raise ValueError(f"{name} must be a single number, not an array of the shape {values.shape}")
        single = float(values.reshape(()))
    if np.isnan(single):
        raise ValueError(f"{name} must be {kind}, not {single}")
    return single


def number(name: str, value: Any) -> float:
    """A single number, which may be infinite."""
    return _single(name, value, "a number")


def finite(name: str, value: Any) -> float:
    """A single finite number."""
    single = _single(name, value, "a finite number")
    if np.isinf(single):
        raise ValueError(f"{name} must be a finite number, not {single}")
    return single


def positive(name: str, value: Any) -> float:
    """A single finite number above 0."""
    single = finite(name, value)
    if single <= 0:
        raise ValueError(f"{name} must be positive, not {single:g}")
    return single


def whole(name: str, value: Any, least: int = 1, most: int = MOST) -> int:
    """A whole number within bounds; by default those that the library can count."""
    single = value if isinstance(value, (int, np.integer)) else number(name, value)
    if least <= single <= most and single == int(single):
        return int(single)
    bounds = f"of at least {least}" if most == MOST and single <= most else f"within {least} and {most}"
    raise ValueError(f"{name} must be a whole number {bounds}, not {value}")


def choice(name: str, value: Any, known: Collection[str]) -> Any:
    """One of the words that are known."""
    if not isinstance(value, str) or value not in known:
        raise ValueError(f"no such {name}: {value!r} ({', '.join(known)})")
    return value


def window_sizes(gates: Any, rays: Any, *, name: str | None = None, least: int = 1,
                 odd: bool = False) -> tuple[int, int]:
    """Gates and rays of a window that the library can count; the `name` is that of a pair of them."""
    sizes = whole(name or "gates", gates, least), whole(name or "rays", rays, least)
    if sizes[0] * sizes[1] > MOST:
        raise ValueError(f"{name or 'gates and rays'}: the window has too many gates: {gates} x {rays}")
    if odd and (sizes[0] % 2 == 0 or sizes[1] % 2 == 0 or sizes == (1, 1)):
        raise ValueError(f"{name or 'gates and rays'} must be two odd sizes and more than one gate, "
                         f"not {gates} and {rays}")
    return sizes


def window_pair(name: str, window: Any, *, least: int = 1, odd: bool = False) -> tuple[int, int]:
    """Gates and rays of a window that is given as a pair."""
    if isinstance(window, str) or not np.iterable(window):
        raise TypeError(f"{name} must be a pair, gates and rays, not {window!r}")
    sizes = tuple(window)
    if len(sizes) != 2:
        raise ValueError(f"{name} must be a pair, gates and rays, not {window!r}")
    return window_sizes(*sizes, name=name, least=least, odd=odd)
