// SPDX-License-Identifier: MIT
#include "tools/progress.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using cli::Progress;

TEST(ProgressTest, DrawsAfterASecondAndCleansUp) {
  std::ostringstream terminal;
  double now = 100.0;
  {
    Progress progress("reading", 200.0, &terminal, [&] { return now; });
    now = 100.9;
    progress.update(20.0);
    EXPECT_EQ(terminal.str(), "");
    now = 101.0;
    progress.update(50.0);
    EXPECT_EQ(terminal.str(), "\rreading [#######.......................]  25 %");
    terminal.str("");
    now = 101.05;
    progress.update(60.0);
    EXPECT_EQ(terminal.str(), "");
    now = 101.2;
    progress.update(400.0);
    EXPECT_EQ(terminal.str(), "\rreading [##############################] 100 %");
    terminal.str("");
  }
  EXPECT_EQ(terminal.str(), "\r\x1b[K");
}

TEST(ProgressTest, SaysNothingOfShortWorkOrOfAnUnknownTotal) {
  std::ostringstream terminal;
  double now = 0.0;
  {
    Progress("reading", 10.0, &terminal, [&] { return now; }).update(9.0);
  }
  {
    Progress progress("reading", 0.0, &terminal, [&] { return now; });
    now = 5.0;
    progress.update(1.0);
  }
  EXPECT_EQ(terminal.str(), "");
}

TEST(ProgressTest, NeedsNoTerminal) {
  double now = 0.0;
  Progress progress("reading", 10.0, nullptr, [&] { return now; });
  now = 5.0;
  progress.update(1.0);
}

}  // namespace
