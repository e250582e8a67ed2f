"""Functions on arrays along the dimensions of a sweep, and what its gates hold."""

from __future__ import annotations

import functools
from collections.abc import Callable, Mapping, Sequence
from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import ArrayLike, DTypeLike, NDArray

from .._arrays.arguments import as_numbers
from ._sweep import RANGE


def with_front(values: NDArray[Any], count: int, fill: float) -> NDArray[Any]:
    """With gates added before the first one."""
    if count == 0:
        return values
    dtype: DTypeLike = values.dtype if values.dtype.kind == "f" else np.float64
    return np.concatenate([np.full((*values.shape[:-1], count), fill, dtype), values], axis=-1)


def no_echo_value(field: xr.DataArray) -> float | None:
    """The value of a gate that was measured and holds no echo; None where the field has none.

    The attribute ``_Undetect`` counts in the units of the file, where the field was packed.
    """
    value = field.attrs.get("_Undetect", field.encoding.get("_Undetect"))
    if value is None:
        return None
    numbers = as_numbers(f"_Undetect of {field.name}", value)
    if numbers.size != 1:
        raise ValueError(f"_Undetect of {field.name} must be a single number, not {value!r}")
    scale, offset = field.encoding.get("scale_factor", 1.0), field.encoding.get("add_offset", 0.0)
    return float(numbers.item() * scale + offset)


def is_no_echo(values: NDArray[Any], no_echo: float | None) -> NDArray[np.bool_]:
    """Gates that hold the value of no echo, apart from rounding."""
    if no_echo is None:
        return np.zeros(values.shape, bool)
    return np.isclose(values, no_echo, rtol=1e-5, atol=1e-4)


def on_measured(values: NDArray[Any], no_echo: float | None) -> NDArray[Any]:
    """The values with NaN for no echo."""
    nothing = is_no_echo(values, no_echo)
    return np.where(nothing, np.nan, values).astype(values.dtype) if nothing.any() else values


def _on_arrays(function: Callable[..., Any], names: Sequence[str], gates: int, settings: dict[str, Any],
               *arrays: ArrayLike) -> Any:
    """Calls a function with arrays by name, all of the same leading dimensions."""
    data = [np.asarray(array) for array in arrays]
    field_shape = np.broadcast_shapes(*(array.shape for array in data[:gates]))
    shapes = [field_shape] * gates + [field_shape[:-1]] * (len(data) - gates)
    return function(**{name: np.broadcast_to(array, shape)
                       for name, array, shape in zip(names, data, shapes)}, **settings)


def apply(function: Callable[..., Any], fields: Mapping[str, xr.DataArray], rays: str,
          output_dtypes: Sequence[DTypeLike], /, *,
          along_rays: Mapping[str, xr.DataArray] | None = None,
          per_ray: int = 0, **settings: Any) -> list[xr.DataArray]:
    """Arrays through a function of arrays by name, shape (..., rays, range), with coordinates kept.

    Dask arrays stay lazy: whole scans in one piece, leading dimensions chunk by chunk. The results
    have the dimensions of the first field in its order, the last `per_ray` of them without range.
    """
    by_ray = dict(along_rays or {})
    arrays = [*fields.values(), *by_ray.values()]
    core = [[rays, RANGE]] * len(fields) + [[rays]] * len(by_ray)
    for name, field in fields.items():
        if rays not in field.dims or RANGE not in field.dims:
            raise ValueError(f"{name} has the dimensions {field.dims}, without {rays} or {RANGE}")
    call = functools.partial(_on_arrays, function, [*fields, *by_ray], len(fields), settings)
    of_gates = [[rays, RANGE]] * (len(output_dtypes) - per_ray)
    results = xr.apply_ufunc(
        call, *arrays, input_core_dims=core, output_core_dims=of_gates + [[rays]] * per_ray,
        keep_attrs=True,  # those of the coordinates; the results get their own
        dask="parallelized", output_dtypes=list(output_dtypes), dask_gufunc_kwargs={"allow_rechunk": True})
    results = list(results) if isinstance(results, tuple) else [results]
    order = next(iter(fields.values())).dims
    return [result.transpose(..., *(name for name in order if name in result.dims)) for result in results]
