"""Names, units and attributes of radar quantities, as CfRadial 2 / WMO FM 301 have them."""

from __future__ import annotations

from typing import NamedTuple

from .. import _core


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


def _quantity(name: str, argument: str, units: str, standard_name: str, long_name: str,
              *aliases: str) -> Quantity:
    """Those that a classification can use have the aliases that the program knows: names from before
    the clutter filter come first, because there clutter still looks like clutter."""
    return Quantity(name, argument, units, standard_name, long_name, tuple(_core.known_names(name)) or aliases)


QUANTITIES = (
    _quantity("DBZH", "dbzh", "dBZ", "radar_equivalent_reflectivity_factor_h",
              "Equivalent reflectivity factor H"),
    _quantity("ZDR", "zdr", "dB", "radar_differential_reflectivity_hv",
              "Log differential reflectivity H/V"),
    _quantity("PHIDP", "phidp", "degrees", "radar_differential_phase_hv", "Differential phase HV"),
    _quantity("RHOHV", "rhohv", "unitless", "radar_correlation_coefficient_hv",
              "Correlation coefficient HV"),
    _quantity("VRADH", "vrad", "m s-1", "radial_velocity_of_scatterers_away_from_instrument_h",
              "Radial velocity of scatterers away from instrument H"),
    _quantity("WRADH", "wrad", "m s-1", "radar_doppler_spectrum_width_h", "Doppler spectrum width H"),
    _quantity("LDR", "ldr", "dB", "radar_linear_depolarization_ratio",
              "Linear depolarization ratio"),
    _quantity("CMAP", "clutter_likelihood", "unitless", "clutter_map", "Clutter map"),
    _quantity("KDP", "kdp", "degrees per kilometer", "radar_specific_differential_phase_hv",
              "Specific differential phase HV"),
    _quantity("SNRH", "snr", "dB", "signal_noise_ratio_h", "Signal to noise ratio H",
              "snrh", "snr", "sn", "signal_to_noise_ratio"),
    _quantity("RATE", "rain", "mm h-1", "rainfall_rate", "Rain rate", "rate", "rainfall_rate", "rr", "r"),
)

BY_NAME = {quantity.name: quantity for quantity in QUANTITIES}
BY_ARGUMENT = {quantity.argument: quantity for quantity in QUANTITIES}

#: Share of gates that a clutter filter changes, at least.
FILTER_SHARE = _core.FILTER_SHARE


def is_unfiltered_name(name: str) -> bool:
    """Whether a field name says that it was measured before the clutter filter."""
    return _core.is_unfiltered_name(name)


def quantity_of(name: str) -> Quantity | None:
    """The quantity of a field name of any known convention; None for an unknown one."""
    lower = name.lower()
    return next((quantity for quantity in QUANTITIES if lower in quantity.aliases), None)
