"""The calibration constant of a sweep: given, known to the dataset, or estimated from each scan."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays.arguments import finite, number
from .._arrays.process import DEFAULT_MIN_SNR
from .._arrays.signal import estimate_radar_constant
from ._apply import no_echo_value, on_measured, with_front
from ._sweep import RANGE, Sweep

#: Lowest signal-to-noise ratio of an echo (dB) where the dataset has the calibration constant: below
#: it textures are those of the noise.
ECHO_SNR = 10.0


class Calibration(NamedTuple):
    """Constant and lowest ratio, dB; None is left to the estimate from each scan."""

    radar_constant: float | None
    min_snr: float | None
    source: str

    @property
    def words(self) -> str:
        """For the history."""
        constant = "of each scan" if self.radar_constant is None else round(self.radar_constant, 4)
        return f"{constant} ({self.source})"


def find_calibration(ds: xr.Dataset, radar_constant: float | None, min_snr: float | None) -> Calibration:
    """The calibration as far as arguments and attributes give it."""
    if min_snr is None and "min_snr" in ds.attrs:
        min_snr = ds.attrs["min_snr"]
    if radar_constant is not None:
        chosen = (radar_constant, DEFAULT_MIN_SNR, "argument")
    elif "radar_constant" in ds.attrs:
        chosen = (ds.attrs["radar_constant"], ECHO_SNR, "dataset")
    else:
        return Calibration(None, None if min_snr is None else number("min_snr", min_snr), "estimate")
    return Calibration(finite("radar_constant", chosen[0]),
                       number("min_snr", chosen[1] if min_snr is None else min_snr), chosen[2])


def estimate_now(sweep: Sweep, calibration: Calibration) -> Calibration:
    """The estimate itself where no lazy array would be computed: of a single scan in memory."""
    if calibration.radar_constant is not None or sweep.is_lazy or sweep.dbzh.ndim > 2:
        return calibration
    order = (sweep.rays, RANGE)
    rhohv = sweep.fields.get("rhohv")
    constant, ratio = estimated(
        sweep.dbzh.transpose(*order).values, None if rhohv is None else rhohv.transpose(*order).values,
        sweep.spacing, calibration.min_snr, no_echo_value(sweep.dbzh), sweep.front)
    return Calibration(constant, ratio, "estimate")


def estimated(dbzh: NDArray[Any], rhohv: NDArray[Any] | None, spacing: float, min_snr: float | None,
              no_echo: float | None, front: int = 0) -> tuple[float, float]:
    """Constant and lowest ratio of one scan; the gates missing before the first one have no value."""
    dbzh = with_front(on_measured(dbzh, no_echo), front, np.nan)
    rhohv = None if rhohv is None else with_front(rhohv, front, np.nan)
    estimate = estimate_radar_constant(dbzh, rhohv=rhohv, range=spacing)
    return float(estimate.radar_constant), float(estimate.min_snr) if min_snr is None else min_snr
