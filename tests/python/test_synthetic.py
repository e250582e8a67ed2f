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


def test_shapes_and_geometry(arrays):
    for name in FIELDS:
        assert arrays[name].shape == (90, 200) and arrays[name].dtype == np.float64
    np.testing.assert_allclose(arrays["azimuth"], np.arange(90) * 4 + 2)
    np.testing.assert_array_equal(arrays["range"], np.arange(200) * 150.0)


def test_values_are_those_of_a_radar(arrays):
    assert -1 <= arrays["zdr"][arrays["truth"] == cc.PRECIPITATION].mean() <= 3
    assert np.all((arrays["rhohv"] >= 0) & (arrays["rhohv"] <= 1))
    assert np.all(np.abs(arrays["vrad"]) <= arrays["nyquist_velocity"])
    assert np.all((arrays["clutter_likelihood"] >= 0) & (arrays["clutter_likelihood"] <= 1))


def test_truth_is_noise_where_the_signal_is_weak(arrays):
    """Far below the threshold only noise is true, and far above none."""
    loss = 20 * np.log10(np.maximum(arrays["range"], 150) / 1000)
    snr = arrays["dbzh"] - loss + arrays["radar_constant"]
    assert np.all(arrays["truth"][snr < arrays["min_snr"] - 6] == cc.NOISE)
    assert not np.any(arrays["truth"][snr > arrays["min_snr"] + 6] == cc.NOISE)
    assert set(np.unique(arrays["truth"])) == {cc.PRECIPITATION, cc.NOISE, cc.GROUND_CLUTTER}


def test_classification_finds_the_truth(arrays):
    """All inputs together tell clear gates right: nine in ten."""
    classes = cc.classify(**{name: arrays[name] for name in FIELDS if name != "wrad"},
                          range=arrays["range"], radar_constant=arrays["radar_constant"],
                          min_snr=arrays["min_snr"])
    assert (classes == arrays["truth"]).mean() > 0.9


@pytest.mark.parametrize("wrong", [dict(nrays=0), dict(ngates=0), dict(seed=-1), dict(seed=2**64),
                                   dict(nrays=2**20, ngates=2**20)])
def test_impossible_scans_are_refused(wrong):
    with pytest.raises(ValueError, match=str(list(wrong)[-1])):
        cc.synthetic_arrays(**wrong)


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


def test_dataset_follows_the_model(sweep):
    assert sweep.DBZH.attrs == {"standard_name": "radar_equivalent_reflectivity_factor_h",
                                "long_name": "Equivalent reflectivity factor H", "units": "dBZ"}
    assert sweep.TRUTH.attrs["flag_meanings"] == "precipitation noise ground_clutter"
    assert sweep.TRUTH.attrs["flag_values"].tolist() == [0, 3, 5]
    assert sweep.range.attrs["meters_between_gates"] == 150
    assert sweep.range.attrs["meters_to_center_of_first_gate"] == sweep.range[0]
    assert sweep.time.dims == sweep.elevation.dims == ("azimuth",)
    assert str(sweep.sweep_mode.values) == "azimuth_surveillance"
    assert np.all(sweep.elevation == sweep.sweep_fixed_angle)


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
        print(cc.synthetic_arrays(1, 4, 5)["truth"].shape)"""
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert result.stdout.split() == ["(4,", "5)"]
