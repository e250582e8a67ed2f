"""Fixtures: small sweeps in the data model of CfRadial 2."""

from __future__ import annotations

import numpy as np
import pytest
import xarray as xr
from clutterclassifier import sweeps
from entry_point import scan_fields

SPACING = 250.0
CONSTANT = 40.0

NAMES = {"dbzh": "DBZH", "zdr": "ZDR", "phidp": "PHIDP", "rhohv": "RHOHV", "vrad": "VRADH", "ldr": "LDR",
         "clutter_likelihood": "CMAP"}


def make_sweep(nrays: int = 24, ngates: int = 60, seed: int = 1, rays: str = "azimuth") -> xr.Dataset:
    """A sweep of the fields of `scan_fields`; `rays` "elevation" makes it an RHI."""
    fields = {NAMES[name]: ((rays, "range"), values, {"raw_name": name})
              for name, values in scan_fields(nrays, ngates, seed).items()}
    azimuth = (np.arange(nrays) + 0.5) * (360 / nrays)
    angles = {"azimuth": ("azimuth", azimuth), "elevation": ("azimuth", np.full(nrays, 1.5))}
    if rays == "elevation":
        angles = {"azimuth": ("elevation", np.full(nrays, 30.0)),
                  "elevation": ("elevation", np.arange(nrays) + 0.5)}
    return xr.Dataset(
        fields | {"sweep_mode": "rhi" if rays == "elevation" else "azimuth_surveillance", "sweep_number": 0,
                  "sweep_fixed_angle": 30.0 if rays == "elevation" else 1.5},
        coords=angles | {"range": ("range", (np.arange(ngates) + 0.5) * SPACING),
                         "time": (rays, np.full(nrays, np.datetime64("2024-05-01T12:00", "ns"))),
                         "latitude": 50.7, "longitude": 7.1, "altitude": 99.0},
        attrs={"radar_constant": CONSTANT, "history": "made"})


def rainy(nrays: int = 36, ngates: int = 200) -> dict[str, np.ndarray]:
    """Uniform rain whose phase rises along the ray, with noise past it."""
    random = np.random.default_rng(2)
    shape = (nrays, ngates)
    ranges = np.arange(ngates) * SPACING / 1000
    beyond = np.arange(ngates) > 160
    return {"dbzh": np.where(beyond, -30.0, 42.0) + 0.3 * random.standard_normal(shape),
            "zdr": 1.5 + 0.1 * random.standard_normal(shape),
            "phidp": 20 + 2.0 * ranges + random.standard_normal(shape),
            "rhohv": np.where(beyond, random.random(shape), 0.99), "vrad": np.full(shape, 8.0)}


def rainy_sweep() -> xr.Dataset:
    names = {"dbzh": "DBZH", "zdr": "ZDR", "phidp": "PHIDP", "rhohv": "RHOHV", "vrad": "VRADH"}
    ds = make_sweep(36, 200).drop_vars(["LDR", "CMAP"])
    return ds.assign({names[name]: (("azimuth", "range"), values, {"raw_name": name})
                      for name, values in rainy().items()})


@pytest.fixture
def gate_by_gate(monkeypatch: pytest.MonkeyPatch) -> None:
    """Sweeps are decided without the neighbourhood, as by the entry point."""
    for step in (sweeps.classify, sweeps.process):
        monkeypatch.setitem(step.__kwdefaults__, "neighbourhood", None)


@pytest.fixture
def made_sweep() -> xr.Dataset:
    return make_sweep()
