// SPDX-License-Identifier: MIT
#include "tools/eval/calibration.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/eval/samples.h"

namespace {

TEST(CalibrationTest, PutsEachDecisionIntoTheBinOfItsScore) {
  const auto bins = eval::calibration({recordOf(0, {1.0, 0.0}), recordOf(1, {0.75, 0.25}),
                                       recordOf(0, {0.875, 0.125}), recordOf(0, {0.5, 0.5})},
                                      4);
  ASSERT_EQ(bins.size(), 4u);
  EXPECT_EQ(bins[0].decisions + bins[1].decisions, 0);
  EXPECT_TRUE(std::isnan(bins[0].shareCorrect));
  EXPECT_EQ(bins[2].low, 0.5);
  EXPECT_EQ(bins[2].decisions, 1);
  EXPECT_EQ(bins[3].decisions, 3);
  EXPECT_EQ(bins[3].correct, 2);
  EXPECT_EQ(bins[3].meanClassScore, 0.875);
  EXPECT_EQ(bins[3].shareCorrect, 2.0 / 3.0);
  EXPECT_EQ(bins[3].interval.low, eval::wilsonInterval(2, 3).low);
}

TEST(CalibrationTest, KeepsABoundInTheBinThatItOpens) {
  for (int i = 5; i < 10; ++i) {
    const double score = i / 10.0;
    const auto bins = eval::calibration({recordOf(0, {score, 1.0 - score})});
    const auto bin = std::find_if(bins.begin(), bins.end(),
                                  [](const eval::CalibrationBin& b) { return b.decisions > 0; });
    EXPECT_LE(bin->low, bin->meanClassScore);
    EXPECT_LT(bin->meanClassScore, bin->high);
  }
}

TEST(CalibrationTest, TellsTheMeanGapOfScoreAndShare) {
  const auto bins = eval::calibration(
      {recordOf(0, {0.75, 0.25}), recordOf(1, {0.75, 0.25}), recordOf(0, {1.0, 0.0})}, 4);
  EXPECT_DOUBLE_EQ(eval::calibrationError(bins), std::fabs(2.0 / 3.0 - 2.5 / 3.0));
  EXPECT_TRUE(std::isnan(eval::calibrationError(eval::calibration({}))));
}

}  // namespace
