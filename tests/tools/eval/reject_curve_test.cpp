// SPDX-License-Identifier: MIT
#include "tools/eval/reject_curve.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Criterion;
using eval::RejectPoint;

/// Safe and right twice, doubtful: one right, two wrong.
eval::Evaluation example() {
  vxClassifierCosts costs(2.0);
  return evaluationOf(
      {recordOf(0, {0.875, 0.125}), recordOf(1, {0.75, 0.25}), recordOf(0, {0.75, 0.25}),
       recordOf(1, {0.25, 0.75}), recordOf(0, {0.4375, 0.5625})},
      2, costs);
}

TEST(RejectCurveTest, KeepsEqualValuesTogether) {
  const auto curve = eval::rejectCurve(example(), Criterion::eExpectedCost);
  ASSERT_EQ(curve.size(), 3u);
  EXPECT_EQ(curve[0].threshold, 0.4375);
  EXPECT_EQ(curve[0].accepted, 5);
  EXPECT_EQ(curve[0].correct, 3);
  EXPECT_EQ(curve[0].rejected, 0.0);
  EXPECT_EQ(curve[0].errorRate, 0.4);
  EXPECT_EQ(curve[0].meanActualCost, 0.8);
  EXPECT_EQ(curve[1].threshold, 0.25);
  EXPECT_EQ(curve[1].accepted, 4);
  EXPECT_EQ(curve[1].rejected, 0.2);
  EXPECT_EQ(curve[1].errorRate, 0.25);
  EXPECT_EQ(curve[2].threshold, 0.125);
  EXPECT_EQ(curve[2].accepted, 1);
  EXPECT_EQ(curve[2].errorRate, 0.0);
  EXPECT_EQ(curve[2].meanActualCost, 0.0);
}

TEST(RejectCurveTest, RejectsSmallMarginsFirst) {
  const auto curve = eval::rejectCurve(example(), Criterion::eMargin);
  ASSERT_EQ(curve.size(), 3u);
  EXPECT_EQ(curve[0].threshold, 0.125);
  EXPECT_EQ(curve[1].threshold, 0.5);
  EXPECT_EQ(curve[2].threshold, 0.75);
}

TEST(RejectCurveTest, RejectsPoorFitsFirst) {
  eval::Evaluation evaluation(2, {});
  for (const double fit : {-3.0, -1.0, -2.0}) {
    eval::Record record = recordOf(fit == -3.0 ? 1 : 0, {0.75, 0.25});
    record.fit = fit;
    evaluation.add(record);
  }
  const auto curve = eval::rejectCurve(evaluation, Criterion::eFit);
  ASSERT_EQ(curve.size(), 3u);
  EXPECT_EQ(curve[0].threshold, -3.0);
  EXPECT_EQ(curve[1].errorRate, 0.0);
  EXPECT_EQ(curve[2].threshold, -1.0);
}

TEST(RejectCurveTest, RejectsWhatHasNoValueFirst) {
  eval::Evaluation evaluation(2, {});
  for (const double fit : {std::nan(""), 5.0}) {
    eval::Record record = recordOf(0, {0.75, 0.25});
    record.fit = fit;
    evaluation.add(record);
  }
  const auto curve = eval::rejectCurve(evaluation, Criterion::eFit);
  ASSERT_EQ(curve.size(), 2u);
  EXPECT_TRUE(std::isnan(curve[0].threshold));
  EXPECT_EQ(curve[1].threshold, 5.0);
}

TEST(RejectCurveTest, IsEmptyWithoutValues) {
  EXPECT_TRUE(eval::rejectCurve(example(), Criterion::eFit).empty());
  EXPECT_TRUE(eval::rejectCurve(evaluationOf({}, 2), Criterion::eMargin).empty());
}

TEST(RejectCurveTest, AcceptsLessFromPointToPoint) {
  const auto curve = eval::rejectCurve(evaluated(clouds(40), bayes(), 5), Criterion::eFit);
  ASSERT_GT(curve.size(), 100u);
  EXPECT_EQ(curve[0].rejected, 0.0);
  for (std::size_t i = 1; i < curve.size(); ++i) {
    EXPECT_LT(curve[i].accepted, curve[i - 1].accepted);
    EXPECT_GT(curve[i].threshold, curve[i - 1].threshold);
  }
}

TEST(ThinnedTest, KeepsBothEnds) {
  std::vector<RejectPoint> curve(1000);
  for (std::size_t i = 0; i < curve.size(); ++i) curve[i].accepted = static_cast<long>(i);
  const auto thin = eval::thinned(curve, 7);
  ASSERT_EQ(thin.size(), 7u);
  EXPECT_EQ(thin.front().accepted, 0);
  EXPECT_EQ(thin[1].accepted, 166);
  EXPECT_EQ(thin.back().accepted, 999);
  EXPECT_EQ(eval::thinned(thin, 7).size(), 7u);
}

}  // namespace
