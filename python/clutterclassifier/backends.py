"""xarray engines for the formats of `readers`.

``xr.open_dataset("scan.uf")`` finds the automatic engine by itself where the package is installed;
``engine="clutterclassifier-uf"`` and so on ask for one format. Where the package is only on the path,
give the class: ``xr.open_dataset("scan.uf", engine=AnyFormatBackend)``.
"""

from __future__ import annotations

import operator
import os
from collections.abc import Iterable, Mapping
from typing import Any, ClassVar, Union

import numpy as np
import xarray as xr
from xarray.backends import BackendEntrypoint

from . import readers

Names = Union[Mapping[str, str], None]


class AnyFormatBackend(BackendEntrypoint):
    """Engine ``"clutterclassifier"``: a file of any known format, by its content.

    One sweep is opened, as a Dataset in the data model of `readers.read`: the first, or the one that
    ``group`` (``"sweep_1"``, or its number from 0) says. The file is read at once and not kept open.
    ``layout`` and ``names`` are those of `readers.read`. Nothing is left to decode: xarray's keywords
    for decoding are accepted and have no effect.

    Examples
    --------
    >>> import xarray as xr
    >>> from clutterclassifier.backends import AnyFormatBackend
    >>> xr.open_dataset("scan.uf", engine=AnyFormatBackend, group="sweep_1")  # doctest: +SKIP
    """

    description = "Open radar files: ODIM_H5, CfRadial, NEXRAD Level 2, Universal Format and others"

    open_dataset_parameters: ClassVar[Any] = (
        "filename_or_obj", "drop_variables", "group", "layout", "names", "mask_and_scale",
        "decode_times", "concat_characters", "decode_coords", "use_cftime", "decode_timedelta")

    #: The one format, as a key of `readers.FORMATS`; empty for all.
    format: ClassVar[str] = ""

    #: How the attribute ``source_format`` of its sweeps begins; for formats that share their containers.
    source: ClassVar[str] = ""

    def guess_can_open(self, filename_or_obj: Any) -> bool:
        """Whether a file is certainly of the engine's format. Never raises."""
        try:
            return self._recognises(os.fspath(filename_or_obj))
        except (OSError, TypeError, ValueError):
            return False

    def open_dataset(self, filename_or_obj: Any, *,  # type: ignore[override]  # names its own options
                     drop_variables: str | Iterable[str] | None = None,
                     group: str | int | None = None, layout: int | None = None, names: Names = None,
                     mask_and_scale: Any = None, decode_times: Any = None,
                     concat_characters: Any = None, decode_coords: Any = None,
                     use_cftime: Any = None, decode_timedelta: Any = None) -> xr.Dataset:
        """Open one sweep.

        Raises
        ------
        OSError, ValueError
            As for `readers.read`; also for a `group` that the file does not have.
        """
        sweep = sweep_number(group)
        self._require(filename_or_obj)
        dataset = readers.read_sweep(filename_or_obj, sweep, layout=layout, names=names)
        self._require_source(filename_or_obj, dataset)
        return _without(dataset, drop_variables)

    def open_groups_as_dict(self, filename_or_obj: Any, *,
                            drop_variables: str | Iterable[str] | None = None,
                            layout: int | None = None, names: Names = None) -> dict[str, xr.Dataset]:
        """All sweeps by the names of their groups, ``"/sweep_0"`` and so on, with the site and the
        times of the volume as ``"/"``."""
        self._require(filename_or_obj)
        sweeps = readers.read(filename_or_obj, layout=layout, names=names)
        self._require_source(filename_or_obj, sweeps[0])
        groups = {f"/sweep_{at}": _without(sweep, drop_variables) for at, sweep in enumerate(sweeps)}
        return {"/": _root(sweeps)} | groups

    def open_datatree(self, filename_or_obj: Any, **options: Any) -> Any:
        """The volume as a DataTree, where xarray has one; options of `open_groups_as_dict`."""
        if not hasattr(xr, "DataTree"):
            raise NotImplementedError("this xarray has no DataTree: use clutterclassifier.read")
        return xr.DataTree.from_dict(self.open_groups_as_dict(filename_or_obj, **options))

    def _recognises(self, path: str | bytes) -> bool:
        if not os.path.isfile(path):
            return False
        found = readers.recognise(path)
        if self.source or found in (None, "hdf5", "netcdf") or self.format not in ("", found):
            return False  # other engines open these containers too: ours are asked for by name
        return found != "uf" or _has_whole_record(path)

    def _require(self, path: Any) -> None:
        if self.format:
            readers.require_format(path, self.format)

    def _require_source(self, path: Any, sweep: xr.Dataset) -> None:
        found = sweep.attrs["source_format"]
        if not found.startswith(self.source):
            raise ValueError(f"{os.fsdecode(path)}: is not {self.source}, but {found}")


class UniversalFormatBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-uf"``: Universal Format."""

    description = "Open Universal Format files of radars"
    format = "uf"


class GermanDxBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-dx"``: German DX."""

    description = "Open German DX files of radars"
    format = "dx"


class PolarDataBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-polar"``: polar data files of coded gates, often with ``layout``."""

    description = "Open polar data files of radars"
    format = "polar"


class FieldRecordBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-record"``: field records in polar coordinates."""

    description = "Open field record files of radars"
    format = "record"


class NexradBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-nexrad"``: NEXRAD Level 2."""

    description = "Open NEXRAD Level 2 files of radars"
    format = "nexrad"


class OdimBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-odim"``: ODIM_H5."""

    description = "Open ODIM_H5 files of radars"
    source = "ODIM_H5"


class CfRadialBackend(AnyFormatBackend):
    """Engine ``"clutterclassifier-cfradial"``: CfRadial, releases 1 and 2."""

    description = "Open CfRadial files of radars"
    source = "CfRadial"


def sweep_number(group: str | int | None) -> int:
    """The number of a sweep by ``"sweep_1"``, ``"/sweep_1"`` or 1; 0 for None.

    Raises
    ------
    ValueError
        Anything else.

    Examples
    --------
    >>> sweep_number("sweep_1")
    1
    """
    if group is None:
        return 0
    if isinstance(group, str):
        name, _, number = group.lstrip("/").partition("_")
        if name == "sweep" and number.isascii() and number.isdecimal():
            return int(number)
    elif not isinstance(group, (bool, np.bool_)) and hasattr(group, "__index__"):
        if operator.index(group) >= 0:
            return operator.index(group)
    raise ValueError(f"group must be like 'sweep_0', or a number from 0, not {group!r}")


def _has_whole_record(path: str | bytes) -> bool:
    """Two letters are not enough for a Universal Format file: its first record must fit in it as well."""
    with open(path, "rb") as file:
        length = int.from_bytes(file.read(4), "big")
    return 114 <= length <= os.path.getsize(path) - 8


def _without(dataset: xr.Dataset, drop_variables: str | Iterable[str] | None) -> xr.Dataset:
    if drop_variables is None:
        return dataset
    names = [drop_variables] if isinstance(drop_variables, str) else list(drop_variables)
    return dataset.drop_vars(names, errors="ignore")


def _root(sweeps: list[xr.Dataset]) -> xr.Dataset:
    """The facts that all sweeps of a volume share."""
    first = sweeps[0]
    times = np.concatenate([sweep.time.values for sweep in sweeps])
    groups = [f"sweep_{at}" for at in range(len(sweeps))]
    angles = [float(sweep.sweep_fixed_angle) for sweep in sweeps]
    shared = {name: value for name, value in first.attrs.items()
              if all(sweep.attrs.get(name) == value for sweep in sweeps)}
    return xr.Dataset(
        {"volume_number": ((), 0), "time_coverage_start": ((), times.min()),
         "time_coverage_end": ((), times.max()), "sweep_group_name": ("sweep", groups),
         "sweep_fixed_angle": ("sweep", angles, first.sweep_fixed_angle.attrs)},
        {name: first[name].variable for name in ("latitude", "longitude", "altitude")}, shared)
