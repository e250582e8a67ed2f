"""Attenuation of reflectivity and differential reflectivity by precipitation."""

from __future__ import annotations

from enum import IntEnum
from typing import TYPE_CHECKING, NamedTuple, Union

import numpy as np

from .. import _core
from .arguments import as_field, as_field_like, choice, gate_spacing, number, whole, window_pair
from .scans import as_classes_like, per_gate, per_ray, per_scan

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


class AttenuationAlgorithm(IntEnum):
    """Algorithms of the attenuation correction: the solution (see `specific_attenuation`), and whether
    its coefficients are searched for or nominal (alpha 0.073 dB/degree, a 3e-5, b 0.78)."""

    PROFILE = 0
    FINAL_VALUE = 1
    FORWARD = 2
    PHASE_SLOPE = 3
    PROFILE_NOMINAL = 4
    FINAL_VALUE_NOMINAL = 5
    FORWARD_NOMINAL = 6
    PROFILE_SEARCH_B = 8


def algorithm_number(algorithm: Union[AttenuationAlgorithm, int, str]) -> int:
    names = ", ".join(f"{known.name.lower()} ({known.value})" for known in AttenuationAlgorithm)
    try:
        if isinstance(algorithm, str):
            return AttenuationAlgorithm[algorithm.upper()].value
        return AttenuationAlgorithm(algorithm).value
    except (KeyError, ValueError):
        raise ValueError(f"no such algorithm: {algorithm!r} (known: {names})") from None


def parse_seed(seed: int) -> int:
    return whole("seed", seed, 0, 2**32 - 1)


class AttenuationResult(NamedTuple):
    """Result of `attenuation`, float32 arrays: of the shape of the scans, and - `path_attenuation`,
    `phase_rise`, `alpha`, `a`, `b` - with one number for each ray, without the range dimension.

    `dbzh` (dBZ) is corrected, `specific_attenuation` in dB/km one way, `path_attenuation` that of the
    whole ray in dB both ways, `phase_rise` in degrees. `alpha` (dB/degree), `a` and `b` are the
    coefficients of ``Ah = alpha Kdp`` and ``Ah = a Z^b``. `phidp` (degrees) is the measured phase
    without its offset, smoothed; `phidp_rebuilt` follows from the attenuation. A ray that was not
    corrected has coefficients and attenuation 0 and a rebuilt phase of -30, as have gates from the
    melting layer on.
    """

    dbzh: NDArray[np.float32]
    specific_attenuation: NDArray[np.float32]
    path_attenuation: NDArray[np.float32]
    phase_rise: NDArray[np.float32]
    alpha: NDArray[np.float32]
    a: NDArray[np.float32]
    b: NDArray[np.float32]
    phidp: NDArray[np.float32]
    phidp_rebuilt: NDArray[np.float32]


def attenuation(dbzh: ArrayLike, *, phidp: ArrayLike, rhohv: ArrayLike | None = None,
                classes: ArrayLike, range: ArrayLike, elevation: ArrayLike = 0.0,
                freezing_level: ArrayLike = 3000.0,
                algorithm: AttenuationAlgorithm | int | str = AttenuationAlgorithm.PROFILE,
                min_phase_rise: float = 20.0, phase_window: tuple[int, int] = (17, 1),
                fill_gaps: bool = True, seed: int = 1) -> AttenuationResult:
    """Correct reflectivity for the attenuation by rain.

    The phase loses its offset (`system_phase` of 10 precipitation gates) and is smoothed. Then each
    ray's gates before the melting layer - the first gate whose beam is at least as high as the freezing
    level less 500 m; all but the last one where there is none - are corrected: of 1,000 coefficients
    drawn at random the algorithm takes those whose attenuation rebuilds the measured phase best (Bringi,
    Keenan and Chandrasekar 2001). Gates from the melting layer on are raised by the ray's whole
    attenuation.

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Horizontal reflectivity, dBZ.
    phidp : array_like
        Differential phase, degrees, rising with range.
    rhohv : array_like, optional
        Co-polar correlation (0..1). It does not change the result.
    classes : array_like of EchoClass
        Result of `classify`: only precipitation is corrected and attenuates.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only that counts: gate g is taken at g spacings.
    elevation : float or array_like
        Elevation of the scan, degrees; one for all scans, or one for each.
    freezing_level : float or array_like
        Height of the freezing level above the antenna, m; for all gates, each ray or each gate.
    algorithm : AttenuationAlgorithm, int or str
        For example ``"profile_nominal"``.
    min_phase_rise : float
        Rays whose phase rises by no more are left alone, degrees.
    phase_window : (int, int)
        Gates and rays of the smoothing of the phase, see `smooth`; (1, 1) for none.
    fill_gaps : bool
        Close gaps of the phase first, see `close_phase_gaps`. Else a single NaN at the beginning of a
        ray's rain spoils the offset of the whole scan.
    seed : int
        Of the random search for the coefficients, 0 to 4294967295: the same one gives the same result.

    Returns
    -------
    AttenuationResult

    Raises
    ------
    ValueError
        A wrong shape, an unknown algorithm, a wrong window.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> phidp = np.linspace(0, 60, 200)[np.newaxis]
    >>> dbzh, rain = np.full(phidp.shape, 45.0), np.zeros(phidp.shape)
    >>> result = cc.attenuation(dbzh, phidp=phidp, classes=rain, range=250.0, freezing_level=9e3,
    ...                         algorithm="profile_nominal")
    >>> bool((result.dbzh >= dbzh).all()), round(float(result.path_attenuation[0]), 1)
    (True, 3.9)
    """
    field = as_field("dbzh", dbzh, np.float32)
    gates, rays = window_pair("phase_window", phase_window)
    return AttenuationResult(*_core.attenuation(
        field, as_field_like("phidp", phidp, field, "dbzh"), as_field_like("rhohv", rhohv, field, "dbzh"),
        as_classes_like(classes, field, "dbzh"),
        per_gate("freezing_level", freezing_level, field.shape, np.float32),
        np.deg2rad(per_scan("elevation", elevation, field.shape)), gate_spacing(range, field.shape[-1]),
        algorithm_number(algorithm), number("min_phase_rise", min_phase_rise), gates, rays,
        bool(fill_gaps), parse_seed(seed)))


def _coefficient(name: str, values: NDArray[np.float64]) -> NDArray[np.float64]:
    """Coefficients of a power law: 0 where a ray was not corrected, NaN where they are unknown."""
    if (values < 0).any() or np.isinf(values).any():
        raise ValueError(f"{name} must hold finite numbers of at least 0")
    return values


_METHODS = {"profile": 0, "final_value": 1, "forward": 2, "phase_slope": 3}


def specific_attenuation(dbzh: ArrayLike, *, classes: ArrayLike, range: ArrayLike,
                         phase_rise: ArrayLike = 0.0, phidp: ArrayLike | None = None,
                         alpha: ArrayLike = 0.073, a: ArrayLike = 3e-5, b: ArrayLike = 0.78,
                         method: str = "profile") -> NDArray[np.float64]:
    """Specific attenuation along each ray, dB/km one way, with given coefficients.

    With ``z = 10^(0.1 dbzh)`` and sums I over precipitation gates of ``0.46 b z^b dr`` from a gate to
    the far end of the ray (from the radar to the gate for ``"forward"``):

    * ``"profile"`` - ``z^b (F - 1) / (I(0) + (F - 1) I)``, ``F = 10^(0.1 b alpha phase_rise)`` (ZPHI;
      Testud et al. 2000)
    * ``"final_value"`` - ``a z^b / (U^b + a I)``, ``U = 10^(-0.1 alpha phase_rise)`` (Meneghini,
      Eckerman and Atlas 1983)
    * ``"forward"`` - ``a z^b / (1 - a I)`` (Hitschfeld and Bordan 1954), which grows without bound as
      a I reaches 1
    * ``"phase_slope"`` - alpha times half the slope of `phidp` over 7 precipitation gates, not below 0
      (Bringi et al. 1990)

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Measured horizontal reflectivity, dBZ.
    classes : array_like of EchoClass
        Result of `classify`.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m.
    phase_rise : float or array_like
        Rise of the differential phase over the ray, degrees; for all rays or each.
    phidp : array_like, optional
        Differential phase, degrees; needed by ``"phase_slope"`` only.
    alpha, a, b : float or array_like
        Coefficients of ``Ah = alpha Kdp`` (dB/degree) and ``Ah = a z^b``; for all gates, each ray or
        each gate.
    method : str
        One of the list.

    Returns
    -------
    numpy.ndarray of float64
        dB/km; 0 without precipitation.

    Raises
    ------
    ValueError
        A wrong shape, an unknown method, no `phidp` where it is needed, or a coefficient that is negative
        or infinite.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> rain = np.full((1, 100), 45.0)
    >>> ah = cc.specific_attenuation(rain, classes=np.zeros(rain.shape), range=250.0, phase_rise=40.0)
    >>> float((2 * 0.25 * ah).sum().round(1))
    2.9
    """
    number_of_method = _METHODS[choice("method", method, _METHODS)]
    field = as_field("dbzh", dbzh)
    if method == "phase_slope" and phidp is None:
        raise ValueError("the method 'phase_slope' needs phidp")
    return _core.specific_attenuation(
        field, as_field_like("phidp", phidp, field, "dbzh"), as_classes_like(classes, field, "dbzh"),
        _coefficient("alpha", per_gate("alpha", alpha, field.shape)),
        _coefficient("a", per_gate("a", a, field.shape)), _coefficient("b", per_gate("b", b, field.shape)),
        per_ray("phase_rise", phase_rise, field.shape), gate_spacing(range, field.shape[-1]) / 1000.0,
        number_of_method)


class ZdrCorrection(NamedTuple):
    """Result of `correct_zdr`: the corrected `zdr` (dB), and for each ray `ratio`, that of differential
    to horizontal attenuation's coefficient (NaN where the ray was left alone), and `path_attenuation`,
    the differential attenuation of the whole ray both ways (dB)."""

    zdr: NDArray[np.float64]
    ratio: NDArray[np.float64]
    path_attenuation: NDArray[np.float64]


def correct_zdr(zdr: ArrayLike, *, dbzh: ArrayLike, specific_attenuation: ArrayLike,
                classes: ArrayLike, range: ArrayLike, alpha: ArrayLike,
                phase_rise: ArrayLike) -> ZdrCorrection:
    """Correct differential reflectivity for the differential attenuation by rain.

    In each ray the ratio of the attenuations is stepped by 0.001 from 0.01 until the mean of the last 20
    precipitation gates meets ``0.48 log10(mean z) - 0.774`` dB (0 where the mean z is at most 100) as
    nearly as it gets. Rays whose phase rises by no more than 20 degrees, with fewer than 20
    precipitation gates or without such a ratio above 0 are left alone. The relation of the far end is
    an empirical one of the library, as are the thresholds.

    Parameters
    ----------
    zdr : array_like, shape (..., azimuth, range)
        Differential reflectivity, dB.
    dbzh : array_like
        Horizontal reflectivity, dBZ, corrected for attenuation.
    specific_attenuation : array_like
        dB/km one way, of `attenuation` or `specific_attenuation`.
    classes : array_like of EchoClass
        Result of `classify`.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m.
    alpha, phase_rise : float or array_like
        The coefficient (dB/degree) that the attenuation was found with, and the rise of the differential
        phase (degrees); for all rays or each.

    Returns
    -------
    ZdrCorrection

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> import numpy as np
    >>> zdr = np.linspace(1.3, -0.2, 200)[np.newaxis]
    >>> same = np.ones(zdr.shape)
    >>> found = cc.correct_zdr(zdr, dbzh=45 * same, specific_attenuation=0.04 * same, classes=0 * same,
    ...                        range=250.0, alpha=0.073, phase_rise=60.0)
    >>> bool(found.ratio[0] > 0), float(found.zdr[0, -10:].mean().round(1))
    (True, 1.3)
    """
    field = as_field("zdr", zdr)
    return ZdrCorrection(*_core.correct_zdr(
        field, as_field_like("dbzh", dbzh, field, "zdr"),
        as_field_like("specific_attenuation", specific_attenuation, field, "zdr"),
        as_classes_like(classes, field, "zdr"), _coefficient("alpha", per_ray("alpha", alpha, field.shape)),
        per_ray("phase_rise", phase_rise, field.shape), gate_spacing(range, field.shape[-1]) / 1000.0))
