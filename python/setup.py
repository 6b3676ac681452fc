"""Builds the extension with the project's own CMake build, so that the
module's kernels are compiled with exactly the library's flags."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

root = Path(__file__).resolve().parent.parent


def library_version():
    text = (root / "CMakeLists.txt").read_text()
    return re.search(r"project\(ornex_rt VERSION ([0-9.]+)", text).group(1)


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        build = Path(self.build_temp).resolve() / "cmake"
        configure = [
            "cmake", "-S", str(root), "-B", str(build),
            "-DCMAKE_BUILD_TYPE=Release",
            "-DORNEX_BUILD_PYTHON=ON", "-DORNEX_BUILD_TESTS=OFF",
            "-DORNEX_BUILD_TOOL=OFF", "-DORNEX_BUILD_BENCHMARKS=OFF",
            f"-DPython_EXECUTABLE={sys.executable}",
        ]
        jobs = str(os.cpu_count() or 2)
        subprocess.run(configure, check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["cmake", "--build", str(build), "--target", "ornex_python", "-j", jobs], check=True)
        built = next((build / "python").glob("ornex.*"))
        target = Path(self.get_ext_fullpath(extension.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(built, target)


if not (root / "include" / "ornex_rt.h").exists():
    sys.exit("setup.py builds from a checkout of ornex_rt: run it from its python/ folder")

setup(
    version=library_version(),
    ext_modules=[Extension("ornex", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    zip_safe=False,
)
