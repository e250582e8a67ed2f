#!/usr/bin/python3
"""Classifies labelled scans with the membership tables of a directory and prints the scores.

    score.py [--tables DIR] [--inputs sZhh,sRhv] SCAN.npz...

A scan holds arrays of rays x gates: `label` (1 clutter, 0 weather, NaN not judged) and any of the
inputs named in INPUTS. Without scans, the *_labelled.npz of the directory in CLUTTERCLASSIFIER_DATA.
Degrees are those of the library: linear between the points, constant beyond the ends, the last degree
for NaN; the greater product of degrees wins, a tie stays precipitation.

Two rows a scan: `stored` takes the textures of the file, which leave missing values out; `stage`
computes them as the library does: gates without reflectivity or below --min-snr are left out, and a missing
value of another field makes the windows that hold it missing, hence neutral.
"""
import argparse
import os
import pathlib
import sys

import numpy as np

HERE = pathlib.Path(__file__).resolve().parent
INPUTS = {"sZhh": "sd_z", "sZdr": "sd_zdr", "sPdp": "sd_phi", "sRhv": "sd_rho",
          "Vel": "v", "LDR": "ldr", "Rhv": "rho", "Wid": "w"}
TEXTURE_FIELDS = {"sZhh": "z", "sZdr": "zdr", "sPdp": "phi", "sRhv": "rho"}
WINDOW_GATES, WINDOW_RAYS = 5, 3


def read_table(path):
    return np.loadtxt(path, dtype=np.float64, ndmin=2).T


def degrees(table, x):
    """Degree of every x: segment right of an equal point, constant ends, last degree for NaN."""
    px, py = table
    x = np.asarray(x, dtype=np.float32).astype(np.float64)
    right = np.where(np.isnan(x), px.size, np.searchsorted(px, x, side="right"))
    i = np.clip(right, 1, px.size - 1)
    with np.errstate(invalid="ignore"):
        inner = (x - px[i]) * (py[i] - py[i - 1]) / (px[i] - px[i - 1]) + py[i]
    return np.where(right == 0, py[0], np.where(right >= px.size, py[-1], inner))


def classify(tables, fields):
    """True where clutter wins. `fields`: input tag to array; `tables`: (tag, suffix) to table."""
    strength = {}
    for suffix in ("clutter", "precipi"):
        product = 1.0
        for tag, values in fields.items():
            product = product * degrees(tables[tag, suffix], values)
        strength[suffix] = product
    return strength["clutter"] > strength["precipi"]


def masked_texture(field, used, gates=WINDOW_GATES, rays=WINDOW_RAYS):
    """Population standard deviation over the used members of each window; rays wrap, gate ends repeat."""
    field = np.asarray(field, dtype=np.float64)
    hg, hr = gates // 2, rays // 2
    wrap = np.concatenate([field[-hr:], field, field[:hr]]) if hr else field
    use = np.concatenate([used[-hr:], used, used[:hr]]) if hr else used
    width = field.shape[1] - 2 * hg
    members = [(wrap[r:r + field.shape[0], g:g + width], use[r:r + field.shape[0], g:g + width])
               for r in range(rays) for g in range(gates)]
    count = sum(u for _, u in members).astype(np.float64)
    with np.errstate(invalid="ignore", divide="ignore"):
        mean = sum(np.where(u, v, 0.0) for v, u in members) / count
        variance = sum(np.where(u, (v - mean) ** 2, 0.0) for v, u in members) / count
    inner = np.where(used[:, hg:hg + width] & (count > 0), np.sqrt(variance), 0.0)
    return np.pad(inner, ((0, 0), (hg, hg)), mode="edge")


def read_scan(path):
    with np.load(path) as scan:
        return {key: scan[key] for key in scan.files}


def stored_fields(scan, tags):
    """The inputs that the scan holds with at least one value."""
    fields = {tag: scan[INPUTS[tag]] for tag in tags if INPUTS[tag] in scan}
    return {tag: values for tag, values in fields.items() if np.isfinite(values).any()}


def stage_fields(scan, tags, minimum_snr):
    used = np.isfinite(scan["z"])
    if "snr" in scan:
        used &= ~(scan["snr"] < minimum_snr)
    fields = stored_fields(scan, tags)
    for tag in fields:
        source = scan.get(TEXTURE_FIELDS.get(tag, ""))
        if source is not None:
            fields[tag] = masked_texture(source, used)
    return fields


def scores(clutter, label):
    """POD and FAR of clutter, Heidke skill score, share of the weather kept."""
    hit = float(np.sum(clutter & (label == 1)))
    miss = float(np.sum(~clutter & (label == 1)))
    false = float(np.sum(clutter & (label == 0)))
    kept = float(np.sum(~clutter & (label == 0)))
    chance = (hit + miss) * (miss + kept) + (hit + false) * (false + kept)
    return {"POD": hit / max(hit + miss, 1.0), "FAR": false / max(hit + false, 1.0),
            "HSS": 2.0 * (hit * kept - false * miss) / max(chance, 1.0),
            "kept": kept / max(kept + false, 1.0)}


def read_tables(directory):
    return {(tag, suffix): read_table(pathlib.Path(directory) / ("cal_mf_%s_%s.dat" % (tag, suffix)))
            for tag in INPUTS for suffix in ("clutter", "precipi")}


def default_scans():
    directory = os.environ.get("CLUTTERCLASSIFIER_DATA")
    return sorted(pathlib.Path(directory).glob("*_labelled.npz")) if directory else []


def main():
    parser = argparse.ArgumentParser(description="Scores the membership tables on labelled scans.")
    parser.add_argument("scans", nargs="*", type=pathlib.Path)
    parser.add_argument("--tables", type=pathlib.Path, default=HERE)
    parser.add_argument("--inputs", default="sZhh,sZdr,sPdp,sRhv", help="tags, or all")
    parser.add_argument("--min-snr", type=float, default=10.0, help="for the stage row, dB")
    arguments = parser.parse_args()
    tags = list(INPUTS) if arguments.inputs == "all" else arguments.inputs.split(",")
    unknown = [tag for tag in tags if tag not in INPUTS]
    if unknown:
        parser.error("unknown input: " + ", ".join(unknown))
    scans = arguments.scans or default_scans()
    if not scans:
        parser.error("no labelled scans: name them, or their directory in CLUTTERCLASSIFIER_DATA")
    tables = read_tables(arguments.tables)
    for path in scans:
        scan = read_scan(path)
        for row, fields in (("stored", stored_fields(scan, tags)),
                            ("stage", stage_fields(scan, tags, arguments.min_snr))):
            result = scores(classify(tables, fields), scan["label"])
            numbers = "  ".join("%s %.3f" % item for item in result.items())
            print("%-40s %-7s %-24s %s" % (path.stem, row, "+".join(fields), numbers))
    return 0


if __name__ == "__main__":
    sys.exit(main())
