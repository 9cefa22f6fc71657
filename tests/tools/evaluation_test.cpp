// SPDX-License-Identifier: MIT
#include "tools/evaluation.h"

#include <gtest/gtest.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace {

using cli::Evaluation;
using cli::PatternHandle;
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
    const Labels foldOf = cli::stratifiedFolds(labels, folds, 1);
    std::map<long, std::vector<long>> sizes;  // by label, -2 for all
    for (std::size_t i = 0; i < labels.size(); ++i) {
      EXPECT_EQ(foldOf[i] < 0, labels[i] < 0);
      if (labels[i] < 0) continue;
      ASSERT_LT(foldOf[i], folds);
      for (const long key : {labels[i], -2L}) {
        sizes[key].resize(static_cast<std::size_t>(folds));
        ++sizes[key][static_cast<std::size_t>(foldOf[i])];
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
  EXPECT_EQ(cli::stratifiedFolds(labels, 3, 1), cli::stratifiedFolds(labels, 3, 1));
  EXPECT_NE(cli::stratifiedFolds(labels, 3, 1), cli::stratifiedFolds(labels, 3, 2));
  // The same on every machine.
  EXPECT_EQ(cli::stratifiedFolds({0, 0, 0, 0, 1, 1, -1, 1, 1}, 2, 1),
            (Labels{1, 0, 1, 0, 1, 0, -1, 0, 1}));
}

PatternHandle at(double x) { return PatternHandle(new vxFeaturePattern({x}, {})); }

TEST(TrainingSetTest, LeavesOutAFoldAndTheUnlabelled) {
  const std::vector<PatternHandle> patterns{at(0), at(1), at(2), at(3)};
  const auto data = cli::trainingSet(patterns, {4, -1, 5, 6}, {0, -1, 1, 0}, 1);
  ASSERT_EQ(data.numPatterns(), 2);
  EXPECT_EQ(data.featurePattern(1), patterns[3]);
  EXPECT_EQ(data.categoryLabel(0), 4);
  EXPECT_EQ(data.categoryLabel(1), 6);
}

vxClassifierResult decided(long label, double expectedCost) {
  return vxClassifierResult({{label, 1.0, 1.0, expectedCost}}, 0.0);
}

TEST(EvaluationTest, CountsDecisions) {
  Evaluation evaluation(3);
  evaluation.add(0, decided(0, 0.1));
  evaluation.add(0, decided(0, 0.1));
  evaluation.add(0, decided(2, 0.4));
  evaluation.add(1, decided(0, 0.4));
  EXPECT_EQ(evaluation.count(0, 0), 2);
  EXPECT_EQ(evaluation.count(0, 2), 1);
  EXPECT_EQ(evaluation.count(1, 0), 1);
  EXPECT_EQ(evaluation.count(2, 0), 0);
  EXPECT_EQ(evaluation.numOf(0), 3);
  EXPECT_EQ(evaluation.numPatterns(), 4);
  EXPECT_EQ(evaluation.numCorrect(), 2);
  EXPECT_EQ(evaluation.recall(0), 2.0 / 3.0);
  EXPECT_EQ(evaluation.recall(1), 0.0);
  EXPECT_TRUE(std::isnan(evaluation.recall(2)));
  EXPECT_EQ(evaluation.accuracy(), 0.5);
  EXPECT_DOUBLE_EQ(evaluation.meanExpectedCost(), 0.25);
}

TEST(EvaluationTest, RefusesLabelsThatItDoesNotKnow) {
  Evaluation evaluation(2);
  EXPECT_THROW(evaluation.add(-1, decided(0, 0.0)), vxClassifierDefs::BadLabel);
  EXPECT_THROW(evaluation.add(2, decided(0, 0.0)), vxClassifierDefs::BadLabel);
  EXPECT_THROW(evaluation.add(0, decided(2, 0.0)), vxClassifierDefs::BadLabel);
  EXPECT_EQ(evaluation.numPatterns(), 0);
}

TEST(CrossValidateTest, JudgesEachPatternByTheOthers) {
  // With every pattern a fold of its own, the nearest other one decides: 0 1 | 4 5 are right, the
  // 0 at 9 has 8 for its neighbour and the 1 at 8 has 9.
  const std::vector<PatternHandle> patterns{at(0), at(1), at(4), at(5), at(8), at(8.5), at(7.1)};
  const Labels labels{0, 0, 1, 1, 1, 0, -1};
  std::vector<std::size_t> seen;
  const Evaluation evaluation =
      cli::crossValidate(patterns, labels, 2, vxClassifierTrainParamsKNN(1), 6, 1,
                         [&](std::size_t index) { seen.push_back(index); });
  EXPECT_EQ(evaluation.count(0, 0), 2);
  EXPECT_EQ(evaluation.count(0, 1), 1);
  EXPECT_EQ(evaluation.count(1, 0), 1);
  EXPECT_EQ(evaluation.count(1, 1), 2);
  EXPECT_EQ(evaluation.meanExpectedCost(), 0.0);
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3, 4, 5}));
}

}  // namespace
