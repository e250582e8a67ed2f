"""Readers on files that are cut, damaged or something else, and among threads and other output."""

import os
import pickle
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import pytest
import radar_files as files

import clutterclassifier as cc
from clutterclassifier import _core

xr = pytest.importorskip("xarray")

OPENERS = {"uf": cc.open_uf, "dx": cc.open_dx, "polar": cc.open_polar, "record": cc.open_record}


# --- bad files ---

@pytest.mark.parametrize("kind", files.small_files())
def test_formats_are_recognised(tmp_path, kind):
    path = files.written(tmp_path, files.small_files()[kind])
    assert cc.recognise(path) == kind
    assert OPENERS[kind](path)[0].identical(cc.read(path)[0])
    for other, opener in OPENERS.items():
        if other != kind:
            with pytest.raises(ValueError, match="scan.dat: is not a .* file, but"):
                opener(path)


@pytest.mark.parametrize("content", [b"", b"U", b"some text that is no radar file\n" * 20, bytes(5000)])
def test_other_files_are_refused(tmp_path, content):
    path = files.written(tmp_path, content)
    assert cc.recognise(path) is None
    with pytest.raises(ValueError, match="scan.dat: "):
        cc.read(path)


def test_files_that_cannot_be_opened(tmp_path):
    with pytest.raises(FileNotFoundError, match="absent.uf"):
        cc.read(tmp_path / "absent.uf")
    with pytest.raises(IsADirectoryError):
        cc.open_uf(tmp_path)


def test_paths_of_any_kind(tmp_path):
    path = tmp_path / "déjà.uf"
    path.write_bytes(files.uf_scan())
    odd = os.fsencode(tmp_path) + b"/\xff.uf"
    Path(os.fsdecode(odd)).write_bytes(files.uf_scan())
    for one in (path, str(path), os.fsencode(path), odd, os.fsdecode(odd)):
        assert len(cc.read(one)) == 1


def survives(path: Path, content: bytes) -> bool:
    """Whether a file is read; the other allowed end is a ValueError that names it."""
    path.write_bytes(content)
    try:
        sweeps = cc.read(path)
    except ValueError as error:
        assert str(path) in str(error)
        return False
    for sweep in sweeps:
        assert sweep.sizes["range"] > 0
        assert all(v.dtype in (np.float32, np.uint8) for v in sweep.values() if v.ndim == 2)
    return True


@pytest.mark.parametrize("kind", files.small_files())
def test_cut_files_never_crash(tmp_path, kind, capfd):
    content = files.small_files()[kind]
    step = 7 if len(content) < 10000 else 397
    read = [survives(tmp_path / "cut", content[:end]) for end in range(0, len(content) - 1, step)]
    assert not read[0] and not all(read)
    assert survives(tmp_path / "cut", content)
    assert capfd.readouterr() == ("", "")


def test_a_file_cut_short_says_so(tmp_path):
    content = files.small_files()["uf"]
    assert "cut short" not in read_from(tmp_path, content).attrs.get("comment", "")
    assert "cut short" in read_from(tmp_path, content[:-9]).attrs["comment"]


def read_from(folder: Path, content: bytes):
    (folder / "scan").write_bytes(content)
    return cc.read(folder / "scan")[0]


@pytest.mark.parametrize("kind", files.small_files())
def test_damaged_files_never_crash(tmp_path, kind):
    content = np.frombuffer(files.small_files()[kind], np.uint8)
    random = np.random.default_rng(7)
    for _ in range(150):
        damaged = content.copy()
        places = random.integers(0, min(len(content), 2000), random.integers(1, 12))
        damaged[places] = random.choice([0, 1, 127, 128, 255, *range(256)], len(places))
        survives(tmp_path / "damaged", damaged.tobytes())


# --- in a running system ---

def test_threads_read_what_one_reads(tmp_path):
    paths = []
    for number, (kind, content) in enumerate(list(files.small_files().items()) * 6):
        paths.append(tmp_path / f"{number}.{kind}")
        paths[-1].write_bytes(content)
    serial = [cc.read(path)[0] for path in paths]
    with ThreadPoolExecutor(8) as pool:
        together = list(pool.map(lambda path: cc.read(path)[0], paths))
    assert all(one.identical(other) for one, other in zip(serial, together))


@pytest.mark.parametrize("what", ["read", "recognise", "synthetic"])
def test_others_run_meanwhile(tmp_path, what):
    """The interpreter is free during a call: without that the counter cannot move in it."""
    path = os.fsencode(files.written(tmp_path, files.dx_scan(files.dx_codes())))
    call = {"read": lambda: _core.read_scan(path, 0), "recognise": lambda: _core.recognise(path),
            "synthetic": lambda: _core.synthetic_scan(1, 36, 100)}[what]
    counter, moved, done = [0], [False], threading.Event()

    def work():
        for _ in range(5000):
            before = counter[0]
            call()
            moved[0] = moved[0] or counter[0] != before
            if moved[0]:
                break
        done.set()

    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)  # threads change only where one gives way
    try:
        thread = threading.Thread(target=work)
        thread.start()
        while not done.is_set():
            counter[0] += 1
            time.sleep(0)
        thread.join()
    finally:
        sys.setswitchinterval(interval)
    assert moved[0]


def test_reading_prints_nothing_and_output_goes_on(tmp_path):
    """The library's messages stay away, those of the host do not."""
    path = files.written(tmp_path, files.dx_scan(files.dx_codes())[:9000])
    code = ("import sys, clutterclassifier as cc\nprint('before')\n"
            "try: cc.read(sys.argv[1])\nexcept ValueError: pass\nprint('after')")
    done = subprocess.run([sys.executable, "-c", code, str(path)], capture_output=True, text=True,
                          check=True)
    assert (done.stdout, done.stderr) == ("before\nafter\n", "")


def test_sweeps_survive_pickle_and_netcdf(tmp_path):
    for kind, content in files.small_files().items():
        sweep = files.read_one(tmp_path, content)
        assert pickle.loads(pickle.dumps(sweep)).identical(sweep)
        sweep.to_netcdf(tmp_path / f"{kind}.nc")
        with xr.open_dataset(tmp_path / f"{kind}.nc") as back:
            for name in sweep.data_vars:
                np.testing.assert_array_equal(back[name], sweep[name])
            assert back.DBZH.attrs.get("_Undetect") == sweep.DBZH.attrs.get("_Undetect")
