// SPDX-License-Identifier: MIT
// What the mutator makes of the committed corpus: a fixed round of it, each change once.

#include "fuzz/archive_mutator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/corpus.h"
#include "fuzz/target.h"
#include "tests/support/figures.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

fuzz::Tokenizer currentTokenizer = nullptr;
long leftToTheFuzzer = 0;

}  // namespace

// Those of one fuzzer; here of the target at hand.
std::vector<fuzz::Token> fuzz::tokensOf(const std::uint8_t* data, std::size_t size) {
  return currentTokenizer(data, size);
}

// The fuzzer's own.
std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) {
  ++leftToTheFuzzer;
  return size;
}

namespace {

class ArchiveMutatorTest : public testing::TestWithParam<std::string> {
 protected:
  static constexpr std::size_t kMostBytes = 600;
  static constexpr unsigned kChanges = 6;

  ArchiveMutatorTest() {
    currentTokenizer = fuzz::tokenizers().at(GetParam());
    leftToTheFuzzer = 0;
    const auto all = fuzz::readCorpus(VXCLSS_SOURCE_TREE "/fuzz/corpus/" + GetParam() + ".bin");
    for (std::size_t i = 0; i < all.size(); i += 1 + all.size() / 60) {
      const std::string& input = all[i];
      if (!input.empty() && input.size() <= kMostBytes) {
        inputs_.emplace_back(input.begin(), input.end());
      }
    }
  }

  /// Runs an input through its target, which ends the program if it finds something.
  void tryInput(const Bytes& bytes) {
    fuzz::targets().at(GetParam())(bytes.data(), bytes.size());
    const std::vector<fuzz::Token> tokens = currentTokenizer(bytes.data(), bytes.size());
    numFields_ += tokens.size();
    ++numTried_;
  }
  double fieldsPerInput() const {
    return static_cast<double>(numFields_) / static_cast<double>(std::max(numTried_, 1L));
  }

  std::vector<Bytes> inputs_;
  std::size_t numFields_ = 0;
  long numTried_ = 0;
};

TEST_P(ArchiveMutatorTest, ChangesArchivesAtTheirFields) {
  for (const Bytes& input : inputs_) tryInput(input);
  const double before = fieldsPerInput();
  numFields_ = 0;
  numTried_ = 0;
  long changed = 0;
  for (const Bytes& input : inputs_) {
    for (unsigned seed = 1; seed <= kChanges; ++seed) {
      Bytes bytes = input;
      bytes.resize(kMostBytes);
      const long left = leftToTheFuzzer;
      const std::size_t size =
          LLVMFuzzerCustomMutator(bytes.data(), input.size(), kMostBytes, seed);
      ASSERT_LE(size, kMostBytes);
      if (leftToTheFuzzer != left) continue;
      bytes.resize(size);
      if (bytes != input) ++changed;
      tryInput(bytes);
    }
  }
  showFigure("inputs", numTried_);
  showFigure("inputs changed", changed);
  showFigure("fields of 100 inputs", static_cast<long long>(100 * before));
  showFigure("fields of 100 changed ones", static_cast<long long>(100 * fieldsPerInput()));
  EXPECT_GT(numTried_, leftToTheFuzzer);
  EXPECT_GT(changed, numTried_ * 3 / 4);
  EXPECT_GT(fieldsPerInput(), before / 4);  // the rest lies behind what a load refuses
}

TEST_P(ArchiveMutatorTest, SplicesTwoArchives) {
  long spliced = 0;
  for (std::size_t i = 1; i < inputs_.size(); ++i) {
    const Bytes& first = inputs_[i - 1];
    const Bytes& second = inputs_[i];
    Bytes bytes(kMostBytes);
    const std::size_t size =
        LLVMFuzzerCustomCrossOver(first.data(), first.size(), second.data(), second.size(),
                                  bytes.data(), kMostBytes, static_cast<unsigned>(i));
    ASSERT_LE(size, kMostBytes);
    bytes.resize(size);
    if (size > first.size()) ++spliced;
    tryInput(bytes);
  }
  EXPECT_GT(spliced, static_cast<long>(inputs_.size()) / 2);
}

INSTANTIATE_TEST_SUITE_P(Archives, ArchiveMutatorTest,
                         testing::ValuesIn(fuzz::namesOf(fuzz::tokenizers())),
                         [](const auto& row) { return row.param; });

}  // namespace
