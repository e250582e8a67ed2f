"""Rain rates from reflectivity, differential reflectivity and specific differential phase."""

from __future__ import annotations

from collections.abc import Sequence
from typing import TYPE_CHECKING, NamedTuple

import numpy as np

from .. import _core
from .arguments import (as_field, as_field_like, as_numbers, choice, finite, gate_spacing, number,
                        only_given, positive)
from .scans import per_gate, per_scan

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


class _Relation(NamedTuple):
    number: int
    needs: tuple[str, ...]
    coefficients: int
    positive: int = 2  # leading ones: factor and exponent of a power law


RELATIONS = {
    "z": _Relation(0, ("dbzh",), 2),
    "z_zdr": _Relation(1, ("dbzh", "zdr"), 3),
    "kdp_zdr": _Relation(2, ("kdp", "zdr"), 3),
    "kdp": _Relation(3, ("kdp",), 2),
    "z_zdr_polynomial": _Relation(4, ("dbzh", "zdr"), 4, positive=0),
}


def rain_rate(dbzh: ArrayLike | None = None, *, zdr: ArrayLike | None = None,
              kdp: ArrayLike | None = None, relation: str = "z",
              coefficients: Sequence[float] | None = None) -> NDArray[np.float32]:
    """Rain rate, gate by gate, by one of five relations, with ``Z = 10^(0.1 dbzh)``:

    ====================  =========================================================  ============
    relation              R                                                          needs
    ====================  =========================================================  ============
    ``z``                 (Z / c0)^(1 / c1), Marshall and Palmer (1948)              dbzh
    ``z_zdr``             c0 Z^c1 10^(c2 zdr)                                        dbzh and zdr
    ``kdp_zdr``           c0 kdp^c1 10^(c2 zdr)                                      kdp and zdr
    ``kdp``               c0 kdp^c1                                                  kdp
    ``z_zdr_polynomial``  10^(0.1 (dbzh - (c0 + c1 zdr + c2 zdr^2 + c3 zdr^3)))      dbzh and zdr
    ====================  =========================================================  ============

    Forms of the relations with `zdr` and `kdp`: Bringi and Chandrasekar (2001); their coefficients, and
    the polynomial, are empirical ones of the library.

    Parameters
    ----------
    dbzh : array_like
        Horizontal reflectivity, dBZ, of any shape.
    zdr, kdp : array_like
        Differential reflectivity (dB) and specific differential phase (degrees/km) of the same shape.
    relation : str
        One of the table.
    coefficients : sequence of float, optional
        Leading coefficients of the relation in place of its own: 200 and 1.6; 0.01583, 0.8349 and
        -0.3732; 49.2144, 0.9429 and -0.2731; 20.47 and 0.75; 18.996, 16.9758, -9.4325 and 2.1542.
        c0 and c1 are positive, except in the polynomial.

    Returns
    -------
    numpy.ndarray of float32
        mm/h. NaN stays NaN, and a negative `kdp` gives NaN.

    Raises
    ------
    ValueError
        A wrong shape, an unknown relation, a missing array or one that the relation does not
        use, too many coefficients, or a factor or exponent of a power law that is not positive.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.rain_rate([23.0103, 40.0]).round(2)
    array([ 1.  , 11.53], dtype=float32)
    >>> cc.rain_rate(kdp=[1.0], relation="kdp")
    array([20.47], dtype=float32)
    """
    row = RELATIONS[choice("relation", relation, RELATIONS)]
    given = only_given(dbzh=dbzh, kdp=kdp, zdr=zdr)
    for name in ("dbzh", "kdp", "zdr"):
        if (name in given) != (name in row.needs):
            verb = "does not use" if name in given else "needs"
            raise ValueError(f"the relation {relation!r} {verb} {name}")
    listed = as_numbers("coefficients", () if coefficients is None else coefficients)
    if listed.ndim != 1:
        raise ValueError(f"coefficients must be a list of numbers, not {coefficients!r}")
    own = [(positive if at < row.positive else finite)("coefficients", value)
           for at, value in enumerate(listed)]
    if len(own) > row.coefficients:
        raise ValueError(f"the relation {relation!r} has {row.coefficients} coefficients, not {len(own)}")
    first = row.needs[0]
    fields = {first: as_numbers(first, given[first], np.float32)}
    for name in row.needs[1:]:
        fields[name] = as_field_like(name, given[name], fields[first], first)
    return _core.rain_rate(fields.get("dbzh"), fields.get("zdr"), fields.get("kdp"), row.number, own)[()]


def hybrid_rain_rate(dbzh: ArrayLike, zdr: ArrayLike, *, range: ArrayLike, elevation: ArrayLike = 0.0,
                     freezing_level: ArrayLike = 3000.0) -> NDArray[np.float32]:
    """Rain rate of scans from reflectivity, and from differential reflectivity where it helps.

    Relation ``z_zdr`` of `rain_rate` where ``dbzh > 15``, ``0.3 < zdr < 5`` and the beam is not above
    the freezing level less 500 m; ``z`` elsewhere. The thresholds are empirical ones of the library.

    Parameters
    ----------
    dbzh, zdr : array_like, shape (..., azimuth, range)
        Horizontal reflectivity (dBZ) and differential reflectivity (dB).
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only that counts: gate g is taken at g spacings.
    elevation : float or array_like
        Elevation of the scan, degrees; one for all scans, or one for each.
    freezing_level : float or array_like
        Height of the freezing level above the antenna, m; for all gates, each ray or each gate.

    Returns
    -------
    numpy.ndarray of float32
        mm/h; gates of all classes hold a value.

    Raises
    ------
    ValueError
        A wrong shape.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.hybrid_rain_rate([[40.0, 40.0]], [[0.0, 1.5]], range=250.0).round(2)
    array([[11.53,  9.53]], dtype=float32)
    """
    field = as_field("dbzh", dbzh, np.float32)
    return _core.hybrid_rain_rate(
        field, as_field_like("zdr", zdr, field, "dbzh"),
        per_gate("freezing_level", freezing_level, field.shape, np.float32),
        np.deg2rad(per_scan("elevation", elevation, field.shape)), gate_spacing(range, field.shape[-1]))


def _single(name: str, value: float) -> float:
    """A coefficient as the library computes with it: positive in single precision, too."""
    with np.errstate(over="ignore"):
        return positive(name, np.float32(finite(name, value)))


def z_to_rain(dbzh: ArrayLike, *, a: float = 200.0, b: float = 1.6,
              threshold: float = -32.0) -> NDArray[np.float32]:
    """Rain rate, mm/h: ``(10^(0.1 dbzh) / a)^(1 / b)``, Marshall and Palmer (1948).

    Parameters
    ----------
    dbzh : array_like
        Horizontal reflectivity, dBZ, of any shape.
    a, b : float
        Coefficients of ``Z = a R^b``, positive; rounded to single precision.
    threshold : float
        Highest reflectivity of gates without rain, dBZ: values not above it, NaN included, give 0. (A NaN
        stays NaN in `rain_rate`.)

    Returns
    -------
    numpy.ndarray of float32
        mm/h.

    Raises
    ------
    ValueError
        A coefficient that is not positive, or NaN in place of a number.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.z_to_rain([-32.0, 23.0103]).round(3)
    array([0., 1.], dtype=float32)
    """
    return _core.z_to_rain(as_numbers("dbzh", dbzh, np.float32), _single("a", a), _single("b", b),
                           number("threshold", threshold))[()]


def rain_to_z(rain: ArrayLike, *, a: float = 200.0, b: float = 1.6,
              no_rain: float = -32.0) -> NDArray[np.float32]:
    """Reflectivity, dBZ: ``10 log10(a rain^b)``, Marshall and Palmer (1948); the inverse of `z_to_rain`.

    Parameters
    ----------
    rain : array_like
        Rain rate, mm/h, of any shape.
    a, b : float
        Coefficients of ``Z = a R^b``, positive; rounded to single precision.
    no_rain : float
        Reflectivity where `rain` is not above 0, NaN included, dBZ.

    Returns
    -------
    numpy.ndarray of float32
        dBZ.

    Raises
    ------
    ValueError
        A coefficient that is not positive, or NaN in place of a number.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.rain_to_z([0.0, 1.0])
    array([-32.    ,  23.0103], dtype=float32)
    """
    return _core.rain_to_z(as_numbers("rain", rain, np.float32), _single("a", a), _single("b", b),
                           number("no_rain", no_rain))[()]
