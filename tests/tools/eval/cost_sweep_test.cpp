// SPDX-License-Identifier: MIT
#include "tools/eval/cost_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Evaluation;
using eval::Record;

/// Expects that reweighting records says bit for bit what a tool says that was retrained.
void expectToolsDecisions(const eval::Dataset& data, const Evaluation& evaluation,
                          const eval::Split& split, const vxClassifierTrainParams& params,
                          const vxClassifierTrainParams& retrained) {
  const vxClassifierCosts costs = eval::weightingOf(retrained).costs;
  for (long round = 0; round < split.rounds; ++round) {
    vxClassifierTool tool;
    tool.train(eval::trainingSet(data, split, round), params);
    tool.retrain(retrained);
    for (const Record& record : evaluation.records()) {
      if (record.round != round) continue;
      vxClassifierResult result;
      tool.run(*data.patterns[record.pattern], result);
      EXPECT_EQ(eval::reweighted(evaluation, record, costs), result);
    }
  }
}

vxClassifierCosts costsWith(double cost) {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(1, 2, cost);
  return costs;
}

TEST(ReweightedTest, DecidesAsARetrainedToolDoes) {
  eval::Dataset data = clouds(25);
  // So that training meets the categories in another order than that of their labels.
  std::reverse(data.patterns.begin(), data.patterns.end());
  std::reverse(data.labels.begin(), data.labels.end());
  const eval::Split split = eval::stratifiedFolds(data.labels, 3, 4);
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(2, 0.2);
  const auto run = [&](const vxClassifierTrainParams& params) {
    return eval::evaluate(data, params, split, {}, [](std::size_t) {});
  };
  for (const double cost : {0.0, 0.3, 1.0, 4.0, 1e6}) {
    SCOPED_TRACE(cost);
    const auto first = bayes(vxClassifierCosts(1.0), frequencies);
    expectToolsDecisions(data, run(first), split, first, bayes(costsWith(cost), frequencies));
    expectToolsDecisions(data, run(neighbours(4)), split, neighbours(4),
                         neighbours(4, costsWith(cost)));
  }
}

TEST(CostSweepTest, AvoidsAMistakeTheMoreTheDearerItIs) {
  const Evaluation evaluation = evaluated(clouds(40), bayes(), 5);
  const std::vector<double> costs = eval::sweptCosts(evaluation, 1, 2);
  const eval::CostSweep sweep = eval::costSweep(evaluation, 1, 2, costs);
  EXPECT_EQ(sweep.costNow, 1.0);
  ASSERT_EQ(sweep.points.size(), 21u);
  for (std::size_t i = 1; i < sweep.points.size(); ++i) {
    EXPECT_GT(sweep.points[i].cost, sweep.points[i - 1].cost);
    EXPECT_LE(sweep.points[i].misses, sweep.points[i - 1].misses);
  }
  EXPECT_GT(sweep.points.front().misses, sweep.points.back().misses);
  const auto now = std::find_if(sweep.points.begin(), sweep.points.end(),
                                [](const eval::SweepPoint& point) { return point.cost == 1.0; });
  ASSERT_NE(now, sweep.points.end());
  EXPECT_EQ(now->misses, evaluation.confusion().count(1, 2));
  EXPECT_EQ(now->falseAlarms, evaluation.confusion().count(2, 1));
  EXPECT_EQ(now->errors, 120 - evaluation.confusion().numCorrect());
  EXPECT_EQ(now->meanActualCost, evaluation.meanActualCost());
  EXPECT_EQ(now->keptDecisions, evaluation.meanActualCost());
}

TEST(CostSweepTest, SweepsAroundTheCostNow) {
  const Evaluation dear = evaluationOf({}, 2, vxClassifierCosts(50.0));
  EXPECT_EQ(eval::sweptCosts(dear, 0, 1).front(), 0.5);
  EXPECT_EQ(eval::sweptCosts(dear, 0, 1).back(), 5000.0);
  const Evaluation free = evaluationOf({}, 2, vxClassifierCosts(0.0));
  EXPECT_EQ(eval::sweptCosts(free, 0, 1).front(), 0.0);
  EXPECT_EQ(eval::sweptCosts(free, 0, 1).back(), 100.0);
}

TEST(CostSweepsTest, TellTheMostFrequentConfusionsFirst) {
  const Evaluation evaluation = evaluated(clouds(40), bayes(), 5);
  const auto sweeps = eval::costSweeps(evaluation, 4);
  ASSERT_EQ(sweeps.size(), 4u);
  for (std::size_t i = 1; i < sweeps.size(); ++i) {
    EXPECT_GE(evaluation.confusion().count(sweeps[i - 1].trueLabel, sweeps[i - 1].assignedLabel),
              evaluation.confusion().count(sweeps[i].trueLabel, sweeps[i].assignedLabel));
  }
  EXPECT_EQ(eval::costSweeps(evaluation, 100).size(), 6u);
}

}  // namespace
