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

const std::uint8_t* bytesOf(const std::string& input) {
  return reinterpret_cast<const std::uint8_t*>(input.data());
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
      target(bytesOf(input), input.size());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplayTest, testing::ValuesIn(fuzz::namesOf(fuzz::targets())),
                         [](const auto& row) { return row.param; });

class FuzzTokensTest : public testing::TestWithParam<std::string> {};

TEST_P(FuzzTokensTest, AreTheFieldsOfAnArchive) {
  const fuzz::Tokenizer tokenizer = fuzz::tokenizers().at(GetParam());
  std::size_t numTokens = 0;
  const std::vector<std::string> inputs =
      fuzz::readCorpus(VXCLSS_SOURCE_TREE "/fuzz/corpus/" + GetParam() + ".bin");
  for (const std::string& input : inputs) {
    std::size_t end = 0;
    for (const fuzz::Token& token : tokenizer(bytesOf(input), input.size())) {
      EXPECT_GE(token.offset, end);
      EXPECT_GT(token.size, 0u);
      end = token.offset + token.size;
      ++numTokens;
    }
    EXPECT_LE(end, input.size());
  }
  // Without them the mutator finds no joint to change an archive at.
  EXPECT_GT(numTokens, 4 * inputs.size());
}

INSTANTIATE_TEST_SUITE_P(Archives, FuzzTokensTest,
                         testing::ValuesIn(fuzz::namesOf(fuzz::tokenizers())),
                         [](const auto& row) { return row.param; });

}  // namespace
