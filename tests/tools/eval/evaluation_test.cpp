// SPDX-License-Identifier: MIT
#include "tools/eval/evaluation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Evaluation;
using eval::Record;

/// With every pattern a fold of its own, the nearest other one decides: 0 1 | 4 5 are right, the 0
/// at 8.5 has 8 for its neighbour and the 1 at 8 has 8.5.
eval::Dataset lineOfPoints() {
  return datasetOf({{{0}, 0}, {{1}, 0}, {{4}, 1}, {{5}, 1}, {{8}, 1}, {{8.5}, 0}, {{7.1}, -1}});
}

TEST(EvaluateTest, JudgesEachPatternByTheOthers) {
  const eval::Dataset data = lineOfPoints();
  std::vector<std::size_t> seen;
  const Evaluation evaluation =
      eval::evaluate(data, neighbours(1), eval::stratifiedFolds(data.labels, 6, 1), {},
                     [&](std::size_t index) { seen.push_back(index); });
  const eval::Confusion& confusion = evaluation.confusion();
  EXPECT_EQ(confusion.count(0, 0), 2);
  EXPECT_EQ(confusion.count(0, 1), 1);
  EXPECT_EQ(confusion.count(1, 0), 1);
  EXPECT_EQ(confusion.count(1, 1), 2);
  EXPECT_EQ(evaluation.meanExpectedCost(), 0.0);
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3, 4, 5}));
}

TEST(EvaluateTest, KeepsARecordOfEachPatternInTheirOrder) {
  const eval::Dataset data = clouds(20);
  const eval::Split split = eval::stratifiedFolds(data.labels, 4, 9);
  const Evaluation evaluation = eval::evaluate(data, bayes(), split, {}, [](std::size_t) {});
  ASSERT_EQ(evaluation.records().size(), 60u);
  for (std::size_t i = 0; i < 60; ++i) {
    const Record& record = evaluation.records()[i];
    EXPECT_EQ(record.pattern, i);
    EXPECT_EQ(record.round, split.roundOf[i]);
    EXPECT_EQ(record.trueLabel, data.labels[i]);
    EXPECT_TRUE(std::isnan(record.fit));
    EXPECT_EQ(evaluation.explanation(record), nullptr);
  }
}

TEST(EvaluateTest, TellsWhatAToolOfTheRoundTells) {
  const eval::Dataset data = clouds(20);
  const eval::Split split = eval::stratifiedHoldOut(data.labels, 0.3, 2);
  const Evaluation evaluation = eval::evaluate(data, bayes(), split, {}, [](std::size_t) {});
  ASSERT_EQ(static_cast<long>(evaluation.records().size()), split.numTested());
  vxClassifierTool tool;
  tool.train(eval::trainingSet(data, split, 0), bayes());
  for (const Record& record : evaluation.records()) {
    vxClassifierResult result;
    tool.run(*data.patterns[record.pattern], result);
    EXPECT_EQ(record.result, result);
  }
}

TEST(EvaluateTest, ExplainsWrongDecisionsOnly) {
  const eval::Dataset data = clouds(30);
  const Evaluation evaluation = evaluated(data, bayes(), 5);
  ASSERT_LT(evaluation.confusion().numCorrect(), 90);
  for (const Record& record : evaluation.records()) {
    EXPECT_EQ(evaluation.explanation(record) == nullptr, record.isCorrect());
    EXPECT_FALSE(std::isnan(record.fit));
  }
}

TEST(EvaluateTest, CountsWhatItTimes) {
  const Evaluation evaluation = evaluated(clouds(10), bayes(), 3);
  EXPECT_EQ(evaluation.timings().testedPatterns, 30);
  EXPECT_EQ(evaluation.timings().trainedPatterns, 60);
  EXPECT_GT(evaluation.timings().trainSeconds, 0.0);
  EXPECT_GT(evaluation.timings().runSeconds, 0.0);
}

TEST(EvaluateTest, StopsWhereTheCallerThrows) {
  const eval::Dataset data = clouds(5);
  long calls = 0;
  EXPECT_THROW(eval::evaluate(data, bayes(), eval::stratifiedFolds(data.labels, 3, 1), {},
                              [&](std::size_t) {
                                if (++calls == 4) throw vxStopRequested();
                              }),
               vxStopRequested);
  EXPECT_EQ(calls, 4);
}

TEST(WeightingTest, IsThatOfTheParameters) {
  vxClassifierCosts costs(2.0);
  costs.misclassificationCostOverride(0, 1, 5.0);
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(1, 9.0);
  EXPECT_EQ(eval::weightingOf(bayes(costs, frequencies)).costs, costs);
  EXPECT_EQ(eval::weightingOf(bayes(costs, frequencies)).frequencies, frequencies);
  EXPECT_EQ(eval::weightingOf(neighbours(3, costs)).costs, costs);
  EXPECT_EQ(eval::weightingOf(neighbours(3, costs)).frequencies, vxClassifierFrequencies(1.0));
}

TEST(EvaluationTest, RefusesADecisionForACategoryThatItDoesNotKnow) {
  Evaluation evaluation(2, {});
  EXPECT_THROW(evaluation.add(recordOf(0, {0.1, 0.2, 0.7})), vxClassifierDefs::BadLabel);
  EXPECT_TRUE(evaluation.records().empty());
}

}  // namespace
