"""Compressed files of any format, and formats that are known but not read."""

import bz2
import gzip
import struct

import pytest
from conftest import dump
from test_cfradial import make as make_cfradial
from test_nexrad import REF, message31, volume
from test_odim import make as make_odim

FORMATS = {
    "ODIM_H5": lambda path: make_odim(path),
    "CfRadial 1": lambda path: make_cfradial(path, "NETCDF3_CLASSIC"),
    "CfRadial 1 of NetCDF-4": lambda path: make_cfradial(path),
    "NEXRAD Level 2": lambda path: path.write_bytes(volume([message31(azimuth, [REF]) for azimuth in range(3)])),
}


@pytest.mark.parametrize("name", FORMATS)
@pytest.mark.parametrize("compress", [gzip.compress, bz2.compress])
def test_compressed_is_read_as_it_is(tmp_path, name, compress):
    FORMATS[name](tmp_path / "plain")
    plain = (tmp_path / "plain").read_bytes()
    expected = dump(tmp_path / "plain")
    for packed in (compress(plain), compress(plain[:500]) + compress(plain[500:])):  # of several members, too
        (tmp_path / "packed").write_bytes(packed)
        scan = dump(tmp_path / "packed")
        assert name.startswith(scan.format)
        assert str(scan) == str(expected)
    for cut in (len(packed) // 3, len(packed) - 5):
        (tmp_path / "packed").write_bytes(packed[:cut])
        with pytest.raises(ValueError, match="damaged .* file, or cut short"):
            dump(tmp_path / "packed")


@pytest.mark.parametrize("packed, message", [
    (gzip.compress(gzip.compress(b"x")), "compressed twice"),
    (bz2.compress(bytes(100 << 20)), "unpacks to far more"),
])
def test_what_cannot_be_radar_data(tmp_path, packed, message):
    (tmp_path / "packed").write_bytes(packed)
    with pytest.raises(ValueError, match=message):
        dump(tmp_path / "packed")


@pytest.mark.parametrize("head, name", [
    (struct.pack("<6h", 27, 8, 0, 0, 0, 0) + struct.pack("<2h", 26, 8), "an IRIS"),
    (b'<volume version="5.34.16" datetime="2013', "a Rainbow 5"),
    (b"\x01\r\r\nISXD03 EDZW 100000\r\r\nBUFR", "a BUFR"),
    (struct.pack("<4H", 80, 3, 2022, 1), "a FURUNO"),
])
def test_formats_that_are_not_read_are_named(tmp_path, head, name):
    (tmp_path / "a").write_bytes(head.ljust(200, b"\0"))
    with pytest.raises(ValueError, match=f"is {name} file, which is not read: convert it"):
        dump(tmp_path / "a")


def test_one_of_gamic_is_named(tmp_path):
    import h5py
    with h5py.File(tmp_path / "a", "w") as file:
        file.create_group("scan0/moment_0")
        file.create_group("what").attrs["sets"] = 1
    with pytest.raises(ValueError, match="is a GAMIC file, which is not read: convert it"):
        dump(tmp_path / "a")
