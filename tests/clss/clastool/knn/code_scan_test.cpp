// SPDX-License-Identifier: MIT
#include "clastool/knn/code_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/simd_levels.h"

namespace {

using Line = vx_CodeScan::Line;
constexpr std::size_t kLanes = vx_PackedPatterns::kLanes;
using Scores = std::array<std::uint32_t, kLanes>;
constexpr std::uint32_t kUntouched = 4711;

struct Found {
  std::size_t block;
  std::uint32_t lanes;
  Scores scores;

  bool operator==(const Found& other) const {
    return block == other.block && lanes == other.lanes && scores == other.scores;
  }
};

enum class Kind { kByteAbsolutes, kByteSquares, kWordAbsolutes, kWordSquares };
constexpr Kind kKinds[] = {Kind::kByteAbsolutes, Kind::kByteSquares, Kind::kWordAbsolutes,
                           Kind::kWordSquares};

bool isWide(Kind kind) { return kind == Kind::kWordAbsolutes || kind == Kind::kWordSquares; }
bool areSquares(Kind kind) { return kind == Kind::kByteSquares || kind == Kind::kWordSquares; }
std::uint32_t most(Kind kind) {
  return isWide(kind) ? vx_CodeScan::kMostOfWords : vx_CodeScan::kMostOfBytes;
}
vx_CodeScan::Find finder(const vx_CodeScan& scan, Kind kind) {
  const vx_CodeScan::Finders& finders = isWide(kind) ? scan.words : scan.bytes;
  return areSquares(kind) ? finders.bySquares : finders.byAbsolutes;
}

/// Blocks of patterns and the lines of one query, with codes below `codes`.
struct Data {
  Data(Kind scores, std::mt19937_64& random, std::size_t numPairs, std::size_t numBlocks,
       unsigned codes)
      : kind(scores),
        patternCodes(numBlocks * kLanes, std::vector<std::uint16_t>(2 * numPairs)),
        queryCodes(2 * numPairs),
        pairs(numPairs),
        blocks(numBlocks) {
    for (auto& each : patternCodes) {
      for (std::uint16_t& code : each) code = static_cast<std::uint16_t>(random() % codes);
    }
    for (std::uint16_t& code : queryCodes) code = static_cast<std::uint16_t>(random() % codes);
  }

  /// By the definition of a score.
  std::uint32_t score(std::size_t pattern) const {
    std::uint64_t sum = 0;
    for (std::size_t j = 0; j < 2 * pairs; ++j) {
      const long difference =
          std::labs(static_cast<long>(patternCodes[pattern][j]) - queryCodes[j]);
      const long cut =
          isWide(kind) ? difference : std::min<long>(difference, vx_CodeScan::kByteCut);
      sum += static_cast<std::uint64_t>(areSquares(kind) ? cut * cut : difference);
    }
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(sum, most(kind)));
  }

  Found find(std::size_t first, std::uint32_t limit) const {
    for (std::size_t block = first; block < blocks; ++block) {
      Found found{block, 0, {}};
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        found.scores[lane] = score(block * kLanes + lane);
        if (found.scores[lane] <= limit) found.lanes |= std::uint32_t{1} << lane;
      }
      if (found.lanes != 0) return found;
    }
    return {blocks, 0, {}};
  }

  /// What a scan finds in lines of these codes.
  Found find(const vx_CodeScan& scan, std::size_t first, std::uint32_t limit) const {
    const std::size_t linesPerPair = isWide(kind) ? 2 : 1;
    std::vector<Line> lines(blocks * pairs * linesPerPair);
    std::vector<Line> query(pairs);
    for (std::size_t j = 0; j < pairs; ++j) {
      for (std::size_t i = 0; i < blocks * kLanes; ++i) {
        Line* line = &lines[(i / kLanes * pairs + j) * linesPerPair];
        put(patternCodes[i], j, i % kLanes, line);
      }
      std::array<Line, 2> both;
      for (std::size_t lane = 0; lane < kLanes; ++lane) put(queryCodes, j, lane, both.data());
      query[j] = both[0];
    }
    // Not aligned, as a caller's scores may be.
    struct {
      alignas(64) std::uint32_t before;
      Scores scores;
      std::uint32_t after;
    } memory;
    memory.before = memory.after = kUntouched;
    std::uint32_t lanes = 0;
    const vx_CodeScan::Task task = {lines.data(), query.data(), pairs, blocks};
    const std::size_t block = finder(scan, kind)(task, first, limit, memory.scores.data(), lanes);
    EXPECT_EQ(memory.before, kUntouched);
    EXPECT_EQ(memory.after, kUntouched);
    if (block == blocks) return {block, 0, {}};
    return {block, lanes, memory.scores};
  }

  void put(const std::vector<std::uint16_t>& codes, std::size_t pair, std::size_t lane,
           Line* line) const {
    const std::uint16_t first = codes[2 * pair];
    const std::uint16_t second = codes[2 * pair + 1];
    if (isWide(kind)) {
      line[lane / 16].words[2 * (lane % 16)] = first;
      line[lane / 16].words[2 * (lane % 16) + 1] = second;
    } else {
      line->words[lane] = vx_bytePair(first, second);
    }
  }

  Kind kind;
  std::vector<std::vector<std::uint16_t>> patternCodes;
  std::vector<std::uint16_t> queryCodes;
  std::size_t pairs;
  std::size_t blocks;
};

template <class Check>
void withEveryCode(const Check& check) {
  {
    SCOPED_TRACE("portable");
    check(vx_CodeScan::portable());
  }
  atEverySimdLevel([&] { check(vx_CodeScan::at(vx_simd())); });
}

class CodeScanTest : public testing::TestWithParam<Kind> {};

TEST_P(CodeScanTest, FindsTheSameByAnyInstructions) {
  std::mt19937_64 random(1);
  for (std::size_t pairs = 1; pairs <= 40; ++pairs) {
    for (std::size_t blocks = 0; blocks <= 5; ++blocks) {
      const unsigned wideCodes = pairs <= 4 ? 16384 : 5000;
      const unsigned codes[] = {2, 4, 40, 200, isWide(GetParam()) ? wideCodes : 256};
      const Data data(GetParam(), random, pairs, blocks, codes[random() % 5]);
      const std::uint32_t last = most(GetParam());
      std::vector<std::uint32_t> limits = {0, last - 1, last,
                                           static_cast<std::uint32_t>(random()) & last};
      if (blocks != 0) {
        const std::uint32_t some = data.score(random() % (blocks * kLanes));
        limits.push_back(some);
        if (some != 0) limits.push_back(some - 1);
      }
      for (const std::uint32_t limit : limits) {
        const std::size_t first = random() % (blocks + 1);
        SCOPED_TRACE(std::to_string(pairs) + " pairs, " + std::to_string(blocks) +
                     " blocks, limit " + std::to_string(limit));
        const Found expected = data.find(first, limit);
        withEveryCode([&](const vx_CodeScan& scan) {
          ASSERT_TRUE(data.find(scan, first, limit) == expected);
        });
        if (HasFailure()) return;
      }
    }
  }
}

TEST_P(CodeScanTest, TakesEveryDifferenceAlike) {
  std::mt19937_64 random(1);
  const unsigned last = isWide(GetParam()) ? 16383 : 255;
  for (unsigned round = 0; round < 64; ++round) {
    Data data(GetParam(), random, 1, 8, 1);
    for (unsigned i = 0; i < 256; ++i) {
      const unsigned code = isWide(GetParam()) ? 64 * i + round : i;
      data.patternCodes[i] = {static_cast<std::uint16_t>(code),
                              static_cast<std::uint16_t>(last - code)};
    }
    data.queryCodes = {static_cast<std::uint16_t>(last * round / 63),
                       static_cast<std::uint16_t>(random() % (last + 1))};
    for (std::size_t block = 0; block < 8; ++block) {
      const Found expected = data.find(block, most(GetParam()));
      withEveryCode([&](const vx_CodeScan& scan) {
        EXPECT_TRUE(data.find(scan, block, most(GetParam())) == expected);
      });
    }
  }
}

TEST_P(CodeScanTest, GivesTheGreatestScores) {
  // Of bytes far more than 16 bits hold, of words as much as eight measurements give.
  std::mt19937_64 random(1);
  const bool wide = isWide(GetParam());
  Data data(GetParam(), random, wide ? 4 : 400, 1, 1);
  for (std::uint16_t& code : data.queryCodes) code = wide ? 16383 : 255;
  const std::uint32_t greatest = data.score(0);
  EXPECT_EQ(greatest, !wide ? 65535u : areSquares(GetParam()) ? 2147221512u : 131064u);
  withEveryCode([&](const vx_CodeScan& scan) {
    EXPECT_EQ(data.find(scan, 0, greatest - 1).block, 1u);
    const Found found = data.find(scan, 0, greatest);
    EXPECT_EQ(found.lanes, 0xffffffffu);
    EXPECT_EQ(found.scores[0], greatest);
    EXPECT_EQ(found.scores[31], greatest);
  });
}

INSTANTIATE_TEST_SUITE_P(Scores, CodeScanTest, testing::ValuesIn(kKinds), [](const auto& row) {
  return std::string(isWide(row.param) ? "Word" : "Byte") +
         (areSquares(row.param) ? "Squares" : "Absolutes");
});

TEST(CodeScanCountTest, CountsTheSameByAnyInstructions) {
  std::mt19937_64 random(1);
  const std::uint32_t last = vx_CodeScan::kMostOfWords;
  for (std::size_t blocks = 0; blocks <= 9; ++blocks) {
    for (const std::uint32_t range : {1u, 3u, 1000u, 65536u, last}) {
      std::vector<std::uint32_t> memory(blocks * kLanes + 1);
      for (std::uint32_t& score : memory) {
        score = static_cast<std::uint32_t>(random() % range);
        if (random() % 2 == 0) score = last - score;
      }
      const std::uint32_t* scores = memory.data() + 1;
      for (const std::uint32_t limit :
           {0u, 1u, 32767u, 65535u, 65536u, last / 2, last - 1, last, memory[0], memory.back()}) {
        const auto expected = static_cast<std::size_t>(
            std::count_if(scores, scores + blocks * kLanes,
                          [limit](std::uint32_t score) { return score <= limit; }));
        withEveryCode([&](const vx_CodeScan& scan) {
          EXPECT_EQ(scan.countAtMost(scores, blocks, limit), expected);
        });
      }
    }
  }
}

}  // namespace
