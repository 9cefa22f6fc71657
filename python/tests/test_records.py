# SPDX-License-Identifier: MIT
import numpy as np
import pytest

import vxclss
from vxclss import (BadIndex, BadLabel, BadParams, CategoryResult, Costs, DistributionType,
                    DistributionTypes, Frequencies, Norm, Result, TrainParamsBayesian,
                    TrainParamsKNN)


def test_costs_are_looked_up_by_ordered_pair():
    costs = Costs(2.0, {(1, 0): 5.0}).with_override(0, 3, 0.0)
    assert costs.misclassification_cost(1, 0) == 5.0
    assert costs.misclassification_cost(0, 1) == 2.0
    assert costs.overrides == {(1, 0): 5.0, (0, 3): 0.0}
    assert costs == Costs(2.0, [((1, 0), 5.0), ((0, 3), 0.0)])
    assert costs != Costs(2.0)
    assert repr(costs) == "Costs(2.0, {(1, 0): 5.0, (0, 3): 0.0})"
    assert eval(repr(costs)) == costs


def test_an_estimator_shows_long_costs():
    sklearn = pytest.importorskip("vxclss.sklearn")
    costs = Costs(1.0, {(i, j): 2.0 for i in range(5) for j in range(5) if i != j})
    assert repr(costs) in repr(sklearn.BayesClassifier(costs=costs))


def test_what_costs_refuse():
    for default, overrides, error in [(-1.0, None, BadParams), (1.0, {(0, 1): -1.0}, BadParams),
                                      (1.0, {(1, 1): 1.0}, BadLabel),
                                      (1.0, {(-1, 1): 1.0}, BadLabel)]:
        with pytest.raises(error):
            Costs(default, overrides)
    with pytest.raises(BadLabel):
        Costs().misclassification_cost(1, 1)
    with pytest.raises(TypeError, match="overrides map pairs of labels to costs, not"):
        Costs(1.0, {3: 1.0})


def test_frequencies_are_looked_up_by_label():
    frequencies = Frequencies(0.5, {4: 9.0}).with_override(1, 2.0)
    assert frequencies.category_frequency(4) == 9.0
    assert frequencies.category_frequency(3) == frequencies.default == 0.5
    assert frequencies.overrides == {4: 9.0, 1: 2.0}
    assert eval(repr(frequencies)) == frequencies
    with pytest.raises(BadParams):
        Frequencies(0.0)
    with pytest.raises(BadLabel):
        frequencies.category_frequency(-1)


def test_distribution_types_hold_overrides_and_dependency_sets():
    types = DistributionTypes(overrides={(0, 2): DistributionType.BINOMIAL},
                              dependent=[(0, [0, 1]), (1, [3, 4])]).with_dependent(0, [1, 5])
    assert types.default == DistributionType.NORMAL
    assert types.overrides == {(0, 2): DistributionType.BINOMIAL}
    assert types.distribution_type(0, 2) == DistributionType.BINOMIAL
    assert types.is_dependent(0, [0, 5]) and not types.is_dependent(1, [0, 5])
    assert [(category, sorted(members)) for category, members in types.dependent] == [
        (0, [0, 1, 5]), (1, [3, 4])]
    assert eval(repr(types)) == types
    with pytest.raises(BadParams):
        types.with_override(0, 1, DistributionType.BINOMIAL)
    with pytest.raises(BadParams):
        types.with_dependent(0, [2, 3])
    with pytest.raises(BadIndex):
        types.distribution_type(0, -1)


def test_records_never_change():
    costs = Costs()
    costs.with_override(0, 1, 3.0)
    costs.overrides[(0, 1)] = 3.0
    assert costs == Costs()
    with pytest.raises(AttributeError):
        costs.default = 2.0
    params = TrainParamsKNN(3)
    assert params.replace(k=4).k == 4
    assert params.k == 3


def test_a_result_sorts_its_categories_by_cost():
    result = Result([CategoryResult(3, 1.0, 0.25, 0.75), CategoryResult(1, 0.5, 0.75, 0.25)], -2.0)
    assert result.label == 1
    assert [category.category_label for category in result] == [1, 3]
    assert result[-1] == CategoryResult(3, 1.0, 0.25, 0.75)
    assert result.match_score_factor_log == -2.0
    with pytest.raises(IndexError):
        result[2]
    assert eval(repr(result)) == result


def test_results_and_providers_iterate_as_lists_do():
    result = Result([CategoryResult(0), CategoryResult(1, expected_cost=1.0)])
    provider = vxclss.DataProvider([[1.0], [2.0]], [0, 1])
    for sequence in (result, provider):
        assert list(iter(sequence)) == [sequence[0], sequence[1]] == list(reversed(sequence))[::-1]
    seen = []
    for pattern, label in provider:  # what is appended meanwhile comes too
        seen.append(label)
        if len(provider) < 4:
            provider.append(pattern, 7)
    assert seen == [0, 1, 7, 7]


def test_a_result_weighs_match_scores_by_frequencies_and_costs():
    matches = [CategoryResult(0, 0.5), CategoryResult(1, 0.5)]
    weighed = Result(matches, frequencies=Frequencies(1.0, {1: 3.0}), costs=Costs(2.0))
    assert [(c.category_label, c.class_score, c.expected_cost) for c in weighed] == [
        (1, 0.75, 0.5), (0, 0.25, 1.5)]
    assert Result(matches, costs=Costs(2.0))[0].expected_cost == 1.0


def test_what_results_refuse():
    with pytest.raises(BadLabel):
        CategoryResult(-1)
    with pytest.raises(BadParams):
        CategoryResult(0, match_score=1.5)
    with pytest.raises(BadParams):
        Result([CategoryResult(0), CategoryResult(0)])
    assert Result().label is None and len(Result()) == 0
    assert np.isnan(CategoryResult(0, np.nan).match_score)


def test_parameters_have_the_librarys_defaults():
    knn = TrainParamsKNN(3)
    assert knn.distance_metric == Norm(2.0)
    assert knn.misclassification_costs == Costs(1.0)
    bayes = TrainParamsBayesian()
    assert bayes.category_frequencies == Frequencies(1.0)
    assert bayes.distribution_types == DistributionTypes()
    assert bayes.max_measurement_values.num_measurements == 0
    assert knn.throw_if_not_ready and bayes.throw_if_not_ready


def test_parameters_are_replaced_one_by_one():
    knn = TrainParamsKNN(3, distance_metric=1, misclassification_costs=Costs(2.0))
    other = knn.replace(k=7, throw_if_not_ready=False)
    assert other == TrainParamsKNN(7, distance_metric=Norm(1.0), misclassification_costs=Costs(2.0))
    assert not other.throw_if_not_ready
    bayes = TrainParamsBayesian(max_measurement_values=[np.nan, 12.0])
    assert bayes.replace(category_frequencies=Frequencies(2.0)).max_measurement_values == (
        bayes.max_measurement_values)
    assert bayes.max_measurement_values.invalid_feature_indices == [0]
    for params in (knn, bayes, other):
        assert repr(eval(repr(params), {**vars(vxclss), "nan": np.nan})) == repr(params)
    with pytest.raises(TypeError):
        knn.replace(neighbours=3)
    with pytest.raises(TypeError, match="must be real number, not str"):
        TrainParamsKNN(3, distance_metric="euclidean")


def test_the_norm_measures_the_minkowski_distance():
    assert Norm().distance([0, 0], [3, 4]) == 5.0
    assert Norm(1).distance(vxclss.FeaturePattern([0, 0]), [3, 4]) == 7.0
    assert Norm(2) != Norm(1)
    with pytest.raises(BadParams):
        Norm(0.0)
    with pytest.raises(vxclss.BadFeatures):
        Norm().distance([0.0], [np.nan])
