// SPDX-License-Identifier: MIT
#include "tools/eval/report/chart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using eval::Chart;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TEST(TicksTest, AreRoundNumbersWithinTheAxis) {
  EXPECT_THAT(eval::ticks({0.0, 1.0, ""}, 5),
              ElementsAre(0.0, DoubleNear(0.2, 1e-12), DoubleNear(0.4, 1e-12),
                          DoubleNear(0.6, 1e-12), DoubleNear(0.8, 1e-12), 1.0));
  EXPECT_THAT(eval::ticks({-0.3, 7.1, ""}, 5), ElementsAre(0.0, 2.0, 4.0, 6.0));
  EXPECT_THAT(eval::ticks({1003.0, 1009.0, ""}, 3), ElementsAre(1004.0, 1006.0, 1008.0));
}

TEST(TicksTest, OfALogarithmicAxisAreDecades) {
  EXPECT_THAT(eval::ticks({0.05, 500.0, "", true}, 6),
              ElementsAre(DoubleNear(0.1, 1e-12), 1.0, 10.0, 100.0));
}

TEST(TicksTest, AreFewWhateverTheAxis) {
  for (const double high : {1.0, 1.0 + 1e-15, HUGE_VAL, std::nan("")}) {
    EXPECT_LE(eval::ticks({1.0, high, ""}, 5).size(), 51u);
  }
}

TEST(AxisFromZeroTest, HoldsEveryFiniteValue) {
  const eval::Axis axis = eval::axisFromZero({0.5, std::nan(""), HUGE_VAL, -1.0}, "y");
  EXPECT_EQ(axis.low, -1.0);
  EXPECT_GT(axis.high, 0.5);
  EXPECT_EQ(eval::axisFromZero({}, "y").high, 1.06);
}

TEST(ChartTest, PlacesValuesBetweenItsAxes) {
  const Chart chart(300, 200, {0.0, 10.0, "x"}, {0.01, 100.0, "y", true}, "a chart");
  EXPECT_EQ(chart.x(0.0), chart.left());
  EXPECT_EQ(chart.x(10.0), chart.right());
  EXPECT_DOUBLE_EQ(chart.x(5.0), (chart.left() + chart.right()) / 2.0);
  EXPECT_DOUBLE_EQ(chart.y(1.0), (chart.top() + chart.bottom()) / 2.0);
}

TEST(ChartTest, LeavesOutWhatIsNoNumber) {
  Chart chart(300, 200, {0.0, 1.0, "x"}, {0.0, 1.0, "y"}, "a chart");
  chart.line({{0.0, 0.0}, {std::nan(""), 0.5}, {0.5, HUGE_VAL}, {1.0, 1.0}}, "k0");
  EXPECT_THAT(chart.text(), HasSubstr("d=\"M58,156L280,10\""));
  EXPECT_THAT(chart.text(), Not(HasSubstr("nan")));
  EXPECT_THAT(chart.text(), Not(HasSubstr("inf")));
}

TEST(ChartTest, EscapesItsTitles) {
  const Chart chart(300, 200, {0.0, 1.0, "a<b"}, {0.0, 1.0, "c&d"}, "e\"f");
  EXPECT_THAT(chart.text(), HasSubstr("a&lt;b"));
  EXPECT_THAT(chart.text(), HasSubstr("c&amp;d"));
  EXPECT_THAT(chart.text(), HasSubstr("aria-label=\"e&quot;f\""));
}

}  // namespace
