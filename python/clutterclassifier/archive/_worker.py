"""One file of an archive run: read, classified, written."""

from __future__ import annotations

import glob
import hashlib
import json
import os
import warnings
from dataclasses import dataclass, field
from datetime import datetime, timezone
from typing import TYPE_CHECKING, Any

from ._files import complete_or_not_at_all, stamp
from ._plan import Job
from ._progress import printable

if TYPE_CHECKING:
    import xarray as xr


#: The variable with the classes.
CLASS = "CLASS"


@dataclass(frozen=True)
class Settings:
    """The settings of a run, the same for all of its files.

    `options` go to `sweeps.classify` or, with `process`, to `sweeps.process`; `config` among them is
    a `Settings` of the chain.
    """

    process: bool = False
    layout: int | None = None
    with_fields: bool = False
    options: dict[str, Any] = field(default_factory=dict)

    def text(self) -> str:
        """The settings as an output records them. Texts are equal where results would be."""
        from .. import __version__

        words: dict[str, Any] = {"step": "process" if self.process else "classify", "version": __version__,
                                 "with_fields": self.with_fields, **self.options}
        if self.layout is not None:
            words["layout"] = self.layout
        if "config" in words:
            words["config"] = words["config"].text
        words["membership"] = _digest_of_functions(self.options.get("membership"))
        return json.dumps(words, sort_keys=True, default=str)


def _digest_of_functions(membership: str | None) -> str:
    """A directory of membership functions with a checksum of its tables."""
    from .._arrays.classify import membership_directory

    digest = hashlib.sha256()
    directory = membership_directory(membership)
    for path in sorted(glob.glob(os.path.join(glob.escape(directory), "cal_mf_*.dat"))):
        if not os.path.isfile(path):
            continue
        with open(path, "rb") as file:
            digest.update(os.fsencode(os.path.basename(path)) + b"\0" + file.read() + b"\0")
    return f"{membership or 'of the package'} sha256:{digest.hexdigest()}"


@dataclass(frozen=True)
class Outcome:
    """The result of a job: `reason` is empty when its output is complete."""

    source: str
    reason: str = ""
    gates: int = 0


def run_job(job: Job, settings: Settings, settings_text: str) -> Outcome:
    """Performs one job. A bad file is an outcome, not an exception."""
    try:
        return Outcome(job.source, gates=_make_output(job, settings, settings_text))
    except Exception as error:  # one file must not keep the others from being done
        return Outcome(job.source, reason_of(error).removeprefix(f"{job.source}: "))


def reason_of(error: BaseException) -> str:
    """An exception as a phrase."""
    text = " ".join(str(error).split())
    if isinstance(error, MemoryError):
        return f"not enough memory {text}".strip()
    if isinstance(error, (OSError, ValueError, RuntimeError)) and text:
        return text
    return f"{type(error).__name__}: {text}" if text else type(error).__name__


def _make_output(job: Job, settings: Settings, settings_text: str) -> int:
    """Writes the output of a job; returns the number of its gates."""
    from ._netcdf import write_sweeps

    made_from = stamp(job.source, settings_text)  # taken before reading, so that a later change is noticed
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        given = _sweeps(job.source, settings)
        results = [_result(sweep, settings) for sweep in given]
    if not results:
        raise ValueError("no sweeps in it")
    if settings.text() != settings_text:
        raise RuntimeError("the settings or the membership functions are not those that the run began with")
    attributes = {**_described(given[0], job, settings), **made_from, **_notes(caught)}
    with complete_or_not_at_all(job.output, made_from["source_modified_ns"]) as temporary:
        write_sweeps(temporary, results, attributes)
    return sum(_gates(sweep) for sweep in results)


def _sweeps(path: str, settings: Settings) -> list[xr.Dataset]:
    from .. import readers
    from ._netcdf import is_netcdf, read_netcdf

    if not is_netcdf(path):
        return readers.read(path, layout=settings.layout)
    try:
        return read_netcdf(path)
    except ValueError as error:  # ODIM_H5, stacked sweeps and others that the readers know
        try:
            return readers.read(path)
        except ValueError:
            raise error from None


def _result(sweep: xr.Dataset, settings: Settings) -> xr.Dataset:
    """A sweep with the classes, the results of processing, and the input's fields on request."""
    from .. import sweeps

    fields = [name for name, variable in sweep.data_vars.items() if variable.ndim > 1]
    if settings.process:
        made = sweeps.process(sweep, **settings.options)
        wanted = [name for name in fields if name not in made] if settings.with_fields else []
        return made.assign({name: sweep[name] for name in wanted})
    made = sweeps.classify(sweep, **settings.options)
    return made if settings.with_fields else made.drop_vars(set(fields) - {CLASS})


def _gates(sweep: xr.Dataset) -> int:
    return sweep.sizes["range"] * sweep.sizes["azimuth" if "azimuth" in sweep.sizes else "elevation"]


def _described(sweep: xr.Dataset, job: Job, settings: Settings) -> dict[str, Any]:
    """Attributes of the whole file: those of the input, and one more line of history."""
    from .. import __version__

    now = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    step = "process" if settings.process else "classify"
    name = printable(os.path.basename(job.source))
    line = f"{now} clutterclassifier {__version__}: {step} {name}"
    before = str(sweep.attrs.get("history", "")).strip()
    return {**sweep.attrs, "source": f"clutterclassifier {__version__} from {name}",
            "history": f"{before}\n{line}".strip()}


def _notes(caught: list[warnings.WarningMessage]) -> dict[str, str]:
    """Warnings of the processing, once each, without those for programmers."""
    texts = dict.fromkeys(str(warning.message) for warning in caught
                          if issubclass(warning.category, UserWarning))
    return {"comment": "; ".join(texts)} if texts else {}
