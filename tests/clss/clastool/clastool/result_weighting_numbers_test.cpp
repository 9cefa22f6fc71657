// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_result.h"
#include "tests/support/simd_levels.h"
#include "tests/support/weighting_problem.h"
#include "vxclss/result.h"

namespace {

/// Sizes around those of lanes and groups of lanes.
const std::size_t kCounts[] = {1, 2, 3, 8, 16, 17, 31, 33, 64, 65, 97, 130};

void expectDefinition(const WeightingProblem& problem) {
  std::vector<vxClassifierCategoryResult> expected = problem.expected();
  plain::sortInRuns(expected);
  atEverySimdLevel([&] { EXPECT_TRUE(isSame(problem.result().categoryResults(), expected)); });
}

/// How many of a problem's cost overrides stay.
enum Overrides { kNone, kFew, kAll };

WeightingProblem problemOf(unsigned seed, std::size_t count, Overrides overrides) {
  WeightingProblem problem(seed, count, WeightingProblem::kFullMantissa);
  auto& list = problem.costs.overrides;
  if (overrides == kNone) list.clear();
  if (overrides == kFew && list.size() > 3) list.erase(list.begin() + 3, list.end());
  return problem;
}

template <class Change>
void expectDefinitionOfEach(Change&& change) {
  for (const std::size_t count : kCounts) {
    for (const Overrides overrides : {kNone, kFew, kAll}) {
      for (unsigned seed = 1; seed <= (count <= 33 ? 3u : 1u); ++seed) {
        SCOPED_TRACE(testing::Message()
                     << count << " categories, overrides " << overrides << ", seed " << seed);
        WeightingProblem problem = problemOf(seed, count, overrides);
        std::mt19937_64 random(seed);
        change(problem, random);
        expectDefinition(problem);
      }
    }
  }
}

double fraction(std::mt19937_64& random) { return static_cast<double>(random() >> 11) * 0x1p-53; }

/// Gives all matches but the first one another score.
template <class Score>
void setScores(WeightingProblem& problem, Score&& score) {
  for (std::size_t i = 1; i < problem.matches.size(); ++i) {
    problem.matches[i] = match(problem.matches[i].categoryLabel(), score());
  }
}

TEST(ResultWeightingNumbersTest, FollowsTheDefinitionWithoutOverrides) {
  expectDefinitionOfEach([](WeightingProblem&, std::mt19937_64&) {});
}

TEST(ResultWeightingNumbersTest, FollowsTheDefinitionOfManyCategories) {
  for (const std::size_t count : {500u, 1000u, 1025u}) {
    for (const Overrides overrides : {kNone, kFew}) {
      expectDefinition(problemOf(1, count, overrides));
    }
  }
}

TEST(ResultWeightingNumbersTest, KeepsTheLastBitOfFarCategories) {
  expectDefinitionOfEach([](WeightingProblem& problem, std::mt19937_64& random) {
    setScores(problem, [&] { return std::exp(-900.0 * fraction(random)); });
  });
}

TEST(ResultWeightingNumbersTest, LeavesOutNothingWhereMostScoresAreZero) {
  expectDefinitionOfEach([](WeightingProblem& problem, std::mt19937_64& random) {
    const double scores[] = {0.0, -0.0, 0.0, -0.0, kTiny, 1e-310, 1e-17, 0.5, 1.0, 0.0};
    setScores(problem, [&] { return scores[random() % 10]; });
  });
}

TEST(ResultWeightingNumbersTest, KeepsTheOrderOfEqualScores) {
  expectDefinitionOfEach([](WeightingProblem& problem, std::mt19937_64&) {
    problem.frequencies.overrides.clear();
    setScores(problem, [] { return 1.0; });
  });
}

TEST(ResultWeightingNumbersTest, TakesScoresThatAreNan) {
  expectDefinitionOfEach([](WeightingProblem& problem, std::mt19937_64& random) {
    setScores(problem, [&] { return random() % 4 == 0 ? kNaN : fraction(random); });
  });
}

TEST(ResultWeightingNumbersTest, TakesDefaultCostsOfAnyValue) {
  for (const double cost : {0.0, -0.0, kTiny, 1e-300, 1e300, kMost, kInfinity, kNaN}) {
    SCOPED_TRACE(cost);
    expectDefinitionOfEach([&](WeightingProblem& problem, std::mt19937_64& random) {
      problem.costs.defaultCost = cost;
      setScores(problem, [&] { return random() % 3 == 0 ? 0.0 : fraction(random); });
    });
  }
}

TEST(ResultWeightingNumbersTest, TakesCostOverridesOfAnyValue) {
  // An infinite cost of a category without weight is a NaN, and for one decision only.
  for (const double odd : {0.0, -0.0, kTiny, kMost, kInfinity, kNaN}) {
    SCOPED_TRACE(odd);
    expectDefinitionOfEach([&](WeightingProblem& problem, std::mt19937_64& random) {
      setScores(problem, [&] { return random() % 3 == 0 ? 0.0 : fraction(random); });
      for (plain::Costs::Override& entry : problem.costs.overrides) {
        if (random() % 4 == 0) entry.cost = odd;
      }
    });
  }
}

TEST(ResultWeightingNumbersTest, TakesFrequenciesOfAnyValue) {
  for (const double odd : {kTiny, 1e-300, 1e300, kNaN}) {
    SCOPED_TRACE(odd);
    expectDefinitionOfEach([&](WeightingProblem& problem, std::mt19937_64& random) {
      for (auto& [label, frequency] : problem.frequencies.overrides) {
        if (random() % 4 == 0) frequency = odd;
      }
    });
  }
}

TEST(ResultWeightingNumbersTest, TakesAnOverrideForEveryPair) {
  for (const std::size_t count : {2u, 16u, 17u, 40u, 70u}) {
    WeightingProblem problem = problemOf(1, count, kNone);
    std::mt19937_64 random(1);
    for (const auto& assigned : problem.matches) {
      for (const auto& match : problem.matches) {
        if (match.categoryLabel() == assigned.categoryLabel()) continue;
        problem.costs.overrides.push_back(
            {match.categoryLabel(), assigned.categoryLabel(), fraction(random)});
      }
    }
    SCOPED_TRACE(count);
    expectDefinition(problem);
  }
}

TEST(ResultWeightingNumbersTest, FindsOverridesOfLabelsFarApart) {
  for (const long factor : {1L, 7L, 9L, 1000003L}) {
    for (const std::size_t count : {16u, 17u, 100u}) {
      SCOPED_TRACE(testing::Message() << "labels times " << factor << ", " << count);
      WeightingProblem problem = problemOf(2, count, kAll);
      for (auto& category : problem.matches) {
        category = match(category.categoryLabel() * factor, category.matchScore());
      }
      for (auto& [label, frequency] : problem.frequencies.overrides) label *= factor;
      for (plain::Costs::Override& entry : problem.costs.overrides) {
        entry.trueLabel *= factor;
        entry.assignedLabel *= factor;
      }
      expectDefinition(problem);
    }
  }
}

TEST(ResultWeightingNumbersTest, TakesTheFirstOfOverridesThatAnArchiveNamesTwice) {
  for (const std::size_t count : {2u, 3u, 16u, 17u, 40u, 100u}) {
    SCOPED_TRACE(count);
    WeightingProblem problem = problemOf(3, count, kAll);
    auto& overrides = problem.costs.overrides;
    const std::vector<plain::Costs::Override> once = overrides;
    for (const plain::Costs::Override& entry : once) {
      overrides.push_back({entry.trueLabel, entry.assignedLabel, entry.cost + 1.0});
    }
    overrides.insert(overrides.begin(), {-1, 3, 7.0});
    overrides.insert(overrides.begin(), {3, -1, 7.0});
    const long some = problem.matches[0].categoryLabel();
    overrides.insert(overrides.begin(), {some, some, kNaN});  // a correct decision costs nothing
    auto& frequencies = problem.frequencies.overrides;
    const std::vector<std::pair<long, double>> known = frequencies;
    for (const auto& [label, frequency] : known) frequencies.emplace_back(label, 2.0 * frequency);
    frequencies.emplace_back(-1, 5.0);

    std::vector<long> trueLabels;
    std::vector<long> assignedLabels;
    std::vector<double> numbers;
    for (const plain::Costs::Override& entry : overrides) {
      trueLabels.push_back(entry.trueLabel);
      assignedLabels.push_back(entry.assignedLabel);
      numbers.push_back(entry.cost);
    }
    unsigned char version = 0;
    vxClassifierCosts costs(0.0);
    load(stored(version, problem.costs.defaultCost, trueLabels, assignedLabels, numbers), costs);
    std::vector<long> frequencyLabels;
    std::vector<double> values;
    for (const auto& [label, frequency] : frequencies) {
      frequencyLabels.push_back(label);
      values.push_back(frequency);
    }
    vxClassifierFrequencies prior(1.0);
    load(stored(version, problem.frequencies.defaultFrequency, frequencyLabels, values), prior);

    std::vector<vxClassifierCategoryResult> expected = problem.expected();
    plain::sortInRuns(expected);
    atEverySimdLevel([&] {
      const vxClassifierResult result(problem.matches, prior, costs, 0.0);
      EXPECT_TRUE(isSame(result.categoryResults(), expected));
    });
  }
}

}  // namespace
