"""Steps of the chain on sweeps: equal to the entry point, lazy where the input is, and harmless."""

from __future__ import annotations

import pickle
from collections.abc import Callable

import clutterclassifier as cc
import dask
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import sweeps
from conftest import CONSTANT, NAMES, SPACING, make_sweep
from entry_point import entry_point, scan_fields
from sweep_classes import MIN_SNR, chosen, expected

pytestmark = pytest.mark.usefixtures("gate_by_gate")

SUBSETS = range(1, 128)


def scans_in_time(count: int = 3) -> xr.Dataset:
    one = [make_sweep(seed=seed).drop_vars("time") for seed in range(1, count + 1)]
    fields = {name: xr.concat([ds[name] for ds in one], dim="scan") for name in NAMES.values()}
    return one[0].drop_vars(list(fields)).assign(fields)


@pytest.mark.parametrize("chunks", [None, {}, {"azimuth": 7}, {"azimuth": 5, "range": 11}])
def test_every_subset_of_inputs_equals_the_entry_point(made_sweep: xr.Dataset, chunks: dict | None) -> None:
    ds = made_sweep if chunks is None else made_sweep.chunk(chunks)
    results = [sweeps.classify(ds, inputs=mask, fields=chosen(mask), min_snr=MIN_SNR).CLASS
               for mask in SUBSETS]
    if chunks is not None:
        assert all(isinstance(result.data, dask.array.Array) for result in results)
        results = dask.compute(*results, scheduler="synchronous")
    for mask, result in zip(SUBSETS, results):
        np.testing.assert_array_equal(result.values, expected(mask), err_msg=f"mask {mask}")


def test_the_subsets_do_not_all_say_the_same() -> None:
    assert len({expected(mask).tobytes() for mask in SUBSETS}) > 60


@pytest.mark.parametrize("chunks", [None, {"scan": 1}, {"scan": 2, "azimuth": 10}])
def test_leading_dimensions_are_scans_of_their_own(chunks: dict | None) -> None:
    ds = scans_in_time()
    ds = ds if chunks is None else ds.chunk(chunks)
    for order in (("scan", "azimuth", "range"), ("range", "scan", "azimuth")):
        result = sweeps.classify(ds.transpose(*order, ...), min_snr=MIN_SNR).CLASS
        assert result.dims == order
        for i, seed in enumerate((1, 2, 3)):
            one = result.isel(scan=i).transpose("azimuth", "range")
            np.testing.assert_array_equal(one, expected(255, seed))


def test_one_clutter_map_serves_all_scans() -> None:
    ds = scans_in_time()
    ds["CMAP"] = ds.CMAP.isel(scan=0, drop=True)
    for data in (ds, ds.chunk({"scan": 1})):
        result = sweeps.classify(data, min_snr=MIN_SNR).CLASS
        fields = scan_fields(seed=2) | {"clutter_likelihood": scan_fields(seed=1)["clutter_likelihood"]}
        np.testing.assert_array_equal(result.isel(scan=1),
                                      entry_point(fields, SPACING, CONSTANT, MIN_SNR, 255))


def test_an_rhi_keeps_its_dimensions() -> None:
    ds = make_sweep(rays="elevation")
    result = sweeps.classify(ds, min_snr=MIN_SNR, closed=True).CLASS
    assert result.dims == ("elevation", "range")
    np.testing.assert_array_equal(result, expected(255))


def test_rays_at_the_ends_are_neighbours_only_in_a_circle(made_sweep: xr.Dataset) -> None:
    """The ends are judged as in a scan with rays without echo between them."""
    result = sweeps.classify(made_sweep, min_snr=MIN_SNR, closed=False).CLASS.values
    fields = {name: np.vstack([values, np.full((1, 60), -999.0 if name == "dbzh" else np.nan)])
              for name, values in scan_fields().items()}
    np.testing.assert_array_equal(result, entry_point(fields, SPACING, CONSTANT, MIN_SNR, 255)[:-1])
    closed = expected(255)
    np.testing.assert_array_equal(result[1:-1], closed[1:-1])
    assert (result != closed).any()


def test_not_measured_and_no_echo_stay_apart(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.copy(deep=True)
    ds.DBZH[3, :10] = np.nan
    ds.DBZH[4, :10] = -32.0
    ds.DBZH.attrs["_Undetect"] = -32.0
    result = sweeps.classify(ds, min_snr=MIN_SNR).CLASS
    assert (result[3, :10] == cc.MISSING).all()
    assert (result[4, :10] == cc.NOISE).all()
    assert result.encoding["_FillValue"] == cc.MISSING
    fields = scan_fields()
    fields["dbzh"][3:5, :10] = -999
    rest = np.ones(result.shape, bool)
    rest[3, :10] = False
    np.testing.assert_array_equal(result.values[rest],
                                  entry_point(fields, SPACING, CONSTANT, MIN_SNR, 255)[rest])
    fields["dbzh"][3, :10] = np.nan
    fields["dbzh"][4, :10] = -32
    np.testing.assert_array_equal(sweeps.classify(ds, min_snr=MIN_SNR, missing="keep").CLASS,
                                  entry_point(fields, SPACING, CONSTANT, MIN_SNR, 255))
    quiet = sweeps.classify(ds, min_snr=MIN_SNR, missing="no_echo").CLASS
    assert (quiet[3:5, :10] == cc.NOISE).all()


def test_no_echo_in_the_units_of_a_packed_file(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.copy(deep=True)
    ds.DBZH[4, :10] = -32.0
    ds.DBZH.attrs["_Undetect"] = 0
    ds.DBZH.encoding = {"scale_factor": 0.5, "add_offset": -32.0}
    assert (sweeps.classify(ds, min_snr=MIN_SNR).CLASS[4, :10] == cc.NOISE).all()


def test_result_has_attributes_and_the_input_stays(made_sweep: xr.Dataset) -> None:
    before = made_sweep.copy(deep=True)
    result = sweeps.classify(made_sweep, min_snr=MIN_SNR)
    xr.testing.assert_identical(made_sweep, before)
    attrs = result.CLASS.attrs
    assert attrs["flag_meanings"].split() == ["precipitation", "noise", "ground_clutter"]
    assert attrs["flag_values"].tolist() == [0, 3, 5] and attrs["flag_values"].dtype == np.uint8
    assert "radar_constant=40.0 (dataset), min_snr=10.0" in attrs["history"]
    assert result.attrs["history"].splitlines()[0] == "made"
    assert set(result.CLASS.coords) == set(made_sweep.coords)


@pytest.mark.parametrize("step", [
    getattr(sweeps, name) for name in sweeps.__all__ if name != "explain"])
def test_coordinates_keep_their_attributes(made_sweep: xr.Dataset, step: Callable[..., xr.Dataset]) -> None:
    made_sweep = sweeps.classify(made_sweep)
    for name in made_sweep.coords:
        made_sweep[name].attrs["note"] = name
    result = step(made_sweep, classes=made_sweep.CLASS) if step is sweeps.clean else step(made_sweep)
    assert {name: result[name].attrs.get("note") for name in made_sweep.coords} == {
        name: name for name in made_sweep.coords}


@pytest.mark.parametrize("known", [True, False])
def test_infinite_ratios_make_everything_echo_or_noise(made_sweep: xr.Dataset, known: bool) -> None:
    if not known:
        del made_sweep.attrs["radar_constant"]
    for ratio, wanted in ((np.inf, True), (-np.inf, False)):
        for step in (sweeps.classify, sweeps.process):
            noise = step(made_sweep, min_snr=ratio).CLASS == cc.NOISE
            assert bool((noise == wanted).all())


def test_classes_survive_a_file(made_sweep: xr.Dataset, tmp_path) -> None:
    ds = made_sweep.copy(deep=True)
    ds.DBZH[0, 0] = np.nan
    result = sweeps.classify(ds, min_snr=MIN_SNR)
    result.to_netcdf(tmp_path / "sweep.nc")
    with xr.open_dataset(tmp_path / "sweep.nc") as back:
        assert np.isnan(back.CLASS.values[0, 0])
        again = sweeps.clean(back).CLASS
        rain = sweeps.clean(back)
        np.testing.assert_array_equal(np.isnan(rain.ZDR), result.CLASS != cc.PRECIPITATION)
        assert again.attrs["flag_meanings"] == result.CLASS.attrs["flag_meanings"]


@pytest.mark.parametrize("names", [
    {"DBZH": "reflectivity", "ZDR": "differential_reflectivity", "PHIDP": "differential_phase",
     "RHOHV": "cross_correlation_ratio", "VRADH": "velocity", "LDR": "linear_depolarization_ratio"},
    {"DBZH": "DBZ", "VRADH": "VEL", "PHIDP": "UPHIDP", "ZDR": "ZD", "RHOHV": "RH", "LDR": "LD"},
])
def test_names_of_other_conventions(made_sweep: xr.Dataset, names: dict[str, str]) -> None:
    result = sweeps.classify(made_sweep.rename(names), min_snr=MIN_SNR).CLASS
    np.testing.assert_array_equal(result, expected(255))


def test_a_dict_overrides_the_names(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.rename({"DBZH": "mine"}).assign(DBZH=made_sweep.ZDR)
    result = sweeps.classify(ds, fields={"DBZH": "mine", "ldr": None}, min_snr=MIN_SNR).CLASS
    np.testing.assert_array_equal(result, expected(255 & ~32))


def test_the_spectrum_width_takes_part_on_request_only(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.assign(WRADH=made_sweep.VRADH * 0 + 9.0)
    np.testing.assert_array_equal(sweeps.classify(ds, min_snr=MIN_SNR).CLASS, expected(255))
    with_width = sweeps.classify(ds, min_snr=MIN_SNR, inputs=511).CLASS
    fields = scan_fields() | {"wrad": ds.WRADH.values}
    np.testing.assert_array_equal(with_width, cc.classify(
        **fields, range=SPACING, radar_constant=CONSTANT, min_snr=MIN_SNR))
    assert (with_width != expected(255)).any()


def test_velocity_from_after_the_filter_is_left_out(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.rename({"DBZH": "DBTH"})
    filtered = ds.assign(DBZH=ds.DBTH.where(np.arange(24 * 60).reshape(24, 60) % 50 > 0, -30.0))
    nearly = ds.assign(DBZH=ds.DBTH.where(np.arange(24 * 60).reshape(24, 60) % 500 > 0, -30.0))
    for data, mask, said in ((filtered, 255 & ~16, False), (nearly, 255, True),
                             (filtered.chunk(), 255 & ~16, True)):
        result = sweeps.classify(data, min_snr=MIN_SNR).CLASS
        np.testing.assert_array_equal(result, expected(mask))
        assert ("VRAD" in result.attrs["history"]) == said
    for wish in ({"inputs": 255}, {"fields": {"vrad": "VRADH"}}):
        result = sweeps.classify(filtered, min_snr=MIN_SNR, **wish).CLASS
        np.testing.assert_array_equal(result, expected(255))


def test_the_constant_is_estimated_where_none_is_known() -> None:
    random = np.random.default_rng(3)
    fields = scan_fields(60, 200)
    loss = 20 * np.log10(np.maximum(np.arange(200), 0.5) * SPACING / 1000)
    near = np.arange(200) < 60
    ds = make_sweep(60, 200)
    ds["DBZH"] = ds.DBZH.dims, np.where(near, fields["dbzh"], loss - 35 + random.normal(0, 1, (60, 200)))
    ds["RHOHV"] = ds.RHOHV.dims, np.where(near, fields["rhohv"], random.random((60, 200)))
    del ds.attrs["radar_constant"]
    eager, lazy = sweeps.classify(ds), sweeps.classify(ds.chunk({"azimuth": 20}))
    estimate = cc.estimate_radar_constant(ds.DBZH, rhohv=ds.RHOHV, range=SPACING)
    assert estimate.radar_constant == pytest.approx(35, abs=1) and estimate.min_snr == 10
    assert f"radar_constant={estimate.radar_constant:.2f}" in eager.CLASS.attrs["history"]
    assert "of each scan" in lazy.CLASS.attrs["history"]
    given = scan_fields(60, 200) | {"dbzh": ds.DBZH.values, "rhohv": ds.RHOHV.values}
    expect = entry_point(given, SPACING, estimate.radar_constant, 10.0, 255)
    np.testing.assert_array_equal(eager.CLASS, expect)
    np.testing.assert_array_equal(lazy.CLASS, expect)


def test_which_lowest_ratio_goes_with_which_constant(made_sweep: xr.Dataset) -> None:
    def ratio(**keywords: float) -> str:
        history = sweeps.classify(made_sweep, **keywords).CLASS.attrs["history"]
        return history.split("min_snr=")[1].split(",")[0]

    assert ratio() == "10.0"
    assert ratio(radar_constant=40.0) == "26.0"
    assert ratio(radar_constant=40.0, min_snr=3.0) == "3.0"
    made_sweep.attrs["min_snr"] = 7.0
    assert ratio() == ratio(radar_constant=40.0) == "7.0"


def test_the_other_numbering(made_sweep: xr.Dataset) -> None:
    ds = made_sweep.copy(deep=True)
    ds.DBZH[0, :5] = np.nan
    own, other = (sweeps.classify(ds, min_snr=MIN_SNR, codes=codes).CLASS for codes in ("library", "pyrad"))
    for code, number in ((3, 1), (5, 2), (0, 3), (255, 0)):
        np.testing.assert_array_equal(other == number, own == code)
        assert (own == code).any()
    assert other.attrs["flag_meanings"] == "NOISE CLT PREC" and other.encoding["_FillValue"] == 0
    rain = sweeps.clean(ds.assign(CLASS=other))
    np.testing.assert_array_equal(rain.ZDR.isnull(), own != cc.PRECIPITATION)


def test_clean_blanks_fields_of_the_echo_and_not_those_of_the_signal(made_sweep: xr.Dataset) -> None:
    made_sweep["COUNT"] = made_sweep.DBZH.dims, np.ones((24, 60), np.int16)
    classes = sweeps.classify(made_sweep, min_snr=MIN_SNR).CLASS
    for data in (made_sweep, made_sweep.chunk({"azimuth": 6})):
        rain = sweeps.clean(data, min_snr=MIN_SNR)
        for name in NAMES.values():
            kept = (classes == 0) | (name == "CMAP")
            np.testing.assert_array_equal(rain[name], made_sweep[name].where(kept))
            assert rain[name].attrs["raw_name"] == made_sweep[name].attrs["raw_name"]
        assert rain.COUNT.dtype == np.int16
    both = sweeps.clean(made_sweep, keep=["precipitation", cc.NOISE], classes=classes)
    np.testing.assert_array_equal(both.DBZH.isnull(), classes == cc.GROUND_CLUTTER)


def test_wrong_arguments_are_named(made_sweep: xr.Dataset) -> None:
    for wrong, words in (({"fields": {"dbzh": "none such"}}, "none such"),
                         ({"fields": {"speed": "DBZH"}}, "speed"), ({"codes": "mine"}, "codes"),
                         ({"missing": "zero"}, "missing"),
                         ({"radar_constant": np.nan}, "radar_constant"), ({"inputs": "wrad"}, "wrad")):
        with pytest.raises(ValueError, match=words):
            sweeps.classify(made_sweep, **wrong)
    with pytest.raises(ValueError, match="no reflectivity"):
        sweeps.classify(made_sweep.drop_vars("DBZH"))
    with pytest.raises(ValueError, match="range"):
        sweeps.classify(made_sweep.drop_vars("range"))
    with pytest.raises(ValueError, match="azimuth"):
        sweeps.classify(made_sweep.rename({"azimuth": "a"}).expand_dims("b"))
    for step in (sweeps.classify, sweeps.clean, sweeps.process, sweeps.signal_to_noise, sweeps.attenuation):
        for gates, words in (([], "range is empty"), ([0, 1, 20, 50], "range must rise evenly")):
            with pytest.raises(ValueError, match=words):
                step(made_sweep.isel(range=gates))
    for step in (sweeps.texture, sweeps.smooth, sweeps.rain_rate):
        for name in ("azimuth", "range"):
            with pytest.raises(ValueError, match=f"DBZH is empty along {name}"):
                step(made_sweep.isel({name: []}))
    for hail in ("hail", [0.7], None):
        with pytest.raises(ValueError, match="keep: no such class"):
            sweeps.clean(made_sweep, keep=hail)
    for field, error, words in ((0, TypeError, "classes"), (made_sweep.DBZH[0], ValueError, "CLASS .*dimens"),
                                (made_sweep.DBZH.astype(str), TypeError, "CLASS must hold codes")):
        with pytest.raises(error, match=words):
            sweeps.clean(made_sweep, classes=field)
    made_sweep.DBZH.attrs["_Undetect"] = "none"
    with pytest.raises(TypeError, match="_Undetect of DBZH"):
        sweeps.classify(made_sweep)


def test_what_reads_like_an_angle_of_the_sweep_does_no_harm(made_sweep: xr.Dataset) -> None:
    """As in a volume, where it has one value a sweep."""
    several = made_sweep.assign(sweep_fixed_angle=("sweep", [1.5, 3.0]))
    result, known = sweeps.process(several), sweeps.process(made_sweep)
    xr.testing.assert_equal(result.drop_vars("sweep_fixed_angle"), known.drop_vars("sweep_fixed_angle"))


def test_chunks_of_unknown_sizes_are_named(made_sweep: xr.Dataset) -> None:
    dask_array = pytest.importorskip("dask.array")
    some = dask_array.from_array(made_sweep.DBZH.values)[dask_array.from_array(np.arange(24) > 2)]
    ds = xr.Dataset({"DBZH": (("azimuth", "range"), some)}, {"range": made_sweep.range})
    for step in (sweeps.classify, sweeps.process, sweeps.texture, sweeps.rain_rate):
        with pytest.raises(ValueError, match="DBZH has chunks of unknown sizes"):
            step(ds)


def test_lazy_results_travel_to_other_processes(made_sweep: xr.Dataset) -> None:
    lazy = sweeps.classify(made_sweep.chunk({"azimuth": 8}), min_snr=MIN_SNR)
    back = pickle.loads(pickle.dumps(lazy))
    np.testing.assert_array_equal(back.CLASS, expected(255))


def test_the_history_says_what_differs_from_the_defaults(made_sweep: xr.Dataset) -> None:
    def added(step: object, **keywords: object) -> str:
        return step(classified, **keywords).attrs["history"].splitlines()[-1]

    classified = sweeps.classify(made_sweep)
    for name in ("missing", "closed", "codes", "membership", "fields", "gates_in_front"):
        assert f"{name}=" not in added(sweeps.classify)
    history = added(sweeps.classify, missing="no_echo", closed=False, codes="pyrad",
                 membership=cc.membership_directory(), fields={"ldr": None})
    for words in ("missing=no_echo", "closed=False", "codes=pyrad", "fields=ldr:None",
                  f"membership={cc.membership_directory()}"):
        assert words in history
    assert added(sweeps.texture).endswith("texture(gates=5, rays=3)")
    history = added(sweeps.texture, quantities=["zdr"], exclude=("clutter", cc.NOISE), closed=False)
    assert history.endswith("quantities=zdr, exclude=clutter|NOISE, closed=False)")
    assert "means_of_linear_values=dbzh|zdr)" in added(sweeps.smooth)
    assert "closed=False" in added(sweeps.despeckle, closed=False)
    assert "phase_window=9|1" in added(sweeps.attenuation, phase_window=(9, 1))
    history = sweeps.process(classified.drop_vars("PHIDP"), what=255).attrs["history"].splitlines()[-1]
    assert "it needs phidp and rhohv" in history and "membership" not in history


def test_attributes_and_flags_of_classes(made_sweep: xr.Dataset) -> None:
    classes = sweeps.classify(made_sweep).CLASS
    assert classes.attrs["standard_name"] == "radar_echo_classification"
    assert cc.synthetic_scan(5, nrays=90, ngates=200).TRUTH.attrs["standard_name"] == (
        "radar_echo_classification")
    for value in (256, -1, np.nan):
        wrong = classes.astype(np.int16).assign_attrs(flag_values=np.array([0, 3, value]))
        with pytest.raises(ValueError, match=f"CLASS: flag_values .* not {value}"):
            sweeps.clean(made_sweep, classes=wrong)
