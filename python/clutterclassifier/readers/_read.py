"""The files of all formats as sweep Datasets."""

from __future__ import annotations

import os
from collections.abc import Mapping
from datetime import datetime, timedelta
from typing import TYPE_CHECKING, Any, Union

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._model.echo import MISSING, EchoClass
from .._model.names import check_names, field_names
from .._model.sweep import class_variable, field_variable, sweep_dataset

if TYPE_CHECKING:
    import xarray as xr

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

#: Names of the formats in messages.
FORMATS = {"uf": "Universal Format", "dx": "German DX", "polar": "polar data", "record": "field record",
           "hdf5": "HDF5", "netcdf": "NetCDF", "nexrad": "NEXRAD Level 2", "compressed": "compressed"}

#: Packings of polar data files, for files that do not record theirs.
LAYOUTS = (252, 260, 280)

#: Of nanoseconds in 64 bits, counted from 1970.
_LATEST_SECOND = 9e9

#: Units of the files as CfRadial spells them.
_UNITS = {"deg": "degrees", "m/s": "m s-1", "deg/km": "degrees per kilometer", "mm/h": "mm h-1"}


def recognise(path: Path) -> str | None:
    """The format of a file by its first bytes.

    Parameters
    ----------
    path : path
        The file.

    Returns
    -------
    str or None
        A key of `FORMATS`; None for any other file.

    Raises
    ------
    OSError
        The file cannot be opened.

    Examples
    --------
    >>> import tempfile
    >>> with tempfile.NamedTemporaryFile() as file:
    ...     print(recognise(file.name))
    None
    """
    name = as_file_name(path)
    with open(path, "rb") as file:
        if not file.read(1):
            return None
    try:
        return _core.recognise(name) or None
    except RuntimeError as error:
        raise _failure(path, error) from None


def read(path: Path, *, layout: int | None = None,
         names: Mapping[str, str] | None = None) -> list[xr.Dataset]:
    """Read a radar file. Its content decides the format.

    Parameters
    ----------
    path : path
        The file.
    layout : {252, 260, 280}, optional
        How the gates of a polar data file are packed. Products 2211 and 2212 need it, other products
        and formats ignore it.
    names : dict, optional
        New names of fields by their names in the file, for example
        ``{"DR": "ZDR"}``; fields that it does not hold get CfRadial names where theirs are known.

    Returns
    -------
    list of xarray.Dataset
        One a sweep, in the order of the file; the attribute ``comment`` reports anything unusual,
        for example that the file was cut short. Fields are float32; ``attrs["raw_name"]`` of a field is
        its name in the file. Of several fields of one quantity the one before the clutter filter
        gets the CfRadial name, the others keep theirs. A field of class codes is CLASS (uint8).

    Raises
    ------
    OSError
        The file cannot be opened.
    ValueError
        Its content cannot be read, a needed `layout` is missing, or `names` does not fit; the message
        starts with the file's name.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> sweeps = cc.read("scan.uf", names={"DR": "ZDR"})  # doctest: +SKIP
    >>> sweeps[0].DBZH.plot()  # doctest: +SKIP
    """
    return [_sweep(scan, at, names) for scan in [_scan(path, layout, names)]
            for at in range(len(scan["sweeps"]))]


def open_uf(path: Path, *, names: Mapping[str, str] | None = None) -> list[xr.Dataset]:
    """A Universal Format file as `read` gives it: one dataset a sweep.

    A file of another format is a ValueError.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> volume = cc.open_uf("volume.uf")  # doctest: +SKIP
    """
    return _read_as("uf", path, names=names)


def open_dx(path: Path, *, names: Mapping[str, str] | None = None) -> list[xr.Dataset]:
    """A German DX file as `read` gives it: one sweep with the one field DBZH (dBZ).

    A file of another format is a ValueError.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> [sweep] = cc.open_dx("raa00-dx_10908.bin")  # doctest: +SKIP
    """
    return _read_as("dx", path, names=names)


def open_polar(path: Path, *, layout: int | None = None,
               names: Mapping[str, str] | None = None) -> list[xr.Dataset]:
    """A polar data file as `read` gives it. Nothing is corrected or blanked.

    A file of another format is a ValueError.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> [sweep] = cc.open_polar("scan.dat", layout=280)  # doctest: +SKIP
    """
    return _read_as("polar", path, layout=layout, names=names)


def open_record(path: Path, *, names: Mapping[str, str] | None = None) -> list[xr.Dataset]:
    """A field record file in polar coordinates as `read` gives it. A grid is a ValueError.

    A file of another format is a ValueError.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> [classified] = cc.open_record("classes.plv")  # doctest: +SKIP
    """
    return _read_as("record", path, names=names)


def read_sweep(path: Path, sweep: int, *, layout: int | None = None,
               names: Mapping[str, str] | None = None) -> xr.Dataset:
    """One sweep of a file; see `read`.

    Parameters
    ----------
    path, layout, names
        As for `read`.
    sweep : int
        Which one, counted from 0.

    Returns
    -------
    xarray.Dataset

    Raises
    ------
    OSError, ValueError
        As for `read`; also if the sweep does not exist.

    Examples
    --------
    >>> from clutterclassifier.readers import read_sweep
    >>> lowest = read_sweep("volume.uf", 0)  # doctest: +SKIP
    """
    scan = _scan(path, layout, names)
    count = len(scan["sweeps"])
    if not 0 <= sweep < count:
        raise ValueError(f"{os.fsdecode(path)}: no sweep {sweep}; there are {count}, counted from 0")
    return _sweep(scan, sweep, names)


def check_layout(layout: int | None) -> None:
    """Raise ValueError for a packing that is none of `LAYOUTS`."""
    if layout is not None and layout not in LAYOUTS:
        raise ValueError(f"layout must be one of {', '.join(map(str, LAYOUTS))}, not {layout!r}")


def require_format(path: Path, wanted: str) -> None:
    """Raise ValueError where a file has another format than a key of `FORMATS`."""
    found = recognise(path)
    if found != wanted:
        what = FORMATS.get(found or "", "of an unknown format")
        raise ValueError(f"{os.fsdecode(path)}: is not a {FORMATS[wanted]} file, but {what}")


def as_file_name(path: Path) -> bytes:
    """A path as bytes. (`open` would accept a number as a descriptor, and close it.)"""
    if not isinstance(path, (str, bytes, os.PathLike)):
        raise TypeError(f"path must be a path, not {path!r}")
    return os.fsencode(path)


def _read_as(wanted: str, path: Path, **options: Any) -> list[xr.Dataset]:
    require_format(path, wanted)
    return read(path, **options)


def _failure(path: Path, error: Exception) -> ValueError:
    """The library's reason, with the file that it is about."""
    return ValueError(f"{os.fsdecode(path)}: {error}")


def _scan(path: Path, layout: int | None, names: Mapping[str, str] | None) -> dict[str, Any]:
    """The file as arrays; each becomes part of one Dataset."""
    check_layout(layout)
    name = as_file_name(path)
    with open(path, "rb"):  # for the OSError with its reason and name
        pass
    try:
        scan = _core.read_scan(name, layout or 0)
    except RuntimeError as error:
        raise _failure(path, error) from None
    try:
        check_names(names, [field["name"] for sweep in scan["sweeps"] for field in sweep["fields"]])
    except ValueError as error:
        raise ValueError(f"{os.fsdecode(path)}: {error}") from None
    return scan


def _sweep(scan: dict[str, Any], at: int, names: Mapping[str, str] | None) -> xr.Dataset:
    sweep = scan["sweeps"][at]
    dims = ("elevation" if sweep["rhi"] else "azimuth", "range")
    fields = sweep["fields"]
    chosen = field_names([field["name"] for field in fields], names,
                         [i for i, field in enumerate(fields) if _is_class(field)])
    gates = np.arange(sweep["ngates"], dtype=np.float64)
    latitude, longitude, altitude = _site(scan)
    return sweep_dataset(
        {name: _variable(name, dims, field) for name, field in zip(chosen, fields)},
        azimuth=sweep["azimuth"], elevation=sweep["elevation"],
        range=sweep["first_gate"] + gates * sweep["gate_spacing"],
        gate_spacing=sweep["gate_spacing"], time=_ray_times(sweep["ray_time"], scan["time"]), latitude=latitude,
        longitude=longitude, altitude=altitude, fixed_angle=sweep["fixed_angle"], sweep_number=at,
        rhi=sweep["rhi"], sector=not sweep["closed"], attrs=_attributes(scan, sweep))


def _is_class(field: dict[str, Any]) -> bool:
    """Whether a field holds classes: those of modern formats have the name of the variable."""
    if field["is_class"] or field["name"] != "CLASS":
        return bool(field["is_class"])
    known = field["values"][~np.isnan(field["values"])]
    return known.size > 0 and bool(np.isin(known, [*EchoClass]).all())


def _variable(name: str, dims: tuple[str, str], field: dict[str, Any]) -> xr.Variable:
    values = field["values"]
    if _is_class(field):
        codes = np.where(np.isnan(values), np.float32(MISSING), values).astype(np.uint8)
        variable = class_variable(dims, codes, "Class of echo")
        variable.attrs["raw_name"] = field["name"]
        return variable
    attributes: dict[str, Any] = {"raw_name": field["name"]}
    if field["no_echo"] is not None:
        attributes["_Undetect"] = np.float32(field["no_echo"])
    if field["units"]:
        attributes["units"] = _UNITS.get(field["units"], field["units"])
    return field_variable(name, dims, values, **attributes)


def _attributes(scan: dict[str, Any], sweep: dict[str, Any]) -> dict[str, Any]:
    """The attributes that are known: 0 and empty mean unknown."""
    attributes = {
        "instrument_name": scan["radar_name"], "site_name": scan["site_name"],
        "source_format": scan["format"], "radar_constant": scan["radar_constant"],
        "nyquist_velocity": sweep["nyquist_velocity"], "beam_width": scan["beam_width"],
        "wavelength": scan["wavelength"], "comment": " ".join(scan["oddities"]),
    }
    known = {name: value for name, value in attributes.items() if value}
    if scan["radar_constant"] is not None:
        known["radar_constant"] = scan["radar_constant"]
    return known | {"raw_sweep_number": sweep["number"]}


def _site(scan: dict[str, Any]) -> tuple[float, float, float]:
    """Latitude, longitude and altitude; NaN where unknown, since some formats have no site."""
    place = scan["latitude"], scan["longitude"], scan["altitude"]
    if place[:2] != (0.0, 0.0):
        return place
    return np.nan, np.nan, place[2] or np.nan


def _ray_times(seconds: NDArray[np.float64], scan: tuple[int, int, int, int, int, int]
               ) -> NDArray[np.datetime64] | datetime | None:
    """The time of each ray, in microseconds; that of the scan where the file has no others."""
    if seconds.size == 0 or not np.isfinite(seconds).all() or np.abs(seconds).max() > _LATEST_SECOND:
        return _time(scan)
    return np.round(seconds * 1e6).astype(np.int64).astype("datetime64[us]").astype("datetime64[ns]")


def _time(numbers: tuple[int, int, int, int, int, int]) -> datetime | None:
    """The time of a scan; None where the file has no valid one."""
    year, month, day, hour, minute, second = numbers
    if not (1678 <= year <= 2261 and 0 <= hour < 24 and 0 <= minute < 60 and 0 <= second <= 60):
        return None
    try:
        return datetime(year, month, day) + timedelta(hours=hour, minutes=minute, seconds=second)
    except ValueError:
        return None
