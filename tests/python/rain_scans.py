"""Scans of rain for tests of the corrections."""

from __future__ import annotations

import clutterclassifier as cc
import numpy as np

SPACING = 250.0


def rain_scan(nrays: int = 6, ngates: int = 160, seed: int = 1) -> dict[str, np.ndarray]:
    """Rain cells with the attenuation and the rise of phase that go with them, some gates of clutter."""
    random = np.random.default_rng(seed)
    shape, km = (nrays, ngates), SPACING / 1000
    cells = np.sin(np.arange(ngates) / 9 + 6 * random.random((nrays, 1)))
    dbz = 38 + 6 * cells + random.standard_normal(shape)
    ah = 3e-5 * 10 ** (0.078 * dbz) * (1 + 3 * (np.arange(nrays)[:, np.newaxis] % 3 > 0))
    path = np.cumsum(2 * ah * km, axis=1)
    inside = np.s_[:, min(25, ngates // 4):-min(30, ngates // 4)]
    classes = np.full(shape, cc.PRECIPITATION)
    classes[inside][random.random(classes[inside].shape) < 0.05] = cc.GROUND_CLUTTER
    if ngates < 60:
        classes[inside][random.random(classes[inside].shape) < 0.4] = cc.NOISE
    return {
        "dbzh": (dbz - path).astype(np.float32),
        "zdr": (0.02 * dbz - 0.1 * path).astype(np.float32),
        "phidp": (31 + path / 0.073 + random.standard_normal(shape)).astype(np.float32),
        "rhohv": (1 - 0.05 * random.random(shape)).astype(np.float32),
        "classes": classes.astype(np.uint8),
    }


def attenuated(scan: dict[str, np.ndarray], **settings: object) -> cc.AttenuationResult:
    fields = {name: scan[name] for name in ("dbzh", "phidp", "rhohv", "classes")}
    return cc.attenuation(**fields, **{"range": SPACING, "freezing_level": 2e4} | settings)
