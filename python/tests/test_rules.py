# SPDX-License-Identifier: MIT
import numpy as np
import pytest
from hypothesis import given, strategies as st

import vxclss
from conftest import bits
from vxclss import (FeatureScoreIgnore, FeatureScoreOneSided, FeatureScoreTwoSided, FeatureVector,
                    Rule, RuleTable)

AREA = FeatureScoreTwoSided(40, 30, 30, 60, 70, 70)
TABLE = RuleTable([Rule([AREA, FeatureScoreOneSided()], 0),
                   Rule([FeatureScoreIgnore(), FeatureScoreOneSided(0, 5, 5)], 3)])


def test_score_functions_are_those_of_the_page():
    assert [AREA.score(x) for x in (29, 32.5, 50, 65, 71)] == [0.0, 0.25, 1.0, 0.5, 0.0]
    assert FeatureScoreIgnore().score(np.nan) == -1.0
    assert FeatureScoreOneSided().score(0.25) == 0.75
    assert FeatureScoreTwoSided().score(-0.5) == 0.5
    assert (AREA.x0h, AREA.y1h) == (60.0, 0.0)
    for score in (AREA, FeatureScoreIgnore(), FeatureScoreOneSided(1, 2, 3, 1, 0.5)):
        assert eval(repr(score), vars(vxclss)) == score
    with pytest.raises(vxclss.BadParams, match="x1 must be lie between x0 and xc"):
        FeatureScoreOneSided(0, 2, 1)


def test_a_band_is_made_of_two_one_sided_functions():
    assert AREA.low == FeatureScoreOneSided(40, 30, 30)
    assert AREA.high == FeatureScoreOneSided(60, 70, 70)
    assert repr(AREA.low) == repr(FeatureScoreOneSided(40, 30, 30))
    assert AREA.high.score(65) == AREA.score(65) == 0.5


def test_the_first_rule_above_the_threshold_decides():
    X = [[32.5, 0.0], [0.0, 1.0], [0.0, 6.0], [np.nan, 0.5]]
    assert TABLE.classify_hard_threshold(X, 0.4).tolist() == [0, 3, -1, 3]
    assert TABLE.classify_hard_threshold(FeatureVector(X[0]), 0.4) == 0
    assert TABLE.classify_hard_threshold(X, 1.0).tolist() == [-1] * 4


@given(st.lists(st.tuples(st.floats(), st.floats()), max_size=20), st.floats(0, 1),
       st.integers(1, 3))
def test_a_batch_of_vectors_answers_as_one_after_another(rows, threshold, jobs):
    X = np.array(rows, dtype=float).reshape(-1, 2)
    labels = TABLE.classify_hard_threshold(X, threshold, n_jobs=jobs)
    assert labels.tolist() == [TABLE.classify_hard_threshold(FeatureVector(x), threshold)
                               for x in X]
    scores = TABLE.rule_scores(X, n_jobs=jobs)
    assert scores.shape == (len(X), 2)
    assert bits(scores) == bits(np.array(
        [[rule.score(FeatureVector(x)) for rule in TABLE.rules] for x in X]).reshape(-1, 2))


def test_what_tables_refuse():
    with pytest.raises(vxclss.NotTrained):
        RuleTable().classify_hard_threshold([[1.0]], 0.5)
    with pytest.raises(vxclss.BadParams) as caught:
        TABLE.classify_hard_threshold([[1.0, 2.0, 3.0]], 0.5)
    assert caught.value.row == 0
    with pytest.raises(TypeError, match="n_jobs is for the rows of a batch"):
        TABLE.classify_hard_threshold(FeatureVector([1.0, 2.0]), 0.5, n_jobs=2)
    for refused in (lambda: TABLE.classify_hard_threshold([[1.0, 2.0]], 1.5),
                    lambda: Rule([], 0), lambda: Rule([AREA], -1),
                    lambda: TABLE.train([]), lambda: TABLE.train([TABLE.rules[0], Rule([AREA], 1)])):
        with pytest.raises(vxclss.BadParams):
            refused()
    assert len(TABLE) == 2
    with pytest.raises(TypeError):
        Rule([None], 0)


def test_rules_are_compared_by_value():
    again = RuleTable([Rule([AREA, FeatureScoreOneSided()], 0)])
    assert again.rules[0] == TABLE.rules[0] and again != TABLE
    assert again.rules[0].scoring_methods[0] is AREA  # shared, as nobody can change it
