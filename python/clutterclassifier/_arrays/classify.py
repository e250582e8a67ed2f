"""Classification of numpy arrays."""

from __future__ import annotations

import functools
import os
from collections.abc import Iterable
from pathlib import Path
from typing import TYPE_CHECKING, Any, NamedTuple, Union

import numpy as np

from .. import _core
from .._model.echo import Inputs
from .arguments import (NO_ECHO, as_field, as_field_like, finite, gate_spacing, number, only_given, whole,
                        window_pair)
from .scans import angles
from .toolkit import despeckle

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray

InputSelection = Union[Inputs, int, str, Iterable[Union[Inputs, int, str]], None]

#: Membership functions that come with the package.
_PACKAGED = str(Path(__file__).parent.parent / "membership")

Membership = Union[str, "os.PathLike[str]", None]

#: Defaults, which need no checks: every scan pays for what is done beside the library's own work.
_WINDOW = (5, 3)
_HORIZONTAL = 0.0

#: Arguments by the library's names of fields.
ARGUMENTS = {"zhh": "dbzh", "zdr": "zdr", "pdp": "phidp", "rhv": "rhohv", "vel": "vrad", "wid": "wrad",
             "ldr": "ldr", "pdf": "clutter_likelihood"}

#: The array that each input is made of.
ARRAYS = {Inputs(bit): ARGUMENTS[field] for _, field, _, bit, _ in _core.input_table()}


def membership_directory(membership: str | os.PathLike[str] | None = None) -> str:
    """The directory of membership functions that `classify` uses.

    Parameters
    ----------
    membership : path, optional
        The directory itself.

    Returns
    -------
    str
        The argument, else the environment variable ``CLUTTERCLASSIFIER_MEMBERSHIP``, else the
        functions that come with the package. It need not exist.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.membership_directory("my/functions")
    'my/functions'
    """
    if membership is not None and not isinstance(membership, (str, bytes, os.PathLike)):
        raise TypeError(f"membership must be a path, not {membership!r}")
    return os.fsdecode(membership or os.environ.get("CLUTTERCLASSIFIER_MEMBERSHIP") or _PACKAGED)


@functools.lru_cache(maxsize=None)
def _possible_inputs(available: frozenset[str]) -> Inputs:
    """The inputs that some arrays allow."""
    return Inputs(sum(bit for bit, name in ARRAYS.items() if name in available))


def parse_inputs(inputs: InputSelection, available: Iterable[str]) -> Inputs:
    """The requested inputs; all that are `available` (names of arguments) for None.

    Raises
    ------
    ValueError
        for an unknown input, an input whose array is missing, and when nothing is left.
    """
    possible = _possible_inputs(frozenset(available))
    if inputs is None:
        return possible
    if isinstance(inputs, str) or not isinstance(inputs, Iterable):
        inputs = [inputs]
    wanted = Inputs(0)
    for item in inputs:
        if isinstance(item, str):
            name = item.upper().replace("-", "_")
            if name not in Inputs.__members__:
                raise ValueError(f"no such input: {item!r} ({', '.join(Inputs.__members__)})")
            wanted |= Inputs[name]
        else:
            wanted |= Inputs(whole("inputs", item, 0, int(Inputs.ALL)))
    missing = wanted & ~possible
    if missing:
        names = sorted({ARRAYS[bit] for bit in ARRAYS if bit & missing})
        raise ValueError(f"an input was requested, but not given: {', '.join(names)}")
    if not wanted:
        raise ValueError("inputs selects nothing")
    return wanted


class Options(NamedTuple):
    """How to classify, checked."""

    texture: tuple[int, int] = _WINDOW
    neighbourhood: tuple[int, int] | None = None
    remove_isolated: bool = False
    all_classes: bool = False


class Certainty(NamedTuple):
    """Classes, and how sure they are.

    Attributes
    ----------
    classes : uint8 array
        Codes of `EchoClass`.
    probability : float32 array
        Of precipitation, 0..1: 1 / (1 + exp(-margin)).
    margin : float32 array
        Natural logarithm of the strength of precipitation over that of clutter; positive is
        precipitation. Infinite where one of them is 0. NaN, as the probability, at gates that are
        noise.
    """

    classes: NDArray[np.uint8]
    probability: NDArray[np.float32]
    margin: NDArray[np.float32]


def check_options(texture_window: Any, neighbourhood: Any, remove_isolated: bool,
                  all_classes: bool) -> Options:
    """The options of a call.

    Raises
    ------
    TypeError, ValueError
        A window of a wrong size; the message names it.
    """
    window = texture_window
    if window is not _WINDOW:
        window = window_pair("texture_window", texture_window, odd=True)
    if neighbourhood is not None:
        neighbourhood = window_pair("neighbourhood", neighbourhood, odd=True)
    return Options(window, neighbourhood, bool(remove_isolated), bool(all_classes))


def classify(dbzh: ArrayLike, *, zdr: ArrayLike | None = None, phidp: ArrayLike | None = None,
             rhohv: ArrayLike | None = None, vrad: ArrayLike | None = None,
             wrad: ArrayLike | None = None, ldr: ArrayLike | None = None,
             clutter_likelihood: ArrayLike | None = None, range: ArrayLike,
             azimuth: ArrayLike | None = None, elevation: ArrayLike = _HORIZONTAL, radar_constant: float,
             min_snr: float = 26.0, inputs: InputSelection = None,
             membership: str | os.PathLike[str] | None = None,
             texture_window: tuple[int, int] = _WINDOW, remove_isolated: bool = False,
             all_classes: bool = False, missing: str = "keep", neighbourhood: tuple[int, int] | None = None,
             certainty: bool = False) -> Any:
    """Classify precipitation, ground clutter and noise, gate by gate.

    Fuzzy logic over textures and raw quantities. A gate whose signal-to-noise ratio
    ``dbzh - 20 log10(range in km) + radar_constant`` is below `min_snr` is noise; every other one is
    precipitation or ground clutter, whichever its inputs support more (precipitation where both are
    equal).

    Parameters
    ----------
    dbzh : array_like, shape (..., azimuth, range)
        Horizontal reflectivity, dBZ. Leading dimensions are scans of their own.
    zdr, phidp, rhohv, vrad, wrad, ldr, clutter_likelihood : array_like, optional
        Differential reflectivity (dB), differential phase (degrees), co-polar correlation (0..1),
        Doppler velocity (m/s), spectrum width (m/s), linear depolarisation ratio (dB), clutter
        likelihood (0..1), each with the shape of `dbzh`.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only the spacing counts, in whole metres: gate 0 is
        taken one spacing out.
    azimuth, elevation : array_like, shape (azimuth,), or float, optional
        Angles of the rays, degrees. They are checked, but do not change the classes.
    radar_constant : float
        Calibration constant of the signal-to-noise ratio, dB (`estimate_radar_constant` finds one).
    min_snr : float
        Lowest signal-to-noise ratio of an echo, dB.
    inputs : Inputs, int, str or several of them, optional
        Inputs to use, for example ``Inputs.TEXTURES`` or ``["dbzh_texture", "vrad"]``. All that the
        given arrays allow by default.
    membership : path, optional
        Directory of membership functions; by default ``$CLUTTERCLASSIFIER_MEMBERSHIP``, else those
        of the package.
    texture_window : (int, int)
        Gates and rays of the texture window, both odd.
    remove_isolated : bool
        Turn isolated precipitation gates into ground clutter.
    all_classes : bool
        Separate sea and wind-turbine clutter from ground clutter.
    missing : {"keep", "no_echo"}
        Meaning of a NaN in `dbzh`. ``"keep"`` passes it to the library unchanged: such a gate is not
        noise, and spoils the textures around it. ``"no_echo"`` makes it noise. Masked gates of a
        masked array never have an echo.
    neighbourhood : (int, int), optional
        Gates and rays, both odd, over which the share of the textures is averaged before the classes
        are decided: ``(5, 3)`` finds more of the clutter and loses less of the rain. By default each
        gate is decided alone, as by the library's entry point.
    certainty : bool
        Also return how sure the classes are.

    Returns
    -------
    numpy.ndarray of uint8, or Certainty
        Codes of `EchoClass`, in the shape of `dbzh`; with `certainty` a tuple of them, the probability
        of precipitation and the margin.

    Raises
    ------
    ValueError
        An argument of a wrong shape or outside its range; the message names it.
    OSError
        A membership function of a used input cannot be read: there is no result without it.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_arrays(5)
    >>> fields = {name: scan[name] for name in ("dbzh", "zdr", "phidp", "rhohv")}
    >>> classes = cc.classify(**fields, range=scan["range"], radar_constant=scan["radar_constant"],
    ...                       min_snr=scan["min_snr"])
    >>> round(float((classes == scan["truth"]).mean()), 1)
    1.0
    """
    if missing not in ("keep", "no_echo"):
        raise ValueError(f"missing must be 'keep' or 'no_echo', not {missing!r}")
    given = only_given(zdr=zdr, phidp=phidp, rhohv=rhohv, vrad=vrad, wrad=wrad, ldr=ldr,
                       clutter_likelihood=clutter_likelihood)
    mask = parse_inputs(inputs, ["dbzh", *given])
    options = check_options(texture_window, neighbourhood, remove_isolated, all_classes)
    fields = {"dbzh": _as_gates("dbzh", dbzh, NO_ECHO)}
    for name, value in given.items():
        fields[name] = as_field_like(name, value, fields["dbzh"], "dbzh")
    if missing == "no_echo" and np.isnan(fields["dbzh"]).any():
        fields["dbzh"] = np.where(np.isnan(fields["dbzh"]), fields["dbzh"].dtype.type(NO_ECHO),
                                  fields["dbzh"])
    shape = fields["dbzh"].shape
    if azimuth is not None:
        angles("azimuth", azimuth, shape)
    if elevation is not _HORIZONTAL:
        angles("elevation", elevation, shape)
    result = classify_scans(
        fields, spacing=gate_spacing(range, shape[-1]), min_snr=number("min_snr", min_snr), inputs=mask,
        radar_constant=finite("radar_constant", radar_constant), options=options, membership=membership,
        certainty=certainty)
    return result if certainty else result.classes


def _as_gates(name: str, value: ArrayLike, masked: float) -> NDArray[Any]:
    """Floats stay floats, all other numbers become doubles."""
    single = getattr(value, "dtype", None) == np.float32
    return as_field(name, value, np.float32 if single else np.float64, masked)


def settings_of(spacing: float, radar_constant: float, min_snr: float, inputs: Inputs, options: Options,
                sector: bool) -> dict[str, Any]:
    """The settings of the extension. The library knows spacings in whole metres."""
    gates, rays = options.neighbourhood or (0, 0)
    return {"spacing": float(int(spacing)), "radar_constant": radar_constant, "min_snr": min_snr,
            "inputs": int(inputs), "texture_gates": options.texture[0], "texture_rays": options.texture[1],
            "neighbourhood_gates": gates, "neighbourhood_rays": rays, "sector": sector,
            "all_classes": options.all_classes}


def classify_scans(fields: dict[str, NDArray[Any]], *, spacing: float, radar_constant: float,
                   min_snr: float, inputs: Inputs, options: Options, membership: Membership = None,
                   sector: bool = False, certainty: bool = False) -> Certainty:
    """Classes of fields by the names of arguments. Everything was checked before.

    Without `certainty` its arrays are empty. In a `sector` the last ray is not next to the first.
    """
    shape = fields["dbzh"].shape
    classes = np.empty(shape, np.uint8)
    probability, margin = (np.empty(shape if certainty else 0, np.float32) for _ in range(2))
    arrays = {name: as_contiguous(field) for name, field in fields.items()}
    settings = settings_of(spacing, radar_constant, min_snr, inputs, options, sector)
    _core.classify(membership_directory(membership), arrays, settings, classes,
                   probability if certainty else None, margin if certainty else None)
    if options.remove_isolated:
        classes = despeckle(classes, closed=not sector)
    return Certainty(classes, probability, margin)


def as_contiguous(field: NDArray[Any]) -> NDArray[Any]:
    """An array that the extension takes as it is."""
    return np.ascontiguousarray(field, np.float32 if field.dtype == np.float32 else np.float64)
