"""A bridge to radar objects as Py-ART has them, without importing it.

Any object serves that has ``fields`` (a dict of dicts with a masked array ``"data"``, rays x gates,
sweeps one after the other), and ``range``, ``azimuth``, ``elevation``, ``sweep_start_ray_index``,
``sweep_end_ray_index`` (dicts with ``"data"``). Sweeps are worked on one by one, and the object is
never modified::

    radar.add_field("echo_class", clutterclassifier.pyart.classify_radar(radar, radar_constant=40.0))
    gatefilter.exclude_gates(clutterclassifier.pyart.gate_excluded(radar))
"""

from __future__ import annotations

import re
from collections.abc import Hashable, Mapping
from typing import Any, Union

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from . import sweeps
from ._arrays.arguments import gate_spacing
from ._model.echo import MISSING
from ._model.names import field_names
from ._model.sweep import field_variable, sweep_dataset
from .sweeps._classify import CERTAINTY
from .sweeps._codes import CLASS, parse_classes
from .sweeps._sweep import FieldMap

_SITE = ("latitude", "longitude", "altitude")


def _data(radar: Any, name: str) -> NDArray[Any] | None:
    """The array of one of the dicts of a radar; None where it has none."""
    entry = getattr(radar, name, None)
    return None if entry is None else np.ma.asarray(entry["data"])


def _slices(radar: Any) -> list[slice]:
    """The rays of each sweep."""
    starts, ends = radar.sweep_start_ray_index["data"], radar.sweep_end_ray_index["data"]
    return [slice(int(start), int(end) + 1) for start, end in zip(starts, ends)]


def _values(field: dict[str, Any], rays: slice) -> NDArray[Any]:
    """The rays of a field, NaN where they are masked."""
    data = np.ma.asarray(field["data"])[rays]
    numbers = data if data.dtype.kind == "f" else data.astype(np.float32)
    return numbers.filled(np.nan)


def _mode(radar: Any, sweep: int) -> str:
    """The scan mode of a sweep, in lower case."""
    mode = _data(radar, "sweep_mode")
    if mode is None or sweep >= len(mode):
        return str(getattr(radar, "scan_type", "")).lower()
    word = np.ma.getdata(mode[sweep])
    if word.dtype.kind == "S":
        return b"".join(word.ravel().tolist()).decode("utf-8", "replace").lower()
    return "".join(map(str, word.ravel())).lower()


#: Seconds of the units of times, and how these are written.
_UNITS = {86400.0: "d day days", 3600.0: "h hr hrs hour hours", 60.0: "min mins minute minutes",
          1.0: "s sec secs second seconds", 1e-3: "ms msec msecs millisecond milliseconds",
          1e-6: "us microsecond microseconds"}
_SECONDS = {word: seconds for seconds, words in _UNITS.items() for word in words.split()}

#: As the CF conventions write it: "minutes since 2020-1-1 6:00:00.5 +01:00".
_SINCE = re.compile(r"""
    (?P<unit> [a-z]+) \s+ since \s+ (?P<year> \d{4}) - (?P<month> \d{1,2}) - (?P<day> \d{1,2})
    (?: (?:T|\s+) (?P<hour> \d{1,2}) : (?P<minute> \d{1,2}) (?: : (?P<second> \d{1,2} (?:\.\d*)?))? )?
    \s* (?: Z | UTC | GMT | (?P<sign> [+-]) (?P<east> \d{1,2}) :? (?P<east_minutes> \d{2})? )?""",
                    re.VERBOSE | re.IGNORECASE)

#: Years that lie wholly within what nanoseconds reach.
_YEARS = (1678, 2261)


def _clock(units: str) -> tuple[np.datetime64, float] | None:
    """Beginning and seconds of units such as "seconds since 2020-01-01T00:00:00Z"; None for others."""
    found = _SINCE.fullmatch(units.strip())
    if found is None or found["unit"].lower() not in _SECONDS:
        return None
    part = {name: text or "0" for name, text in found.groupdict().items()}
    if not _YEARS[0] <= int(part["year"]) <= _YEARS[1]:
        return None
    try:
        day = np.datetime64(f"{part['year']}-{int(part['month']):02}-{int(part['day']):02}", "ns")
    except ValueError:
        return None
    east = int(part["east"]) * 3600 + int(part["east_minutes"]) * 60
    seconds = int(part["hour"]) * 3600 + int(part["minute"]) * 60 + float(part["second"])
    seconds += east if part["sign"] == "-" else -east
    return day + np.timedelta64(round(seconds * 1e9), "ns"), _SECONDS[part["unit"].lower()]


def _times(radar: Any, rays: slice) -> NDArray[np.datetime64]:
    """Times of the rays, NaT where units or numbers give none."""
    unknown = np.full(rays.stop - rays.start, "NaT", "datetime64[ns]")
    entry: dict[str, Any] = getattr(radar, "time", None) or {}
    clock = _clock(str(entry.get("units", "")))
    try:
        numbers = np.ma.asarray(entry.get("data", ())).astype(np.float64)[rays].filled(np.nan)
    except (TypeError, ValueError):
        return unknown
    if clock is None or numbers.shape != unknown.shape:
        return unknown
    begin, seconds = clock
    with np.errstate(over="ignore"):
        nanoseconds = (numbers * (seconds * 1e9)).round()
    known = np.abs(nanoseconds + begin.astype(np.int64)) < 2.0**63 - 1e10
    later = np.where(known, nanoseconds, 0).astype("timedelta64[ns]")
    return np.where(known, begin + later, unknown)


def _variables(radar: Any, rays: slice, dims: tuple[str, str]) -> dict[str, xr.Variable]:
    raw = list(radar.fields)
    variables = {}
    for name, new in zip(raw, field_names(raw)):
        field = radar.fields[name]
        own = {key: str(field[key]) for key in ("units", "standard_name", "long_name") if key in field}
        known = field_variable(new, dims, _values(field, rays), raw_name=name)
        known.attrs = own | known.attrs
        variables[new] = known
    return variables


def from_radar(radar: Any) -> list[xr.Dataset]:
    """The sweeps of a radar as datasets in the model of CfRadial 2.

    Parameters
    ----------
    radar : object
        With the attributes named above; ``fixed_angle``, ``sweep_mode``, ``time``, ``latitude``,
        ``longitude`` and ``altitude`` are used where it has them.

    Returns
    -------
    list of xarray.Dataset
        Fields have CfRadial names where theirs are known, and the old ones in ``raw_name``. Masked
        gates are NaN. Times that are not known are NaT.

    Raises
    ------
    ValueError
        Ranges that do not rise evenly.

    Examples
    --------
    With a stand-in for a radar object:

    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> from types import SimpleNamespace
    >>> scan = cc.synthetic_arrays(5, nrays=90, ngates=200)
    >>> radar = SimpleNamespace(
    ...     fields={"reflectivity": {"data": scan["dbzh"]}, "velocity": {"data": scan["vrad"]}},
    ...     range={"data": scan["range"]}, azimuth={"data": scan["azimuth"]},
    ...     elevation={"data": np.full(90, 0.5)}, sweep_start_ray_index={"data": [0]},
    ...     sweep_end_ray_index={"data": [89]})
    >>> [sweep] = cc.pyart.from_radar(radar)
    >>> sorted(sweep.data_vars)[:1], sweep.VRADH.attrs["raw_name"]
    (['DBZH'], 'velocity')
    """
    ranges = np.ma.asarray(radar.range["data"], np.float64).filled(np.nan)
    spacing = gate_spacing(ranges, ranges.size)
    site = [0.0 if (place := _data(radar, name)) is None else float(np.ravel(place)[0]) for name in _SITE]
    fixed = _data(radar, "fixed_angle")
    datasets = []
    for number, rays in enumerate(_slices(radar)):
        mode = _mode(radar, number)
        rhi = "rhi" in mode
        azimuth, elevation = (np.ma.asarray(getattr(radar, name)["data"], np.float64)[rays].filled(np.nan)
                              for name in ("azimuth", "elevation"))
        angle = np.median(azimuth if rhi else elevation) if fixed is None else fixed[number]
        ds = sweep_dataset(
            _variables(radar, rays, ("elevation" if rhi else "azimuth", "range")), azimuth=azimuth,
            elevation=elevation, range=ranges, gate_spacing=spacing, time=None, latitude=site[0],
            longitude=site[1], altitude=site[2], fixed_angle=float(angle), sweep_number=number, rhi=rhi,
            sector="sector" in mode)
        datasets.append(ds.assign_coords(time=ds.time.copy(data=_times(radar, rays))))
    return datasets


def _by_raw_name(ds: xr.Dataset, fields: FieldMap) -> FieldMap:
    """A map of fields by the radar's own names."""
    new: dict[Hashable, Hashable] = {variable.attrs["raw_name"]: name for name, variable in
                                     ds.data_vars.items() if "raw_name" in variable.attrs}
    if fields is not None and not isinstance(fields, Mapping):
        raise TypeError(f"fields must be a dict such as {{'dbzh': 'my_name'}}, not {fields!r}")
    return {key: None if name is None else new.get(name, name) for key, name in (fields or {}).items()}


def classify_radar(radar: Any, *, fields: FieldMap = None, **keywords: Any) -> dict[str, Any]:
    """Classes of all sweeps as a field dict, ready for ``radar.add_field(name, ...)``.

    Parameters
    ----------
    radar : object
        As for `from_radar`.
    fields : dict, optional
        The field for each quantity, by the radar's names: ``{"dbzh": "my_reflectivity", "ldr": None}``.
    **keywords
        Of `clutterclassifier.sweeps.classify`: ``radar_constant``, ``min_snr``, ``inputs``, ...

    Returns
    -------
    dict
        ``data`` (masked array of uint8, rays x gates; masked where the reflectivity is), ``units``,
        ``long_name``, ``flag_values``, ``flag_meanings``, ``_FillValue``, ``history`` (of the first
        sweep). With ``certainty=True`` a dict of three of them by name, CLASS, PROBABILITY and MARGIN
        (the last two of float32, masked where there is no echo).

    Raises
    ------
    TypeError, ValueError
        A wrong argument, or no reflectivity; the message names it.

    Examples
    --------
    With a stand-in for a radar object:

    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> from types import SimpleNamespace
    >>> scan = cc.synthetic_arrays(5, nrays=90, ngates=200)
    >>> radar = SimpleNamespace(
    ...     fields={"reflectivity": {"data": scan["dbzh"]}, "velocity": {"data": scan["vrad"]}},
    ...     range={"data": scan["range"]}, azimuth={"data": scan["azimuth"]},
    ...     elevation={"data": np.full(90, 0.5)}, sweep_start_ray_index={"data": [0]},
    ...     sweep_end_ray_index={"data": [89]})
    >>> field = cc.pyart.classify_radar(radar, radar_constant=scan["radar_constant"], min_snr=10)
    >>> field["data"].shape, field["flag_meanings"]
    ((90, 200), 'precipitation noise ground_clutter')
    """
    keywords.pop("name", None)
    rays = len(np.ma.asarray(radar.azimuth["data"]))
    gates = len(np.ma.asarray(radar.range["data"]))
    fill = 0 if keywords.get("codes") == "pyrad" else MISSING
    results: dict[str, dict[str, Any]] = {}
    for ds, where in zip(from_radar(radar), _slices(radar)):
        sweep = sweeps.classify(ds, fields=_by_raw_name(ds, fields), **keywords)
        for name in (CLASS, *CERTAINTY) if keywords.get("certainty") else (CLASS,):
            values, empty = sweep[name].values, fill if name == CLASS else np.nan
            if name not in results:
                results[name] = {"data": np.full((rays, gates), empty, values.dtype), **sweep[name].attrs}
            results[name]["data"][where] = values
    for name, result in results.items():
        masked = np.ma.masked_equal(result["data"], fill) if name == CLASS else np.ma.masked_invalid(result["data"])
        result |= {"data": masked, "_FillValue": masked.fill_value}
    return results if len(results) > 1 else results[CLASS]


def gate_excluded(radar: Any, drop: Union[str, tuple[str, ...]] = ("clutter", "noise"),
                  **keywords: Any) -> NDArray[np.bool_]:
    """Which gates a filter drops. As in a gate filter, True is excluded.

    Parameters
    ----------
    radar : object
        As for `from_radar`.
    drop : str or several of them
        Classes: "precipitation", "ground_clutter", "sea_clutter", "turbine_clutter", "noise";
        "clutter" is all of its kinds. Gates without a class are dropped in any case.
    **keywords
        Of `classify_radar`.

    Returns
    -------
    numpy.ndarray of bool, shape (rays, gates)

    Raises
    ------
    TypeError, ValueError
        An unknown class; else as for `classify_radar`.

    Examples
    --------
    With a stand-in for a radar object:

    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> from types import SimpleNamespace
    >>> scan = cc.synthetic_arrays(5, nrays=90, ngates=200)
    >>> radar = SimpleNamespace(
    ...     fields={"reflectivity": {"data": scan["dbzh"]}, "velocity": {"data": scan["vrad"]}},
    ...     range={"data": scan["range"]}, azimuth={"data": scan["azimuth"]},
    ...     elevation={"data": np.full(90, 0.5)}, sweep_start_ray_index={"data": [0]},
    ...     sweep_end_ray_index={"data": [89]})
    >>> out = cc.pyart.gate_excluded(radar, radar_constant=scan["radar_constant"], min_snr=10)
    >>> bool(out[scan["truth"] == cc.NOISE].mean() > 0.95)
    True
    """
    out = [int(echo) for echo in parse_classes("drop", drop)]
    for name in ("codes", "certainty"):
        keywords.pop(name, None)
    classes = classify_radar(radar, **keywords)["data"]
    return np.isin(classes.filled(MISSING), [*out, MISSING])


def to_gatefilter(radar: Any, drop: Union[str, tuple[str, ...]] = ("clutter", "noise"), *,
                  gatefilter: Any = None, **keywords: Any) -> Any:
    """A gate filter of Py-ART that excludes classes.

    Parameters
    ----------
    radar : object
        As for `from_radar`.
    drop : str or several of them
        As for `gate_excluded`.
    gatefilter : object, optional
        A gate filter of this radar, to which the gates are added by its method ``exclude_gates``; by
        default a new one of Py-ART.
    **keywords
        Of `classify_radar`.

    Returns
    -------
    object
        The gate filter.

    Raises
    ------
    ModuleNotFoundError
        There is no Py-ART, and no `gatefilter` was given.
    TypeError, ValueError
        As for `gate_excluded`.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> rain_only = cc.pyart.to_gatefilter(radar, radar_constant=40.0)  # doctest: +SKIP
    """
    excluded = gate_excluded(radar, drop, **keywords)
    if gatefilter is None:
        from pyart.filters import GateFilter

        gatefilter = GateFilter(radar)
    gatefilter.exclude_gates(excluded)
    return gatefilter
