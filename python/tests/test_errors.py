# SPDX-License-Identifier: MIT
import copy
import pickle

import numpy as np
import pytest

import vxclss
from vxclss import errors

LEAVES = {
    vxclss.BadPointer: 0x10000000,
    vxclss.StopRequested: 0x10000001,
    vxclss.StatusError: 0x10000002,
    vxclss.BadMatrix: 0x10000003,
    vxclss.UnknownVersion: 0x10000004,
    vxclss.Malformed: 0x10000005,
    vxclss.Unstorable: 0x10000006,
    vxclss.StreamFailure: 0x10000007,
    vxclss.BadParams: 0x10004200,
    vxclss.NotTrained: 0x10004201,
    vxclss.BadIndex: 0x10004202,
    vxclss.BadLabel: 0x10004203,
    vxclss.BadMethod: 0x10004204,
    vxclss.NotSupported: 0x10004205,
    vxclss.BadFeatures: 0x10004206,
    vxclss.InsufficientTrainData: 0x10004207,
}


def two_categories(**params):
    data = vxclss.DataProvider([[1.0], [2.0], [5.0], [6.0]], [0, 0, 1, 1])
    return vxclss.Tool().train(data, vxclss.TrainParamsBayesian(**params))


def knn():
    return vxclss.Tool().train(vxclss.DataProvider([[1.0], [2.0]], [0, 1]),
                               vxclss.TrainParamsKNN(1))


def truncated():
    return vxclss.Tool.from_bytes(knn().to_bytes()[:-1])


def poisson():
    return two_categories(
        distribution_types=vxclss.DistributionTypes(vxclss.DistributionType.POISSON))


def one_sample():
    vxclss.Tool().train(vxclss.DataProvider([[1.0]], [0]), vxclss.TrainParamsBayesian())


# What raises each leaf that a Python program can bring about, and the library's text.
CASES = {
    "bad params": (lambda: vxclss.TrainParamsKNN(0), vxclss.BadParams, "K must be >= 1"),
    "not trained": (lambda: vxclss.Tool().run([[1.0]]), vxclss.NotTrained,
                    "Classifier tool must be trained before running."),
    "bad index": (lambda: vxclss.FeaturePattern([1.0], [1]), vxclss.BadIndex,
                  "Feature measurement indices must be < number of features"),
    "bad label": (lambda: vxclss.DataProvider([[1.0]], [-2]), vxclss.BadLabel,
                  "Category labels must be >= 0 or unknown"),
    "bad method": (lambda: vxclss.Tool().train(
        vxclss.DecisionTreeLeaf(vxclss.Result())).train_params, vxclss.BadMethod,
        "Classifier tool was not automatically trained."),
    "not supported": (poisson, vxclss.NotSupported, "Poisson distribution is not implemented"),
    "bad features": (lambda: knn().run(vxclss.FeaturePattern([np.nan])), vxclss.BadFeatures,
                     "K-nearest neighbor classification does not support invalid measurements"),
    "insufficient": (one_sample, vxclss.InsufficientTrainData,
                     "No valid data has been used to train the distribution for category 0"),
    "bad pointer": (lambda: vxclss.ClassifierDecisionTree() == vxclss.ClassifierDecisionTree(),
                    vxclss.BadPointer, None),
    "status": (lambda: two_categories().classifier.category_models[0].densities[0].log_value(
        [1.0, 2.0]), vxclss.StatusError, None),
    "unknown version": (lambda: vxclss.Costs.from_bytes(b"\x01"), vxclss.UnknownVersion, None),
    "malformed": (truncated, vxclss.Malformed, "The archive ends too early"),
    "unstorable": (lambda: vxclss.CategoryResult(2**40).to_bytes(), vxclss.Unstorable, None),
}


@pytest.mark.parametrize("name", CASES)
def test_an_error_of_the_library_has_its_class_number_and_text(name):
    operation, leaf, text = CASES[name]
    with pytest.raises(vxclss.Error) as caught:
        operation()
    assert type(caught.value) is leaf
    assert caught.value.number == LEAVES[leaf]
    assert caught.value.row is None
    if text is not None:
        assert caught.value.message == text
        assert str(caught.value) == text


def test_every_leaf_has_the_number_of_its_cpp_class():
    for leaf, number in LEAVES.items():
        assert leaf.NUMBER == number
        assert type(errors._made(number, "text")) is leaf
    assert {leaf for leaf in vars(errors).values()
            if isinstance(leaf, type) and getattr(leaf, "NUMBER", 0)} == set(LEAVES)


def test_the_tree_is_that_of_cpp():
    archive = {vxclss.UnknownVersion, vxclss.Malformed, vxclss.Unstorable, vxclss.StreamFailure}
    for leaf, number in LEAVES.items():
        assert issubclass(leaf, vxclss.Error)
        assert issubclass(leaf, vxclss.ArchiveError) == (leaf in archive)
        assert issubclass(leaf, vxclss.ClassifierError) == (number >= 0x10004200)


def test_leaves_are_pythons_own_errors_too_where_those_mean_the_same():
    for leaf in (vxclss.BadParams, vxclss.BadLabel, vxclss.BadFeatures, vxclss.Malformed,
                 vxclss.InsufficientTrainData):
        assert issubclass(leaf, ValueError)
    assert issubclass(vxclss.BadIndex, IndexError)
    assert issubclass(vxclss.NotSupported, NotImplementedError)


def test_a_number_without_a_class_gives_the_base():
    error = errors._made(0x20000001, "of the host's own")
    assert type(error) is vxclss.Error
    assert (error.number, error.message) == (0x20000001, "of the host's own")


def test_an_error_without_a_text_shows_its_number():
    with pytest.raises(vxclss.BadPointer, match="0x10000000"):
        raise errors._made(0x10000000, "")


def test_details_of_an_error_are_attributes():
    with pytest.raises(vxclss.StatusError) as caught:
        CASES["status"][0]()
    assert caught.value.status & 0xFFFFFFFF >= 0x80000000
    with pytest.raises(vxclss.UnknownVersion) as version:
        CASES["unknown version"][0]()
    assert isinstance(version.value.name, str)
    assert isinstance(version.value.line, int)


@pytest.mark.parametrize("duplicate", [lambda e: pickle.loads(pickle.dumps(e)), copy.copy])
def test_errors_survive_pickling_whole(duplicate):
    error = errors._made(0x10004206, "text", row=7)
    other = duplicate(error)
    assert type(other) is vxclss.BadFeatures
    assert (other.message, other.number, other.row, str(other)) == ("text", 0x10004206, 7,
                                                                   "row 7: text")
