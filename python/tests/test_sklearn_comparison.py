# SPDX-License-Identifier: MIT
"""Against scikit-learn's own classifiers on the data sets that it ships.

Where definitions agree, so do all decisions. Where they don't, the tests turn scikit-learn's into
ours and count what is left:

- GaussianNB divides a variance by n, the library by n - 1.
- GaussianNB adds 1e-9 of the largest variance of all to every variance. The library gives only a
  measurement that is constant in a class a deviation: a thousandth of its value, or 0.001 if that
  is 0. Many pixels of the digits are constant, so these two answer differently there.
- Of training rows at the same distance from a query, KNeighborsClassifier takes any as the last
  neighbour, the library the one that it was given first. Whole pixels tie often.
"""

import numpy as np
import pytest

pytest.importorskip("sklearn")
from sklearn import datasets
from sklearn.metrics import pairwise_distances
from sklearn.model_selection import train_test_split
from sklearn.naive_bayes import GaussianNB
from sklearn.neighbors import KNeighborsClassifier
from sklearn.tree import DecisionTreeClassifier

from vxclss.sklearn import BayesClassifier, KNNClassifier, TreeClassifier

SETS = ["iris", "wine", "digits", "breast_cancer"]
CONSTANT = {"digits"}


def split(name):
    X, y = getattr(datasets, f"load_{name}")(return_X_y=True)
    return train_test_split(X, y, test_size=0.5, random_state=0, stratify=y)


def with_our_variances(bayes, X, y):
    """A GaussianNB whose variances follow the library's definition."""
    for i, label in enumerate(bayes.classes_):
        rows = X[y == label]
        variances = rows.var(axis=0, ddof=1)
        constant = (rows == rows[0]).all(axis=0)
        replaced = np.where(rows[0] == 0.0, 0.001, np.abs(rows[0]) / 1000.0) ** 2
        bayes.var_[i] = np.where(constant, replaced, variances)
    return bayes


@pytest.mark.parametrize("name", SETS)
def test_bayes_decides_as_gaussian_naive_bayes(name):
    X, queries, y, truth = split(name)
    ours = BayesClassifier(frequencies="empirical").fit(X, y)
    theirs = GaussianNB(var_smoothing=0.0).fit(X, y)
    with_our_variances(theirs, X, y)
    np.testing.assert_allclose(ours.predict_proba(queries), theirs.predict_proba(queries),
                               rtol=0, atol=1e-7)
    assert (ours.predict(queries) == theirs.predict(queries)).all()
    # As scikit-learn has it: n instead of n - 1 moves no decision but in close calls.
    plain = GaussianNB().fit(X, y)
    different = (ours.predict(queries) != plain.predict(queries)).mean()
    if name in CONSTANT:
        assert 0.0 < different < 0.05
    else:
        assert different <= 0.02
    assert ours.score(queries, truth) > plain.score(queries, truth) - 0.05


def has_one_answer(distances, y, k):
    """Whether rows as far away as the last neighbour are all neighbours, or of one class."""
    last = np.partition(distances, k - 1)[k - 1]
    tied = np.abs(distances - last) <= 1e-12 * last
    nearer = ((distances < last) & ~tied).sum()
    return nearer + tied.sum() == k or len(set(y[tied])) == 1


@pytest.mark.parametrize("name", SETS)
@pytest.mark.parametrize("k, p", [(1, 2.0), (5, 2.0), (5, 1.0)])
def test_nearest_neighbours_decide_as_scikit_learns(name, k, p):
    X, queries, y, truth = split(name)
    ours = KNNClassifier(k, p=p).fit(X, y)
    theirs = KNeighborsClassifier(k, p=p, algorithm="kd_tree").fit(X, y)
    clear = np.array([has_one_answer(distances, y, k)
                      for distances in pairwise_distances(queries, X, "minkowski", p=p)])
    assert clear.mean() > 0.9
    assert (ours.predict(queries) == theirs.predict(queries))[clear].all()
    np.testing.assert_allclose(ours.predict_proba(queries)[clear],
                               theirs.predict_proba(queries)[clear], rtol=0, atol=1e-15)
    assert abs(ours.score(queries, truth) - theirs.score(queries, truth)) < 0.02


@pytest.mark.parametrize("name", SETS)
def test_trees_decide_as_scikit_learns(name):
    X, queries, y, _ = split(name)
    theirs = DecisionTreeClassifier(random_state=0).fit(X, y)
    ours = TreeClassifier.from_sklearn(theirs)
    assert (ours.predict(queries) == theirs.predict(queries)).all()
    assert (ours.predict_proba(queries) == theirs.predict_proba(queries)).all()


@pytest.mark.parametrize("name", ["iris", "wine"])
def test_dependent_measurements_decide_as_quadratic_discriminants(name):
    from sklearn.discriminant_analysis import QuadraticDiscriminantAnalysis
    X, queries, y, _ = split(name)
    ours = BayesClassifier(frequencies="empirical", dependent="all").fit(X, y)
    theirs = QuadraticDiscriminantAnalysis().fit(X, y)
    np.testing.assert_allclose(ours.predict_proba(queries), theirs.predict_proba(queries),
                               rtol=0, atol=1e-6)
    assert (ours.predict(queries) == theirs.predict(queries)).all()
