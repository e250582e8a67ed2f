"""How a sweep was scanned: angles of its rays, and whether they close a circle."""

from __future__ import annotations

import numpy as np
import xarray as xr

from ._sweep import RANGE, Sweep


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
