"""Which ray and gate each pixel of a picture shows."""

from __future__ import annotations

from typing import NamedTuple, Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays.arguments import positive
from .._arrays.beam import beam_height
from ..sweeps._sweep import RANGE, Sweep

_PIXELS = 900
_EARTH_KM = 6378.0
_HIGHEST_KM = 20.0


class View(NamedTuple):
    """Where the pixels of a picture lie, km: extent (left, right, bottom, top), ray and gate of each
    (-1 where there is none)."""

    extent: tuple[float, float, float, float]
    ray: NDArray[np.intp]
    gate: NDArray[np.intp]

    def image(self, values: NDArray[Any], nothing: Any) -> NDArray[Any]:
        """The values of a sweep at the pixels."""
        ray, gate = np.where(self.inside, self.ray, 0), np.where(self.inside, self.gate, 0)
        return np.where(self.inside, values[ray, gate], nothing)

    @property
    def inside(self) -> NDArray[np.bool_]:
        """Pixels where the radar measured."""
        return (self.ray >= 0) & (self.gate >= 0)


def _nearest_ray(rays: NDArray[np.float64], wanted: NDArray[np.float64], circle: bool) -> NDArray[np.intp]:
    """The ray with the nearest angle (degrees); -1 farther away than rays are from each other."""
    order = np.argsort(rays, kind="stable")
    known = rays[order]
    if circle:
        known = np.concatenate([known[-1:] - 360, known, known[:1] + 360])
        order = np.concatenate([order[-1:], order, order[:1]])
    right = np.clip(np.searchsorted(known, wanted), 1, max(len(known) - 1, 1))
    left = right - 1
    right = np.minimum(right, len(known) - 1)
    nearest = np.where(np.abs(wanted - known[left]) <= np.abs(known[right] - wanted), left, right)
    steps = np.diff(known)
    reach = max(0.75 * float(np.median(steps)), 0.5) if len(steps) else 0.5
    return np.where(np.abs(wanted - known[nearest]) <= reach, order[nearest], -1)


class _Gates(NamedTuple):
    """Gates at even ranges, km."""

    number: int
    first: float
    step: float

    @property
    def end(self) -> float:
        """Where the last gate ends."""
        return self.first + (self.number - 0.5) * self.step

    def at(self, wanted_km: NDArray[np.float64]) -> NDArray[np.intp]:
        """The gate of each range; -1 where there is none."""
        gate = np.floor((wanted_km - self.first) / self.step + 0.5).astype(np.intp)
        return np.where((gate >= 0) & (gate < self.number), gate, -1)


def _plan_view(azimuth: NDArray[np.float64], gates: _Gates, reach_km: float) -> View:
    """Seen from above: x east and y north."""
    x = np.linspace(-reach_km, reach_km, _PIXELS)[np.newaxis]
    y = x.T
    ray = _nearest_ray(np.mod(azimuth, 360), np.mod(np.degrees(np.arctan2(x, y)), 360), circle=True)
    return View((-reach_km, reach_km, -reach_km, reach_km), ray, gates.at(np.hypot(x, y)))


def _side_view(elevation: NDArray[np.float64], gates: _Gates, reach_km: float) -> View:
    """Seen from the side: distance along the ground and height of a straight beam over a sphere."""
    top = min(_HIGHEST_KM, float(beam_height(1000 * reach_km, np.nanmax(elevation))) / 1000)
    distance = np.linspace(0, reach_km, _PIXELS)[np.newaxis] / _EARTH_KM
    height = np.linspace(0, top, _PIXELS // 2)[:, np.newaxis]
    angle = np.arctan2(np.cos(distance) - _EARTH_KM / (_EARTH_KM + height), np.sin(distance))
    slant = np.hypot((_EARTH_KM + height) * np.sin(distance),
                     (_EARTH_KM + height) * np.cos(distance) - _EARTH_KM)
    ray = _nearest_ray(elevation, np.degrees(angle), circle=False)
    return View((0, reach_km, 0, top), ray, gates.at(slant))


def view_of(ds: xr.Dataset, sweep: Sweep, rhi: bool, reach_km: float | None) -> View:
    gates = _Gates(ds.sizes[RANGE], float(ds[RANGE].values[0]) / 1000, sweep.spacing / 1000)
    if gates.end <= 0:
        raise ValueError(f"range: the last gate ends at {gates.end:g} km, before the radar")
    reach = gates.end if reach_km is None else positive("reach_km", reach_km)
    name = "elevation" if rhi else "azimuth"
    if name not in ds or ds[name].dims != (sweep.rays,):
        raise ValueError(f"the dataset has no {name} along {sweep.rays}")
    look = _side_view if rhi else _plan_view
    return look(np.asarray(ds[name].values, np.float64), gates, reach)
