"""Sweeps in NetCDF files: those that xarray's own engines read, and the outputs of archive runs."""

from __future__ import annotations

import re
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any

import numpy as np

from ._files import by_descriptor

if TYPE_CHECKING:
    import xarray as xr

_GROUP = re.compile(r"sweep_(\d+)")
_RAY_DIMENSIONS = {"azimuth", "elevation"}
_SITE = ("latitude", "longitude", "altitude")

#: Engines that xradar brings along, where it is installed.
_FURTHER_ENGINES = ("cfradial1", "odim", "gamic")

#: NetCDF 3 (classic, 64-bit offsets, 64-bit data) and HDF5, which NetCDF 4 is.
_MAGIC = (b"CDF\x01", b"CDF\x02", b"CDF\x05", b"\x89HDF\r\n\x1a\n")


def is_netcdf(path: str) -> bool:
    """Whether a file is NetCDF or HDF5, by its first bytes."""
    with open(path, "rb") as file:
        return file.read(8).startswith(_MAGIC)


def read_netcdf(path: str) -> list[xr.Dataset]:
    """The sweeps of a file: groups as CfRadial 2 has them, a single sweep without a group, and the formats
    that xradar reads, where it is installed.

    Raises
    ------
    ValueError
        No sweep is found in it.
    """
    with by_descriptor(path) as name:
        return _read(name)


def _read(path: str) -> list[xr.Dataset]:
    import netCDF4
    import xarray as xr

    with netCDF4.Dataset(path) as file:
        groups = sorted(filter(_GROUP.fullmatch, file.groups), key=lambda name: int(name[6:]))
    engines = [engine for engine in _FURTHER_ENGINES if engine in xr.backends.list_engines()]
    if groups:
        sweeps = _read_groups(path, groups)
    elif engines:
        sweeps = next(filter(None, (_read_with(path, engine) for engine in engines)), [])
    else:
        sweeps = [_as_sweep(xr.load_dataset(path, engine="netcdf4"))]
    sweeps = [sweep for sweep in sweeps if _is_sweep(sweep)]
    if not sweeps:
        raise ValueError("no sweep with azimuth and range in it (xradar may read more)")
    return sweeps


def _read_groups(path: str, groups: Sequence[str]) -> list[xr.Dataset]:
    import xarray as xr

    root = xr.load_dataset(path, engine="netcdf4")
    site = {name: root[name].variable for name in _SITE if name in root.variables}
    sweeps = []
    for group in groups:
        sweep = xr.load_dataset(path, engine="netcdf4", group=group)
        here = {name: value for name, value in site.items() if name not in sweep.variables}
        sweeps.append(_as_sweep(sweep.assign_coords(here)).assign_attrs({**root.attrs, **sweep.attrs}))
    return sweeps


def _read_with(path: str, engine: str) -> list[xr.Dataset]:
    """All sweeps that an engine finds; none when it is not the one for this file."""
    import xarray as xr

    sweeps: list[xr.Dataset] = []
    try:
        while True:
            sweeps.append(xr.load_dataset(path, engine=engine, group=f"sweep_{len(sweeps)}"))
    except Exception:  # engines raise different exceptions for a missing group
        return sweeps


def _as_sweep(ds: xr.Dataset) -> xr.Dataset:
    """Rays counted by time, as files have them, are counted by the angle that moves."""
    if "time" not in ds.dims or _RAY_DIMENSIONS & set(ds.dims):
        return ds
    mode = ds["sweep_mode"].values if "sweep_mode" in ds.variables else ""
    angle = "elevation" if np.all(mode == "rhi") else "azimuth"
    return ds.swap_dims({"time": angle}) if angle in ds.variables and ds[angle].dims == ("time",) else ds


def _is_sweep(ds: xr.Dataset) -> bool:
    """One sweep, not several stacked."""
    return "range" in ds.dims and bool(_RAY_DIMENSIONS & set(ds.dims)) and ds.sizes.get("sweep", 1) == 1


def write_sweeps(path: str, sweeps: Sequence[xr.Dataset], attributes: Mapping[str, Any]) -> None:
    """Writes sweeps as groups ``sweep_0`` ... of one compressed NetCDF 4 file.

    The root group holds the site, the list of sweeps and `attributes`; the Datasets are not changed.
    """
    _root(sweeps, attributes).to_netcdf(path, mode="w", engine="netcdf4", format="NETCDF4")
    for number, sweep in enumerate(sweeps):
        plain = _without_encoding(sweep)
        plain.to_netcdf(path, mode="a", group=f"sweep_{number}", engine="netcdf4", format="NETCDF4",
                        encoding={name: _encoding(plain[name], sweep[name]) for name in plain.variables})


def _root(sweeps: Sequence[xr.Dataset], attributes: Mapping[str, Any]) -> xr.Dataset:
    import xarray as xr

    groups = np.array([f"sweep_{number}" for number in range(len(sweeps))], dtype=object)
    angles = [float(sweep["sweep_fixed_angle"]) if "sweep_fixed_angle" in sweep else np.nan
              for sweep in sweeps]
    root = xr.Dataset(
        {"volume_number": ((), np.int32(0)),
         "sweep_group_name": ("sweep", groups),
         "sweep_fixed_angle": ("sweep", np.array(angles, np.float32), {"units": "degrees"})},
        attrs=_attributes({**attributes, "Conventions": "Cf/Radial", "version": "2.0"}))
    times = [sweep["time"].values for sweep in sweeps if "time" in sweep.variables]
    if times and all(np.issubdtype(time.dtype, np.datetime64) and time.size for time in times):
        root["time_coverage_start"] = _iso(min(time.min() for time in times))
        root["time_coverage_end"] = _iso(max(time.max() for time in times))
    for name in _SITE:
        if name in sweeps[0].variables and sweeps[0][name].ndim == 0:
            root[name] = sweeps[0][name].variable.copy()
    return root


def _iso(time: np.datetime64) -> str:
    return f"{np.datetime_as_string(time, unit='s')}Z"


def _attributes(attributes: Mapping[str, Any]) -> dict[str, Any]:
    """Attributes that NetCDF has types for; others as text, and nothing for None."""
    plain: dict[str, Any] = {}
    for name, value in attributes.items():
        if isinstance(value, (bool, np.bool_)):
            plain[name] = int(value)
        elif isinstance(value, (str, int, float, np.number, np.ndarray, list, tuple)):
            plain[name] = value
        elif value is not None:
            plain[name] = str(value)
    return plain


def _without_encoding(sweep: xr.Dataset) -> xr.Dataset:
    """A shallow copy without the encoding of the file it came from."""
    plain = sweep.copy().assign_attrs(_attributes(sweep.attrs))
    plain.encoding = {}
    for name, variable in plain.variables.items():
        variable.encoding = {}
        variable.attrs = _attributes(variable.attrs)
        if name in plain.data_vars:  # sorted: their order would differ between processes
            further = sorted(map(str, set(plain[name].coords) - set(plain[name].dims)))
            variable.encoding = {"coordinates": " ".join(further)} if further else {}
    return plain


def _encoding(plain: xr.DataArray, original: xr.DataArray) -> dict[str, Any]:
    """Fields are compressed; a fill value of whole numbers (of the classes) is kept."""
    if plain.ndim < 2 or plain.dtype.kind not in "fiu":
        return {}
    encoding: dict[str, Any] = {"zlib": True, "complevel": 4, "shuffle": plain.dtype.itemsize > 1}
    if plain.dtype.kind in "iu" and "_FillValue" in original.encoding:
        encoding["_FillValue"] = original.encoding["_FillValue"]
    return encoding
