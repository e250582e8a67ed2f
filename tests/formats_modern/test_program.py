"""Volumes through the program: one output file, a progress bar, every real file to each format and back."""

import gzip
import os
import pty
import subprocess

import h5py
import numpy as np
import pytest
from conftest import dump, real
from test_clean import GATES, RAYS, Z, odim, program
from test_cfradial import make as make_cfradial
from test_odim import make as make_odim
from test_writers import REAL

SWEEPS = 14


def volume(path):
    changes, data = [], {}
    for number in range(1, SWEEPS + 1):
        changes += [(f"dataset{number}/where", *pair) for pair in
                    {"elangle": 0.5 * number, "nrays": RAYS, "nbins": GATES, "rscale": 500.0}.items()]
        changes += [(f"dataset{number}/data1/what", *pair) for pair in
                    {"quantity": np.bytes_("DBZH"), "gain": 0.5, "offset": -32.0, "nodata": 255.0, "undetect": 0.0}.items()]
        data[f"dataset{number}/data1/data"] = Z
    return make_odim(path, changes, data)


def test_a_volume_of_14_sweeps_becomes_one_file_with_a_progress_bar(tmp_path):
    source, target = volume(tmp_path / "in.h5"), tmp_path / "out.h5"
    terminal, errors = pty.openpty()
    with open(terminal, "rb", buffering=0) as screen:
        subprocess.run([os.environ["PROGRAM"], "classify", source, "-o", target], stderr=errors, check=True,
                       stdout=subprocess.DEVNULL)
        os.close(errors)
        shown = screen.read(1 << 16).decode()
    assert "[" in shown and f"7/{SWEEPS}" in shown and shown.endswith("\x1b[K")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["in.h5", "out.h5"]
    with h5py.File(target) as file:
        assert all(f"dataset{number}/quality1/data" in file for number in range(1, SWEEPS + 1))


@pytest.mark.parametrize("name", [*REAL, "rma1_20181111_000457_el1.uf", "dx_10908_20080602_1655.bin"])
def test_real_files_through_every_command(tmp_path, name):
    """Words of Universal Format keep what they were made of; those of other formats have steps of their own."""
    source = real(name)
    before = dump(source, "--hide-no-echo")
    assert before.format in program("info", source)
    program("classify", source, "-o", tmp_path / "classes.h5", "--plot", tmp_path / "classes.png")
    program("plot", source, "-o", tmp_path / "field.png")
    program("convert", source, tmp_path / "there.uf")
    program("convert", tmp_path / "there.uf", tmp_path / "back.h5")
    there, back = dump(tmp_path / "there.uf"), dump(tmp_path / "back.h5")
    names = list(dict.fromkeys(name for sweep in before.sweeps for name in sweep.values))
    for old, new, last in zip(before.sweeps, there.sweeps, back.sweeps, strict=True):
        assert (old.rays, old.gates, old.rhi) == (new.rays, new.gates, new.rhi) == (last.rays, last.gates, last.rhi)
        np.testing.assert_allclose(new.azimuth, old.azimuth, atol=0.01)
        np.testing.assert_allclose(new.elevation, old.elevation, atol=0.01)
        roll = 0 if old.rhi or np.allclose(new.azimuth, last.azimuth) else int(np.argmin(new.azimuth))
        assert len(new.values) == len(names)
        for written, again, name in zip(new.values.values(), last.values.values(), names, strict=True):
            values = old.values.get(name, np.full_like(written, np.nan))
            largest = np.nanmax(np.abs(values), initial=1)
            np.testing.assert_allclose(written, values, rtol=0, atol=max(0.00501, largest / 16000))
            np.testing.assert_array_equal(again, np.roll(written, -roll, axis=0))
    only = ["--sweep", before.sweeps[0].number] if len(before.sweeps) > 1 else []
    program("convert", source, tmp_path / "record.plv", *only)
    program("convert", source, tmp_path / "one.pol", *only)
    record = dump(tmp_path / "record.plv", "--hide-no-echo").sweeps[0]
    for written, values in zip(record.values.values(), before.sweeps[0].values.values(), strict=True):
        np.testing.assert_array_equal(np.where(written == -32, np.nan, written), np.where(values == -32, np.nan, values))


def test_compressed_universal_format(tmp_path):
    program("convert", odim(tmp_path / "in.h5"), tmp_path / "plain.uf")
    program("convert", tmp_path / "in.h5", tmp_path / "packed.uf.gz")
    assert gzip.decompress((tmp_path / "packed.uf.gz").read_bytes()) == (tmp_path / "plain.uf").read_bytes()
    program("classify", tmp_path / "packed.uf.gz", "-o", tmp_path / "classes.uf.gz")
    assert "CC" in dump(tmp_path / "classes.uf.gz").sweeps[0].values
    assert "cannot be written here" in program("convert", tmp_path / "in.h5", tmp_path / "a.plv.gz", code=2)


def test_what_a_target_cannot_hold_is_said(tmp_path):
    changes = [("dataset1/quality1/what", "quantity", np.bytes_("QIND")), ("dataset1/quality1/how", "task", "a.b.c"),
               ("how", "pulsewidth", 0.8), ("how", "highprf", 1200.0)]
    raw = np.array([[0, 1, 255]], "u1")
    source = make_odim(tmp_path / "in.h5", changes, {"dataset1/data1/data": raw, "dataset1/quality1/data": raw})
    assert "no mark of no echo" in program("convert", source, tmp_path / "a.uf")
    for ending in (".nc", ".nc4"):
        program("convert", source, tmp_path / f"a{ending}")
        program("convert", tmp_path / f"a{ending}", tmp_path / "back.h5")
        with h5py.File(tmp_path / "back.h5") as file:
            how = file["how"].attrs
            assert (round(how["pulsewidth"], 6), round(how["highprf"], 3)) == (0.8, 1200)
            assert file["what"].attrs["source"] == b"WMO:02606,NOD:seang,PLC:Angelholm"
            assert how["history"].decode().count("\n") == 1
    program("convert", source, tmp_path / "again.h5")
    with h5py.File(tmp_path / "again.h5") as file:
        assert file["dataset1/quality1/how"].attrs["task"] == b"a.b.c" and "data2" not in file["dataset1"]
    make_cfradial(tmp_path / "in.nc", modes=("manual_ppi", "rhi"))
    assert "mode of some sweeps, which is lost: manual_ppi" in program("convert", tmp_path / "in.nc", tmp_path / "b.h5")
