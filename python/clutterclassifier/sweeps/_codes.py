"""Fields of classes: numberings, attributes, and classes by the names that a caller gives."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any, Union

import numpy as np
import xarray as xr
from numpy.typing import NDArray

from .._arrays.arguments import as_numbers
from .._model.sweep import flag_attributes
from .._model.echo import MISSING, EchoClass
from ._sweep import has_gates

CLASS = "CLASS"

ClassSelection = Union[EchoClass, int, str, Iterable[Union[EchoClass, int, str]]]

#: A numbering that other packages use: 0 means no value,
#: and all clutter is one class.
_PYRAD = {EchoClass.NOISE: 1, EchoClass.GROUND_CLUTTER: 2, EchoClass.SEA_CLUTTER: 2,
          EchoClass.TURBINE_CLUTTER: 2, EchoClass.PRECIPITATION: 3}
_PYRAD_MEANINGS = {1: "NOISE", 2: "CLT", 3: "PREC"}

#: The numberings that are offered.
CODES = ("library", "pyrad")


def code_table(codes: str) -> NDArray[np.uint8] | None:
    """Codes to write in place of the library's; None for the library's own."""
    if codes not in CODES:
        raise ValueError(f"codes must be one of {', '.join(CODES)}, not {codes!r}")
    if codes == "library":
        return None
    table = np.zeros(256, np.uint8)
    for echo, code in _PYRAD.items():
        table[echo] = code
    return table


def class_attributes(codes: str, all_classes: bool) -> dict[str, Any]:
    """CF attributes of a field of classes."""
    if codes == "pyrad":
        meanings = _PYRAD_MEANINGS
    else:
        meanings = {int(echo): echo.meaning for echo in EchoClass if all_classes or echo <= 5}
    return flag_attributes(meanings)


def library_codes(classes: xr.DataArray) -> xr.DataArray:
    """A field of classes in the library's codes, 255 for none, whatever its own numbering.

    Raises
    ------
    TypeError, ValueError
        It does not hold codes of gates, or a flag value is not within 0 and 255.
    """
    if not has_gates(classes):
        raise ValueError(f"{classes.name} must have the dimensions (azimuth, range), not {classes.dims}")
    if classes.dtype.kind not in "fiub":
        raise TypeError(f"{classes.name} must hold codes of classes, not {classes.dtype}")
    flags = as_numbers(f"{classes.name}: flag_values", np.atleast_1d(classes.attrs.get("flag_values", ())))
    own = dict(zip(str(classes.attrs.get("flag_meanings", "")).lower().split(), flags))
    wrong = [value for value in own.values() if not 0 <= value <= 255]
    if wrong:
        raise ValueError(f"{classes.name}: flag_values must be within 0 and 255, not {wrong[0]:g}")
    words = {echo.meaning: int(echo) for echo in EchoClass}
    words |= {"noise": 3, "clt": 5, "prec": 0}
    table = np.full(256, MISSING, np.uint8)
    if own:
        for meaning, value in own.items():
            table[int(value)] = words.get(meaning, MISSING)
    else:
        for echo in EchoClass:
            table[echo] = echo
    result = xr.apply_ufunc(_translate, classes, kwargs={"table": table}, dask="parallelized",
                            output_dtypes=[np.uint8])
    return result.rename(CLASS)


def _translate(codes: NDArray[Any], table: NDArray[np.uint8]) -> NDArray[np.uint8]:
    inside = (codes >= 0) & (codes <= 255)
    return table[np.where(inside, codes, MISSING).astype(np.uint8)]


def parse_classes(name: str, classes: ClassSelection) -> tuple[EchoClass, ...]:
    """Classes by codes or by names such as "precipitation"; "clutter" is all kinds of it."""
    if isinstance(classes, str) or not isinstance(classes, Iterable):
        classes = [classes]
    found: list[EchoClass] = []
    for item in classes:
        if isinstance(item, str) and item.lower() == "clutter":
            found += [EchoClass.GROUND_CLUTTER, EchoClass.SEA_CLUTTER, EchoClass.TURBINE_CLUTTER]
        elif isinstance(item, str) and item.upper() in EchoClass.__members__:
            found.append(EchoClass[item.upper()])
        elif not isinstance(item, str) and item in set(EchoClass):
            found.append(EchoClass(int(item)))
        else:
            known = ", ".join(echo.meaning for echo in EchoClass)
            raise ValueError(f"{name}: no such class: {item!r} ({known}, clutter)")
    return tuple(found)
