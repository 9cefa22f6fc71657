// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>

#include "tests/support/page.h"

// The programs themselves, so that they run under sanitizers too.
#define main run  // NOLINT(readability-identifier-naming)
namespace bayes {
#include "examples/bayes.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace classify_parts {
#include "examples/classify_parts.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace decision_tree {
#include "examples/decision_tree.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace generators {
#include "examples/generators.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace nearest_neighbours {
#include "examples/nearest_neighbours.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace rule_table {
#include "examples/rule_table.cpp"  // NOLINT(bugprone-suspicious-include)
}
#undef main

namespace {

const std::map<std::string, int (*)()> kPrograms = {
    {"bayes", &bayes::run},
    {"classify_parts", &classify_parts::run},
    {"decision_tree", &decision_tree::run},
    {"generators", &generators::run},
    {"nearest_neighbours", &nearest_neighbours::run},
    {"rule_table", &rule_table::run},
};

/// What a program writes; fails the test if it reports an error.
std::string outputOf(int (*program)()) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(program(), 0);
  return testing::internal::GetCapturedStdout();
}

std::string withoutLicenceLine(const std::string& source) {
  return source.substr(source.find('\n') + 1);
}

TEST(ExamplesTest, RunEveryProgramHere) {
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(VXCLSS_SOURCE_TREE) + "/examples")) {
    if (entry.path().extension() != ".cpp") continue;
    EXPECT_EQ(kPrograms.count(entry.path().stem().string()), 1u) << entry.path();
  }
}

TEST(ExamplesTest, StandOnThePagesAsTheyAreInTheirFiles) {
  long found = 0;
  for (const std::string& page : allPages()) {
    for (const PageBlock& block : pageBlocks(page)) {
      if (block.info.rfind("cpp examples/", 0) != 0) continue;
      ++found;
      EXPECT_EQ(block.text, withoutLicenceLine(readSource(block.info.substr(4)))) << page;
    }
  }
  EXPECT_GE(found, 6);
}

TEST(ExamplesTest, PrintWhatThePagesSay) {
  const std::string prefix = "text output of ";
  std::set<std::string> shown;
  for (const std::string& page : allPages()) {
    for (const PageBlock& block : pageBlocks(page)) {
      if (block.info.rfind(prefix, 0) != 0) continue;
      const std::string name = block.info.substr(prefix.size());
      ASSERT_EQ(kPrograms.count(name), 1u) << page << ": " << name;
      EXPECT_EQ(outputOf(kPrograms.at(name)), block.text) << page;
      shown.insert(name);
    }
  }
  EXPECT_EQ(shown.size(), kPrograms.size());
}

TEST(ExamplesTest, StayShortEnoughToRead) {
  const auto numLines = [](const std::string& source) {
    return std::count(source.begin(), source.end(), '\n');
  };
  for (const auto& [name, program] : kPrograms) {
    const std::string page = withoutLicenceLine(readSource("examples/" + name + ".cpp"));
    EXPECT_LE(numLines(page), name == "classify_parts" ? 60 : 20) << name;
  }
}

}  // namespace
