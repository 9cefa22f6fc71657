// SPDX-License-Identifier: MIT
#include "tools/eval/scores.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/eval/samples.h"

namespace {

TEST(WilsonIntervalTest, HasTheBoundsOfThePublishedFormula) {
  // (p + z^2/2n +- z sqrt(p(1-p)/n + z^2/4n^2)) / (1 + z^2/n), worked out with 30 digits.
  const eval::Interval nine = eval::wilsonInterval(9, 10);
  EXPECT_NEAR(nine.low, 0.5958499732047615, 1e-15);
  EXPECT_NEAR(nine.high, 0.9821237869049271, 1e-15);
}

TEST(WilsonIntervalTest, EndsAtCertaintyOnlyWhereNothingSpeaksAgainstIt) {
  EXPECT_EQ(eval::wilsonInterval(0, 20).low, 0.0);
  EXPECT_GT(eval::wilsonInterval(0, 20).high, 0.1);
  EXPECT_EQ(eval::wilsonInterval(20, 20).high, 1.0);
  EXPECT_LT(eval::wilsonInterval(20, 20).low, 0.9);
  EXPECT_LT(eval::wilsonInterval(999999, 1000000).high, 1.0);
  EXPECT_TRUE(std::isnan(eval::wilsonInterval(0, 0).low));
  EXPECT_TRUE(std::isnan(eval::wilsonInterval(0, 0).high));
}

TEST(RecordTest, TellsItsMargin) {
  EXPECT_DOUBLE_EQ(recordOf(0, {0.5, 0.3, 0.2}).margin(), 0.2);
  EXPECT_EQ(recordOf(0, {1.0}).margin(), 1.0);
  EXPECT_EQ(recordOf(0, {0.5, 0.5}).margin(), 0.0);
}

TEST(RecordTest, KnowsNothingOfACategoryWithoutAResult) {
  const eval::Record record = recordOf(2, {0.75, 0.25});
  EXPECT_EQ(record.categoryResult(2), nullptr);
  EXPECT_EQ(record.classScore(2), 0.0);
  EXPECT_EQ(record.classScore(1), 0.25);
  EXPECT_FALSE(record.isCorrect());
}

TEST(ScoresTest, AverageCosts) {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(1, 0, 7.0);
  const std::vector<eval::Record> records{recordOf(0, {0.75, 0.25}), recordOf(1, {0.75, 0.25}),
                                          recordOf(0, {0.5, 0.5}), recordOf(0, {0.25, 0.75})};
  EXPECT_EQ(eval::meanExpectedCost(records), (0.25 + 0.25 + 0.5 + 0.25) / 4.0);
  EXPECT_EQ(eval::meanActualCost(records, costs), (7.0 + 1.0) / 4.0);
  EXPECT_TRUE(std::isnan(eval::meanExpectedCost({})));
  EXPECT_TRUE(std::isnan(eval::meanActualCost({}, costs)));
}

TEST(ScoresTest, LogLossIsFiniteForWhatWasHeldImpossible) {
  EXPECT_DOUBLE_EQ(eval::logLoss({recordOf(0, {0.5, 0.5}), recordOf(1, {0.75, 0.25})}),
                   (std::log(2.0) + std::log(4.0)) / 2.0);
  EXPECT_DOUBLE_EQ(eval::logLoss({recordOf(1, {1.0, 0.0})}), 52.0 * std::log(2.0));
}

}  // namespace
