# SPDX-License-Identifier: MIT
import copy

import numpy as np
import pytest

import vxclss
from conftest import leaf, mixture, small_tree, trained


def test_bayes_answers_as_the_page_says():
    data = vxclss.DataProvider([[9.0], [10.0], [11.0], [12.0], [13.0], [14.0]],
                               [0, 0, 0, 1, 1, 1])
    tool = vxclss.Tool().train(data, vxclss.TrainParamsBayesian())
    result = tool.run(vxclss.FeaturePattern([12.0]))
    assert result.label == 1
    assert round(result[0].class_score, 6) == 0.817574
    tool.retrain(vxclss.TrainParamsBayesian(
        category_frequencies=vxclss.Frequencies(1.0, {0: 9.0}),
        misclassification_costs=vxclss.Costs(1.0, {(1, 0): 5.0})))
    result = tool.run(vxclss.FeaturePattern([12.0]))
    assert result.label == 1
    assert [round(c.expected_cost, 4) for c in result] == [0.6676, 1.6621]


def test_a_bayesian_classifier_shows_groups_and_densities():
    X, y = mixture(200, 3, 2)
    X[:, 2] = np.round(X[:, 2]).clip(0, 10)
    types = vxclss.DistributionTypes(
        overrides={(0, 2): vxclss.DistributionType.BINOMIAL}, dependent=[(0, [0, 1])])
    tool = vxclss.Tool().train(
        vxclss.DataProvider(X, y),
        vxclss.TrainParamsBayesian(types, max_measurement_values=[1.0, 1.0, 10.0]))
    models = {m.category_label: m for m in tool.classifier.category_models}
    assert sorted(tool.classifier.category_labels) == sorted(models) == [0, 1]
    assert models[0].num_measurements == 3
    groups = dict(zip(map(tuple, models[0].measurement_groups), models[0].densities))
    normal, binomial = groups[(0, 1)], groups[(2,)]
    np.testing.assert_allclose(normal.mean, X[y == 0, :2].mean(axis=0), rtol=1e-12)
    np.testing.assert_allclose(normal.covariance, np.cov(X[y == 0, :2].T), rtol=1e-10)
    assert normal.sample_count == (y == 0).sum() and normal.is_valid
    np.testing.assert_allclose(binomial.theta, X[y == 0, 2].mean() / 10)
    assert binomial.maximum_value == 10.0 and binomial.num_trials > 0
    row = [0.5, 0.25, 3.0]
    assert models[0].match_score(row) == normal.log_value(row[:2]) + binomial.log_value(row[2:])
    assert normal.log_values(X[:5, :2]).tolist() == [normal.log_value(x) for x in X[:5, :2]]


def test_nearest_neighbours_answer_by_share():
    tool = vxclss.Tool().train(vxclss.DataProvider([[3.9], [4.1], [4.4], [5.8], [6.3]],
                                                   [0, 0, 0, 1, 1]), vxclss.TrainParamsKNN(3))
    result = tool.run(vxclss.FeaturePattern([5.2]))
    assert [(c.category_label, c.class_score) for c in result] == [(1, 2 / 3), (0, 1 / 3)]
    assert tool.retrain(vxclss.TrainParamsKNN(1)).run(vxclss.FeaturePattern([5.2])).label == 1


def test_a_tree_answers_with_its_leaf():
    tool = vxclss.Tool().train(small_tree())
    assert tool.run(vxclss.FeaturePattern([0.0, 0.5, 0.0])).label == 4
    assert tool.run(vxclss.FeaturePattern([3.0, 2.0, 1.0])).label == 2
    assert tool.run(vxclss.FeaturePattern([np.nan, 2.0, 1.0])).label == 9
    assert tool.decision_tree == small_tree()
    assert tool.decision_tree.true_tree == leaf(4)
    assert tool.decision_tree.false_tree.predicate_function == vxclss.ComparisonPredicate(0, 2)
    assert sorted(tool.decision_tree.category_labels) == [2, 4, 9]


def test_predicates_answer_and_show_themselves():
    for predicate, yes, no in [
            (vxclss.ComparisonPredicate(0, 1), [2.0, 1.0], [1.0, 1.0]),
            (vxclss.RangePredicate((1.0, 2.0), [1]), [np.nan, 2.0], [0.0, 2.5]),
            (vxclss.RangePredicate(), [np.inf], [np.nan]),
            (vxclss.ValidityPredicate([0, 1]), [1.0, 2.0], [1.0])]:
        assert predicate.outcome(yes) and not predicate.outcome(no)
        assert eval(repr(predicate), {**vars(vxclss), "inf": np.inf}) == predicate
    with pytest.raises(vxclss.BadParams):
        vxclss.ComparisonPredicate(1, 1)
    with pytest.raises(vxclss.BadIndex):
        vxclss.ValidityPredicate([-1])


def test_shared_subtrees_cost_time_once():
    tree = leaf(0)
    for _ in range(200):  # 2 to the 200 paths
        tree = vxclss.DecisionTreeNode(vxclss.ValidityPredicate(), tree, tree)
    tool = vxclss.Tool().train(tree)
    assert tool.measurement_counts == (1, None)
    assert tool.run([[1.0], [np.nan]]).labels.tolist() == [0, 0]
    assert copy.copy(tool) == tool


@pytest.mark.parametrize("technique", ["bayes", "knn", "tree"])
def test_a_failed_training_leaves_the_tool_as_it_was(technique):
    tool = trained(technique)
    before = tool.to_bytes()
    short = vxclss.DataProvider([[1.0]], [0])
    with pytest.raises(vxclss.InsufficientTrainData):
        tool.train(short, vxclss.TrainParamsBayesian())
    invalid = vxclss.DataProvider([[np.nan]], [0])
    with pytest.raises(vxclss.BadFeatures):
        tool.train(invalid, vxclss.TrainParamsKNN(1))
    with pytest.raises(vxclss.BadMethod):
        tool.retrain({"bayes": vxclss.TrainParamsKNN(1)}.get(technique,
                                                            vxclss.TrainParamsBayesian()))
    assert tool.is_trained and tool.to_bytes() == before


def test_readiness_is_checked_on_request():
    short = vxclss.DataProvider([[1.0]], [0])
    tool = vxclss.Tool().train(short, vxclss.TrainParamsBayesian(throw_if_not_ready=False))
    assert tool.is_trained
    with pytest.raises(vxclss.InsufficientTrainData, match="category 0"):
        tool.run(vxclss.FeaturePattern([1.0]))


def test_an_untrained_tool_says_so():
    tool = trained("knn")
    tool.untrain()
    assert not tool.is_trained and tool == vxclss.Tool() and tool.classifier is None
    for ask in (lambda: tool.run([[1.0]]), lambda: tool.run(vxclss.FeaturePattern([1.0])),
                lambda: tool.category_labels, lambda: tool.train_params,
                lambda: tool.measurement_counts, lambda: tool.decide(np.empty((0, 1))),
                lambda: tool.retrain(vxclss.TrainParamsKNN(1))):
        with pytest.raises(vxclss.NotTrained):
            ask()
    assert repr(tool) == "<Tool, untrained>"


def test_a_tools_classifier_cant_be_changed():
    tool = trained("knn")
    view = tool.classifier
    for change in (lambda: view.untrain(), lambda: view.train_incremental([0] * 4, 0),
                   lambda: view.retrain(vxclss.TrainParamsKNN(1)),
                   lambda: view.train(vxclss.DataProvider(), vxclss.TrainParamsKNN(1))):
        with pytest.raises(TypeError, match="belongs to a tool"):
            change()
    assert tool.is_trained


def test_a_view_keeps_what_the_tool_held_when_it_was_made():
    tool = trained("knn", rows=60)
    view = tool.classifier
    tool.train(vxclss.DataProvider([[1.0], [2.0]], [0, 1]), vxclss.TrainParamsKNN(1))
    del tool
    assert len(view.data) == 60 and view.is_trained
    assert len(view.run(np.zeros((3, 4)))) == 3


def test_a_copied_nearest_neighbour_classifier_has_its_own_training_set():
    original = trained("knn").classifier
    copied = copy.copy(original)
    copied.train_incremental([9.0] * 4, 7)
    assert (len(original.data), len(copied.data)) == (60, 61)
    assert copied.run([[9.0] * 4]).labels.tolist() != [7]  # five neighbours, one of them new
    copied.retrain(vxclss.TrainParamsKNN(1))
    assert copied.run([[9.0] * 4]).labels.tolist() == [7]
    assert original.run([[9.0] * 4]).categories.tolist() == [0, 1, 2]


def test_classifiers_stand_alone():
    X, y = mixture(50, 2, 2)
    for technique, params in [(vxclss.ClassifierKNN, vxclss.TrainParamsKNN(3)),
                              (vxclss.ClassifierBayesian, vxclss.TrainParamsBayesian())]:
        classifier = technique()
        for rows in (X, X[:0], vxclss.FeaturePattern(X[0])):
            with pytest.raises(vxclss.NotTrained, match="trained before running"):
                classifier.run(rows)
        with pytest.raises(vxclss.NotTrained):
            classifier.train_incremental(X[0], 0)
        classifier.train(vxclss.DataProvider(X, y), params)
        tool = vxclss.Tool().train(vxclss.DataProvider(X, y), params)
        assert classifier == tool.classifier
        assert classifier.run(X).labels.tolist() == tool.decide(X).tolist()
        assert classifier.run(vxclss.FeaturePattern(X[0])) == tool.run(vxclss.FeaturePattern(X[0]))
        assert classifier.train_params == params
        classifier.untrain()
        assert not classifier.is_trained
    tree = vxclss.ClassifierDecisionTree()
    with pytest.raises(vxclss.NotSupported):
        tree.train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(1))
    tree.train_manual(small_tree())
    assert tree.decision_tree == small_tree()


def test_generated_data_is_that_of_cpp():
    data = vxclss.ClassDataGenerator([(95.0, 4.0), (140.0, 6.0)], 50).generate_data()
    assert len(data) == 50 and data.num_measurements == 2 and not data.labels.any()
    # The number that docs/generators.md prints.
    assert round(data[0][0].feature_measurement(0), 3) == 102.538
    total = vxclss.TotalDataGenerator([
        vxclss.ClassDataGenerator([(0.0, 1.0)] * 4, 10),
        vxclss.ClassDataGenerator([(9.0, 1.0)] * 4, 10)]).generate_data()
    assert len(total) == 4
    with pytest.raises(vxclss.BadIndex):
        vxclss.TotalDataGenerator([vxclss.ClassDataGenerator([(0.0, 1.0)] * 4, 3)]).generate_data()


def test_reprs_show_what_matters():
    assert repr(trained("knn", k=3)) == "<Tool with <ClassifierKNN of 60 patterns, k=3>>"
    assert repr(trained("bayes")) == "<Tool with <ClassifierBayesian of 3 categories>>"
    assert repr(trained("tree")) == "<Tool with <ClassifierDecisionTree>>"
    assert repr(small_tree()) == "<DecisionTreeNode that asks RangePredicate((0.0, 1.0), [1])>"
