// SPDX-License-Identifier: MIT
#ifndef TESTS_TOOLS_COMMAND_LINE_H_
#define TESTS_TOOLS_COMMAND_LINE_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/scratch.h"

using Names = std::vector<std::string>;

/// What a command refuses, and the line that says so.
struct Refusal {
  const char* name;
  Names arguments;
  std::string line;
};

inline const std::string kIris = VXCLSS_SOURCE_TREE "/examples/data/iris.csv";

class CommandLineTest : public testing::Test {
 protected:
  /// Runs `vxclss arguments...`; names of files with a '.' stand for files of the scratch
  /// directory.
  Outcome run(Names arguments) const {
    for (std::string& argument : arguments) {
      const std::string kind = std::filesystem::path(argument).extension().string();
      const bool isFile = kind == ".csv" || kind == ".model" || kind == ".json" || kind == ".out";
      if (isFile && argument[0] != '/') argument = scratch_.path(argument);
    }
    Outcome outcome = vxclss(arguments);
    outcome.out = scratch_.withoutPath(outcome.out);
    outcome.err = scratch_.withoutPath(outcome.err);
    return outcome;
  }

  /// Runs each row and expects its line alone, exit code 2 and no other files than before.
  void expectRefusals(const std::vector<Refusal>& rows) const {
    const Names before = scratch_.names();
    for (const Refusal& row : rows) {
      SCOPED_TRACE(row.name);
      const Outcome outcome = run(row.arguments);
      EXPECT_EQ(outcome.code, 2);
      EXPECT_EQ(outcome.out, "");
      EXPECT_EQ(outcome.err, "vxclss: " + row.line + "\n");
      EXPECT_EQ(scratch_.names(), before);
    }
  }

  Scratch scratch_;
};

/// The first line that begins with `start`.
inline std::string lineOf(const std::string& text, const std::string& start) {
  std::istringstream stream(text);
  std::string line;
  while (std::getline(stream, line)) {
    if (line.compare(0, start.size(), start) == 0) return line;
  }
  return {};
}

#endif  // TESTS_TOOLS_COMMAND_LINE_H_
