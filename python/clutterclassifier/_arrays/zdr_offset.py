"""Statistics of scans that show the offset of differential reflectivity."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np

from .. import _core
from .arguments import as_field, as_field_like, as_numbers, finite, gate_spacing, number
from .scans import as_classes_like, of_scans, per_scan

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


class ScanStatistics(NamedTuple):
    """Means over chosen gates of a scan, float32; arrays when there are leading dimensions.

    `elevation` in degrees; `dbzh` and `zdr` are 10 log10 of the means of their linear values (of sums
    that start at 1), the others plain means: `phidp` in degrees, `rhohv`, `vrad` and `wrad` in m/s. NaN
    with 100 gates or fewer, and for fields that were not given.
    """

    elevation: Any
    dbzh: Any
    zdr: Any
    phidp: Any
    rhohv: Any
    vrad: Any
    wrad: Any


#: Elevations that count as vertical, degrees.
_VERTICAL = (88.0, 92.0)


def vertical_statistics(dbzh: ArrayLike, *, zdr: ArrayLike, rhohv: ArrayLike,
                        phidp: ArrayLike | None = None, vrad: ArrayLike | None = None,
                        wrad: ArrayLike | None = None, range: ArrayLike, between: tuple[float, float],
                        min_rhohv: float, min_dbzh: float, elevation: ArrayLike = 90.0) -> ScanStatistics:
    """Means of a vertical scan of light rain, where the differential reflectivity should be 0 dB.

    Over the gates between two ranges with a correlation and a reflectivity of at least the given ones.
    Seen from below, raindrops are round (Bringi and Chandrasekar 2001).

    Parameters
    ----------
    dbzh, zdr, rhohv : array_like, shape (..., azimuth, range)
        Horizontal reflectivity (dBZ), differential reflectivity (dB), co-polar correlation (0..1).
    phidp, vrad, wrad : array_like, optional
        Differential phase (degrees), Doppler velocity and spectrum width (m/s). A NaN among the chosen
        gates of a field makes its mean NaN.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only the spacing counts: gate g begins at g spacings.
    between : (float, float)
        Ranges of the first gate and of the first one beyond, m.
    min_rhohv, min_dbzh : float
        Thresholds of the gates that count.
    elevation : float or array_like
        Degrees, within 88 and 92; one for all scans, or one for each.

    Returns
    -------
    ScanStatistics

    Raises
    ------
    ValueError
        A wrong shape, another elevation, or ranges that are not whole gates within a ray: the first
        less than the second, the second before the last gate.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> same = np.ones((360, 80))
    >>> found = cc.vertical_statistics(20 * same, zdr=0.3 * same, rhohv=0.99 * same, range=75.0,
    ...                                between=(600, 3000), min_rhohv=0.98, min_dbzh=10)
    >>> round(float(found.zdr), 3)
    0.3
    """
    for angle in per_scan("elevation", elevation, as_field("dbzh", dbzh, np.float32).shape):
        if not _VERTICAL[0] <= angle <= _VERTICAL[1]:
            raise ValueError(f"elevation must be within 88 and 92 degrees, not {angle:g}")
    others = {"zdr": zdr, "phidp": phidp, "rhohv": rhohv, "vrad": vrad, "wrad": wrad}
    return _statistics(dbzh, others, None, range, between, elevation, min_rhohv, min_dbzh, 0.0)


def rain_statistics(dbzh: ArrayLike, *, zdr: ArrayLike, rhohv: ArrayLike, classes: ArrayLike,
                    phidp: ArrayLike | None = None, vrad: ArrayLike | None = None,
                    wrad: ArrayLike | None = None, range: ArrayLike, between: tuple[float, float],
                    min_rhohv: float, min_dbzh: float, max_dbzh: float,
                    elevation: ArrayLike = 0.0) -> ScanStatistics:
    """Means of the precipitation gates of a scan of any elevation, within bounds of reflectivity.

    Over the precipitation gates between two ranges with a correlation of at least `min_rhohv` and a
    reflectivity of `min_dbzh` to `max_dbzh`: the differential reflectivity of such rain is known.

    Parameters
    ----------
    dbzh, zdr, rhohv : array_like, shape (..., azimuth, range)
        Horizontal reflectivity (dBZ), differential reflectivity (dB), co-polar correlation (0..1).
    classes : array_like of EchoClass
        Result of `classify`.
    phidp, vrad, wrad : array_like, optional
        Differential phase (degrees), Doppler velocity and spectrum width (m/s). A NaN among the chosen
        gates of a field makes its mean NaN.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only the spacing counts: gate g begins at g spacings.
    between : (float, float)
        Ranges of the first gate and of the first one beyond, m.
    min_rhohv, min_dbzh, max_dbzh : float
        Thresholds of the gates that count.
    elevation : float or array_like
        Degrees; one for all scans, or one for each. It is only handed on.

    Returns
    -------
    ScanStatistics

    Raises
    ------
    ValueError
        A wrong shape, or ranges that are not whole gates within a ray: the first less than the second,
        the second before the last gate.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> same = np.ones((360, 80))
    >>> found = cc.rain_statistics(20 * same, zdr=0.5 * same, rhohv=0.99 * same, classes=0 * same,
    ...                            range=75.0, between=(600, 3000), min_rhohv=0.98, min_dbzh=18,
    ...                            max_dbzh=22)
    >>> round(float(found.zdr), 3)
    0.5
    """
    others = {"zdr": zdr, "phidp": phidp, "rhohv": rhohv, "vrad": vrad, "wrad": wrad}
    return _statistics(dbzh, others, classes, range, between, elevation, min_rhohv, min_dbzh, max_dbzh)


def _statistics(dbzh: ArrayLike, others: dict[str, ArrayLike | None], classes: ArrayLike | None,
                range: ArrayLike, between: tuple[float, float], elevation: ArrayLike, min_rhohv: float,
                min_dbzh: float, max_dbzh: float) -> ScanStatistics:
    field = as_field("dbzh", dbzh, np.float32)
    fields = [field, *(as_field_like(name, value, field, "dbzh") for name, value in others.items())]
    spacing = gate_spacing(range, field.shape[-1])
    edges = _gate_edges(between, spacing, field.shape[-1])
    known = None if classes is None else as_classes_like(classes, field, "dbzh")
    stats = _core.zdr_statistics(fields, known, np.deg2rad(per_scan("elevation", elevation, field.shape)),
                                 spacing, *edges, number("min_rhohv", min_rhohv),
                                 number("min_dbzh", min_dbzh), number("max_dbzh", max_dbzh))
    return ScanStatistics(*(of_scans(values, field.shape) for values in _without_gaps(stats, fields)))


def _without_gaps(stats: NDArray[np.float32], fields: list[NDArray[Any] | None]) -> NDArray[np.float32]:
    """One row a statistic; NaN where there is none."""
    means = stats[:, 1:]
    means[(means == -99).all(axis=1)] = np.nan
    means[:, [field is None for field in fields]] = np.nan
    return np.ascontiguousarray(stats.T)


def _gate_edges(between: tuple[float, float], spacing: float, ngates: int) -> tuple[float, float]:
    """Two ranges that hold gates; the library takes these in single precision."""
    edges = as_numbers("between", between)
    if edges.shape != (2,):
        raise ValueError(f"between must be two ranges, not {between!r}")
    first, end = (int(np.float32(finite("between", edge)) / np.float32(spacing)) for edge in edges)
    if not 0 <= first < end < ngates:
        raise ValueError(f"between must be two ranges within {ngates} gates of {spacing:g} m, "
                         f"not {tuple(between)}")
    return float(edges[0]), float(edges[1])
