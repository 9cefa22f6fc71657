# SPDX-License-Identifier: MIT
"""What several test files use."""

import os

import hypothesis
import numpy as np
import pytest

import vxclss

# The machine that runs the tests may be slow or busy; no test measures time.
hypothesis.settings.register_profile(
    "vxclss", deadline=None, derandomize=True, database=None,
    suppress_health_check=[hypothesis.HealthCheck.too_slow])
hypothesis.settings.load_profile("vxclss")


def mixture(rows, width, categories, seed=1):
    """Normally distributed rows whose mean grows with the label, and their labels."""
    random = np.random.default_rng(seed)
    y = random.integers(0, categories, rows)
    return random.normal(size=(rows, width)) + 0.7 * y[:, None], y


def bits(array):
    """The array's bytes: equal ones hold the same numbers to the last bit, NaN included."""
    return np.ascontiguousarray(array).tobytes()


def leaf(*categories):
    """A leaf that answers with labels, the first one cheapest."""
    share = 1.0 / len(categories)
    return vxclss.DecisionTreeLeaf(vxclss.Result(
        [vxclss.CategoryResult(label, 1.0, share, 0.1 * place)
         for place, label in enumerate(categories)]))


def small_tree():
    return vxclss.DecisionTreeNode(
        vxclss.RangePredicate((0.0, 1.0), [1]), leaf(4),
        vxclss.DecisionTreeNode(vxclss.ComparisonPredicate(0, 2), leaf(2, 9), leaf(9)))


def trained(technique, rows=60, width=4, categories=3, seed=1, **params):
    """A trained tool of each technique, by name."""
    if technique == "tree":
        return vxclss.Tool().train(small_tree())
    X, y = mixture(rows, width, categories, seed)
    chosen = {"bayes": vxclss.TrainParamsBayesian, "knn": vxclss.TrainParamsKNN}[technique]
    return vxclss.Tool().train(vxclss.DataProvider(X, y), chosen(**params))


@pytest.fixture
def command():
    """Path of the vxclss command; tests that compare with it are skipped without one."""
    path = os.environ.get("VXCLSS_COMMAND")
    if not path:
        pytest.skip("VXCLSS_COMMAND does not name the vxclss command")
    return path
