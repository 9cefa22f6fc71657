// SPDX-License-Identifier: MIT
#include "code_scan.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

using Line = vx_CodeScan::Line;
using Task = vx_CodeScan::Task;
constexpr std::size_t kLanes = vx_PackedPatterns::kLanes;
using Scores = std::array<std::uint32_t, kLanes>;

template <bool kSquares>
std::uint32_t byteTerm(int a, int b) {
  const int difference = std::abs(a - b);
  const int cut = std::min(difference, vx_CodeScan::kByteCut);
  return static_cast<std::uint32_t>(kSquares ? cut * cut : difference);
}

template <bool kSquares>
std::uint32_t wordTerm(int a, int b) {
  const int difference = std::abs(a - b);
  return static_cast<std::uint32_t>(kSquares ? difference * difference : difference);
}

template <bool kSquares>
void scoreBytes(const Line* block, const Task& task, Scores& scores) {
  for (std::size_t j = 0; j < task.numPairs; ++j) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const int codes = block[j].words[lane];
      const int query = task.query[j].words[lane];
      const std::uint32_t sum = scores[lane] + byteTerm<kSquares>(codes & 0xff, query & 0xff) +
                                byteTerm<kSquares>(codes >> 8, query >> 8);
      scores[lane] = std::min(sum, vx_CodeScan::kMostOfBytes);
    }
  }
}

template <bool kSquares>
void scoreWords(const Line* block, const Task& task, Scores& scores) {
  for (std::size_t j = 0; j < task.numPairs; ++j) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const std::uint16_t* codes = &block[2 * j + lane / 16].words[2 * (lane % 16)];
      const std::uint16_t* query = &task.query[j].words[0];
      scores[lane] +=
          wordTerm<kSquares>(codes[0], query[0]) + wordTerm<kSquares>(codes[1], query[1]);
    }
  }
}

template <void (*score)(const Line*, const Task&, Scores&), std::size_t linesPerPair>
std::size_t find(const Task& task, std::size_t first, std::uint32_t limit, std::uint32_t* scores,
                 std::uint32_t& found) {
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    Scores sums{};
    score(task.patterns + block * linesPerPair * task.numPairs, task, sums);
    found = 0;
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      found |= static_cast<std::uint32_t>(sums[lane] <= limit) << lane;
    }
    if (found != 0) {
      std::copy(sums.begin(), sums.end(), scores);
      return block;
    }
  }
  return task.numBlocks;
}

std::size_t countAtMost(const std::uint32_t* scores, std::size_t blocks, std::uint32_t limit) {
  return static_cast<std::size_t>(std::count_if(
      scores, scores + blocks * kLanes, [limit](std::uint32_t score) { return score <= limit; }));
}

constexpr vx_CodeScan kPortable = {{find<scoreBytes<false>, 1>, find<scoreBytes<true>, 1>},
                                   {find<scoreWords<false>, 2>, find<scoreWords<true>, 2>},
                                   countAtMost};

}  // namespace

const vx_CodeScan& vx_CodeScan::portable() { return kPortable; }

const vx_CodeScan& vx_CodeScan::at(vx_Simd level) {
#ifdef VX_SIMD_X86
  if (level == vx_Simd::kAvx512) return kAvx512;
  if (level == vx_Simd::kAvx2) return kAvx2;
#endif
  static_cast<void>(level);
#ifdef __SSE2__
  return kSse2;
#else
  return kPortable;
#endif
}
