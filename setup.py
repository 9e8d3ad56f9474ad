"""Builds the Python module by CMake, with the shared libraries beside it: pip install --no-build-isolation .

ORVANE_BUILD_DIR names a build folder that is there already, whose module is then taken. CMAKE_ARGS has further options
for CMake, as in "-DCMAKE_CXX_COMPILER=clang++".
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    """Makes `orvane/_orvane` and the libraries that it needs."""

    def build_extension(self, ext):
        target = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve()
        build = os.environ.get("ORVANE_BUILD_DIR") or self.compiled()
        with tempfile.TemporaryDirectory() as prefix:
            for component in ("runtime", "python"):
                subprocess.run(["cmake", "--install", build, "--prefix", prefix, "--component", component], check=True,
                               stdout=subprocess.DEVNULL)
            target.parent.mkdir(parents=True, exist_ok=True)
            for path in pathlib.Path(prefix).rglob("*.so*"):
                # Of a library and the links to it, the name that programs look for is enough.
                if path.name.startswith("_orvane"):
                    shutil.copyfile(path, target)
                elif re.search(r"\.so\.\d+\.\d+$", path.name):
                    shutil.copyfile(path, target.parent / path.name)

    def compiled(self):
        build = pathlib.Path(self.build_temp).resolve()
        ninja = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(["cmake", "-S", ROOT, "-B", build, *ninja, "-DCMAKE_BUILD_TYPE=Release",
                        "-DORVANE_BUILD_TESTS=OFF", "-DORVANE_BUILD_TOOL=OFF", "-DORVANE_BUILD_BENCH=OFF",
                        "-DORVANE_BUILD_PYTHON=ON", f"-DORVANE_PYTHON={sys.executable}",
                        f"-DPYTHON_EXECUTABLE={sys.executable}", *shlex.split(os.environ.get("CMAKE_ARGS", ""))],
                       check=True)
        subprocess.run(["cmake", "--build", build, "--parallel", str(os.cpu_count() or 1)], check=True)
        return build


def version():
    return re.search(r"project\(Orvane VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


setup(version=version(), ext_modules=[Extension("orvane._orvane", [])], cmdclass={"build_ext": CMakeBuild})
