"""What one file costs from reading to writing, as a multiple of the entry point's time in the same run.

A file of 360 rays x 1,000 gates and seven fields. CPU time of one core, without what a process needs
to start: that of one file more in the same process, or where a command takes one file, that of the
file less that of a tiny one. All commands run in turn, the fastest of several rounds counts.
"""

from __future__ import annotations

import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable
from pathlib import Path

import clutterclassifier as cc
import numpy as np

TREE = Path(__file__).parent.parent
BIN = TREE / "build" / "release" / "bin"
PROGRAM = str(BIN / "clutterclassifier")
ROUNDS = int(os.environ.get("ROUNDS", "7"))
FILES = 8  # of a command that takes several
ARCHIVED = 24
SILENT = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
Seconds = Callable[[], float]


def cpu(command: list[str]) -> float:
    """CPU time of a program and the programs that it starts."""
    process = subprocess.Popen(command, **SILENT)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise RuntimeError(f"{' '.join(command)} failed: {process.returncode}")
    return usage.ru_utime + usage.ru_stime


def inside(call: Callable[[], object]) -> Seconds:
    """CPU time of a call in this process."""
    def measure() -> float:
        begin = time.process_time()
        call()
        return time.process_time() - begin

    call()
    return measure


class Best(dict[str, float]):
    """The least time of each measurement, all made in turn."""

    def __init__(self, rows: dict[str, Seconds], rounds: int) -> None:
        super().__init__({name: float("inf") for name in rows})
        for _ in range(rounds):
            for name, measure in rows.items():
                self[name] = min(self[name], measure())


class Files:
    """The files of a run, in a directory of their own."""

    def __init__(self, root: Path) -> None:
        self.root = root
        self.one = root / "scan.uf"
        cc.write(cc.synthetic_scan(5, nrays=360, ngates=1000), self.one)
        self.tiny = root / "tiny.uf"
        cc.write(cc.synthetic_scan(5, nrays=12, ngates=60), self.tiny)
        self.many = [root / f"scan{i}.uf" for i in range(ARCHIVED)]
        for path in self.many:
            shutil.copyfile(self.one, path)

    def several(self, *words: str) -> dict[str, Seconds]:
        """A command with one file, and with several."""
        command = [PROGRAM, *words, "-j", "1"]
        return {"few": lambda: cpu([*command, str(self.many[0])]),
                "more": lambda: cpu([*command, *map(str, self.many[:FILES + 1])])}

    def single(self, *words: str) -> dict[str, Seconds]:
        """A command with the tiny file, and with the large one."""
        return {"few": lambda: cpu([PROGRAM, *words, str(self.tiny)]),
                "more": lambda: cpu([PROGRAM, *words, str(self.one)])}

    def archive(self, count: int) -> Seconds:
        """Wall time of an archive run with two processes."""
        inputs = list(map(str, self.many[:count]))

        def measure() -> float:
            out = self.root / "archive"
            shutil.rmtree(out, ignore_errors=True)
            begin = time.perf_counter()
            subprocess.run([sys.executable, "-m", "clutterclassifier.archive", *inputs, "--out", str(out),
                            "--workers", "2"], check=True, **SILENT)
            return time.perf_counter() - begin

        return measure


def entry_point(name: str, root: Path) -> Seconds:
    """CPU time of a bench of the entry point with seven inputs, 60 % echo: "fast" or "literal"."""
    found = root / f"{name}.json"
    command = [str(BIN / "clutterclassifier_bench"), f"--benchmark_filter=entry/all_inputs/{name}$",
               "--benchmark_min_time=0.1", "--benchmark_out_format=json", f"--benchmark_out={found}"]

    def measure() -> float:
        subprocess.run(command, check=True, **SILENT)
        return json.loads(found.read_text())["benchmarks"][0]["cpu_time"] / 1e3

    return measure


def print_row(name: str, figure: float, goal: float, unit: str = "x") -> None:
    verdict = "" if figure <= goal else "   over the goal"
    print(f"{name:58} {figure:6.2f} {unit}   goal {goal:5.1f} {unit}{verdict}", flush=True)


def main() -> None:
    seven = [np.full((360, 1000), float(i)) for i in range(7)]
    with tempfile.TemporaryDirectory() as directory:
        files = Files(Path(directory))
        out = str(files.root) + "/out/"
        picture = str(files.root / "picture.png")
        sweep = cc.read(files.one)[0]
        groups: dict[str, tuple[dict[str, Seconds], float]] = {
            "classify in.uf -o out.uf": (files.several("classify", "-q", "-o", out), 3),
            "info": (files.several("info"), 4),
            "a picture of two panels, 1,800 pixels wide": (
                files.single("plot", "--field", "DZ,VR", "--width", "1800", "-o", picture), 14),
            "process, default algorithm": (
                files.single("process", "-q", "-o", str(files.root / "processed.uf")), 10),
        }
        rows: dict[str, Seconds] = {name: entry_point(name, files.root) for name in ("fast", "literal")}
        rows["reading"] = inside(lambda: [array.sum() for array in seven])
        for name, (pair, _) in groups.items():
            rows |= {f"{name}/{key}": measure for key, measure in pair.items()}
        rows |= {"Python: read and classify": inside(lambda: cc.read(files.one)[0].clutter.classify()),
                 "Python: clean": inside(lambda: sweep.clutter.clean()),
                 "Python: process": inside(lambda: sweep.clutter.process())}
        best = Best(rows, ROUNDS)
        wall = Best({"few": files.archive(4), "more": files.archive(ARCHIVED)}, 3)
        imports = Best({module: (lambda module=module: cpu([sys.executable, "-c", f"import {module}"]))
                        for module in ("numpy", "clutterclassifier")}, ROUNDS)
    entry = best["fast"]
    print(f"CPU of one file as a multiple of the entry point's time ({1e3 * entry:.2f} ms), "
          "360 x 1,000, start-up left out:")
    for name, (pair, goal) in groups.items():
        count = FILES if name in ("classify in.uf -o out.uf", "info") else 1
        print_row(name, (best[f"{name}/more"] - best[f"{name}/few"]) / count / entry, goal)
    for name, goal in (("Python: read and classify", 2), ("Python: clean", 2.5), ("Python: process", 10)):
        print_row(name, best[name] / entry, goal)
    print_row("archive, classes only, wall time a file, two processes",
              (wall["more"] - wall["few"]) / (ARCHIVED - 4) / entry, 2.5)
    print_row("import clutterclassifier, as a multiple of import numpy",
              imports["clutterclassifier"] / imports["numpy"], 1.3)
    ratio = best["literal"] / entry
    verdict = "" if ratio >= 20 else "   under the goal"
    print(f"{'entry point: time of the literal definition over its own':58} {ratio:6.2f} x   goal  20.0 x{verdict}")
    print_row("entry point: its time over that of reading seven arrays", entry / best["reading"], 3)


if __name__ == "__main__":
    main()
