"""Archives of small scans, and what a run made of them."""

from __future__ import annotations

import csv
import re
import sys
import time
from pathlib import Path

import clutterclassifier as cc
import netCDF4
import numpy as np
from clutterclassifier.archive import classify_archive

COMMAND = [sys.executable, "-m", "clutterclassifier.archive"]


def make_scan(path: Path, seed: int = 1) -> Path:
    path.parent.mkdir(parents=True, exist_ok=True)
    cc.synthetic_scan(seed, nrays=30, ngates=50).to_netcdf(path)
    return path


def make_archive(folder: Path, count: int) -> list[str]:
    return [make_scan(folder / f"scan{i:03}.nc", seed=i).name for i in range(count)]


def serial(files, out: Path, **options):
    return classify_archive(files, out, workers=0, **options)


def names_in(folder: Path) -> list[str]:
    """All files at any depth, hidden ones too."""
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def content(path: Path):
    """All that an output holds, except the time in its history."""
    def of(group: netCDF4.Group):
        attributes = {name: np.asarray(group.getncattr(name)).tolist() for name in group.ncattrs()}
        attributes["history"] = re.sub(r"\d{4}-\S+Z", "TIME", attributes.get("history", ""))
        variables = {name: repr((variable.dimensions, variable.dtype, np.asarray(variable[...]).tolist(),
                                 {key: variable.getncattr(key) for key in variable.ncattrs()}))
                     for name, variable in group.variables.items()}
        return attributes, variables, {name: of(inner) for name, inner in group.groups.items()}

    with netCDF4.Dataset(path) as file:
        file.set_auto_maskandscale(False)
        file.set_always_mask(False)
        return of(file)


def failures(out: Path) -> dict[str, str]:
    path = out / "failures.csv"
    if not path.exists():
        return {}
    with open(path, newline="", encoding="utf-8", errors="surrogateescape") as table:
        return {Path(row["file"]).name: row["reason"] for row in csv.DictReader(table)}


def wait_until(condition, seconds: float = 60):
    deadline = time.monotonic() + seconds
    while not (found := condition()):
        assert time.monotonic() < deadline, "waited in vain"
        time.sleep(0.01)
    return found
