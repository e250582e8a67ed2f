"""Pictures of sweeps with matplotlib: reflectivity beside classes."""

from ._figure import CLASS_COLOURS, plot

__all__ = ["CLASS_COLOURS", "plot"]
