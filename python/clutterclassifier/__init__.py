"""Precipitation, ground clutter and noise in dual-polarisation weather radar scans.

Functions on numpy arrays, an accessor ``ds.clutter`` on xarray datasets, readers of radar files, and
a command for archives (``python -m clutterclassifier.archive``). See docs/python.md.
"""

from __future__ import annotations

import importlib
from typing import TYPE_CHECKING

from . import echo, fields
from ._arrays.attenuation import (AttenuationAlgorithm, AttenuationResult, ZdrCorrection, attenuation,
                                  correct_zdr, specific_attenuation)
from ._arrays.beam import (BeamPattern, VerticalProfiles, beam_elevation, beam_height, beam_pattern,
                           correct_profile, slant_range, vertical_profiles)
from ._arrays.classify import Certainty, classify, membership_directory
from ._arrays.hot_spots import HotSpot, HotSpots, hot_spots
from ._arrays.phase import close_phase_gaps, extend_phase, fill_phase, system_phase, unfold_phase
from ._arrays.process import Processed, Stage, process
from ._arrays.rain import hybrid_rain_rate, rain_rate, rain_to_z, z_to_rain
from ._arrays.settings import check_config, config_table, example_config
from ._arrays.signal import (Contingency, RadarConstant, contingency, estimate_radar_constant,
                             signal_to_noise, to_decibels, to_linear)
from ._arrays.toolkit import despeckle, isolated_gates, smooth, texture
from ._arrays.zdr_offset import ScanStatistics, rain_statistics, vertical_statistics
from ._on_import import when_imported
from ._synthetic import synthetic_arrays, synthetic_scan
from ._version import __version__
from .echo import (GROUND_CLUTTER, MISSING, NOISE, PRECIPITATION, SEA_CLUTTER, TURBINE_CLUTTER, EchoClass,
                   Inputs)
from .readers import open_dx, open_polar, open_record, open_uf, read, recognise, write

__all__ = [
    "AttenuationAlgorithm", "AttenuationResult", "BeamPattern", "Certainty", "Contingency", "EchoClass",
    "GROUND_CLUTTER", "HotSpot", "HotSpots", "Inputs", "MISSING", "NOISE", "PRECIPITATION", "Processed",
    "RadarConstant", "SEA_CLUTTER", "ScanStatistics", "Stage", "TURBINE_CLUTTER", "VerticalProfiles",
    "ZdrCorrection", "__version__", "attenuation", "beam_elevation", "beam_height", "beam_pattern",
    "check_config", "classify", "close_phase_gaps", "config_table", "contingency", "correct_profile",
    "correct_zdr", "despeckle", "echo", "estimate_radar_constant", "example_config", "extend_phase", "fields",
    "fill_phase", "hot_spots", "hybrid_rain_rate", "isolated_gates", "membership_directory", "open_dx",
    "open_polar", "open_record", "open_uf", "process", "rain_rate", "rain_statistics", "rain_to_z",
    "read", "recognise", "signal_to_noise", "slant_range", "smooth", "specific_attenuation",
    "synthetic_arrays", "synthetic_scan", "system_phase", "texture", "to_decibels", "to_linear",
    "unfold_phase", "vertical_profiles", "vertical_statistics", "write", "z_to_rain",
]

if TYPE_CHECKING:
    from types import ModuleType

    from . import accessor, backends, membership, plot, pyart, sweeps

if when_imported("xarray", f"{__name__}.accessor"):  # modules that are imported when they are first used
    __all__ += ["accessor", "backends", "membership", "plot", "pyart", "sweeps"]


def __getattr__(name: str) -> ModuleType:
    if name not in __all__:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    return importlib.import_module(f".{name}", __name__)


def __dir__() -> list[str]:
    return sorted({*globals(), *__all__})
