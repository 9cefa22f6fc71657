# SPDX-License-Identifier: MIT
"""The scikit-learn estimator of rule tables."""

from __future__ import annotations

import json
from typing import Any, Dict, List, Optional, Sequence, Tuple, TypeVar, Union

import numpy as np
import numpy.typing as npt
from sklearn.utils.validation import check_is_fitted  # type: ignore[import]

from ._core import (
    FeatureScore, FeatureScoreIgnore, FeatureScoreOneSided, FeatureScoreTwoSided, Rule, RuleTable,
)
from ._model import _Path, write_whole
from ._sklearn_base import (
    Estimator, Floats, Names, classes_among, codes_of, texts_of, unchanged_on_failure,
)

Rules = Sequence[Union[Rule, Tuple[Any, Sequence[Optional[FeatureScore]]]]]

_Self = TypeVar("_Self", bound="RuleTableClassifier")


class RuleTableClassifier(Estimator):
    """Rules that say which values of each measurement are good for a class.

    Rules have degrees of membership, which ``rule_scores`` gives; they know no probabilities,
    frequencies and costs, so there is no ``predict_proba``.

    Parameters
    ----------
    rules : None or list
        (name, [score function or None for each column]), or Rules whose labels are places in
        ``classes_``; the first that passes the threshold decides. None: fit() makes one for each
        class, whose scores fall from 1 at the mean to 0 at `reach` deviations of the class.
    classes : None or array-like (c,)
        All classes; None: those of y and of the rules' names, sorted.
    threshold : None or float
        What the score of a rule must be above, [0, 1]. None: the best rule decides.
    reject : None or name
        What rows are called that no rule passes; None: as the best rule says.
    reach : float
        > 0, in standard deviations.
    n_jobs : None or int
        Threads that share the rows of a query; -1: as many as there are processors.

    Attributes
    ----------
    classes_, n_features_in_, feature_names_in_
    table_ : RuleTable
    """

    __module__ = "vxclss.sklearn"

    table_: RuleTable

    def __init__(self, rules: Optional[Rules] = None, *, classes: Optional[npt.ArrayLike] = None,
                 threshold: Optional[float] = None, reject: Any = None, reach: float = 4.0,
                 n_jobs: Optional[int] = None) -> None:
        self.rules = rules
        self.classes = classes
        self.threshold = threshold
        self.reject = reject
        self.reach = reach
        self.n_jobs = n_jobs

    def fit(self: _Self, X: npt.ArrayLike, y: npt.ArrayLike) -> _Self:
        """Makes a rule for each class of y (n) from the rows of X (n, d), or takes those given.

        Raises ValueError if rules that are given don't fit X and y, or there are none; TypeError
        for what is no rule; BadParams for a bad table.
        """
        if self.threshold is not None and not 0.0 <= self.threshold <= 1.0:
            raise ValueError(f"threshold is in [0, 1], not {self.threshold}")
        if self.threshold is None and self.reject is not None:
            raise ValueError("without a threshold no row is rejected")
        with unchanged_on_failure(self):
            rows, names = self._checked_training(X, y, reset=True)
            self.classes_, rules = self._given(names) if self.rules is not None \
                else self._learnt(rows, names)
            for rule in rules:
                if len(rule.scoring_methods) != self.n_features_in_:
                    raise ValueError(f"a rule for {len(rule.scoring_methods)} measurements, X has "
                                     f"{self.n_features_in_}")
                if rule.label >= len(self.classes_):
                    raise ValueError(f"a rule has the label {rule.label}, and there are "
                                     f"{len(self.classes_)} classes")
            self.table_ = RuleTable(rules)
        return self

    def _learnt(self, rows: npt.NDArray[Any], names: Names) -> Tuple[Names, List[Rule]]:
        classes = np.unique(names)
        return classes, [Rule(_scores_around(rows[names == name], rows, self.reach), label)
                         for label, name in enumerate(classes)]

    def _given(self, names: Names) -> Tuple[Names, List[Rule]]:
        assert self.rules is not None
        if len(self.rules) == 0:
            raise ValueError("a table without rules decides nothing")
        for rule in self.rules:
            if not isinstance(rule, Rule) and not (isinstance(rule, (tuple, list))
                                                   and len(rule) == 2):
                raise TypeError(f"a rule is (name, score functions) or a Rule, not {rule!r}")
        named = [rule[0] for rule in self.rules if not isinstance(rule, Rule)]
        classes = classes_among(names.tolist() + named) if self.classes is None \
            else np.asarray(self.classes)
        codes_of(names, classes)
        return classes, [_rule(rule, classes) for rule in self.rules]

    def predict(self, X: npt.ArrayLike) -> Names:
        """The class of each row of X (n, d); an array (n), with `reject` among the names if set."""
        scores = self.rule_scores(X)
        labels = np.array([rule.label for rule in self.table_.rules])
        chosen = np.where(np.isnan(scores), -1.0, scores).argmax(axis=1)
        rejected = np.zeros(len(scores), bool)
        if self.threshold is not None:
            passes = scores > self.threshold
            rejected = ~passes.any(axis=1)
            chosen = np.where(rejected, chosen, passes.argmax(axis=1))
        names: Names = self.classes_[labels[chosen]]
        if self.reject is not None:
            names = names.astype(np.result_type(names, np.asarray(self.reject)))
            names[rejected] = self.reject
        return names

    def rule_scores(self, X: npt.ArrayLike) -> Floats:
        """How well each rule fits each row of X (n, d): (n, rules), in [0, 1].

        NaN where a measurement that counts is NaN, which passes no threshold.
        """
        check_is_fitted(self, "classes_")
        return self.table_.rule_scores(self._checked_rows(X), n_jobs=self.n_jobs)

    def save(self, path: _Path) -> None:
        """Writes the rules as JSON, for ``vxclss rules`` with ``--threshold``.

        The file appears whole or not at all.

        Raises NotFittedError; ValueError if two classes have the same text; OSError.
        """
        check_is_fitted(self, "classes_")
        texts = texts_of(self.classes_)
        columns = [str(name) for name in getattr(
            self, "feature_names_in_", [f"x{i}" for i in range(self.n_features_in_)])]
        rules = [{"category": texts[rule.label],
                  "scores": {column: _described(score) for column, score
                             in zip(columns, rule.scoring_methods)}}
                 for rule in self.table_.rules]
        text = json.dumps({"features": columns, "rules": rules}, indent=1, allow_nan=False)
        write_whole(path, (text + "\n").encode())

    def _takes_nan(self) -> bool:
        return self.rules is not None


def _rule(rule: Union[Rule, Tuple[Any, Sequence[Optional[FeatureScore]]]], classes: Names) -> Rule:
    if isinstance(rule, Rule):
        return rule
    name, scores = rule
    for score in scores:
        if score is not None and not isinstance(score, FeatureScore):
            raise TypeError(f"a score function is a FeatureScore or None, not {score!r}")
    return Rule([FeatureScoreIgnore() if score is None else score for score in scores],
                int(codes_of([name], classes)[0]))


def _scores_around(rows: npt.NDArray[Any], all_rows: npt.NDArray[Any],
                   reach: float) -> List[FeatureScore]:
    """Two-sided functions around the means of the rows (n, d)."""
    if not reach > 0.0:
        raise ValueError(f"reach is > 0, not {reach}")
    means = rows.mean(axis=0, dtype=float)
    widths = rows.std(axis=0, dtype=float)
    # A constant has a thousandth of the deviation among all classes, or else of its value.
    for other in (all_rows.std(axis=0, dtype=float), np.abs(means), np.ones(len(means))):
        widths = np.where(widths > 0.0, widths, other / 1000.0)
    return [FeatureScoreTwoSided(x0=mean, x1=mean - width, xc=mean - width,
                                 x0h=mean, x1h=mean + width, xch=mean + width,
                                 y0=1.0, y1=0.0, y0h=1.0, y1h=0.0)
            for mean, width in zip(means, reach * widths)]


def _described(score: FeatureScore) -> Any:
    """A score function as the rules of ``vxclss rules`` write it."""
    def sides(x: str, y: str) -> Dict[str, float]:
        return {"x0": getattr(score, "x0" + x), "x1": getattr(score, "x1" + x),
                "xc": getattr(score, "xc" + x), "y0": getattr(score, "y0" + y),
                "y1": getattr(score, "y1" + y)}

    if isinstance(score, FeatureScoreOneSided):
        return {"one-sided": sides("", "")}
    if isinstance(score, FeatureScoreTwoSided):
        return {"two-sided": {"low": sides("", ""), "high": sides("h", "h")}}
    if isinstance(score, FeatureScoreIgnore):
        return "ignore"
    raise ValueError(f"{score!r} has no form in JSON")
