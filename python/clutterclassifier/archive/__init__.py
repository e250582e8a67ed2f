"""Whole archives: thousands of radar files classified or processed with Dask.

As a command, ``python -m clutterclassifier.archive INPUT... --out DIR``, or as the function
`classify_archive`. Each input gives one NetCDF file with the classes (groups ``sweep_0`` ... with the
names of CfRadial 2), which is complete or does not exist: a stopped run continues where it was.
"""

from __future__ import annotations

from collections.abc import Iterable
from typing import TYPE_CHECKING, Any

from ._command import main
from ._main_module import refuse_while_imported
from ._plan import PathLike, plan_jobs
from ._run import Place, Run, Summary, settings_of

if TYPE_CHECKING:
    from distributed import Client

__all__ = ["Summary", "classify_archive", "main"]


def classify_archive(files: Iterable[PathLike] | PathLike, out: PathLike, *, process: bool = False,
                     config: PathLike | dict[str, Any] | None = None, scheduler: str | Client | None = None,
                     workers: int | None = None, layout: int | None = None, with_fields: bool = False,
                     overwrite: bool = False, base: PathLike | None = None, pattern: str | None = None,
                     timeout: float | None = 600.0, progress: bool = False, **options: Any) -> Summary:
    """Classify, or process, all files of an archive; one NetCDF file for each.

    Outputs keep the paths of their inputs below `base`, with ``.nc`` appended. An output
    that exists is left alone while its input, the settings, the membership functions and the version are
    the same. Files that fail are listed in ``failures.csv`` in `out`, with the reason, and do not stop the
    run; a file of a worker that dies goes to another one.

    Parameters
    ----------
    files : path or several
        Radar files, folders (with all below them) and patterns such as ``"2024/**/*.uf"``.
    out : path
        Folder for the outputs; made when missing. A cluster must see it, and the inputs, under the
        same paths.
    process : bool
        The whole chain (`clutterclassifier.sweeps.process`) instead of the classification alone.
    config : path or dict, optional
        Settings of the chain; only with `process`.
    scheduler : str or distributed.Client, optional
        An existing scheduler, ``"tcp://host:8786"``; a cluster of processes on this machine by default.
        Its workers must have this package, one thread each.
    workers : int, optional
        Processes of the cluster on this machine; all processors by default. 0 uses no Dask and handles file
        after file in this process.
    layout : {252, 260, 280}, optional
        How the gates of polar data files are packed.
    with_fields : bool
        Keep the fields of the input in the output.
    overwrite : bool
        Make existing outputs again.
    base : path, optional
        Folder below which outputs keep the paths of their inputs; by default the deepest one that
        holds all inputs.
    pattern : str, optional
        Names that files in folders must have: ``"*.uf"``.
    timeout : float, optional
        Seconds after which a file has failed; None waits without limit. It has no effect without Dask.
    progress : bool
        Show progress on standard error: a bar on a terminal, a line now and then elsewhere.
    **options
        Arguments of `clutterclassifier.sweeps.classify` or `process`: `inputs`, `fields`,
        `radar_constant`, `min_snr`, `membership` and so on.

    Returns
    -------
    Summary

    Raises
    ------
    ValueError, FileNotFoundError, TypeError
        An invalid call: nothing was done.
    RuntimeError
        The cluster's processes cannot import the calling script (see the notes).
    BlockingIOError
        Another run is writing to `out`.
    ConnectionError
        There is no scheduler, or it was lost. Complete outputs stay.

    Notes
    -----
    The cluster's processes import the main module, as those of `multiprocessing` do: a script calls
    this function below ``if __name__ == "__main__":``.

    Examples
    --------
    >>> import tempfile
    >>> import clutterclassifier as cc
    >>> from clutterclassifier.archive import classify_archive
    >>> folder = tempfile.TemporaryDirectory()
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=100)
    >>> scan.to_netcdf(folder.name + "/scan.nc")
    >>> summary = classify_archive(folder.name, folder.name + "/classes", workers=0)
    >>> summary.done, summary.failed, summary.gates
    (1, 0, 9000)
    """
    refuse_while_imported()
    place = Place(scheduler, workers, timeout)
    settings = settings_of(process=process, config=config, layout=layout, with_fields=with_fields,
                           options=options)
    plan = plan_jobs(files, out, base=base, pattern=pattern)
    run = Run(plan, out, settings, place, overwrite=overwrite, progress=progress)
    run.perform()
    return run.summary
