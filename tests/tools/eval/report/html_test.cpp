// SPDX-License-Identifier: MIT
#include "tools/eval/report/html.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(EscapedTest, LeavesNothingThatHtmlWouldTakeForMarkup) {
  EXPECT_EQ(eval::escaped("<a href=\"x\" id='y'>&amp;"),
            "&lt;a href=&quot;x&quot; id=&#39;y&#39;&gt;&amp;amp;");
  EXPECT_EQ(eval::escaped("gr\u00FCn"), "gr\u00FCn");
}

TEST(EscapedTest, ReplacesCharactersThatHtmlForbids) {
  EXPECT_EQ(eval::escaped(std::string("a\0b\x1b\x7f", 5)), "a\uFFFDb\uFFFD\uFFFD");
}

TEST(ClippedTest, CountsCharactersNotBytes) {
  EXPECT_EQ(eval::clipped("\u00FC\u00FC\u00FC", 3), "\u00FC\u00FC\u00FC");
  EXPECT_EQ(eval::clipped("\u00FC\u00FC\u00FC\u00FC", 3), "\u00FC\u00FC\u2026");
  EXPECT_EQ(eval::clipped("", 3), "");
}

TEST(ShortNumberTest, IsForPeople) {
  EXPECT_EQ(eval::shortNumber(0.123456), "0.1235");
  EXPECT_EQ(eval::shortNumber(-2.5), "\u22122.5");
  EXPECT_EQ(eval::shortNumber(-0.0), "0");
  EXPECT_EQ(eval::shortNumber(1e-9), "1e\u221209");
  EXPECT_EQ(eval::shortNumber(std::nan("")), "\u2013");
  EXPECT_EQ(eval::shortNumber(-HUGE_VAL), "\u2212\u221E");
  EXPECT_EQ(eval::percent(2.0 / 3.0), "66.7\u00A0%");
}

TEST(CoordinateTest, HasATenthAtMost) {
  EXPECT_EQ(eval::coordinate(3.0), "3");
  EXPECT_EQ(eval::coordinate(3.14159), "3.1");
  EXPECT_EQ(eval::coordinate(-0.04), "0");
  EXPECT_EQ(eval::coordinate(-0.06), "-0.1");
  EXPECT_EQ(eval::coordinate(100.04), "100");
}

TEST(RangesTest, JoinRuns) {
  EXPECT_EQ(eval::ranges({2, 3, 4, 7, 9, 10}), "2\u20134, 7, 9, 10");
  EXPECT_EQ(eval::ranges({5}), "5");
  EXPECT_EQ(eval::ranges({}), "");
}

}  // namespace
