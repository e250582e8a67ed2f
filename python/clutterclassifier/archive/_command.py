"""The command ``python -m clutterclassifier.archive``."""

from __future__ import annotations

import argparse
import signal
import sys
from collections.abc import Sequence

from ..readers import LAYOUTS
from ._errors import LostScheduler, NotReady
from ._plan import plan_jobs
from ._progress import printable
from ._run import Place, Run, settings_of
from ._worker import reason_of

_FAILED, _BAD_CALL, _STOPPED = 1, 2, 130

_EPILOG = """\
Outputs keep the paths of their inputs below --base, with .nc appended: by default below the deepest
folder that holds all inputs. Each holds groups sweep_0, sweep_1 ... with the variable CLASS:

    xarray.open_dataset("classes/scan.uf.nc", group="sweep_0").CLASS

A stopped run continues where it was when it is started again. Files that fail are listed in
DIR/failures.csv. Exit code: 0 all is done, 1 some files failed, 2 the call makes no sense, 130 stopped.

Examples:
  python -m clutterclassifier.archive archive/ --out classes/
  python -m clutterclassifier.archive '2024/*/*.uf' --out classes/ --workers 4 --inputs dbzh_texture,vrad
  python -m clutterclassifier.archive archive/ --out rain/ --process --config chain.cfg
  python -m clutterclassifier.archive archive/ --out classes/ --scheduler tcp://head:8786
"""


def main(argv: Sequence[str] | None = None) -> int:
    """Runs the command; returns its exit code."""
    arguments = _parser().parse_intermixed_args(argv)
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # batch systems end a run that way
    try:
        return _perform(arguments)
    except KeyboardInterrupt:
        return _complain("stopped", _STOPPED)


def _perform(arguments: argparse.Namespace) -> int:
    try:
        run = _run_of(arguments)
    except (ValueError, TypeError, OSError) as error:
        return _complain(reason_of(error), _BAD_CALL)
    try:
        run.perform()
    except LostScheduler as error:
        return _complain(f"{_summed_up(run, arguments)}{error}; the same call continues here", _FAILED)
    except KeyboardInterrupt:
        return _complain(f"{_summed_up(run, arguments)}stopped; the same call continues here", _STOPPED)
    except (BlockingIOError, ConnectionError, NotReady) as error:
        return _complain(reason_of(error), _BAD_CALL)
    except OSError as error:
        return _complain(reason_of(error), _FAILED)
    if not arguments.quiet:
        print(f"clutterclassifier: {run.summary}", flush=True)
    if not run.summary.failed:
        return 0
    return _complain(f"files without a result are listed in {run.failures_path}", _FAILED)


def _summed_up(run: Run, arguments: argparse.Namespace) -> str:
    return "" if arguments.quiet else f"{run.summary}; "


def _complain(text: str, code: int) -> int:
    print(f"clutterclassifier: {printable(text)}", file=sys.stderr)
    return code


def _run_of(arguments: argparse.Namespace) -> Run:
    options = {name: getattr(arguments, name) for name in
               ("inputs", "fields", "radar_constant", "min_snr", "membership", "texture_window")}
    if hasattr(arguments, "neighbourhood"):
        options["neighbourhood"] = arguments.neighbourhood
    options |= {name: True for name in ("remove_isolated", "all_classes", "certainty")
                if getattr(arguments, name)}
    place = Place(arguments.scheduler, arguments.workers, arguments.timeout or None)
    settings = settings_of(process=arguments.process, config=arguments.config, layout=arguments.layout,
                           with_fields=arguments.with_fields, options=options)
    plan = plan_jobs(arguments.files, arguments.out, base=arguments.base, pattern=arguments.pattern)
    return Run(plan, arguments.out, settings, place, overwrite=arguments.overwrite,
               progress=not arguments.quiet)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="python -m clutterclassifier.archive", epilog=_EPILOG,
        usage="%(prog)s INPUT... --out DIR [options]",
        formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Classify or process thousands of radar files with Dask, one NetCDF file for each.")
    add = parser.add_argument
    add("files", nargs="+", metavar="INPUT",
        help="files, folders with all below them, and patterns ('2024/**/*.uf')")
    add("--out", required=True, metavar="DIR", help="folder for the outputs")
    add("--base", metavar="DIR", help="folder below which outputs keep the paths of their inputs")
    add("--pattern", metavar="NAMES", help="names that files in folders must have, as in '*.uf'")
    add("--overwrite", action="store_true", help="make existing outputs again")
    add("--with-fields", action="store_true", help="keep the fields of the input in the output")
    add("-q", "--quiet", action="store_true", help="no progress and no summary, errors only")
    _add_place(parser)
    _add_step(parser)
    return parser


def _add_place(parser: argparse.ArgumentParser) -> None:
    add = parser.add_argument_group("where the work is done").add_argument
    add("--scheduler", metavar="ADDRESS",
        help="an existing Dask scheduler, tcp://HOST:PORT (default: a cluster on this machine)")
    add("--workers", type=int, metavar="N",
        help="processes on this machine (default: all processors); 0: without Dask, file after file")
    add("--timeout", type=float, default=600.0, metavar="SECONDS",
        help="stop a file after this time (default: %(default)g; 0: never)")


def _add_step(parser: argparse.ArgumentParser) -> None:
    group = parser.add_argument_group(
        "processing", "Windows, isolated gates and all classes are settings of the chain with --process.")
    add = group.add_argument
    add("--process", action="store_true", help="the whole processing chain, not the classes alone")
    add("--config", metavar="FILE", help="settings of the chain (with --process)")
    add("--layout", type=int, choices=LAYOUTS, help="how gates of polar data files are packed")
    add("--fields", type=_pairs, metavar="WHAT=NAME,...",
        help="variables to use, as in dbzh=DZ,vrad=VE (default: known by their names)")
    add("--inputs", type=_names, metavar="NAMES",
        help="inputs of the classifier, as in dbzh_texture,vrad (default: all that a file allows)")
    add("--radar-constant", type=float, metavar="DB",
        help="calibration constant of the signal-to-noise ratio (default: the file's, else estimated)")
    add("--min-snr", type=float, metavar="DB", help="lowest signal-to-noise ratio of an echo")
    add("--texture-window", type=_window, metavar="GATESxRAYS", help="window of textures, odd sizes")
    add("--neighbourhood", type=_window_or_none, default=argparse.SUPPRESS, metavar="GATESxRAYS",
        help="window over which textures count (default: 5x3; off: each gate alone)")
    add("--certainty", action="store_true", help="add the probability of precipitation and the margin")
    add("--remove-isolated", action="store_true", help="turn isolated precipitation gates into clutter")
    add("--all-classes", action="store_true", help="separate sea and wind-turbine from ground clutter")
    add("--membership", metavar="DIR", help="folder of membership functions (default: the package's)")


def _pairs(text: str) -> dict[str, str]:
    pairs = [item.partition("=") for item in text.split(",")]
    if not all(what and name for what, _, name in pairs):
        raise argparse.ArgumentTypeError(f"expected WHAT=NAME,... as in dbzh=DZ: {text}")
    return {what.strip(): name.strip() for what, _, name in pairs}


def _names(text: str) -> list[str]:
    return [name.strip() for name in text.split(",")]


def _window_or_none(text: str) -> tuple[int, int] | None:
    return None if text == "off" else _window(text)


def _window(text: str) -> tuple[int, int]:
    gates, _, rays = text.partition("x")
    if not (gates.isdigit() and rays.isdigit()):
        raise argparse.ArgumentTypeError(f"expected GATESxRAYS as in 5x3: {text}")
    return int(gates), int(rays)
