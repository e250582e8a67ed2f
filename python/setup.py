"""Builds the extension with the project's CMake and packs it with the library and its tables.

CLUTTERCLASSIFIER_BUILD names a configured build directory to take instead of a new one.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

PROJECT = Path(__file__).resolve().parent.parent


class CMakeBuild(build_ext):
    """One extension, which CMake builds: what belongs into the package is its "python" component."""

    def run(self):
        package = Path(self.get_ext_fullpath("clutterclassifier._core")).resolve().parent
        build = os.environ.get("CLUTTERCLASSIFIER_BUILD") or self.configure(Path(self.build_temp))
        subprocess.check_call(["cmake", "--build", build, "--target", "clutterclassifier_python",
                               "--parallel", str(os.cpu_count())])
        subprocess.check_call(["cmake", "--install", build, "--component", "python", "--prefix",
                               str(package)])

    @staticmethod
    def configure(build):
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.check_call([
            "cmake", "-S", str(PROJECT), "-B", str(build), *generator, "-DCMAKE_BUILD_TYPE=Release",
            "-DCLUTTERCLASSIFIER_BUILD_PYTHON=ON", "-DCLUTTERCLASSIFIER_BUILD_PROGRAM=OFF",
            "-DBUILD_TESTING=OFF", f"-DPython3_EXECUTABLE={sys.executable}"])
        return str(build)


setup(ext_modules=[Extension("clutterclassifier._core", [])], cmdclass={"build_ext": CMakeBuild},
      package_data={"clutterclassifier": ["py.typed", "*.pyi"]})
