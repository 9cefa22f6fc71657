// SPDX-License-Identifier: MIT
// Every target of the fuzzers that is linked here runs through its committed corpus. An input that
// a target complains of ends the program, as it ends the fuzzer.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "fuzz/corpus.h"
#include "fuzz/target.h"

namespace {

std::vector<std::string> targetNames() {
  std::vector<std::string> names;
  for (const auto& [name, target] : fuzz::targets()) names.push_back(name);
  return names;
}

class FuzzReplayTest : public testing::TestWithParam<std::string> {};

TEST_P(FuzzReplayTest, FindsNothing) {
  const fuzz::Target target = fuzz::targets().at(GetParam());
  const std::string corpus = VXCLSS_SOURCE_TREE "/fuzz/corpus/" + GetParam();
  for (const std::string& path : {corpus + ".bin", corpus + ".found.bin"}) {
    if (path != corpus + ".bin" && !std::filesystem::exists(path)) continue;
    const std::vector<std::string> inputs = fuzz::readCorpus(path);
    EXPECT_FALSE(inputs.empty());
    for (const std::string& input : inputs) {
      target(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplayTest, testing::ValuesIn(targetNames()),
                         [](const auto& row) { return row.param; });

}  // namespace
