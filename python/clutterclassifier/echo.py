"""Classes of echo and inputs of the classification, with the library's own numbers."""

from ._model.echo import (GROUND_CLUTTER, MISSING, NOISE, PRECIPITATION, SEA_CLUTTER, TURBINE_CLUTTER,
                          EchoClass, Inputs)

__all__ = ["GROUND_CLUTTER", "MISSING", "NOISE", "PRECIPITATION", "SEA_CLUTTER", "TURBINE_CLUTTER",
           "EchoClass", "Inputs"]
