# SPDX-License-Identifier: MIT
"""The scikit-learn estimator of decision trees.

A tree of scikit-learn asks whether float32(x) <= threshold, with a threshold of 8 bytes; a range
predicate asks whether x <= bound, all of 8 bytes. The bound is the largest number that rounds to a
float32 within the threshold, so the answers are the same for every number.
"""

from __future__ import annotations

from typing import Any, Dict, List, Mapping, Optional, Set, Tuple, Type, TypeVar, Union

import numpy as np
import numpy.typing as npt
from sklearn.base import clone  # type: ignore[import]
from sklearn.tree import DecisionTreeClassifier  # type: ignore[import]
from sklearn.utils.validation import check_is_fitted  # type: ignore[import]

from ._core import (
    CategoryResult, Costs, DecisionTree, DecisionTreeLeaf, DecisionTreeNode, Predicate,
    RangePredicate, Result, Tool,
)
from ._sklearn_base import (
    CostsByName, Floats, Names, ToolEstimator, classes_among, codes_of, costs_of,
    unchanged_on_failure,
)

# A name, names with their class scores, or (question, tree for yes, tree for no).
Nested = Union[Any, Mapping[Any, float], Tuple[Predicate, Any, Any]]

_Self = TypeVar("_Self", bound="TreeClassifier")


def bound_of(threshold: float) -> float:
    """The largest double x for which float32(x) <= threshold; the threshold is finite."""
    single = np.float32(threshold)
    if single > threshold:
        single = np.nextafter(single, np.float32(-np.inf))
    if np.isinf(single):  # below all numbers of 4 bytes
        return float(np.nextafter(-_OVERFLOW, -np.inf)) if threshold < 0 else _LARGEST
    following = np.nextafter(single, np.float32(np.inf))
    if np.isinf(following):
        return _LARGEST
    middle = (float(single) + float(following)) / 2.0  # exact
    is_even = int(single.view(np.uint32)) % 2 == 0
    return middle if is_even else float(np.nextafter(middle, -np.inf))


# Half a unit above the largest float32: from there on numbers round to infinity.
_OVERFLOW = float(np.finfo(np.float32).max) + 2.0 ** 103
_LARGEST = float(np.nextafter(_OVERFLOW, 0.0))


def _cost_matrix(costs: Costs, count: int) -> Floats:
    return np.array([[0.0 if true == assigned else costs.misclassification_cost(true, assigned)
                      for assigned in range(count)] for true in range(count)])


def _leaf(scores: Floats, matrix: Floats) -> DecisionTreeLeaf:
    """A leaf with these class scores (c), which need not sum to 1."""
    shares = scores / scores.sum()
    expected = shares @ matrix
    # Results sort by cost and keep this order where costs are equal, to the last bit or after
    # rounding: the likelier class first, as scikit-learn decides.
    order = np.lexsort((-shares, expected))
    best = shares.max()
    return DecisionTreeLeaf(Result([
        CategoryResult(int(i), shares[i] / best, shares[i], expected[i]) for i in order]))


def tree_of(fitted: Any, costs: Costs) -> DecisionTree:
    """The tree of a fitted DecisionTreeClassifier; labels are places in its ``classes_``."""
    nodes = fitted.tree_
    if fitted.n_outputs_ != 1:
        raise ValueError("a tree of several outputs can't be converted")
    matrix = _cost_matrix(costs, len(fitted.classes_))
    built: List[DecisionTree] = [None] * nodes.node_count  # type: ignore[list-item]
    for node in reversed(range(nodes.node_count)):  # children have larger numbers
        yes, no = nodes.children_left[node], nodes.children_right[node]
        if yes == no:
            built[node] = _leaf(nodes.value[node, 0], matrix)
        else:
            question = RangePredicate((-np.inf, bound_of(nodes.threshold[node])),
                                      [int(nodes.feature[node])])
            built[node] = DecisionTreeNode(question, built[yes], built[no])
    return built[0]


def _names_in(tree: Nested, names: Set[Any]) -> None:
    if isinstance(tree, tuple):
        _, yes, no = _question(tree)
        _names_in(yes, names)
        _names_in(no, names)
    elif isinstance(tree, Mapping):
        names.update(tree)
    elif not isinstance(tree, DecisionTree):
        names.add(tree)


def _question(tree: Tuple[Any, ...]) -> Tuple[Predicate, Any, Any]:
    if len(tree) != 3 or not isinstance(tree[0], Predicate):
        raise ValueError("a node is (predicate, tree for yes, tree for no)")
    return tree[0], tree[1], tree[2]


def _built(tree: Nested, classes: Names, matrix: Floats) -> DecisionTree:
    if isinstance(tree, DecisionTree):
        return tree
    if isinstance(tree, tuple):
        predicate, yes, no = _question(tree)
        return DecisionTreeNode(predicate, _built(yes, classes, matrix),
                                _built(no, classes, matrix))
    shares: Dict[Any, float] = dict(tree) if isinstance(tree, Mapping) else {tree: 1.0}
    scores = np.zeros(len(classes))
    scores[codes_of(list(shares), classes)] = list(shares.values())
    if not (scores >= 0.0).all() or not scores.sum() > 0.0:
        raise ValueError(f"the class scores of a leaf are >= 0 and one is above 0: {tree!r}")
    return _leaf(scores, matrix)


class TreeClassifier(ToolEstimator):
    """A decision tree: built from predicates, or learnt by scikit-learn's DecisionTreeClassifier.

    A tree that is given stays as it is: fit() looks at X and y only for their width and names. An
    invalid measurement (NaN, only with a tree that is given) makes every answer no.

    Parameters
    ----------
    tree : None, tuple, mapping, name or DecisionTree
        None: learnt by `learner`. A tuple is (predicate, tree for yes, tree for no); a leaf is a
        name or a mapping of names to class scores. In a DecisionTree labels are places in
        ``classes_``, and its leaves say what costs are to be expected.
    classes : None or array-like (c,)
        All classes; None: those of y and, if it is given in tuples, the tree's, sorted.
    learner : None or DecisionTreeClassifier
        Learns the tree, in a copy; None: ``DecisionTreeClassifier(random_state=0)``.
    costs : None, float, mapping, array-like (c, c) or Costs
        What a wrong decision costs, as for BayesClassifier; leaves that are learnt, or given by
        name, decide by it.
    n_jobs : None or int
        Threads that share the rows of a query; -1: as many as there are processors.

    Attributes
    ----------
    classes_, tool_, n_features_in_, feature_names_in_
    """

    __module__ = "vxclss.sklearn"

    def __init__(self, tree: Nested = None, *, classes: Optional[npt.ArrayLike] = None,
                 learner: Any = None, costs: CostsByName = None,
                 n_jobs: Optional[int] = None) -> None:
        self.tree = tree
        self.classes = classes
        self.learner = learner
        self.costs = costs
        self.n_jobs = n_jobs

    @classmethod
    def from_sklearn(cls: Type[_Self], fitted: Any, *, costs: CostsByName = None,
                     n_jobs: Optional[int] = None) -> _Self:
        """The fitted estimator that decides as a fitted DecisionTreeClassifier does, always.

        Measurements beyond the range of float32, which scikit-learn refuses, are infinite to it.
        Raises NotFittedError; TypeError for another estimator; ValueError for a tree of several
        outputs; Unstorable when saved or pickled if the tree is deeper than 998 levels.
        """
        check_is_fitted(fitted)
        made = cls(learner=clone(fitted), costs=costs, n_jobs=n_jobs)
        made._take(fitted)
        return made

    def fit(self: _Self, X: npt.ArrayLike, y: npt.ArrayLike) -> _Self:
        """Learns a tree from X (n, d) and y (n), or takes the one that was given.

        Raises ValueError if the tree asks about measurements that X has not, or knows classes that
        there are none of.
        """
        with unchanged_on_failure(self):
            rows, names = self._checked_training(X, y, reset=True)
            if self.tree is not None:
                self._take_given(names)
            elif self.learner is not None:
                self._take(clone(self.learner).fit(rows, names))
            else:
                self._take(DecisionTreeClassifier(random_state=0).fit(rows, names))
        return self

    def _take_given(self, names: Names) -> None:
        known: Set[Any] = set(names.tolist())
        _names_in(self.tree, known)
        classes = classes_among(known) if self.classes is None else np.asarray(self.classes)
        codes_of(names, classes)
        matrix = _cost_matrix(costs_of(self.costs, classes), len(classes))
        tool = Tool().train(_built(self.tree, classes, matrix))
        asked, _ = tool.measurement_counts
        if asked > self.n_features_in_:
            raise ValueError(f"the tree asks about {asked} measurements, X has "
                             f"{self.n_features_in_}")
        labels = tool.category_labels
        if len(labels) and labels[-1] >= len(classes):
            raise ValueError(f"the tree has the label {labels[-1]}, and there are "
                             f"{len(classes)} classes")
        self.classes_, self._tool = classes, tool

    def _take(self, fitted: Any) -> None:
        if not isinstance(fitted, DecisionTreeClassifier):
            raise TypeError(f"the trees to convert are DecisionTreeClassifiers, not "
                            f"{type(fitted).__name__}")
        tree = tree_of(fitted, costs_of(self.costs, np.asarray(fitted.classes_)))
        self.classes_ = np.asarray(fitted.classes_)
        self.n_features_in_ = fitted.n_features_in_
        if hasattr(fitted, "feature_names_in_"):
            self.feature_names_in_ = fitted.feature_names_in_
        self._tool = Tool().train(tree)

    def _takes_nan(self) -> bool:
        return self.tree is not None
