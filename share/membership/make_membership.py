#!/usr/bin/python3
"""Makes the membership tables of this directory from three CSV files: distributions.csv, pairs.csv and
more_classes.csv.

A quantity x has one density a class, a weighted mixture of simple distributions. Its degrees are

    log ratio   r(x) = power * ln(p_clutter(x) / p_precipitation(x)) - lean
    clutter     d(x) = floor + (1 - 2 floor) / (1 + exp(-r(x)))
    precipitation      1 - d(x)

so that the ratio of the degrees, which is all that a product of degrees compares, follows the ratio
of the densities within fixed bounds. `power` below 1 allows for inputs that say the same thing twice,
`lean` is the doubt that goes to precipitation, `floor` bounds what one input can decide. Beyond the
physical range both degrees are 0.5. The ratio is read at the listed abscissas only and shaped there.

Every other class k of more_classes.csv has the abscissas of its quantity's pair, a d(x) made as that of
clutter from its own density, shape, power, lean and floor, and the degree

    class k     precipitation degree * d(x) / (1 - d(x)), at most 1

so that its ratio to precipitation follows the ratio of their densities, as that of clutter does.

    make_membership.py                 writes the tables beside this script
    make_membership.py --out DIR       writes them into DIR
    make_membership.py --check         compares instead of writing; exit code 1 if a table differs
"""
import argparse
import csv
import math
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent
NEUTRAL = 0.5
DECIMALS = 4


def log_normal_density(x, mean, deviation):
    return -0.5 * ((x - mean) / deviation) ** 2 - math.log(deviation * math.sqrt(2.0 * math.pi))


def log_lognormal_density(x, median, sigma):
    if x <= 0.0:
        return -math.inf
    return log_normal_density(math.log(x), math.log(median), sigma) - math.log(x)


def log_beta_density(x, a, b, upper):
    """Beta density on 0..upper; the ends are approached to within a thousandth of the range."""
    t = min(max(x / upper, 1e-3), 1.0 - 1e-3)
    scale = math.lgamma(a + b) - math.lgamma(a) - math.lgamma(b)
    return scale + (a - 1.0) * math.log(t) + (b - 1.0) * math.log(1.0 - t) - math.log(upper)


def log_density(kind, x, first, second):
    if kind == "normal":
        return log_normal_density(x, first, second)
    if kind == "lognormal":
        return log_lognormal_density(x, first, second)
    if kind.startswith("beta"):
        return log_beta_density(x, first, second, float(kind[len("beta"):]))
    raise ValueError("unknown distribution: " + kind)


def log_mixture_density(components, x):
    terms = [math.log(weight) + log_density(kind, x, first, second)
             for weight, kind, first, second in components]
    top = max(terms)
    return top + math.log(sum(math.exp(term - top) for term in terms))


def running_maximum(values):
    """Rises from the least value before the greatest up to it and is flat outside.

    The far tails of two fitted mixtures say nothing about nature.
    """
    highest = values.index(max(values))
    lowest = values.index(min(values[: highest + 1]))
    result, top = [], values[lowest]
    for index, value in enumerate(values):
        if index >= lowest:
            top = max(top, value)
        result.append(top)
    return result


def shaped(ratios, shape):
    if shape == "free":
        return ratios
    if shape == "rising":
        return running_maximum(ratios)
    if shape == "falling":
        return running_maximum(ratios[::-1])[::-1]
    if shape == "peaked":  # symmetric about the middle point
        half = running_maximum(ratios[: len(ratios) // 2 + 1])
        return half + half[-2::-1]
    raise ValueError("unknown shape: " + shape)


def physical_point(abscissas, x):
    """Densities on 0..infinity vanish at 0: the degree there is that of half the first step."""
    positive = [value for value in abscissas if value > 0.0]
    return 0.5 * positive[0] if x == 0.0 and min(abscissas) >= -1.0 else x


def favour(pair, how, components, precipitation):
    """d(x) of one class against precipitation at every abscissa inside the physical range."""
    texts = pair["abscissas"].split()
    below, above = float(pair["neutral_below"]), float(pair["neutral_above"])
    power, lean, floor = (float(how[key]) for key in ("power", "lean", "floor"))
    inside = [float(text) for text in texts if below < float(text) < above]
    ratios = []
    for x in inside:
        at = physical_point(inside, x)
        ratios.append(log_mixture_density(components, at) - log_mixture_density(precipitation, at))
    degrees = {}
    for x, ratio in zip(inside, shaped(ratios, how["shape"])):
        logit = power * ratio - lean
        degrees[x] = floor + (1.0 - 2.0 * floor) / (1.0 + math.exp(-max(min(logit, 50.0), -50.0)))
    return [degrees.get(float(text), NEUTRAL) for text in texts]


def make_pair(pair, clutter, precipitation):
    """Rows (abscissa text, clutter degree, precipitation degree), ascending."""
    rows = []
    for text, degree in zip(pair["abscissas"].split(), favour(pair, pair, clutter, precipitation)):
        degree = round(degree, DECIMALS)
        rows.append((text, degree, 1.0 - degree))
    return rows


def make_other(pair, how, components, precipitation, pair_rows):
    """Rows (abscissa text, degree) of one more class."""
    rows = []
    for (text, _, weather), d in zip(pair_rows, favour(pair, how, components, precipitation)):
        rows.append((text, min(weather * d / (1.0 - d), 1.0)))
    return rows


def read_rows(name):
    with open(HERE / name, newline="", encoding="ascii") as stream:
        return list(csv.DictReader(stream))


def make_tables():
    """File name to its text, for every pair."""
    components = {}
    for row in read_rows("distributions.csv"):
        component = (float(row["weight"]), row["distribution"],
                     float(row["first"]), float(row["second"]))
        components.setdefault((row["quantity"], row["class"]), []).append(component)
    more = read_rows("more_classes.csv")
    tables = {}

    def add(tag, suffix, rows, column):
        lines = ["%s %.*f\n" % (row[0], DECIMALS, row[column]) for row in rows]
        tables["cal_mf_%s_%s.dat" % (tag, suffix)] = "".join(lines)

    for pair in read_rows("pairs.csv"):
        tag = pair["quantity"]
        weather = components[tag, "precipitation"]
        rows = make_pair(pair, components[tag, "clutter"], weather)
        add(tag, "clutter", rows, 1)
        add(tag, "precipi", rows, 2)
        for how in (row for row in more if row["quantity"] == tag):
            others = components[tag, how["class"]]
            add(tag, how["suffix"], make_other(pair, how, others, weather, rows), 1)
    return tables


def differing_tables(tables, directory):
    different = [name for name, text in tables.items()
                 if not (directory / name).is_file()
                 or (directory / name).read_bytes() != text.encode("ascii")]
    strangers = [path.name for path in directory.glob("cal_mf_*.dat") if path.name not in tables]
    return sorted(different + strangers)


def main():
    parser = argparse.ArgumentParser(description="Makes the membership tables from the CSV files.")
    parser.add_argument("--out", type=pathlib.Path, default=HERE, help="directory of the tables")
    parser.add_argument("--check", action="store_true", help="compare with the tables, write nothing")
    arguments = parser.parse_args()
    tables = make_tables()
    if arguments.check:
        different = differing_tables(tables, arguments.out)
        for name in different:
            print("differs: " + name, file=sys.stderr)
        return 1 if different else 0
    arguments.out.mkdir(parents=True, exist_ok=True)
    for name, text in tables.items():
        (arguments.out / name).write_bytes(text.encode("ascii"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
