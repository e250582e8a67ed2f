"""Sweeps as xarray datasets: which variable is what, and functions on arrays along their dimensions."""

from __future__ import annotations

import functools
import inspect
from collections.abc import Callable, Hashable, Iterable, Mapping, Sequence
from typing import Any, NamedTuple, Union

import numpy as np
import xarray as xr
from numpy.typing import ArrayLike, DTypeLike, NDArray

from ._arrays import as_numbers, gate_spacing
from ._version import __version__
from .fields import BY_ARGUMENT, BY_NAME, QUANTITIES

#: What fields are: ``{"dbzh": "my_reflectivity", "ldr": None}``; None leaves a quantity out.
FieldMap = Union[Mapping[str, Union[Hashable, None]], None]

RANGE = "range"

#: Names that say: from before the radar's clutter filter.
UNFILTERED = frozenset({"zt", "dbth", "th", "tz", "uz", "total_power", "vt"})


class Sweep(NamedTuple):
    """The parts of a dataset that functions on arrays need."""

    fields: dict[str, xr.DataArray]
    rays: str  # the dimension along which they lie
    spacing: float  # of the gates, m
    front: int = 0  # gates that are missing in front of the first one

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
    """The wishes of the caller by names of arguments; CfRadial names are understood as well."""
    wishes: dict[str, Hashable | None] = {}
    if fields is not None and not isinstance(fields, Mapping):
        raise TypeError(f"fields must be a dict such as {{'dbzh': 'my_name'}}, not {fields!r}")
    for key, name in (fields or {}).items():
        quantity = BY_ARGUMENT.get(str(key).lower()) or BY_NAME.get(str(key).upper())
        if quantity is None:
            raise ValueError(f"fields: no such quantity: {key!r} ({', '.join(BY_ARGUMENT)})")
        if name is not None and name not in ds:
            raise ValueError(f"fields: the dataset has no variable {name!r}")
        wishes[quantity.argument] = name
    return wishes


def find_fields(ds: xr.Dataset, fields: FieldMap = None, *, corrected: bool = False
                ) -> dict[str, xr.DataArray]:
    """The variables of a sweep by names of arguments: those of `fields`, else by their known names.

    Those from before the clutter filter go first, for the classification; for the steps behind it
    (`corrected`) those with the CfRadial name itself, such as DBZH, do.
    """
    wishes = _overrides(ds, fields)
    taken = set(wishes.values())
    known = {str(name).lower(): name for name, variable in ds.data_vars.items()
             if has_gates(variable) and variable.dtype.kind in "fiu" and name not in taken}
    found = {}
    for quantity in QUANTITIES:
        if quantity.argument in wishes:
            name = wishes[quantity.argument]
        else:
            name = next((known[alias] for alias in quantity.aliases if alias in known), None)
            if corrected and quantity.name in known.values():
                name = quantity.name
        if name is not None:
            found[quantity.argument] = ds[name]
    return found


def is_unfiltered(field: xr.DataArray) -> bool:
    """Whether the name of a field, or that in its file, says: from before the clutter filter."""
    return not UNFILTERED.isdisjoint({str(field.name).lower(), str(field.attrs.get("raw_name")).lower()})


def other_reflectivity(ds: xr.Dataset, dbzh: xr.DataArray) -> xr.DataArray | None:
    """The reflectivity behind the clutter filter, beside one from before it."""
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
        raise ValueError("a single gate does not tell the gate spacing: the coordinate range needs the "
                         "attribute meters_between_gates")
    return gate_spacing(float(ds[RANGE].attrs["meters_between_gates"]), 1)


def gates_in_front(ds: xr.Dataset, spacing: float) -> int:
    """How many gates are missing between the radar and the first gate; less than two do not count.

    The library takes gate g at g spacings, gate 0 at one. A first gate at half a spacing, one or
    nearly two is none but gate 0; one that is further out is another gate than the library thinks.
    """
    ranges = np.atleast_1d(ds[RANGE].values).astype(np.float64)
    if not np.isfinite(ranges[[0, -1]]).all():
        raise ValueError("range holds values that are not finite")
    exact = spacing if ranges.size == 1 else (ranges[-1] - ranges[0]) / (ranges.size - 1)
    count = int(np.floor(ranges[0] / exact + 0.01))  # ranges in single precision are a little off
    return count if count >= 2 else 0


def with_front(values: NDArray[Any], count: int, fill: float) -> NDArray[Any]:
    """With gates in front of the first one."""
    if count == 0:
        return values
    dtype: DTypeLike = values.dtype if values.dtype.kind == "f" else np.float64
    return np.concatenate([np.full((*values.shape[:-1], count), fill, dtype), values], axis=-1)


def find_sweep(ds: xr.Dataset, fields: FieldMap = None, *, corrected: bool = False) -> Sweep:
    """The parts of a sweep, `corrected` as for `find_fields`.

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
    """Gates that hold the value of no echo, but for rounding."""
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


def angles(ds: xr.Dataset, sweep: Sweep, rhi: bool) -> dict[str, xr.DataArray]:
    """Azimuth and elevation along the rays; the fixed angle of a sweep is the elevation of all."""
    count = xr.DataArray(np.zeros(sweep.dbzh.sizes[sweep.rays]), dims=[sweep.rays])
    sources = {"azimuth": ds.get("azimuth"), "elevation": ds.get("elevation")}
    fixed = ds.get("sweep_fixed_angle")
    known = set(sweep.dbzh.dims) - {RANGE}
    if not rhi and fixed is not None and fixed.dtype.kind in "fiu" and known.issuperset(fixed.dims):
        sources["elevation"] = fixed
    return {name: (angle + count).reset_coords(drop=True) for name, angle in sources.items()
            if angle is not None and known.issuperset(angle.dims)}


def _modes(ds: xr.Dataset) -> list[str]:
    """The scan modes in lower case; none where they are not in memory, since nothing is computed here."""
    mode = ds.get("sweep_mode")
    if mode is None or mode.chunks is not None:
        return []
    values = np.atleast_1d(np.asarray(mode.values))
    if values.dtype.kind == "S":
        values = np.char.decode(values, "utf-8", "replace")
    return sorted({str(word).strip().lower() for word in values.ravel()})


def _sweeps_in_elevation(ds: xr.Dataset) -> bool:
    """Whether the elevation changes more than the azimuth, by angles that are in memory."""
    angles_ = [ds.get(name) for name in ("azimuth", "elevation")]
    if any(angle is None or angle.chunks is not None or angle.dtype.kind != "f" for angle in angles_):
        return False
    azimuth, elevation = (np.deg2rad(angle.values) for angle in angles_ if angle is not None)
    if azimuth.ndim != 1 or azimuth.size < 2 or elevation.shape != azimuth.shape:
        return False
    turned = np.abs(np.angle(np.exp(1j * np.diff(azimuth))))
    return bool(np.nansum(np.abs(np.diff(elevation))) > np.nansum(turned))


def is_rhi(ds: xr.Dataset, rays: str) -> bool:
    """Whether a sweep is a range-height scan: by its dimension, its mode, or else its angles."""
    if rays == "elevation":
        return True
    words = _modes(ds)
    if words:
        return all("rhi" in word or "elevation" in word for word in words)
    return rays != "azimuth" and _sweeps_in_elevation(ds)


def is_closed(ds: xr.Dataset, rays: str, closed: bool | None = None) -> bool:
    """Whether the last ray is a neighbour of the first: as the caller says, else unless the scan is a
    range-height scan or a sector by its dimension or its mode. Azimuths with gaps do not decide."""
    if closed is not None:
        return bool(closed)
    return not is_rhi(ds, rays) and not any("sector" in word or "rhi" in word for word in _modes(ds))


def with_attributes(field: xr.DataArray, name: str, source: xr.DataArray | None, history: str,
                    **attributes: Any) -> xr.DataArray:
    """A result with the name and attributes of its quantity, those of its source, and its history."""
    quantity = BY_NAME.get(name)
    attrs = {} if source is None else {
        key: value for key, value in source.attrs.items() if key in ("raw_name", "ancillary_variables")}
    if quantity is not None:
        attrs |= {"units": quantity.units, "standard_name": quantity.standard_name,
                  "long_name": quantity.long_name}
    attrs |= attributes | {"history": history if source is None else extended(source, history)}
    result = field.rename(name)
    result.attrs = attrs
    return result


def extended(old: xr.Dataset | xr.DataArray, history: str) -> str:
    """A history with one more line."""
    return f"{old.attrs.get('history', '')}\n{history}".lstrip("\n")


def with_history(ds: xr.Dataset, history: str) -> xr.Dataset:
    """The dataset with one more line in its history."""
    return ds.assign_attrs(history=extended(ds, history))


def unusual(function: Callable[..., Any], **settings: Any) -> dict[str, Any]:
    """The settings that differ from the defaults of a function, as words for the history."""
    defaults = inspect.signature(function).parameters
    return {name: said(value) for name, value in settings.items()
            if said(value) != said(defaults[name].default)}


def said(value: Any) -> Any:
    """A setting as a word."""
    if isinstance(value, (str, bytes)) or not isinstance(value, Iterable):
        return getattr(value, "name", value)
    return "|".join(str(said(item)) for item in value)


def describe(function: str, **settings: Any) -> str:
    """One line of history."""
    words = ", ".join(f"{name}={value}" for name, value in settings.items() if value is not None)
    return f"clutterclassifier {__version__}: {function}({words})"


#: Results without a name in CfRadial: units, and what they are.
_OTHER = {
    "Dpdp": ("degrees", "Rise of the differential phase along the ray"),
    "PdpC": ("degrees", "Differential phase rebuilt from the attenuation"),
    "Ah": ("dB/km", "Specific attenuation H"),
    "TA": ("dB", "Attenuation of the whole ray H"),
    "a": ("unitless", "Coefficient a of Ah = a Z^b"),
    "b": ("unitless", "Exponent b of Ah = a Z^b"),
    "alpha": ("dB per degree", "Coefficient alpha of Ah = alpha KDP"),
}


def described(name: str, result: xr.DataArray, sweep: Sweep, history: str) -> xr.DataArray:
    """A result of the chain with the attributes of its quantity and of the field it was made of."""
    sources = {BY_ARGUMENT[argument].name: field for argument, field in sweep.fields.items()}
    source = sources.get(name)
    units, long_name = _OTHER.get(name, (None, None))
    attributes: dict[str, Any] = {} if units is None else {"units": units, "long_name": long_name}
    if name == "DBZH" and source is not None and "_Undetect" in source.attrs:
        attributes["_Undetect"] = no_echo_value(source)
    return with_attributes(result, name, source, history, **attributes)
