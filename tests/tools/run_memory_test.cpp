// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/tools/command_line.h"

namespace {

using RunMemoryTest = CommandLineTest;

/// Makes the process's peak memory what it uses now; false where the system can't.
bool forgetPeak() {
  std::ofstream file("/proc/self/clear_refs");
  file << "5" << std::flush;
  return file.good();
}

/// The most memory since then, in KiB; 0 where the system doesn't tell.
long peak() {
  std::ifstream file("/proc/self/status");
  std::string word;
  long kibibytes = 0;
  while (file >> word) {
    if (word == "VmHWM:") file >> kibibytes;
  }
  return kibibytes;
}

TEST_F(RunMemoryTest, DoesNotGrowWithTheNumberOfRows) {
  if (!forgetPeak() || peak() == 0) GTEST_SKIP() << "no peak memory in /proc";
  ASSERT_EQ(run({"train", kIris, "--label", "species", "--method", "bayes", "-o", "m.model"}).err,
            "");
  const auto peakOf = [&](const Names& options, int rows) {
    {
      std::ofstream data(scratch_.path("d.csv"));
      data << "sepal_length,sepal_width,petal_length,petal_width\n";
      for (int i = 0; i < rows; ++i) data << 4 + i % 40 * 0.1 << ",3.1234567890123,1.4,0.2\n";
    }
    Names arguments{"run", "m.model", "d.csv", "-o", "o.csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_TRUE(forgetPeak());
    EXPECT_EQ(run(arguments).err, "");
    return peak();
  };
  for (const Names& options : {Names{}, Names{"--json"}}) {
    const long small = peakOf(options, 1000);
    // Its rows alone are 2.4 MB, and what is written of them 5 MB.
    const long large = peakOf(options, 80000);
    EXPECT_LT(large, small + 1024);
  }
}

}  // namespace
