"""Which inputs an archive has, and how its outputs are called."""

from __future__ import annotations

import os
from pathlib import Path

import pytest
from clutterclassifier.archive._plan import plan_jobs
from archives import make_scan, names_in, serial


def test_outputs_keep_the_folders_of_their_inputs(tmp_path):
    for name in ("a/x.nc", "b/x.nc", "b/deep/x.nc"):
        make_scan(tmp_path / "in" / name)
    summary = serial([tmp_path / "in/a", tmp_path / "in/b"], tmp_path / "out")
    assert summary.done == 3
    assert names_in(tmp_path / "out") == ["a/x.nc.nc", "b/deep/x.nc.nc", "b/x.nc.nc"]


def planned(inputs, out, **options) -> dict[str, str]:
    """Outputs of inputs, both as paths from here."""
    plan = plan_jobs(inputs, out, **options)
    return {os.path.relpath(job.source): os.path.relpath(job.output, out) for job in plan.jobs}


@pytest.fixture
def tree(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    for name in ("d/a/x.uf", "d/a/x.dx", "d/b/x.uf", "d/b/.hidden.uf", "d/out/x.uf.nc", "d/out/x.uf",
                 "d/[1].uf"):
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("radar")
    return tmp_path


@pytest.mark.parametrize("inputs, options, expected", [
    (["d"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/a/x.dx": "a/x.dx.nc", "d/b/x.uf": "b/x.uf.nc",
                 "d/[1].uf": "[1].uf.nc"}),
    (["d/a"], {"pattern": "*.dx"}, {"d/a/x.dx": "x.dx.nc"}),
    (["d/a"], {"base": "."}, {"d/a/x.uf": "d/a/x.uf.nc", "d/a/x.dx": "d/a/x.dx.nc"}),
    (["d/a/x.uf", "d/b/x.uf"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/a/x.uf", "d/a/x.uf", "./d/a"], {}, {"d/a/x.uf": "x.uf.nc", "d/a/x.dx": "x.dx.nc"}),
    (["d/*/x.uf"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/**/*.dx"], {}, {"d/a/x.dx": "a/x.dx.nc"}),
    (["d/[ab]"], {}, {"d/a/x.uf": "a/x.uf.nc", "d/a/x.dx": "a/x.dx.nc", "d/b/x.uf": "b/x.uf.nc"}),
    (["d/[1].uf"], {}, {"d/[1].uf": "[1].uf.nc"}),
    (["d/out/*"], {}, {"d/out/x.uf": "x.uf.nc"}),
    (["d/b/.hidden.uf"], {}, {"d/b/.hidden.uf": ".hidden.uf.nc"}),
])
def test_rule_of_names(tree, inputs, options, expected):
    assert planned(inputs, "d/out", **options) == expected


@pytest.mark.parametrize("inputs, options, error", [
    ([], {}, ValueError), (["d/out"], {}, ValueError), (["d"], {"base": "d/a"}, ValueError),
    (["d/c.uf"], {}, FileNotFoundError), (["d/*.c"], {}, FileNotFoundError),
])
def test_inputs_that_make_no_sense(tree, inputs, options, error):
    with pytest.raises(error):
        plan_jobs(inputs, "d/out", **options)


def test_links_are_followed_but_not_in_circles(tree):
    os.symlink("../b", "d/a/link")
    os.symlink("..", "d/b/circle")
    os.symlink("nowhere", "d/a/dangling")
    os.mkfifo("d/a/pipe")
    found = planned(["d/a"], "out")
    assert found.pop("d/a/link/x.uf") == "link/x.uf.nc"
    assert "d/a/x.uf" in found and not any("circle/b/circle" in path for path in found)
    assert planned(["d/a/**/*.uf"], "out").keys() >= {"d/a/x.uf", "d/a/link/x.uf"}
    plan = plan_jobs("d/a", "out")
    assert {Path(path).name: reason for path, reason in plan.failures.items()} == {
        "dangling": "No such file or directory", "pipe": "not a regular file"}
