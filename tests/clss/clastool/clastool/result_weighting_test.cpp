// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/attention_counter.h"
#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_result.h"
#include "tests/support/simd_levels.h"
#include "tests/support/weighting_problem.h"
#include "vxclss/errors.h"
#include "vxclss/result.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/exception.h"

namespace {

using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;
using Category = vxClassifierCategoryResult;
using Categories = std::vector<vxClassifierCategoryResult>;

const wchar_t* const kNotUnique = L"The category labels of the match results must be unique.";
const wchar_t* const kNoFrequency = L"At least one of the category frequencies must be > 0.";
const wchar_t* const kNoScore = L"At least one of the resulting classification scores must be > 0.";

vxClassifierResult weighted(const Categories& matches, double frequency = 1.0, double cost = 1.0) {
  return {matches, vxClassifierFrequencies(frequency), vxClassifierCosts(cost), 0.0};
}

TEST(ResultWeightingTest, GivesPosteriorsAndExpectedCosts) {
  const vxClassifierResult result = weighted({match(1, 0.2), match(2, 0.6)});
  ASSERT_EQ(labels(result.categoryResults()), (std::vector<long>{2, 1}));
  const Category& best = result.categoryResults()[0];
  EXPECT_EQ(best.matchScore(), 0.6);
  EXPECT_DOUBLE_EQ(best.classScore(), 0.75);
  EXPECT_DOUBLE_EQ(best.expectedCost(), 0.25);
  EXPECT_DOUBLE_EQ(result.categoryResults()[1].classScore(), 0.25);
  EXPECT_DOUBLE_EQ(result.categoryResults()[1].expectedCost(), 0.75);
}

TEST(ResultWeightingTest, IsCertainOfASingleCategory) {
  for (const double score : {1.0, 0.25, 1e-300}) {
    const vxClassifierResult result = weighted({match(5, score)}, 3.0, 7.0);
    EXPECT_TRUE(isSame(result.categoryResults(), {{5, score, 1.0, 0.0}})) << score;
  }
}

TEST(ResultWeightingTest, TakesCostsByTrueThenAssignedLabel) {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(1, 2, 8.0);
  const vxClassifierResult result({match(1, 0.5), match(2, 0.5)}, vxClassifierFrequencies(1.0),
                                  costs, 0.0);
  EXPECT_TRUE(isSame(result.categoryResults(), {{1, 0.5, 0.5, 0.5}, {2, 0.5, 0.5, 4.0}}));
}

TEST(ResultWeightingTest, WeighsByFrequency) {
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(2, 3.0);
  const vxClassifierResult result({match(1, 1.0), match(2, 1.0)}, frequencies,
                                  vxClassifierCosts(2.0), 4.0);
  EXPECT_TRUE(isSame(result.categoryResults(), {{2, 1.0, 0.75, 0.5}, {1, 1.0, 0.25, 1.5}}));
  EXPECT_EQ(result.matchScoreFactorLog(), 4.0);
}

TEST(ResultWeightingTest, FollowsTheDefinitionBitForBit) {
  std::vector<std::size_t> counts(66);
  std::iota(counts.begin(), counts.end(), 1);
  counts.insert(counts.end(), {96, 127, 128, 129, 200});
  for (const WeightingProblem::Kind kind :
       {WeightingProblem::kWholeNumbers, WeightingProblem::kFullMantissa}) {
    for (const std::size_t count : counts) {
      for (unsigned seed = 1; seed <= (count <= 40 ? 10u : 1u); ++seed) {
        SCOPED_TRACE(testing::Message()
                     << count << " categories, kind " << kind << ", seed " << seed);
        const WeightingProblem problem(seed, count, kind);
        Categories expected = problem.expected();
        plain::sortByExpectedCost(expected);
        atEverySimdLevel([&] {
          const vxClassifierResult result = problem.result();
          EXPECT_TRUE(isSame(result.categoryResults(), expected));
          EXPECT_EQ(result.matchScoreFactorLog(), -2.5);
        });
        if (HasFailure()) return;
      }
    }
  }
}

TEST(ResultWeightingTest, KeepsTheOrderOfTies) {
  for (const std::size_t count : {2u, 31u, 32u, 33u, 64u, 65u, 1000u}) {
    Categories matches;
    for (std::size_t i = 0; i < count; ++i) {
      matches.push_back(match(static_cast<long>((i * 7919) % 100003), 0.5));
    }
    const vxClassifierResult result = weighted(matches, 1.0, 0.0);
    EXPECT_EQ(labels(result.categoryResults()), labels(matches)) << count;
  }
}

TEST(ResultWeightingTest, SortsStablyForEveryNumberOfCategories) {
  std::mt19937 random(1);
  for (std::size_t count = 1; count <= 300; ++count) {
    Categories given;
    for (std::size_t i = 0; i < count; ++i) {
      given.emplace_back(static_cast<long>(i), 0.0, 1.0, static_cast<double>(random() % 8));
    }
    const vxClassifierResult result(given, 0.0);
    plain::sortByExpectedCost(given);
    ASSERT_EQ(labels(result.categoryResults()), labels(given)) << count << " categories";
  }
}

TEST(ResultWeightingTest, MovesCostsPastNothingButGreaterOnesWhereSomeAreNan) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::mt19937 random(seed);
    Categories given;
    for (long label = 0; label <= static_cast<long>(seed % 32); ++label) {
      const double cost = random() % 3 == 0 ? kNaN : static_cast<double>(random() % 8);
      given.emplace_back(label, 0.0, 1.0, cost);
    }
    const vxClassifierResult result(given, 0.0);
    plain::sortByExpectedCost(given);
    ASSERT_EQ(labels(result.categoryResults()), labels(given)) << "seed " << seed;
  }
}

TEST(ResultWeightingTest, KeepsEveryCategoryWhereCostsAreNan) {
  for (const std::size_t count : {33u, 64u, 100u, 257u, 1000u}) {
    std::mt19937 random(7);
    Categories given;
    for (std::size_t i = 0; i < count; ++i) {
      const double cost = random() % 3 == 0 ? kNaN : static_cast<double>(random() % 8);
      given.emplace_back(static_cast<long>(i), 0.0, 1.0, cost);
    }
    std::vector<long> sorted = labels(vxClassifierResult(given, 0.0).categoryResults());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, labels(given)) << count;
  }
}

TEST(ResultWeightingTest, KeepsTheOrderGivenWhereAMatchScoreIsNan) {
  for (const std::size_t count : {1u, 2u, 31u, 32u, 33u, 200u}) {
    for (const std::size_t place : {std::size_t{0}, count / 2, count - 1}) {
      Categories matches;
      for (std::size_t i = 0; i < count; ++i) {
        matches.push_back(match(static_cast<long>(i), i == place ? kNaN : 0.5));
      }
      const vxClassifierResult result = weighted(matches);
      EXPECT_EQ(labels(result.categoryResults()), labels(matches)) << count << ", NaN at " << place;
      EXPECT_TRUE(std::isnan(result.categoryResults()[0].classScore()));
    }
  }
}

TEST(ResultWeightingTest, MixesNumbersAndNanAsTheDefinitionDoes) {
  // An infinite cost of a category without weight is a NaN for one decision only.
  for (std::size_t count = 2; count <= 32; ++count) {
    WeightingProblem problem(static_cast<unsigned>(count), count, WeightingProblem::kWholeNumbers);
    problem.matches[1] = match(problem.matches[1].categoryLabel(), 0.0);
    problem.matches[0] = match(problem.matches[0].categoryLabel(), 1.0);
    for (std::size_t i = 2; i < count; i += 3) {
      problem.costs.set(problem.matches[1].categoryLabel(), problem.matches[i].categoryLabel(),
                        kInfinity);
    }
    Categories expected = problem.expected();
    plain::sortByExpectedCost(expected);
    EXPECT_TRUE(isSame(problem.result().categoryResults(), expected)) << count << " categories";
  }
}

TEST(ResultWeightingTest, RefusesOnePairOfEqualLabelsAmongMany) {
  std::mt19937 random(3);
  for (std::size_t count = 2; count <= 1000; ++count) {
    Categories given;
    for (std::size_t i = 0; i < count; ++i) {
      given.emplace_back(static_cast<long>((i * 2654435761u) % 2147483647u), 0.0, 1.0, 0.0);
    }
    ASSERT_NO_THROW(vxClassifierResult(given, 0.0)) << count;
    const std::size_t place = random() % count;
    const std::size_t other = (place + 1 + random() % (count - 1)) % count;
    given[place] = given[other];
    ASSERT_THROW(vxClassifierResult(given, 0.0), BadParams)
        << count << " categories, " << place << " as " << other;
  }
}

TEST(ResultWeightingTest, ReportsErrorsInTheOrderOfItsSteps) {
  const Categories twice = {match(1, 0.0), match(1, 0.0)};
  const Categories zeros = {match(1, 0.0), match(2, -0.0), match(3, 0.0)};
  vxClassifierFrequencies zero(1.0);
  load(fromHex("00 0000000000000000  00 00000000  00 00000000"), zero);
  const vxClassifierFrequencies one(1.0);
  struct Row {
    const char* name;
    const Categories& matches;
    const vxClassifierFrequencies& frequencies;
    const wchar_t* text;
    long polls;
  };
  const Categories none;
  const Row rows[] = {
      {"labels before frequencies", twice, zero, kNotUnique, 0},
      {"labels before scores", twice, one, kNotUnique, 0},
      {"nothing given", none, one, kNoFrequency, 0},
      {"frequencies before scores", zeros, zero, kNoFrequency, 0},
      {"scores", zeros, one, kNoScore, 3},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const AttentionCounter attention;
    expectThrows<BadParams>(
        [&] { vxClassifierResult(row.matches, row.frequencies, vxClassifierCosts(1.0), 0.0); },
        row.text);
    EXPECT_EQ(attention.polls(), row.polls);
  }
}

TEST(ResultWeightingTest, ChecksWhatAnArchiveBrought) {
  vxClassifierCosts negative(1.0);
  load(fromHex("00 000000000000f0bf  00 00000000  00 00000000  00 00000000"), negative);
  expectThrows<BadParams>(
      [&] {
        vxClassifierResult({match(1, 0.5), match(2, 0.5)}, vxClassifierFrequencies(1.0), negative,
                           0.0);
      },
      L"Costs must be >= 0.0");

  vxClassifierCosts negativeForTheSecond(1.0);
  load(fromHex("00 000000000000f03f  00 01000000 01000000  00 01000000 02000000"
               "00 01000000 000000000000f0bf"),
       negativeForTheSecond);
  expectThrows<BadParams>(
      [&] {
        vxClassifierResult({match(1, 0.5), match(2, 0.5)}, vxClassifierFrequencies(1.0),
                           negativeForTheSecond, 0.0);
      },
      L"Costs must be >= 0.0");

  Category unlabelled = match(0, 0.5);
  load(fromHex("00 ffffffff 0000000000000000 0000000000000000 0000000000000000"), unlabelled);
  expectThrows<BadLabel>([&] { weighted({unlabelled}); }, L"Category labels must be >= 0");
  expectThrows<BadParams>([&] { weighted({unlabelled, unlabelled}); }, kNotUnique);
}

TEST(ResultWeightingTest, PollsOncePerCategory) {
  for (const std::size_t count : {1u, 2u, 33u, 500u}) {
    Categories matches;
    for (std::size_t i = 0; i < count; ++i) matches.push_back(match(static_cast<long>(i), 1.0));
    const AttentionCounter attention;
    const vxClassifierResult result = weighted(matches);
    EXPECT_EQ(attention.polls(), static_cast<long>(count));
  }
}

TEST(ResultWeightingTest, StopsAtThePollThatAsksForIt) {
  Categories zeros;
  for (long label = 0; label < 5; ++label) zeros.push_back(match(label, 0.0));
  for (long stopAt = 1; stopAt <= 5; ++stopAt) {
    const AttentionCounter attention(stopAt);
    expectThrows<vxStopRequested>([&] { weighted(zeros); }, vxStopRequested().message());
    EXPECT_EQ(attention.polls(), stopAt) << "the scores are judged after the last poll";
  }
  const AttentionCounter attention(6);
  expectThrows<BadParams>([&] { weighted(zeros); }, kNoScore);
}

TEST(ResultWeightingTest, LeavesTheResultAloneThatWasToBeReplaced) {
  vxClassifierResult result = weighted({match(1, 0.5), match(2, 0.25)});
  const AttentionCounter attention(2);
  expectRefused<vxStopRequested>(
      result,
      [&] {
        result = weighted({match(3, 0.5), match(4, 0.5)});
      },
      vxStopRequested().message());
}

}  // namespace
