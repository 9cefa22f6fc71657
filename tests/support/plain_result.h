// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_RESULT_H_
#define TESTS_SUPPORT_PLAIN_RESULT_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "vxclss/costs.h"
#include "vxclss/frequencies.h"
#include "vxclss/result.h"

/// Weighting of match results as its definition says it, a loop for every sum.
namespace plain {

/// A default and overrides in the order in which their pairs were first set.
struct Costs {
  struct Override {
    long trueLabel;
    long assignedLabel;
    double cost;
  };

  void set(long trueLabel, long assignedLabel, double cost) {
    for (Override& entry : overrides) {
      if (entry.trueLabel == trueLabel && entry.assignedLabel == assignedLabel) {
        entry.cost = cost;
        return;
      }
    }
    overrides.push_back({trueLabel, assignedLabel, cost});
  }
  double of(long trueLabel, long assignedLabel) const {
    for (const Override& entry : overrides) {
      if (entry.trueLabel == trueLabel && entry.assignedLabel == assignedLabel) return entry.cost;
    }
    return defaultCost;
  }
  vxClassifierCosts record() const {
    vxClassifierCosts costs(defaultCost);
    for (const Override& entry : overrides) {
      costs.misclassificationCostOverride(entry.trueLabel, entry.assignedLabel, entry.cost);
    }
    return costs;
  }

  double defaultCost = 1.0;
  std::vector<Override> overrides;
};

/// A default and overrides in the order in which their labels were first set.
struct Frequencies {
  void set(long label, double frequency) {
    for (auto& [known, value] : overrides) {
      if (known == label) {
        value = frequency;
        return;
      }
    }
    overrides.emplace_back(label, frequency);
  }
  double of(long label) const {
    for (const auto& [known, value] : overrides) {
      if (known == label) return value;
    }
    return defaultFrequency;
  }
  vxClassifierFrequencies record() const {
    vxClassifierFrequencies frequencies(defaultFrequency);
    for (const auto& [label, value] : overrides)
      frequencies.categoryFrequencyOverride(label, value);
    return frequencies;
  }

  double defaultFrequency = 1.0;
  std::vector<std::pair<long, double>> overrides;
};

/// Moves each entry forward past those of strictly greater cost, the first one first.
inline void sortByExpectedCost(std::vector<vxClassifierCategoryResult>& results) {
  for (std::size_t i = 1; i < results.size(); ++i) {
    for (std::size_t j = i; j > 0 && results[j].expectedCost() < results[j - 1].expectedCost();
         --j) {
      std::swap(results[j], results[j - 1]);
    }
  }
}

/// Sorts runs of 32 like that and merges them pairwise, left before right where neither is less.
/// That is the same order, and says what comes of more than 32 where costs are NaN.
inline void sortInRuns(std::vector<vxClassifierCategoryResult>& results) {
  std::vector<std::vector<vxClassifierCategoryResult>> runs;
  for (std::size_t i = 0; i < results.size(); ++i) {
    if (i % 32 == 0) runs.emplace_back();
    runs.back().push_back(results[i]);
  }
  for (auto& run : runs) sortByExpectedCost(run);
  while (runs.size() > 1) {
    std::vector<std::vector<vxClassifierCategoryResult>> merged;
    for (std::size_t k = 0; k < runs.size(); k += 2) {
      merged.emplace_back();
      std::size_t left = 0;
      std::size_t right = 0;
      const std::vector<vxClassifierCategoryResult> none;
      const auto& other = k + 1 < runs.size() ? runs[k + 1] : none;
      while (left < runs[k].size() || right < other.size()) {
        const bool takesRight =
            left == runs[k].size() ||
            (right < other.size() && other[right].expectedCost() < runs[k][left].expectedCost());
        merged.back().push_back(takesRight ? other[right++] : runs[k][left++]);
      }
    }
    runs.swap(merged);
  }
  if (!runs.empty()) results = runs[0];
}

/// The weighted categories in the order in which they were given.
inline std::vector<vxClassifierCategoryResult> weigh(
    const std::vector<vxClassifierCategoryResult>& matchResults, const Frequencies& frequencies,
    const Costs& costs) {
  double priorSum = 0.0;
  for (const auto& match : matchResults) priorSum += frequencies.of(match.categoryLabel());

  std::vector<double> weights;
  double weightSum = 0.0;
  for (const auto& match : matchResults) {
    weights.push_back(match.matchScore() * frequencies.of(match.categoryLabel()) / priorSum);
    weightSum += weights.back();
  }

  std::vector<vxClassifierCategoryResult> results;
  for (std::size_t i = 0; i < matchResults.size(); ++i) {
    const long assigned = matchResults[i].categoryLabel();
    double cost = 0.0;
    for (std::size_t j = 0; j < matchResults.size(); ++j) {
      if (j != i) cost += costs.of(matchResults[j].categoryLabel(), assigned) * weights[j];
    }
    results.emplace_back(assigned, matchResults[i].matchScore(), weights[i] / weightSum,
                         cost / weightSum);
  }
  return results;
}

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_RESULT_H_
