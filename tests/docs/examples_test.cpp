// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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
namespace guide {
#include "examples/guide.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace nearest_neighbours {
#include "examples/nearest_neighbours.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_costs {
#include "examples/recipe_costs.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_errors {
#include "examples/recipe_errors.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_missing_measurements {
#include "examples/recipe_missing_measurements.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_rare_categories {
#include "examples/recipe_rare_categories.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_reject {
#include "examples/recipe_reject.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_stopping {
#include "examples/recipe_stopping.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_threads {
#include "examples/recipe_threads.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace recipe_update_model {
#include "examples/recipe_update_model.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace rule_table {
#include "examples/rule_table.cpp"  // NOLINT(bugprone-suspicious-include)
}
namespace traps {
#include "examples/traps.cpp"  // NOLINT(bugprone-suspicious-include)
}
#undef main

namespace {

const std::map<std::string, int (*)()> kPrograms = {
    {"bayes", &bayes::run},
    {"classify_parts", &classify_parts::run},
    {"decision_tree", &decision_tree::run},
    {"generators", &generators::run},
    {"guide", &guide::run},
    {"nearest_neighbours", &nearest_neighbours::run},
    {"recipe_costs", &recipe_costs::run},
    {"recipe_errors", &recipe_errors::run},
    {"recipe_missing_measurements", &recipe_missing_measurements::run},
    {"recipe_rare_categories", &recipe_rare_categories::run},
    {"recipe_reject", &recipe_reject::run},
    {"recipe_stopping", &recipe_stopping::run},
    {"recipe_threads", &recipe_threads::run},
    {"recipe_update_model", &recipe_update_model::run},
    {"rule_table", &rule_table::run},
    {"traps", &traps::run},
};

/// Pages whose C++ another test compiles and runs.
const std::set<std::string> kElsewhere = {"docs/python_tutorial.md"};

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

/// The lines without what they are indented by.
std::string flush(const std::string& text) {
  std::istringstream lines(text);
  std::string flushed;
  for (std::string line; std::getline(lines, line);) {
    flushed += line.substr(std::min(line.find_first_not_of(' '), line.size())) + "\n";
  }
  return flushed;
}

/// Whether the lines stand in the file one after another; behind the last one may be a comment.
bool isPartOf(const std::string& file, const std::string& lines) {
  std::string wanted = "\n" + flush(lines);
  wanted.pop_back();
  return flush(readSource(file)).find(wanted) != std::string::npos;
}

TEST(ExamplesTest, StandOnThePagesAsTheyAreInTheirFiles) {
  std::set<std::string> found;
  for (const std::string& page : allPages()) {
    if (kElsewhere.count(page) > 0) continue;
    for (const PageBlock& block : pageBlocks(page)) {
      if (block.info.rfind("cpp", 0) != 0) continue;
      if (block.info.rfind("cpp in ", 0) == 0) {
        EXPECT_TRUE(isPartOf(block.info.substr(7), block.text)) << page << ":\n" << block.text;
      } else if (block.info.rfind("cpp examples/", 0) == 0) {
        const std::string file = block.info.substr(4);
        EXPECT_EQ(block.text, withoutLicenceLine(readSource(file))) << page;
        found.insert(file);
      } else {
        ADD_FAILURE() << page << ": no test compiles this block:\n" << block.text;
      }
    }
  }
  EXPECT_GE(found.size(), 14u);
}

TEST(ExamplesTest, PrintWhatThePagesSay) {
  const std::string whole = "text output of ";
  const std::string part = "text part of the output of ";
  std::map<std::string, std::string> shown;  // parts follow each other on one page
  for (const std::string& page : allPages()) {
    for (const PageBlock& block : pageBlocks(page)) {
      const std::string& prefix = block.info.rfind(part, 0) == 0 ? part : whole;
      if (block.info.rfind(prefix, 0) != 0) continue;
      const std::string name = block.info.substr(prefix.size());
      if (kPrograms.count(name) > 0) shown[name] += block.text;
    }
  }
  for (const auto& [name, program] : kPrograms) {
    EXPECT_EQ(outputOf(program), shown[name]) << name;
  }
}

TEST(ExamplesTest, StayShortEnoughToRead) {
  const std::map<std::string, long> longer = {
      {"classify_parts", 60}, {"guide", 100}, {"traps", 260}};
  for (const auto& [name, program] : kPrograms) {
    const std::string page = withoutLicenceLine(readSource("examples/" + name + ".cpp"));
    const long usual = name.rfind("recipe_", 0) == 0 ? 70 : 20;
    const auto found = longer.find(name);
    EXPECT_LE(std::count(page.begin(), page.end(), '\n'),
              found == longer.end() ? usual : found->second)
        << name;
  }
}

}  // namespace
