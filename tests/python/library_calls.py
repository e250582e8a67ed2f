"""Operations of the library's classes by ctypes, past the extension: what the package is compared with."""

from __future__ import annotations

import ctypes
import re

import numpy as np
from entry_point import _library as library

SIZE_OF_RADAR = 1616
_C_TYPES = {int: ctypes.c_int, float: ctypes.c_double, np.float32: ctypes.c_float}


def _argument(value: object) -> object:
    """int, double (float) or float (numpy.float32) by its type, the values of an array, a bytes text."""
    if isinstance(value, np.ndarray):
        assert value.flags.c_contiguous
        return ctypes.c_void_p(value.ctypes.data)
    if value is None or isinstance(value, bytes):
        return value
    return _C_TYPES[type(value)](value)


def radar_call(name: str, *arguments: object, result: type = ctypes.c_int) -> object:
    """Calls one operation, without overloads, of a new Cradarpro, or of CDSP, which holds nothing."""
    this = ctypes.create_string_buffer(SIZE_OF_RADAR)
    library._ZN9CradarproC1Ev(this)
    function = library[_symbol(name)]
    function.restype = result
    return function(this, *map(_argument, arguments))


def _symbol(name: str) -> str:
    mangled = re.compile(rf"_ZN(9Cradarpro|4CDSP){len(name)}{name}E")
    return next(filter(mangled.match, SYMBOLS))


SYMBOLS = """
_ZN4CDSP22GetNxNPointStdWithMaskEPfS0_iiS0_ii _ZN4CDSP9Conv2DPPIEPfS0_S0_iiiii
_ZN9Cradarpro10Ah_optimalEPKdS1_idS1_PdS2_S2_S2_S2_S2_RdS3_iS1_d
_ZN9Cradarpro11Adp_optimalEPKdS1_S1_idddS1_PdRdS3_ _ZN9Cradarpro11findHotSpotEPKdS1_S1_S1_diPdS2_
_ZN9Cradarpro13CompletePhidpEPdS0_iiiS0_ _ZN9Cradarpro13GetInitialPDPEPfS0_iii
_ZN9Cradarpro13VPRCorrectionEPdS0_S0_S0_iddPci _ZN9Cradarpro17CorrectPDPFoldingEPfS0_ii
_ZN9Cradarpro17GetIsolatedPixelsEPfS0_iiiii _ZN9Cradarpro18RainfallEstimationEPfS0_S0_iiS0_iS0_
_ZN9Cradarpro22GetInitialPDP_usingCPIEPfS0_iii _ZN9Cradarpro2AhEPKdS1_S1_iS1_S1_S1_ddPdi
_ZN9Cradarpro4RtoZEPfS0_iff _ZN9Cradarpro4ZtoREPfS0_iff _ZN9Cradarpro4gamaEPddS0_i
_ZN9Cradarpro6h_beamEPddS0_i _ZN9Cradarpro6r_beamEPddS0_i _ZN9Cradarpro9interpPDPEPKdS1_iPd
_ZN9Cradarpro8ZdBtoZmmEPfS0_i _ZN9Cradarpro8ZmmtoZdbEPfS0_i
""".split()


def flush_c() -> None:
    """Whatever the library has printed goes out."""
    ctypes.CDLL(None).fflush(None)
