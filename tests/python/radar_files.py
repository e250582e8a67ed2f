"""Small radar files, byte by byte, and the program that makes larger ones."""

from __future__ import annotations

import os
import struct
import subprocess
from pathlib import Path

import clutterclassifier as cc
import numpy as np

PROGRAM = os.environ.get("CLUTTERCLASSIFIER_PROGRAM",
                         str(Path(cc.__file__).parents[2] / "bin" / "clutterclassifier"))

MISSING = -32768


def run_program(*arguments: object) -> None:
    subprocess.run([PROGRAM, *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


# --- Universal Format: words of 16 bits, big-endian ---

def uf_ray(azimuth: float, elevation: float, fields: dict[str, list[int]], *, sweep: int = 1,
           mode: int = 1, fixed: float | None = None, scale: int = 100, spacing: int = 250,
           first: tuple[int, int] = (1, 125), facility: bytes = b"test    ",
           date: tuple[int, ...] = (2014, 8, 10, 18, 20, 7)) -> bytes:
    """One record; the words of the fields are value x scale, or MISSING."""
    fixed = elevation if fixed is None else fixed
    table, blocks, position = [], [], 46 + 3 + 2 * len(fields)
    for name, words in fields.items():
        header = [position + 19, scale, *first, spacing, len(words), 250, 64, 64, MISSING, 0, 342, 50,
                  0, MISSING, MISSING, 0, 1000, 16]
        table += [*struct.unpack(">h", name.encode()), position]
        blocks += header + list(words)
        position += 19 + len(words)
    start = [*struct.unpack(">h", b"UF"), position - 1, 46, 46, 46, 1, 1, 1, 1, sweep]
    names = list(struct.unpack(">8h", b"radar   site    "))
    place = [50, 44, 20 * 64, 7, 4, 10 * 64, 100]
    pointing = [round(azimuth * 64), round(elevation * 64), mode, round(fixed * 64), 0]
    made = [14, 8, 11, *struct.unpack(">4h", facility)]
    words = [*start, *names, *place, *date, *struct.unpack(">h", b"UT"), *pointing, *made, MISSING,
             len(fields), 1, len(fields), *table, *blocks]
    body = struct.pack(f">{len(words)}h", *words)
    frame = struct.pack(">i", len(body))
    return frame + body + frame


def uf_scan(nrays: int = 8, ngates: int = 6, **options) -> bytes:
    """DZ of 10 x ray + gate dBZ, and VR of -gate m/s."""
    return b"".join(
        uf_ray(360 / nrays * (r + 0.5), 1.5, {"DZ": [100 * (10 * r + g) for g in range(ngates)],
                                              "VR": [-100 * g for g in range(ngates)]}, **options)
        for r in range(nrays))


# --- German DX ---

def dx_scan(codes: np.ndarray) -> bytes:
    """360 rays of 128 codes: value 0.5 x code - 32.5 dBZ; those of 0 are written as runs."""
    head = b"DX021655" + b"10908" + b"0608" + b"BY00000VS 2CO0CD0CS0EP" + b"0" * 24 + b"MS  5hello\x03"
    rays = []
    for r, row in enumerate(codes):
        pairs = b"".join(bytes([1, 16]) if code == 0 else bytes([code, 128]) for code in row)
        rays.append(b"\x00\x20" + struct.pack("<HH", 10 * r, 8) + pairs)
    return head + b"".join(rays) + b"\x04"


def dx_codes() -> np.ndarray:
    codes = np.random.default_rng(1).integers(1, 180, (360, 128))
    codes[:, 40:90] = 0
    return codes


# --- polar data: words in the machine's order ---

def polar_scan(product: int, gates: np.ndarray, *, constant: int = 402) -> bytes:
    """Rays of packed gates: bytes of shape (rays, gates, bytes a gate)."""
    nrays, ngates = gates.shape[:2]
    header = bytearray(b"RADF\x80\x03\xC0\x01" + bytes(312))
    words = {24: 2011, 26: 7, 28: 15, 30: 12, 32: 30, 34: 5, 52: 11, 58: 48, 70: 600, 84: constant,
             88: 53, 92: 100, 112: nrays, 114: ngates, 116: 300, 130: 800, 168: product, 262: 600,
             274: 15}
    for place, word in words.items():
        struct.pack_into("=H", header, place, word)
    rays = [struct.pack("=5H", 0, round(36000 / nrays * r), 0, 0, 0) + gates[r].astype(np.uint8).tobytes()
            for r in range(nrays)]
    return bytes(header) + b"".join(rays)


def polar_2213(reflectivity: np.ndarray) -> np.ndarray:
    """Packed gates whose reflectivity has these codes of 12 bits; everything else is 7."""
    gates = np.full((*reflectivity.shape, 10), 7)
    gates[..., 0] = reflectivity & 255
    gates[..., 1] = reflectivity >> 8
    return gates


# --- field records: numbers in the machine's order ---

def record_scan(fields: dict[str, np.ndarray], *, kind: int = 0, scale: float = 1.0,
                offset: float = 0.0, grid: bool = False, units: str = "dBZ") -> bytes:
    """Records of one grid; kind 2 stores bytes, 3 words, 0 floats of (value - offset) / scale."""
    blocks = []
    for name, values in fields.items():
        nrays, ngates = values.shape
        header = bytearray(1044)
        header[:20] = b"PLUVEK V1.3  \x05\xAC\x1A\xE1\x40\x6F\x00"
        struct.pack_into("=4i", header, 20, ngates, nrays, 2 if grid else 0, 4)
        struct.pack_into("=3f", header, 36, 250.0, 0.0174533, 0.053)
        struct.pack_into("=i", header, 64, len(fields))
        struct.pack_into("=6i", header, 250, 2020, 2, 29, 23, 59, 58)
        header[620:620 + len(name)] = name.encode()
        header[630:630 + len(units)] = units.encode()
        struct.pack_into("=i2d", header, 1024, kind, scale, offset)
        angles = np.radians(np.concatenate([[2.5], 360 / nrays * np.arange(nrays)])).astype(np.float32)
        stored = {2: np.uint8, 3: np.uint16}.get(kind, np.float32)
        blocks.append(bytes(header) + struct.pack("=2i", nrays + 1, 1) + angles.tobytes()
                      + struct.pack("=2i", ngates, nrays) + values.astype(stored).tobytes())
    return b"".join(blocks)


def small_files() -> dict[str, bytes]:
    """A small sound file of each format."""
    values = np.arange(40, dtype=np.float32).reshape(5, 8)
    return {
        "uf": uf_scan(),
        "dx": dx_scan(dx_codes()),
        "polar": polar_scan(2213, polar_2213(np.arange(40).reshape(5, 8) * 20)),
        "record": record_scan({"Zh": values, "V": values / 4}),
    }


# --- reading them ---

def written(tmp_path: Path, content: bytes) -> Path:
    path = tmp_path / "scan.dat"
    path.write_bytes(content)
    return path


def read_one(tmp_path: Path, content: bytes, **options):
    [sweep] = cc.read(written(tmp_path, content), **options)
    return sweep
