# SPDX-License-Identifier: MIT
"""What the scikit-learn estimators share: names as labels, costs and frequencies by name."""

from __future__ import annotations

import math
import re
import warnings
from contextlib import contextmanager
from typing import Any, Dict, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt
from sklearn.base import BaseEstimator, ClassifierMixin  # type: ignore[import]
from sklearn.utils.multiclass import check_classification_targets  # type: ignore[import]
from sklearn.utils.validation import check_is_fitted, column_or_1d  # type: ignore[import]

from ._core import Costs, Frequencies, Tool
from ._model import _Path, save

Names = npt.NDArray[Any]
Floats = npt.NDArray[np.float64]
Integers = npt.NDArray[np.int64]
CostsByName = Union[Costs, float, Mapping[Tuple[Any, Any], float], npt.ArrayLike, None]
FrequenciesByName = Union[Frequencies, str, Mapping[Any, float], npt.ArrayLike, None]


def codes_of(y: npt.ArrayLike, classes: Names) -> Integers:
    """The place of each name of y (n) among the classes. Raises ValueError for another name."""
    places = {name: place for place, name in enumerate(classes.tolist())}
    names = np.asarray(y).tolist()
    codes: Integers = np.array([places.get(name, -1) for name in names], np.int64)
    if (codes < 0).any():
        unknown = names[int(codes.argmin())]
        raise ValueError(f"y has the label {unknown!r}, which is none of classes "
                         f"{classes.tolist()}")
    return codes


def _label_of(name: Any, classes: Names) -> int:
    """The place of one name. Raises ValueError."""
    names = classes.tolist()
    if names.count(name) != 1:
        raise ValueError(f"{name!r} is none of classes {names}")
    return int(names.index(name))


def classes_among(names: Iterable[Any]) -> Names:
    """The names, sorted. Raises ValueError if they are of kinds that don't sort."""
    known = set(names)
    try:
        return np.array(sorted(known))
    except TypeError:
        raise ValueError("the names of classes are of one kind, not "
                         f"{sorted(known, key=repr)}") from None


def costs_of(costs: CostsByName, classes: Names) -> Costs:
    """Costs by label from costs by name; see BayesClassifier.

    Raises ValueError for an unknown name, a matrix of the wrong shape or a cost that is not finite;
    BadParams below 0.
    """
    made = _made_costs(costs, classes)
    _check_finite("cost", made)
    return made


def _made_costs(costs: CostsByName, classes: Names) -> Costs:
    if costs is None:
        return Costs(1.0)
    if isinstance(costs, Costs):
        return costs
    if isinstance(costs, Mapping):
        for pair in costs:
            if not isinstance(pair, tuple) or len(pair) != 2:
                raise ValueError(f"costs go from (true, assigned) names to numbers, not from "
                                 f"{pair!r}")
        return Costs(1.0, {(_label_of(true, classes), _label_of(assigned, classes)): float(cost)
                           for (true, assigned), cost in costs.items()})
    matrix = np.asarray(costs, dtype=float)
    if matrix.ndim == 0:
        return Costs(float(matrix))
    if matrix.shape != (len(classes), len(classes)):
        raise ValueError(f"costs of {len(classes)} classes are a matrix of that many rows (true) "
                         f"and columns (assigned), not of shape {matrix.shape}")
    return Costs(1.0, {(true, assigned): float(cost)
                       for (true, assigned), cost in np.ndenumerate(matrix) if true != assigned})


def frequencies_of(frequencies: FrequenciesByName, classes: Names,
                   counts: Optional[Integers]) -> Frequencies:
    """Frequencies by label from frequencies by name; see BayesClassifier.

    `counts` (classes) are the training rows of each class, if known.
    Raises ValueError for an unknown name, the wrong number of them or a frequency that is not
    finite; BadParams for one <= 0.
    """
    made = _made_frequencies(frequencies, classes, counts)
    _check_finite("frequency", made)
    return made


def _made_frequencies(frequencies: FrequenciesByName, classes: Names,
                      counts: Optional[Integers]) -> Frequencies:
    if frequencies is None:
        return Frequencies(1.0)
    if isinstance(frequencies, Frequencies):
        return frequencies
    if isinstance(frequencies, str):
        if frequencies != "empirical":
            raise ValueError(f'frequencies are "empirical" or given, not {frequencies!r}')
        if counts is None:
            raise ValueError('"empirical" frequencies need the training rows')
        return Frequencies(1.0, {label: float(count) for label, count in enumerate(counts)
                                 if count > 0})
    if isinstance(frequencies, Mapping):
        return Frequencies(1.0, {_label_of(name, classes): float(frequency)
                                 for name, frequency in frequencies.items()})
    values = np.asarray(frequencies, dtype=float)
    if values.shape != (len(classes),):
        raise ValueError(f"{len(classes)} classes have that many frequencies, not an array of "
                         f"shape {values.shape}")
    return Frequencies(1.0, dict(enumerate(values.tolist())))


def _check_finite(what: str, record: Union[Costs, Frequencies]) -> None:
    for value in (record.default, *record.overrides.values()):
        if not math.isfinite(value):
            raise ValueError(f"a {what} is finite, not {value}")


@contextmanager
def unchanged_on_failure(estimator: Any) -> Iterator[None]:
    """A fit that fails leaves the estimator as it was."""
    attributes = estimator.__dict__
    previous = dict(attributes)
    try:
        yield
    except BaseException:
        attributes.update(previous)  # first, as another thread may read them
        for name in attributes.keys() - previous.keys():
            del attributes[name]
        raise


class Estimator(ClassifierMixin, BaseEstimator):  # type: ignore[misc]
    """Names as labels, and checks of X and y as scikit-learn's own estimators make them.

    The class ``classes_[i]`` has the label i in C++ and in a model file.
    """

    classes_: Names
    n_features_in_: int

    def _takes_nan(self) -> bool:
        return False

    def _more_tags(self) -> Dict[str, Any]:
        return {"allow_nan": self._takes_nan()}

    def _checked_rows(self, X: Any, reset: bool = False) -> npt.NDArray[Any]:
        """X as floats of 4 or 8 bytes (n, d), not copied if it is that already."""
        rows: npt.NDArray[Any] = self._validate_data(
            X, reset=reset, dtype=[np.float64, np.float32],
            force_all_finite="allow-nan" if self._takes_nan() else True)
        return rows

    def _checked_training(self, X: Any, y: Any, reset: bool) -> Tuple[npt.NDArray[Any], Names]:
        rows, names = self._validate_data(
            X, y, reset=reset, dtype=[np.float64, np.float32],
            force_all_finite="allow-nan" if self._takes_nan() else True)
        names = column_or_1d(names, warn=True)
        check_classification_targets(names)
        return rows, names


class ToolEstimator(Estimator):
    """An estimator that asks a Tool.

    Attributes
    ----------
    classes_ : (c,)
        Names of the classes; the place of a name is its label in C++.
    tool_ : Tool
        What answers.
    """

    n_jobs: Optional[int]
    _tool: Optional[Tool]

    @property
    def tool_(self) -> Tool:
        if "classes_" not in vars(self) or self._tool is None:
            raise AttributeError(f"this {type(self).__name__} is not fitted and has no tool_")
        return self._tool

    def _ready(self) -> Tool:
        check_is_fitted(self, "classes_")
        return self.tool_

    def predict(self, X: npt.ArrayLike) -> Names:
        """The class of each row of X (n, d) that is cheapest to decide for; an array (n).

        Of classes of equal cost the one that C++ puts first.
        """
        tool = self._ready()
        labels = tool.decide(self._checked_rows(X), n_jobs=self.n_jobs)
        if labels.min() < 0:
            row = int(np.argmin(labels))
            raise ValueError(f"row {row}: the tree answers with no class")
        names: Names = self.classes_[labels]
        return names

    def predict_proba(self, X: npt.ArrayLike) -> Floats:
        """Class scores, (n, c): the posterior of each class, rows that sum to 1.

        A class without an answer (no neighbour, no training row so far) has 0.
        """
        tool = self._ready()
        scores = tool.class_scores(self._checked_rows(X), n_jobs=self.n_jobs)
        return self._spread(scores, tool.category_labels, 0.0)

    def predict_log_proba(self, X: npt.ArrayLike) -> Floats:
        """Natural logarithms of the class scores, (n, c); -inf for 0."""
        with np.errstate(divide="ignore"):
            logarithms: Floats = np.log(self.predict_proba(X))
        return logarithms

    def expected_costs(self, X: npt.ArrayLike) -> Floats:
        """What deciding for each class is expected to cost, (n, c).

        NaN for a class without an answer (no neighbour, no training row so far), which can't be
        decided for.
        """
        tool = self._ready()
        answers = tool.run(self._checked_rows(X), n_jobs=self.n_jobs)
        return self._spread(answers.expected_costs, answers.categories, np.nan)

    def save(self, path: _Path) -> None:
        """Writes a model file, which ``vxclss run`` and C++ open, and load() here.

        Measurements are called as the columns of the data frame that fit() was given, or x0,
        x1, ...; categories as the classes. The file appears whole or not at all. It holds texts:
        load() makes the same classes of them if they are bool or ascending numbers, or str that
        don't read as such; it has to be told others, and a UserWarning says so.

        Raises NotFittedError; ValueError if two classes have the same text, or one is neither str
        nor number nor bool; OSError.
        """
        tool = self._ready()
        texts = texts_of(self.classes_)
        _check_kinds(self.classes_, texts)
        names: Iterable[Any] = getattr(self, "feature_names_in_",
                                       [f"x{i}" for i in range(self.n_features_in_)])
        save(path, tool, [str(name) for name in names], texts)

    def _spread(self, values: Floats, categories: Integers, missing: float) -> Floats:
        """Columns of the categories that a tool knows, as columns of all classes."""
        if len(categories) == len(self.classes_):
            return values
        spread = np.full((len(values), len(self.classes_)), missing)
        spread[:, categories] = values
        return spread


def texts_of(classes: Names) -> List[str]:
    """The names of the classes in a model file. Raises ValueError if two are equal."""
    texts = [str(name) for name in classes.tolist()]
    if len(set(texts)) != len(texts):
        raise ValueError("two classes are equal as texts")
    return texts


def names_of(texts: List[str]) -> Names:
    """The classes of a model file: numbers if all texts are, in ascending order, or bool; else str.

    A number is written as Python writes it, a float with a point or an exponent.
    """
    if all(_WHOLE.fullmatch(text) for text in texts):
        numbers = np.array([int(text) for text in texts])
        if numbers.dtype.kind in "iu" and _ascends(numbers):
            return numbers
    if texts in (["False"], ["True"], ["False", "True"]):
        return np.array([text == "True" for text in texts])
    try:
        numbers = np.array([float(text) for text in texts])
    except ValueError:
        return np.array(texts)
    if [repr(number) for number in numbers.tolist()] == texts and _ascends(numbers):
        return numbers
    return np.array(texts)


# Not longer than numbers of 8 bytes.
_WHOLE = re.compile("0|-?[1-9][0-9]{0,19}")


def _ascends(numbers: npt.NDArray[Any]) -> bool:
    return bool((numbers[1:] > numbers[:-1]).all())


def _check_kinds(classes: Names, texts: List[str]) -> None:
    """Raises ValueError for a class that a text can't stand for; warns of what load() changes."""
    for name in classes.tolist():
        if not isinstance(name, (str, int, float, np.bool_, np.integer, np.floating)):
            raise ValueError(f"a model file holds classes that are str, numbers or bool, not "
                             f"{name!r}")
    restored = names_of(texts).tolist()
    if restored != classes.tolist():
        warnings.warn(f"load() will call the classes {restored!r}; call it with classes="
                      f"{classes.tolist()!r}", stacklevel=3)
