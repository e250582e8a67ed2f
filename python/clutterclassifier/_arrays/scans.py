"""Checks that functions on scans share: masks, classes, values for a scan, a ray or a gate."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from .._model.echo import MISSING
from .arguments import as_field, as_field_like, as_numbers, finite

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, DTypeLike, NDArray

Shape = tuple[int, ...]


def as_classes(value: ArrayLike, dtype: DTypeLike = np.float32) -> NDArray[Any]:
    """Classes of one scan or several; gates that are masked or no number are `MISSING`."""
    classes = as_field("classes", value, dtype, MISSING)
    if classes.dtype.kind == "f" and np.isnan(classes).any():
        classes = np.where(np.isnan(classes), classes.dtype.type(MISSING), classes)
    return classes


def as_classes_like(value: ArrayLike, reference: NDArray[Any], reference_name: str) -> NDArray[Any]:
    """Classes in the shape and type of `reference`; the library knows precipitation by exactly 0."""
    return as_field_like("classes", value, reference, reference_name, MISSING)


def excluded_gates(name: str, value: ArrayLike, field: NDArray[Any],
                   mask: ArrayLike | None) -> NDArray[np.float32]:
    """1 where a gate is left out, else 0: the mask, or the gates of `field` that are NaN, and in any
    case the masked gates of `value`, the array that `field` was made of."""
    if mask is None:
        excluded = np.isnan(field)
    else:
        excluded = as_field_like("mask", mask, field, name, 1) != 0
    own = np.ma.getmask(value)
    if own is not np.ma.nomask:
        excluded = excluded | own
    return excluded.astype(np.float32)


def with_empty_rays(field: NDArray[Any], rays: int, value: float) -> NDArray[Any]:
    """The scans with `rays` more rays of one value after the last, so that windows do not wrap."""
    return np.concatenate([field, np.full_like(field[..., :1, :], value).repeat(rays, -2)], -2)


def _broadcast(name: str, value: ArrayLike, shape: Shape, per: str) -> NDArray[np.float64]:
    numbers = as_numbers(name, value)
    try:
        return np.ascontiguousarray(np.broadcast_to(numbers, shape))
    except ValueError:
        raise ValueError(f"{name} has the shape {numbers.shape}, but one value per {per} "
                         f"has {shape}") from None


def per_scan(name: str, value: ArrayLike, shape: Shape) -> NDArray[np.float64]:
    """One number for every scan of a field of this shape, in a row."""
    numbers = _broadcast(name, value, shape[:-2], "scan").reshape(-1)
    for number in numbers:
        finite(name, number)
    return numbers


def per_ray(name: str, value: ArrayLike, shape: Shape) -> NDArray[np.float64]:
    """One number for every ray of a field of this shape."""
    return _broadcast(name, value, shape[:-1], "ray")


def angles(name: str, value: ArrayLike, shape: Shape) -> NDArray[np.float64]:
    """One finite angle for every ray of a field of this shape."""
    numbers = per_ray(name, value, shape)
    if not np.isfinite(numbers).all():
        raise ValueError(f"{name} must hold finite numbers")
    return numbers


def per_gate(name: str, value: ArrayLike, shape: Shape, dtype: DTypeLike = np.float64) -> NDArray[Any]:
    """One number for every gate of a field of this shape, of numbers per gate or per ray or one."""
    numbers = as_numbers(name, value, dtype)
    if numbers.ndim and numbers.shape == shape[:-1]:
        numbers = numbers[..., np.newaxis]
    elif numbers.ndim and numbers.shape != shape:
        raise ValueError(f"{name} has the shape {numbers.shape}, but the scans have {shape}")
    return np.ascontiguousarray(np.broadcast_to(numbers, shape))


def of_scans(values: NDArray[Any], shape: Shape) -> Any:
    """Numbers in a row, one a scan, in the shape of the leading dimensions; a plain one without."""
    return values.reshape(shape[:-2])[()]
