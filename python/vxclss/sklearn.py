# SPDX-License-Identifier: MIT
"""scikit-learn estimators of the library's techniques::

    from vxclss.sklearn import BayesClassifier

    classifier = BayesClassifier(frequencies={"good": 9, "damaged": 1}).fit(X, y)
    classifier.predict_proba(X)
    classifier.save("parts.model")    # opens in ``vxclss run`` and in C++

Classes may be called by any names that scikit-learn takes. Costs and frequencies are given by name.
Importing this module needs scikit-learn; importing vxclss doesn't.
"""

from __future__ import annotations

from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _model
from ._core import TrainParamsBayesian, TrainParamsKNN
from ._model import Model, _Path
from ._sklearn_base import Names, ToolEstimator, names_of, texts_of
from ._sklearn_rules import RuleTableClassifier
from ._sklearn_trained import BayesClassifier, KNNClassifier
from ._sklearn_tree import TreeClassifier
from .errors import BadMethod

__all__ = ["BayesClassifier", "KNNClassifier", "RuleTableClassifier", "TreeClassifier",
           "from_model", "load"]


def _classes_of(model: Model, classes: Optional[npt.ArrayLike]) -> Names:
    if classes is None:
        return names_of(model.category_names)
    names: Names = np.atleast_1d(np.asarray(classes))
    if texts_of(names) != model.category_names:
        raise ValueError(f"the model's classes are {model.category_names}, in that order, not "
                         f"{names.tolist()}")
    return names


def from_model(model: Model, *, classes: Optional[npt.ArrayLike] = None
               ) -> Union[BayesClassifier, KNNClassifier, TreeClassifier]:
    """The fitted estimator that answers as a model does.

    Category names become the classes. `classes` says what they stand for, in the model's order;
    without, they are numbers if all of them read as whole numbers, or all as other numbers (``1.0``
    but not ``1``), and ascend, bool if they are False and True, else str. Column names other than
    x0, x1, ... become ``feature_names_in_``. The training rows of a Bayesian model are not in the
    file, so there is no partial_fit().

    Raises TypeError for something other than a Model; ValueError if `classes` have other names than
    the model's, or those don't fit its tool.
    """
    if not isinstance(model, Model):
        raise TypeError(f"from_model() takes a Model, not {type(model).__name__}")
    _model.check_names(model)
    tool = model.tool
    names = _classes_of(model, classes)
    estimator: ToolEstimator
    try:
        params: Any = tool.train_params
    except BadMethod:
        estimator = TreeClassifier(tool.decision_tree, classes=names)
    else:
        if isinstance(params, TrainParamsKNN):
            order: Any = params.distance_metric
            estimator = KNNClassifier(params.k, p=order.order,
                                      costs=params.misclassification_costs)
            estimator._pending = []
        elif isinstance(params, TrainParamsBayesian):
            largest = params.max_measurement_values.to_array()
            estimator = BayesClassifier(
                frequencies=params.category_frequencies, costs=params.misclassification_costs,
                distribution=params.distribution_types, keep_rows=False,
                max_values=largest if len(largest) else None)
            estimator._pending, estimator._rows = [], None
        else:
            raise TypeError(f"no estimator for {params!r}")
    estimator._tool = tool
    estimator.classes_ = names
    estimator.n_features_in_ = len(model.measurement_names)
    if model.measurement_names != [f"x{i}" for i in range(len(model.measurement_names))]:
        estimator.feature_names_in_ = np.array(model.measurement_names, dtype=object)
    return estimator


def load(path: _Path, *, classes: Optional[npt.ArrayLike] = None
         ) -> Union[BayesClassifier, KNNClassifier, TreeClassifier]:
    """The fitted estimator of a model file, from save(), ``vxclss train`` or C++.

    `classes` is needed where from_model() would guess wrong: for str that read as numbers, and
    numbers that don't ascend, as those of ``vxclss train``, which sorts them as texts.

    Raises ArchiveError for a file that is none; ValueError for other `classes` than the model's;
    OSError.
    """
    return from_model(_model.load(path), classes=classes)
