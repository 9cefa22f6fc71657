# SPDX-License-Identifier: MIT
"""Trees and rule tables, which a person may write by hand."""

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st
from hypothesis.extra import numpy as npst

pytest.importorskip("sklearn")
from sklearn.base import clone
from sklearn.tree import DecisionTreeClassifier

import vxclss
from conftest import bits, mixture
from vxclss import (
    ComparisonPredicate, FeatureScoreOneSided, FeatureScoreTwoSided, RangePredicate, Rule,
    ValidityPredicate,
)
from vxclss._sklearn_tree import bound_of
from vxclss.sklearn import RuleTableClassifier, TreeClassifier


def named(rows=120, width=4, seed=1):
    X, y = mixture(rows, width, 3, seed)
    return X, np.array(["washer", "bolt", "nut"])[y]


BOUNDED = st.floats(-1e30, 1e30, width=64)


@given(st.one_of(BOUNDED, st.floats(-(2.0 ** 127), 2.0 ** 127, width=32)), st.data())
def test_a_bound_asks_what_a_threshold_of_scikit_learn_asks(threshold, data):
    bound = bound_of(threshold)
    near = [bound, np.nextafter(bound, np.inf), np.nextafter(bound, -np.inf), threshold,
            data.draw(BOUNDED)]
    for x in near:
        assert (np.float32(x) <= threshold) == (x <= bound)


@settings(max_examples=30)
@given(st.integers(0, 1000), st.integers(2, 4), st.sampled_from([None, 3]), st.booleans())
def test_a_converted_tree_decides_as_scikit_learns(seed, categories, depth, whole):
    random = np.random.default_rng(seed)
    X, y = mixture(120, 3, categories, seed)
    if whole:  # many equal values, and thresholds halfway between them
        X = X.round()
    given_tree = DecisionTreeClassifier(max_depth=depth, random_state=seed).fit(X, y)
    converted = TreeClassifier.from_sklearn(given_tree)
    queries = np.vstack([X, random.normal(size=(200, 3)) * 3])
    thresholds = given_tree.tree_.threshold[given_tree.tree_.feature >= 0]
    for threshold in thresholds:  # on the threshold, and where float32 rounds to it
        for x in (threshold, bound_of(threshold), np.nextafter(bound_of(threshold), np.inf)):
            queries = np.vstack([queries, np.full((1, 3), x)])
    assert (converted.predict(queries) == given_tree.predict(queries)).all()
    np.testing.assert_allclose(converted.predict_proba(queries),
                               given_tree.predict_proba(queries), rtol=0, atol=1e-15)
    assert bits(clone(converted).fit(X, y).predict_proba(queries)) == bits(
        converted.predict_proba(queries))


def test_trees_are_built_from_predicates():
    bolt_or_washer = (ValidityPredicate([0, 1]), (ComparisonPredicate(0, 1), "bolt", "washer"),
                      {"washer": 0.6, "bolt": 0.4})
    X, y = [[12.0, 5.0], [3.0, 5.0], [np.nan, 5.0]], ["bolt", "washer", "washer"]
    fitted = TreeClassifier(bolt_or_washer).fit(X, y)
    assert fitted.predict(X).tolist() == y
    np.testing.assert_allclose(fitted.predict_proba(X), [[1, 0], [0, 1], [0.4, 0.6]])
    np.testing.assert_allclose(fitted.expected_costs(X), [[0, 1], [1, 0], [0.6, 0.4]])
    careful = TreeClassifier(bolt_or_washer, costs={("bolt", "washer"): 3.0}).fit(X, y)
    assert careful.predict(X).tolist() == ["bolt", "washer", "bolt"]
    again = TreeClassifier(fitted.tool_.decision_tree, classes=["bolt", "washer"]).fit(X, y)
    assert again.tool_ == fitted.tool_ and clone(again).fit(X, y).tool_ == fitted.tool_
    for tree, error in [((RangePredicate((0, 1), [2]), "bolt", "washer"), "3 measurements"),
                        ((ComparisonPredicate(0, 1), "bolt"), "a node is"),
                        ({"bolt": -1.0}, "class scores")]:
        with pytest.raises(ValueError, match=error):
            TreeClassifier(tree).fit(X, y)
    with pytest.raises(ValueError, match="the label 1, and there are 1 classes"):
        TreeClassifier(fitted.tool_.decision_tree).fit(X[:1], y[:1])
    empty = vxclss.DecisionTreeLeaf(vxclss.Result())
    with pytest.raises(ValueError, match="row 0: the tree answers with no class"):
        TreeClassifier(empty).fit(X, y).predict(X)


def test_rule_tables_take_rules_and_reject():
    area = FeatureScoreTwoSided(x0=40, x1=30, xc=30, x0h=60, x1h=70, xch=70, y0=1, y1=0, y0h=1,
                                y1h=0)
    rules = [("bolt", [area, FeatureScoreOneSided()]), ("nut", [None, FeatureScoreOneSided()])]
    X, y = [[32.5, 0.0], [80.0, 0.5], [50.0, 2.0], [np.nan, 0.0]], ["bolt", "nut", "nut", "nut"]
    fitted = RuleTableClassifier(rules, threshold=0.4, reject="other").fit(X, y)
    assert fitted.predict(X).tolist() == ["bolt", "nut", "other", "nut"]
    np.testing.assert_allclose(fitted.rule_scores(X)[:3], [[0.5, 1], [0, 0.5], [0, 0]])
    # The best rule, where none passes.
    assert RuleTableClassifier(rules, threshold=0.6).fit(X, y).predict(X).tolist() == [
        "nut", "nut", "bolt", "nut"]
    labelled = [Rule([area, FeatureScoreOneSided()], 0)]
    assert RuleTableClassifier(labelled, classes=["bolt", "nut"]).fit(X, y).predict(
        X[:1]).tolist() == ["bolt"]
    for wrong in ({"rules": [("bolt", [area])]}, {"threshold": 2.0}, {"reject": "other"},
                  {"rules": [Rule([area, area], 5)]}, {"reach": 0.0}):
        with pytest.raises(ValueError):
            RuleTableClassifier(**wrong).fit([[1.0, 2.0], [2.0, 3.0]], ["a", "b"])


@settings(max_examples=25)
@given(npst.arrays(float, (7, 2), elements=st.floats(-5, 5)), st.floats(0, 1))
def test_thresholds_decide_as_the_table_does(X, threshold):
    rows, y = named(90, 2)
    fitted = RuleTableClassifier(threshold=threshold, reject="?").fit(rows, y)
    labels = fitted.table_.classify_hard_threshold(X, threshold)
    assert fitted.predict(X).tolist() == [
        "?" if label < 0 else fitted.classes_[label] for label in labels]
