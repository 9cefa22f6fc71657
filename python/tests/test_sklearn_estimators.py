# SPDX-License-Identifier: MIT
import copy
import pickle
import subprocess

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

pytest.importorskip("sklearn")
import joblib
from sklearn.base import clone
from sklearn.exceptions import NotFittedError
from sklearn.model_selection import cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler
from sklearn.utils.estimator_checks import (
    check_dataframe_column_names_consistency, check_n_features_in_after_fitting,
    parametrize_with_checks,
)

import vxclss
from conftest import bits, mixture
from vxclss.sklearn import (
    BayesClassifier, KNNClassifier, RuleTableClassifier, TreeClassifier, from_model, load,
)

ALL = [BayesClassifier, KNNClassifier, TreeClassifier, RuleTableClassifier]
GROWING = [BayesClassifier, KNNClassifier]
WITH_TOOL = [BayesClassifier, KNNClassifier, TreeClassifier]


def named(rows=120, width=4, seed=1):
    """Rows of three classes called by names that don't sort as they first appear."""
    X, y = mixture(rows, width, 3, seed)
    return X, np.array(["washer", "bolt", "nut"])[y]


# None of scikit-learn's checks is skipped.
@parametrize_with_checks([
    BayesClassifier(), BayesClassifier(dependent="all", frequencies="empirical"),
    BayesClassifier(keep_rows=False),
    KNNClassifier(), KNNClassifier(n_neighbors=3, p=1.0), TreeClassifier(), RuleTableClassifier(),
    RuleTableClassifier(threshold=0.99)])
def test_scikit_learns_checks_pass(estimator, check):
    check(estimator)


@pytest.mark.parametrize("estimator", ALL)
def test_scikit_learns_checks_of_column_names_pass(estimator):
    check_n_features_in_after_fitting(estimator.__name__, estimator())
    pytest.importorskip("pandas")
    check_dataframe_column_names_consistency(estimator.__name__, estimator())


@pytest.mark.parametrize("estimator", WITH_TOOL)
def test_answers_are_those_of_the_tool_by_name(estimator):
    X, y = named()
    fitted = estimator().fit(X, y)
    assert fitted.classes_.tolist() == ["bolt", "nut", "washer"]
    answers = fitted.tool_.run(X)
    assert fitted.predict(X).tolist() == fitted.classes_[answers.labels].tolist()
    assert bits(fitted.predict_proba(X)) == bits(answers.class_scores)
    assert bits(fitted.expected_costs(X)) == bits(answers.expected_costs)
    np.testing.assert_array_equal(np.exp(fitted.predict_log_proba(X)).round(12),
                                  fitted.predict_proba(X).round(12))
    assert fitted.score(X, y) == (fitted.predict(X) == y).mean() > 0.5


@pytest.mark.parametrize("estimator", ALL)
def test_threads_change_no_answer(estimator):
    X, y = named(500)
    one, two = estimator(n_jobs=1).fit(X, y), estimator(n_jobs=2).fit(X, y)
    assert one.predict(X).tolist() == two.predict(X).tolist()


@pytest.mark.parametrize("estimator", ALL)
def test_estimators_work_in_pipelines_and_cross_validation(estimator):
    X, y = named(300)
    assert cross_val_score(make_pipeline(StandardScaler(), estimator()), X, y, cv=3).mean() > 0.5


@pytest.mark.parametrize("estimator", ALL)
def test_a_failed_fit_leaves_the_estimator_as_it_was(estimator):
    X, y = named()
    fitted = estimator().fit(X, y)
    before = fitted.predict(X).tolist()
    for bad in ((X[:, :2], y[:5]), (np.full((4, 2), np.inf), y[:4])):
        with pytest.raises(ValueError):
            fitted.fit(*bad)
        assert fitted.n_features_in_ == 4 and fitted.predict(X).tolist() == before
    fresh = estimator()
    with pytest.raises(ValueError):
        fresh.fit(X, y[:5])
    with pytest.raises(NotFittedError):
        fresh.predict(X)


@pytest.mark.parametrize("estimator", ALL)
@pytest.mark.parametrize("copied", [
    copy.copy, copy.deepcopy, lambda e: pickle.loads(pickle.dumps(e))])
def test_copies_answer_the_same(estimator, copied):
    X, y = named()
    fitted = estimator().fit(X, y)
    other = copied(fitted)
    assert other.get_params().keys() == fitted.get_params().keys()
    if estimator is RuleTableClassifier:
        assert bits(other.rule_scores(X)) == bits(fitted.rule_scores(X))
    else:
        assert bits(other.predict_proba(X)) == bits(fitted.predict_proba(X))


def test_joblib_dumps_estimators(tmp_path):
    X, y = named()
    fitted = BayesClassifier().fit(X, y)
    joblib.dump(fitted, tmp_path / "model.joblib")
    assert bits(joblib.load(tmp_path / "model.joblib").predict_proba(X)) == bits(
        fitted.predict_proba(X))


@pytest.mark.parametrize("estimator", GROWING)
@pytest.mark.parametrize("copied", [
    copy.copy, copy.deepcopy, lambda e: pickle.loads(pickle.dumps(e))])
def test_a_copy_that_learns_more_never_changes_the_original(estimator, copied):
    X, y = named()
    original = estimator().fit(X, y)
    before, tool = bits(original.predict_proba(X)), original.tool_.to_bytes()
    other = copied(original)
    other.partial_fit(X + 3.0, y[::-1])
    assert bits(other.predict_proba(X)) != before
    assert bits(original.predict_proba(X)) == before and original.tool_.to_bytes() == tool
    # And the other way round.
    changed = bits(other.predict_proba(X))
    original.partial_fit(X - 1.0, np.roll(y, 1))
    assert bits(original.predict_proba(X)) != before
    assert bits(other.predict_proba(X)) == changed


@pytest.mark.parametrize("estimator", GROWING)
def test_rows_that_the_caller_changes_later_were_learnt_as_they_were(estimator):
    X, y = named()
    mine = X.copy()
    growing = estimator().partial_fit(mine, y, classes=np.unique(y))
    mine[:] = 7.0
    assert bits(growing.predict_proba(X)) == bits(estimator().fit(X, y).predict_proba(X))
    mine = X.copy()
    fitted = estimator().fit(mine, y)
    mine[:] = 7.0
    fitted.partial_fit(X, y)
    twice = estimator().fit(np.vstack([X, X]), np.concatenate([y, y]))
    assert bits(fitted.predict_proba(X)) == bits(twice.predict_proba(X))


@settings(max_examples=40)
@given(st.sampled_from(GROWING), st.lists(st.integers(0, 60), max_size=6), st.booleans(),
       st.integers(0, 5))
def test_partial_fit_gives_bit_for_bit_what_one_fit_gives(estimator, cuts, asked, seed):
    X, y = named(60, seed=seed)
    classes = np.unique(y)
    growing = estimator()
    for rows, names in zip(np.split(X, sorted(cuts)), np.split(y, sorted(cuts))):
        if len(rows):
            growing.partial_fit(rows, names, classes=classes)
            if asked:
                try:
                    growing.predict(X[:1])
                except vxclss.InsufficientTrainData:
                    pass  # a class with one row so far
    whole = estimator().fit(X, y)
    assert growing.tool_ == whole.tool_
    assert bits(growing.predict_proba(X)) == bits(whole.predict_proba(X))


@pytest.mark.parametrize("estimator", GROWING)
def test_many_small_partial_fits_are_learnt_in_one_training(estimator, monkeypatch):
    X, y = named()
    train, learnt = estimator._tool_with, []

    def counted(self, rows, codes):
        learnt.append(len(rows))
        return train(self, rows, codes)

    monkeypatch.setattr(estimator, "_tool_with", counted)
    growing = estimator()
    for rows, names in zip(np.split(X, 60), np.split(y, 60)):
        growing.partial_fit(rows.astype(np.float32), names, classes=np.unique(y))
    growing.predict(X)
    growing.partial_fit(X, y)
    growing.predict(X)
    assert learnt == [120, 120]
    assert bits(growing.predict_proba(X)) == bits(estimator().fit(
        np.vstack([X.astype(np.float32), X]), np.concatenate([y, y])).predict_proba(X))


@pytest.mark.parametrize("estimator", GROWING)
def test_classes_without_rows_so_far_have_no_answer(estimator):
    X, y = named()
    growing = estimator().partial_fit(X[y != "nut"], y[y != "nut"], classes=np.unique(y))
    assert not growing.predict_proba(X)[:, 1].any()
    assert np.isnan(growing.expected_costs(X)[:, 1]).all()
    assert "nut" not in growing.predict(X)
    with pytest.raises(ValueError, match="screw"):
        growing.partial_fit(X[:1], ["screw"])
    with pytest.raises(ValueError):
        growing.partial_fit(X, y, classes=["bolt", "nut"])
    growing.partial_fit(X[y == "nut"], y[y == "nut"])
    assert "nut" in growing.predict(X)
    with pytest.raises(ValueError, match="classes"):
        estimator().partial_fit(X, y)


def test_a_class_with_one_row_is_named():
    X, y = named()
    with pytest.raises(vxclss.InsufficientTrainData, match="'screw' has 1 sample of measurement 0"):
        BayesClassifier().fit(np.vstack([X, X[:1]]), np.append(y, "screw"))


def test_bayes_without_rows_of_its_own_is_small_and_refuses_more():
    X, y = named(2000)
    small, large = BayesClassifier(keep_rows=False).fit(X, y), BayesClassifier().fit(X, y)
    assert len(pickle.dumps(small)) < 4000 < X.nbytes < len(pickle.dumps(large))
    before = bits(small.predict_proba(X))
    assert not hasattr(small, "partial_fit") and hasattr(large, "partial_fit")
    with pytest.raises(AttributeError, match="keep_rows"):
        small.partial_fit(X, y)
    growing = BayesClassifier(keep_rows=False).partial_fit(X[:9], y[:9], classes=np.unique(y))
    assert growing.partial_fit(X[9:], y[9:]).tool_ == small.tool_
    assert not hasattr(growing, "partial_fit")
    small.set_params(frequencies="empirical").retrain()
    assert small.tool_ == BayesClassifier(frequencies="empirical").fit(X, y).tool_
    small.set_params(frequencies=None).retrain()
    assert bits(small.predict_proba(X)) == before == bits(large.predict_proba(X))


def test_bayes_takes_missing_values_as_the_library_does():
    X, y = named()
    X[::5, 1] = np.nan
    X[3] = np.nan
    fitted = BayesClassifier().fit(X, y)
    codes = np.searchsorted(fitted.classes_, y)
    tool = vxclss.Tool().train(vxclss.DataProvider(X, codes), vxclss.TrainParamsBayesian())
    assert bits(fitted.predict_proba(X)) == bits(tool.run(X).class_scores)
    np.testing.assert_allclose(fitted.predict_proba(X)[3], 1 / 3)
    for estimator in (KNNClassifier, TreeClassifier, RuleTableClassifier):
        with pytest.raises(ValueError, match="NaN"):
            estimator().fit(X, y)


def test_retrain_takes_costs_without_rows():
    X, y = named()
    for estimator in (BayesClassifier(keep_rows=False), KNNClassifier()):
        fitted = estimator.fit(X, y)
        other = copy.copy(fitted)
        before = bits(fitted.expected_costs(X))
        other.set_params(costs={("nut", "bolt"): 50.0}).retrain()
        direct = clone(other).fit(X, y)
        assert bits(other.expected_costs(X)) == bits(direct.expected_costs(X)) != before
        assert bits(fitted.expected_costs(X)) == before
    few = copy.copy(fitted).set_params(n_neighbors=1).retrain()
    assert (few.predict(X) == y).all()
    with pytest.raises(ValueError):
        BayesClassifier().fit(X, y).set_params(dependent="all").retrain()


@pytest.mark.parametrize("estimator", WITH_TOOL)
@pytest.mark.parametrize("whole", [False, True])
def test_a_model_file_gives_the_estimator_back(estimator, whole, tmp_path):
    X, y = named()
    if whole:
        y = np.unique(y, return_inverse=True)[1]
    fitted = estimator().fit(X, y)
    fitted.save(tmp_path / "parts.model")
    model = vxclss.load(tmp_path / "parts.model")
    assert model.category_names == [str(name) for name in fitted.classes_]
    loaded = load(tmp_path / "parts.model")
    assert type(loaded) is estimator and loaded.tool_ == fitted.tool_
    assert loaded.classes_.tolist() == fitted.classes_.tolist()
    for answer in ("predict_proba", "expected_costs"):
        assert bits(getattr(loaded, answer)(X)) == bits(getattr(fitted, answer)(X))
    assert bits(from_model(model).predict_proba(X)) == bits(fitted.predict_proba(X))
    assert bits(clone(loaded).fit(X, y).predict_proba(X)) == bits(fitted.predict_proba(X))
    if estimator is KNNClassifier:
        more = copy.copy(fitted).partial_fit(X + 1, y)
        assert bits(loaded.partial_fit(X + 1, y).predict_proba(X)) == bits(more.predict_proba(X))
    if estimator is BayesClassifier:
        assert not hasattr(loaded, "partial_fit")


def test_names_that_a_model_file_cant_tell_apart_are_refused(tmp_path):
    X, y = named()
    fitted = KNNClassifier().fit(X, y)
    fitted.classes_ = np.array([1, "1", 2], dtype=object)
    with pytest.raises(ValueError, match="equal"):
        fitted.save(tmp_path / "parts.model")
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize("estimator", WITH_TOOL)
def test_the_command_decides_the_same(estimator, command, tmp_path):
    pandas = pytest.importorskip("pandas")
    X, y = named()
    frame = pandas.DataFrame(X, columns=["length", "width", "area", "gloss"])
    fitted = estimator().fit(frame, y)
    fitted.save(tmp_path / "parts.model")
    frame.to_csv(tmp_path / "new.csv", index=False, float_format="%.17g")
    done = subprocess.run([command, "run", tmp_path / "parts.model", tmp_path / "new.csv"],
                          check=True, capture_output=True, text=True)
    decided = [line.split(",")[1] for line in done.stdout.splitlines()[1:]]
    assert decided == fitted.predict(frame).tolist()


def test_the_command_applies_saved_rules(command, tmp_path):
    X, y = named()
    fitted = RuleTableClassifier(threshold=0.8, reject="").fit(X, y)
    fitted.save(tmp_path / "rules.json")
    np.savetxt(tmp_path / "new.csv", X, fmt="%.17g", delimiter=",", header="x0,x1,x2,x3",
               comments="")
    done = subprocess.run([command, "rules", tmp_path / "rules.json", tmp_path / "new.csv",
                           "--threshold", "0.8"], check=True, capture_output=True, text=True)
    decided = [line.split(",")[1] for line in done.stdout.splitlines()[1:]]
    assert decided == fitted.predict(X).tolist() and "" in decided
