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

from typing import Any, Union

import numpy as np

from . import _model
from ._core import TrainParamsBayesian, TrainParamsKNN
from ._model import Model, _Path
from ._sklearn_base import ToolEstimator, names_of
from ._sklearn_rules import RuleTableClassifier
from ._sklearn_trained import BayesClassifier, KNNClassifier
from ._sklearn_tree import TreeClassifier
from .errors import BadMethod

__all__ = ["BayesClassifier", "KNNClassifier", "RuleTableClassifier", "TreeClassifier",
           "from_model", "load"]


def from_model(model: Model) -> Union[BayesClassifier, KNNClassifier, TreeClassifier]:
    """The fitted estimator that answers as a model does.

    Category names become the classes: whole numbers if all of them are, else str. Column names
    other than x0, x1, ... become ``feature_names_in_``. The training rows of a Bayesian model are
    not in the file, so partial_fit() refuses.
    """
    tool = model.tool
    estimator: ToolEstimator
    try:
        params: Any = tool.train_params
    except BadMethod:
        estimator = TreeClassifier(tool.decision_tree, classes=names_of(model.category_names))
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
    estimator.classes_ = names_of(model.category_names)
    estimator.n_features_in_ = len(model.measurement_names)
    if model.measurement_names != [f"x{i}" for i in range(len(model.measurement_names))]:
        estimator.feature_names_in_ = np.array(model.measurement_names, dtype=object)
    return estimator


def load(path: _Path) -> Union[BayesClassifier, KNNClassifier, TreeClassifier]:
    """The fitted estimator of a model file, from save(), ``vxclss train`` or C++.

    Raises ArchiveError for a file that is none; OSError.
    """
    return from_model(_model.load(path))
