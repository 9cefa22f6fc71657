# SPDX-License-Identifier: MIT
"""What an estimator's classes are called once they were in a model file."""

import subprocess

import numpy as np
import pytest

pytest.importorskip("sklearn")
import vxclss
from conftest import mixture
from vxclss.sklearn import (
    BayesClassifier, KNNClassifier, RuleTableClassifier, TreeClassifier, from_model, load,
)

WITH_TOOL = [BayesClassifier, KNNClassifier, TreeClassifier]
X, Y = mixture(120, 4, 3)


@pytest.mark.parametrize("estimator", WITH_TOOL)
@pytest.mark.parametrize("classes", [
    [-1, 0, 1], [1, 2, 10], [0, 2**40, 2**62], [False, True], [True], [0.0, 1.0, 2.0],
    [-2.0, 1e15, 1e16], ["1", "10", "2"], ["1", "a", "b"], ["01", "02", "03"], ["-0", "0", "1"],
    ["", "False", "True"], ["1", "1.5", "2"], ["0.50", "1.5"], ["inf", "nan"], ["1_0", "2_0"],
    ["9" * 400, "9" * 5000], np.array(["a", "b"], dtype=object)])
def test_a_model_file_keeps_the_classes(estimator, classes, tmp_path):
    y = np.asarray(classes)[Y % len(classes)]
    fitted = estimator().fit(X, y)
    fitted.save(tmp_path / "m")
    loaded = load(tmp_path / "m")
    assert loaded.classes_.tolist() == fitted.classes_.tolist()
    assert [type(name) for name in loaded.classes_.tolist()] == [
        type(name) for name in fitted.classes_.tolist()]
    assert loaded.score(X, y) == fitted.score(X, y)
    if estimator is KNNClassifier:
        assert loaded.partial_fit(X, y).tool_ == fitted.partial_fit(X, y).tool_


@pytest.mark.parametrize("classes, restored", [
    (["1", "2", "3"], [1, 2, 3]), (["0.5", "1.5"], [0.5, 1.5]), (["False", "True"], [False, True])])
def test_str_that_read_as_others_have_to_be_told(classes, restored, tmp_path):
    y = np.array(classes)[Y % len(classes)]
    fitted = KNNClassifier().fit(X, y)
    with pytest.warns(UserWarning, match="load.. will call the classes .*; call it with classes="):
        fitted.save(tmp_path / "m")
    assert load(tmp_path / "m").classes_.tolist() == restored
    loaded = load(tmp_path / "m", classes=classes)
    assert loaded.classes_.tolist() == classes
    assert loaded.predict(X).tolist() == fitted.predict(X).tolist()


def test_classes_that_are_told_are_those_of_the_model():
    model = vxclss.Model(KNNClassifier().fit(X, Y).tool_, [f"x{i}" for i in range(4)],
                         ["1", "10", "2"])
    assert from_model(model).classes_.tolist() == ["1", "10", "2"]
    told = from_model(model, classes=[1, 10, 2])
    assert told.predict(X).tolist() == np.array([1, 10, 2])[told.tool_.decide(X)].tolist()
    for wrong in ([1, 2, 10], [1, 10], ["a", "b", "c"], [1, 1, 1], "1"):
        with pytest.raises(ValueError):
            from_model(model, classes=wrong)


@pytest.mark.parametrize("measurements, categories", [
    ([], ["a", "b", "c"]), (["x0", "x0", "x1", "x2"], ["a", "b", "c"]),
    (["x0", "x1", "x2", "x3"], ["a"]), (["x0", "x1", "x2", "x3"], ["a", "a", "b"])])
def test_a_model_whose_names_dont_fit_makes_no_estimator(measurements, categories):
    model = vxclss.Model(KNNClassifier().fit(X, Y).tool_, measurements, categories)
    with pytest.raises(ValueError, match="names"):
        from_model(model)


def test_only_a_model_makes_an_estimator():
    for other in (None, KNNClassifier().fit(X, Y).tool_):
        with pytest.raises(TypeError, match="from_model.. takes a Model, not"):
            from_model(other)


@pytest.mark.parametrize("estimator", [*WITH_TOOL, RuleTableClassifier])
def test_a_file_that_cant_be_written_leaves_the_old_one(estimator, tmp_path, monkeypatch):
    def full(*arguments):
        raise OSError("the disk is full")

    (tmp_path / "m").write_bytes(b"old")
    monkeypatch.setattr("os.fsync", full)
    with pytest.raises(OSError, match="full"):
        estimator().fit(X, Y).save(tmp_path / "m")
    assert (tmp_path / "m").read_bytes() == b"old"
    assert list(tmp_path.iterdir()) == [tmp_path / "m"]


@pytest.mark.parametrize("classes", [[b"a", b"b"], ["2020-01-01", "2020-01-02"]])
def test_classes_of_other_kinds_are_refused(classes, tmp_path):
    kinds = np.array(classes) if isinstance(classes[0], bytes) else np.array(classes, "M8[D]")
    fitted = KNNClassifier().fit(X, Y % 2)
    fitted.classes_ = kinds
    with pytest.raises(ValueError, match="str, numbers or bool, not"):
        fitted.save(tmp_path / "m")
    assert list(tmp_path.iterdir()) == []


def test_a_model_of_the_command_has_numbers_as_classes(command, tmp_path):
    np.savetxt(tmp_path / "t.csv", np.c_[X, Y], fmt="%.17g", delimiter=",",
               header="x0,x1,x2,x3,kind", comments="")
    subprocess.run([command, "train", tmp_path / "t.csv", "--label", "kind", "--method", "knn",
                    "-o", tmp_path / "m"], check=True, capture_output=True)
    loaded = load(tmp_path / "m")
    assert loaded.classes_.tolist() == [0, 1, 2] and loaded.score(X, Y) > 0.5
