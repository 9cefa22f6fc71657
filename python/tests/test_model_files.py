# SPDX-License-Identifier: MIT
import csv
import os
import stat
import subprocess

import numpy as np
import pytest

import vxclss
from conftest import bits, mixture, small_tree, trained


def write_csv(path, names, X, labels=None):
    with open(path, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(list(names) + (["kind"] if labels is not None else []))
        for i, row in enumerate(X):
            cells = ["" if np.isnan(x) else repr(float(x)) for x in row]
            writer.writerow(cells + ([labels[i]] if labels is not None else []))


def run_command(command, model, names, X, folder):
    """Decided name, class score, match score and expected cost of each row, as the command says."""
    write_csv(folder / "rows.csv", names, X)
    done = subprocess.run([command, "run", str(model), str(folder / "rows.csv")], check=True,
                          capture_output=True, text=True)
    rows = list(csv.DictReader(done.stdout.splitlines()))
    return ([row["category"] for row in rows],
            *(np.array([float(row[field]) for row in rows])
              for field in ("class_score", "match_score", "expected_cost")))


def assert_answers_like_the_command(model, answers, X):
    names, class_scores, match_scores, costs = answers
    batch = model.tool.run(X)
    assert [model.category_names[label] for label in batch.labels] == names
    cheapest = (np.arange(len(X)), np.searchsorted(batch.categories, batch.labels))
    assert bits(batch.class_scores[cheapest]) == bits(class_scores)
    assert bits(batch.match_scores[cheapest]) == bits(match_scores)
    assert bits(batch.expected_costs[cheapest]) == bits(costs)


MEASURES = ["größe, mm", "b", "c", "d"]
KINDS = ["bolt", "näg,el", "washer"]
PARAMS = {
    "knn": vxclss.TrainParamsKNN(4, distance_metric=1.5,
                                 misclassification_costs=vxclss.Costs(1.0, {(0, 1): 4.0})),
    "bayes": vxclss.TrainParamsBayesian(
        vxclss.DistributionTypes(dependent=[(0, [0, 1]), (1, [2, 3])]),
        category_frequencies=vxclss.Frequencies(1.0, {2: 5.0})),
}


@pytest.mark.parametrize("technique", ["bayes", "knn", "tree"])
def test_the_command_opens_what_python_has_written(technique, command, tmp_path):
    if technique == "tree":
        tool, measures, kinds = trained("tree"), ["p", "q", "r"], list("abcdefghij")
        X = mixture(300, 3, 3)[0]
    else:
        X, y = mixture(300, 4, 3)
        tool = vxclss.Tool().train(vxclss.DataProvider(X, y), PARAMS[technique])
        measures, kinds = MEASURES, KINDS
    if technique != "knn":
        X[::7, 1] = np.nan
    vxclss.save(tmp_path / "m.model", tool, measures, kinds)
    answers = run_command(command, tmp_path / "m.model", measures, X, tmp_path)
    model = vxclss.load(tmp_path / "m.model")
    assert (model.measurement_names, model.category_names) == (measures, kinds)
    assert model.tool == tool
    assert_answers_like_the_command(model, answers, X)
    assert_answers_like_the_command(vxclss.Model(tool, measures, kinds), answers, X)


@pytest.mark.parametrize("method", [["--method", "knn", "--k", "3", "--cost", "bolt,washer=3"],
                                    ["--method", "bayes", "--dependent", "b,c"]])
def test_python_opens_what_the_command_has_written(method, command, tmp_path):
    X, y = mixture(200, 4, 3)
    write_csv(tmp_path / "train.csv", MEASURES, X, [KINDS[label] for label in y])
    subprocess.run([command, "train", str(tmp_path / "train.csv"), "--label", "kind", *method,
                    "-o", str(tmp_path / "m.model")], check=True, capture_output=True)
    model = vxclss.load(tmp_path / "m.model")
    assert model.measurement_names == MEASURES and sorted(model.category_names) == sorted(KINDS)
    answers = run_command(command, tmp_path / "m.model", MEASURES, X, tmp_path)
    assert_answers_like_the_command(model, answers, X)
    # Written again, it is the same file, byte for byte.
    vxclss.save(tmp_path / "again.model", model.tool, model.measurement_names,
                model.category_names)
    assert (tmp_path / "again.model").read_bytes() == (tmp_path / "m.model").read_bytes()


def test_names_are_made_where_none_are_given(tmp_path):
    vxclss.save(tmp_path / "a", trained("knn"))
    model = vxclss.load(tmp_path / "a")
    assert model.measurement_names == ["x0", "x1", "x2", "x3"]
    assert model.category_names == ["0", "1", "2"]
    vxclss.save(tmp_path / "b", vxclss.Tool().train(small_tree()))
    assert vxclss.load(tmp_path / "b").measurement_names == ["x0", "x1", "x2"]
    assert len(vxclss.load(tmp_path / "b").category_names) == 10
    assert repr(model) == ("<Model <Tool with <ClassifierKNN of 60 patterns, k=5>>: "
                           "4 measurements, 3 categories>")


def test_a_tool_alone_is_no_model_file_but_begins_like_one(tmp_path):
    tool = trained("knn")
    vxclss.save(tmp_path / "m", tool)
    data = (tmp_path / "m").read_bytes()
    assert data.startswith(tool.to_bytes())
    (tmp_path / "tool").write_bytes(tool.to_bytes())
    with pytest.raises(vxclss.Malformed):
        vxclss.load(tmp_path / "tool")


@pytest.mark.parametrize("damage, error", [
    (lambda d: d[:-1], vxclss.Malformed), (lambda d: d + b"x", vxclss.Malformed),
    (lambda d: b"", vxclss.Malformed), (lambda d: b"a,b\n1,2\n", vxclss.ArchiveError),
    (lambda d: d.replace("vxclss model".encode("utf-32-le"), "vxclss model".encode("utf-32-le")[:-4]
                         + b"m\0\0\0"), vxclss.Malformed),
    (lambda d: d.replace("vxclss model".encode("utf-32-le") + b"\0",
                         "vxclss model".encode("utf-32-le") + b"\1"), vxclss.UnknownVersion)])
def test_what_is_no_model_file_is_refused(tmp_path, damage, error):
    vxclss.save(tmp_path / "m", trained("bayes"))
    (tmp_path / "m").write_bytes(damage((tmp_path / "m").read_bytes()))
    with pytest.raises(error):
        vxclss.load(tmp_path / "m")


@pytest.mark.parametrize("technique", ["bayes", "knn", "tree"])
@pytest.mark.parametrize("measurements, categories, text", [
    ([], None, "0 measurement names"), (2, None, "2 measurement names"),
    (None, [], "0 category names"), (None, 2, "2 category names for labels up to"),
    (["a"] * 4, None, "two measurement names are equal"),
    (None, ["a"] * 10, "two category names are equal")])
def test_a_file_whose_names_dont_fit_is_refused(technique, measurements, categories, text, command,
                                               tmp_path):
    def names(given, count):
        return given if isinstance(given, list) else [f"x{i}" for i in range(given or count)]

    tool = trained(technique)
    measurements, categories = names(measurements, 4), names(categories, 10)
    (tmp_path / "m").write_bytes(vxclss._core.model_bytes(tool, measurements, categories))
    with pytest.raises(vxclss.Malformed, match=text):
        vxclss.load(tmp_path / "m")
    assert subprocess.run([command, "check", tmp_path / "m"], capture_output=True).returncode != 0


def test_an_untrained_tool_is_no_model(tmp_path):
    with pytest.raises(vxclss.NotTrained):
        vxclss.save(tmp_path / "m", vxclss.Tool())
    (tmp_path / "m").write_bytes(vxclss._core.model_bytes(vxclss.Tool(), [], []))
    with pytest.raises(vxclss.NotTrained):
        vxclss.load(tmp_path / "m")
    with pytest.raises(FileNotFoundError):
        vxclss.load(tmp_path / "none")


@pytest.mark.parametrize("names, error, text", [
    ((["a", "b", "c"], None), ValueError, "3 measurement names for a tool of 4 measurements"),
    ((["a", "b", "c", "a"], None), ValueError, "two measurement names are equal"),
    ((None, ["a", "b"]), ValueError, "2 category names for labels up to 2"),
    ((None, ["a", "b", "b"]), ValueError, "two category names are equal"),
    (("abcd", None), TypeError, "a list of str"),
    ((None, [1, 2, 3]), TypeError, "names are str, not int"),
    ((None, ["a", "b", "\ud800"]), UnicodeError, ""),
])
def test_what_save_refuses_leaves_the_old_file(tmp_path, names, error, text):
    (tmp_path / "m").write_bytes(b"old")
    with pytest.raises(error, match=text):
        vxclss.save(tmp_path / "m", trained("knn"), *names)
    assert (tmp_path / "m").read_bytes() == b"old"
    assert os.listdir(tmp_path) == ["m"]


def test_only_a_tool_is_saved(tmp_path):
    vxclss.save(tmp_path / "m", trained("knn"))
    for swapped in ((trained("knn"), tmp_path / "m"), (tmp_path / "m", None),
                    (tmp_path / "m", vxclss.load(tmp_path / "m")), (None, trained("knn"))):
        with pytest.raises(TypeError):
            vxclss.save(*swapped)


def test_a_label_beyond_a_million_wants_names(tmp_path):
    tool = vxclss.Tool().train(vxclss.DataProvider([[1.0]], [2_000_000]), vxclss.TrainParamsKNN(1))
    with pytest.raises(ValueError, match="labels up to 2000000 need category_names"):
        vxclss.save(tmp_path / "m", tool)


def test_saving_keeps_links_and_permissions(tmp_path):
    (tmp_path / "real").write_bytes(b"old")
    os.chmod(tmp_path / "real", 0o640)
    os.symlink("real", tmp_path / "link")
    vxclss.save(str(tmp_path / "link"), trained("bayes"))
    assert os.path.islink(tmp_path / "link")
    assert stat.S_IMODE(os.stat(tmp_path / "real").st_mode) == 0o640
    assert sorted(os.listdir(tmp_path)) == ["link", "real"]
    assert vxclss.load(tmp_path / "real").tool == trained("bayes")


def test_only_a_regular_file_is_replaced(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    os.symlink("pipe", tmp_path / "link")
    for path in (tmp_path / "pipe", tmp_path / "link", tmp_path):
        with pytest.raises(OSError, match="is not a regular file"):
            vxclss.save(path, trained("bayes"))
    assert sorted(os.listdir(tmp_path)) == ["link", "pipe"]
    assert stat.S_ISFIFO(os.stat(tmp_path / "pipe").st_mode)
