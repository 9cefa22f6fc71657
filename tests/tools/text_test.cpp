// SPDX-License-Identifier: MIT
#include "tools/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

TEST(TextTest, ParsesNumbersAsTheyStandInDataFiles) {
  const struct {
    const char* text;
    double value;
  } table[] = {
      {"0", 0.0},
      {"1.5", 1.5},
      {"+1.5", 1.5},
      {"-1.5", -1.5},
      {".5", 0.5},
      {"5.", 5.0},
      {"1e3", 1000.0},
      {"1E-3", 0.001},
      {"010", 10.0},
      {"4e-324", 4e-324},
      {"1e-999", 0.0},
      {"-1e-999", 0.0},
      {"1e308", 1e308},
      {"0.1", 0.1},
      {"inf", std::numeric_limits<double>::infinity()},
      {"-Infinity", -std::numeric_limits<double>::infinity()},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    ASSERT_TRUE(cli::parsedNumber(row.text));
    EXPECT_EQ(*cli::parsedNumber(row.text), row.value);
  }
  EXPECT_EQ(cli::parsedNumber("0." + std::string(400, '0') + "1"), 0.0);
  for (const char* nan : {"nan", "NaN", "NAN", "-nan", "nan(7)"}) {
    SCOPED_TRACE(nan);
    ASSERT_TRUE(cli::parsedNumber(nan));
    EXPECT_TRUE(std::isnan(*cli::parsedNumber(nan)));
  }
}

TEST(TextTest, RefusesWhatIsNoNumber) {
  for (const char* text : {"", "+", "-", "+-1", "++1", "abc", "1x", "1,5", "1 2", " 1", "1e",
                           "0x10", "1e999", "-1e999", "e5", "n/a", "1_000", "--1", "\xC2\xBD"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(cli::parsedNumber(text));
  }
  EXPECT_FALSE(cli::parsedNumber(std::string(400, '9')));
}

TEST(TextTest, TrimsSpacesAndTabs) {
  EXPECT_EQ(cli::trimmed(" \t a b \t"), "a b");
  EXPECT_EQ(cli::trimmed(" \t "), "");
  EXPECT_EQ(cli::trimmed(""), "");
}

TEST(TextTest, PrintsOneSafeLine) {
  EXPECT_EQ(cli::printable("a\nb\x1b[0m\x7f"), "a\\x0ab\\x1b[0m\\x7f");
  EXPECT_EQ(cli::printable("gr\xC3\xBC\xC3\x9F"), "gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(cli::printable("\xC3("), "\\xc3(");
}

TEST(TextTest, CutsLongTextsBetweenCharacters) {
  EXPECT_EQ(cli::shown(std::string(40, 'x')), '"' + std::string(40, 'x') + '"');
  EXPECT_EQ(cli::shown(std::string(41, 'x')), '"' + std::string(40, 'x') + "...\"");
  EXPECT_EQ(cli::shown(std::string(39, 'x') + "\xC3\xBC"), '"' + std::string(39, 'x') + "...\"");
}

TEST(TextTest, QuotesCellsThatNeedIt) {
  EXPECT_EQ(cli::csvCell("plain text"), "plain text");
  EXPECT_EQ(cli::csvCell("a,b"), "\"a,b\"");
  EXPECT_EQ(cli::csvCell("say \"a\""), "\"say \"\"a\"\"\"");
  EXPECT_EQ(cli::csvCell("a\nb"), "\"a\nb\"");
  EXPECT_EQ(cli::csvCell(" a"), "\" a\"");
}

}  // namespace
