"""Precipitation, ground clutter and noise in dual-polarisation weather radar scans.

Functions on numpy arrays, an accessor ``ds.clutter`` on xarray datasets, readers of radar files, and
a command for archives (``python -m clutterclassifier.archive``). See docs/python.md.
"""

from ._classify import classify, membership_directory
from ._synthetic import synthetic_arrays, synthetic_scan
from .echo import (GROUND_CLUTTER, MISSING, NOISE, PRECIPITATION, SEA_CLUTTER, TURBINE_CLUTTER,
                   EchoClass, Inputs)

from ._version import __version__
