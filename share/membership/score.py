#!/usr/bin/python3
"""Classifies labelled scans with the membership tables of a directory and prints the scores.

    score.py [--tables DIR] [--inputs sZhh,sRhv] SCAN.npz...

A scan holds arrays of rays x gates: `label` (1 clutter, 0 weather, NaN not judged) and any of the
inputs named in INPUTS. Without scans, the *_labelled.npz of the directory in CLUTTERCLASSIFIER_DATA.
Degrees are those of the library: linear between the points, constant beyond the ends, the last degree
for NaN; the greater product of degrees wins, a tie stays precipitation.

Textures are computed as the library does it (`stage`: gates without reflectivity or below --min-snr are
left out, and a missing value of another field makes the windows that hold it missing, hence neutral), or
taken from the file (`stored`, which leaves missing values out). Each is decided gate by gate, and with the
neighbourhood: the textures' log ratio of degrees is averaged over a window of echo gates, that of the other
inputs is added for the gate itself, and the sign decides.

POD and FAR are those of clutter. HSS is the Heidke skill score: 1 is perfect, 0 no better than chance.
"kept" is the share of the weather that stays precipitation. The last column is the HSS with the weather beside
clutter judged too, which labels leave out: gates without a label whose reflectivity after the radar's own
filter is at least 20 dBZ (`rain` of the scan). Some of them hold both.
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


def log_ratio(tables, fields):
    """ln(strength of precipitation / strength of clutter); 0 without fields."""
    total = 0.0
    with np.errstate(divide="ignore"):
        for tag, values in fields.items():
            total = total + (np.log(degrees(tables[tag, "precipi"], values))
                             - np.log(degrees(tables[tag, "clutter"], values)))
    return total


def window_sums(values, gates, rays):
    """Sums over windows that are cut at the ends of a ray; rays wrap."""
    padded = np.pad(values, ((0, 0), (gates // 2, gates // 2)))
    along = sum(padded[:, g:g + values.shape[1]] for g in range(gates))
    return sum(np.roll(along, r, axis=0) for r in range(-(rays // 2), rays // 2 + 1))


def mean_of_neighbours(values, used, window):
    """The mean over the used gates of each window; 0 without any."""
    sums = window_sums(np.where(used, values, 0.0), *window)
    return sums / np.maximum(window_sums(used.astype(np.float64), *window), 1.0)


def classify(tables, fields, used, window=None, averaged=tuple(TEXTURE_FIELDS)):
    """True where clutter wins. `window` (gates, rays): the inputs in `averaged` are averaged."""
    if window is None:
        return log_ratio(tables, fields) < 0.0
    around = {tag: values for tag, values in fields.items() if tag in averaged}
    own = {tag: values for tag, values in fields.items() if tag not in averaged}
    shape = used.shape
    mean = mean_of_neighbours(np.broadcast_to(log_ratio(tables, around), shape), used, window)
    return mean + log_ratio(tables, own) < 0.0


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


def echo_gates(scan, minimum_snr):
    used = np.isfinite(scan["z"])
    if "snr" in scan:
        used &= ~(scan["snr"] < minimum_snr)
    return used


def strict_label(scan, used):
    """The label, with the weather beside clutter."""
    beside = np.isnan(scan["label"]) & used & (scan.get("rain", np.zeros_like(used)) == 1)
    return np.where(beside, 0.0, scan["label"])


def stage_fields(scan, tags, used):
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


def all_scores(clutter, scan, used):
    result = scores(clutter, scan["label"])
    result["HSS strict"] = scores(clutter, strict_label(scan, used))["HSS"]
    return result


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
    parser.add_argument("--min-snr", type=float, default=10.0, help="of an echo, dB")
    parser.add_argument("--neighbourhood", default="5x3", metavar="GATESxRAYS", help="both odd")
    parser.add_argument("--average", choices=("textures", "all"), default="textures",
                        help="inputs that the neighbourhood averages")
    arguments = parser.parse_args()
    tags = list(INPUTS) if arguments.inputs == "all" else arguments.inputs.split(",")
    unknown = [tag for tag in tags if tag not in INPUTS]
    if unknown:
        parser.error("unknown input: " + ", ".join(unknown))
    scans = arguments.scans or default_scans()
    if not scans:
        parser.error("no labelled scans: name them, or their directory in CLUTTERCLASSIFIER_DATA")
    tables = read_tables(arguments.tables)
    window = tuple(int(size) for size in arguments.neighbourhood.split("x"))
    averaged = tuple(INPUTS) if arguments.average == "all" else tuple(TEXTURE_FIELDS)
    for path in scans:
        scan = read_scan(path)
        used = echo_gates(scan, arguments.min_snr)
        for textures, fields in (("stored", stored_fields(scan, tags)),
                                 ("stage", stage_fields(scan, tags, used))):
            for decision, size in (("gate by gate", None), ("neighbourhood", window)):
                result = all_scores(classify(tables, fields, used, size, averaged), scan, used)
                numbers = "  ".join("%s %.3f" % item for item in result.items())
                print("%-34s %-6s  %-13s  %-20s %s"
                      % (path.stem, textures, decision, "+".join(fields), numbers))
    return 0


if __name__ == "__main__":
    sys.exit(main())
