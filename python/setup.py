# SPDX-License-Identifier: MIT
"""Builds the compiled module with CMake; everything else stands in pyproject.toml.

Environment:
  VXCLSS_FROM        auto (default): an installed library where there is one, else the tree around
                     this folder; installed or tree: only that
  CMAKE_PREFIX_PATH  where to look for an installed library
  VXCLSS_CMAKE_ARGS  further arguments of CMake, separated as in a shell
"""

import os
import pathlib
import shlex
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    """Has CMake build the module and put it into the package."""

    def build_extension(self, ext):
        package = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve().parent
        source = os.environ.get("VXCLSS_FROM", "auto")
        folder = pathlib.Path(self.build_temp).resolve() / source
        configure = ["cmake", "-S", str(HERE), "-B", str(folder),
                     "-Uvxclss_DIR",  # CMAKE_PREFIX_PATH may have changed
                     f"-DPython_EXECUTABLE={sys.executable}",
                     f"-DVXCLSS_PYTHON_VERSION={self.distribution.get_version()}",
                     f"-DVXCLSS_FROM={source}",
                     f"-DCMAKE_BUILD_TYPE={'Debug' if self.debug else 'Release'}",
                     *shlex.split(os.environ.get("VXCLSS_CMAKE_ARGS", ""))]
        subprocess.run(configure, check=True)
        subprocess.run(["cmake", "--build", str(folder), "--target", "vxclss_python", "--parallel",
                        str(os.cpu_count() or 1)], check=True)
        for library in package.glob("lib*.so*"):  # bundled by an earlier build
            library.unlink()
        subprocess.run(["cmake", "--install", str(folder), "--prefix", str(package.parent)],
                       check=True)


def options():
    """Keeps what is built out of the sources where the tree has a folder for that."""
    if not (HERE.parent / "clss").is_dir():
        return {}
    build = HERE.parent / "build" / "pip"
    build.mkdir(parents=True, exist_ok=True)
    return {"build": {"build_base": str(build)}, "egg_info": {"egg_base": str(build)}}


setup(
    ext_modules=[Extension("vxclss._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    options=options(),
)
