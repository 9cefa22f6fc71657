// SPDX-License-Identifier: MIT
#include "tools/number_options.h"

#include <gtest/gtest.h>

namespace {

TEST(NumberOptionsTest, AcceptWholeNumbersThatAnArchiveHolds) {
  const cli::OptionCheck check = cli::wholeNumber(1);
  for (const char* text : {"1", "010", "2147483647"}) EXPECT_EQ(check(text), "") << text;
  for (const char* text : {"0", "-1", "2147483648", "1.0", "1e2", "0x10", "", " 1", "1x"}) {
    EXPECT_NE(check(text), "") << text;
  }
  EXPECT_EQ(check("ten"), "\"ten\" is not a whole number from 1 to 2147483647");
  EXPECT_EQ(cli::wholeOf("010"), 10);
  EXPECT_EQ(cli::wholeOf("2147483647"), 2147483647);
}

TEST(NumberOptionsTest, AcceptFiniteNumbersAboveZero) {
  const cli::OptionCheck positive = cli::positiveNumber(false);
  const cli::OptionCheck zeroToo = cli::positiveNumber(true);
  for (const char* text : {"0.5", "+2", "1e300"}) {
    EXPECT_EQ(positive(text), "") << text;
    EXPECT_EQ(zeroToo(text), "") << text;
  }
  EXPECT_EQ(zeroToo("0"), "");
  EXPECT_EQ(positive("0"), "\"0\" is not a number > 0");
  for (const char* text : {"-1", "nan", "inf", "1e999", "1,5", ""}) {
    EXPECT_NE(positive(text), "") << text;
    EXPECT_NE(zeroToo(text), "") << text;
  }
  EXPECT_EQ(cli::numberOf("1e-3"), 0.001);
}

TEST(NumberOptionsTest, AcceptSharesWithTheirEnds) {
  const cli::OptionCheck check = cli::share();
  for (const char* text : {"0", "0.5", "1", "1e-400"}) EXPECT_EQ(check(text), "") << text;
  for (const char* text : {"-0.1", "1.0000001", "nan", "inf", ""})
    EXPECT_NE(check(text), "") << text;
  EXPECT_EQ(check("2"), "\"2\" is not a number from 0 to 1");
}

}  // namespace
