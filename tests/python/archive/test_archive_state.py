"""What a run finds of an earlier one may be anything: linked folders, damaged tables, records of any type."""

from __future__ import annotations

import contextlib
import os

import netCDF4
import numpy as np
from archives import failures, make_scan, names_in, serial
from clutterclassifier.archive._failures import FailureTable
from clutterclassifier.archive._files import STAMP_NAMES, is_current, read_stamp, stamp


def test_folders_of_outputs_may_be_links(tmp_path):
    make_scan(tmp_path / "in/radar/scan.nc")
    make_scan(tmp_path / "in/other/scan.nc")
    out, disk = tmp_path / "out", tmp_path / "disk"
    disk.mkdir()
    out.mkdir()
    (out / "radar").symlink_to(disk)
    (disk / "circle").symlink_to(out)
    (disk / ".clutterclassifier-0123456789abcdef").write_text("half")
    assert serial(tmp_path / "in", out).done == 2
    assert (out / "radar").is_symlink()
    assert names_in(disk) == ["scan.nc.nc"]
    assert serial(tmp_path / "in", out).skipped == 2


def changed(original: bytes, random: np.random.Generator) -> bytes:
    """A few bytes other, doubled, inserted or cut off."""
    text = bytearray(original)
    for _ in range(random.integers(1, 6)):
        at, length = random.integers(len(text) + 1), random.integers(40)
        other = [bytes(random.integers(0, 256, length, np.uint8)), b"\"" * length, b"\n,\0\r"[:length], text[at:]]
        text[at:at + random.integers(20)] = other[random.integers(len(other))]
    return bytes(text)


def test_any_table_of_failures_is_read(tmp_path):
    path = tmp_path / "failures.csv"
    random = np.random.default_rng(1)
    table = FailureTable(str(path))
    for name in ("a.uf", "b,\n\".nc", os.fsdecode(b"caf\xe9")):
        table.add(name, "is empty")
    whole = path.read_bytes()
    for damaged in [b"\"" + b"x" * 200_000, *(changed(whole, random) for _ in range(300))]:
        path.write_bytes(damaged)
        table = FailureTable(str(path))
        table.add("new.uf", "is cut short")
        table.finish()
        assert failures(tmp_path)["new.uf"] == "is cut short"


def test_any_record_of_origin_is_another_one(tmp_path):
    source, out = make_scan(tmp_path / "in/scan.nc"), tmp_path / "out"
    serial(source, out)
    output = str(out / "scan.nc.nc")
    wanted = stamp(str(source), read_stamp(output)["settings"])
    assert is_current(output, wanted)
    values = ["", "x", 7, -1, 2.5, np.nan, np.inf, [1, 2], [], np.float32([1, 2]), b"\xff".decode("latin-1"), None]
    for name in STAMP_NAMES:
        for value in values:
            with netCDF4.Dataset(output, "a") as file:
                kept = file.getncattr(name)
                file.delncattr(name)
                if value is not None:
                    file.setncattr(name, value)
            with contextlib.suppress(FileExistsError):  # of another input
                assert not is_current(output, wanted), (name, value)
            with netCDF4.Dataset(output, "a") as file:
                file.setncattr(name, kept)
            assert is_current(output, wanted)
