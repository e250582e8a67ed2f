"""A scratch copy of the tree with a build of its own, and the tests that a file can fail."""

import os
import re
import resource
import shutil
import signal
import subprocess
from pathlib import Path

FOLDERS = ("src", "scan", "cli", "python")
_READERS = ("base", "dsp", "model", "formats", "fuzzy")  # folders that damaged files reach
_CONTAINERS = {"cfradial", "odim", "nexrad", "netcdf", "hdf5", "compressed", "containers"}  # of scan/formats
_SLOW = ("test_archive.py", "test_archive_command.py", "test_archive_dask.py", "test_readme.py")  # for what they name only
_MEMORY = 16 << 30
_MAX_FAILING = 5


class Tree:
    """A copy of the sources, and its release build inside it."""

    def __init__(self, root: Path, scratch: Path, jobs: int, log):
        self.root, self.copy, self.build = root, scratch / "tree", scratch / "tree/build/release"
        shared = Path("/dev/shm")  # the tests write many small files: memory is faster than a disk
        self.temporary = shared / f"mutate{os.getpid()}" if shared.is_dir() else scratch / "tmp"
        self.jobs, self.log = jobs, log
        self.failing: list[str] = []  # without any mutant
        self.seconds: dict[str, float] = {}  # of processor time that a test takes when nothing is wrong

    def files(self) -> list[str]:
        names = self._git("ls-files", "--cached", "--others", "--exclude-standard", *FOLDERS)
        return [name for name in names if re.search(r"\.(cpp|h|py)$", name) and (self.root / name).exists()]

    def _git(self, *arguments: str) -> list[str]:
        return subprocess.check_output(["git", "-C", str(self.root), *arguments], text=True).splitlines()

    def prepare(self, names: list[str]) -> None:
        """Copies what has changed, configures and builds."""
        wanted = set(self._git("ls-files", "--cached", "--others", "--exclude-standard"))
        if (self.copy / "files.txt").exists():
            for gone in set((self.copy / "files.txt").read_text().splitlines()) - wanted:
                (self.copy / gone).unlink(missing_ok=True)
        for name in wanted:
            source, target = self.root / name, self.copy / name
            if source.is_file() and not (target.is_file() and source.read_bytes() == target.read_bytes()):
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        (self.copy / "files.txt").write_text("\n".join(wanted))
        subprocess.run(["cmake", "--preset", "release"], cwd=self.copy, check=True, stdout=self.log, stderr=self.log)
        known = subprocess.check_output(["ninja", "-C", self.build, "-t", "targets", "all"], text=True)
        self.executables = sorted(set(re.findall(r"^bin/(\w+_tests):", known, re.M)))
        self.modules = sorted((self.copy / "tests/python").rglob("test_*.py"))
        self.formats = sorted((self.copy / "tests/formats_modern").glob("test_*.py"))
        stages = {stage for name in names for stage in self.stages(name)}
        if not self.make(sorted({target for stage in stages for target in _targets(stage)})):
            raise SystemExit(f"the tree does not build: see {self.log.name}")
        for test in sorted({name for stage in stages for test in stage for name in test.split()}):
            while killer := self.run(test):
                print(f"left out, since it fails without a mutant: {killer}", flush=True)
                if len(self.failing) == _MAX_FAILING:
                    raise SystemExit("too much fails without a mutant")
                self.failing.append(killer.split()[1])

    def stages(self, name: str) -> list[tuple[str, ...]]:
        """Tests that a file can fail, the likeliest first; each stage is built and run only when needed."""
        folder = name.split("/")
        if folder[0] == "python":
            stem = re.compile(rf"\b_?{Path(name).stem.strip('_')}\b")
            hits = {m: len(stem.findall(f"{m.stem[5:]} {m.read_text()}")) for m in self.modules}
            near = sorted((m for m in hits if hits[m]), key=lambda m: -hits[m])
            rest = [m for m in hits if not hits[m] and m.name not in _SLOW]
            return [(self._joined(group),) for group in (near[:3], near[3:], rest) if group]
        own = f"{folder[1] if folder[0] == 'src' else folder[0]}_tests"
        program = {"scan_tests", "cli_tests"}
        others = (set(self.executables) - program if folder[0] == "src" else program) - {own}
        if folder[0] == "src" and folder[1] not in _READERS:
            others.discard("damage_tests")
        linked = sorted(others & set(self.executables), key=lambda test: self.seconds.get(test, 0.0))
        first = [own] if own in self.executables else []
        formats = [self._joined(self.formats)] if folder[:2] == ["scan", "formats"] and self.formats else []
        if set(folder) & _CONTAINERS:
            return [tuple(stage) for stage in (formats, first, linked) if stage]
        last = sorted(program) if folder[0] == "src" else []
        return [tuple(stage) for stage in (first, linked, formats, last) if stage]

    def _joined(self, modules) -> str:
        """Modules that run together, by their paths below tests."""
        return " ".join(str(module.relative_to(self.copy / "tests")) for module in modules)

    def make(self, targets) -> bool:
        return subprocess.run(["ninja", "-C", self.build, f"-j{self.jobs}", *targets], stdout=self.log,
                              stderr=self.log).returncode == 0

    def verdict(self, mutant) -> str:
        """The test that fails with a mutant, or that none does, or that it does not compile."""
        path = self.copy / mutant.path
        original = path.read_text()
        path.write_text(original[:mutant.start] + mutant.replacement + original[mutant.end:])
        try:
            for stage in self.stages(mutant.path):
                if path.suffix != ".py" and not self.make(_targets(stage)):
                    return "did not compile"
                for test in stage:
                    killer = self.run(test)
                    if killer:
                        return killer
            return "survived"
        finally:
            path.write_text(original)

    def run(self, test: str) -> str:
        """Runs one executable or module up to its first failure; the name of what failed, or nothing."""
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir(parents=True)
        environment = dict(os.environ, TMPDIR=str(self.temporary), PYTHONPATH=str(self.build / "python"),
                           PYTHONDONTWRITEBYTECODE="1", MPLBACKEND="Agg",
                           HYPOTHESIS_STORAGE_DIRECTORY=str(self.temporary / "hypothesis"),
                           CLUTTERCLASSIFIER_PROGRAM=str(self.build / "bin/clutterclassifier"),
                           DUMP_SCAN=str(self.build / "bin/dump_scan"))
        if test.endswith(".py"):
            command = ["/usr/bin/python3", "-m", "pytest", "-x", "-v", "-p", "no:cacheprovider",
                       "--hypothesis-seed=0"] + [str(self.copy / "tests" / name) for name in test.split()]
            command += [f"--rootdir={self.copy}/tests", *(f"--deselect={name}" for name in self.failing)]
        else:
            command = [str(self.build / "bin" / test), "--gtest_fail_fast", "--gtest_filter=-" + ":".join(self.failing)]
        usual = self.seconds.get(test)
        used = os.times()
        code, said = _limited(command, environment, self.temporary, 10 * usual + 20 if usual else 300)
        now = os.times()
        if usual is None and code == 0:
            self.seconds[test] = now.children_user + now.children_system - used.children_user - used.children_system
        return "" if code == 0 else _first_failure(test, code, said)


def _targets(stage) -> list[str]:
    """What must be built before these tests."""
    python = any(test.startswith("python/") for test in stage)
    targets = {test for test in stage if not test.endswith(".py")}
    targets |= {"clutterclassifier_python"} if python else set()
    targets |= {"dump_scan"} if any(test.startswith("formats_modern/") for test in stage) else set()
    return sorted(targets | ({"clutterclassifier_program"} if python or "cli_tests" in stage else set()))


def _limited(command, environment, folder: Path, seconds: float) -> tuple[int | None, str]:
    """Exit code (None: out of time) and output of a command with bounded time and memory."""

    def bound():
        resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 2))
        resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))

    output = folder / "output.txt"
    with output.open("wb") as stream:
        process = subprocess.Popen(command, cwd=folder, env=environment, stdout=stream, stderr=stream,
                                   stdin=subprocess.DEVNULL, preexec_fn=bound, start_new_session=True)
        try:
            code = process.wait(timeout=10 * seconds)
        except subprocess.TimeoutExpired:
            code = None
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)  # and what it has started
            except ProcessLookupError:
                pass
            process.wait()
    with output.open("rb") as said:
        return None if code == -signal.SIGXCPU else code, said.read(1 << 24).decode(errors="replace")


def _first_failure(test: str, code: int | None, said: str) -> str:
    how = "" if code is not None and code > 0 else " (endless)" if code is None else f" (signal {-code})"
    failed = re.search(r"\[  FAILED  \] ([\w./]+)", said) or re.search(r"^(\S+::.*|\S+) (?:FAILED|ERROR)", said, re.M)
    started = re.findall(r"\[ RUN      \] ([\w./]+)", said)
    name = failed[1] if failed else started[-1] if started else ""
    if test.endswith(".py"):
        return f"pytest: {name.rpartition('/tests/')[2]}{how}"
    return f"{test.removesuffix('_tests')}: {name}{how}"
