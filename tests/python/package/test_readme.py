"""What README.md shows, run as a reader would run it."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import clutterclassifier as cc
import pytest

ROOT = Path(__file__).resolve().parents[3]
PROGRAM = Path(os.environ["CLUTTERCLASSIFIER_PROGRAM"])
LIBRARY = PROGRAM.parent.parent / "lib"


def blocks(language: str) -> list[str]:
    """The fenced blocks of one language."""
    return re.findall(rf"^```{language}\n(.*?)^```", (ROOT / "README.md").read_text(), re.M | re.S)


def run(command: list[str], folder: Path) -> str:
    path = f"{PROGRAM.parent}:{os.environ['PATH']}"
    environment = {**os.environ, "PATH": path, "PYTHONPATH": str(Path(cc.__file__).parents[1])}
    done = subprocess.run(command, cwd=folder, env=environment, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert done.returncode == 0, done.stdout
    return done.stdout


@pytest.fixture(scope="module")
def folder(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """Where the files are that the examples name."""
    folder = tmp_path_factory.mktemp("readme")
    run(["clutterclassifier", "demo", "--scan", "scan.uf", "-o", "demo.png"], folder)
    (folder / "volume").mkdir()
    for number in range(2):
        shutil.copy(folder / "scan.uf", folder / "volume" / f"{number}.uf")
    (folder / "gauges.txt").write_text("12000 45\n30500 310.5\n")
    return folder


def test_shell(folder):
    (block,) = blocks("sh")
    for line in block.splitlines():
        run(["sh", "-c", line], folder)
    for name in ("classes.uf", "classes.png", "classified/0.uf", "corrected.uf"):
        assert (folder / name).stat().st_size > 1000, name


def test_python(folder):
    (block,) = blocks("python")
    assert len([line for line in block.splitlines() if line.strip()]) == 5
    output = run([sys.executable, "-c", block], folder)
    assert "ground_clutter" in output
    assert (folder / "classes.png").stat().st_size > 10000


def test_package_and_program_have_one_version(folder):
    assert run([str(PROGRAM), "--version"], folder) == f"clutterclassifier {cc.__version__}\n"


def test_c(folder):
    (block,) = blocks("c")
    include, call = block.split("\n", 1)
    (folder / "example.c").write_text(f"""{include}
#include <stdio.h>
#include <stddef.h>
enum {{ nrays = 8, ngates = 50 }};
int main(void) {{
    static double zhh[nrays * ngates], zdr[nrays * ngates], phidp[nrays * ngates], rhohv[nrays * ngates];
    static double classes[nrays * ngates], ranges[ngates], azimuths[nrays], elevation = 0.5;
    for (int i = 0; i < nrays * ngates; ++i) zhh[i] = 30.0 - i % ngates * 2.0, rhohv[i] = 0.99;
    for (int i = 0; i < ngates; ++i) ranges[i] = 250.0 * i;
{call}
    for (int i = 0; i < ngates; ++i) printf("%.0f", classes[i]);
    return 0;
}}
""")
    build("cc", "c99", folder / "example.c")
    output = run(["./example"], folder)
    assert set(output) == {"0", "3"} and output.endswith("3")


def test_cpp(folder):
    (block,) = blocks("cpp")
    (folder / "example.cpp").write_text(block)
    build("c++", "c++11", folder / "example.cpp")
    run(["./example"], folder)
    (classes,) = cc.read(folder / "classes.plv")
    known = cc.synthetic_scan(5).TRUTH.values
    assert (classes.CLASS.values == known).mean() > 0.9


def build(compiler: str, standard: str, source: Path) -> None:
    """Compiles an example, with the membership functions of the package."""
    text = source.read_text()
    source.write_text(text.replace("/usr/local/share/clutterclassifier/membership/",
                                   cc.membership_directory() + "/"))
    run([compiler, f"-std={standard}", source.name, "-o", "example", f"-I{ROOT / 'include'}",
         f"-L{LIBRARY}", "-lclutterclassifier", f"-Wl,-rpath,{LIBRARY}"], source.parent)
