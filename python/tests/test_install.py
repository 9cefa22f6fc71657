# SPDX-License-Identifier: MIT
"""pip installs the package, without the network, into an environment of the system's Python."""

import os
import pathlib
import subprocess
import sys

import pytest

pytestmark = pytest.mark.install

SOURCES = pathlib.Path(__file__).resolve().parents[1]

PROGRAM = """
import pathlib, pickle
import numpy as np
import vxclss

X = np.array([[9.0], [10.0], [11.0], [12.0], [13.0], [14.0]])
tool = vxclss.Tool().train(vxclss.DataProvider(X, [0, 0, 0, 1, 1, 1]), vxclss.TrainParamsBayesian())
assert pickle.loads(pickle.dumps(tool)).decide(X, n_jobs=2).tolist() == [0, 0, 0, 1, 1, 1]
folder = pathlib.Path(vxclss.__file__).parent
assert (folder / "py.typed").exists() and (folder / "_core.pyi").exists()
print(folder)
print(*sorted(path.name for path in folder.glob("lib*.so*")))
"""


def install(folder, **environment):
    """The folder of the package, and the libraries in it, after a fresh installation."""
    clean = {name: value for name, value in os.environ.items()
             if name not in ("PYTHONPATH", "LD_PRELOAD", "LD_LIBRARY_PATH")}
    python = folder / "env" / "bin" / "python"
    subprocess.run(["/usr/bin/python3", "-m", "venv", "--system-site-packages", folder / "env"],
                   check=True)
    subprocess.run([python, "-m", "pip", "install", "--quiet", "--no-index", "--no-build-isolation",
                    SOURCES], check=True, cwd=folder, env={**clean, **environment})
    done = subprocess.run([python, "-I", "-c", PROGRAM], check=True, cwd=folder, env=clean,
                          capture_output=True, text=True)
    package, libraries = done.stdout.split("\n")[:2]
    return pathlib.Path(package), libraries.split()


@pytest.mark.skipif(not pathlib.Path("/usr/bin/python3").exists(), reason="no system Python")
def test_it_is_built_from_the_tree(tmp_path):
    package, libraries = install(tmp_path, VXCLSS_FROM="tree")
    assert tmp_path in package.parents
    assert libraries == ["libvxclss.so.0", "libvxfoundation.so.0"]
    assert not list(SOURCES.glob("*.egg-info")) and not (SOURCES / "build").exists()


@pytest.mark.skipif("VXCLSS_BUILD" not in os.environ, reason="no build to install the library from")
def test_it_is_built_against_an_installed_library(tmp_path):
    # The top folder's rules are those of the libraries; commands may not have been built.
    subprocess.run(["cmake", f"-DCMAKE_INSTALL_PREFIX={tmp_path / 'prefix'}",
                    "-DCMAKE_INSTALL_LOCAL_ONLY=1", "-P",
                    pathlib.Path(os.environ["VXCLSS_BUILD"]) / "cmake_install.cmake"],
                   check=True, stdout=subprocess.DEVNULL)
    package, libraries = install(tmp_path, VXCLSS_FROM="installed",
                                 CMAKE_PREFIX_PATH=str(tmp_path / "prefix"))
    assert tmp_path in package.parents and libraries == []
    module = next(package.glob("_core*.so"))
    linked = subprocess.run(["ldd", module], check=True, capture_output=True, text=True).stdout
    assert str(tmp_path / "prefix") in linked


def test_an_installed_library_that_is_missing_is_told(tmp_path):
    done = subprocess.run(
        ["cmake", "-S", SOURCES, "-B", tmp_path / "build", "-DVXCLSS_FROM=installed",
         "-DVXCLSS_PYTHON_VERSION=99.0", f"-DPython_EXECUTABLE={sys.executable}"],
        capture_output=True, text=True)
    assert done.returncode != 0
    assert "no installed library found; tell where with CMAKE_PREFIX_PATH" in done.stderr
