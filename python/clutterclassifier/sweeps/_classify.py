"""Classification and cleaning of sweeps."""

from __future__ import annotations

import inspect
import os
from collections.abc import Collection
from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import DTypeLike, NDArray

from .._arrays.arguments import NO_ECHO
from .._arrays.classify import (ARRAYS, InputSelection, Options, check_options, classify_scan, parse_inputs,
                                ready_directory)
from .._arrays.process import KEYS
from ..echo import MISSING, PRECIPITATION, Inputs
from ._apply import apply, is_no_echo, no_echo_value, with_front
from ._calibration import Calibration, estimate_now, estimated, find_calibration
from ._codes import CLASS, ClassSelection, class_attributes, code_table, library_codes, parse_classes
from ._geometry import is_closed
from ._results import describe, extended, unusual, with_attributes, with_history
from ._sweep import FieldMap, Sweep, find_sweep, has_gates, is_unfiltered, other_reflectivity

#: Share of gates that a clutter filter changes, at least.
_FILTERED_SHARE = 0.01


def is_filtered(one: NDArray[Any], other: NDArray[Any]) -> bool:
    """Whether a clutter filter stands between two reflectivities."""
    known = other[~np.isnan(other)]
    if known.size == 0 or (known == known[0]).all():
        return False
    same = (one == other) | (np.isnan(one) & np.isnan(other))
    return bool(np.count_nonzero(~same) >= _FILTERED_SHARE * same.size)


def _classify_arrays(dbzh: NDArray[Any], *, filtered: NDArray[Any] | None = None, **settings: Any
                     ) -> NDArray[np.uint8]:
    """Classes of scans, each on its own."""
    others = {name: settings.pop(name) for name in KEYS if name in settings}
    if dbzh.dtype.kind != "f":
        dbzh = dbzh.astype(np.float64)
    out = np.empty(dbzh.shape, np.uint8)
    for at in np.ndindex(dbzh.shape[:-2]):
        one = {name: values[at] for name, values in others.items()}
        out[at] = _classify_one(dbzh[at], one, None if filtered is None else filtered[at], **settings)
    return out


def _classify_one(dbzh: NDArray[Any], others: dict[str, NDArray[Any]], filtered: NDArray[Any] | None, *,
                  spacing: float, front: int, calibration: Calibration, inputs: Inputs,
                  no_echo: float | None, missing: str, closed: bool, table: NDArray[np.uint8] | None,
                  options: Options, membership: str | os.PathLike[str] | None) -> NDArray[np.uint8]:
    constant, ratio, _ = calibration
    if constant is None:
        constant, ratio = estimated(dbzh, others.get("rhohv"), spacing, ratio, no_echo, front)
    assert ratio is not None  # it is known wherever the constant is
    if filtered is not None and is_filtered(dbzh, filtered):
        inputs &= ~Inputs.VRAD
    fields: dict[str, Any] = {"dbzh": dbzh, **others}
    unknown = np.isnan(dbzh) if missing == "mask" else None
    if missing != "keep":
        nothing = is_no_echo(dbzh, no_echo) | np.isnan(dbzh)
        if nothing.any():
            fields["dbzh"] = np.where(nothing, dbzh.dtype.type(NO_ECHO), dbzh)
    fields = {name: with_front(values, front, _nothing(name)) for name, values in fields.items()}
    if not closed:
        fields = {name: _with_empty_rays(name, values, _reach(options)) for name, values in fields.items()}
    whole = np.empty(fields["dbzh"].shape, np.uint8)
    classify_scan(fields, out=whole, spacing=spacing, radar_constant=constant, min_snr=ratio, inputs=inputs,
                  options=options, directory=ready_directory(membership, int(inputs), options.all_classes))
    classes = whole[:len(dbzh), front:]
    if unknown is not None:
        classes[unknown] = MISSING
    return classes if table is None else table[classes]


def _reach(options: Options) -> int:
    """Rays that windows reach to either side."""
    return max(options.window[1] // 2, 5 if options.remove_isolated else 0)


def _with_empty_rays(name: str, values: NDArray[Any], count: int) -> NDArray[Any]:
    """With rays without echo behind the last, so that windows do not go round to the first."""
    dtype: DTypeLike = values.dtype if values.dtype.kind == "f" else np.float64
    return np.concatenate([values, np.full((count, values.shape[1]), _nothing(name), dtype)])


def _nothing(name: str) -> float:
    """What a field holds where there is no echo."""
    return NO_ECHO if name == "dbzh" else np.nan


def behind_filter(ds: xr.Dataset, sweep: Sweep, fields: FieldMap) -> xr.DataArray | None:
    """The reflectivity that tells whether the velocity is from behind the clutter filter; None where
    that is no question."""
    named = {str(key).lower() for key in fields or {}}
    velocity = sweep.fields.get("vrad")
    if velocity is None or named & {"vrad", "vradh"} or is_unfiltered(velocity):
        return None
    return other_reflectivity(ds, sweep.dbzh)


def classify(ds: xr.Dataset, *, fields: FieldMap = None, inputs: InputSelection = None,
             radar_constant: float | None = None, min_snr: float | None = None,
             membership: str | os.PathLike[str] | None = None,
             texture_window: tuple[int, int] = (5, 3), remove_isolated: bool = False,
             all_classes: bool = False, missing: str = "mask", closed: bool | None = None,
             codes: str = "library", name: str = CLASS) -> xr.Dataset:
    """Tell precipitation from ground clutter and noise: the sweep with a variable ``CLASS``.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep. Where its first gate is two spacings out or more (cut in range), gates without echo
        take the places in front of it, so that the ranges of the signal-to-noise ratio are true.
    fields : dict, optional
        Which variable is what: ``{"dbzh": "my_name"}``; None leaves a quantity out.
    inputs : Inputs, int, str or several of them, optional
        As for `clutterclassifier.classify`. By default all that the sweep has but the spectrum width.
        The velocity is then left out too where the reflectivity is that from before the clutter
        filter and the sweep holds another one that differs in 1 % of the gates: behind the filter
        clutter does not stand still any more.
    radar_constant : float, optional
        Calibration constant, dB; by default the attribute ``radar_constant`` of the dataset, else
        estimated from each scan (within the computation where arrays are lazy).
    min_snr : float, optional
        Lowest signal-to-noise ratio of an echo, dB; by default the attribute ``min_snr``, else 26
        with a given constant, 10 with that of the dataset, and what the estimate says with an
        estimated one (10 where it found the noise).
    membership, texture_window, remove_isolated, all_classes
        As for `clutterclassifier.classify`.
    missing : {"mask", "no_echo", "keep"}
        What NaN in the reflectivity means. ``"mask"``: not measured, no echo to the gates around it,
        class 255 (``_FillValue``). ``"no_echo"``: noise. ``"keep"``: handed to the library as it is.
        Gates with the value of the attribute ``_Undetect`` are noise, but for ``"keep"``.
    closed : bool, optional
        Whether the last ray is a neighbour of the first; by default unless the rays lie along an
        elevation or ``sweep_mode`` says that the scan is an RHI or a sector.
    codes : {"library", "pyrad"}
        ``"pyrad"`` numbers noise, clutter and precipitation 1, 2, 3, with 0 for no value.
    name : str
        Of the new variable.

    Returns
    -------
    xarray.Dataset

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> sweep = sweeps.classify(cc.synthetic_scan(5, nrays=90, ngates=200))
    >>> sweep.CLASS.attrs["flag_meanings"]
    'precipitation noise ground_clutter'
    """
    if missing not in ("mask", "no_echo", "keep"):
        raise ValueError(f"missing must be 'mask', 'no_echo' or 'keep', not {missing!r}")
    table = code_table(codes)
    sweep = find_sweep(ds, fields)
    mask = parse_inputs(inputs, sweep.fields) & (Inputs.ALL if inputs is not None else ~Inputs.WRAD)
    filtered = behind_filter(ds, sweep, fields) if inputs is None else None
    calibration = estimate_now(sweep, find_calibration(ds, radar_constant, min_snr))
    if filtered is not None and not sweep.is_lazy and sweep.dbzh.ndim == 2:
        mask = mask & ~Inputs.VRAD if is_filtered(sweep.dbzh.values, filtered.values) else mask
        filtered = None
    arrays = needed(sweep, mask, calibration)
    if filtered is not None:
        arrays["filtered"] = filtered
    options = check_options(texture_window, remove_isolated, all_classes)
    (classes,) = apply(_classify_arrays, arrays, sweep.rays, [np.uint8], spacing=sweep.spacing,
                       front=sweep.front, calibration=calibration, inputs=mask,
                       no_echo=no_echo_value(sweep.dbzh), missing=missing,
                       closed=is_closed(ds, sweep.rays, closed), table=table, options=options,
                       membership=membership)
    history = _history("classify", mask, calibration, texture_window=texture_window,
                       **unusual(classify, remove_isolated=remove_isolated, all_classes=all_classes,
                                 missing=missing, closed=closed, codes=codes, membership=membership,
                                 fields=words_of(fields)),
                       gates_in_front=sweep.front or None,
                       without_vrad=None if filtered is None else f"where {filtered.name} differs in 1 %")
    classes = with_attributes(classes, name, None, history, **class_attributes(codes, all_classes))
    classes.encoding = {"_FillValue": np.uint8(MISSING if table is None else 0), "dtype": "uint8"}
    return with_history(ds.assign({name: classes}), history)


def words_of(fields: FieldMap) -> str | None:
    """A map of fields for the history."""
    return None if not fields else "|".join(f"{key}:{name}" for key, name in fields.items())


def needed(sweep: Sweep, mask: Inputs, calibration: Calibration) -> dict[str, xr.DataArray]:
    """The fields that take part; the correlation also tells weather from noise in the estimate."""
    names = {ARRAYS[bit] for bit in ARRAYS if bit & mask} | {"dbzh"}
    if calibration.radar_constant is None:
        names.add("rhohv")
    return {name: field for name, field in sweep.fields.items() if name in names}


def _history(function: str, inputs: Inputs, calibration: Calibration, **settings: Any) -> str:
    names = "|".join(str(bit.name) for bit in Inputs if bit & inputs and bit in ARRAYS)
    return describe(function, inputs=names, radar_constant=calibration.words, min_snr=calibration.min_snr,
                    **settings)


def refuse_keywords(step: str, keywords: Collection[str], why: str) -> None:
    """Raise TypeError for keywords of `classify` where nothing is classified."""
    known = set(inspect.signature(classify).parameters)
    unknown = [name for name in keywords if name not in known]
    if unknown:
        raise TypeError(f"{step}: unknown keywords: {', '.join(unknown)}")
    if keywords:
        raise TypeError(f"{step}: without effect, since {why}: {', '.join(keywords)}")


def clean(ds: xr.Dataset, *, keep: ClassSelection = PRECIPITATION, classes: xr.DataArray | None = None,
          **keywords: Any) -> xr.Dataset:
    """The sweep with clutter and noise blanked: all its fields of floating-point numbers become NaN there.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep.
    keep : EchoClass, int, str or several of them
        Classes that stay: ``"precipitation"``, ``["precipitation", "noise"]``.
    classes : xarray.DataArray, optional
        Classes to go by; by default the variable ``CLASS`` (or `name`) of the sweep when it has one
        and no other keywords are given, else those of `classify` with these keywords.

    Returns
    -------
    xarray.Dataset
        With the variable ``CLASS`` (or `name`).

    Raises
    ------
    TypeError
        A keyword that `classify` does not know, or one that has no effect on given `classes`; `classes`
        that hold no codes.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> rain = sweeps.clean(cc.synthetic_scan(5, nrays=90, ngates=200))
    >>> bool((rain.CLASS.where(rain.DBZH.notnull(), cc.PRECIPITATION) == cc.PRECIPITATION).all())
    True
    """
    kept = parse_classes("keep", keep)
    name = keywords.pop("name", CLASS)
    if classes is not None:
        refuse_keywords("clean", keywords, "the classes are given")
        if not isinstance(classes, xr.DataArray):
            raise TypeError(f"classes must be a DataArray, not {type(classes).__name__}")
        ds = ds.assign({name: classes})
    elif keywords or name not in ds:
        ds = classify(ds, name=name, **keywords)
    stays = library_codes(ds[name]).isin([int(echo) for echo in kept])
    history = describe("clean", keep="|".join(echo.meaning for echo in kept))
    blanked = {}
    for key, field in ds.data_vars.items():
        if key in (name, CLASS) or not has_gates(field) or field.dtype.kind != "f":
            continue
        blanked[key] = field.where(stays).transpose(..., *field.dims)
        blanked[key].attrs = field.attrs | {"history": extended(field, history)}
        blanked[key].encoding = field.encoding
    return with_history(ds.assign(blanked), history)
