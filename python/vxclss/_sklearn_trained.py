# SPDX-License-Identifier: MIT
"""The scikit-learn estimators that learn from rows: Bayes and nearest neighbours."""

from __future__ import annotations

import math
import numbers
import operator
import sys
from threading import RLock
from typing import Any, Dict, List, Optional, Sequence, Tuple, TypeVar, Union

import numpy as np
import numpy.typing as npt
from sklearn.utils.metaestimators import available_if  # type: ignore[import]
from sklearn.utils.multiclass import _check_partial_fit_first_call  # type: ignore[import]
from sklearn.utils.validation import check_is_fitted  # type: ignore[import]

from ._core import (
    ClassifierKNN, DataProvider, DistributionType, DistributionTypes, Norm, Tool, TrainParams,
    TrainParamsBayesian, TrainParamsKNN,
)
from ._sklearn_base import (
    CostsByName, FrequenciesByName, Integers, ToolEstimator, codes_of, costs_of,
    frequencies_of, unchanged_on_failure,
)
from .errors import InsufficientTrainData

Distributions = Union[str, DistributionType, DistributionTypes, Sequence[str]]
Dependent = Union[str, Sequence[Sequence[Union[int, str]]], None]

_Chunk = Tuple[npt.NDArray[Any], Integers]
_Self = TypeVar("_Self", bound="TrainedEstimator")


class TrainedEstimator(ToolEstimator):
    """Trains a tool from rows; partial_fit() adds rows, and the next question trains again.

    A tool never changes once it is in an estimator: further training makes a new one, so copies of
    an estimator may share it.

    Once there are classes, any number of threads may ask, add rows, retrain, copy and pickle at the
    same time. A question is answered from what was learnt at one moment: all rows of a
    partial_fit() that has returned, and no part of the rows of one that has not. fit() and
    set_params() need the estimator for themselves.
    """

    # Rows that tool_ has not learnt yet, as they came.
    _pending: List[_Chunk]

    @property
    def _lock(self) -> Any:
        """Held by whoever changes what is learnt; of this object alone, and in no copy."""
        return self.__dict__.setdefault("_own_lock", RLock())

    def __getstate__(self) -> Dict[str, Any]:
        with self._lock:
            state = dict(super().__getstate__())
            if "_pending" in state:
                state["_pending"] = list(state["_pending"])
        del state["_own_lock"]
        return state

    def _params(self, counts: Optional[Integers]) -> TrainParams:
        raise NotImplementedError

    def _tool_with(self, rows: npt.NDArray[Any], codes: Integers) -> Tool:
        """A new tool that has learnt what the present one has, and the rows."""
        raise NotImplementedError

    def _kept(self, rows: npt.NDArray[Any]) -> npt.NDArray[Any]:
        """The rows of a fit(), copied if the estimator keeps them."""
        return rows

    def _check_can_grow(self) -> None:
        """Raises AttributeError if nothing can be added to what is learnt."""

    def fit(self: _Self, X: npt.ArrayLike, y: npt.ArrayLike) -> _Self:
        """Learns the rows of X (n, d) with the labels y (n), and forgets what was known before.

        Raises ValueError for X, y or parameters that the technique can't learn from.
        """
        with self._lock, unchanged_on_failure(self):
            rows, names = self._checked_training(X, y, reset=True)
            self.classes_, codes = np.unique(names, return_inverse=True)
            self._tool, self._pending = None, []
            self._tool = self._tool_with(self._kept(rows), codes.astype(np.int64))
        return self

    def partial_fit(self: _Self, X: npt.ArrayLike, y: npt.ArrayLike,
                    classes: Optional[npt.ArrayLike] = None) -> _Self:
        """Adds the rows of X (n, d) with the labels y (n) to those learnt before.

        However the rows were divided among calls, the answers are bit for bit those of one fit()
        of all of them in the same order. The next question trains, so many small calls in a row
        cost little. `classes` names all classes; it is needed in the first call only.

        Raises ValueError for a label that is none of the classes.
        """
        with self._lock:
            self._check_can_grow()
            first = "classes_" not in vars(self)
            with unchanged_on_failure(self):
                rows, names = self._checked_training(X, y, reset=first)
                if first or classes is not None:
                    _check_partial_fit_first_call(self, classes)
                if first:
                    self._tool, self._pending = None, []
                codes = codes_of(names, self.classes_)
                # The caller may change its arrays before the rows are learnt.
                self._pending.append((np.array(rows), codes))
        return self

    def retrain(self: _Self) -> _Self:
        """Puts changed parameters in force that need no rows: costs, frequencies, k and the norm.

        After ``set_params(costs=...)`` for example. Raises BadParams for other changes.
        """
        check_is_fitted(self, "classes_")
        with self._lock:
            fresh = Tool.from_bytes(self.tool_.to_bytes())
            self._tool = fresh.retrain(self._params(self._counts()))
        return self

    def _counts(self) -> Optional[Integers]:
        return None

    @property
    def tool_(self) -> Tool:
        """What answers, with all rows learnt. Raises what the technique says of the rows."""
        with self._lock:
            if "classes_" in vars(self) and self._pending:
                tool = self._tool_with(*_joined(self._pending))
                self._tool, self._pending = tool, []
            return ToolEstimator.tool_.fget(self)  # type: ignore[attr-defined,no-any-return]


def _joined(chunks: Sequence[_Chunk]) -> _Chunk:
    """All rows, in their order."""
    if len(chunks) == 1:
        return chunks[0]
    return (np.concatenate([rows for rows, _ in chunks]),
            np.concatenate([codes for _, codes in chunks]))


class BayesClassifier(TrainedEstimator):
    """Bayesian classification: a normal or binomial density for each class and measurement.

    NaN is an invalid measurement: training leaves it out, a query is judged by the others.

    Parameters
    ----------
    frequencies : None, "empirical", mapping, array-like (c,) or Frequencies
        How often each class occurs, relative to the others, > 0, finite. None: equally often.
        "empirical": as often as in the training rows. A mapping goes from names to frequencies, 1
        for those left out; an array is in the order of ``classes_``.
    costs : None, float, mapping, array-like (c, c) or Costs
        What a wrong decision costs, >= 0, finite. None: 1. A mapping goes from (true, assigned)
        names to costs, 1 for those left out; a matrix has a row for each true class.
    distribution : "normal", "binomial", a list of them (d,), or DistributionTypes
        How each measurement is distributed.
    dependent : None, "all" or list of lists of columns
        Measurements that are modelled together, with their covariances, in every class. A column
        is its place, or its name if fit() was given a data frame.
    max_values : None or array-like (d,)
        Largest value of each measurement that is binomial; None: 1.
    keep_rows : bool
        Whether the estimator keeps the training rows. Without, it and its pickle are small, and
        there is no partial_fit() once fit() or a question has trained it.
    n_jobs : None or int
        Threads that share the rows of a query; -1: as many as there are processors.

    Attributes
    ----------
    classes_, tool_, n_features_in_, feature_names_in_
    class_count_ : (c,)
        Training rows of each class, with those of partial_fit() that the next question learns; not
        known of a model file.
    """

    __module__ = "vxclss.sklearn"

    _learnt_count: Integers
    _rows: Optional[_Chunk]

    def __init__(self, *, frequencies: FrequenciesByName = None, costs: CostsByName = None,
                 distribution: Distributions = "normal", dependent: Dependent = None,
                 max_values: Optional[npt.ArrayLike] = None, keep_rows: bool = True,
                 n_jobs: Optional[int] = None) -> None:
        self.frequencies = frequencies
        self.costs = costs
        self.distribution = distribution
        self.dependent = dependent
        self.max_values = max_values
        self.keep_rows = keep_rows
        self.n_jobs = n_jobs

    def _takes_nan(self) -> bool:
        return True

    @property
    def class_count_(self) -> Integers:
        with self._lock:
            if "classes_" not in vars(self) or (
                    self._tool is not None and "_learnt_count" not in vars(self)):
                raise AttributeError(f"this {type(self).__name__} has seen no rows to count")
            codes = [codes for _, codes in self._pending]
            if self._tool is None:
                return self._count(codes)
            return self._learnt_count + self._count(codes)

    def _count(self, codes: List[Integers]) -> Integers:
        none = np.zeros(0, np.int64)
        return np.bincount(np.concatenate([none, *codes]), minlength=len(self.classes_))

    def _counts(self) -> Optional[Integers]:
        return getattr(self, "_learnt_count", None)

    def _tool_with(self, rows: npt.NDArray[Any], codes: Integers) -> Tool:
        if self._tool is not None:
            assert self._rows is not None
            rows, codes = _joined([self._rows, (rows, codes)])
        self._check_rows(rows, codes)
        counts = self._count([codes])
        tool = Tool().train(DataProvider(rows, codes), self._params(counts))
        self._learnt_count = counts
        self._rows = (rows, codes) if self.keep_rows else None
        return tool

    def _kept(self, rows: npt.NDArray[Any]) -> npt.NDArray[Any]:
        return np.array(rows) if self.keep_rows else rows

    @available_if(lambda self: self._check_can_grow() is None)  # type: ignore[misc]
    def partial_fit(self, X: npt.ArrayLike, y: npt.ArrayLike,
                    classes: Optional[npt.ArrayLike] = None) -> BayesClassifier:
        """Adds the rows of X (n, d) with the labels y (n), as KNNClassifier.partial_fit().

        Not there (AttributeError) if the rows that were learnt before are not kept.
        """
        return super().partial_fit(X, y, classes)

    def _check_can_grow(self) -> None:
        if getattr(self, "_tool", None) is not None and self._rows is None:
            raise AttributeError("partial_fit() needs the rows that were learnt before, which an "
                                 "estimator with keep_rows=False or from a model file has not")

    def _check_rows(self, rows: npt.NDArray[Any], codes: Integers) -> None:
        """Each class that has rows needs two values of each measurement."""
        valid = np.zeros((len(self.classes_), self.n_features_in_), np.int64)
        np.add.at(valid, codes, ~np.isnan(rows))
        seen = np.isin(np.arange(len(self.classes_)), codes)
        short = np.argwhere((valid < 2) & seen[:, None])
        if len(short):
            label, column = short[0]
            count = valid[label, column]
            raise InsufficientTrainData(
                f"class {self.classes_[label]!r} has {count or 'no'} "
                f"{'sample' if count == 1 else 'samples'} of measurement {column}, and a density "
                f"needs 2")

    def _params(self, counts: Optional[Integers]) -> TrainParamsBayesian:
        largest: Any = [] if self.max_values is None else self.max_values
        return TrainParamsBayesian(
            self._distribution_types(), max_measurement_values=largest,
            category_frequencies=frequencies_of(self.frequencies, self.classes_, counts),
            misclassification_costs=costs_of(self.costs, self.classes_))

    def _distribution_types(self) -> DistributionTypes:
        if isinstance(self.distribution, DistributionTypes):
            if self.dependent is not None:
                raise ValueError("DistributionTypes say themselves what is dependent")
            for _, columns in self.distribution.dependent:
                for column in columns:
                    self._column(column)
            return self.distribution
        labels = range(len(self.classes_))
        together = [(label, columns) for label in labels for columns in self._dependent_sets()]
        if isinstance(self.distribution, (str, DistributionType)):
            return DistributionTypes(_type_of(self.distribution), dependent=together)
        each = [_type_of(kind) for kind in self.distribution]
        if len(each) != self.n_features_in_:
            raise ValueError(f"{len(each)} distributions for {self.n_features_in_} measurements")
        return DistributionTypes(
            overrides={(label, column): kind for label in labels
                       for column, kind in enumerate(each)}, dependent=together)


    def _dependent_sets(self) -> List[List[int]]:
        if self.dependent is None:
            return []
        width = self.n_features_in_
        if isinstance(self.dependent, str) and self.dependent == "all":
            return [list(range(width))] if width > 1 else []
        if isinstance(self.dependent, str) or any(
                isinstance(columns, str) or np.ndim(columns) != 1 for columns in self.dependent):
            raise ValueError(f'dependent is "all" or a list of lists of columns, such as [[0, 1]], '
                             f"not {self.dependent!r}")
        return [[self._column(column) for column in columns] for columns in self.dependent]

    def _column(self, column: Union[int, str]) -> int:
        """The place of a column that is dependent. Raises ValueError."""
        names = list(getattr(self, "feature_names_in_", []))
        if isinstance(column, str) and column in names:
            return names.index(column)
        try:
            place = operator.index(column)  # type: ignore[arg-type]
        except TypeError:
            place = -1
        if not 0 <= place < self.n_features_in_:
            raise ValueError(f"dependent has the column {column!r}, and X has {names or 'columns'}"
                             + ("" if names else f" 0 to {self.n_features_in_ - 1}"))
        return place


def _type_of(kind: Union[str, DistributionType]) -> DistributionType:
    if isinstance(kind, DistributionType):
        return kind
    known = {"normal": DistributionType.NORMAL, "binomial": DistributionType.BINOMIAL}
    if kind not in known:
        raise ValueError(f'a distribution is "normal" or "binomial", not {kind!r}')
    return known[kind]


class KNNClassifier(TrainedEstimator):
    """Nearest neighbours: of the k training rows nearest to a query, the share of each class.

    Parameters
    ----------
    n_neighbors : int
        k, >= 1; all rows where there are fewer.
    p : float
        Order of the norm that measures distances, > 0 and finite: 1 city block, 2 Euclidean.
    costs : None, float, mapping, array-like (c, c) or Costs
        What a wrong decision costs, as for BayesClassifier.
    n_jobs : None or int
        Threads that share the rows of a query; -1: as many as there are processors.

    Attributes
    ----------
    classes_, tool_, n_features_in_, feature_names_in_
    """

    __module__ = "vxclss.sklearn"

    def __init__(self, n_neighbors: int = 5, *, p: float = 2.0, costs: CostsByName = None,
                 n_jobs: Optional[int] = None) -> None:
        self.n_neighbors = n_neighbors
        self.p = p
        self.costs = costs
        self.n_jobs = n_jobs

    def _tool_with(self, rows: npt.NDArray[Any], codes: Integers) -> Tool:
        data = DataProvider()
        if self._tool is not None:
            classifier = self._tool.classifier
            assert isinstance(classifier, ClassifierKNN) and classifier.data is not None
            data = classifier.data  # a provider of our own, which shares the patterns
        data.extend(rows, codes)
        return Tool().train(data, self._params(None))

    def _params(self, counts: Optional[Integers]) -> TrainParamsKNN:
        if not isinstance(self.n_neighbors, numbers.Integral):
            raise TypeError(f"n_neighbors is a whole number, not {self.n_neighbors!r}")
        if not isinstance(self.p, numbers.Real):
            raise TypeError(f"p is a number, not {self.p!r}")
        metric = Norm(self.p)
        if not math.isfinite(metric.order):
            raise ValueError(f"p is finite, not {self.p}")
        return TrainParamsKNN(min(self.n_neighbors, sys.maxsize), distance_metric=metric,
                              misclassification_costs=costs_of(self.costs, self.classes_))
