# SPDX-License-Identifier: MIT
import numpy as np
import pytest

pytest.importorskip("matplotlib")
pytest.importorskip("sklearn")
import matplotlib

matplotlib.use("Agg")
from matplotlib.colors import to_rgb
from matplotlib.figure import Figure

import vxclss
from conftest import mixture
from vxclss import plot
from vxclss.sklearn import BayesClassifier, KNNClassifier


@pytest.fixture
def ax():
    """An empty axis, which is drawn when the test is done: what can't be drawn fails."""
    figure = Figure()
    axis = figure.subplots()
    yield axis
    figure.canvas.draw()


def named(rows=200, width=2):
    X, y = mixture(rows, width, 3)
    return X, np.array(["washer", "bolt", "nut"])[y]


def texts(axis):
    return {(round(text.get_position()[1]), round(text.get_position()[0])): text.get_text()
            for text in axis.texts}


def test_a_confusion_matrix_counts_rows_of_the_truth(ax):
    truth = ["nut", "nut", "nut", "bolt", "bolt", "washer"]
    decided = ["nut", "bolt", "nut", "bolt", "bolt", "nut"]
    assert plot.confusion_matrix(ax, truth, decided) is ax
    assert texts(ax) == {(0, 0): "2", (1, 0): "1", (1, 1): "2", (2, 1): "1"}
    assert [label.get_text() for label in ax.get_yticklabels()] == ["bolt", "nut", "washer"]
    assert (ax.get_ylabel(), ax.get_xlabel()) == ("true", "decided")
    assert ax.get_title() == "66.7 % of 6 right"
    shades = ax.images[0].get_array()
    assert shades[0, 2].tolist() == [1.0, 1.0, 1.0]  # nothing counted
    assert shades[0, 0, 2] > shades[0, 0, 0]  # right: blue
    assert shades[2, 1, 0] > shades[2, 1, 2]  # wrong: orange
    assert shades[1, 0].sum() > shades[2, 1].sum()  # one of three is lighter than all


def test_a_confusion_matrix_of_given_classes_in_percent(ax):
    plot.confusion_matrix(ax, [1, 1, 2], [1, 3, 2], classes=[3, 2, 1], normalize=True)
    assert texts(ax) == {(2, 2): "50 %", (2, 0): "50 %", (1, 1): "100 %"}
    with pytest.raises(ValueError, match="4 is none of"):
        plot.confusion_matrix(ax, [1, 4], [1, 1], classes=[1, 2])
    with pytest.raises(ValueError, match="shape"):
        plot.confusion_matrix(ax, [1, 4], [1])


def test_a_confusion_matrix_of_nothing_or_of_mixed_kinds_is_refused(ax):
    with pytest.raises(ValueError, match="no rows"):
        plot.confusion_matrix(ax, [], [])
    with pytest.raises(ValueError, match="can't be compared: int, str"):
        plot.confusion_matrix(ax, ["1", "2"], [1, 2])
    with pytest.raises(ValueError, match="can't be compared"):
        plot.confusion_matrix(ax, [1.0, np.nan], [1.0, 2.0])


def test_decision_regions_are_the_classifiers_decisions(ax):
    X, y = named(width=3)
    fitted = BayesClassifier().fit(X, y)
    assert plot.decision_regions(ax, fitted, X, y, columns=(2, 0), resolution=40) is ax
    mesh = ax.collections[0]
    places = np.asarray(mesh.get_array()).reshape(40, 40)
    xs = np.linspace(*ax.get_xlim(), 40)
    ys = np.linspace(*ax.get_ylim(), 40)
    for row, column in [(0, 0), (0, 39), (39, 0), (39, 39), (20, 13), (7, 31)]:
        asked = [[ys[row], np.median(X[:, 1]), xs[column]]]
        assert fitted.classes_[int(places[row, column])] == fitted.predict(asked)[0]
    assert xs[0] < X[:, 2].min() and ys[-1] > X[:, 0].max()
    assert [text.get_text() for text in ax.get_legend().get_texts()] == ["bolt", "nut", "washer"]
    # A point that is decided wrongly has a black rim.
    rims = np.vstack([points.get_edgecolors() for points in ax.collections
                      if len(points.get_offsets()) > 1 and points.get_zorder() == 2])
    at_median = X.copy()
    black = (rims[:, :3] == 0.0).all(axis=1).sum()
    assert len(rims) == len(X) and black == (fitted.predict(at_median) != y).sum()


def points_of(axis):
    return {points.get_label(): len(points.get_offsets()) for points in axis.collections
            if points.get_zorder() == 2}


def test_decision_regions_show_points_of_longer_names_and_of_other_numbers(ax):
    X, y = mixture(120, 2, 3)
    names = np.array(["a", "b", "c"])[y]
    truth = np.where(y == 1, "aardvark", names)
    plot.decision_regions(ax, BayesClassifier().fit(X, names), X, truth, resolution=20)
    assert points_of(ax) == {"a": (y == 0).sum(), "aardvark": (y == 1).sum(), "b": 0,
                             "c": (y == 2).sum()}
    ax.clear()
    plot.decision_regions(ax, BayesClassifier().fit(X, y), X, y + 0.0, resolution=20)
    assert points_of(ax) == {str(label): (y == label).sum() for label in range(3)}
    ax.clear()
    plot.decision_regions(ax, BayesClassifier().fit(X, y), X, y + 0.5, resolution=20)
    assert sum(points_of(ax).values()) == 120


@pytest.mark.parametrize("bad, text", [
    (lambda y: y[:-1], r"y of shape \(199,\) for 200 rows"),
    (lambda y: y[:, None], "y of shape"),
    (lambda y: np.arange(len(y)), "can't be compared"),
    (lambda y: np.where(np.arange(len(y)) == 7, None, y), "can't be compared"),
])
@pytest.mark.parametrize("draw", [plot.decision_regions, plot.densities, plot.reject_curve])
def test_a_truth_that_does_not_fit_is_refused(ax, draw, bad, text):
    X, y = named()
    with pytest.raises(ValueError, match=text):
        draw(ax, BayesClassifier().fit(X, y), X, bad(y))


def test_decision_regions_of_a_tool(ax):
    X, y = mixture(100, 2, 10)
    tool = vxclss.Tool().train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(1))
    plot.decision_regions(ax, tool, X, resolution=30, names=("length", "width"))
    assert (ax.get_xlabel(), ax.get_ylabel()) == ("length", "width")
    assert set(np.unique(np.asarray(ax.collections[0].get_array()))) <= set(range(10))
    with pytest.raises(ValueError, match="columns"):
        plot.decision_regions(ax, tool, X, columns=(0, 2))


def test_decision_regions_know_the_columns_names(ax, recwarn):
    pandas = pytest.importorskip("pandas")
    X, y = named()
    fitted = KNNClassifier().fit(pandas.DataFrame(X, columns=["length", "width"]), y)
    plot.decision_regions(ax, fitted, X, y, resolution=20)
    assert (ax.get_xlabel(), ax.get_ylabel()) == ("length", "width")
    assert not [w for w in recwarn if "feature names" in str(w.message)]


@pytest.mark.parametrize("dependent", [None, "all"])
def test_densities_are_those_of_the_model(ax, dependent):
    X, y = named()
    X[::7, 1] = np.nan
    fitted = BayesClassifier(dependent=dependent).fit(X, y)
    assert plot.densities(ax, fitted, X, y, measurement=1, name="width") is ax
    lines = {line.get_label(): line for line in ax.get_lines()}
    assert list(lines) == ["bolt", "nut", "washer"] and ax.get_xlabel() == "width"
    for name, line in lines.items():
        x, height = line.get_data()
        here = X[y == name, 1]
        mean, variance = np.nanmean(here), np.nanvar(here, ddof=1)
        np.testing.assert_allclose(
            height, np.exp(-(x - mean) ** 2 / (2 * variance)) / np.sqrt(2 * np.pi * variance),
            rtol=1e-6)
    for patch in ax.patches:  # histograms, of area 1
        corners = patch.get_xy()
        steps = np.diff(corners[:, 0]) * corners[:-1, 1]
        assert round(abs(steps.sum()), 6) == 1.0


@pytest.mark.parametrize("measurement", [-1, 2])
def test_densities_of_a_column_that_is_not_there_are_refused(ax, measurement):
    X, y = named()
    with pytest.raises(ValueError, match=f"no measurement {measurement} in X"):
        plot.densities(ax, BayesClassifier().fit(X, y), X, y, measurement=measurement)


def test_densities_of_a_column_without_numbers_are_refused(ax):
    X, y = named()
    fitted = BayesClassifier().fit(X, y)
    with pytest.raises(ValueError, match="measurement 0 has no finite number"):
        plot.densities(ax, fitted, np.full_like(X, np.nan), y)


def test_a_class_without_rows_has_its_curve_alone(ax):
    X, y = named()
    plot.densities(ax, BayesClassifier().fit(X, y), X[y != "nut"], y[y != "nut"])
    assert (len(ax.get_lines()), len(ax.patches)) == (3, 2)


def test_binomial_densities_have_a_dot_for_each_success(ax):
    random = np.random.default_rng(0)
    X = random.binomial(8, 0.4, 300)[:, None]
    y = np.zeros(300, int)
    tool = BayesClassifier(distribution="binomial", max_values=[8.0]).fit(X, y).tool_
    plot.densities(ax, tool, X, y, bins=np.arange(-0.5, 9))
    x, height = ax.get_lines()[0].get_data()
    density = tool.classifier.category_models[0].densities[0]
    assert len(x) == density.num_trials + 1 and x[-1] == 8.0
    np.testing.assert_allclose(height.sum() * x[1], 1.0)


def test_only_bayes_has_densities(ax):
    X, y = named()
    with pytest.raises(TypeError, match="no densities"):
        plot.densities(ax, KNNClassifier().fit(X, y), X, y)


def test_a_reject_curve_rejects_the_doubtful_first(ax):
    X, y = named()
    fitted = BayesClassifier().fit(X[::2], y[::2])
    assert plot.reject_curve(ax, fitted, X[1::2], y[1::2], label="Bayes") is ax
    rejected, errors = ax.get_lines()[0].get_data()
    scores = fitted.predict_proba(X[1::2]).max(axis=1)
    wrong = fitted.predict(X[1::2]) != y[1::2]
    assert rejected[0] == 0.0 and errors[0] == 100.0 * wrong.mean() > 0.0
    for share, error in zip(rejected, errors):
        kept = scores >= np.sort(scores)[round(share / 100.0 * len(scores))]
        np.testing.assert_allclose(error, 100.0 * wrong[kept].mean())
    plot.reject_curve(ax, KNNClassifier(3).fit(X[::2], y[::2]), X[1::2], y[1::2], label="3 nearest")
    first, second = ax.get_lines()
    assert to_rgb(first.get_color()) != to_rgb(second.get_color())
    assert len(second.get_xdata()) <= 3  # rows of equal score are rejected together
    codes = np.searchsorted(fitted.classes_, y)
    plot.reject_curve(ax, fitted.tool_, X[1::2], codes[1::2])
    assert ax.get_lines()[2].get_ydata().tolist() == errors.tolist()
    with pytest.raises(ValueError, match="no rows"):
        plot.reject_curve(ax, fitted, X[:0], y[:0])


def test_a_reject_curve_rejects_rows_without_a_score_first(ax):
    class Doubtful:
        def predict_proba(self, X):
            return np.array([[0.9, 0.1], [np.nan, np.nan], [0.6, 0.4], [np.nan, np.nan]])

        def predict(self, X):
            return np.array([0, 1, 1, 1])

    plot.reject_curve(ax, Doubtful(), np.zeros((4, 1)), [0, 0, 1, 0])
    rejected, errors = ax.get_lines()[0].get_data()
    assert rejected.tolist() == [0.0, 50.0, 75.0] and errors.tolist() == [50.0, 0.0, 0.0]


def test_nothing_global_is_changed(ax):
    before = dict(matplotlib.rcParams)
    X, y = named()
    plot.confusion_matrix(ax, y, y)
    assert dict(matplotlib.rcParams) == before
