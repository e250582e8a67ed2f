"""Steps with windows on sweeps: textures, smoothing, specks."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays import toolkit as _toolkit
from .._model.echo import MISSING, NOISE
from .._model.fields import BY_ARGUMENT
from ._apply import apply, is_no_echo, no_echo_value
from ._codes import CLASS, ClassSelection, class_attributes, library_codes, parse_classes
from ._geometry import is_closed
from ._results import describe, extended, unusual, with_attributes, with_history
from ._sweep import FieldMap, find_fields, ray_dimension

_TEXTURES = ("dbzh", "zdr", "phidp", "rhohv")
_SMOOTHED = (*_TEXTURES, "vrad", "wrad", "ldr")

#: Means are those of linear values.
_DECIBELS = ("dbzh", "zdr")


def _listed(quantities: Iterable[str] | None) -> list[str] | None:
    if quantities is None or isinstance(quantities, str):
        return None if quantities is None else [quantities]
    if not isinstance(quantities, Iterable) or not all(isinstance(name, str) for name in quantities):
        raise TypeError(f"quantities must be a list of names, not {quantities!r}")
    return list(quantities)


def _chosen(ds: xr.Dataset, fields: FieldMap, wanted: list[str] | None, usual: tuple[str, ...]
            ) -> dict[str, xr.DataArray]:
    """The fields of the requested quantities, else those of the usual ones that exist."""
    found = find_fields(ds, fields, corrected=True)
    if wanted is None:
        return {name: found[name] for name in usual if name in found}
    for name in wanted:
        if name.lower() not in found:
            raise ValueError(f"quantities: the dataset has no {name!r} (but {', '.join(found)})")
    return {name.lower(): found[name.lower()] for name in wanted}


def _excluded_gates(ds: xr.Dataset, exclude: ClassSelection) -> xr.DataArray | None:
    """Gates of excluded classes; None without a field of classes."""
    codes = [int(echo) for echo in parse_classes("exclude", exclude)]
    return library_codes(ds[CLASS]).isin([*codes, MISSING]) if CLASS in ds else None


def _windowed(function: str, values: NDArray[Any], excluded: NDArray[np.bool_] | None = None,
              no_echo: float | None = None, **settings: Any
              ) -> tuple[NDArray[np.float32], NDArray[np.bool_]]:
    """`texture` or `smooth`, and the gates that are left out, such as those without a value or an echo."""
    mask = np.isnan(values) | is_no_echo(values, no_echo)
    mask = mask if excluded is None else mask | excluded
    return getattr(_toolkit, function)(values, mask=mask, **settings), mask


def _texture_arrays(**arrays: Any) -> NDArray[np.float32]:
    result, mask = _windowed("texture", **arrays)
    return np.where(mask, np.float32(np.nan), result)


def _smooth_arrays(values: NDArray[Any], **arrays: Any) -> NDArray[np.float32]:
    result, mask = _windowed("smooth", values, **arrays)
    return np.where(mask, values.astype(np.float32), result)


def texture(ds: xr.Dataset, *, quantities: Iterable[str] | None = None, fields: FieldMap = None,
            exclude: ClassSelection = NOISE, gates: int = 5, rays: int = 3,
            closed: bool | None = None) -> xr.Dataset:
    """Standard deviations in a window around each gate: adds ``DBZH_TEXTURE``, ``ZDR_TEXTURE`` ...

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep.
    quantities : list of str, optional
        Arguments of `clutterclassifier.classify`: ``["dbzh", "vrad"]``. By default those of
        dbzh, zdr, phidp and rhohv that exist.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``.
    exclude : EchoClass, int, str or several of them
        Classes that are left out where the sweep has a variable ``CLASS``; gates without a value and
        those without echo (attribute ``_Undetect``) always are.
    gates, rays
        As for `clutterclassifier.texture`.
    closed : bool, optional
        As for `classify` of sweeps.

    Returns
    -------
    xarray.Dataset
        Textures in the units of their fields; NaN at gates that are left out.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> sweep = sweeps.texture(cc.synthetic_scan(5, nrays=90, ngates=200), quantities=["zdr"])
    >>> sweep.ZDR_TEXTURE.attrs["units"]
    'dB'
    """
    excluded = _excluded_gates(ds, exclude)
    wanted = _listed(quantities)
    history = describe("texture", gates=gates, rays=rays,
                       **unusual(texture, quantities=wanted, exclude=exclude, closed=closed))
    textures = {}
    for argument, field in _chosen(ds, fields, wanted, _TEXTURES).items():
        arrays = {"values": field} | ({} if excluded is None else {"excluded": excluded})
        along = ray_dimension(field)
        (result,) = apply(_texture_arrays, arrays, along, [np.float32], gates=gates, rays=rays,
                          closed=is_closed(ds, along, closed), no_echo=no_echo_value(field))
        quantity = BY_ARGUMENT[argument]
        name = f"{quantity.name}_TEXTURE"
        textures[name] = with_attributes(result, name, field, history, units=quantity.units,
                                         long_name=f"Texture of {quantity.long_name[0].lower()}"
                                                   f"{quantity.long_name[1:]}")
    return with_history(ds.assign(textures), history)


def smooth(ds: xr.Dataset, *, quantities: Iterable[str] | None = None, fields: FieldMap = None,
           exclude: ClassSelection = ("clutter", "noise"), gates: int = 7, rays: int = 1,
           closed: bool | None = None) -> xr.Dataset:
    """Means of a window around each gate, in place of the fields.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep.
    quantities : list of str, optional
        Arguments of `clutterclassifier.classify`: ``["dbzh", "zdr"]``; by default all moments.
        Reflectivity and differential reflectivity become means of linear values.
    fields, exclude
        As for `texture`. Gates that are left out keep their value.
    gates, rays
        As for `clutterclassifier.smooth`.
    closed : bool, optional
        As for `classify` of sweeps.

    Returns
    -------
    xarray.Dataset

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> bool(sweeps.smooth(scan, gates=9).PHIDP.std() < scan.PHIDP.std())
    True
    """
    excluded = _excluded_gates(ds, exclude)
    wanted = _listed(quantities)
    chosen = _chosen(ds, fields, wanted, _SMOOTHED)
    linear = "|".join(name for name in chosen if name in _DECIBELS) or None
    history = describe("smooth", gates=gates, rays=rays, means_of_linear_values=linear,
                       **unusual(smooth, quantities=wanted, exclude=exclude, closed=closed))
    smoothed = {}
    for argument, field in chosen.items():
        arrays = {"values": field} | ({} if excluded is None else {"excluded": excluded})
        along = ray_dimension(field)
        (result,) = apply(_smooth_arrays, arrays, along, [np.float32], gates=gates, rays=rays,
                          closed=is_closed(ds, along, closed), decibels=argument in _DECIBELS,
                          no_echo=no_echo_value(field))
        result.attrs = field.attrs | {"history": extended(field, history)}
        smoothed[field.name] = result
    return with_history(ds.assign(smoothed), history)


def despeckle(ds: xr.Dataset, *, window: tuple[int, int] | None = None, at_most: int = 1,
              closed: bool | None = None) -> xr.Dataset:
    """Turn isolated precipitation gates of the variable ``CLASS`` into ground clutter.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep with classes.
    window, at_most
        As for `clutterclassifier.despeckle`.
    closed : bool, optional
        As for `classify` of sweeps.

    Returns
    -------
    xarray.Dataset
        With ``CLASS`` in the library's codes.
    """
    if CLASS not in ds:
        raise ValueError(f"the sweep has no variable {CLASS}: classify it first")
    old = library_codes(ds[CLASS])
    (classes,) = apply(_despeckle_arrays, {"classes": old}, ray_dimension(old), [np.uint8], window=window,
                       at_most=at_most, closed=is_closed(ds, ray_dimension(old), closed))
    history = describe("despeckle", window=window, at_most=None if window is None else at_most,
                       closed=closed)
    all_classes = "turbine" in str(ds[CLASS].attrs.get("flag_meanings", ""))
    classes = with_attributes(classes, CLASS, ds[CLASS], history,
                              **class_attributes("library", all_classes))
    classes.encoding = {"_FillValue": np.uint8(MISSING), "dtype": "uint8"}
    return with_history(ds.assign({CLASS: classes}), history)


def _despeckle_arrays(classes: NDArray[np.uint8], **settings: Any) -> NDArray[np.uint8]:
    return _toolkit.despeckle(classes, **settings)
