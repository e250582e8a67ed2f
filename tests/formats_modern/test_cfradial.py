"""CfRadial 1 and 2: what writers of the format do, in made files; real files against netCDF4."""

import h5py
import netCDF4
import numpy as np
import pytest
from conftest import dump, real

Z = np.arange(30, dtype="f4").reshape(6, 5)
NAN = np.nan


def variable(group, name, dimensions, values, kind=None, fill=None, **attributes):
    values = np.asarray(values)
    made = group.createVariable(name, kind or values.dtype, dimensions, fill_value=fill)
    made.set_auto_maskandscale(False)
    made.setncatts(attributes)
    made[...] = values
    return made


def text(group, name, dimension, texts):
    made = group.createVariable(name, "S1", (dimension, "string_length"))
    made[...] = netCDF4.stringtochar(np.array(texts, "S32"))


def make(path, model="NETCDF4", change=lambda file: None, fields=True, kind="i4", modes=("azimuth_surveillance", "rhi")):
    """Two sweeps of three rays and five gates."""
    with netCDF4.Dataset(path, "w", format=model) as file:
        file.Conventions, file.instrument_name, file.site_name = "CF/Radial", "radar-x", "hill"
        for name, size in {"time": 6, "range": 5, "sweep": 2, "string_length": 32, "n_points": None}.items():
            file.createDimension(name, size)
        variable(file, "time", ("time",), [0.5, 1, 0, 10, 11, 12], units="seconds since 2011-05-20T10:54:08Z")
        variable(file, "range", ("range",), np.float32([100, 350, 600, 850, 1100]), units="meters")
        variable(file, "azimuth", ("time",), np.float32([359, 0, 1, 45, 45, -315]))
        variable(file, "elevation", ("time",), np.float32([0.5, 0.5, 0.5, 1, 10, 20]))
        variable(file, "fixed_angle", ("sweep",), np.float32([0.5, 45]))
        variable(file, "sweep_number", ("sweep",), np.array([0, 1], kind))
        variable(file, "sweep_start_ray_index", ("sweep",), np.array([0, 3], kind))
        variable(file, "sweep_end_ray_index", ("sweep",), np.array([2, 5], kind))
        variable(file, "nyquist_velocity", ("time",), np.float32([17.5] * 6))
        variable(file, "latitude", (), 36.5)
        variable(file, "longitude", (), -97.5)
        variable(file, "altitude", (), 214.0)
        variable(file, "radar_beam_width_h", (), np.float32(1.0))
        if modes:
            text(file, "sweep_mode", "sweep", modes)
        if fields:
            variable(file, "DBZ", ("time", "range"), Z, fill=-9999.0, units="dBZ")
        change(file)
    return path


@pytest.mark.parametrize("model", ["NETCDF4", "NETCDF3_CLASSIC", "NETCDF3_64BIT_DATA"])
@pytest.mark.parametrize("kind", ["i4", "f4"])
def test_stacked_sweeps(tmp_path, model, kind):
    scan = dump(make(tmp_path / "a.nc", model, kind=kind))
    assert (scan.format, scan.radar, scan.site) == ("CfRadial 1", "radar-x", "hill")
    assert (scan.lat, scan.lon, scan.alt, scan.beam) == (36.5, -97.5, 214, 1)
    ppi, rhi = scan.sweeps
    assert (ppi.number, ppi.rhi, ppi.mode, ppi.fixed) == (0, 0, "azimuth_surveillance", 0.5)
    assert (rhi.number, rhi.rhi, rhi.mode, rhi.fixed) == (1, 1, "rhi", 45)
    assert (ppi.first, ppi.spacing, ppi.nyquist) == (100, 250, 17.5)
    assert rhi.azimuth == [45] * 3
    assert np.diff(ppi.time).tolist() == [0.5, -1]
    np.testing.assert_array_equal(ppi.values["DBZ"], Z[:3])
    np.testing.assert_array_equal(rhi.values["DBZ"], Z[3:])


@pytest.mark.parametrize("raw, options, expected", [
    (np.int16([-32768, 0, 1, 100]), {"fill": -32768, "scale_factor": 0.01, "add_offset": 5.0}, [NAN, 5, 5.01, 6]),
    (np.int16([-32767, 0, 1, 100]), {"scale_factor": 0.01}, [NAN, 0, 0.01, 1]),
    (np.int16([-9, -8, 1, 2]), {"fill": -9, "missing_value": np.int16(-8)}, [NAN, NAN, 1, 2]),
    (np.uint8([255, 0, 1, 2]), {"fill": 255, "scale_factor": 0.5, "add_offset": -32.0}, [NAN, -32, -31.5, -31]),
    (np.int8([-128, 0, 1, 2]), {}, [-128, 0, 1, 2]),
    (np.float32([9.96921e36, 1, np.nan, 2]), {}, [NAN, 1, NAN, 2]),
    (np.float32([-9999, 1, 3, 2]), {"missing_value": "-9999."}, [NAN, 1, 3, 2]),
    (np.float64([1e20, 0.1, 3, 2]), {"fill": 1e20}, [NAN, 0.1, 3, 2]),
])
def test_packing_and_missing_values(tmp_path, raw, options, expected):
    def change(file):
        variable(file, "X", ("time", "range"), np.resize(np.append(raw, raw[1]), (6, 5)), **options)
    values = dump(make(tmp_path / "a.nc", change=change)).sweeps[0].values["X"][0, :4]
    np.testing.assert_array_equal(values, np.float32(np.float64(expected)))


def test_no_echo_is_kept_apart(tmp_path):
    def change(file):
        variable(file, "X", ("time", "range"), np.resize(np.uint8([255, 0, 1, 2, 3]), (6, 5)), fill=255,
                 scale_factor=0.5, add_offset=-32.0, _Undetect=np.uint8(0))
    sweep = dump(make(tmp_path / "a.nc", change=change)).sweeps[0]
    assert sweep.no_echo == {"DBZ": None, "X": -32}
    hidden = dump(tmp_path / "a.nc", "--hide-no-echo").sweeps[0].values["X"][0]
    np.testing.assert_array_equal(hidden, [NAN, NAN, -31.5, -31, -30.5])


def test_ragged_rays(tmp_path):
    counts = [5, 2, 3, 1, 1, 1]
    points = np.arange(sum(counts) - 1, dtype="f4")  # the last ray is missing

    def change(file):
        variable(file, "ray_n_gates", ("time",), counts)
        variable(file, "ray_start_index", ("time",), np.cumsum([0, *counts[:-1]]))
        variable(file, "V", ("n_points",), points)
    ppi, rhi = dump(make(tmp_path / "a.nc", change=change, fields=False)).sweeps
    assert (ppi.gates, ppi.ray_gates, rhi.gates, rhi.ray_gates) == (5, [5, 2, 3], 1, [])
    np.testing.assert_array_equal(ppi.values["V"], [[0, 1, 2, 3, 4], [5, 6] + [NAN] * 3, [7, 8, 9, NAN, NAN]])
    np.testing.assert_array_equal(rhi.values["V"], [[10], [11], [NAN]])


START = 1305888848


@pytest.mark.parametrize("units, zero, unit", [
    ("seconds since 2011-05-20 10:54:08", START, 1), ("s since 2011-05-20 10:54:08.5 UTC", START + 0.5, 1),
    ("milliseconds since 2011-05-20T10:54:08Z", START, 1e-3), ("microseconds since 2011-05-20T10:54:08Z", START, 1e-6),
    ("minutes since 2011-05-20T10:54:08Z", START, 60), ("hours since 2011-05-20", START - 39248, 3600),
    ("days since 2011-5-20 00:00:00", START - 39248, 86400)])
def test_units_of_time(tmp_path, units, zero, unit):
    path = make(tmp_path / "a.nc", change=lambda file: file["time"].setncattr_string("units", units))
    np.testing.assert_allclose(dump(path).sweeps[0].time, zero + np.array([0.5, 1, 0]) * unit, rtol=0, atol=1e-6)


def test_modes_may_be_missing(tmp_path):
    ppi, rhi = dump(make(tmp_path / "a.nc", modes=None)).sweeps
    assert (ppi.rhi, rhi.rhi) == (0, 1)


@pytest.mark.parametrize("change, outcome", [
    (lambda file: file.variables["sweep_end_ray_index"].__setitem__(1, 6), "Sweep 1 has impossible ray indices"),
    (lambda file: file.variables["range"].__setitem__(4, 1500), "not evenly spaced"),
    (lambda file: file.renameVariable("azimuth", "azi"), "neither ODIM_H5 nor CfRadial"),
    (lambda file: file.renameVariable("elevation", "ele"), "elevation is missing or not one number for each ray"),
    (lambda file: file.variables["azimuth"].__setitem__(1, NAN), "azimuth is missing or not one number for each ray"),
    (lambda file: file.renameVariable("range", "rng"), "range is missing"),
])
def test_what_is_wrong_is_named(tmp_path, change, outcome):
    path = make(tmp_path / "a.nc", change=change)
    try:
        scan = dump(path)
    except ValueError as error:
        assert outcome in str(error)
    else:
        assert outcome in " ".join(scan.damage + scan.oddities)


@pytest.mark.parametrize("rays", ["time", "azimuth"])
def test_sweep_groups(tmp_path, rays):
    with netCDF4.Dataset(tmp_path / "a.nc", "w") as file:
        file.Conventions, file.instrument_name = "Cf/Radial-2.0", "radar-x"
        variable(file, "latitude", (), 36.5)
        variable(file.createGroup("radar_parameters"), "radar_beam_width_h", (), 0.9)
        file.createVariable("time_coverage_start", str, ())[...] = np.array("2011-05-20T10:54:08Z", object)
        for name, number in (("sweep_10", 10), ("sweep_2", 2)):
            group = file.createGroup(name)
            group.createDimension(rays, 3)
            group.createDimension("range", number)
            variable(group, "time", (rays,), [0.0, 1, 2], units="seconds since 2011-05-20T10:54:08Z")
            variable(group, "azimuth", (rays,), [0.0, 1, 2])
            variable(group, "elevation", (rays,), [1.0, 1, 1])
            variable(group, "range", ("range",), 50 + 100.0 * np.arange(number))
            variable(group, "sweep_number", (), number)
            variable(group, "sweep_fixed_angle", (), 1.0)
            group.createVariable("sweep_mode", str, ())[...] = np.array("sector", object)
            variable(group, "DBZH", (rays, "range"), np.full((3, number), number, "f4"), units="dBZ")
    scan = dump(tmp_path / "a.nc")
    assert (scan.format, scan.radar, scan.lat, scan.beam) == ("CfRadial 2", "radar-x", 36.5, 0.9)
    assert [(s.number, s.gates, s.mode, s.fixed, s.first) for s in scan.sweeps] == [
        (2, 2, "sector", 1, 50), (10, 10, "sector", 1, 50)]
    assert scan.sweeps[0].time[0] == scan.time
    np.testing.assert_array_equal(scan.sweeps[1].values["DBZH"], np.full((3, 10), 10))


@pytest.mark.parametrize("model, step", [("NETCDF4", 997), ("NETCDF3_CLASSIC", 41)])
def test_no_cut_crashes_and_none_of_the_last_values_are_invented(tmp_path, model, step):
    whole = make(tmp_path / "a.nc", model).read_bytes()
    for length in range(8, len(whole) - 1, step):
        (tmp_path / "cut.nc").write_bytes(whole[:length])
        with pytest.raises(ValueError, match="damaged|cannot be read|is missing|holds no sweeps|neither"):
            dump(tmp_path / "cut.nc")


def test_circles_of_groups_end(tmp_path):
    make(tmp_path / "in")
    with h5py.File(tmp_path / "in", "r+") as file:
        file.create_group("sweep_1")["again"] = file["/"]
    with pytest.raises(ValueError, match="linked in circles"):
        dump(tmp_path / "in")


def test_declared_sizes_are_not_believed(tmp_path):
    with netCDF4.Dataset(tmp_path / "a.nc", "w") as file:
        file.createDimension("time", 1 << 36)
        file.createVariable("azimuth", "f4", ("time",), chunksizes=(1 << 18,))
    with pytest.raises(ValueError, match="more than a file of this size can hold"):
        dump(tmp_path / "a.nc")


def test_counts_in_a_classic_header_are_not_believed(tmp_path):
    whole = bytearray(make(tmp_path / "a.nc", "NETCDF3_CLASSIC").read_bytes())
    assert whole[8:12] == b"\0\0\0\x0a"  # the list of dimensions; their number follows
    whole[12:16] = b"\x10\0\0\0"
    (tmp_path / "a.nc").write_bytes(whole)
    with pytest.raises(ValueError, match="damaged NetCDF file: it is cut short"):
        dump(tmp_path / "a.nc")


@pytest.mark.parametrize("name", ["cfradial_mxpol_20120929_rhi.nc", "cfradial_xsapr_ppi.nc"])
def test_real_files_against_netcdf4(name):
    scan = dump(real(name))
    (sweep,) = scan.sweeps
    with netCDF4.Dataset(real(name)) as file:
        assert sweep.rhi == ("rhi" in name)
        np.testing.assert_array_equal(sweep.azimuth, file["azimuth"][...])
        np.testing.assert_array_equal(sweep.elevation, file["elevation"][...])
        np.testing.assert_allclose(sweep.first + sweep.spacing * np.arange(sweep.gates), file["range"][...], rtol=1e-6)
        assert np.isclose(sweep.nyquist, file["nyquist_velocity"][0])
        file.set_auto_mask(False)  # valid_min and valid_max are of a display here: only fill values are missing
        names = [v for v in file.variables if file[v].dimensions == ("time", "range")]
        assert names == list(sweep.values)
        for field in names:
            fill = getattr(file[field], "_FillValue", netCDF4.default_fillvals["f4"])
            values = file[field][...]
            np.testing.assert_array_equal(sweep.values[field], np.where(values == np.float32(fill), NAN, values))
