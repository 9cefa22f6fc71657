# SPDX-License-Identifier: MIT
"""What several threads may do with one estimator."""

import copy
import pickle
import threading

import numpy as np
import pytest

pytest.importorskip("sklearn")
import joblib
from sklearn.base import clone

from conftest import bits, mixture
from vxclss.sklearn import BayesClassifier, KNNClassifier

GROWING = [BayesClassifier, KNNClassifier]
X, Y = mixture(120, 3, 3)


def meanwhile(monkeypatch, estimator, *actions):
    """Has each action run in a thread of its own while an estimator of the class trains.

    The training goes on when they have ended, or after a moment, as they may wait for it. Returns
    the threads.
    """
    train = estimator._tool_with
    threads = [threading.Thread(target=action) for action in actions]

    def slowly(self, rows, codes):
        monkeypatch.setattr(estimator, "_tool_with", train)
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(0.05)
        return train(self, rows, codes)

    monkeypatch.setattr(estimator, "_tool_with", slowly)
    return threads


@pytest.mark.parametrize("estimator", GROWING)
def test_rows_that_come_while_a_question_trains_are_learnt_once(estimator, monkeypatch):
    growing = estimator().partial_fit(X[:100], Y[:100], classes=[0, 1, 2])
    threads = meanwhile(monkeypatch, estimator, lambda: growing.partial_fit(X[100:], Y[100:]),
                        lambda: growing.predict(X), lambda: growing.retrain())
    growing.predict(X[:1])
    for thread in threads:
        thread.join()
    assert growing.tool_ == estimator().fit(X, Y).tool_


@pytest.mark.parametrize("estimator", GROWING)
def test_a_copy_made_while_a_question_trains_has_the_rows_once(estimator, monkeypatch):
    growing = estimator().partial_fit(X[:60], Y[:60], classes=[0, 1, 2])
    copies = []
    threads = meanwhile(monkeypatch, estimator, lambda: copies.append(copy.copy(growing)),
                        lambda: copies.append(pickle.loads(pickle.dumps(growing))))
    growing.predict(X[:1])
    for thread in threads:
        thread.join()
    for other in copies:
        assert other.partial_fit(X[60:], Y[60:]).tool_ == estimator().fit(X, Y).tool_
    assert len(copies) == 2


@pytest.mark.parametrize("estimator", GROWING)
def test_a_refused_partial_fit_hides_nothing_from_other_threads(estimator, monkeypatch):
    fitted = estimator().fit(X, Y)
    answers, seen = bits(fitted.predict_proba(X)), []
    refuse = estimator._checked_training

    def while_it_is_undone(self, *arguments, **named):
        self.half_done_ = True
        return refuse(self, *arguments, **named)

    class Watched(dict):
        def clear(self):
            super().clear()
            seen.append("nothing")

    monkeypatch.setattr(estimator, "_checked_training", while_it_is_undone)
    fitted.__dict__ = Watched(fitted.__dict__)
    with pytest.raises(ValueError):
        fitted.partial_fit(X[:, :2], Y)
    assert not seen and not hasattr(fitted, "half_done_")
    assert bits(fitted.predict_proba(X)) == answers


@pytest.mark.parametrize("estimator", GROWING)
@pytest.mark.parametrize("copied", [
    clone, copy.copy, copy.deepcopy, lambda e: pickle.loads(pickle.dumps(e))])
def test_a_copy_does_not_wait_for_the_original(estimator, copied):
    original = estimator().partial_fit(X, Y, classes=[0, 1, 2])
    other, asked = copied(original), []
    with original._lock:
        thread = threading.Thread(target=lambda: asked.append(other.fit(X, Y).predict(X)))
        thread.start()
        thread.join()
    assert asked[0].tolist() == original.predict(X).tolist()


def test_joblibs_threads_ask_an_estimator_that_has_rows_to_learn():
    growing = KNNClassifier().partial_fit(X, Y, classes=[0, 1, 2])
    answers = joblib.Parallel(n_jobs=2, backend="threading")(
        joblib.delayed(growing.predict_proba)(rows) for rows in np.array_split(X, 4))
    assert bits(np.vstack(answers)) == bits(KNNClassifier().fit(X, Y).predict_proba(X))
    assert growing.tool_.classifier.data.num_patterns == len(X)
