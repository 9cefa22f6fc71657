# SPDX-License-Identifier: MIT
import inspect
import os
import pathlib
import re
import subprocess
import sys

import pytest

import vxclss
from vxclss import _core

PACKAGE = pathlib.Path(vxclss.__file__).parent


def run_mypy(module, *arguments):
    pytest.importorskip("mypy")
    return subprocess.run([sys.executable, "-m", module, *arguments], cwd=PACKAGE.parent,
                          capture_output=True, text=True,
                          env={**os.environ, "MYPYPATH": str(PACKAGE.parent)})


def test_the_package_passes_mypy(tmp_path):
    done = run_mypy("mypy", "--strict", "--cache-dir", str(tmp_path), "-p", "vxclss")
    assert done.returncode == 0, done.stdout + done.stderr


def test_the_stubs_are_those_of_the_module():
    done = run_mypy("mypy.stubtest", "--concise", "vxclss._core")
    # The compiled module's classes share a metaclass, and those that can't be made take any arguments
    # before they say so; neither is anybody's business.
    unwanted = [line for line in done.stdout.splitlines()
                if "metaclass differs" not in line
                and '__init__ is inconsistent, stub does not have *args argument "args"' not in line]
    assert done.stdout and not unwanted, done.stdout + done.stderr


def test_a_user_is_told_by_mypy(tmp_path):
    (tmp_path / "user.py").write_text("\n".join([
        "import numpy as np",
        "import vxclss",
        "tool = vxclss.Tool().train(vxclss.DataProvider([[1.0]], [0]), vxclss.TrainParamsKNN(1))",
        "a: vxclss.Result = tool.run(vxclss.FeaturePattern([1.0]))",
        "b: vxclss.BatchResult = tool.run(np.zeros((2, 1)), n_jobs=2)",
        "c: int = tool.run([[1.0]]).class_scores.ndim",
        "tool.train(3)",
        "vxclss.TrainParamsKNN(neighbours=3)",
        "d: float = sum(category.class_score for category in a)",
        "e: int = sum(label for pattern, label in vxclss.DataProvider([[1.0]], [0]))",
    ]))
    done = run_mypy("mypy", "--strict", "--cache-dir", str(tmp_path), str(tmp_path / "user.py"))
    assert [line.split(":")[1] for line in done.stdout.splitlines() if "error:" in line] == [
        "7", "8"], done.stdout + done.stderr


def test_what_is_public_is_exported():
    assert sorted(set(vxclss.__all__)) == sorted(vxclss.__all__)
    for name in vxclss.__all__:
        assert hasattr(vxclss, name)
    hidden = {"load_all", "model_bytes", "parsed_model"}
    for name in vars(_core):
        assert name.startswith("_") or name in hidden or name in vxclss.__all__


def test_everything_public_is_documented():
    for name in vxclss.__all__:
        value = getattr(vxclss, name)
        if inspect.isclass(value) or inspect.isroutine(value):
            assert inspect.getdoc(value), name


def members():
    """Every public method and property of a public class, by name."""
    for name in vxclss.__all__:
        cls = getattr(vxclss, name)
        for member, value in vars(cls).items() if inspect.isclass(cls) else ():
            value = getattr(value, "__func__", value)  # of a static method
            if not member.startswith("_") and (isinstance(value, property) or callable(value)):
                yield f"{name}.{member}", value


# What Python's enumerations have is known; of the others the names tell all.
UNDOCUMENTED = {"DistributionType.name", "DistributionType.value"}


def test_every_member_is_documented():
    found = dict(members())
    assert len(found) > 150 and "FeatureScore.score" in found and "Tool.from_bytes" in found
    signature = re.compile(r"(\d+\. )?\w+\(.*\)( -> .*)?|Overloaded function\.|")
    bare = {name for name, value in found.items()
            if all(signature.fullmatch(line) for line in (value.__doc__ or "").splitlines())}
    assert bare <= UNDOCUMENTED


def test_the_version_is_the_librarys():
    assert vxclss.__version__.count(".") == 2
