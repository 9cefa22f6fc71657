// SPDX-License-Identifier: MIT
#include "tools/eval/split.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Split;
using Labels = std::vector<long>;

Labels someLabels() {
  Labels labels(7, 2);
  labels.insert(labels.end(), 12, 0);
  labels.insert(labels.end(), 3, -1);
  labels.insert(labels.end(), 4, 1);
  vxRandomUniform random(5);
  for (std::size_t i = labels.size(); i > 1; --i) {
    std::swap(labels[i - 1],
              labels[static_cast<std::size_t>(random.next(0.0, static_cast<double>(i)))]);
  }
  return labels;
}

std::pair<long, long> fewestAndMost(const std::vector<long>& counts) {
  const auto ends = std::minmax_element(counts.begin(), counts.end());
  return {*ends.first, *ends.second};
}

TEST(StratifiedFoldsTest, BalanceEveryCategoryAndTheWhole) {
  const Labels labels = someLabels();
  for (const long folds : {2, 3, 5, 23}) {
    SCOPED_TRACE(folds);
    const Split split = eval::stratifiedFolds(labels, folds, 1);
    EXPECT_EQ(split.rounds, folds);
    EXPECT_EQ(split.numTested(), 23);
    std::map<long, std::vector<long>> sizes;  // by label, -2 for all
    for (std::size_t i = 0; i < labels.size(); ++i) {
      EXPECT_EQ(split.roundOf[i] < 0, labels[i] < 0);
      if (labels[i] < 0) continue;
      ASSERT_LT(split.roundOf[i], folds);
      for (const long key : {labels[i], -2L}) {
        sizes[key].resize(static_cast<std::size_t>(folds));
        ++sizes[key][static_cast<std::size_t>(split.roundOf[i])];
      }
    }
    for (const auto& [label, counts] : sizes) {
      const auto [fewest, most] = fewestAndMost(counts);
      EXPECT_LE(most - fewest, 1) << label;
    }
  }
}

TEST(StratifiedFoldsTest, DependOnTheSeedAlone) {
  const Labels labels = someLabels();
  const auto folds = [](const Labels& of, long number, long seed) {
    return eval::stratifiedFolds(of, number, seed).roundOf;
  };
  EXPECT_EQ(folds(labels, 3, 1), folds(labels, 3, 1));
  EXPECT_NE(folds(labels, 3, 1), folds(labels, 3, 2));
  // The same on every machine.
  EXPECT_EQ(folds({0, 0, 0, 0, 1, 1, -1, 1, 1}, 2, 1), (Labels{1, 0, 1, 0, 1, 0, -1, 0, 1}));
}

TEST(StratifiedFoldsTest, AreTwoAtLeast) {
  EXPECT_THROW(eval::stratifiedFolds({0, 0, 1}, 1, 1), std::invalid_argument);
}

/// How many of each label are tested.
std::map<long, long> testedOf(const Labels& labels, const Split& split) {
  std::map<long, long> tested;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (split.roundOf[i] >= 0) ++tested[labels[i]];
  }
  return tested;
}

TEST(StratifiedHoldOutTest, TestsTheFractionOfEveryCategory) {
  const Labels labels = someLabels();  // 12 of 0, 4 of 1, 7 of 2
  const Split split = eval::stratifiedHoldOut(labels, 0.25, 1);
  EXPECT_EQ(split.rounds, 1);
  EXPECT_EQ(testedOf(labels, split), (std::map<long, long>{{0, 3}, {1, 1}, {2, 2}}));
  // 11.5 of 23 round up to 12, and the half goes to the only remainder.
  EXPECT_EQ(testedOf(labels, eval::stratifiedHoldOut(labels, 0.5, 1)),
            (std::map<long, long>{{0, 6}, {1, 2}, {2, 4}}));
}

TEST(StratifiedHoldOutTest, LeavesAPatternOfEachCategoryToLearnFrom) {
  const Labels labels{0, 0, 0, 0, 0, 1, 1, 2};
  EXPECT_EQ(testedOf(labels, eval::stratifiedHoldOut(labels, 0.99, 1)),
            (std::map<long, long>{{0, 4}, {1, 1}}));
  EXPECT_EQ(eval::stratifiedHoldOut({0, 1, 2}, 0.5, 1).numTested(), 0);
}

TEST(StratifiedHoldOutTest, DependsOnTheSeedAlone) {
  const Labels labels = someLabels();
  const auto tested = [&](long seed) { return eval::stratifiedHoldOut(labels, 0.4, seed).roundOf; };
  EXPECT_EQ(tested(1), tested(1));
  EXPECT_NE(tested(1), tested(2));
}

TEST(StratifiedHoldOutTest, RefusesWhatIsNoFraction) {
  for (const double fraction : {0.0, 1.0, -0.5, 2.0, std::nan("")}) {
    EXPECT_THROW(eval::stratifiedHoldOut({0, 0, 1, 1}, fraction, 1), std::invalid_argument);
  }
}

TEST(TrainingSetTest, LeavesOutTheRoundAndTheUnlabelled) {
  const eval::Dataset data = datasetOf({{{0}, 4}, {{1}, -1}, {{2}, 5}, {{3}, 6}});
  const auto provider = eval::trainingSet(data, {2, {0, -1, 1, 0}}, 1);
  ASSERT_EQ(provider.numPatterns(), 2);
  EXPECT_EQ(provider.featurePattern(1), data.patterns[3]);
  EXPECT_EQ(provider.categoryLabel(0), 4);
  EXPECT_EQ(provider.categoryLabel(1), 6);
}

TEST(TrainingSetTest, HoldsWhatIsNeverTested) {
  const eval::Dataset data = datasetOf({{{0}, 0}, {{1}, 0}, {{2}, 0}});
  EXPECT_EQ(eval::trainingSet(data, {1, {-1, 0, -1}}, 0).numPatterns(), 2);
}

}  // namespace
