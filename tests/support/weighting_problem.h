// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_WEIGHTING_PROBLEM_H_
#define TESTS_SUPPORT_WEIGHTING_PROBLEM_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <random>
#include <vector>

#include "tests/support/plain_result.h"
#include "vxclss/result.h"

/// A match score alone; the other fields are not read.
inline vxClassifierCategoryResult match(long label, double score) {
  return {label, score, 1.0, 9.0};
}

inline std::vector<long> labels(const std::vector<vxClassifierCategoryResult>& categories) {
  std::vector<long> list;
  for (const vxClassifierCategoryResult& category : categories) {
    list.push_back(category.categoryLabel());
  }
  return list;
}

/// The same bits; one NaN is as good as another.
inline bool isSameNumber(double x, double y) {
  return (std::isnan(x) && std::isnan(y)) || (x == y && std::signbit(x) == std::signbit(y));
}

/// The same numbers in every field.
inline bool isSame(const std::vector<vxClassifierCategoryResult>& a,
                   const std::vector<vxClassifierCategoryResult>& b) {
  const auto sameCategory = [](const vxClassifierCategoryResult& x,
                               const vxClassifierCategoryResult& y) {
    return x.categoryLabel() == y.categoryLabel() && isSameNumber(x.matchScore(), y.matchScore()) &&
           isSameNumber(x.classScore(), y.classScore()) &&
           isSameNumber(x.expectedCost(), y.expectedCost());
  };
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), sameCategory);
}

/// Weighting problems of one kind from one seed. Every second label occurs, in no order.
class WeightingProblem {
 public:
  enum Kind { kWholeNumbers, kFullMantissa };

  WeightingProblem(unsigned seed, std::size_t count, Kind kind) : random_(seed), kind_(kind) {
    std::vector<long> labelList(2 * count);
    std::iota(labelList.begin(), labelList.end(), 0);
    std::shuffle(labelList.begin(), labelList.end(), random_);
    for (std::size_t i = 0; i < count; ++i) {
      matches.push_back(match(labelList[i], i == 0 ? 1.0 : score()));
    }

    frequencies.defaultFrequency = positive();
    for (std::size_t i = 0; i < count / 2; ++i) frequencies.set(anyLabel(count), positive());
    costs.defaultCost = positive() - (kind == kWholeNumbers ? 1.0 : 0.0);
    for (std::size_t i = 0; i < 2 * count; ++i) {
      const long trueLabel = anyLabel(count);
      const long assignedLabel = anyLabel(count);
      if (trueLabel != assignedLabel) costs.set(trueLabel, assignedLabel, positive() - 1.0);
    }
  }

  vxClassifierResult result() const {
    return {matches, frequencies.record(), costs.record(), -2.5};
  }
  /// In the order in which the matches were given.
  std::vector<vxClassifierCategoryResult> expected() const {
    return plain::weigh(matches, frequencies, costs);
  }

  std::vector<vxClassifierCategoryResult> matches;
  plain::Frequencies frequencies;
  plain::Costs costs;

 private:
  double fraction() { return static_cast<double>(random_() >> 11) * 0x1p-53; }
  double score() {
    return kind_ == kWholeNumbers ? static_cast<double>(random_() % 3) / 2.0 : fraction();
  }
  double positive() {
    return kind_ == kWholeNumbers ? static_cast<double>(1 + random_() % 3) : 1.0 + fraction();
  }
  long anyLabel(std::size_t count) { return static_cast<long>(random_() % (2 * count)); }

  std::mt19937_64 random_;
  Kind kind_;
};

#endif  // TESTS_SUPPORT_WEIGHTING_PROBLEM_H_
