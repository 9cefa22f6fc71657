// SPDX-License-Identifier: MIT
#include "tools/confusion_table.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using cli::Evaluation;

vxClassifierResult decided(long label) { return vxClassifierResult({{label, 1.0, 1.0, 0.0}}, 0.0); }

TEST(ConfusionTableTest, IsLaidOutForPeople) {
  Evaluation evaluation(3);
  for (int i = 0; i < 12; ++i) evaluation.add(0, decided(0));
  evaluation.add(1, decided(0));
  EXPECT_EQ(cli::confusionTable(evaluation, {"a", "gr\xC3\xBCn", "x\ny"}),
            "true \\ decided   a  gr\xC3\xBCn  x\\x0ay  total   recall\n"
            "a               12     0       0     12  100.0 %\n"
            "gr\xC3\xBCn             1     0       0      1    0.0 %\n"
            "x\\x0ay           0     0       0      0        -\n");
}

TEST(ConfusionTableTest, NumbersColumnsThatWouldBeTooWide) {
  Evaluation evaluation(2);
  evaluation.add(0, decided(1));
  const std::string wide(50, 'w');
  EXPECT_EQ(cli::confusionTable(evaluation, {wide, "b"}),
            "true \\ decided" + std::string(40, ' ') + "  (1)  (2)  total  recall\n" + "(1) " +
                wide + "    0    1      1   0.0 %\n" + "(2) b" + std::string(49, ' ') +
                "    0    0      0       -\n");
}

TEST(ConfusionTableTest, PrintsSharesWithOneDecimal) {
  EXPECT_EQ(cli::percentage(2.0 / 3.0), "66.7 %");
  EXPECT_EQ(cli::percentage(1.0), "100.0 %");
  EXPECT_EQ(cli::percentage(std::numeric_limits<double>::quiet_NaN()), "-");
}

}  // namespace
