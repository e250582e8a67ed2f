"""reference_test.py PROGRAM FOLDER: manual pages and completions say what the program's --help says.

Completion is asked for as a user does: with the tab key, of an interactive bash.
"""

import os
import pty
import re
import select
import shutil
import subprocess
import sys
from pathlib import Path

PROGRAM, FOLDER = sys.argv[1], Path(sys.argv[2])


def options_of(command):
    shown = subprocess.run([PROGRAM, *command, "--help"], capture_output=True, text=True, check=True).stdout
    listed = shown[shown.index("Options:"):].split("\n\n")[0]
    return re.findall(r"^  (?:-\w,)?(--[\w-]+)", listed, re.MULTILINE)


def commands(owner=()):
    """Words of every command, those of a command after it."""
    shown = subprocess.run([PROGRAM, *owner, "--help"], capture_output=True, text=True, check=True).stdout
    if "Subcommands:" not in shown:
        return
    listed = shown[shown.index("Subcommands:"):].split("\n\n")[0]
    for name in re.findall(r"^  (\w+)  ", listed, re.MULTILINE):
        yield [*owner, name]
        yield from commands([*owner, name])


class Shell:
    """An interactive bash in which only the completion is loaded."""

    def __init__(self):
        self.child, self.terminal = pty.fork()
        if self.child == 0:
            os.environ.update(PS1="ready> ", TERM="dumb", INPUTRC="/dev/null")
            os.execvp("bash", ["bash", "--norc", "--noprofile", "-i"])
        self.until("ready> ")
        self.send("bind 'set completion-query-items 0'; bind 'set page-completions off'; "
                  f"source '{FOLDER}/bash/clutterclassifier'; echo loaded$((1 + 1))\n", "loaded2.*ready> ")

    def until(self, pattern):
        """What is shown until the pattern, and the prompt after it: keys before that may get lost."""
        seen = ""
        while not re.search(pattern, seen, re.DOTALL):
            if not select.select([self.terminal], [], [], 60)[0]:
                raise AssertionError(f"no {pattern!r} in {seen!r}")
            seen += os.read(self.terminal, 65536).decode(errors="replace")
        return seen

    def send(self, keys, until):
        os.write(self.terminal, keys.encode())
        return self.until(until)

    def completions(self, line):
        """The words that two tabs list after the line (and those of the line)."""
        os.write(self.terminal, (line + "\t\t").encode())
        return set(self.send("\x15echo done$((1 + 1))\n", "done2.*ready> ").split())


def check_pages(names):
    for name in [[], *names]:
        page = FOLDER / "man1" / ("-".join(["clutterclassifier", *name]) + ".1")
        text = page.read_text().replace("\\-", "-")
        for option in options_of(name):
            assert option in text, f"{page.name}: no {option}"
        if shutil.which("man"):
            done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page],
                                  capture_output=True, text=True, env={**os.environ, "MANWIDTH": "80"})
            assert done.returncode == 0 and not done.stderr, f"{page.name}: {done.stderr}"


def check_bash(names):
    shell = Shell()
    for name in names:
        line = " ".join(["clutterclassifier", *name])
        options = set(options_of(name))
        assert name[-1] in shell.completions(line[:-len(name[-1])]), name
        found = shell.completions(line + " --")
        assert found >= options, f"{name}: {options - found} missing of {found}"
    assert shell.completions("clutterclassifier classify scan.uf --format ") >= {"uf", "csv", "plv"}


def check_others(names):
    for shell, file in (("zsh", "_clutterclassifier"), ("fish", "clutterclassifier.fish")):
        path = FOLDER / shell / file
        if shutil.which(shell):
            subprocess.run([shell, "-n", path], check=True)
        text = path.read_text()
        for name in names:
            for option in options_of(name):
                wanted = option if shell == "zsh" else f"-l {option[2:]}"
                assert wanted in text, f"{file}: no {option}"


NAMES = list(commands())
assert len(NAMES) > 5, NAMES
check_pages(NAMES)
check_bash(NAMES)
check_others(NAMES)
