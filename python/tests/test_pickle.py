# SPDX-License-Identifier: MIT
import copy
import pickle
import pprint

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

import vxclss
from conftest import bits, leaf, mixture, small_tree, trained
from vxclss import DistributionType

BAYES, KNN, TREE = trained("bayes", rows=20), trained("knn", rows=20), trained("tree")
MODEL = BAYES.classifier.category_models[0]
BINOMIAL = vxclss.Tool().train(
    vxclss.DataProvider([[0.0], [3.0], [9.0], [2.0]], [0, 0, 0, 0]),
    vxclss.TrainParamsBayesian(vxclss.DistributionTypes(DistributionType.BINOMIAL),
                               max_measurement_values=[9.0]))

SAMPLES = [
    vxclss.FeaturePattern([1.0, np.nan, -0.0], [0]),
    vxclss.DataProvider([[1.0, np.nan], [2.0, 3.0]], [0, -1], name="né", description="d"),
    vxclss.Costs(2.0, {(1, 0): 5.0, (0, 1): 0.0}),
    vxclss.Frequencies(0.5, {3: 2.0}),
    vxclss.DistributionTypes(overrides={(0, 4): DistributionType.BINOMIAL},
                             dependent=[(0, [1, 2])]),
    vxclss.CategoryResult(3, 0.5, 0.25, 7.0),
    vxclss.Result([vxclss.CategoryResult(3, 0.5, 0.25, 7.0)], -1.5),
    vxclss.Norm(1.5),
    vxclss.TrainParamsKNN(7, distance_metric=1.0, misclassification_costs=vxclss.Costs(3.0)),
    vxclss.TrainParamsBayesian(category_frequencies=vxclss.Frequencies(2.0),
                               max_measurement_values=[1.0, np.nan]),
    vxclss.ComparisonPredicate(4, 2),
    vxclss.RangePredicate((-1.0, 2.0), [3, 1]),
    vxclss.ValidityPredicate([0, 2]),
    leaf(3, 4),
    small_tree(),
    MODEL.densities[0],
    BINOMIAL.classifier.category_models[0].densities[0],
    MODEL,
    BAYES.classifier,
    KNN.classifier,
    TREE.classifier,
    BAYES,
    KNN,
    TREE,
    vxclss.Tool(),
    vxclss.ClassifierKNN(),
    vxclss.FeatureScoreIgnore(),
    vxclss.FeatureScoreOneSided(0, 2, 5, 1, 0.5),
    vxclss.FeatureScoreTwoSided(40, 30, 30, 60, 70, 70),
    vxclss.FeatureVector([1.0, np.nan]),
    vxclss.Rule([vxclss.FeatureScoreIgnore(), vxclss.FeatureScoreOneSided()], 4),
    vxclss.RuleTable([vxclss.Rule([vxclss.FeatureScoreTwoSided()], 4)]),
]
NAMES = [f"{i}-{type(sample).__name__}" for i, sample in enumerate(SAMPLES)]


def test_every_archivable_class_has_a_sample():
    archivable = {value for value in vars(vxclss).values()
                  if isinstance(value, type) and hasattr(value, "from_bytes")}
    assert {type(sample) for sample in SAMPLES} == archivable


@pytest.mark.parametrize("duplicate", [
    *(lambda x, p=p: pickle.loads(pickle.dumps(x, p)) for p in range(2, 6)), copy.copy,
    copy.deepcopy, lambda x: vxclss.loads(vxclss.dumps(x), type(x)),
    lambda x: type(x).from_bytes(bytearray(x.to_bytes()))])
@pytest.mark.parametrize("sample", SAMPLES, ids=NAMES)
def test_an_object_survives_archives_pickles_and_copies(sample, duplicate):
    other = duplicate(sample)
    assert type(other) is type(sample) and other is not sample
    assert other.to_bytes() == sample.to_bytes()
    assert repr(other) == repr(sample)
    if type(sample).__eq__ is not object.__eq__ and not isinstance(sample, vxclss.ClassifierKNN):
        assert other == sample


@pytest.mark.parametrize("sample", [*SAMPLES, DistributionType.NORMAL], ids=[*NAMES, "type"])
def test_pprint_shows_what_repr_does(sample):
    assert pprint.pformat(sample, width=1) == repr(sample)


ONE_CLASS = vxclss.ClassDataGenerator([(95.0, 4.0), (140.0, 6.0)], 50)
GENERATORS = [vxclss.ClassDataGenerator(), ONE_CLASS, vxclss.TotalDataGenerator(),
              vxclss.TotalDataGenerator([ONE_CLASS, vxclss.ClassDataGenerator([(0.0, 1.0)] * 2, 9)])]


@pytest.mark.parametrize("used", [False, True])
@pytest.mark.parametrize("duplicate", [
    *(lambda x, p=p: pickle.loads(pickle.dumps(x, p)) for p in range(6)), copy.copy, copy.deepcopy,
    lambda x: eval(repr(x), vars(vxclss))])
@pytest.mark.parametrize("generator", GENERATORS)
def test_a_copied_generator_gives_the_same_patterns(generator, duplicate, used):
    data = generator.generate_data() if used else None
    other = duplicate(generator)
    assert type(other) is type(generator) and repr(other) == repr(generator)
    assert other.generate_data() == (data or generator.generate_data())


def test_a_generator_shows_what_it_was_made_of():
    assert repr(ONE_CLASS) == "ClassDataGenerator([(95.0, 4.0), (140.0, 6.0)], 50)"
    assert repr(GENERATORS[3]).startswith(f"TotalDataGenerator([{ONE_CLASS!r}, ")
    assert pprint.pformat(ONE_CLASS, width=1) == repr(ONE_CLASS)


class NamedTool(vxclss.Tool):
    def __init__(self, owner):
        super().__init__()
        self.owner = owner


class NamedProvider(vxclss.DataProvider):
    pass


class NamedTable(vxclss.RuleTable):
    pass


class NamedNeighbours(vxclss.ClassifierKNN):
    pass


class NamedPattern(vxclss.FeaturePattern):
    pass


def named():
    X, y = mixture(20, 4, 3)
    tool = NamedTool("parts").train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(3))
    neighbours = NamedNeighbours()
    neighbours.train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(3))
    others = [NamedProvider(X, y), NamedTable([vxclss.Rule([vxclss.FeatureScoreIgnore()], 1)]),
              neighbours, NamedPattern([1.0, np.nan])]
    for other in others:
        other.owner = "parts"
    return [tool, *others]


@pytest.mark.parametrize("duplicate", [
    *(lambda x, p=p: pickle.loads(pickle.dumps(x, p)) for p in range(6)), copy.copy,
    copy.deepcopy])
@pytest.mark.parametrize("place", range(5))
def test_a_derived_class_and_its_attributes_are_kept(place, duplicate):
    obj = named()[place]
    obj.history = [1, 2]
    other = duplicate(obj)
    assert type(other) is type(obj) and vars(other) == {"owner": "parts", "history": [1, 2]}
    assert other.to_bytes() == obj.to_bytes()
    other.owner = "others"
    assert obj.owner == "parts"
    assert (other.history is obj.history) == (duplicate is copy.copy)


def test_a_derived_class_may_refer_to_itself():
    tool = named()[0]
    tool.me = tool
    other = copy.deepcopy(tool)
    assert other.me is other is not tool


def test_what_a_copy_would_lose_is_refused():
    class Slotted(vxclss.Tool):
        __slots__ = ("name",)

    for duplicate in (copy.copy, copy.deepcopy, pickle.dumps):
        with pytest.raises(TypeError, match="Slotted has __slots__"):
            duplicate(Slotted())


def test_what_cpp_would_ignore_cant_be_derived():
    open_classes = {vxclss.FeaturePattern, vxclss.DataProvider, vxclss.Tool, vxclss.RuleTable,
                    vxclss.ClassifierKNN, vxclss.ClassifierBayesian, vxclss.ClassifierDecisionTree}
    for cls in {type(sample) for sample in SAMPLES} - open_classes | {
            vxclss.ClassDataGenerator, vxclss.TotalDataGenerator}:
        with pytest.raises(TypeError, match="not an acceptable base type"):
            type("Derived", (cls,), {})
    for base in (vxclss.DistanceMetric, vxclss.Predicate, vxclss.FeatureScore, vxclss.Density,
                 vxclss.TrainParams, vxclss.DecisionTree, vxclss.Classifier):
        with pytest.raises(TypeError, match="No constructor defined"):
            type("Derived", (base,), {})()


def test_objects_of_a_list_are_shared_in_its_pickle():
    pattern = vxclss.FeaturePattern([1.0])
    first, second = pickle.loads(pickle.dumps([pattern, pattern]))
    assert first is second


@settings(max_examples=30)
@given(st.sampled_from(["bayes", "knn", "tree"]), st.integers(1, 9),
       st.sampled_from([0.5, 1.0, 2.0, 3.0]), st.integers(0, 1000))
def test_a_pickled_tool_answers_with_the_same_bits(technique, k, order, seed):
    params = {"knn": {"k": k, "distance_metric": order,
                      "misclassification_costs": vxclss.Costs(1.0, {(0, 1): 7.0})},
              "bayes": {"category_frequencies": vxclss.Frequencies(1.0, {1: 3.0})}}
    tool = trained(technique, rows=40, seed=seed, **params.get(technique, {}))
    other = pickle.loads(pickle.dumps(tool))
    X = mixture(20, 4, 3, seed=seed + 1)[0]
    for field in ("labels", "class_scores", "match_scores", "expected_costs",
                  "match_score_factor_logs"):
        assert bits(getattr(other.run(X), field)) == bits(getattr(tool.run(X), field))
    assert other == tool


def test_an_unready_tool_can_be_copied():
    tool = vxclss.Tool().train(vxclss.DataProvider([[1.0]], [0]),
                               vxclss.TrainParamsBayesian(throw_if_not_ready=False))
    other = copy.copy(tool)
    assert other.is_trained and other == tool
    assert other.train_params.throw_if_not_ready


@pytest.mark.parametrize("sample", SAMPLES, ids=NAMES)
def test_bytes_that_are_cut_or_go_on_are_no_archive(sample):
    whole = sample.to_bytes()
    with pytest.raises(vxclss.Malformed, match="Bytes after the end"):
        type(sample).from_bytes(whole + b"\0")
    for end in range(0, len(whole), 1 + len(whole) // 50):
        with pytest.raises(vxclss.ArchiveError):
            type(sample).from_bytes(whole[:end])


def use(loaded):
    """What a program would do with it: answers, or errors of the library."""
    repr(loaded)
    for ask in (lambda: loaded.run(np.zeros((2, 4))), lambda: loaded.run(np.zeros((2, 1)), 2),
                lambda: loaded.run(vxclss.FeaturePattern([0.0] * 4)), lambda: loaded == loaded,
                lambda: copy.copy(loaded), lambda: loaded.score([1.0, 2.0]),
                lambda: loaded.measurement_counts, lambda: loaded.to_arrays(),
                lambda: loaded.rule_scores([[1.0, 2.0]]), lambda: loaded.log_value([1.0]),
                lambda: repr(loaded.classifier), lambda: loaded.classifier.data.to_arrays(),
                lambda: loaded.overrides, lambda: repr(loaded.category_models)):
        try:
            ask()
        except (vxclss.Error, AttributeError, TypeError, ValueError):
            pass


@settings(max_examples=500)
@given(st.sampled_from(SAMPLES), st.data())
def test_damaged_bytes_give_an_object_or_an_error_of_the_archive(sample, data):
    damaged = bytearray(sample.to_bytes())
    for _ in range(data.draw(st.integers(1, 4))):
        if not damaged:
            break
        place = data.draw(st.integers(0, len(damaged) - 1))
        if data.draw(st.booleans()):
            damaged[place] = data.draw(st.one_of(st.sampled_from([0, 1, 2, 3, 127, 255]),
                                                 st.integers(0, 255)))
        else:
            del damaged[place:place + data.draw(st.integers(1, 8))]
    try:
        loaded = type(sample).from_bytes(bytes(damaged))
    except vxclss.ArchiveError:
        return
    use(loaded)


@settings(max_examples=200)
@given(st.sampled_from(sorted({type(s) for s in SAMPLES}, key=str)), st.binary(max_size=200))
def test_any_bytes_give_an_object_or_an_error_of_the_archive(cls, data):
    try:
        loaded = cls.from_bytes(data)
    except vxclss.ArchiveError:
        return
    use(loaded)


def test_what_has_no_archive_is_refused():
    for refused in (lambda: vxclss.dumps([1]), lambda: vxclss.loads(b"", list),
                    lambda: vxclss.Tool.from_bytes("text"), lambda: vxclss.Tool.from_bytes(None),
                    lambda: vxclss.Tool.from_bytes(3)):
        with pytest.raises(TypeError):
            refused()


def test_an_archive_of_several_objects_is_read_in_their_order():
    costs = vxclss.Costs(2.0, {(1, 0): 5.0})
    data = costs.to_bytes() + KNN.to_bytes()  # as C++ stores them, since costs hold no pointers
    assert vxclss.loads(data, (vxclss.Costs, vxclss.Tool)) == (costs, KNN)
    assert vxclss.loads(data, (vxclss.Costs,), rest=True) == (costs,)
    assert vxclss.loads(data, vxclss.Costs, rest=True) == costs
    assert vxclss.loads(b"", ()) == ()
    for classes in (vxclss.Costs, (vxclss.Costs,)):
        with pytest.raises(vxclss.Malformed, match="Bytes after the end"):
            vxclss.loads(data, classes)
    with pytest.raises(vxclss.ArchiveError):
        vxclss.loads(data[:-1], (vxclss.Costs, vxclss.Tool))
    for classes in ((vxclss.Costs, list), (vxclss.Predicate,), (None,)):
        with pytest.raises(TypeError, match="has no archive"):
            vxclss.loads(data, classes)


@pytest.mark.parametrize("sample", SAMPLES, ids=NAMES)
def test_an_archive_may_begin_with_any_object(sample):
    cls = type(sample)
    assert vxclss.loads(sample.to_bytes() + b"rest", cls, rest=True).to_bytes() == sample.to_bytes()
    first, = vxclss.loads(sample.to_bytes(), (cls,))
    assert type(first) is cls and first.to_bytes() == sample.to_bytes()


def test_the_tool_of_a_model_file_is_read_alone(tmp_path):
    vxclss.save(tmp_path / "model", KNN)
    data = (tmp_path / "model").read_bytes()
    assert vxclss.loads(data, vxclss.Tool, rest=True) == KNN
    with pytest.raises(vxclss.Malformed, match="Bytes after the end"):
        vxclss.loads(data, vxclss.Tool)


def test_a_strided_buffer_is_refused_as_python_refuses_it():
    data = memoryview(np.zeros(10, dtype="u1"))[::2]
    with pytest.raises((BufferError, ValueError)):
        vxclss.Tool.from_bytes(data)


def test_joblib_stores_tools(tmp_path):
    joblib = pytest.importorskip("joblib")
    joblib.dump(KNN, tmp_path / "tool")
    assert joblib.load(tmp_path / "tool") == KNN
