"""Textures, smoothing and isolated gates of scans in numpy arrays."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from .. import _core
from .._model.echo import EchoClass
from .arguments import as_field, whole, window_pair, window_sizes
from .scans import as_classes, excluded_gates, with_empty_rays

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


def texture(field: ArrayLike, *, mask: ArrayLike | None = None, gates: int = 5, rays: int = 3,
            closed: bool = True) -> NDArray[np.float32]:
    """Texture: the standard deviation in a window around each gate.

    ``sqrt(sum((x - mean)^2) / n)`` over the `n` gates of the window that take part, in single
    precision: the quantity that the fuzzy classification works with (Gourley, Tabary and Parent du
    Chatelet 2007 classify by textures).

    Parameters
    ----------
    field : array_like, shape (..., azimuth, range)
        Any quantity. Leading dimensions are scans of their own.
    mask : array_like of bool, optional
        True for gates that take no part, such as noise. By default those that are NaN; masked gates
        of a masked array never take part.
    gates, rays : int
        Size of the window, both odd, together more than one gate.
    closed : bool
        The rays close a circle, so that windows continue from the last ray to the first one. False for
        sectors and vertical cuts, where windows end at the edge.

    Returns
    -------
    numpy.ndarray of float32
        In the units and the shape of `field`; 0 at gates that take no part, and everywhere if a ray
        is shorter than the window. The ``gates // 2`` gates at each end of a ray, whether they take
        part or not, repeat the nearest gate with a whole window.

    Raises
    ------
    ValueError
        A wrong shape, or a window of a wrong size.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> steps = np.tile([0.0, 2.0], (4, 6))
    >>> cc.texture(steps, gates=3, rays=1).round(3)[0, :4]
    array([0.943, 0.943, 0.943, 0.943], dtype=float32)
    """
    gates, rays = window_sizes(gates, rays, odd=True)
    return _windowed(_core.texture, field, mask, closed, gates, rays)


def smooth(field: ArrayLike, *, mask: ArrayLike | None = None, gates: int = 7, rays: int = 1,
           decibels: bool = False, closed: bool = True) -> NDArray[np.float32]:
    """Mean of a window around each gate.

    Parameters
    ----------
    field : array_like, shape (..., azimuth, range)
        Any quantity. Leading dimensions are scans of their own.
    mask : array_like of bool, optional
        True for gates that take no part. By default those that are NaN; masked gates of a masked array
        never take part. Gates that take no part get the mean of their window, too.
    gates, rays : int
        Size of the window: ``size // 2`` to both sides, so that 6 gates are 7. Gates beyond the ends
        of a ray repeat the last one.
    decibels : bool
        `field` is in dB: the mean is ``10 log10(mean(10^(0.1 x)))``, formed in double precision. Else
        sum and division are those of single precision.
    closed : bool
        The rays close a circle, so that windows continue from the last ray to the first one. False for
        sectors and vertical cuts, where windows end at the edge.

    Returns
    -------
    numpy.ndarray of float32
        In the units and the shape of `field`. A gate without any other in its window keeps its value.

    Raises
    ------
    ValueError
        A wrong shape, or a window of a wrong size.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.smooth([[1.0, 2.0, 6.0, 2.0, 1.0]], gates=3)
    array([[1.3333334, 3.       , 3.3333333, 3.       , 1.3333334]],
          dtype=float32)
    """
    gates, rays = window_sizes(gates, rays)
    if gates * rays == 1:
        return as_field("field", field, np.float32).copy()
    return _windowed(_core.smooth, field, mask, closed, gates, rays, bool(decibels))


def _windowed(function: Any, value: ArrayLike, mask: ArrayLike | None, closed: bool, gates: int,
              rays: int, *settings: Any) -> NDArray[np.float32]:
    field = as_field("field", value, np.float32)
    excluded = excluded_gates("field", value, field, mask)
    nrays = field.shape[-2]
    if not closed:
        reach = min(rays // 2, nrays)
        field, excluded = with_empty_rays(field, reach, 0), with_empty_rays(excluded, reach, 1)
        rays = 2 * reach + 1
    result = function(field, excluded, gates, rays, *settings)
    return result if closed else np.ascontiguousarray(result[..., :nrays, :])


def isolated_gates(classes: ArrayLike, *, gates: int = 5, rays: int = 5, at_most: int = 1,
                   closed: bool = True) -> NDArray[np.bool_]:
    """Precipitation gates with hardly any others around them.

    Parameters
    ----------
    classes : array_like of EchoClass, shape (..., azimuth, range)
        Result of `classify`.
    gates, rays : int
        Size of the window, both at least 2: ``size // 2`` to both sides, so that 10 gates are 11.
        Gates beyond the ends of a ray count the last one again.
    at_most : int
        Precipitation gates that the window of an isolated gate may hold, itself included.
    closed : bool
        The rays close a circle. False for sectors and vertical cuts.

    Returns
    -------
    numpy.ndarray of bool
        True where a precipitation gate is isolated.

    Raises
    ------
    ValueError
        A wrong shape, or a window of a wrong size.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> classes = np.full((8, 9), cc.NOISE)
    >>> classes[1, 4] = classes[5, 2] = classes[5, 3] = cc.PRECIPITATION
    >>> np.argwhere(cc.isolated_gates(classes, gates=3, rays=3))
    array([[1, 4]])
    """
    gates, rays = window_sizes(gates, rays, least=2)
    given = as_classes(classes)
    nrays = given.shape[-2]
    if not closed:
        reach = min(rays // 2, nrays)
        given, rays = with_empty_rays(given, reach, EchoClass.NOISE), 2 * reach
    return np.ascontiguousarray(
        _core.isolated_gates(given, gates, rays, whole("at_most", at_most, 0))[..., :nrays, :])


#: Rays to either side that the removal of isolated gates looks at.
_ISOLATED_REACH = 5


def despeckle(classes: ArrayLike, *, window: tuple[int, int] | None = None, at_most: int = 1,
              closed: bool = True) -> NDArray[np.uint8]:
    """Turn isolated precipitation gates into ground clutter.

    Without a `window`, in the two passes of the processing chain: first gates that are alone in 5 x 5
    gates, then those with at most one other one in 10 x 10; an empirical rule of the library.

    Parameters
    ----------
    classes : array_like of EchoClass, shape (..., azimuth, range)
        Result of `classify`. Masked gates become `MISSING`.
    window : (int, int), optional
        Gates and rays of the window of a single pass, see `isolated_gates`.
    at_most : int
        With a `window`: precipitation gates that the window of an isolated gate may hold, itself
        included.
    closed : bool
        The rays close a circle. False for sectors and vertical cuts.

    Returns
    -------
    numpy.ndarray of uint8
        Codes of `EchoClass`.

    Raises
    ------
    ValueError
        A wrong shape, a class that is not a code, or a window of a wrong size.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> classes = np.full((8, 9), cc.NOISE)
    >>> classes[3, 4] = cc.PRECIPITATION
    >>> cc.EchoClass(cc.despeckle(classes)[3, 4]).meaning
    'ground_clutter'
    """
    given = as_classes(classes)
    if not ((given >= 0) & (given <= 255) & (given == np.floor(given))).all():
        raise ValueError("classes must hold codes within 0 and 255")
    if window is not None:
        gates, rays = window_pair("window", window, least=2)
        isolated = isolated_gates(given, gates=gates, rays=rays, at_most=at_most, closed=closed)
        return np.where(isolated, np.uint8(EchoClass.GROUND_CLUTTER), given.astype(np.uint8))
    nrays = given.shape[-2]
    if not closed:
        given = with_empty_rays(given, _ISOLATED_REACH, EchoClass.NOISE)
    return np.ascontiguousarray(_core.remove_isolated(given)[..., :nrays, :])
