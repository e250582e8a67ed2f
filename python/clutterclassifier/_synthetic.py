"""The synthetic dual-polarisation scan, with the true class of every gate."""

from __future__ import annotations

from datetime import datetime
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._arrays.arguments import MOST, whole
from ._model.echo import GROUND_CLUTTER, NOISE, PRECIPITATION
from ._model.fields import BY_ARGUMENT
from ._model.sweep import class_variable, field_variable, sweep_dataset

if TYPE_CHECKING:
    import xarray as xr

#: The scan was never measured, so any date will do.
_TIME = datetime(2000, 1, 1)

_FIELDS = ("dbzh", "zdr", "phidp", "rhohv", "vrad", "wrad", "ldr", "clutter_likelihood")


def synthetic_arrays(seed: int = 0, nrays: int = 360, ngates: int = 1000) -> dict[str, Any]:
    """A synthetic scan as numpy arrays, named like the arguments of `classify`.

    Rain, ground clutter, interference and receiver noise are independent echoes at every gate; the
    fields are a radar's estimates from 16 independent samples of their sum. The same seed gives
    the same scan.

    Parameters
    ----------
    seed : int
        0 to 2**64 - 1.
    nrays, ngates : int
        Size of the scan. The rays always make a full circle; gates are 150 m long.

    Returns
    -------
    dict
        ``dbzh`` (dBZ), ``zdr`` (dB), ``phidp`` (degrees), ``rhohv``, ``vrad`` and ``wrad`` (m/s),
        ``ldr`` (dB; NaN where the cross-polar echo is lost in noise) and ``clutter_likelihood``
        (0..1), float64 of shape (nrays, ngates); ``range`` (m), ``azimuth`` and ``elevation``
        (degrees), ``radar_constant`` and ``min_snr`` (dB), ``nyquist_velocity`` (m/s); and ``truth``,
        the codes of `EchoClass`: noise where rain and clutter together stay below `min_snr`, else
        the stronger of the two.

    Raises
    ------
    ValueError
        A number outside its range.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_arrays(5, nrays=90, ngates=200)
    >>> scan["dbzh"].shape
    (90, 200)
    """
    seed, nrays = whole("seed", seed, 0, 2**64 - 1), whole("nrays", nrays)
    return _core.synthetic_scan(seed, nrays, whole("ngates", ngates, 1, MOST // nrays))


def synthetic_scan(seed: int = 0, nrays: int = 360, ngates: int = 1000) -> xr.Dataset:
    """A synthetic scan as a sweep Dataset, to try things on.

    Parameters
    ----------
    seed, nrays, ngates : int
        As for `synthetic_arrays`, which describes how the scan is made.

    Returns
    -------
    xarray.Dataset
        Fields DBZH, ZDR, PHIDP, RHOHV, VRADH, WRADH, LDR and CMAP with dimensions (azimuth, range),
        and the truth as TRUTH. The attributes ``radar_constant`` and ``min_snr`` (dB) go with the
        classification, ``nyquist_velocity`` is in m/s.

    Raises
    ------
    ValueError
        A number outside its range.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> scan.DBZH.dims
    ('azimuth', 'range')
    >>> scan.attrs["radar_constant"]
    36.0
    """
    scan = synthetic_arrays(seed, nrays, ngates)
    dims = ("azimuth", "range")
    fields = {BY_ARGUMENT[name].name: field_variable(BY_ARGUMENT[name].name, dims, scan[name])
              for name in _FIELDS}
    fields["TRUTH"] = class_variable(dims, scan["truth"], "True class of echo",
                                     (PRECIPITATION, NOISE, GROUND_CLUTTER))
    attrs = {"instrument_name": f"synthetic scan, seed {int(seed)}",
             **{name: scan[name] for name in ("radar_constant", "min_snr", "nyquist_velocity")}}
    return sweep_dataset(
        fields, azimuth=scan["azimuth"], elevation=np.full(len(scan["azimuth"]), scan["elevation"]),
        range=scan["range"], gate_spacing=scan["gate_spacing"], time=_TIME, latitude=0.0, longitude=0.0,
        altitude=0.0, fixed_angle=scan["elevation"], attrs=attrs)
