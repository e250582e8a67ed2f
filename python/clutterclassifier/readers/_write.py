"""Sweep Datasets as files of the library's formats."""

from __future__ import annotations

import errno
import os
import warnings
from collections.abc import Iterable
from typing import TYPE_CHECKING, Any, Union

import numpy as np

from .. import _core
from .._arrays.scans import angles as per_ray_angles
from .._model.echo import MISSING
from ._read import Path, as_file_name

if TYPE_CHECKING:
    from numpy.typing import NDArray
    import xarray as xr

Sweeps = Union["xr.Dataset", Iterable["xr.Dataset"]]

#: What field records and Universal Format files call a field of classes.
_CLASS_NAMES = {".uf": "CC"}
_CLASS_NAME = "CCl"

_SITE = ("latitude", "longitude", "altitude")

#: Endings of other formats: a field record of such a name would mislead.
_FOREIGN = (".asc", ".bin", ".bz2", ".dx", ".gz", ".hdf", ".pdf", ".png", ".pol", ".svg", ".zarr")

#: Endings of formats that have CfRadial's names.
_MODERN = (".h5", ".nc", ".nc4")


def write(sweeps: Sweeps, path: Path) -> list[str]:
    """Write sweeps as files; the ending says which format.

    =========  =============================================================================
    ending     file
    =========  =============================================================================
    ``.uf``    Universal Format: one file with all sweeps and all fields; ``.uf.gz`` compressed
    ``.h5``    ODIM_H5: one file with all sweeps and all fields
    ``.nc``    CfRadial: one file with all sweeps and all fields
    ``.csv``   comma-separated table of the classes, one file a sweep
    other      field record with all fields, one file a sweep; ``.plv`` is customary
    =========  =============================================================================

    With several sweeps ``_sweepN`` goes before the ending of files that hold one. No file takes its
    name before all are complete.

    Parameters
    ----------
    sweeps : xarray.Dataset or several
        Sweeps of one volume, with the fields as variables of the dimensions (azimuth, range) or
        (elevation, range). In ODIM_H5 and CfRadial a field has the name of its variable, elsewhere
        that of its attribute ``raw_name``, if any. The variable ``CLASS`` holds the classes.
    path : path
        File to write.

    Returns
    -------
    list of str
        The files that were written.

    Raises
    ------
    ValueError
        A dataset is not a sweep, or the format cannot hold the fields; the message names it.
    OSError
        A file cannot be written.

    Warns
    -----
    UserWarning
        The format loses something, such as the elevations of a range-height scan.

    Examples
    --------
    >>> import tempfile
    >>> import clutterclassifier as cc
    >>> folder = tempfile.TemporaryDirectory()
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> [name] = cc.write(scan.assign(CLASS=scan.clutter.classify()), folder.name + "/scan.uf")
    >>> [sweep] = cc.read(name)
    >>> "CLASS" in sweep, sweep.DBZH.attrs["raw_name"]
    (True, 'DZ')
    """
    import xarray as xr

    name = as_file_name(path)
    plain = os.fsdecode(name).lower()
    ending = ".uf" if plain.endswith(".uf.gz") else os.path.splitext(plain)[1]
    if ending in _FOREIGN:
        raise ValueError(f"path: a {ending} file cannot be written here, but .uf, .csv or, for a field "
                         "record, .plv")
    if not os.path.isdir(os.path.dirname(name) or b"."):
        raise FileNotFoundError(errno.ENOENT, "No such directory", os.path.dirname(os.fsdecode(name)))
    volume = [sweeps] if isinstance(sweeps, xr.Dataset) else list(sweeps)
    if not volume:
        raise ValueError("sweeps: there is none to write")
    described = [_sweep(ds, at, ending) for at, ds in enumerate(volume)]
    try:
        paths, notes = _core.write_scan(name, _scan(volume[0]) | {"sweeps": described}, ending in _MODERN)
    except RuntimeError as error:
        raise _failure(name, error) from None
    for note in notes:
        warnings.warn(note, stacklevel=2)
    return [os.fsdecode(written) for written in paths]


def _failure(name: bytes, error: RuntimeError) -> Exception:
    text = str(error)
    kind = OSError if text.startswith("cannot write") else ValueError
    return kind(text if kind is OSError else f"{os.fsdecode(name)}: {text}")


def _scan(first: xr.Dataset) -> dict[str, Any]:
    """The facts that all sweeps share. Unknown is 0 or empty."""
    def number(name: str) -> float:
        value = first[name] if name in first.variables else first.attrs.get(name, 0.0)
        single = np.ravel(np.asarray(value))
        known = single.size == 1 and single.dtype.kind in "fiu" and np.isfinite(single[0])
        return float(single[0]) if known else 0.0

    return {"radar_name": str(first.attrs.get("instrument_name", "")),
            "site_name": str(first.attrs.get("site_name", "")), "time": _time(first),
            **{name: number(name) for name in (*_SITE, "beam_width", "wavelength")}}


def _time(ds: xr.Dataset) -> list[int]:
    times = np.ravel(ds["time"].values) if "time" in ds.variables else np.array([])
    known = times[~np.isnat(times)] if times.dtype.kind == "M" else times[:0]
    if known.size == 0:
        return [1900, 1, 1, 0, 0, 0]
    day, _, clock = str(known.min().astype("datetime64[s]")).partition("T")
    return [int(part) for part in (*day.split("-"), *clock.split(":"))]


def _sweep(ds: xr.Dataset, at: int, ending: str) -> dict[str, Any]:
    from ..sweeps._geometry import is_rhi
    from ..sweeps._sweep import RANGE, gate_step, has_gates, ray_dimension

    fields = [field for field in ds.data_vars.values() if has_gates(field) and field.dtype.kind in "fiub"]
    if not fields:
        raise ValueError(f"sweeps[{at}] has no field with the dimensions (azimuth, range)")
    rays = ray_dimension(fields[0])
    for field in fields:
        if set(field.dims) != {rays, RANGE}:
            raise ValueError(f"sweeps[{at}]: {field.name} has the dimensions {field.dims}, not one sweep's")
    fixed = ds.get("sweep_fixed_angle")
    rhi = is_rhi(ds, rays)
    still = "azimuth" if rhi else "elevation"
    sources = {name: ds[name] if name in ds.variables else None for name in ("azimuth", "elevation")}
    if sources[still] is None:
        sources[still] = fixed
    angles = {name: _angle(source, name, rays, ds.sizes[rays], at) for name, source in sources.items()}
    spacing = gate_step(ds)
    number = ds.attrs.get("raw_sweep_number", at + 1)
    return {**angles, "number": int(number), "rhi": rhi, "ngates": ds.sizes[RANGE], "gate_spacing": spacing,
            "fixed_angle": float(np.median(angles[still]) if fixed is None else fixed),
            "first_gate": float(np.ravel(ds[RANGE].values)[0]),
            "mode": _mode(ds), "ray_time": _ray_times(ds, rays),
            "nyquist_velocity": float(ds.attrs.get("nyquist_velocity", 0.0)),
            "fields": [_field(field.transpose(rays, RANGE), ending) for field in fields]}


def _mode(ds: xr.Dataset) -> str:
    """As CfRadial names it; empty where the dataset does not say."""
    mode = ds.get("sweep_mode")
    if mode is None or mode.size != 1 or mode.dtype.kind not in "OSU":
        return ""
    text = mode.values.item()
    return text.decode() if isinstance(text, bytes) else str(text)


def _ray_times(ds: xr.Dataset, rays: str) -> NDArray[np.float64]:
    """Seconds since 1970 of each ray; none where the rays have no times of their own."""
    time = ds["time"] if "time" in ds.variables else None
    if time is None or time.dims != (rays,) or time.dtype.kind != "M" or np.isnat(time.values).any():
        return np.empty(0)
    seconds = time.values.astype("datetime64[ns]").astype(np.int64) / 1e9
    return seconds if np.ptp(seconds) > 0 else np.empty(0)


def _angle(source: xr.DataArray | None, name: str, rays: str, count: int, at: int) -> NDArray[np.float64]:
    """One angle a ray."""
    if source is None or not set(source.dims) <= {rays}:
        raise ValueError(f"sweeps[{at}] has no {name} along {rays}")
    return per_ray_angles(f"sweeps[{at}]: {name}", source.values, (count, 1))


def _field(field: xr.DataArray, ending: str) -> dict[str, Any]:
    from ..sweeps._apply import no_echo_value
    from ..sweeps._codes import CLASS, library_codes

    if field.name == CLASS:
        codes = library_codes(field).values
        values = np.where(codes == MISSING, np.float32(np.nan), codes.astype(np.float32))
        return {"name": _CLASS_NAMES.get(ending, _CLASS_NAME), "units": "-", "no_echo": None,
                "values": np.ascontiguousarray(values)}
    raw, units = field.attrs.get("raw_name"), field.attrs.get("units", "")
    name = raw if raw and ending not in _MODERN else field.name
    return {"name": str(name), "units": str(units), "no_echo": no_echo_value(field),
            "values": np.ascontiguousarray(field.values, np.float32)}
