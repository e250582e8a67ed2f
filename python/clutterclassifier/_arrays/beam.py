"""Geometry and pattern of the beam, and reflectivity seen through it near the melting layer."""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, NamedTuple

import numpy as np

from .. import _core
from .arguments import as_field, as_numbers, finite, gate_spacing, positive
from .scans import per_gate, per_scan

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray

    Numbers = NDArray[np.float64]


def _pairs(first: str, one: ArrayLike, second: str, other: ArrayLike) -> tuple[Numbers, Numbers]:
    a, b = as_numbers(first, one), as_numbers(second, other)
    try:
        shape = np.broadcast_shapes(a.shape, b.shape)
    except ValueError:
        raise ValueError(f"{second} has the shape {b.shape}, which does not go with {first}, "
                         f"{a.shape}") from None
    a, b = (np.require(np.broadcast_to(x, shape), requirements="C") for x in (a, b))
    return a, b


def beam_height(range: ArrayLike, elevation: ArrayLike) -> Numbers:
    """Height of a straight beam above the antenna, m.

    ``sqrt(r^2 + R^2 + 2 r R sin(elevation)) - R`` with the Earth's radius R = 6378 km, without
    refraction: the law of cosines.

    Parameters
    ----------
    range : array_like
        Slant range, m.
    elevation : array_like
        Degrees; of any shape that broadcasts with `range`.

    Returns
    -------
    numpy.ndarray of float64

    Raises
    ------
    ValueError
        Shapes that do not broadcast.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.beam_height([0.0, 100e3], 0.5).round(1)
    array([   0. , 1656.4])
    """
    r, angle = _pairs("range", range, "elevation", elevation)
    return _core.beam_height(r, np.asarray(np.deg2rad(angle)))[()]


def slant_range(height: ArrayLike, elevation: ArrayLike) -> Numbers:
    """Slant range at which a straight beam reaches a height, m: the inverse of `beam_height`.

    Parameters
    ----------
    height : array_like
        Above the antenna, m.
    elevation : array_like
        Degrees; of any shape that broadcasts with `height`.

    Returns
    -------
    numpy.ndarray of float64
        The larger root of the relation; NaN where the beam never gets there.

    Raises
    ------
    ValueError
        Shapes that do not broadcast.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> round(float(cc.slant_range(cc.beam_height(50e3, 2.0), 2.0)), 3)
    50000.0
    """
    h, angle = _pairs("height", height, "elevation", elevation)
    return _core.slant_range(h, np.asarray(np.deg2rad(angle)))[()]


def beam_elevation(height: ArrayLike, range: ArrayLike) -> Numbers:
    """Elevation under which a height is seen at a slant range, degrees, by a straight beam.

    Parameters
    ----------
    height : array_like
        Above the antenna, m.
    range : array_like
        Slant range, m; of any shape that broadcasts with `height`.

    Returns
    -------
    numpy.ndarray of float64
        NaN where the height cannot be seen.

    Raises
    ------
    ValueError
        Shapes that do not broadcast.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> round(float(cc.beam_elevation(1656.4, 100e3)), 3)
    0.5
    """
    h, r = _pairs("height", height, "range", range)
    return np.rad2deg(_core.beam_elevation(h, r))[()]


class BeamPattern(NamedTuple):
    """Two-way power pattern of a beam over angles from its axis (degrees) and over heights from its
    axis (m); both powers sum to 1."""

    angle: Numbers
    power: Numbers
    height: Numbers
    height_power: Numbers


def beam_pattern(range: float, *, elevation: float = 0.0, beamwidth: float = 1.0) -> BeamPattern:
    """Two-way power pattern ``(sin x / x)^4`` of a beam.

    Parameters
    ----------
    range : float
        Slant range, m.
    elevation : float
        Degrees.
    beamwidth : float
        Width of the beam at half power, one way, degrees.

    Returns
    -------
    BeamPattern
        1,000 angles from -5 degrees, 0.01 degrees apart; heights 7.5 m apart, as far below and above
        the axis as the beam's upper edge. None for a beam at or beyond the vertical, or one too wide
        for 100,000 heights.

    Raises
    ------
    ValueError
        A number that is not finite, a range or width that is not positive.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> pattern = cc.beam_pattern(50e3, elevation=0.5)
    >>> pattern.angle.size, pattern.height.size, float(pattern.height[0])
    (1000, 118, -442.5)
    """
    angle, *others = _core.beam_pattern(
        np.deg2rad(positive("beamwidth", beamwidth)), positive("range", range),
        np.deg2rad(finite("elevation", elevation)))
    return BeamPattern(np.rad2deg(angle), *others)


class VerticalProfiles(NamedTuple):
    """Profiles of reflectivity: linear values, (profile, level), and the height of each level above the
    freezing level, m."""

    z: Numbers
    height: Numbers


def _profiles_file(path: str | os.PathLike[str]) -> bytes:
    """The path as the library takes it, of a file that can be read."""
    name = os.fsencode(path)
    with open(name, "rb") as file:
        file.read(1)
    if len(name) > 1023:
        raise ValueError(f"the path of profiles is longer than 1023 bytes: {path}")
    return name


def vertical_profiles(path: str | os.PathLike[str]) -> VerticalProfiles:
    """Read a library of vertical profiles: text, 1,800 levels of 60 values (dB) each.

    Parameters
    ----------
    path : path
        Missing values are 0 dB, text counts as the number it begins with, or 0.

    Returns
    -------
    VerticalProfiles
        60 profiles of 1,800 levels 7.5 m apart, the freezing level at the 601st.

    Raises
    ------
    OSError
        The file cannot be read.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import os
    >>> profiles = cc.vertical_profiles(os.devnull)
    >>> profiles.z.shape, float(profiles.height[600])
    ((60, 1800), 0.0)
    """
    z, level, step = _core.vertical_profiles(_profiles_file(path))
    return VerticalProfiles(z, (np.arange(z.shape[1]) - level) * step)


def correct_profile(dbzh: ArrayLike, *, profiles: str | os.PathLike[str], range: ArrayLike,
                    elevation: ArrayLike = 0.0, freezing_level: ArrayLike = 3000.0,
                    beamwidth: float = 1.0) -> NDArray[np.float32]:
    """Replace reflectivity near the melting layer by the value at the ground of the best fitting profile.

    Applies to gates of more than 0 dBZ whose beam is less than 1,000 m from the freezing level and whose
    best profile, seen through the beam (see `beam_pattern`), is less than 1 dB away. An empirical method
    of the library.

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Horizontal reflectivity, dBZ.
    profiles : path
        File of vertical profiles, see `vertical_profiles`.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only that counts: gate g is taken at g spacings.
    elevation : float or array_like
        Elevation of the scan, degrees; one for all scans, or one for each.
    freezing_level : float or array_like
        Height of the freezing level above the antenna, m; for all gates, each ray or each gate.
    beamwidth : float
        Width of the beam at half power, one way, degrees.

    Returns
    -------
    numpy.ndarray of float32
        dBZ.

    Raises
    ------
    ValueError
        A wrong shape.
    OSError
        The file cannot be read.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import os
    >>> cc.correct_profile([[20.0, 20.0]], profiles=os.devnull, range=250.0)
    array([[20., 20.]], dtype=float32)
    """
    field = as_field("dbzh", dbzh, np.float32)
    width = float(np.deg2rad(positive("beamwidth", beamwidth)))
    return _core.correct_profile(
        field, per_gate("freezing_level", freezing_level, field.shape, np.float32),
        np.deg2rad(per_scan("elevation", elevation, field.shape)), _profiles_file(profiles),
        gate_spacing(range, field.shape[-1]), width)
