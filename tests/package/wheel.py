"""The package as a wheel brings it: library and tables are inside, numpy is all that it needs."""

import importlib.util
import sys
from pathlib import Path

import numpy as np

import clutterclassifier as cc

folder = Path(cc.__file__).parent
assert "venv" in str(folder), folder
assert (folder / "libclutterclassifier.so").is_file()
assert list((folder / "membership").glob("*.dat"))
assert importlib.util.find_spec("xarray") is None

random = np.random.default_rng(1)
zhh = np.full((36, 200), 35.0) + random.uniform(-1, 1, (36, 200))
phidp = np.full((36, 200), 60.0) + random.uniform(-2, 2, (36, 200))
zhh[:12, :40] += random.uniform(-15, 15, (12, 40))
phidp[:12, :40] += random.uniform(-120, 120, (12, 40))
classes = np.asarray(cc.classify(zhh=zhh, phidp=phidp, gate_spacing=250.0, radar_constant=40.0, min_snr=10.0))
assert (classes[:12, :40] == 5).mean() > 0.9, (classes[:12, :40] == 5).mean()
assert (classes[14:] == 0).all()
print(f"wheel: {cc.__version__}, Python {sys.version.split()[0]}, numpy {np.__version__}, classes as expected")
