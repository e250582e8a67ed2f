"""The xarray engines: by class, as where the package is only on the path, and by name."""

import pickle
import re
from pathlib import Path

import numpy as np
import pytest
import radar_files as files

import clutterclassifier as cc

xr = pytest.importorskip("xarray")
pytest.importorskip("dask")

from clutterclassifier import backends  # noqa: E402 - needs xarray

ENGINES = {"uf": backends.UniversalFormatBackend, "dx": backends.GermanDxBackend,
           "polar": backends.PolarDataBackend, "record": backends.FieldRecordBackend}
NAMES = {"": backends.AnyFormatBackend, **{f"-{kind}": engine for kind, engine in ENGINES.items()}}


@pytest.fixture
def paths(tmp_path):
    """A file of each format; none has an ending that names its format."""
    for kind, content in files.small_files().items():
        (tmp_path / kind).write_bytes(content)
    return {kind: tmp_path / kind for kind in ENGINES}


@pytest.fixture
def volume(tmp_path):
    path = tmp_path / "volume.uf"
    path.write_bytes(files.uf_scan(8, 6, sweep=1) + files.uf_scan(6, 9, sweep=2)
                     + files.uf_scan(5, 4, sweep=3))
    return path


@pytest.fixture
def installed(monkeypatch):
    """As if pip had installed the package: its engines are in xarray's list."""
    from importlib.metadata import EntryPoint

    from xarray.backends import plugins

    points = [EntryPoint(f"clutterclassifier{end}", f"{engine.__module__}:{engine.__name__}",
                         "xarray.backends") for end, engine in NAMES.items()]
    monkeypatch.setattr(plugins, "list_engines", lambda: plugins.build_engines(points))


@pytest.mark.parametrize("kind", ENGINES)
def test_engines_give_what_the_readers_give(paths, kind):
    [expected] = cc.read(paths[kind])
    for engine in (backends.AnyFormatBackend, ENGINES[kind]):
        assert xr.open_dataset(paths[kind], engine=engine).identical(expected)


def test_engines_of_one_format_refuse_others(paths):
    for kind, engine in ENGINES.items():
        for other, path in paths.items():
            if other != kind:
                with pytest.raises(ValueError, match=f"{other}: is not a .* file, but"):
                    xr.open_dataset(path, engine=engine)


@pytest.mark.parametrize("kind", ENGINES)
def test_xarray_finds_the_engine(paths, installed, kind):
    assert xr.open_dataset(paths[kind]).identical(cc.read(paths[kind])[0])


@pytest.mark.parametrize("end", NAMES)
def test_engines_by_name(paths, installed, end):
    path = paths[end[1:] or "uf"]
    assert xr.open_dataset(path, engine=f"clutterclassifier{end}").sizes["range"] > 0


def test_names_are_those_that_are_installed():
    """pyproject.toml may declare no engine that is not there."""
    declared = re.findall(r'^(clutterclassifier[\w-]*) = "clutterclassifier.backends:(\w+)"',
                          (Path(__file__).parents[3] / "python/pyproject.toml").read_text(), re.M)
    assert ("clutterclassifier", "AnyFormatBackend") in declared
    for name, engine in declared:
        known = NAMES | {"-nexrad": backends.NexradBackend, "-odim": backends.OdimBackend,
                         "-cfradial": backends.CfRadialBackend}
        assert known[name.removeprefix("clutterclassifier")].__name__ == engine


def test_guess_is_careful(paths, tmp_path, volume):
    guess = backends.AnyFormatBackend().guess_can_open
    assert all(guess(path) and guess(str(path)) for path in (*paths.values(), volume))
    cc.synthetic_scan(1, 4, 5).to_netcdf(tmp_path / "scan.nc")
    (tmp_path / "empty").write_bytes(b"")
    (tmp_path / "letters").write_bytes(b"\x00\x00\x10\x00UF" + bytes(200))
    (tmp_path / "text").write_text("DX is no file of that kind")
    for other in ("scan.nc", "empty", "letters", "text", "absent", "."):
        assert guess(tmp_path / other) is False, other
    for other in (None, 7, b"CDF\x01", object(), "https://host/scan.uf", "a\0b", open(volume, "rb")):
        assert guess(other) is False, other
    assert not ENGINES["dx"]().guess_can_open(volume)


def test_groups(volume):
    shapes = {None: (8, 6), "sweep_0": (8, 6), 0: (8, 6), "sweep_1": (6, 9), "/sweep_2": (5, 4),
              np.int64(2): (5, 4)}
    for group, shape in shapes.items():
        sweep = xr.open_dataset(volume, engine=backends.AnyFormatBackend, group=group)
        assert sweep.DBZH.shape == shape
    with pytest.raises(ValueError, match="volume.uf: no sweep 3; there are 3"):
        xr.open_dataset(volume, engine=backends.AnyFormatBackend, group="sweep_3")


@pytest.mark.parametrize("group", ["", "sweep", "sweep_", "sweep_x", "sweep_-1", "scan_1", -1, 1.5, True])
def test_groups_that_are_none(volume, group):
    with pytest.raises(ValueError, match="group must be like 'sweep_0'"):
        xr.open_dataset(volume, engine=backends.AnyFormatBackend, group=group)


def test_options_are_handed_on(volume, tmp_path):
    engine = backends.AnyFormatBackend
    sweep = xr.open_dataset(volume, engine=engine, drop_variables=["VRADH", "absent"],
                            names={"DZ": "DBTH"})
    assert "DBTH" in sweep and "VRADH" not in sweep
    assert "DBZH" not in xr.open_dataset(volume, engine=engine, drop_variables="DBZH")
    assert "DBZH" in xr.open_dataset(volume, engine=engine, decode_cf=False)
    assert "DBZH" in xr.open_dataset(volume, engine=engine, decode_times=False, mask_and_scale=False)
    (tmp_path / "packed").write_bytes(files.polar_scan(2211, np.zeros((4, 6, 10))))
    with pytest.raises(ValueError, match="layout="):
        xr.open_dataset(tmp_path / "packed", engine=engine)
    assert xr.open_dataset(tmp_path / "packed", engine=engine, layout=260).sizes["azimuth"] == 4


def test_chunks_and_pickle(volume):
    """What a cluster does: engines, whole sweeps and chunked ones go from process to process."""
    [sweep, *_] = cc.read(volume)
    chunked = xr.open_dataset(volume, engine=backends.AnyFormatBackend, chunks={"azimuth": 3})
    assert chunked.DBZH.chunks == ((3, 3, 2), (6,))
    assert pickle.loads(pickle.dumps(chunked)).compute().identical(sweep)
    for engine in NAMES.values():
        assert isinstance(pickle.loads(pickle.dumps(engine())), engine)


def test_many_files_are_put_together(tmp_path):
    for number in range(3):
        (tmp_path / f"{number}.uf").write_bytes(files.uf_scan(date=(2014, 8, 10, 18, number, 0)))
    together = xr.open_mfdataset(sorted(tmp_path.glob("*.uf")), engine=backends.AnyFormatBackend,
                                 combine="nested", concat_dim="volume", parallel=True)
    assert together.DBZH.dims == ("volume", "azimuth", "range")
    assert [str(time)[14:16] for time in together.time.values[:, 0]] == ["00", "01", "02"]
    np.testing.assert_array_equal(together.DBZH[1], cc.read(tmp_path / "1.uf")[0].DBZH)


def test_volume_as_groups(volume):
    groups = backends.AnyFormatBackend().open_groups_as_dict(volume, drop_variables="VRADH")
    assert list(groups) == ["/", "/sweep_0", "/sweep_1", "/sweep_2"]
    root = groups["/"]
    assert root.sweep_group_name.values.tolist() == ["sweep_0", "sweep_1", "sweep_2"]
    assert root.sweep_fixed_angle.values.tolist() == [1.5] * 3
    assert set(root.coords) == {"latitude", "longitude", "altitude"}
    assert float(root.latitude) == float(groups["/sweep_1"].latitude)
    assert root.time_coverage_start == np.datetime64("2014-08-10T18:20:07")
    assert root.attrs["site_name"] == "site" and "raw_sweep_number" not in root.attrs
    assert groups["/sweep_1"].DBZH.shape == (6, 9) and "VRADH" not in groups["/sweep_1"]


def test_datatree_where_xarray_has_one(volume, monkeypatch):
    class Tree(dict):
        from_dict = classmethod(lambda cls, groups: cls(groups))

    monkeypatch.setattr(xr, "DataTree", Tree, raising=False)
    tree = backends.AnyFormatBackend().open_datatree(volume)
    assert isinstance(tree, Tree) and "/sweep_2" in tree
    monkeypatch.delattr(xr, "DataTree")
    with pytest.raises(NotImplementedError, match="clutterclassifier.read"):
        backends.AnyFormatBackend().open_datatree(volume)


@pytest.mark.parametrize("ending, engine", [(".h5", backends.OdimBackend), (".nc", backends.CfRadialBackend),
                                            (".nc4", backends.CfRadialBackend)])
def test_formats_within_containers_are_asked_for_by_name(ending, engine, tmp_path):
    [path] = cc.write(cc.synthetic_scan(5, nrays=36, ngates=40), tmp_path / f"scan{ending}")
    sweep = xr.open_dataset(path, engine=engine)
    assert sweep.DBZH.shape == (36, 40)
    other = backends.CfRadialBackend if engine is backends.OdimBackend else backends.OdimBackend
    with pytest.raises(ValueError, match=f"is not {other.source}, but {engine.source}"):
        xr.open_dataset(path, engine=other)
    assert not engine().guess_can_open(path)
