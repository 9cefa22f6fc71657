# SPDX-License-Identifier: MIT
"""What the parameters of estimators, and the names of classes, may be."""

import numpy as np
import pytest

pytest.importorskip("sklearn")
from sklearn.ensemble import RandomForestClassifier
from sklearn.tree import DecisionTreeRegressor

import vxclss
from conftest import bits, mixture
from vxclss.sklearn import (
    BayesClassifier, KNNClassifier, RuleTableClassifier, TreeClassifier, from_model,
)

GROWING = [BayesClassifier, KNNClassifier]
WITH_TOOL = [BayesClassifier, KNNClassifier, TreeClassifier]


def named(rows=120, width=4, seed=1):
    X, y = mixture(rows, width, 3, seed)
    return X, np.array(["washer", "bolt", "nut"])[y]


@pytest.mark.parametrize("k, error", [
    (2.5, TypeError), ("3", TypeError), (None, TypeError), (0, ValueError), (-1, ValueError)])
def test_k_is_a_whole_number(k, error):
    X, y = named()
    with pytest.raises(error, match="n_neighbors is a whole number|K must be >= 1"):
        KNNClassifier(k).fit(X, y)
    with pytest.raises(TypeError, match="p is a number, not '2'"):
        KNNClassifier(p="2").fit(X, y)


def test_all_rows_are_neighbours_where_k_is_large():
    X, y = named()
    all_rows = KNNClassifier(len(X)).fit(X, y).predict_proba(X)
    for k in (np.int16(121), 2**70):
        assert bits(KNNClassifier(k).fit(X, y).predict_proba(X)) == bits(all_rows)


@pytest.mark.parametrize("rules, error, text", [
    ([], ValueError, "without rules"), ([0], TypeError, "a rule is"),
    ("ab", TypeError, "a rule is"), ([("a", [None] * 4, 1)], TypeError, "a rule is"),
    ([("a", [1, 2, 3, 4])], TypeError, "a score function is a FeatureScore or None, not 1")])
def test_what_are_no_rules_is_refused(rules, error, text):
    X, y = named()
    with pytest.raises(error, match=text):
        RuleTableClassifier(rules).fit(X, y)


@pytest.mark.parametrize("other", [
    DecisionTreeRegressor(), RandomForestClassifier(n_estimators=2), KNNClassifier()])
def test_only_a_classification_tree_is_converted(other):
    X, y = mixture(60, 2, 2)
    with pytest.raises(TypeError, match=f"DecisionTreeClassifiers, not {type(other).__name__}"):
        TreeClassifier.from_sklearn(other.fit(X, y))
    with pytest.raises(TypeError, match="DecisionTreeClassifiers, not"):
        TreeClassifier(learner=other).fit(X, y)


@pytest.mark.parametrize("dependent", [None, "all"])
@pytest.mark.parametrize("number", [np.inf, -np.inf, 1e200])
def test_infinity_has_scores_of_nan_and_the_first_label(dependent, number):
    X, y = named()
    fitted = BayesClassifier(dependent=dependent).fit(X, y)
    query = np.vstack([X[:1], [[number, 0.0, 0.0, 0.0]]])
    answers = fitted.tool_.run(query)
    assert np.isnan(answers.class_scores[1]).all() and answers.labels[1] == 0
    assert not np.isnan(answers.class_scores[0]).any()
    if np.isinf(number):
        with pytest.raises(ValueError, match="infinity"):
            fitted.predict(query)


@pytest.mark.parametrize("estimator", [*WITH_TOOL, RuleTableClassifier])
def test_sparse_rows_are_refused(estimator):
    sparse = pytest.importorskip("scipy.sparse")
    X, y = named()
    with pytest.raises(TypeError, match="dense data is required"):
        estimator().fit(sparse.csr_matrix(X), y)
    with pytest.raises(TypeError, match="dense data is required"):
        estimator().fit(X, y).predict(sparse.csr_matrix(X))


@pytest.mark.parametrize("keep_rows", [False, True])
def test_class_count_has_the_rows_that_wait(keep_rows):
    X, y = named()
    growing = BayesClassifier(keep_rows=keep_rows)
    assert not hasattr(growing, "class_count_")
    counts = np.unique(y, return_counts=True)[1]
    growing.partial_fit(X, y, classes=np.unique(y))
    assert growing.class_count_.tolist() == counts.tolist()
    growing.partial_fit(X[y == "nut"], y[y == "nut"])
    for _ in range(2):
        assert growing.class_count_.tolist() == [counts[0], 2 * counts[1], counts[2]]
        growing.predict(X)
    if keep_rows:
        growing.partial_fit(X, y)
        assert growing.class_count_.tolist() == [2 * counts[0], 3 * counts[1], 2 * counts[2]]
    growing.fit(X[:60], y[:60])
    assert growing.class_count_.sum() == 60
    assert not hasattr(from_model(vxclss.Model(growing.tool_, list("abcd"), list("123"))),
                       "class_count_")


@pytest.mark.parametrize("p", [np.inf, np.nan, 0.0, -1.0])
def test_an_order_that_measures_no_distance_is_refused(p):
    X, y = named()
    with pytest.raises(ValueError):
        KNNClassifier(p=p).fit(X, y)
    with pytest.raises(ValueError):
        KNNClassifier().fit(X, y).set_params(p=p).retrain()


@pytest.mark.parametrize("estimator, text", [
    (KNNClassifier(), "the label 0"), (BayesClassifier(), "the label 0"),
    (TreeClassifier("a", classes=["a", "b"]), "the label 0"),
    (TreeClassifier("a"), r"of one kind, not \['a', 0, 1\]"),
    (RuleTableClassifier([("a", [None] * 4)], classes=["a", "b"]), "the label 0"),
    (RuleTableClassifier([("a", [None] * 4)]), r"of one kind, not \['a', 0, 1\]")])
def test_a_label_of_another_kind_is_named(estimator, text):
    X, y = named()[0], np.tile([0, 1], 60)
    with pytest.raises(ValueError, match=text):
        if hasattr(estimator, "partial_fit"):
            estimator.partial_fit(X, y, classes=["a", "b"])
        else:
            estimator.fit(X, y)
    with pytest.raises(ValueError, match="3 is none of classes"):
        TreeClassifier(costs={("a", 3): 1.0}).fit(X, np.array(["a", "b"])[y])


@pytest.mark.parametrize("estimator", GROWING)
def test_labels_are_told_from_classes_by_value(estimator):
    X, y = mixture(120, 4, 2)
    for labels in (y.astype(float), y > 0, y.astype(np.uint8)):
        growing = estimator().partial_fit(X, labels, classes=[0, 1])
        assert growing.tool_ == estimator().fit(X, y).tool_


def test_costs_and_frequencies_go_by_name():
    X = np.array([[9.0], [10.0], [11.0], [12.0], [13.0], [14.0]])
    y = ["good"] * 3 + ["damaged"] * 3
    # The table of docs/bayes.md; classes are sorted, so damaged comes first.
    plain = BayesClassifier().fit(X, y)
    np.testing.assert_allclose(plain.predict_proba([[12.0]]), [[0.8176, 0.1824]], atol=5e-5)
    often = BayesClassifier(frequencies={"good": 9.0}).fit(X, y)
    assert often.predict([[12.0]]).tolist() == ["good"]
    for costs in ({("damaged", "good"): 5.0}, [[0.0, 5.0], [1.0, 0.0]],
                  vxclss.Costs(1.0, {(0, 1): 5.0})):
        dear = BayesClassifier(frequencies=[1.0, 9.0], costs=costs).fit(X, y)
        assert dear.predict([[12.0]]).tolist() == ["damaged"]
        np.testing.assert_allclose(dear.expected_costs([[12.0]]), [[0.6676, 1.6621]], atol=5e-5)
    assert BayesClassifier(frequencies="empirical").fit(X[1:], y[1:]).tool_.train_params \
        .category_frequencies == vxclss.Frequencies(1.0, {0: 3.0, 1: 2.0})
    for wrong in ({"frequencies": {"bad": 1.0}}, {"frequencies": [1.0]}, {"costs": [[0.0]]},
                  {"frequencies": "often"}, {"costs": {("good", "bad"): 1.0}}, {"costs": -1.0},
                  {"frequencies": {"good": 0.0}}, {"distribution": "poisson"},
                  {"distribution": ["normal"] * 2}, {"dependent": "some"}):
        with pytest.raises(ValueError):
            BayesClassifier(**wrong).fit(X, y)


@pytest.mark.parametrize("number", [np.inf, np.nan])
@pytest.mark.parametrize("estimator", WITH_TOOL)
def test_costs_and_frequencies_are_finite(estimator, number):
    X, y = named()
    matrix = np.ones((3, 3))
    matrix[0, 2] = number
    for costs in (number, matrix, {("nut", "bolt"): number}, vxclss.Costs(number),
                  vxclss.Costs(1.0, {(0, 1): number})):
        with pytest.raises(ValueError, match="a cost is finite, not (inf|nan)"):
            estimator(costs=costs).fit(X, y)
    estimator(costs=np.diag([number] * 3)).fit(X, y)  # right decisions cost nothing
    for frequencies in ([1.0, number, 1.0], {"nut": number}, vxclss.Frequencies(number)):
        with pytest.raises(ValueError, match="a frequency is finite, not (inf|nan)"):
            BayesClassifier(frequencies=frequencies).fit(X, y)
    fitted = BayesClassifier().fit(X, y).set_params(costs=number)
    with pytest.raises(ValueError, match="finite"):
        fitted.retrain()


def test_costs_go_from_pairs():
    X, y = named()
    for key in ("nut", 1, ("nut", "bolt", "washer")):
        with pytest.raises(ValueError, match="not from "):
            KNNClassifier(costs={key: 1.0}).fit(X, y)


def test_dependent_and_binomial_measurements():
    random = np.random.default_rng(3)
    X, y = mixture(300, 3, 2)
    X[:, 1] = X[:, 0] + 0.1 * X[:, 1]
    X[:, 2] = random.binomial(10, 0.3 + 0.3 * y)
    fitted = BayesClassifier(distribution=["normal", "normal", "binomial"], dependent=[[0, 1]],
                             max_values=[1.0, 1.0, 10.0]).fit(X, y)
    assert [sorted(model.measurement_groups) for model in fitted.tool_.classifier.category_models
            ] == [[[0, 1], [2]]] * 2
    np.testing.assert_allclose(
        fitted.tool_.classifier.category_models[0].densities[0].covariance,
        np.cov(X[y == fitted.tool_.classifier.category_models[0].category_label, :2].T), rtol=1e-9)
    assert fitted.score(X, y) > 0.8


@pytest.mark.parametrize("dependent, text", [
    ([[0, 9]], "has the column 9, and X has columns 0 to 3"), ([[0, -1]], "the column -1"),
    ([[0, 4]], "the column 4"), ([[0, 1.0]], "the column 1.0"), ([["a", "b"]], "the column 'a'"),
    ([0, 1], r"a list of lists of columns, such as \[\[0, 1\]\], not \[0, 1\]"),
    (["ab"], r"not \['ab'\]"), ("some", "not 'some'"), ([[[0, 1]]], "a list of lists")])
def test_dependent_columns_are_those_of_X(dependent, text):
    X, y = named()
    with pytest.raises(ValueError, match=text):
        BayesClassifier(dependent=dependent).fit(X, y)


def test_distribution_types_are_of_columns_of_X():
    X, y = named()
    with pytest.raises(ValueError, match="the column 9"):
        BayesClassifier(distribution=vxclss.DistributionTypes(dependent=[(0, [0, 9])])).fit(X, y)


def test_dependent_columns_go_by_name():
    pandas = pytest.importorskip("pandas")
    X, y = named()
    frame = pandas.DataFrame(X, columns=["length", "width", "area", "gloss"])
    by_name = BayesClassifier(dependent=[["area", "length"], np.array([1, 3])]).fit(frame, y)
    assert by_name.tool_ == BayesClassifier(dependent=[[2, 0], [1, 3]]).fit(X, y).tool_
    with pytest.raises(ValueError, match=r"the column 'weight', and X has \['length', 'width'"):
        BayesClassifier(dependent=[["weight", "area"]]).fit(frame, y)
