"""``ds.clutter``: registered by the import of the package, and equal to the functions."""

from __future__ import annotations

import subprocess
import sys

import clutterclassifier as cc
import numpy as np
import pytest
import xarray as xr
from clutterclassifier import accessor, sweeps
from conftest import make_sweep, rainy, rainy_sweep


def run(program: str) -> str:
    return subprocess.run([sys.executable, "-c", program], stdout=subprocess.PIPE, text=True,
                          check=True).stdout


@pytest.mark.parametrize("first", ["xarray", "clutterclassifier", *(
    f"clutterclassifier.{name}" for name in ("accessor", "sweeps", "plot", "pyart", "backends", "archive"))])
def test_whichever_is_imported_first(first: str) -> None:
    program = (f"import {first}, clutterclassifier, sys, xarray; print(xarray.Dataset.clutter.__name__, "
               "{'distributed', 'matplotlib', 'netCDF4'} & set(sys.modules))")
    assert run(program) == "ClutterAccessor set()\n"


def test_the_package_alone_does_not_import_xarray() -> None:
    program = ("import sys, clutterclassifier as cc; print('xarray' in sys.modules, 'sweeps' in cc.__all__); "
               "print(cc.sweeps.classify.__name__, cc.read is cc.readers.read, 'xarray' in sys.modules)")
    assert run(program) == "False True\nclassify True True\n"


def test_xarray_is_loaded_as_by_itself() -> None:
    program = ("import sys, clutterclassifier, xarray, importlib; "
               "print(type(xarray.__loader__).__name__, xarray.__spec__.loader is xarray.__loader__, "
               "any('clutterclassifier' in type(finder).__module__ for finder in sys.meta_path)); "
               "importlib.reload(clutterclassifier)")
    assert run(program) == "SourceFileLoader True False\n"


def test_methods_equal_the_functions(made_sweep: xr.Dataset) -> None:
    clutter = made_sweep.clutter
    classes = clutter.classify(min_snr=3.0)
    xr.testing.assert_identical(classes, sweeps.classify(made_sweep, min_snr=3.0).CLASS)
    assert clutter.classify(name="ECHO").name == "ECHO"
    xr.testing.assert_identical(clutter.clean(keep="clutter"), sweeps.clean(made_sweep, keep="clutter"))
    settings = {"ATTENUATION_ALG": 4}
    xr.testing.assert_identical(clutter.process(settings), sweeps.process(made_sweep, settings))
    for name in ("texture", "smooth", "signal_to_noise", "rain_rate", "beam_height"):
        xr.testing.assert_identical(getattr(clutter, name)(), getattr(sweeps, name)(made_sweep))
    nominal = {"algorithm": "profile_nominal"}
    xr.testing.assert_identical(clutter.attenuation(**nominal), sweeps.attenuation(made_sweep, **nominal))
    classified = sweeps.classify(made_sweep)
    xr.testing.assert_identical(classified.clutter.despeckle(), sweeps.despeckle(classified))


def test_every_step_is_a_method() -> None:
    assert all(hasattr(accessor.ClutterAccessor, name) for name in sweeps.__all__)


class Tree:
    """Stands in for a tree of datasets where xarray has none: what the accessor uses of it."""

    def __init__(self, groups: dict[str, xr.Dataset], name: str | None = None) -> None:
        self.groups, self.name = groups, name

    def to_dict(self) -> dict[str, xr.Dataset]:
        return dict(self.groups)

    @classmethod
    def from_dict(cls, groups: dict[str, xr.Dataset], name: str | None = None) -> Tree:
        return cls(groups, name)


def test_a_tree_is_mapped_sweep_by_sweep() -> None:
    root = xr.Dataset(attrs={"instrument_name": "radar"})
    one, two = make_sweep(seed=1), make_sweep(seed=2)
    tree = Tree({"/": root, "/sweep_0": one, "/sweep_1": two}, name="volume")
    clutter = accessor.ClutterTreeAccessor(tree)
    result = clutter.classify(min_snr=3.0)
    assert result.name == "volume" and list(result.groups) == list(tree.groups)
    assert result.groups["/"].identical(root)
    for path, ds in (("/sweep_0", one), ("/sweep_1", two)):
        xr.testing.assert_identical(result.groups[path], sweeps.classify(ds, min_snr=3.0))
    assert {"classify", "process"} <= set(dir(clutter))
    with pytest.raises(AttributeError, match="no_such_step"):
        clutter.no_such_step


def test_a_tree_whose_fields_are_named() -> None:
    root, ds = xr.Dataset(), make_sweep().rename({"DBZH": "mine"})
    clutter = accessor.ClutterTreeAccessor(Tree({"/": root, "/sweep_0": ds}))
    result = clutter.classify(fields={"dbzh": "mine"})
    xr.testing.assert_identical(result.groups["/sweep_0"], sweeps.classify(ds, fields={"dbzh": "mine"}))
    with pytest.raises(ValueError, match="/sweep_0: no reflectivity"):
        clutter.classify()
    with pytest.raises(ValueError, match="no variable 'yours'"):
        clutter.classify(fields={"dbzh": "yours"})


def test_a_real_tree_where_xarray_has_one() -> None:
    if not hasattr(xr, "DataTree"):
        pytest.skip("this xarray has no DataTree")
    tree = xr.DataTree.from_dict({"/": xr.Dataset(), "/sweep_0": make_sweep()})
    result = tree.clutter.classify()
    xr.testing.assert_identical(result["sweep_0"].to_dataset(), sweeps.classify(make_sweep()))


def test_steps_equal_the_functions_on_arrays(made_sweep: xr.Dataset) -> None:
    ds = sweeps.classify(made_sweep, min_snr=10.0)
    classes = ds.CLASS.values
    noise = classes == cc.NOISE
    arrays = {name: made_sweep[name].values for name in ("DBZH", "ZDR", "PHIDP")}
    for data in (ds, ds.chunk({"azimuth": 7})):
        textures = sweeps.texture(data, gates=3, quantities=["dbzh", "zdr"])
        assert "PHIDP_TEXTURE" not in textures
        for name in ("DBZH", "ZDR"):
            expected = np.where(noise, np.nan, cc.texture(arrays[name], mask=noise, gates=3))
            np.testing.assert_array_equal(textures[f"{name}_TEXTURE"], expected.astype(np.float32))
        smoothed = sweeps.smooth(data, gates=5, rays=3)
        for name, decibels in (("DBZH", True), ("ZDR", True), ("PHIDP", False)):
            rain = classes == cc.PRECIPITATION
            expected = cc.smooth(arrays[name], mask=~rain, gates=5, rays=3, decibels=decibels)
            np.testing.assert_array_equal(smoothed[name].values[rain], expected[rain])
            np.testing.assert_array_equal(smoothed[name].values[~rain],
                                          arrays[name][~rain].astype(np.float32))
        np.testing.assert_array_equal(sweeps.despeckle(data).CLASS, cc.despeckle(classes))
        np.testing.assert_array_equal(sweeps.rain_rate(data, relation="z_zdr").RATE,
                                      cc.rain_rate(arrays["DBZH"], zdr=arrays["ZDR"], relation="z_zdr"))
        np.testing.assert_array_equal(sweeps.signal_to_noise(data).SNRH,
                                      cc.signal_to_noise(arrays["DBZH"], range=250.0, radar_constant=40.0))
    np.testing.assert_allclose(sweeps.beam_height(ds).beam_height,
                               cc.beam_height(ds.range.values, ds.elevation.values[:, np.newaxis]))


def test_attenuation_equals_the_function_on_arrays() -> None:
    ds = sweeps.classify(rainy_sweep())
    fields = rainy()
    expected = cc.attenuation(fields["dbzh"], phidp=fields["phidp"], classes=ds.CLASS.values, range=250.0,
                              elevation=1.5, algorithm="profile_nominal")
    assert expected.path_attenuation.min() > 1
    for data in (ds, ds.chunk({"azimuth": 7}), rainy_sweep()):
        corrected = sweeps.attenuation(data, algorithm="profile_nominal")
        np.testing.assert_array_equal(corrected.DBZH, expected.dbzh)
        np.testing.assert_array_equal(corrected.PHIDP, expected.phidp)
        np.testing.assert_array_equal(corrected.TA, expected.path_attenuation)
        np.testing.assert_array_equal(corrected.alpha, expected.alpha)
        assert corrected.TA.dims == ("azimuth",) and corrected.TA.attrs["units"] == "dB"
    steep = sweeps.attenuation(ds.assign(sweep_fixed_angle=80.0), algorithm="profile_nominal")
    assert steep.TA.max() == 0


def test_no_echo_does_not_rain(made_sweep: xr.Dataset) -> None:
    made_sweep.DBZH[0, :4] = -32.0
    made_sweep.DBZH.attrs["_Undetect"] = -32.0
    assert (sweeps.rain_rate(made_sweep).RATE[0, :4] == 0).all()
    assert sweeps.signal_to_noise(made_sweep).SNRH[0, :4].isnull().all()
    assert sweeps.texture(made_sweep).DBZH_TEXTURE[0, :4].isnull().all()


def test_what_a_step_lacks_is_named(made_sweep: xr.Dataset) -> None:
    with pytest.raises(ValueError, match="kdp"):
        sweeps.rain_rate(made_sweep, relation="kdp")
    with pytest.raises(ValueError, match="relation"):
        sweeps.rain_rate(made_sweep, relation="magic")
    with pytest.raises(ValueError, match="CLASS"):
        sweeps.despeckle(made_sweep)
    with pytest.raises(ValueError, match="wrad"):
        sweeps.texture(made_sweep, quantities=["wrad"])
    with pytest.raises(ValueError, match="differential phase"):
        sweeps.attenuation(made_sweep.drop_vars("PHIDP"))
    with pytest.raises(TypeError, match="phase_window"):
        sweeps.attenuation(made_sweep, phase_window=3)
    with pytest.raises(ValueError, match="freezing_level"):
        sweeps.attenuation(made_sweep, freezing_level=np.nan)
    with pytest.raises(TypeError, match="quantities"):
        sweeps.texture(made_sweep, quantities=[1])
    with pytest.raises(TypeError, match="fields must be a dict"):
        sweeps.classify(made_sweep, fields=["DBZH"])


@pytest.mark.parametrize("names", [
    {"DBZH": "reflectivity", "PHIDP": "differential_phase"}, {"PHIDP": "UPHIDP"}, {}])
def test_rain_of_the_corrected_fields(names: dict[str, str]) -> None:
    """Whatever the names: no uncorrected reflectivity is found once there is a corrected one."""
    ds = sweeps.classify(rainy_sweep().rename(names))
    expected = sweeps.attenuation(sweeps.classify(rainy_sweep()), algorithm="profile_nominal")
    corrected = sweeps.attenuation(ds, algorithm="profile_nominal")
    phase, dbzh = names.get("PHIDP", "PHIDP"), names.get("DBZH", "DBZH")
    np.testing.assert_array_equal(corrected[dbzh], expected.DBZH)
    np.testing.assert_array_equal(corrected[phase], expected.PHIDP)
    assert set(corrected) - set(ds) == {"PdpC", "Ah", "TA", "Dpdp", "a", "b", "alpha"}
    np.testing.assert_array_equal(sweeps.rain_rate(corrected).RATE, sweeps.rain_rate(expected).RATE)


def test_steps_after_the_classification_take_the_filtered_reflectivity() -> None:
    plain = sweeps.classify(rainy_sweep())
    ds = plain.assign(DBTH=plain.DBZH + 20)
    nominal = {"algorithm": "profile_nominal"}
    corrected = sweeps.attenuation(ds, **nominal)
    np.testing.assert_array_equal(corrected.DBZH, sweeps.attenuation(plain, **nominal).DBZH)
    np.testing.assert_array_equal(corrected.DBTH, ds.DBTH)
    np.testing.assert_array_equal(sweeps.rain_rate(corrected).RATE, cc.rain_rate(corrected.DBZH.values))
    assert sweeps.smooth(ds, quantities="dbzh").DBTH.identical(ds.DBTH)
    np.testing.assert_array_equal(sweeps.texture(ds).DBZH_TEXTURE, sweeps.texture(plain).DBZH_TEXTURE)
    np.testing.assert_array_equal(sweeps.signal_to_noise(ds).SNRH, sweeps.signal_to_noise(
        plain.assign(DBZH=ds.DBTH)).SNRH)


def test_keywords_without_effect_are_refused(made_sweep: xr.Dataset) -> None:
    ds = sweeps.classify(made_sweep)
    nominal = {"algorithm": "profile_nominal"}
    for step, keywords in ((sweeps.clean, {"classes": ds.CLASS}), (sweeps.attenuation, nominal)):
        for wrong in ({"bogus": 1}, {"min_snr": 3.0}, {"radar_constant": 30.0, "codes": "pyrad"}):
            with pytest.raises(TypeError, match=", ".join(wrong)):
                step(ds, **keywords, **wrong)
    for step, keywords in ((sweeps.clean, {}), (sweeps.attenuation, nominal)):
        with pytest.raises(TypeError, match="bogus"):
            step(made_sweep, **keywords, bogus=1)


def test_classes_by_another_name(made_sweep: xr.Dataset) -> None:
    known = sweeps.clean(made_sweep)
    classified = sweeps.classify(made_sweep, name="X")
    for ds, keywords in ((made_sweep, {}), (classified, {}), (made_sweep, {"classes": classified.X}),
                         (sweeps.classify(made_sweep, min_snr=60.0), {})):
        result = sweeps.clean(ds, name="X", **keywords)
        np.testing.assert_array_equal(result.X, known.CLASS)
        np.testing.assert_array_equal(result.DBZH, known.DBZH)
    nominal = {"algorithm": "profile_nominal"}
    for ds in (made_sweep, classified):
        result = sweeps.attenuation(ds, name="X", **nominal)
        assert "CLASS" not in result
        np.testing.assert_array_equal(result.DBZH, sweeps.attenuation(made_sweep, **nominal).DBZH)
