"""Strength of the signal: decibels, signal-to-noise ratio and its calibration, scores of two fields."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np

from .. import _core
from .arguments import as_field, as_field_like, as_numbers, finite, gate_spacing, number
from .scans import of_scans

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


def signal_to_noise(dbzh: ArrayLike, *, range: ArrayLike, radar_constant: float) -> NDArray[np.float32]:
    """Signal-to-noise ratio, dB: ``dbzh - 20 log10(range in km) + radar_constant``.

    The radar equation of a noise that does not depend on range. The quantity that `classify` compares
    with `min_snr`, in single precision.

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Horizontal reflectivity, dBZ.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only the spacing counts, in whole metres: gate g is
        taken at g spacings, gate 0 one spacing out.
    radar_constant : float
        Calibration constant, dB.

    Returns
    -------
    numpy.ndarray of float32
        dB, in the shape of `dbzh`.

    Raises
    ------
    ValueError
        A wrong shape, or a constant that is not finite.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.signal_to_noise([[0.0, 0.0, 0.0]], range=1000.0, radar_constant=30.0).round(2)
    array([[30.  , 30.  , 23.98]], dtype=float32)
    """
    field = as_field("dbzh", dbzh, np.float32)
    return _core.signal_to_noise(field, gate_spacing(range, field.shape[-1]),
                                 finite("radar_constant", radar_constant))


class RadarConstant(NamedTuple):
    """Calibration of the signal-to-noise ratio; arrays when there are leading dimensions.

    `radar_constant` (dB) gives the noise of the receiver a ratio of about 0 dB, `min_snr` (dB) is the
    lowest ratio of an echo that fits the `evidence`: ``"noise_gates"`` when the noise itself was found,
    ``"lower_envelope"`` when only echo is left and the weakest echo replaces the noise, ``"nothing"`` when
    there are too few values.
    """

    radar_constant: Any
    min_snr: Any
    evidence: Any


_EVIDENCE = np.array(["noise_gates", "lower_envelope", "nothing"])


def estimate_radar_constant(dbzh: ArrayLike, *, rhohv: ArrayLike | None = None,
                            range: ArrayLike) -> RadarConstant:
    """Calibration constant of the signal-to-noise ratio, from the noise in a scan.

    Receiver noise lies on ``N + 20 log10(range in km)`` in reflectivity. A scan that still holds its
    noise gates shows `N` as the peak of ``dbzh - 20 log10(range in km)`` at the same place in all rings
    that weather does not fill. An empirical method of the library.

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Horizontal reflectivity, dBZ; NaN and masked gates have no value. A low value that many gates
        share means "no echo".
    rhohv : array_like, optional
        Co-polar correlation (0..1): separates widespread rain from noise.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m.

    Returns
    -------
    RadarConstant

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> range_km = np.maximum(np.arange(400), 1) * 0.25
    >>> noise = np.random.default_rng(1).normal(-42.0, 1.0, (90, 400)) + 20 * np.log10(range_km)
    >>> found = cc.estimate_radar_constant(noise, range=250.0)
    >>> found.evidence, round(float(found.radar_constant))
    ('noise_gates', 42)
    """
    field = as_field("dbzh", dbzh, np.float32)
    correlation = as_field_like("rhohv", rhohv, field, "dbzh")
    constant, ratio, evidence = _core.estimate_radar_constant(field, correlation,
                                                              gate_spacing(range, field.shape[-1]))
    found = of_scans(_EVIDENCE[evidence], field.shape)
    return RadarConstant(of_scans(constant, field.shape), of_scans(ratio, field.shape),
                         str(found) if field.ndim == 2 else found)


class Contingency(NamedTuple):
    """Counts of pairs with an event in both fields, in one of them, in neither; and scores.

    `detection` is ``both / (both + first_only)``, the probability of detecting what the first field
    has; `false_share` is ``second_only / (first_only + second_only)``, the share of false alarms in all
    mistakes. NaN where there is nothing to divide by.
    """

    both: int
    second_only: int
    first_only: int
    neither: int
    false_share: float
    detection: float


def contingency(first: ArrayLike, second: ArrayLike, *, threshold: float) -> Contingency:
    """Contingency of two fields, an event being a value of at least `threshold`.

    Parameters
    ----------
    first, second : array_like
        The truth and the field that is compared with it, of one shape, in any units. NaN is not an event.
    threshold : float
        In the same units.

    Returns
    -------
    Contingency

    Raises
    ------
    ValueError
        Fields of different shapes.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.contingency([0, 1, 1, 5], [0, 2, 0, 0], threshold=1).detection
    0.3333333333333333
    """
    a = as_numbers("first", first, np.float32)
    b = as_field_like("second", second, a, "first")
    if a.size > np.iinfo(np.int32).max:
        raise ValueError(f"first has more values than the library counts: {a.size}")
    *counts, false_share, detection = _core.contingency(a, b, number("threshold", threshold))
    return Contingency(*counts, *(np.nan if score < 0 else score for score in (false_share, detection)))


def to_decibels(z: ArrayLike) -> NDArray[np.float32]:
    """``10 log10(z)``: a linear reflectivity (mm6/m3) in dBZ, or a ratio in dB.

    Parameters
    ----------
    z : array_like
        Linear values. 0 becomes -inf, negative values become NaN.

    Returns
    -------
    numpy.ndarray of float32
        Computed in double precision.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.to_decibels([1.0, 200.0])
    array([ 0.    , 23.0103], dtype=float32)
    """
    return _core.to_decibels(as_numbers("z", z, np.float32))[()]


def to_linear(dbz: ArrayLike) -> NDArray[np.float32]:
    """``10^(0.1 dbz)``: the inverse of `to_decibels`.

    Parameters
    ----------
    dbz : array_like
        dBZ or dB.

    Returns
    -------
    numpy.ndarray of float32
        Linear values, computed in double precision.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.to_linear([0.0, 20.0])
    array([  1., 100.], dtype=float32)
    """
    return _core.to_linear(as_numbers("dbz", dbz, np.float32))[()]
