"""Classification and cleaning of sweeps."""

from __future__ import annotations

import inspect
from collections.abc import Collection
from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .. import _core
from .._arrays.classify import (ARRAYS, InputSelection, Membership, Options, check_options, classify_scans,
                                parse_inputs)
from .._model.echo import MISSING, PRECIPITATION, Inputs
from ._apply import apply, no_echo_value
from ._calibration import Calibration, estimate_now, find_calibration
from ._codes import CLASS, ClassSelection, class_attributes, code_table, library_codes, parse_classes
from ._geometry import is_closed
from ._prepare import How, filtered_reflectivity, is_filtered, prepare
from ._results import describe, extended, unusual, with_attributes, with_history
from ._sweep import FieldMap, Sweep, find_sweep, has_gates

#: Gates and rays over which the textures' share is averaged by default.
NEIGHBOURHOOD = (5, 3)

#: Variables of `certainty`: description and units.
CERTAINTY = {"PROBABILITY": ("Probability of precipitation", "unitless"),
              "MARGIN": ("Logarithm of the strength of precipitation over that of clutter", "unitless")}


def _classify_arrays(dbzh: NDArray[Any], *, filtered: NDArray[Any] | None = None, how: How,
                     options: Options, membership: Membership, closed: bool,
                     table: NDArray[np.uint8] | None, certainty: bool, **others: NDArray[Any]) -> Any:
    """Classes of scans, each on its own, and with `certainty` probabilities and margins."""
    out = tuple(np.empty(dbzh.shape, dtype) for dtype in (np.uint8, np.float32, np.float32))
    for at in np.ndindex(dbzh.shape[:-2]):
        scan = prepare(dbzh[at], {name: values[at] for name, values in others.items()},
                       None if filtered is None else filtered[at], how)
        found = classify_scans(
            scan.fields, spacing=how.spacing, radar_constant=scan.radar_constant, min_snr=scan.min_snr,
            inputs=scan.inputs, options=options, membership=membership, sector=not closed,
            certainty=certainty)
        classes = found.classes[..., how.front:]
        if scan.unknown is not None:
            classes[scan.unknown] = MISSING
        out[0][at] = classes if table is None else table[classes]
        if certainty:
            out[1][at], out[2][at] = found.probability[..., how.front:], found.margin[..., how.front:]
    return out if certainty else out[0]


def classify(ds: xr.Dataset, *, fields: FieldMap = None, inputs: InputSelection = None,
             radar_constant: float | None = None, min_snr: float | None = None,
             membership: Membership = None, texture_window: tuple[int, int] = (5, 3),
             neighbourhood: tuple[int, int] | None = NEIGHBOURHOOD, certainty: bool = False,
             remove_isolated: bool = False, all_classes: bool = False, missing: str = "mask",
             closed: bool | None = None, codes: str = "library", name: str = CLASS) -> xr.Dataset:
    """Classify precipitation, ground clutter and noise: the sweep with a variable ``CLASS``.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep. Where its first gate is two spacings out or more (cut in range), gates without echo
        are added before it, so that the ranges of the signal-to-noise ratio are true.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``; None leaves a quantity out.
    inputs : Inputs, int, str or several of them, optional
        As for `clutterclassifier.classify`. By default all that the sweep has except the spectrum width.
        The velocity is left out too where the reflectivity is that from before the clutter filter and
        the sweep holds another one that differs in 1 % of the gates: after the filter the velocity
        of clutter is no longer near 0.
    radar_constant : float, optional
        Calibration constant, dB; by default the attribute ``radar_constant`` of the dataset, else
        estimated from each scan (within the computation where arrays are lazy).
    min_snr : float, optional
        Lowest signal-to-noise ratio of an echo, dB; by default the attribute ``min_snr``, else 26
        with a given constant, 10 with that of the dataset, and that of the estimate with an
        estimated one (10 where it found the noise).
    membership, texture_window, remove_isolated, all_classes
        As for `clutterclassifier.classify`.
    neighbourhood : (int, int) or None
        Gates and rays over which the share of the textures is averaged; None decides each gate alone.
    certainty : bool
        Also add ``PROBABILITY`` (of precipitation, 0..1) and ``MARGIN`` (logarithm of the strength of
        precipitation over that of clutter); NaN where there is no echo.
    missing : {"mask", "no_echo", "keep"}
        Meaning of NaN in the reflectivity. ``"mask"``: not measured, without echo for the gates around it,
        class 255 (``_FillValue``). ``"no_echo"``: noise. ``"keep"``: passed to the library unchanged.
        Gates with the value of the attribute ``_Undetect`` are noise, except with ``"keep"``.
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
    options = check_options(texture_window, neighbourhood, remove_isolated, all_classes)
    sweep, how, arrays = examine(ds, fields, inputs, find_calibration(ds, radar_constant, min_snr), missing)
    dtypes = [np.uint8] + [np.float32] * (2 * bool(certainty))
    results = apply(_classify_arrays, arrays, sweep.rays, dtypes, how=how, options=options,
                    membership=membership, closed=is_closed(ds, sweep.rays, closed), table=table,
                    certainty=bool(certainty))
    history = _history("classify", how, texture_window=texture_window,
                       neighbourhood=neighbourhood or "none", **_circumstances(how, arrays),
                       **unusual(classify, remove_isolated=remove_isolated, all_classes=all_classes,
                                 missing=missing, closed=closed, codes=codes, membership=membership,
                                 fields=words_of(fields), certainty=certainty))
    classes = with_attributes(results[0], name, None, history, **class_attributes(codes, all_classes))
    classes.encoding = {"_FillValue": np.uint8(MISSING if table is None else 0), "dtype": "uint8"}
    variables = {name: classes}
    for (key, (words, units)), result in zip(CERTAINTY.items(), results[1:]):
        variables[key] = with_attributes(result, key, None, history, long_name=words, units=units,
                                         is_quality_field=1, qualified_variables=name)
    if certainty:
        classes.attrs["ancillary_variables"] = " ".join(CERTAINTY)
    return with_history(ds.assign(variables), history)


def examine(ds: xr.Dataset, fields: FieldMap, inputs: InputSelection, calibration: Calibration,
            missing: str) -> tuple[Sweep, How, dict[str, xr.DataArray]]:
    """A sweep, how its scans are prepared, and the fields that are used."""
    sweep = find_sweep(ds, fields)
    mask = parse_inputs(inputs, sweep.fields) & (Inputs.ALL if inputs is not None else ~Inputs.WRAD)
    filtered = filtered_reflectivity(ds, sweep, fields) if inputs is None else None
    calibration = estimate_now(sweep, calibration)
    if filtered is not None and not sweep.is_lazy and sweep.dbzh.ndim == 2:
        mask = mask & ~Inputs.VRAD if is_filtered(sweep.dbzh.values, filtered.values) else mask
        filtered = None
    arrays = needed(sweep, mask, calibration)
    if filtered is not None:
        arrays["filtered"] = filtered
    how = How(sweep.spacing, sweep.front, calibration, mask, no_echo_value(sweep.dbzh), missing)
    return sweep, how, arrays


def _circumstances(how: How, arrays: dict[str, xr.DataArray]) -> dict[str, Any]:
    """Settings that follow from the sweep itself, for the history."""
    filtered = arrays.get("filtered")
    return {"gates_in_front": how.front or None,
            "without_vrad": None if filtered is None else f"where {filtered.name} differs in 1 %"}


def words_of(fields: FieldMap) -> str | None:
    """A map of fields for the history."""
    return None if not fields else "|".join(f"{key}:{name}" for key, name in fields.items())


def needed(sweep: Sweep, mask: Inputs, calibration: Calibration) -> dict[str, xr.DataArray]:
    """The fields that are used; the correlation also separates weather from noise in the estimate."""
    names = {ARRAYS[bit] for bit in ARRAYS if bit & mask} | {"dbzh"}
    if calibration.radar_constant is None:
        names.add("rhohv")
    return {name: field for name, field in sweep.fields.items() if name in names}


def _history(function: str, how: How, **settings: Any) -> str:
    names = "|".join(str(bit.name) for bit in Inputs if bit & how.inputs and bit in ARRAYS)
    return describe(function, inputs=names, radar_constant=how.calibration.words,
                    min_snr=how.calibration.min_snr, **settings)


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
    """The sweep with clutter and noise blanked: its fields of floating-point numbers become NaN there,
    except those about the signal itself (signal-to-noise ratio, quality index, clutter mask).

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep.
    keep : EchoClass, int, str or several of them
        Classes that stay: ``"precipitation"``, ``["precipitation", "noise"]``.
    classes : xarray.DataArray, optional
        Classes to use; by default the variable ``CLASS`` (or `name`) of the sweep when it has one
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
        if not _core.is_spoiled_by_clutter(str(field.attrs.get("raw_name", key))):
            continue
        blanked[key] = field.where(stays).transpose(..., *field.dims)
        blanked[key].attrs = field.attrs | {"history": extended(field, history)}
        blanked[key].encoding = field.encoding
    return with_history(ds.assign(blanked), history)
