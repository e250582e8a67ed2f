"""The command for archives: its progress and its exit codes."""

from __future__ import annotations

import io
import os
import signal

import pytest
from clutterclassifier.archive import _command
from clutterclassifier.archive._progress import Progress
from archives import make_archive, names_in


class Terminal(io.StringIO):
    def isatty(self) -> bool:
        return True


def shown(stream: io.StringIO, failed: int, notes: int = 0, wanted: bool = True, step: float = 0.1) -> str:
    """What is shown of 150 files of 1200, one each `step` seconds, some of which fail."""
    now = [0.0]
    progress = Progress(1200, stream, wanted=wanted, clock=lambda: now[0])
    for i in range(150):
        now[0] += step
        progress.advance(failed=i < failed)
        if i < notes:
            progress.note(f"note {i}")
    now[0] += 0.5
    progress.refresh()
    return stream.getvalue()


def test_bar_on_a_terminal(monkeypatch):
    monkeypatch.setenv("COLUMNS", "100")
    last = shown(Terminal(), failed=2).split("\r\033[K")[-1]
    assert last == f"[{'#' * 3:24}] 150 of 1200 files, 9.7 a second, 1:48 left, 2 failed"
    monkeypatch.setenv("COLUMNS", "30")
    assert all(len(line) < 30 for line in shown(Terminal(), failed=2).split("\r\033[K"))


def test_lines_elsewhere():
    assert shown(io.StringIO(), failed=0) == ""  # 30 seconds are not over yet
    lines = shown(io.StringIO(), failed=0, step=0.375).splitlines()
    assert lines == ["80 of 1200 files, 2.7 a second, 7:00 left"]
    text = shown(io.StringIO(), failed=0, notes=100)
    assert text.splitlines()[0] == "note 0" and text.splitlines()[-1] == "more such lines are not shown"
    assert len(text.splitlines()) == 20
    assert shown(Terminal(), failed=3, notes=3, wanted=False) == ""

def test_exit_codes(tmp_path, capsys):
    from clutterclassifier.archive._command import main

    make_archive(tmp_path / "in", 2)
    call = [str(tmp_path / "in"), "--out", str(tmp_path / "out"), "--workers", "0"]
    assert main([*call, "--inputs", "dbzh_texture,zdr_texture", "--texture-window", "7x3"]) == 0
    assert "2 done" in capsys.readouterr().out
    (tmp_path / "in/bad.uf").write_text("no radar data")
    assert main(call) == 1
    output = capsys.readouterr()
    assert "2 done" in output.out and "bad.uf" in output.err and "failures.csv" in output.err
    assert main([*call, "--quiet"]) == 1
    output = capsys.readouterr()
    assert output.out == "" and len(output.err.splitlines()) == 1
    for wrong in (["--inputs", "nothing"], ["--base", str(tmp_path / "elsewhere")], ["--min-snr", "high"],
                  ["--config", "none"], ["--out", str(tmp_path / "in/bad.uf")], ["--fields", "dbzh"], ["--membership", "/nowhere"]):
        with pytest.raises(SystemExit) if wrong[1] in ("high", "dbzh") else open(os.devnull) as caught:
            assert main([*call, *wrong]) == 2
        assert getattr(getattr(caught, "value", None), "code", 2) == 2


def test_a_batch_system_ends_a_run_as_a_user_does(tmp_path, capsys, monkeypatch):

    make_archive(tmp_path / "in", 1)
    before = signal.getsignal(signal.SIGTERM)
    monkeypatch.setattr(_command.Run, "perform", lambda run: os.kill(os.getpid(), signal.SIGTERM))
    try:
        assert _command.main([str(tmp_path / "in"), "--out", str(tmp_path / "out")]) == 130
    finally:
        signal.signal(signal.SIGTERM, before)
    assert "continues here" in capsys.readouterr().err


def test_two_runs_do_not_share_a_folder(tmp_path, capsys):
    from clutterclassifier.archive._command import main
    from clutterclassifier.archive._files import alone_in

    make_archive(tmp_path / "in", 1)
    (tmp_path / "out").mkdir()
    with alone_in(str(tmp_path / "out"), ".archive.lock"):
        assert main([str(tmp_path / "in"), "--out", str(tmp_path / "out"), "--workers", "0"]) == 2
    assert "another run" in capsys.readouterr().err
    assert names_in(tmp_path / "out") == []
