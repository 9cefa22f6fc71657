# SPDX-License-Identifier: MIT
import numpy as np
import pytest

import vxclss
from conftest import bits


def test_nan_is_an_invalid_measurement():
    pattern = vxclss.FeaturePattern([1.5, np.nan, -2.0])
    assert pattern.invalid_feature_indices == [1]
    assert pattern.valid.tolist() == [True, False, True]
    assert pattern.feature_measurements().tolist() == [1.5, 0.0, -2.0]
    np.testing.assert_array_equal(pattern.to_array(), [1.5, np.nan, -2.0])
    np.testing.assert_array_equal(np.asarray(pattern), [1.5, np.nan, -2.0])


def test_listed_measurements_are_invalid_and_keep_their_numbers():
    pattern = vxclss.FeaturePattern([1.5, 7.0], invalid=[1])
    assert pattern.num_invalid == 1
    assert pattern.feature_measurement(1, throw_if_invalid=False) == 7.0
    with pytest.raises(vxclss.BadFeatures):
        pattern.feature_measurement(1)


def test_nan_stays_a_number_on_request():
    pattern = vxclss.FeaturePattern([np.nan], nan_is_invalid=False)
    assert pattern.num_invalid == 0
    assert pattern != vxclss.FeaturePattern([np.nan], nan_is_invalid=False)


def test_infinity_is_a_number():
    assert vxclss.FeaturePattern([np.inf, -np.inf]).num_invalid == 0


def test_patterns_are_compared_by_value():
    assert vxclss.FeaturePattern([1, 2]) == vxclss.FeaturePattern(np.array([1.0, 2.0]))
    assert vxclss.FeaturePattern([1, 2]) != vxclss.FeaturePattern([1, 2], [0])
    assert vxclss.FeaturePattern([1, 2]) != [1, 2]
    with pytest.raises(TypeError, match="unhashable"):
        hash(vxclss.FeaturePattern([1]))


def test_indices_are_checked_as_in_cpp():
    pattern = vxclss.FeaturePattern([1.0])
    assert not pattern.is_valid(5)
    for call in (pattern.is_valid, pattern.feature_measurement):
        with pytest.raises(vxclss.BadIndex):
            call(-1)


def test_patterns_take_lists_only():
    with pytest.raises(ValueError, match="measurements has 2 dimensions"):
        vxclss.FeaturePattern([[1.0]])
    with pytest.raises(TypeError, match="<U3, not real numbers"):
        vxclss.FeaturePattern(["one"])
    with pytest.raises(TypeError, match="complex128, not real numbers"):
        vxclss.FeaturePattern([1j])


def test_repr_shows_numbers_and_invalid_ones():
    assert repr(vxclss.FeaturePattern([1.0, np.nan])) == "FeaturePattern([1.0, nan])"
    assert repr(vxclss.FeaturePattern(range(784))).endswith("11.0, ... 784 numbers])")


def test_a_provider_gives_back_the_arrays_that_it_was_made_of():
    X = np.array([[1.0, np.nan], [3.0, 4.0]])
    provider = vxclss.DataProvider(X, [5, -1], name="nuts", description="of two kinds")
    back, labels = provider.to_arrays()
    assert bits(back) == bits(X)
    assert labels.dtype == np.int64 and labels.tolist() == [5, -1]
    assert (len(provider), provider.num_measurements) == (2, 2)
    assert (provider.name, provider.description) == ("nuts", "of two kinds")
    assert provider[-1] == (vxclss.FeaturePattern([3, 4]), -1)
    assert [label for _, label in provider] == [5, -1]
    assert repr(provider) == "<DataProvider 'nuts' of 2 patterns x 2 measurements>"


def test_appending_and_extending_give_the_same_provider():
    X, y = np.arange(6.0).reshape(3, 2), [0, 1, 0]
    one_by_one = vxclss.DataProvider(name="a")
    for row, label in zip(X, y):
        one_by_one.append(row, label)
    at_once = vxclss.DataProvider(X[:1], y[:1], name="a")
    at_once.extend(X[1:], y[1:])
    at_once.extend(np.empty((0, 2)), [])
    assert one_by_one == at_once
    assert one_by_one.name == "a"


@pytest.mark.parametrize("X, y, error, text", [
    ([[1.0], [2.0]], [0], ValueError, "X has 2 rows and y has 1 labels"),
    ([1.0], [0], ValueError, "X has 1 dimensions"),
    ([[1.0]], [0.5], ValueError, "not whole"),
    ([[1.0]], [np.nan], ValueError, "not whole"),
    ([[1.0]], [2**63], ValueError, "too large"),
    ([[1.0]], ["1"], TypeError, "y holds <U1, not real numbers"),
    ([[1.0, 2.0, 3.0]], [0], vxclss.BadFeatures, ""),
    ([[1.0, 2.0]], [-2], vxclss.BadLabel, ""),
    ([[1.0, 2.0], [3.0, 4.0]], [0, -2], vxclss.BadLabel, ""),
    ([[1.0, 2.0, 3.0]], [-2], vxclss.BadFeatures, ""),
    ([[1.0, 2.0]], None, ValueError, ""),
])
def test_what_a_provider_refuses_leaves_it_as_it_was(X, y, error, text):
    provider = vxclss.DataProvider([[1.0, 2.0]], [3], name="kept")
    before = provider.to_bytes()
    with pytest.raises(error, match=text):
        provider.extend(X, y)
    assert provider.to_bytes() == before


def test_whole_floats_are_labels():
    assert vxclss.DataProvider([[1.0]], np.array([3.0])).labels.tolist() == [3]


def test_a_pattern_of_a_provider_outlives_it():
    pattern = vxclss.DataProvider([[1.0, 2.0]], [0]).feature_pattern(0)
    assert pattern == vxclss.FeaturePattern([1, 2])
