// SPDX-License-Identifier: MIT
#include "tools/confusion_table.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using eval::Confusion;

TEST(ConfusionTableTest, IsLaidOutForPeople) {
  Confusion confusion(3);
  for (std::size_t i = 0; i < 12; ++i) confusion.add(0, 0, i);
  confusion.add(1, 0, 12);
  EXPECT_EQ(cli::confusionTable(confusion, {"a", "gr\xC3\xBCn", "x\ny"}),
            "true \\ decided   a  gr\xC3\xBCn  x\\x0ay  total   recall  precision\n"
            "a               12     0       0     12  100.0 %     92.3 %\n"
            "gr\xC3\xBCn             1     0       0      1    0.0 %          -\n"
            "x\\x0ay           0     0       0      0        -          -\n");
}

TEST(ConfusionTableTest, NumbersColumnsThatWouldBeTooWide) {
  Confusion confusion(2);
  confusion.add(0, 1, 0);
  const std::string wide(50, 'w');
  EXPECT_EQ(cli::confusionTable(confusion, {wide, "b"}),
            "true \\ decided" + std::string(40, ' ') + "  (1)  (2)  total  recall  precision\n" +
                "(1) " + wide + "    0    1      1   0.0 %          -\n" + "(2) b" +
                std::string(49, ' ') + "    0    0      0       -      0.0 %\n");
}

TEST(ConfusionTableTest, PrintsSharesWithOneDecimal) {
  EXPECT_EQ(cli::percentage(2.0 / 3.0), "66.7 %");
  EXPECT_EQ(cli::percentage(1.0), "100.0 %");
  EXPECT_EQ(cli::percentage(std::numeric_limits<double>::quiet_NaN()), "-");
}

}  // namespace
