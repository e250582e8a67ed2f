"""Precipitation, ground clutter and noise in dual-polarisation weather radar scans.

Functions on numpy arrays, an accessor ``ds.clutter`` on xarray datasets, readers of radar files, and
a command for archives (``python -m clutterclassifier.archive``). See docs/python.md.
"""

from ._classify import classify, membership_directory
from ._synthetic import synthetic_arrays, synthetic_scan
from .echo import (GROUND_CLUTTER, MISSING, NOISE, PRECIPITATION, SEA_CLUTTER, TURBINE_CLUTTER,
                   EchoClass, Inputs)
from .readers import open_dx, open_polar, open_record, open_uf, read, recognise

from ._process import Processed, Stage, process
from ._settings import check_config, config_table, example_config
from ._register import when_imported as _when_imported
from ._toolkit import (Contingency, RadarConstant, contingency, despeckle, estimate_radar_constant,
                       isolated_gates, signal_to_noise, smooth, texture, to_decibels, to_linear)
from ._corrections import (AttenuationAlgorithm, AttenuationResult, BeamPattern, HotSpot, HotSpots,
                           ScanStatistics, VerticalProfiles, ZdrCorrection, attenuation,
                           beam_elevation, beam_height, beam_pattern, close_phase_gaps,
                           correct_profile, correct_zdr, extend_phase, fill_phase, hot_spots,
                           hybrid_rain_rate, rain_rate, rain_statistics, rain_to_z, slant_range,
                           specific_attenuation, system_phase, unfold_phase,
                           vertical_profiles, vertical_statistics, z_to_rain)

from ._version import __version__


def _register_accessor() -> None:
    from . import accessor  # noqa: F401


_when_imported("xarray", _register_accessor)
