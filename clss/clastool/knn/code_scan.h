// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_KNN_CODE_SCAN_H_
#define CLSS_CLASTOOL_KNN_CODE_SCAN_H_

#include <cstddef>
#include <cstdint>

#include "clastool/clastool/packed_patterns.h"
#include "kernel/simd.h"

/// The inner loops of the neighbour search, for one set of processor instructions.
///
/// A pattern's score is the sum, over its measurements, of what its code and the query's differ
/// by, or of the squares of that. Of bytes, differences are cut at kByteCut before they are
/// squared, and sums at kMostOfBytes. Whole numbers, so that all implementations give the same
/// ones.
struct vx_CodeScan {
  using Line = vx_PackedPatterns::Line;
  static constexpr int kByteCut = 127;  // so that two squares fit signed 16 bits
  static constexpr std::uint32_t kMostOfBytes = 65535;
  static constexpr std::uint32_t kMostOfWords = 0x7fffffff;

  /// What to search: blocks of 32 patterns, and lines that bear the query's codes in every place.
  struct Task {
    const Line* patterns;
    const Line* query;     // one for two measurements
    std::size_t numPairs;  // of measurements
    std::size_t numBlocks;
  };

  /// Looks for the first block from `first` on of which a pattern scores at most `limit`. Gives
  /// its number, its 32 scores and one bit for each of those that do; numBlocks if there is none.
  using Find = std::size_t (*)(const Task& task, std::size_t first, std::uint32_t limit,
                               std::uint32_t* scores, std::uint32_t& found);
  struct Finders {
    Find byAbsolutes;
    Find bySquares;
  };
  Finders bytes;
  Finders words;

  /// How many of 32 * `blocks` scores are at most `limit`; none is above kMostOfWords.
  std::size_t (*countAtMost)(const std::uint32_t* scores, std::size_t blocks, std::uint32_t limit);

  static const vx_CodeScan& at(vx_Simd level);
  /// Without instructions of any particular processor.
  static const vx_CodeScan& portable();

#ifdef __SSE2__
  static const vx_CodeScan kSse2;
#endif
#ifdef VX_SIMD_X86
  static const vx_CodeScan kAvx2;
  static const vx_CodeScan kAvx512;
#endif
};

#endif  // CLSS_CLASTOOL_KNN_CODE_SCAN_H_
