"""Classes of echo and inputs of the classification, with the library's own numbers."""

from enum import IntEnum, IntFlag


class EchoClass(IntEnum):
    """Class of a gate. Sea and turbine clutter appear only where all classes are requested."""

    PRECIPITATION = 0
    NOISE = 3
    GROUND_CLUTTER = 5
    SEA_CLUTTER = 6
    TURBINE_CLUTTER = 7

    @property
    def meaning(self) -> str:
        """The word of the ``flag_meanings`` attribute: ``"ground_clutter"``."""
        return self.name.lower()


PRECIPITATION = EchoClass.PRECIPITATION
NOISE = EchoClass.NOISE
GROUND_CLUTTER = EchoClass.GROUND_CLUTTER
SEA_CLUTTER = EchoClass.SEA_CLUTTER
TURBINE_CLUTTER = EchoClass.TURBINE_CLUTTER

#: Class of a gate that was not measured, in datasets. The library itself has no such class.
MISSING = 255


class Inputs(IntFlag):
    """Inputs of the fuzzy classification: textures (standard deviations in a window) and values."""

    DBZH_TEXTURE = 1
    ZDR_TEXTURE = 2
    PHIDP_TEXTURE = 4
    RHOHV_TEXTURE = 8
    VRAD = 16
    LDR = 32
    CLUTTER_LIKELIHOOD = 64
    RHOHV = 128
    WRAD = 256

    TEXTURES = 15
    ALL = 511
