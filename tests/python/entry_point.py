"""The C entry point by ctypes, as a host in C calls it: what the package is compared with."""

from __future__ import annotations

import ctypes
from pathlib import Path

import clutterclassifier as cc
import numpy as np

NAMES = ("dbzh", "zdr", "phidp", "rhohv", "vrad", "ldr", "clutter_likelihood")
_Doubles = ctypes.POINTER(ctypes.c_double)


def _load() -> ctypes.CDLL:
    """The library that the extension itself has loaded."""
    maps = Path("/proc/self/maps").read_text()
    path = next(line.split()[-1] for line in maps.splitlines() if "libclutterclassifier.so" in line)
    return ctypes.CDLL(path)


_library = _load()


def _pointer(array: np.ndarray | None) -> object:
    return None if array is None else array.ctypes.data_as(_Doubles)


class CCall:
    """One call, prepared: its result stands in `out`."""

    def __init__(self, fields: dict[str, np.ndarray], spacing: float, radar_constant: float,
                 min_snr: float, mask: int) -> None:
        arrays = [fields.get(name) for name in NAMES]
        arrays = [None if a is None else np.ascontiguousarray(a, np.float64) for a in arrays]
        nrays, ngates = arrays[0].shape
        self.out = np.full((nrays, ngates), np.nan)
        settings = [np.array([0.0, spacing]), np.zeros(nrays), np.zeros(1),
                    np.array([radar_constant, min_snr, mask], np.float64)]
        self._kept = arrays, settings
        self._arguments = (cc.membership_directory().encode() + b"/", nrays, ngates,
                           *map(_pointer, arrays), *map(_pointer, settings), _pointer(self.out))

    def __call__(self) -> None:
        _library.clutterclassifier(*self._arguments)


def entry_point(fields: dict[str, np.ndarray], spacing: float, radar_constant: float, min_snr: float,
                mask: int) -> np.ndarray:
    """Classes of one scan of doubles."""
    call = CCall(fields, spacing, radar_constant, min_snr, mask)
    call()
    return call.out.astype(np.uint8)


def scan_fields(nrays: int = 24, ngates: int = 60, seed: int = 1) -> dict[str, np.ndarray]:
    """Random fields, smooth along half of the rays, with noise beyond some range."""
    random = np.random.default_rng(seed)
    shape = (nrays, ngates)
    rough = np.where(np.arange(nrays)[:, np.newaxis] % 8 < 4, 1.0, 0.1)
    weak = np.where(np.arange(ngates) > 0.8 * ngates, -40.0, 0.0)
    return {
        "dbzh": 25 + 8 * rough * random.standard_normal(shape) + weak,
        "zdr": 1 + 2 * rough * random.standard_normal(shape),
        "phidp": 60 + 30 * rough * random.standard_normal(shape),
        "rhohv": 1 - 0.3 * rough * random.random(shape),
        "vrad": 6 * random.standard_normal(shape) * (1.1 - rough),
        "ldr": -25 + 8 * rough * random.random(shape),
        "clutter_likelihood": random.random(shape),
    }
