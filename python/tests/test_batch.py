# SPDX-License-Identifier: MIT
import array
import tracemalloc

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st
from hypothesis.extra import numpy as npst

import vxclss
from conftest import bits, mixture, small_tree, trained

TECHNIQUES = ["bayes", "knn", "tree"]
TOOLS = {technique: trained(technique) for technique in TECHNIQUES}
WIDTH = {"bayes": 4, "knn": 4, "tree": 3}


def one_by_one(tool, X):
    """What a batch has to give, from single runs."""
    categories = tool.category_labels.tolist()
    shape = (len(X), len(categories))
    labels = np.full(len(X), -1)
    factors = np.zeros(len(X))
    class_scores, match_scores = np.zeros(shape), np.zeros(shape)
    costs = np.full(shape, np.nan)
    for i, row in enumerate(X):
        result = tool.run(vxclss.FeaturePattern(row))
        if result.label is not None:
            labels[i] = result.label
        factors[i] = result.match_score_factor_log
        for category in result:
            column = categories.index(category.category_label)
            class_scores[i, column] = category.class_score
            match_scores[i, column] = category.match_score
            costs[i, column] = category.expected_cost
    return labels, class_scores, match_scores, costs, factors


def assert_same_answers(tool, X, **how):
    batch = tool.run(X, **how)
    labels, class_scores, match_scores, costs, factors = one_by_one(
        tool, np.asarray(X, dtype=float))
    assert bits(batch.labels) == bits(labels)
    assert bits(batch.class_scores) == bits(class_scores)
    assert bits(batch.match_scores) == bits(match_scores)
    assert bits(batch.expected_costs) == bits(costs)
    assert bits(batch.match_score_factor_logs) == bits(factors)
    assert bits(tool.decide(X, **how)) == bits(labels)
    assert bits(tool.class_scores(X, **how)) == bits(class_scores)


def rows_of(technique):
    # Nearest neighbours refuse NaN.
    elements = st.floats(allow_nan=technique != "knn", width=64)
    return npst.arrays(float, st.tuples(st.integers(0, 12), st.just(WIDTH[technique])),
                       elements=elements)


@settings(max_examples=60)
@given(st.sampled_from(TECHNIQUES), st.integers(1, 4), st.data())
def test_a_batch_gives_bit_for_bit_what_single_runs_give(technique, jobs, data):
    assert_same_answers(TOOLS[technique], data.draw(rows_of(technique)), n_jobs=jobs)


@settings(max_examples=40)
@given(st.sampled_from(TECHNIQUES),
       st.sampled_from(["f8", "f4", "f2", "i8", "i4", "i2", "i1", "u8", "u4", "u2", "u1", "?",
                        ">f8", ">i4", "g", "O"]),
       st.booleans(), st.integers(1, 2), st.integers(-2, 3))
def test_every_kind_and_layout_of_array_is_read_alike(technique, kind, fortran, jobs, step):
    width = WIDTH[technique]
    numbers = np.random.default_rng(3).integers(0, 5, (7, 2 * width)).astype(kind)
    X = numbers[::step or 1, ::2][:, :width]
    if fortran:
        X = np.asfortranarray(X)
    assert_same_answers(TOOLS[technique], X, n_jobs=jobs)


def test_unaligned_arrays_are_read_in_place():
    record = np.zeros(5, dtype=[("flag", "i1"), ("values", "f8", 4)])
    record["values"] = np.arange(20).reshape(5, 4) / 4
    assert not record["values"].flags.aligned
    assert_same_answers(TOOLS["bayes"], record["values"])


def test_buffers_and_lists_are_taken_too():
    X = np.arange(8.0).reshape(2, 4)
    expected = bits(TOOLS["knn"].run(X).class_scores)
    buffer = memoryview(array.array("d", range(8))).cast("B").cast("d", (2, 4))
    for same in (buffer, memoryview(X), X.tolist(), X.astype("f4")):
        assert bits(TOOLS["knn"].run(same).class_scores) == expected


def test_a_batch_is_not_written_to():
    X = np.arange(8.0).reshape(2, 4)
    X[1, 1] = np.nan
    X.flags.writeable = False
    TOOLS["bayes"].run(X)
    assert np.isnan(X[1, 1])


def test_large_batches_are_not_copied():
    X = np.broadcast_to(np.zeros((1, 4)), (3_000_000, 4))  # 96 MB if it were whole
    tool = vxclss.Tool().train(vxclss.DecisionTreeLeaf(vxclss.Result([vxclss.CategoryResult(1)])))
    tracemalloc.start()  # numpy tells it of every array
    try:
        labels = tool.decide(X)
        peak = tracemalloc.get_traced_memory()[1]
    finally:
        tracemalloc.stop()
    assert (labels == 1).all()
    assert labels.nbytes <= peak < labels.nbytes + 100_000


def test_masked_elements_are_invalid_measurements():
    X = np.ma.masked_array(np.arange(8).reshape(2, 4), mask=[[0, 1, 0, 0], [0, 0, 0, 0]])
    with_nan = np.arange(8.0).reshape(2, 4)
    with_nan[0, 1] = np.nan
    assert bits(TOOLS["bayes"].run(X).class_scores) == bits(
        TOOLS["bayes"].run(with_nan).class_scores)


def test_a_data_frames_missing_values_are_invalid_measurements():
    pandas = pytest.importorskip("pandas")
    X = np.array([[1.0, np.nan, 2.0, 3.0], [4.0, 5.0, 6.0, np.nan]])
    frame = pandas.DataFrame({"a": pandas.array([1, 4], dtype="Int64"),
                              "b": pandas.array([None, 5], dtype="Int64"),
                              "c": pandas.array([2.0, 6.0], dtype="Float64"),
                              "d": [3.0, np.nan]})
    assert pandas.isna(np.asarray(frame)[0, 1]) and np.asarray(frame).dtype == object
    assert bits(TOOLS["bayes"].run(frame).class_scores) == bits(TOOLS["bayes"].run(X).class_scores)
    labels = pandas.Series([0, 1], dtype="Int64")
    assert vxclss.DataProvider(frame, labels) == vxclss.DataProvider(X, [0, 1])
    assert vxclss.FeaturePattern(frame["b"]) == vxclss.FeaturePattern([np.nan, 5.0])
    with pytest.raises(ValueError, match="not whole"):
        vxclss.DataProvider(frame, frame["b"])
    for column, error in ((["x", "y"], ValueError), ([object(), 1.0], TypeError)):
        with pytest.raises(error):
            TOOLS["bayes"].run(frame.assign(d=column))


def test_columns_are_labels_ascending():
    tool = vxclss.Tool().train(
        vxclss.DataProvider([[1.0], [2.0], [3.0]], [70000, 5, 2**31 - 1]),
        vxclss.TrainParamsKNN(1))
    batch = tool.run([[2.9], [1.1]])
    assert batch.categories.tolist() == [5, 70000, 2**31 - 1]
    assert batch.labels.tolist() == [2**31 - 1, 70000]
    assert batch.class_scores.tolist() == [[0, 0, 1], [0, 1, 0]]
    np.testing.assert_array_equal(batch.expected_costs,
                                  [[np.nan, np.nan, 0], [np.nan, 0, np.nan]])


def test_an_empty_batch_gives_empty_arrays():
    for technique in TECHNIQUES:
        batch = TOOLS[technique].run(np.empty((0, WIDTH[technique])), n_jobs=3)
        assert len(batch) == 0 and batch.labels.dtype == np.int64
        assert batch.class_scores.shape == (0, len(batch.categories))
        assert repr(batch) == f"<BatchResult of 0 rows x {len(batch.categories)} categories>"


def test_a_leaf_without_categories_decides_nothing():
    tool = vxclss.Tool().train(vxclss.DecisionTreeLeaf(vxclss.Result()))
    batch = tool.run([[1.0], [2.0]])
    assert batch.labels.tolist() == [-1, -1] and batch.class_scores.shape == (2, 0)


@pytest.mark.parametrize("X, error, text", [
    ([1.0, 2.0, 3.0, 4.0], ValueError, r"X has 1 dimensions; .*X.reshape\(1, -1\)"),
    (3.0, ValueError, "X has 0 dimensions"),
    (np.zeros((2, 4, 1)), ValueError, "X has 3 dimensions"),
    (np.zeros((2, 3)), vxclss.BadFeatures,
     "X has 3 measurements a row; the classifier was trained on 4"),
    (np.zeros((2, 5)), vxclss.BadFeatures,
     "X has 5 measurements a row; the classifier was trained on 4"),
    (np.zeros((2, 0)), vxclss.BadFeatures, "X has 0 measurements"),
    (np.zeros((2, 4), complex), TypeError, "X holds complex128, not real numbers"),
    (np.zeros((2, 4), "M8[s]"), TypeError, "not real numbers"),
    ([["1", "2", "3", "4"]], TypeError, "X holds <U1, not real numbers"),
    ([[1.0, 2.0, 3.0, object()]], TypeError, ""),
    ([[1.0, 2.0], [3.0]], ValueError, ""),
    (None, (TypeError, ValueError), ""),
    ({1: 2}, (TypeError, ValueError), ""),
])
@pytest.mark.parametrize("technique", ["bayes", "knn"])
def test_what_a_batch_refuses(technique, X, error, text):
    with pytest.raises(error, match=text):
        TOOLS[technique].run(X)


def test_a_single_pattern_is_run_as_in_cpp():
    # A missing measurement at the end counts as invalid, one too many is ignored.
    assert len(TOOLS["bayes"].run(vxclss.FeaturePattern([0.0]))) == 3
    assert len(TOOLS["bayes"].run(vxclss.FeaturePattern([0.0] * 9))) == 3


@settings(max_examples=60)
@given(st.integers(1, 200), st.lists(st.integers(0, 199), max_size=4), st.integers(1, 5))
def test_the_first_row_that_fails_is_told(rows, bad, jobs):
    X = np.zeros((rows, 4))
    bad = [row for row in bad if row < rows]
    X[bad, 2] = np.nan
    if not bad:
        assert len(TOOLS["knn"].run(X, n_jobs=jobs)) == rows
        return
    with pytest.raises(vxclss.BadFeatures) as caught:
        TOOLS["knn"].run(X, n_jobs=jobs)
    assert caught.value.row == min(bad)
    assert str(caught.value).startswith(f"row {min(bad)}: K-nearest neighbor classification")


def test_the_row_that_a_density_refuses_is_told():
    tool = vxclss.Tool().train(
        vxclss.DataProvider([[0.0], [3.0], [9.0]], [0, 0, 0]),
        vxclss.TrainParamsBayesian(vxclss.DistributionTypes(vxclss.DistributionType.BINOMIAL),
                                   max_measurement_values=[9.0]))
    density = tool.classifier.category_models[0].densities[0]
    with pytest.raises(vxclss.BadParams) as caught:
        density.log_values([[1.0], [9.0], [99.0]])
    assert caught.value.row == 2


@pytest.mark.parametrize("jobs", [None, 1, 2, 7, 1000, -1, -2, -99, np.int64(2)])
def test_any_number_of_threads_gives_the_same_bits(jobs):
    X, _ = mixture(500, 4, 3, seed=2)
    for tool in (TOOLS["bayes"], TOOLS["knn"]):
        assert bits(tool.run(X, n_jobs=jobs).expected_costs) == bits(tool.run(X).expected_costs)


def test_no_threads_are_refused():
    with pytest.raises(ValueError, match="n_jobs is 0"):
        TOOLS["bayes"].run(np.zeros((2, 4)), n_jobs=0)
    with pytest.raises(TypeError):
        TOOLS["bayes"].run(np.zeros((2, 4)), n_jobs="all")


def test_run_and_run_batch_are_one():
    X, _ = mixture(20, 4, 3, seed=4)
    assert bits(TOOLS["knn"].run(X).class_scores) == bits(TOOLS["knn"].run_batch(X).class_scores)
    pattern = vxclss.FeaturePattern([0.0] * 4)
    for ask in (TOOLS["knn"].run_batch, TOOLS["knn"].decide, TOOLS["knn"].class_scores):
        with pytest.raises(TypeError, match="X is a FeaturePattern, one row"):
            ask(pattern)


@pytest.mark.parametrize("run", [TOOLS["knn"].run, TOOLS["knn"].classifier.run])
def test_one_row_is_not_shared_by_threads(run):
    pattern = vxclss.FeaturePattern([0.0] * 4)
    assert run(pattern, n_jobs=None) == run(pattern)
    with pytest.raises(TypeError, match="n_jobs is for the rows of a batch"):
        run(pattern, n_jobs=2)
