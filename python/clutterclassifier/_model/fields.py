"""Names, units and attributes of radar quantities, as CfRadial 2 / WMO FM 301 have them."""

from __future__ import annotations

from typing import NamedTuple


class Quantity(NamedTuple):
    """One radar quantity.

    `aliases` are the names that other conventions have for it, in lower case, those preferred first;
    `argument` is its name among the arguments of functions on arrays.
    """

    name: str
    argument: str
    units: str
    standard_name: str
    long_name: str
    aliases: tuple[str, ...]


#: Names from before the clutter filter come first: there clutter still looks like clutter.
QUANTITIES = (
    Quantity("DBZH", "dbzh", "dBZ", "radar_equivalent_reflectivity_factor_h",
             "Equivalent reflectivity factor H",
             ("dbth", "th", "zt", "tz", "uz", "total_power", "dbzh", "dbz", "reflectivity", "dz", "zh", "z",
              "cz", "corrected_reflectivity", "zv")),
    Quantity("ZDR", "zdr", "dB", "radar_differential_reflectivity_hv",
             "Log differential reflectivity H/V",
             ("uzdr", "zdr", "differential_reflectivity", "zd", "dr")),
    Quantity("PHIDP", "phidp", "degrees", "radar_differential_phase_hv", "Differential phase HV",
             ("uphidp", "phidp", "differential_phase", "ph", "dp", "pdp")),
    Quantity("RHOHV", "rhohv", "unitless", "radar_correlation_coefficient_hv",
             "Correlation coefficient HV",
             ("urhohv", "rhohv", "cross_correlation_ratio", "rh", "rhv")),
    Quantity("VRADH", "vrad", "m s-1", "radial_velocity_of_scatterers_away_from_instrument_h",
             "Radial velocity of scatterers away from instrument H",
             ("vradh", "vrad", "velocity", "vel", "vt", "vr", "ve", "v", "vraddh")),
    Quantity("WRADH", "wrad", "m s-1", "radar_doppler_spectrum_width_h", "Doppler spectrum width H",
             ("wradh", "wrad", "spectrum_width", "width", "sw", "w", "wid")),
    Quantity("LDR", "ldr", "dB", "radar_linear_depolarization_ratio",
             "Linear depolarization ratio",
             ("ldr", "ldrh", "linear_depolarization_ratio", "ld", "lh", "lr", "lv")),
    Quantity("CMAP", "clutter_likelihood", "unitless", "clutter_map", "Clutter map",
             ("cmap", "clutter_likelihood", "pdf")),
    Quantity("KDP", "kdp", "degrees per kilometer", "radar_specific_differential_phase_hv",
             "Specific differential phase HV",
             ("kdp", "specific_differential_phase", "kd")),
    Quantity("SNRH", "snr", "dB", "signal_noise_ratio_h", "Signal to noise ratio H",
             ("snrh", "snr", "sn", "signal_to_noise_ratio")),
    Quantity("RATE", "rain", "mm h-1", "rainfall_rate", "Rain rate", ("rate", "rainfall_rate", "rr", "r")),
)

BY_NAME = {quantity.name: quantity for quantity in QUANTITIES}
BY_ARGUMENT = {quantity.argument: quantity for quantity in QUANTITIES}


def quantity_of(name: str) -> Quantity | None:
    """The quantity of a field name of any known convention; None for an unknown one."""
    lower = name.lower()
    return next((quantity for quantity in QUANTITIES if lower in quantity.aliases), None)
