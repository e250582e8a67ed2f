"""Names of a file's fields in a sweep Dataset."""

from __future__ import annotations

from collections.abc import Iterable, Mapping, Sequence

from .fields import quantity_of

#: Names that a field cannot take: coordinates and the variables about the scanning.
RESERVED = frozenset((
    "azimuth", "elevation", "range", "time", "latitude", "longitude", "altitude", "sweep_mode",
    "sweep_number", "prt_mode", "follow_mode", "sweep_fixed_angle"))


def check_names(names: Mapping[str, str] | None, raw: Sequence[str]) -> None:
    """Raise ValueError for a map of names that does not fit the `raw` names of a file."""
    names = names or {}
    missing = sorted(set(names) - set(raw))
    if missing:
        raise ValueError(f"names: no field is called {', '.join(missing)}, "
                         f"but {', '.join(sorted(set(raw)))}")
    taken = [name for name in names.values() if name in RESERVED]
    if taken:
        raise ValueError(f"names: {', '.join(taken)} cannot be the name of a field")
    if len(set(names.values())) < len(names):
        raise ValueError("names: two fields have the same new name")


def _preference(raw: str) -> int:
    quantity = quantity_of(raw)
    return quantity.aliases.index(raw.lower()) if quantity else 0


def field_names(raw: Sequence[str], names: Mapping[str, str] | None = None,
                classes: Iterable[int] = ()) -> list[str]:
    """The names of fields, in their order.

    Parameters
    ----------
    raw : sequence of str
        Names in the file. They may be empty or the same.
    names : dict, optional
        New names of some of them: these take precedence.
    classes : iterable of int
        Positions of the fields that hold classes.

    Returns
    -------
    list of str
        CfRadial names where a raw name is known. Of several raw names of one quantity, the one that
        `fields` prefers gets its name; the others keep their own, and so do unknown names. All
        names differ.

    Examples
    --------
    >>> field_names(["DZ", "ZT", "FH"])
    ['DZ', 'DBZH', 'FH']
    >>> field_names(["DZ", "ZT"], {"DZ": "DBZH"})
    ['DBZH', 'ZT']
    """
    names = names or {}
    wanted: dict[int, str] = {}
    for at, name in enumerate(raw):
        if name in names and names[name] not in wanted.values():
            wanted[at] = names[name]
    for at in classes:
        if raw[at] not in names and "CLASS" not in wanted.values():
            wanted[at] = "CLASS"
    for at in sorted(range(len(raw)), key=lambda at: _preference(raw[at])):
        quantity = quantity_of(raw[at])
        if quantity and raw[at] not in names and at not in wanted and quantity.name not in wanted.values():
            wanted[at] = quantity.name
    taken = RESERVED | set(wanted.values())
    result = []
    for at, name in enumerate(raw):
        result.append(wanted.get(at) or _free_name(name, taken))
        taken |= {result[-1]}
    return result


def _free_name(raw: str, taken: frozenset[str] | set[str]) -> str:
    """The raw name as NetCDF can have it, with a number appended where it is taken."""
    name = raw.replace("/", "_") or "unnamed"
    if name not in taken:
        return name
    number = 2
    while f"{name}_{number}" in taken:
        number += 1
    return f"{name}_{number}"
