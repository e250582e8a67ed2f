"""All corrections of scans in one place."""

from __future__ import annotations

from ._attenuation import (AttenuationAlgorithm, AttenuationResult, HotSpot, HotSpots, ZdrCorrection,
                           attenuation, correct_zdr, hot_spots, specific_attenuation)
from ._beam import (BeamPattern, VerticalProfiles, beam_elevation, beam_height, beam_pattern,
                    correct_profile, slant_range, vertical_profiles)
from ._phase import close_phase_gaps, extend_phase, fill_phase, system_phase, unfold_phase
from ._rain import hybrid_rain_rate, rain_rate, rain_to_z, z_to_rain
from ._zdr_offset import ScanStatistics, rain_statistics, vertical_statistics
