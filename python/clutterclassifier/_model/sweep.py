"""Sweeps in the data model of CfRadial 2 / WMO FM 301, as xarray Datasets.

Dimensions ``(azimuth, range)``, or ``(elevation, range)`` for a range-height scan; rays stay in the
order of the file. Fields hold NaN where nothing was measured; where a format also knows "no echo",
its gates keep the format's value for that, the attribute ``_Undetect``.
"""

from __future__ import annotations

from collections.abc import Mapping
from datetime import datetime
from typing import TYPE_CHECKING, Any

import numpy as np

from .echo import MISSING, EchoClass
from .fields import BY_NAME

if TYPE_CHECKING:
    from numpy.typing import NDArray
    import xarray as xr

#: Attributes of the coordinates.
_ANGLE = {"units": "degrees"}
_AZIMUTH = {"standard_name": "ray_azimuth_angle", "long_name": "azimuth_angle_from_true_north",
            "axis": "radial_azimuth_coordinate", **_ANGLE}
_ELEVATION = {"standard_name": "ray_elevation_angle", "long_name": "elevation_angle_from_horizontal_plane",
              "axis": "radial_elevation_coordinate", **_ANGLE}
_RANGE = {"standard_name": "projection_range_coordinate", "long_name": "range_to_measurement_volume",
          "axis": "radial_range_coordinate", "units": "meters"}
_TIME = {"standard_name": "time", "long_name": "time"}
_SITE = {
    "latitude": {"standard_name": "latitude", "long_name": "latitude", "units": "degrees_north"},
    "longitude": {"standard_name": "longitude", "long_name": "longitude", "units": "degrees_east"},
    "altitude": {"standard_name": "altitude", "long_name": "altitude", "units": "meters",
                 "positive": "up"},
}


def flag_attributes(meanings: Mapping[int, str], long_name: str = "Echo class") -> dict[str, Any]:
    """The CF attributes of a field of class codes. CF has no standard name for one; this is the name
    that CfRadial files have."""
    return {"standard_name": "radar_echo_classification", "long_name": long_name, "units": "unitless",
            "flag_values": np.array(list(meanings), np.uint8), "flag_meanings": " ".join(meanings.values())}


def field_variable(name: str, dims: tuple[str, str], values: NDArray[Any],
                   **attributes: Any) -> xr.Variable:
    """A field with the attributes of its CfRadial name; others can be added."""
    import xarray as xr

    attrs: dict[str, Any] = {}
    if name in BY_NAME:
        quantity = BY_NAME[name]
        attrs = {"standard_name": quantity.standard_name, "long_name": quantity.long_name,
                 "units": quantity.units}
    return xr.Variable(dims, values, attrs | attributes)


def class_variable(dims: tuple[str, str], values: NDArray[np.uint8], long_name: str,
                   classes: tuple[EchoClass, ...] = tuple(EchoClass)) -> xr.Variable:
    """A field of class codes."""
    import xarray as xr

    meanings = {int(one): one.meaning for one in classes}
    return xr.Variable(dims, values, flag_attributes(meanings, long_name),
                       {"_FillValue": np.uint8(MISSING)})


def sweep_dataset(fields: Mapping[str, xr.Variable], *, azimuth: NDArray[np.float64],
                  elevation: NDArray[np.float64], range: NDArray[np.float64], gate_spacing: float,
                  time: datetime | NDArray[np.datetime64] | None, latitude: float, longitude: float, altitude: float,
                  fixed_angle: float, sweep_number: int = 0, rhi: bool = False,
                  sector: bool = False, attrs: Mapping[str, Any] | None = None) -> xr.Dataset:
    """One sweep with its coordinates and the variables that describe the scanning."""
    import xarray as xr

    ray = "elevation" if rhi else "azimuth"
    times = time if isinstance(time, np.ndarray) else np.full(azimuth.shape, np.datetime64(time or "NaT", "ns"))
    coords = {
        "azimuth": (ray, azimuth, _AZIMUTH),
        "elevation": (ray, elevation, _ELEVATION),
        "range": ("range", range, _RANGE | {
            "meters_to_center_of_first_gate": float(range[0]),
            "meters_between_gates": float(gate_spacing)}),
        "time": (ray, times, _TIME),
        "latitude": ((), float(latitude), _SITE["latitude"]),
        "longitude": ((), float(longitude), _SITE["longitude"]),
        "altitude": ((), float(altitude), _SITE["altitude"]),
    }
    mode = "rhi" if rhi else "sector" if sector else "azimuth_surveillance"
    scanning = {
        "sweep_mode": ((), mode),
        "sweep_number": ((), sweep_number),
        "prt_mode": ((), "not_set"),
        "follow_mode": ((), "not_set"),
        "sweep_fixed_angle": ((), float(fixed_angle), _ANGLE),
    }
    return xr.Dataset({**fields, **scanning}, coords, dict(attrs or {}))
