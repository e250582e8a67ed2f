"""Offset, folding and gaps of the differential phase."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from .. import _core
from .arguments import as_field, as_field_like, whole
from .scans import as_classes_like, of_scans

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


def system_phase(phidp: ArrayLike, *, rhohv: ArrayLike | None = None,
                 classes: ArrayLike | None = None, gates: int = 10) -> Any:
    """Differential phase at the radar: the mean of each ray's first gates of good signal.

    In each ray the first `gates` gates in a row that are good are averaged: precipitation where
    `classes` are given, else gates with a correlation above 0.9. The result is the mean over all rays.
    An empirical rule of the library.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees. A NaN in a ray's first good gates makes the result NaN; see
        `close_phase_gaps`.
    rhohv : array_like, optional
        Co-polar correlation (0..1). NaN counts as above 0.9.
    classes : array_like of EchoClass, optional
        Result of `classify`. Either `classes` or `rhohv` must be given.
    gates : int
        Length of the run.

    Returns
    -------
    numpy.float32 or numpy.ndarray of float32
        Degrees, one number for each scan; 0 when fewer than a tenth of the rays hold a run.

    Raises
    ------
    ValueError
        A wrong shape, or none or both of `rhohv` and `classes`.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> phidp = np.full((10, 50), 35.0)
    >>> float(cc.system_phase(phidp, rhohv=np.full(phidp.shape, 0.99)))
    35.0
    """
    field = as_field("phidp", phidp, np.float32)
    if classes is not None and rhohv is None:
        quality = as_classes_like(classes, field, "phidp")
    elif rhohv is not None and classes is None:
        quality = as_field_like("rhohv", rhohv, field, "phidp")
    else:
        raise ValueError("either rhohv or classes must be given")
    offsets = _core.system_phase(field, quality, whole("gates", gates), classes is not None)
    return of_scans(offsets, field.shape)


def unfold_phase(phidp: ArrayLike, classes: ArrayLike) -> NDArray[np.float32]:
    """Unfold one jump of the differential phase in each ray.

    The jump is at the first precipitation gate, at least 20 gates from both ends of the ray, where the
    mean of the 20 gates from it on differs by more than 250 degrees from that of the 21 gates up to it.
    From there on 360 degrees are added to precipitation gates. As the means notice a jump before the
    gate in the middle has jumped, the last six gates or so before it get the 360 degrees, too. Only
    differences count, so that the phase may be recorded within 0..360 or -180..180 degrees. An empirical
    rule of the library.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees. All gates count in the means; a NaN among them hides the jump.
    classes : array_like of EchoClass
        Result of `classify`.

    Returns
    -------
    numpy.ndarray of float32
        Degrees.

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> phidp = np.linspace(150, 210, 120)[np.newaxis]
    >>> folded = (phidp + 180) % 360 - 180
    >>> unfolded = cc.unfold_phase(folded, np.zeros(folded.shape))
    >>> folded[0, -1], float(unfolded[0, -1])
    (-150.0, 210.0)
    """
    field = as_field("phidp", phidp, np.float32)
    return _core.unfold_phase(field, as_classes_like(classes, field, "phidp"))


def close_phase_gaps(phidp: ArrayLike) -> NDArray[np.float32]:
    """Close the gaps (NaN, infinite or masked gates) of the differential phase.

    Linearly between the neighbours that have a value, with the nearest one at the ends of a ray. A ray
    without any value takes the median of the other rays' first values, 0 where no ray has one.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees.

    Returns
    -------
    numpy.ndarray of float32
        Degrees, all finite.

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from numpy import nan
    >>> cc.close_phase_gaps([[nan, 2.0, nan, 4.0, nan]])
    array([[2., 2., 3., 4., 4.]], dtype=float32)
    """
    return _core.close_phase_gaps(as_field("phidp", phidp, np.float32))


def _with_gaps(phidp: ArrayLike,
               valid: ArrayLike | None) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    """The phase, and 0 where it is valid, else 1."""
    field = as_field("phidp", phidp)
    if valid is None:
        return field, (~np.isfinite(field)).astype(np.float64)
    return field, (as_field_like("valid", valid, field, "phidp", 0) == 0).astype(np.float64)


def fill_phase(phidp: ArrayLike, valid: ArrayLike | None = None) -> NDArray[np.float64]:
    """Fill gaps of the differential phase by linear interpolation along each ray.

    The first gate of a gap keeps its input, and so does a gap at the end of a ray; gates before the
    first valid one become 0. `close_phase_gaps` leaves nothing open.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees.
    valid : array_like of bool, optional
        True for gates with a phase; those that are finite by default. -99999 counts as
        invalid.

    Returns
    -------
    numpy.ndarray of float64
        Degrees.

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.fill_phase([[7.0, 2.0, 9.0, 9.0, 9.0, 6.0]], [[0, 1, 0, 0, 0, 1]])
    array([[0., 2., 9., 4., 5., 6.]])
    """
    return _core.fill_phase(*_with_gaps(phidp, valid))


def extend_phase(phidp: ArrayLike, valid: ArrayLike | None = None, *, gates: int = 10,
                 average: int = 10) -> NDArray[np.float64]:
    """Fill gaps of the differential phase from their edges, with means of the valid stretches.

    Up to `gates` - 1 gates before a valid stretch take the mean of its first `average` gates, as many
    after it that of its last ones. Gate 0 is never filled, and a stretch is not extended from the first
    or last gate of a ray.

    Parameters
    ----------
    phidp : array_like, shape (..., azimuth, range)
        Differential phase, degrees.
    valid : array_like of bool, optional
        True for gates with a phase; those that are finite by default.
    gates : int
        One more than the gates to fill.
    average : int
        Gates of a mean, those of the gap included where a stretch is shorter.

    Returns
    -------
    numpy.ndarray of float64
        Degrees.

    Raises
    ------
    ValueError
        A wrong shape or number.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.extend_phase([[0.0, 0.0, 0.0, 4.0, 6.0, 8.0, 0.0, 0.0]], [[0, 0, 0, 1, 1, 1, 0, 0]],
    ...                 gates=2, average=2)
    array([[0., 0., 5., 4., 6., 8., 7., 0.]])
    """
    return _core.extend_phase(*_with_gaps(phidp, valid), whole("gates", gates),
                              whole("average", average))
