"""The processing chain on numpy arrays: classify, smooth, correct attenuation, estimate rain, blank."""

from __future__ import annotations

import os
import re
from dataclasses import dataclass
from enum import IntFlag
from typing import TYPE_CHECKING, Any

import numpy as np

from .. import _core
from .._model.echo import MISSING, Inputs
from .arguments import as_field, as_field_like, finite, gate_spacing, number, only_given, whole, window_pair
from .attenuation import parse_seed
from .classify import ARGUMENTS, InputSelection, membership_directory, parse_inputs
from .scans import angles, per_ray
from .settings import Config, Settings, read_settings, settings_file

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray


class Stage(IntFlag):
    """Stages of the processing chain, in their order."""

    CLASSIFICATION = 1
    ZDR_OFFSET = 2
    SMOOTHING = 4
    ATTENUATION = 8
    RAIN_RATE = 16
    RAIN_TO_DBZH = 32
    DBZH_TO_RAIN = 64
    BLANKING = 128

    ALL = 255


#: Lowest signal-to-noise ratio (dB) of an echo where the caller gives the calibration constant.
DEFAULT_MIN_SNR = 26.0

#: The library's names of fields by arguments.
KEYS = {argument: field for field, argument in ARGUMENTS.items()}

#: CfRadial names of results; others keep the name of their record.
_NAMES = {"Zh": "DBZH", "Zdr": "ZDR", "Phidp": "PHIDP", "RhoHV": "RHOHV", "V": "VRADH", "W": "WRADH",
          "R": "RATE", "SNR": "SNRH"}


@dataclass(frozen=True)
class Processed:
    """Results of the processing chain for one scan, or for several.

    Attributes
    ----------
    fields : dict of float32 arrays
        ``DBZH``, ``ZDR``, ``PHIDP``, ``RHOHV``, ``VRADH``, ``WRADH``, ``LDR`` (the given fields, after
        the chain), ``RATE`` (mm/h) and ``SNRH`` (dB); of the attenuation stage ``Dpdp`` (rise of the
        differential phase along the ray) and ``PdpC`` (rebuilt phase), degrees, ``Ah`` (specific
        attenuation, dB/km), ``TA`` (attenuation of the whole ray, dB) and the coefficients ``a``,
        ``b``, ``alpha``. NaN means no value.
    classes : uint8 array or None
        Codes of `EchoClass`; None without classification.
    notes : tuple of str
        Stages that were left out, and why; oddities of the input.
    stages, inputs : Stage, Inputs
        The stages that ran, and the inputs of the classification.
    radar_constant, min_snr : float64 arrays of the shape of the leading dimensions
        Calibration constant and lowest signal-to-noise ratio of an echo, dB, of each scan.
    freezing_level : float
        Height above the antenna, m.
    seed : int or None
        Of the search for attenuation coefficients; None where there was none.
    """

    fields: dict[str, NDArray[np.float32]]
    classes: NDArray[np.uint8] | None
    notes: tuple[str, ...]
    stages: Stage
    inputs: Inputs
    radar_constant: NDArray[np.float64]
    min_snr: NDArray[np.float64]
    freezing_level: float
    seed: int | None


def parse_stages(what: Stage | int | None, settings: Settings) -> Stage:
    """The requested stages: the argument, else those of the settings, else all."""
    if what is None:
        what = Stage.ALL if settings.what is None else settings.what
    return Stage(whole("what", what, 0, int(Stage.ALL)))


def standard_inputs(inputs: InputSelection, settings: Settings, available: set[str]) -> Inputs:
    """The requested inputs: the argument, else those of the settings, else the library's standard:
    all that there are except the spectrum width."""
    if inputs is not None:
        return parse_inputs(inputs, available)
    possible = parse_inputs(None, available)
    if settings.inputs is None:
        return possible & ~Inputs.WRAD
    if not possible & settings.inputs:
        raise ValueError(f"inputs {settings.inputs} of the settings select none of the fields given")
    return possible & settings.inputs


def _class_field(classes: ArrayLike, reference: NDArray[Any]) -> NDArray[np.float32]:
    field = as_field_like("classes", classes, reference, "dbzh", masked=MISSING)
    return np.where(field == MISSING, np.float32(np.nan), field)


#: Names of quantities in the library's notes.
_KEY_WORDS = re.compile(rf"\b({'|'.join(KEYS.values())})\b")


def _note(text: str) -> str:
    """A note with the names of arguments."""
    return _KEY_WORDS.sub(lambda found: ARGUMENTS[found[0]], text)


def _stacked(results: list[dict[str, Any]], leading: tuple[int, ...]) -> Processed:
    """Results of scans, stacked, with their leading dimensions."""
    def stack(arrays: list[NDArray[Any]]) -> NDArray[Any]:
        return np.stack(arrays).reshape(leading + arrays[0].shape)

    first = results[0]
    fields = {_NAMES.get(name, name): stack([result["fields"][name] for result in results])
              for name in first["fields"]}
    classes = None if first["classes"] is None else stack([result["classes"] for result in results])
    return Processed(
        fields, classes,
        tuple(dict.fromkeys(_note(note) for result in results for note in result["notes"])),
        Stage(first["stages"]), Inputs(first["inputs"]),
        np.array([result["radar_constant"] for result in results]).reshape(leading),
        np.array([result["min_snr"] for result in results]).reshape(leading), first["freezing_level"],
        first["seed"])


def process(dbzh: ArrayLike, *, zdr: ArrayLike | None = None, phidp: ArrayLike | None = None,
            rhohv: ArrayLike | None = None, vrad: ArrayLike | None = None,
            wrad: ArrayLike | None = None, ldr: ArrayLike | None = None,
            clutter_likelihood: ArrayLike | None = None, classes: ArrayLike | None = None,
            range: ArrayLike, azimuth: ArrayLike | None = None, elevation: ArrayLike = 0.0,
            rhi: bool = False, radar_constant: float | None = None, min_snr: float | None = None,
            inputs: InputSelection = None, config: Config | Settings = None,
            what: Stage | int | None = None, freezing_level: float | None = None,
            membership: str | os.PathLike[str] | None = None,
            neighbourhood: tuple[int, int] | None = None, seed: int = 1) -> Processed:
    """Run the processing chain: classification, smoothing, attenuation, rain rate, blanking.

    Formulas, sources and settings of the stages are those of docs/processing.md and
    docs/formats/configuration.md. Stages that lack an input are left out, and noted. The classes are
    those of `classify` with ``remove_isolated=True``, except where the rays do not close a circle:
    there the last ray is not a neighbour of the first.

    Parameters
    ----------
    dbzh, zdr, phidp, rhohv, vrad, wrad, ldr, clutter_likelihood : array_like
        As for `classify`. A gate that is NaN or masked has no value, which means no echo in `dbzh`; gaps of
        `phidp` are closed along the ray after the classification.
    classes : array_like, optional
        Codes of `EchoClass` to use when the classification is not among the stages; 255 means
        no class.
    range : array_like, shape (range,), or float
        Even ranges of the gates, or their spacing, m. Only the spacing counts, in whole metres.
    azimuth : array_like, shape (azimuth,), optional
        Degrees; evenly around the circle by default. Rays on both sides of a gap are not neighbours.
    elevation : float or array_like, shape (azimuth,), optional
        Degrees. One elevation is used for all rays: their median, in an RHI that of the middle ray.
    rhi : bool
        Whether the rays are those of a range-height scan.
    radar_constant : float, optional
        Calibration constant of the signal-to-noise ratio, dB; estimated from each scan by default.
    min_snr : float, optional
        Lowest signal-to-noise ratio of an echo, dB; by default 26 with a given constant, else what
        the estimate says (10 where it found the noise).
    inputs : Inputs, int, str or several of them, optional
        Inputs of the classification; by default those of the settings, else all that the given
        arrays allow except the spectrum width.
    config : path or dict, optional
        Settings of the stages: a file of them, or its keys and values.
    what : Stage or int, optional
        Stages to run; by default those of the settings (``WHAT2DO``), else all.
    freezing_level : float, optional
        Height of the freezing level above the antenna, m; by default that of the settings.
    membership : path, optional
        Directory of membership functions; by default that of the settings, else as for `classify`.
    neighbourhood : (int, int), optional
        As for `classify`.
    seed : int
        Of the random search for attenuation coefficients, see `attenuation`.

    Returns
    -------
    Processed

    Raises
    ------
    ValueError
        An argument of a wrong shape or outside its range, settings that are wrong; the message names
        them.
    FileNotFoundError
        A file of settings or a membership function of a used input is missing.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> result = cc.process(scan.DBZH, zdr=scan.ZDR, phidp=scan.PHIDP, rhohv=scan.RHOHV,
    ...                     range=scan.range, radar_constant=40.0, min_snr=10,
    ...                     config={"RAINFALL_ALG": 0}, what=cc.Stage.CLASSIFICATION | cc.Stage.RAIN_RATE)
    >>> sorted(result.fields)
    ['DBZH', 'PHIDP', 'RATE', 'RHOHV', 'SNRH', 'ZDR']
    """
    given = only_given(zdr=zdr, phidp=phidp, rhohv=rhohv, vrad=vrad, wrad=wrad, ldr=ldr,
                       clutter_likelihood=clutter_likelihood)
    settings = read_settings(config)
    stages = parse_stages(what, settings)
    mask = standard_inputs(inputs, settings, {"dbzh", *given})
    fields = {"zhh": as_field("dbzh", dbzh, np.float32)}
    for name, value in given.items():
        fields[KEYS[name]] = as_field_like(name, value, fields["zhh"], "dbzh")
    if classes is not None and not stages & Stage.CLASSIFICATION:
        fields["CCl"] = _class_field(classes, fields["zhh"])
    shape = fields["zhh"].shape
    round_circle = np.arange(shape[-2]) * (360.0 / shape[-2])
    azimuths = angles("azimuth", round_circle if azimuth is None else azimuth, shape)
    elevations = per_ray("elevation", elevation, shape)
    if min_snr is None and radar_constant is not None:
        min_snr = DEFAULT_MIN_SNR
    arguments: dict[str, Any] = {
        "spacing": gate_spacing(range, shape[-1]),
        "rhi": bool(rhi),
        "radar_constant": None if radar_constant is None else finite("radar_constant", radar_constant),
        "min_snr": None if min_snr is None else number("min_snr", min_snr),
        "inputs": int(mask),
        "what": int(stages),
        "freezing_level": None if freezing_level is None else finite("freezing_level", freezing_level),
        "membership": "",
        "neighbourhood": (0, 0),
        "seed": parse_seed(seed),
    }
    if neighbourhood is not None:
        arguments["neighbourhood"] = window_pair("neighbourhood", neighbourhood, odd=True)
    if stages & Stage.CLASSIFICATION:
        directory = settings.membership if membership is None else membership
        path = os.path.join(membership_directory(directory), "")
        _core.check_membership(path, int(mask))
        arguments["membership"] = path
    with settings_file(settings.text) as path:
        results = [_one_scan({name: field[at] for name, field in fields.items()}, azimuths[at],
                             elevations[at], configuration=path, **arguments)
                   for at in np.ndindex(shape[:-2])]
    return _stacked(results, shape[:-2])


def _one_scan(fields: dict[str, NDArray[np.float32]], azimuth: NDArray[np.float64],
              elevation: NDArray[np.float64], **arguments: Any) -> dict[str, Any]:
    known = elevation[np.isfinite(elevation)]
    try:
        return _core.process(fields=fields, azimuth=np.array(azimuth), elevation=np.array(elevation),
                             fixed_angle=float(np.median(known)) if known.size else 0.0, **arguments)
    except RuntimeError as error:
        raise ValueError(f"the scan cannot be processed: {error}") from None
