# SPDX-License-Identifier: MIT
"""Pattern classification for machine vision.

A tool is trained on patterns whose category is known and answers for new ones with every category's
match score, class score and expected cost, the cheapest decision first::

    import numpy as np
    import vxclss

    X = np.array([[9.0], [10.0], [11.0], [12.0], [13.0], [14.0]])
    y = [0, 0, 0, 1, 1, 1]
    tool = vxclss.Tool().train(vxclss.DataProvider(X, y), vxclss.TrainParamsBayesian())
    tool.run(vxclss.FeaturePattern([12.0]))    # one pattern: a Result
    tool.run(X).class_scores                   # many rows: a BatchResult of arrays

Names are those of C++ without their prefixes and in Python's spelling: ``vxClassifierTool`` is
``Tool``, ``numMeasurements()`` the property ``num_measurements``.
"""

from typing import Any as _Any, Callable as _Callable

from . import _core
from ._batch import BatchResult
from ._core import (
    BinomialDensity,
    CategoryModelBayesian,
    CategoryResult,
    ClassDataGenerator,
    Classifier,
    ClassifierBayesian,
    ClassifierDecisionTree,
    ClassifierKNN,
    ComparisonPredicate,
    Costs,
    DataProvider,
    DecisionTree,
    DecisionTreeLeaf,
    DecisionTreeNode,
    Density,
    DistanceMetric,
    DistributionType,
    DistributionTypes,
    FeaturePattern,
    FeatureScore,
    FeatureScoreIgnore,
    FeatureScoreOneSided,
    FeatureScoreTwoSided,
    FeatureVector,
    Frequencies,
    Norm,
    NormalDensity,
    Predicate,
    RangePredicate,
    Result,
    Rule,
    RuleTable,
    Tool,
    TotalDataGenerator,
    TrainParams,
    TrainParamsBayesian,
    TrainParamsKNN,
    ValidityPredicate,
    __version__,
    use_attention_handler,
)
from ._model import Model, load, save
from ._pickle import dumps, loads
from .errors import (
    ArchiveError,
    BadFeatures,
    BadIndex,
    BadLabel,
    BadMatrix,
    BadMethod,
    BadParams,
    BadPointer,
    ClassifierError,
    Error,
    InsufficientTrainData,
    Malformed,
    NotSupported,
    NotTrained,
    StatusError,
    StopRequested,
    StreamFailure,
    UnknownVersion,
    Unstorable,
)

__all__ = [
    "ArchiveError",
    "BadFeatures",
    "BadIndex",
    "BadLabel",
    "BadMatrix",
    "BadMethod",
    "BadParams",
    "BadPointer",
    "BatchResult",
    "BinomialDensity",
    "CategoryModelBayesian",
    "CategoryResult",
    "ClassDataGenerator",
    "Classifier",
    "ClassifierBayesian",
    "ClassifierDecisionTree",
    "ClassifierError",
    "ClassifierKNN",
    "ComparisonPredicate",
    "Costs",
    "DataProvider",
    "DecisionTree",
    "DecisionTreeLeaf",
    "DecisionTreeNode",
    "Density",
    "DistanceMetric",
    "DistributionType",
    "DistributionTypes",
    "Error",
    "FeaturePattern",
    "FeatureScore",
    "FeatureScoreIgnore",
    "FeatureScoreOneSided",
    "FeatureScoreTwoSided",
    "FeatureVector",
    "Frequencies",
    "InsufficientTrainData",
    "Malformed",
    "Model",
    "Norm",
    "NormalDensity",
    "NotSupported",
    "NotTrained",
    "Predicate",
    "RangePredicate",
    "Result",
    "Rule",
    "RuleTable",
    "StatusError",
    "StopRequested",
    "StreamFailure",
    "Tool",
    "TotalDataGenerator",
    "TrainParams",
    "TrainParamsBayesian",
    "TrainParamsKNN",
    "UnknownVersion",
    "Unstorable",
    "ValidityPredicate",
    "__version__",
    "dumps",
    "load",
    "loads",
    "save",
    "use_attention_handler",
]


def _give_hashable_reprs() -> None:
    # pprint, and with it scikit-learn, looks up in a dict what type(obj).__repr__ is; the methods
    # of a compiled class have no hash.
    def plain(compiled: _Callable[[_Any], str]) -> _Callable[[_Any], str]:
        def __repr__(self: _Any) -> str:
            return compiled(self)
        return __repr__

    for value in vars(_core).values():
        if isinstance(value, type) and "__repr__" in vars(value):
            setattr(value, "__repr__", plain(getattr(value, "__repr__")))


_give_hashable_reprs()
