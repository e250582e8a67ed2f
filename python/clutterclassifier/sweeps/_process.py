"""The processing chain on sweeps."""

from __future__ import annotations

from typing import Any

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays import process as _process
from .._arrays.classify import InputSelection, Membership
from .._arrays.process import KEYS, Processed, Stage
from .._arrays.settings import Config, Settings, read_settings
from .._model.echo import MISSING, Inputs
from ._apply import apply, is_no_echo, no_echo_value, on_measured, with_front
from ._calibration import Calibration, estimate_now, find_calibration
from ._classify import NEIGHBOURHOOD, words_of
from ._codes import CLASS, class_attributes, library_codes
from ._geometry import angles, is_rhi
from ._prepare import filtered_reflectivity, is_filtered
from ._results import describe, described, unusual, with_attributes, with_history
from ._sweep import FieldMap, Sweep, find_sweep, has_gates

_STAGES = tuple(stage for stage in Stage if stage != Stage.ALL)


def _process_arrays(dbzh: NDArray[Any], *, filtered: NDArray[Any] | None = None, settings: dict[str, Any],
                    names: tuple[str, ...], no_echo: float | None, front: int, **others: Any
                    ) -> tuple[NDArray[Any], ...]:
    """Fields in the order of `names`, and the classes where there are any."""
    if filtered is None:
        return _process_scans(dbzh, names=names, no_echo=no_echo, settings=settings, front=front, **others)
    results = []
    for at in np.ndindex(dbzh.shape[:-2]):  # each scan may use the velocity or not
        inputs = settings["inputs"] & (~Inputs.VRAD if is_filtered(dbzh[at], filtered[at]) else Inputs.ALL)
        one = {name: values[at] for name, values in others.items()}
        results.append(_process_scans(dbzh[at], names=names, no_echo=no_echo, front=front,
                                      settings=settings | {"inputs": inputs}, **one))
    return tuple(np.stack(arrays).reshape(dbzh.shape) for arrays in zip(*results))


def _process_scans(dbzh: NDArray[Any], *, names: tuple[str, ...], no_echo: float | None,
                   settings: dict[str, Any], front: int, **others: Any) -> tuple[NDArray[Any], ...]:
    if dbzh.dtype.kind != "f":
        dbzh = dbzh.astype(np.float64)
    unknown = np.isnan(dbzh)
    nothing = is_no_echo(dbzh, no_echo)
    gates: dict[str, Any] = {
        name: with_front(values, front, MISSING if name == "classes" else np.nan)
        for name, values in others.items() if name in (*KEYS, "classes")}
    result = _process.process(with_front(on_measured(dbzh, no_echo), front, np.nan), **others | gates,
                              **settings)
    found = {name: values[..., front:].copy() for name, values in result.fields.items()}
    if not result.stages & Stage.BLANKING:
        for name, value in (("DBZH", no_echo), ("RATE", 0.0)):  # without echo there is no rain
            if name in found:
                found[name][nothing] = value
    fields = tuple(found[name] for name in names)
    if result.classes is None:
        return fields
    return (*fields, np.where(unknown, np.uint8(MISSING), result.classes[..., front:]))


def _foresee(sweep: Sweep, arguments: set[str], settings: dict[str, Any]) -> Processed:
    """The names and stages of the result. They depend only on the settings and on which fields exist, so
    that a scan of a few gates has the same."""
    fields: dict[str, Any] = dict.fromkeys(arguments, np.zeros((3, 8), np.float32))
    known: dict[str, Any] = {"radar_constant": 0.0, "min_snr": 0.0, "range": sweep.spacing}
    return _process.process(**fields, **settings | known)


def process(ds: xr.Dataset, config: Config | Settings = None, *, fields: FieldMap = None,
            inputs: InputSelection = None, what: Stage | int | None = None,
            freezing_level: float | None = None, radar_constant: float | None = None,
            min_snr: float | None = None, membership: Membership = None,
            neighbourhood: tuple[int, int] | None = NEIGHBOURHOOD, seed: int = 1) -> xr.Dataset:
    """Run the processing chain: classification, smoothing, attenuation, rain rate, blanking.

    Parameters
    ----------
    ds : xarray.Dataset
        A sweep; of one that is cut in range see `classify` of sweeps.
    config : path or dict, optional
        Settings of the stages: a file of them, or its keys and values.
    fields : dict, optional
        The variable for each quantity: ``{"dbzh": "my_name"}``; None leaves a quantity out.
    what, inputs, freezing_level, membership, seed
        As for `clutterclassifier.process`; of the velocity see `classify` of sweeps.
    radar_constant, min_snr, neighbourhood
        As for `classify` of sweeps.

    Returns
    -------
    xarray.Dataset
        The fields after the chain by their CfRadial names (see `clutterclassifier.Processed` for the
        others), ``CLASS``, and the other variables of the sweep. A stage that lacks an input is
        left out, which ``history`` reports. Not measured is NaN, and 255 in ``CLASS``. Gates with the
        value of the attribute ``_Undetect`` hold no echo: they are noise.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> from clutterclassifier import sweeps
    >>> rain = sweeps.process(cc.synthetic_scan(5, nrays=90, ngates=200), {"ATTENUATION_ALG": 4})
    >>> rain.RATE.attrs["units"]
    'mm h-1'
    """
    settings = read_settings(config)
    stages = _process.parse_stages(what, settings)
    sweep = find_sweep(ds, fields)
    arrays = {name: sweep.fields[name] for name in KEYS if name in sweep.fields}
    mask = _process.standard_inputs(inputs, settings, set(arrays))
    if CLASS in ds and not stages & Stage.CLASSIFICATION:
        arrays["classes"] = library_codes(ds[CLASS])
    calibration = estimate_now(sweep, find_calibration(ds, radar_constant, min_snr))
    rhi = is_rhi(ds, sweep.rays)
    keywords = {"rhi": rhi, "inputs": mask, "config": settings, "what": stages, "membership": membership,
                "freezing_level": freezing_level, "neighbourhood": neighbourhood,
                "seed": seed}
    outcome = _foresee(sweep, set(arrays), keywords)
    usual = inputs is None and settings.inputs in (None, 255)
    filtered = filtered_reflectivity(ds, sweep, fields) if usual else None
    if filtered is not None:
        arrays["filtered"] = filtered
    keywords |= {"range": sweep.spacing, "radar_constant": calibration.radar_constant,
                 "min_snr": calibration.min_snr}
    names = tuple(outcome.fields)
    dtypes = [np.float32] * len(names) + [np.uint8] * (outcome.classes is not None)
    results = apply(_process_arrays, arrays, sweep.rays, dtypes, along_rays=angles(ds, sweep, rhi),
                    names=names, no_echo=no_echo_value(sweep.dbzh), front=sweep.front, settings=keywords)
    history = _history(sweep, outcome, calibration, settings, filtered,
                       **unusual(process, membership=membership, fields=words_of(fields),
                                 neighbourhood=neighbourhood))
    variables = {name: described(name, result, sweep, history) for name, result in zip(names, results)}
    if outcome.classes is not None:
        classes = with_attributes(results[-1], CLASS, None, history, **class_attributes("library", False))
        classes.encoding = {"_FillValue": np.uint8(MISSING), "dtype": "uint8"}
        variables[CLASS] = classes
    rest = ds.drop_vars([name for name, field in ds.data_vars.items() if has_gates(field)])
    return with_history(rest.assign(variables), history)


def _history(sweep: Sweep, outcome: Processed, calibration: Calibration, settings: Settings,
             filtered: xr.DataArray | None, **others: Any) -> str:
    return describe(
        "process", stages="|".join(str(stage.name) for stage in _STAGES if stage & outcome.stages),
        inputs=int(outcome.inputs) if outcome.stages & Stage.CLASSIFICATION else None,
        radar_constant=calibration.words, min_snr=calibration.min_snr,
        freezing_level=outcome.freezing_level, gates_in_front=sweep.front or None, seed=outcome.seed,
        without_vrad=None if filtered is None else f"where {filtered.name} differs in 1 %",
        settings=" ".join(settings.text.split()) or None, notes="; ".join(outcome.notes) or None,
        **others)
