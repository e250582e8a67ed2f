"""Stretches of heavy precipitation in a ray."""

from __future__ import annotations

from typing import TYPE_CHECKING, NamedTuple

import numpy as np

from .. import _core
from .arguments import as_field, as_field_like, gate_spacing
from .scans import as_classes_like

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


class HotSpot(NamedTuple):
    """A stretch of heavy precipitation: the index of its ray (all dimensions but range), its first and
    last gate, the rise of the differential phase over it (degrees)."""

    ray: tuple[int, ...]
    first: int
    last: int
    phase_rise: float


class HotSpots(NamedTuple):
    """Result of `hot_spots`: True on their gates, their number in each ray, and the first ten of each ray
    in a list."""

    gates: NDArray[np.bool_]
    count: NDArray[np.int64]  # type: ignore[assignment]  # hides tuple.count, which is not needed
    spots: list[HotSpot]


def hot_spots(phidp: ArrayLike, *, dbzh: ArrayLike, rhohv: ArrayLike, classes: ArrayLike,
              range: ArrayLike) -> HotSpots:
    """Stretches of heavy precipitation, which attenuate more than their surroundings.

    Precipitation gates in a row of at least 45 dBZ and a correlation of at least 0.7, longer than 2 km,
    over which the phase rises by more than 20 degrees. The thresholds are empirical ones of the library.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees.
    dbzh, rhohv : array_like
        Horizontal reflectivity (dBZ) and co-polar correlation (0..1).
    classes : array_like of EchoClass
        Result of `classify`.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m.

    Returns
    -------
    HotSpots

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> dbzh = np.full((1, 60), 30.0)
    >>> dbzh[0, 20:32] = 50.0
    >>> found = cc.hot_spots(np.arange(60.0)[np.newaxis] * 3, dbzh=dbzh, rhohv=np.ones(dbzh.shape),
    ...                      classes=np.zeros(dbzh.shape), range=250.0)
    >>> found.spots
    [HotSpot(ray=(0,), first=20, last=31, phase_rise=33.0)]
    """
    field = as_field("phidp", phidp)
    gates, records = _core.hot_spots(
        field, as_field_like("dbzh", dbzh, field, "phidp"), as_field_like("rhohv", rhohv, field, "phidp"),
        as_classes_like(classes, field, "phidp"), gate_spacing(range, field.shape[-1]) / 1000.0)
    count = records[:, 0].astype(np.int64)
    rays = list(np.ndindex(field.shape[:-1]))
    spots = [HotSpot(rays[at], int(first), int(last), rise)
             for at in np.flatnonzero(count) for first, last, rise in _spots_of_ray(records[at])]
    return HotSpots(gates, count.reshape(field.shape[:-1]), spots)


def _spots_of_ray(record: NDArray[np.float64]) -> list[list[float]]:
    """First gate, last gate and phase rise of the stretches that the library reports: their number,
    then four values each, the last of which it does not use."""
    return np.append(record[1:], 0.0).reshape(10, 4)[:int(record[0]), :3].tolist()
