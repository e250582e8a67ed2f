"""What the entry point makes of the sweeps of the tests."""

from __future__ import annotations

import numpy as np
from conftest import CONSTANT, NAMES, SPACING
from entry_point import entry_point, scan_fields

ARGUMENTS = tuple(NAMES)
MIN_SNR = 10.0


def chosen(mask: int) -> dict[str, str | None]:
    """The fields of a mask: reflectivity always, all others only where their bit is set."""
    return {name: NAMES[name] if mask >> bit & 1 or name == "dbzh" else None
            for bit, name in enumerate(ARGUMENTS)}


def expected(mask: int, seed: int = 1) -> np.ndarray:
    fields = scan_fields(seed=seed)
    given = {name: fields[name] for name, choice in chosen(mask).items() if choice}
    return entry_point(given, SPACING, CONSTANT, MIN_SNR, mask)
