"""The synthetic scan, as arrays and as a sweep Dataset."""

import pickle
import subprocess
import sys

import numpy as np
import pytest

import clutterclassifier as cc

FIELDS = {"dbzh": "DBZH", "zdr": "ZDR", "phidp": "PHIDP", "rhohv": "RHOHV", "vrad": "VRADH",
          "wrad": "WRADH", "ldr": "LDR", "clutter_likelihood": "CMAP"}


@pytest.fixture(scope="module")
def arrays():
    return cc.synthetic_arrays(5, 90, 200)


@pytest.fixture(scope="module")
def sweep():
    pytest.importorskip("xarray")
    return cc.synthetic_scan(5, 90, 200)


def test_one_seed_gives_one_scan(arrays):
    again, other = cc.synthetic_arrays(5, 90, 200), cc.synthetic_arrays(6, 90, 200)
    for name in (*FIELDS, "truth"):
        np.testing.assert_array_equal(again[name], arrays[name])
        assert not np.array_equal(other[name], arrays[name])


def test_classification_finds_the_truth(arrays):
    """All inputs together classify nine of ten clear gates correctly."""
    classes = cc.classify(**{name: arrays[name] for name in FIELDS if name != "wrad"},
                          range=arrays["range"], radar_constant=arrays["radar_constant"],
                          min_snr=arrays["min_snr"])
    assert (classes == arrays["truth"]).mean() > 0.9


def test_defaults_are_those_of_the_documentation(arrays, sweep):
    fields = {name: arrays[name] for name in ("dbzh", "zdr", "phidp", "rhohv")}
    constant = {"range": arrays["range"], "radar_constant": arrays["radar_constant"]}
    np.testing.assert_array_equal(cc.classify(**fields, **constant),
                                  cc.classify(**fields, **constant, min_snr=26))
    rain = {name: arrays[name] for name in ("dbzh", "zdr", "range")}
    np.testing.assert_array_equal(cc.hybrid_rain_rate(**rain), cc.hybrid_rain_rate(**rain, elevation=0))
    assert np.all(sweep.time == np.datetime64("2000-01-01"))


def test_largest_seed_and_smallest_scan():
    assert cc.synthetic_arrays(2**64 - 1, 1, 1)["dbzh"].shape == (1, 1)
    assert cc.synthetic_scan(np.int64(3), 1, 1).sizes["azimuth"] == 1


def test_dataset_holds_the_arrays(sweep, arrays):
    for argument, name in FIELDS.items():
        np.testing.assert_array_equal(sweep[name], arrays[argument])
        assert sweep[name].dims == ("azimuth", "range")
    np.testing.assert_array_equal(sweep.TRUTH, arrays["truth"])
    assert sweep.attrs["radar_constant"] == arrays["radar_constant"]
    assert sweep.attrs["min_snr"] == arrays["min_snr"]


def test_dataset_survives_pickle_and_netcdf(sweep, tmp_path):
    import xarray as xr

    assert pickle.loads(pickle.dumps(sweep)).identical(sweep)
    sweep.to_netcdf(tmp_path / "scan.nc")
    with xr.open_dataset(tmp_path / "scan.nc", mask_and_scale=False) as back:
        np.testing.assert_array_equal(back.TRUTH, sweep.TRUTH)
        np.testing.assert_array_equal(back.LDR, sweep.LDR)
        np.testing.assert_array_equal(back.time, sweep.time)


def test_arrays_need_numpy_alone():
    """A fresh interpreter in which xarray, dask and matplotlib are not there."""
    code = """if True:
        import sys
        class Nowhere:
            def find_spec(self, name, path=None, target=None):
                if name in ("xarray", "dask", "matplotlib"):
                    raise ModuleNotFoundError(name, name=name)
        sys.meta_path.insert(0, Nowhere())
        import clutterclassifier as cc
        print(cc.synthetic_arrays(1, 4, 5)["truth"].shape)
        print(cc.echo.EchoClass is cc.EchoClass, cc.fields.quantity_of("zdr").name, cc.readers.read is cc.read)"""
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert result.stdout.split() == ["(4,", "5)", "True", "ZDR", "True"]
