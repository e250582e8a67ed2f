"""Steps towards rain on sweeps: signal-to-noise ratio, attenuation, rain rate, height of the beam."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays import attenuation as _attenuation, beam as _beam, rain as _rain, signal as _signal
from .._arrays.arguments import NO_ECHO, choice, finite, number, window_pair
from .._arrays.attenuation import AttenuationAlgorithm
from ._apply import apply, is_no_echo, no_echo_value, on_measured, with_front
from ._calibration import estimate_now, estimated, find_calibration
from ._classify import classify, refuse_keywords
from ._codes import CLASS, library_codes
from ._geometry import angles, is_rhi
from ._results import describe, described, unusual, with_attributes, with_history
from ._sweep import RANGE, FieldMap, find_fields, find_sweep, ray_dimension


def _snr_arrays(dbzh: NDArray[Any], *, constant: float | None, spacing: float, no_echo: float | None,
                front: int, rhohv: NDArray[Any] | None = None) -> NDArray[np.float32]:
    """The ratio of scans, each with its own constant where none is given."""
    dbzh = on_measured(dbzh, no_echo)
    full = with_front(dbzh, front, np.nan)
    if constant is not None:
        return _signal.signal_to_noise(full, range=spacing, radar_constant=constant)[..., front:]
    out = np.empty(dbzh.shape, np.float32)
    for at in np.ndindex(dbzh.shape[:-2]):
        own, _ = estimated(dbzh[at], None if rhohv is None else rhohv[at], spacing, None, None, front)
        out[at] = _signal.signal_to_noise(full[at], range=spacing, radar_constant=own)[..., front:]
    return out


def signal_to_noise(ds: xr.Dataset, *, radar_constant: float | None = None,
                    fields: FieldMap = None) -> xr.Dataset:
    """The signal-to-noise ratio that the classification uses: the sweep with ``SNRH``, dB.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep; of one that is cut in range see `classify` of sweeps.
    radar_constant : float, optional
        dB; by default the attribute of the dataset, else estimated from each scan.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``.

    Returns
    -------
    xarray.Dataset
        NaN where there is no reflectivity or no echo.
    """
    sweep = find_sweep(ds, fields)
    calibration = estimate_now(sweep, find_calibration(ds, radar_constant, None))
    arrays = {name: sweep.fields[name] for name in ("dbzh", "rhohv") if name in sweep.fields}
    if calibration.radar_constant is not None:
        arrays.pop("rhohv", None)
    (ratio,) = apply(_snr_arrays, arrays, sweep.rays, [np.float32], spacing=sweep.spacing,
                     front=sweep.front, constant=calibration.radar_constant,
                     no_echo=no_echo_value(sweep.dbzh))
    history = describe("signal_to_noise", radar_constant=calibration.words,
                       gates_in_front=sweep.front or None)
    return with_history(ds.assign(SNRH=with_attributes(ratio, "SNRH", None, history)), history)


def rain_rate(ds: xr.Dataset, *, relation: str = "z", coefficients: Sequence[float] | None = None,
              fields: FieldMap = None) -> xr.Dataset:
    """Rain rate, gate by gate: the sweep with ``RATE``, mm/h; 0 where there is no echo.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep; `clean` it first, or clutter counts as rain.
    relation, coefficients
        As for `clutterclassifier.rain_rate`; its inputs are found in the sweep: ``DBZH``, ``ZDR``,
        ``KDP`` before variables of other names.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name", "kdp": "mine"}``.

    Returns
    -------
    xarray.Dataset

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> rain = sweeps.rain_rate(sweeps.clean(cc.synthetic_scan(5, nrays=90, ngates=200)))
    >>> rain.RATE.attrs["standard_name"]
    'rainfall_rate'
    """
    found = find_fields(ds, fields, corrected=True)
    needs = _rain.RELATIONS[choice("relation", relation, _rain.RELATIONS)].needs
    for name in needs:
        if name not in found:
            raise ValueError(f"the relation {relation!r} needs {name}, which the dataset does not have")
    arrays = {name: found[name] for name in needs}
    no_echo = no_echo_value(found["dbzh"]) if "dbzh" in arrays else None
    (rate,) = apply(_rain_arrays, arrays, ray_dimension(arrays[needs[0]]), [np.float32], relation=relation,
                    coefficients=coefficients, no_echo=no_echo)
    history = describe("rain_rate", relation=relation, coefficients=coefficients)
    return with_history(ds.assign(RATE=with_attributes(rate, "RATE", None, history)), history)


def _rain_arrays(no_echo: float | None, relation: str, coefficients: Sequence[float] | None,
                 **fields: NDArray[Any]) -> NDArray[np.float32]:
    rate = _rain.rain_rate(**fields, relation=relation, coefficients=coefficients)
    if "dbzh" not in fields:
        return rate
    return np.where(is_no_echo(fields["dbzh"], no_echo), np.float32(0), rate)


def _attenuation_arrays(dbzh: NDArray[Any], phidp: NDArray[Any], classes: NDArray[np.uint8], *,
                        no_echo: float | None, rhi: bool, elevation: NDArray[Any] | None = None,
                        **settings: Any) -> tuple[NDArray[Any], ...]:
    """The results of the stage by `_ATTENUATION`; gates without a reflectivity stay without."""
    if elevation is None:
        elevation = np.zeros(dbzh.shape[:-1])
    middle = elevation[..., elevation.shape[-1] // 2] if rhi else np.median(elevation, -1)
    measured = on_measured(dbzh, no_echo)
    result = _attenuation.attenuation(np.where(np.isnan(measured), NO_ECHO, measured).astype(dbzh.dtype),
                                      phidp=phidp, classes=classes, elevation=middle, **settings)
    corrected = np.where(np.isnan(measured), dbzh.astype(np.float32), result.dbzh)
    return (corrected, *(getattr(result, attribute) for attribute in _ATTENUATION.values()))


#: Variables by members of the result of `clutterclassifier.attenuation`. The first
#: three are fields, the others have one number for each ray.
_ATTENUATION = {"PHIDP": "phidp", "PdpC": "phidp_rebuilt", "Ah": "specific_attenuation",
                "TA": "path_attenuation", "Dpdp": "phase_rise", "a": "a", "b": "b", "alpha": "alpha"}


def attenuation(ds: xr.Dataset, *, freezing_level: float = 3000.0,
                algorithm: AttenuationAlgorithm | int | str = AttenuationAlgorithm.PROFILE,
                min_phase_rise: float = 20.0, phase_window: tuple[int, int] = (17, 1),
                seed: int = 1, fields: FieldMap = None, **keywords: Any) -> xr.Dataset:
    """Correct the reflectivity for the attenuation by rain.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep with reflectivity, differential phase and, unless it is to be classified first, the
        variable ``CLASS``: only precipitation attenuates and is corrected.
    freezing_level : float
        Height of the freezing level above the antenna, m.
    algorithm, min_phase_rise, phase_window, seed
        As for `clutterclassifier.attenuation`.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``.
    **keywords
        Of `classify`, where the sweep has no classes; `name` is that of its variable of classes.

    Returns
    -------
    xarray.Dataset
        The sweep with its reflectivity corrected and its differential phase without offset and
        smoothed, in the variables that they came from; ``PdpC`` (phase rebuilt from the attenuation,
        degrees), ``Ah`` (specific attenuation, dB/km); and along the rays ``TA`` (attenuation of the
        whole ray both ways, dB), ``Dpdp`` (rise of the phase, degrees), ``a``, ``b`` and ``alpha``
        (coefficients).

    Raises
    ------
    TypeError
        A keyword that `classify` does not know, or one that has no effect since there are classes.
    """
    window = window_pair("phase_window", phase_window)
    name_of_classes = keywords.pop("name", CLASS)
    if name_of_classes in ds:
        refuse_keywords("attenuation", keywords, f"the sweep has the variable {name_of_classes}")
    else:
        ds = classify(ds, fields=fields, name=name_of_classes, **keywords)
    sweep = find_sweep(ds, fields, corrected=True)
    if "phidp" not in sweep.fields:
        raise ValueError("the attenuation needs the differential phase, which the dataset does not have")
    rhi = is_rhi(ds, sweep.rays)
    elevation = {name: angle for name, angle in angles(ds, sweep, rhi).items() if name == "elevation"}
    arrays = {"dbzh": sweep.dbzh, "phidp": sweep.fields["phidp"],
              "classes": library_codes(ds[name_of_classes])}
    number_of_algorithm = _attenuation.algorithm_number(algorithm)
    results = apply(_attenuation_arrays, arrays, sweep.rays, [np.float32] * 9, along_rays=elevation,
                    per_ray=5, no_echo=no_echo_value(sweep.dbzh), rhi=rhi, range=sweep.spacing,
                    freezing_level=finite("freezing_level", freezing_level), algorithm=number_of_algorithm,
                    min_phase_rise=number("min_phase_rise", min_phase_rise), phase_window=window,
                    seed=_attenuation.parse_seed(seed))
    history = describe("attenuation", freezing_level=freezing_level, min_phase_rise=min_phase_rise,
                       seed=seed,
                       **unusual(attenuation, phase_window=window),
                       algorithm=AttenuationAlgorithm(number_of_algorithm).name.lower())
    variables: dict[Any, xr.DataArray] = {name: described(name, result, sweep, history)
                                          for name, result in zip(("DBZH", *_ATTENUATION), results)}
    for name, argument in (("DBZH", "dbzh"), ("PHIDP", "phidp")):
        variables[sweep.fields[argument].name] = variables.pop(name)
    return with_history(ds.assign(variables), history)


def beam_height(ds: xr.Dataset) -> xr.Dataset:
    """Height of the gates above the antenna: the sweep with the coordinate ``beam_height``, m.

    By `clutterclassifier.beam_height` (a straight beam over a sphere) from the coordinates range and
    elevation, ray by ray; of a sweep without elevations from its fixed angle.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> sweep = sweeps.beam_height(cc.synthetic_scan(5, nrays=90, ngates=200))
    >>> sweep.beam_height.dims
    ('azimuth', 'range')
    """
    if RANGE not in ds.coords:
        raise ValueError("the dataset has no coordinate range (m)")
    elevation = ds.get("elevation", ds.get("sweep_fixed_angle"))
    if elevation is None:
        raise ValueError("the dataset has neither elevations nor a fixed angle")
    height = xr.apply_ufunc(_beam.beam_height, ds[RANGE], elevation, keep_attrs=True, dask="parallelized",
                            output_dtypes=[np.float64])
    dims = [name for name in height.dims if name != RANGE]
    height = height.transpose(*dims, RANGE).reset_coords(drop=True)
    height.attrs = {"units": "m", "standard_name": "height", "long_name": "Height above the antenna"}
    return ds.assign_coords(beam_height=height)
