"""The library's main job on numpy arrays."""

from __future__ import annotations

import functools
import os
from collections.abc import Callable, Iterable
from pathlib import Path
from typing import Any, NamedTuple, Union

import numpy as np
from numpy.typing import ArrayLike, DTypeLike, NDArray

from .. import _core
from ..echo import Inputs
from .arguments import (NO_ECHO, as_field, as_field_like, finite, gate_spacing, number, only_given, whole,
                        window_pair)
from .scans import angles

InputSelection = Union[Inputs, int, str, Iterable[Union[Inputs, int, str]], None]

#: Membership functions that come with the package.
_PACKAGED = str(Path(__file__).parent.parent / "membership")

#: Defaults, which need no checks: what is done beside the library's own work is paid for by every scan.
_WINDOW = (5, 3)
_HORIZONTAL = 0.0
_WRAD = int(Inputs.WRAD)

#: The array that each input is made of.
ARRAYS = {
    Inputs.DBZH_TEXTURE: "dbzh", Inputs.ZDR_TEXTURE: "zdr", Inputs.PHIDP_TEXTURE: "phidp",
    Inputs.RHOHV_TEXTURE: "rhohv", Inputs.VRAD: "vrad", Inputs.LDR: "ldr",
    Inputs.CLUTTER_LIKELIHOOD: "clutter_likelihood", Inputs.RHOHV: "rhohv", Inputs.WRAD: "wrad",
}


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
        functions that come with the package. Whether it exists is not looked at.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.membership_directory("my/functions")
    'my/functions'
    """
    if membership is not None and not isinstance(membership, (str, bytes, os.PathLike)):
        raise TypeError(f"membership must be a path, not {membership!r}")
    return os.fsdecode(membership or os.environ.get("CLUTTERCLASSIFIER_MEMBERSHIP") or _PACKAGED)


@functools.lru_cache(maxsize=64)
def _checked_directory(directory: str, mask: int, all_classes: bool, changed: int) -> str:
    """The directory as the library takes it, once its files were seen to be readable."""
    try:
        return _core.membership_directory(directory, mask, all_classes)
    except RuntimeError as error:
        raise FileNotFoundError(str(error)) from None


def ready_directory(membership: str | os.PathLike[str] | None, mask: int, all_classes: bool) -> str:
    directory = membership_directory(membership)
    try:
        changed = os.stat(directory).st_mtime_ns
    except OSError as error:
        raise FileNotFoundError(f"no membership functions: {error}") from None
    return _checked_directory(directory, mask, all_classes, changed)


@functools.lru_cache(maxsize=None)
def _possible_inputs(available: frozenset[str]) -> Inputs:
    """The inputs that some arrays allow."""
    return Inputs(sum(bit for bit, name in ARRAYS.items() if name in available))


def parse_inputs(inputs: InputSelection, available: Iterable[str]) -> Inputs:
    """The inputs that are asked for; all that are `available` (names of arguments) for None.

    Raises
    ------
    ValueError
        for a name that is no input, an input whose array is missing, and when nothing is left.
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
        raise ValueError(f"an input was asked for, but not given: {', '.join(names)}")
    if not wanted:
        raise ValueError("inputs selects nothing")
    return wanted


class Options(NamedTuple):
    """What the classification does beside its default, checked."""

    window: tuple[int, int] = _WINDOW
    remove_isolated: bool = False
    all_classes: bool = False


def check_options(texture_window: tuple[int, int], remove_isolated: bool, all_classes: bool) -> Options:
    """The options of a call.

    Raises
    ------
    TypeError, ValueError
        for a window that is none.
    """
    window = texture_window
    if window is not _WINDOW:
        window = window_pair("texture_window", texture_window, odd=True)
    return Options(window, bool(remove_isolated), bool(all_classes))


def _precision(given: Any, inputs: Inputs, options: Options) -> DTypeLike:
    """Doubles go through the entry point; it has no argument for anything but the defaults."""
    plain = given != np.float32 and options == _DEFAULTS and not int(inputs) & _WRAD
    return np.float64 if plain else np.float32


_DEFAULTS = Options()


def classify(dbzh: ArrayLike, *, zdr: ArrayLike | None = None, phidp: ArrayLike | None = None,
             rhohv: ArrayLike | None = None, vrad: ArrayLike | None = None,
             wrad: ArrayLike | None = None, ldr: ArrayLike | None = None,
             clutter_likelihood: ArrayLike | None = None, range: ArrayLike,
             azimuth: ArrayLike | None = None, elevation: ArrayLike = _HORIZONTAL, radar_constant: float,
             min_snr: float = 26.0, inputs: InputSelection = None,
             membership: str | os.PathLike[str] | None = None,
             texture_window: tuple[int, int] = _WINDOW, remove_isolated: bool = False,
             all_classes: bool = False, missing: str = "keep") -> NDArray[np.uint8]:
    """Tell precipitation from ground clutter and noise, gate by gate.

    Fuzzy logic over textures and raw quantities. A gate whose signal-to-noise ratio
    ``dbzh - 20 log10(range in km) + radar_constant`` is below `min_snr` is noise; every other one is
    precipitation or ground clutter, whichever its inputs speak for (precipitation where they do not
    decide).

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
        Tell sea and wind-turbine clutter from ground clutter.
    missing : {"keep", "no_echo"}
        What a NaN in `dbzh` means. ``"keep"`` hands it to the library as it is: such a gate is not
        noise, and spoils the textures around it. ``"no_echo"`` makes it noise. Masked gates of a
        masked array always count as without echo.

    Returns
    -------
    numpy.ndarray of uint8
        Codes of `EchoClass`, in the shape of `dbzh`.

    Raises
    ------
    ValueError
        An argument of a wrong shape or outside its range; the message names it.
    FileNotFoundError
        A membership function of a used input is missing.

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
    options = check_options(texture_window, remove_isolated, all_classes)
    dtype = _precision(getattr(dbzh, "dtype", None), mask, options)
    fields = {"dbzh": as_field("dbzh", dbzh, dtype, NO_ECHO)}
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
    settings: dict[str, Any] = {
        "spacing": gate_spacing(range, shape[-1]),
        "radar_constant": finite("radar_constant", radar_constant),
        "min_snr": number("min_snr", min_snr),
        "inputs": mask, "options": options,
        "directory": ready_directory(membership, int(mask), all_classes),
    }
    out = np.empty(shape, np.uint8)
    for at in [*np.ndindex(shape[:-2])] if len(shape) > 2 else [()]:
        classify_scan({name: field[at] for name, field in fields.items()}, out=out[at], **settings)
    return out


def classify_scan(fields: dict[str, NDArray[Any]], *, out: NDArray[np.uint8], spacing: float,
                  radar_constant: float, min_snr: float, inputs: Inputs, options: Options,
                  directory: str) -> None:
    """Writes the classes of one scan to `out`. Everything was checked before."""
    dtype = _precision(fields["dbzh"].dtype, inputs, options)
    plain = dtype == np.float64
    arrays = [None if name not in fields else np.ascontiguousarray(fields[name], dtype)
              for name in _ORDER[plain]]
    settings: dict[str, Any] = {"spacing": spacing, "radar_constant": radar_constant, "min_snr": min_snr,
                                "inputs": int(inputs), "out": out}
    run: Callable[..., None] = _core.classify
    if not plain:
        gates, rays = options.window
        settings |= {"texture_gates": gates, "texture_rays": rays,
                     "remove_isolated": options.remove_isolated, "all_classes": options.all_classes}
        run = _core.classify_stage
    run(directory, *arrays, **settings)


#: Arguments of the two ways through the library, in their order.
_ORDER = {
    True: ("dbzh", "zdr", "phidp", "rhohv", "vrad", "ldr", "clutter_likelihood"),
    False: ("dbzh", "zdr", "phidp", "rhohv", "vrad", "wrad", "ldr", "clutter_likelihood"),
}
