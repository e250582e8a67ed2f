"""NEXRAD Level 2: made volumes of both kinds of messages; a real one against a reader of its own in numpy."""

import bz2
import struct

import numpy as np
import pytest
from conftest import dump, real

DAY = 17000  # modified Julian days, 1 is 1970-01-01


def moment(name, codes, scale, offset, first=2125, spacing=250):
    codes = np.asarray(codes)
    bits = 8 * codes.dtype.itemsize
    head = struct.pack(">4sIHhHHhBBff", b"D" + name.encode().ljust(3), 0, codes.size, first, spacing, 0, 0, 0, bits,
                       scale, offset)
    return head + codes.astype(codes.dtype.newbyteorder(">")).tobytes()


def message31(azimuth, moments, elevation=1, status=1, angle=0.5, nyquist=2500):
    volume = struct.pack(">4sHBBffhHfffffHH", b"RVOL", 44, 1, 0, 41.5, -93.5, 300, 20, -42.5, 0, 0, 0, 0, 12, 0)
    radial = struct.pack(">4sHhffhh", b"RRAD", 20, 4600, 0, 0, nyquist, 0)
    blocks = [volume, radial, *moments]
    starts = np.cumsum([72, *map(len, blocks)])[:-1]
    body = struct.pack(">4sIHHfBBHBBBBfBBH", b"KDMX", 3600000 + (azimuth - 180) % 360, DAY, 1, azimuth, 0, 0, 0, 2, status, elevation,
                       0, angle, 0, 0, len(blocks))
    body += struct.pack(">10I", *starts, *[0] * (10 - len(blocks))) + b"".join(blocks)
    body += b"\0" * (len(body) % 2)
    return bytes(12) + struct.pack(">HBBHHIHH", len(body) // 2 + 8, 0, 31, 0, DAY, 0, 1, 1) + body


def frame(kind, body):
    return (bytes(12) + struct.pack(">HBBHHIHH", 1208, 0, kind, 0, DAY, 0, 1, 1) + body).ljust(2432, b"\0")


def message1(azimuth, reflectivity, velocity, resolution=2):
    head = struct.pack(">IHhHHHHHhhHHHHHfHHHH", 3600000, DAY, 4600, round(azimuth * 4096 * 8 / 180), 1, 1, 91, 1, 0, -375,
                       1000, 250, len(reflectivity), len(velocity), 0, -40.0, 100, 100 + len(reflectivity), 0,
                       resolution)
    return frame(1, head.ljust(60, b"\0") + struct.pack(">h", 2600).ljust(40, b"\0") + bytes(reflectivity + velocity))


def volume(messages, packed=2, header=b"AR2V0006.001"):
    """packed: messages a record; 0: not compressed."""
    start = header + struct.pack(">II4s", DAY, 3600000, b"KDMX")
    if not packed:
        return start + b"".join(messages)
    records = [bz2.compress(b"".join(messages[i:i + packed])) for i in range(0, len(messages), packed)]
    return start + b"".join(struct.pack(">i", -len(r) if r is records[-1] else len(r)) + r for r in records)


REF = moment("REF", np.array([0, 1, 2, 66, 255], "u1"), 2, 66)
PHI = moment("PHI", np.array([0, 1, 1023], "u2"), 2.8361, 2)
VEL = moment("VEL", np.array([0, 129, 131, 1], "u1"), 2, 129)


@pytest.mark.parametrize("packed", [0, 1, 3])
def test_moments_sweeps_and_codes(tmp_path, packed):
    plan = frame(5, struct.pack(">HHHH14s", 60, 2, 12, 2, b"") + b"".join(
        struct.pack(">H44s", round(angle * 32768 / 180), b"") for angle in (0.5, 1.5)))
    messages = [frame(2, b""), plan, message31(359, [REF, PHI], status=3), message31(0, [REF, PHI]),
                message31(1, [REF]), message31(7, [REF, VEL], 2, 0, 1.4), message31(8, [REF, VEL], 2, 4, 1.4)]
    (tmp_path / "v").write_bytes(volume(messages, packed))
    scan = dump(tmp_path / "v")
    assert (scan.format, scan.radar, scan.lat, scan.lon, scan.alt) == ("NEXRAD Level 2", "KDMX", 41.5, -93.5, 320)
    assert scan.constant == 42.5
    assert scan.time == (DAY - 1) * 86400 + 3600
    first, second = scan.sweeps
    assert (first.number, first.rays, first.gates, first.first, first.spacing, first.nyquist) == (1, 3, 5, 2125, 250, 25)
    assert (round(first.fixed, 2), round(second.fixed, 2)) == (0.5, 1.5)
    assert first.azimuth == [359, 0, 1]
    nan = np.nan
    np.testing.assert_array_equal(first.values["DBZH"], np.tile(np.float32([-33, nan, -32, 0, 94.5]), (3, 1)))
    scale = np.float64(np.float32(2.8361))
    phase = np.float32([-2 / scale, nan, 1021 / scale, nan, nan])
    np.testing.assert_array_equal(first.values["PHIDP"], [phase, phase, [nan] * 5])
    np.testing.assert_array_equal(second.values["VRADH"][0], np.float32([-64.5, 0, 1, nan, nan]))
    assert vars(first)["no_echo"] == {"DBZH": -33, "PHIDP": np.float32(-2 / scale)}
    hidden = dump(tmp_path / "v", "--hide-no-echo").sweeps[0].values["DBZH"][0]
    np.testing.assert_array_equal(hidden, np.float32([nan, nan, -32, 0, 94.5]))


def test_messages_of_old_radars(tmp_path):
    reflectivity, velocity = [0, 1, 2, 100], [129, 131, 0, 1] + [129] * 12
    messages = [message1(azimuth, reflectivity, velocity) for azimuth in (10, 11)]
    (tmp_path / "v").write_bytes(volume(messages, 0, b"ARCHIVE2.001"))
    scan = dump(tmp_path / "v")
    (sweep,) = scan.sweeps
    # The first velocity gate in front of the radar is the third; reflectivity gates are four of them wide.
    assert (sweep.first, sweep.spacing, sweep.nyquist, sweep.gates) == (125, 250, 26, 14)
    assert sweep.values["VRADH"][0][:2].tolist() == [-64.5, pytest.approx(np.nan, nan_ok=True)]
    expected = np.float32([-33] * 2 + [np.nan] * 4 + [-32] * 4 + [17] * 4)
    np.testing.assert_array_equal(sweep.values["DBZH"][1], expected)
    assert abs(sweep.azimuth[1] - 11) < 0.01 and scan.constant == 40
    assert "cover several gates" in scan.oddities[0]


@pytest.mark.parametrize("damage, sentence", [
    (lambda whole: whole[:-40], "1 of 3 records are damaged"),
    (lambda whole: whole[:60] + b"xxxx" + whole[64:], "1 of 3 records are damaged"),
])
def test_damaged_records_are_left_out(tmp_path, damage, sentence):
    whole = volume([message31(azimuth, [REF]) for azimuth in range(3)], 1)
    (tmp_path / "v").write_bytes(damage(whole))
    scan = dump(tmp_path / "v")
    assert scan.sweeps[0].rays == 2
    assert any(sentence in text for text in scan.damage)


@pytest.mark.parametrize("elevations, numbers", [([1, 3], [1, 3]), ([2, 1], [1, 2]), ([1, 2, 1], [1, 2, 3])])
def test_sweeps_have_the_numbers_of_their_elevations_while_these_rise(tmp_path, elevations, numbers):
    messages = [message31(azimuth, [REF], number) for number in elevations for azimuth in (0, 1)]
    (tmp_path / "v").write_bytes(volume(messages, 0))
    assert [sweep.number for sweep in dump(tmp_path / "v").sweeps] == numbers


def test_a_moment_ends_with_its_message(tmp_path):
    def cut(message):
        """The message, eight bytes shorter as its header has it, too."""
        halves = len(message) // 2 - 10
        return message[:12] + struct.pack(">H", halves) + message[14:2 * halves + 12]

    messages = [message31(0, [REF]), cut(message31(1, [REF])), message31(2, [REF])]
    (tmp_path / "v").write_bytes(volume(messages, 0))
    scan = dump(tmp_path / "v")
    values = scan.sweeps[0].values["DBZH"]
    assert scan.sweeps[0].rays == 3 and np.isnan(values[1]).all() and not np.isnan(values[2, 2:]).any()


def test_no_cut_goes_unseen_or_crashes(tmp_path):
    for packed, step in ((0, 7), (2, 29)):
        whole = volume([message31(azimuth, [REF, PHI]) for azimuth in range(4)], packed)
        for length in range(12, len(whole) - 1, step):
            (tmp_path / "v").write_bytes(whole[:length])
            try:
                scan = dump(tmp_path / "v")
            except ValueError as error:
                assert "NEXRAD" in str(error) or "holds no sweeps" in str(error)
            else:
                assert scan.damage or scan.sweeps[0].rays < 4


def radials(name):
    """Azimuth, elevation number and moments of every radial, by numpy alone."""
    data, at, found = name.read_bytes(), 24, []
    while at < len(data) - 4:
        size = abs(struct.unpack_from(">i", data, at)[0])
        block, at, pos = bz2.decompress(data[at + 4:at + 4 + size]), at + 4 + size, 0
        while pos < len(block) - 28:
            size, _, kind = struct.unpack_from(">HBB", block, pos + 12)
            if kind == 31:
                body = block[pos + 28:pos + 12 + 2 * size]
                moments = {}
                for start in struct.unpack_from(f">{struct.unpack_from('>H', body, 30)[0]}I", body, 32):
                    if body[start:start + 1] != b"D":
                        continue
                    tag, _, count, first, spacing = struct.unpack_from(">4sIHhH", body, start)
                    bits, scale, offset = struct.unpack_from(">Bff", body, start + 19)
                    codes = np.frombuffer(body, f">u{bits // 8}", count, start + 28)
                    moments[tag[1:].decode().strip()] = (codes.astype(float), scale, offset, first, spacing)
                found.append((struct.unpack_from(">f", body, 12)[0], body[22], moments))
            pos += 12 + 2 * size if kind == 31 else 2432
    return found


def test_a_real_volume():
    path = real("nexrad_KDMX_20220305.bin")
    scan, found = dump(path), radials(path)
    names = {"REF": "DBZH", "VEL": "VRADH", "SW": "WRADH", "ZDR": "ZDR", "PHI": "PHIDP", "RHO": "RHOHV", "CFP": "CCORH"}
    assert sum(sweep.rays for sweep in scan.sweeps) == len(found)
    for sweep in scan.sweeps:
        rays = [radial for radial in found if radial[1] == sweep.number]
        assert sweep.azimuth == [radial[0] for radial in rays]
        for r, (_, _, moments) in enumerate(rays):
            for name, (codes, scale, offset, first, spacing) in moments.items():
                assert (first, spacing) == (sweep.first, sweep.spacing)
                values = np.float32((codes - offset) / scale)
                values[(codes == 1) | ((name == "CFP") & (codes < 8))] = np.nan
                row = sweep.values[names[name]][r]
                np.testing.assert_array_equal(row[:codes.size], values)
                assert np.isnan(row[codes.size:]).all()
