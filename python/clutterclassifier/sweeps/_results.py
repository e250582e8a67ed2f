"""Attributes and history of results."""

from __future__ import annotations

import inspect
from collections.abc import Callable, Iterable
from typing import Any

import xarray as xr

from .._version import __version__
from .._model.fields import BY_ARGUMENT, BY_NAME
from ._apply import no_echo_value
from ._sweep import Sweep


def with_attributes(field: xr.DataArray, name: str, source: xr.DataArray | None, history: str,
                    **attributes: Any) -> xr.DataArray:
    """A result with the name and attributes of its quantity, those of its source, and its history."""
    quantity = BY_NAME.get(name)
    attrs = {} if source is None else {
        key: value for key, value in source.attrs.items() if key in ("raw_name", "ancillary_variables")}
    if quantity is not None:
        attrs |= {"units": quantity.units, "standard_name": quantity.standard_name,
                  "long_name": quantity.long_name}
    attrs |= attributes | {"history": history if source is None else extended(source, history)}
    result = field.rename(name)
    result.attrs = attrs
    return result


def extended(old: xr.Dataset | xr.DataArray, history: str) -> str:
    """A history with one more line."""
    return f"{old.attrs.get('history', '')}\n{history}".lstrip("\n")


def with_history(ds: xr.Dataset, history: str) -> xr.Dataset:
    """The dataset with one more line in its history."""
    return ds.assign_attrs(history=extended(ds, history))


def unusual(function: Callable[..., Any], **settings: Any) -> dict[str, Any]:
    """The settings that differ from the defaults of a function, as words for the history."""
    defaults = inspect.signature(function).parameters
    return {name: said(value) for name, value in settings.items()
            if said(value) != said(defaults[name].default)}


def said(value: Any) -> Any:
    """A setting in words."""
    if isinstance(value, (str, bytes)) or not isinstance(value, Iterable):
        return getattr(value, "name", value)
    return "|".join(str(said(item)) for item in value)


def describe(function: str, **settings: Any) -> str:
    """One line of history."""
    words = ", ".join(f"{name}={value}" for name, value in settings.items() if value is not None)
    return f"clutterclassifier {__version__}: {function}({words})"


#: Results without a name in CfRadial: units and description.
_OTHER = {
    "Dpdp": ("degrees", "Rise of the differential phase along the ray"),
    "PdpC": ("degrees", "Differential phase rebuilt from the attenuation"),
    "Ah": ("dB/km", "Specific attenuation H"),
    "TA": ("dB", "Attenuation of the whole ray H"),
    "a": ("unitless", "Coefficient a of Ah = a Z^b"),
    "b": ("unitless", "Exponent b of Ah = a Z^b"),
    "alpha": ("dB per degree", "Coefficient alpha of Ah = alpha KDP"),
}


def described(name: str, result: xr.DataArray, sweep: Sweep, history: str) -> xr.DataArray:
    """A result of the chain with the attributes of its quantity and of the field it was made of."""
    sources = {BY_ARGUMENT[argument].name: field for argument, field in sweep.fields.items()}
    source = sources.get(name)
    units, long_name = _OTHER.get(name, (None, None))
    attributes: dict[str, Any] = {} if units is None else {"units": units, "long_name": long_name}
    if name == "DBZH" and source is not None and "_Undetect" in source.attrs:
        attributes["_Undetect"] = no_echo_value(source)
    return with_attributes(result, name, source, history, **attributes)
