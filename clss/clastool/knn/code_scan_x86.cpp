// SPDX-License-Identifier: MIT
// The scans in registers of 16, 32 and 64 bytes.
//
// Of a line of bytes, |a - b| = (a -sat b) | (b -sat a) for all at once; the two differences of a
// pattern, or their squares, make 16 bits, which are added up with saturation. Of a line of words,
// a multiply-add of the signed differences makes 32 bits.
#include "code_scan.h"

#ifdef __SSE2__

#ifdef VX_SIMD_X86
#include <immintrin.h>
#else
#include <emmintrin.h>
#endif

#include <algorithm>

namespace {

using Task = vx_CodeScan::Task;

std::int16_t byteLimit(std::uint32_t limit) {
  return static_cast<std::int16_t>(std::min(limit, vx_CodeScan::kMostOfBytes));
}

// SSE2

__m128i load128(const __m128i* from) { return _mm_load_si128(from); }

template <bool kSquares>
__m128i bytePairs(__m128i line, __m128i query) {
  const __m128i difference = _mm_or_si128(_mm_subs_epu8(line, query), _mm_subs_epu8(query, line));
  if (!kSquares) {
    const __m128i even = _mm_and_si128(difference, _mm_set1_epi16(0xff));
    return _mm_add_epi16(even, _mm_srli_epi16(difference, 8));
  }
  const __m128i cut = _mm_min_epu8(difference, _mm_set1_epi8(vx_CodeScan::kByteCut));
  const __m128i low = _mm_unpacklo_epi8(cut, _mm_setzero_si128());
  const __m128i high = _mm_unpackhi_epi8(cut, _mm_setzero_si128());
  return _mm_packs_epi32(_mm_madd_epi16(low, low), _mm_madd_epi16(high, high));
}

template <bool kSquares>
__m128i wordPairs(__m128i line, __m128i query) {
  const __m128i difference = _mm_sub_epi16(line, query);
  if (kSquares) return _mm_madd_epi16(difference, difference);
  const __m128i negative = _mm_sub_epi16(_mm_setzero_si128(), difference);
  return _mm_madd_epi16(_mm_max_epi16(difference, negative), _mm_set1_epi16(1));
}

/// A bit for each of 16 masks of 16 bits.
std::uint32_t bits16(__m128i low, __m128i high) {
  return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

template <bool kSquares>
std::size_t findBytesSse2(const Task& task, std::size_t first, std::uint32_t limit,
                          std::uint32_t* scores, std::uint32_t& found) {
  const __m128i limits = _mm_set1_epi16(byteLimit(limit));
  const __m128i zero = _mm_setzero_si128();
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const auto* line = reinterpret_cast<const __m128i*>(task.patterns + block * task.numPairs);
    const auto* query = reinterpret_cast<const __m128i*>(task.query);
    __m128i sums[4] = {zero, zero, zero, zero};
    for (std::size_t j = 0; j < task.numPairs; ++j, line += 4, query += 4) {
      const __m128i same = load128(query);
      sums[0] = _mm_adds_epu16(sums[0], bytePairs<kSquares>(load128(line), same));
      sums[1] = _mm_adds_epu16(sums[1], bytePairs<kSquares>(load128(line + 1), same));
      sums[2] = _mm_adds_epu16(sums[2], bytePairs<kSquares>(load128(line + 2), same));
      sums[3] = _mm_adds_epu16(sums[3], bytePairs<kSquares>(load128(line + 3), same));
    }
    __m128i within[4];
    for (int i = 0; i < 4; ++i) within[i] = _mm_cmpeq_epi16(_mm_subs_epu16(sums[i], limits), zero);
    found = bits16(within[0], within[1]) | bits16(within[2], within[3]) << 16;
    if (found != 0) {
      auto* to = reinterpret_cast<__m128i*>(scores);
      for (int i = 0; i < 4; ++i) {
        _mm_storeu_si128(to++, _mm_unpacklo_epi16(sums[i], zero));
        _mm_storeu_si128(to++, _mm_unpackhi_epi16(sums[i], zero));
      }
      return block;
    }
  }
  return task.numBlocks;
}

template <bool kSquares>
std::size_t findWordsSse2(const Task& task, std::size_t first, std::uint32_t limit,
                          std::uint32_t* scores, std::uint32_t& found) {
  const __m128i limits = _mm_set1_epi32(static_cast<std::int32_t>(limit));
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const auto* line = reinterpret_cast<const __m128i*>(task.patterns + 2 * block * task.numPairs);
    const auto* query = reinterpret_cast<const __m128i*>(task.query);
    __m128i sums[8];
    for (__m128i& sum : sums) sum = _mm_setzero_si128();
    for (std::size_t j = 0; j < task.numPairs; ++j, line += 8, query += 4) {
      const __m128i same = load128(query);
      sums[0] = _mm_add_epi32(sums[0], wordPairs<kSquares>(load128(line), same));
      sums[1] = _mm_add_epi32(sums[1], wordPairs<kSquares>(load128(line + 1), same));
      sums[2] = _mm_add_epi32(sums[2], wordPairs<kSquares>(load128(line + 2), same));
      sums[3] = _mm_add_epi32(sums[3], wordPairs<kSquares>(load128(line + 3), same));
      sums[4] = _mm_add_epi32(sums[4], wordPairs<kSquares>(load128(line + 4), same));
      sums[5] = _mm_add_epi32(sums[5], wordPairs<kSquares>(load128(line + 5), same));
      sums[6] = _mm_add_epi32(sums[6], wordPairs<kSquares>(load128(line + 6), same));
      sums[7] = _mm_add_epi32(sums[7], wordPairs<kSquares>(load128(line + 7), same));
    }
    __m128i beyond[4];
    for (int i = 0; i < 4; ++i) {
      beyond[i] = _mm_packs_epi32(_mm_cmpgt_epi32(sums[2 * i], limits),
                                  _mm_cmpgt_epi32(sums[2 * i + 1], limits));
    }
    found = ~(bits16(beyond[0], beyond[1]) | bits16(beyond[2], beyond[3]) << 16);
    if (found != 0) {
      for (int i = 0; i < 8; ++i) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(scores) + i, sums[i]);
      }
      return block;
    }
  }
  return task.numBlocks;
}

std::size_t countSse2(const std::uint32_t* scores, std::size_t blocks, std::uint32_t limit) {
  const __m128i limits = _mm_set1_epi32(static_cast<std::int32_t>(limit));
  __m128i beyond = _mm_setzero_si128();  // minus their number, in each of four places
  for (std::size_t i = 0; i < 8 * blocks; ++i) {
    const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i*>(scores) + i);
    beyond = _mm_add_epi32(beyond, _mm_cmpgt_epi32(some, limits));
  }
  alignas(16) std::int32_t counts[4];
  _mm_store_si128(reinterpret_cast<__m128i*>(counts), beyond);
  const std::int64_t sum = std::int64_t{counts[0]} + counts[1] + counts[2] + counts[3];
  return static_cast<std::size_t>(static_cast<std::int64_t>(32 * blocks) + sum);
}

#ifdef VX_SIMD_X86

// AVX2

VX_SIMD_AVX2 __m256i load256(const __m256i* from) { return _mm256_load_si256(from); }

template <bool kSquares>
VX_SIMD_AVX2 __m256i bytePairs(__m256i line, __m256i query) {
  const __m256i difference =
      _mm256_or_si256(_mm256_subs_epu8(line, query), _mm256_subs_epu8(query, line));
  if (!kSquares) return _mm256_maddubs_epi16(difference, _mm256_set1_epi8(1));
  const __m256i cut = _mm256_min_epu8(difference, _mm256_set1_epi8(vx_CodeScan::kByteCut));
  return _mm256_maddubs_epi16(cut, cut);
}

template <bool kSquares>
VX_SIMD_AVX2 __m256i wordPairs(__m256i line, __m256i query) {
  const __m256i difference = _mm256_sub_epi16(line, query);
  if (kSquares) return _mm256_madd_epi16(difference, difference);
  return _mm256_madd_epi16(_mm256_abs_epi16(difference), _mm256_set1_epi16(1));
}

/// A bit for each of 32 masks of 16 bits. Packing takes the registers' halves by turns.
VX_SIMD_AVX2 std::uint32_t bits32(__m256i low, __m256i high) {
  const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packs_epi16(low, high), 0xd8);
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

template <bool kSquares>
VX_SIMD_AVX2 std::size_t findBytesAvx2(const Task& task, std::size_t first, std::uint32_t limit,
                                       std::uint32_t* scores, std::uint32_t& found) {
  const __m256i limits = _mm256_set1_epi16(byteLimit(limit));
  const __m256i zero = _mm256_setzero_si256();
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const auto* line = reinterpret_cast<const __m256i*>(task.patterns + block * task.numPairs);
    const auto* query = reinterpret_cast<const __m256i*>(task.query);
    __m256i a = zero, b = zero;
    for (std::size_t j = 0; j < task.numPairs; ++j, line += 2, query += 2) {
      const __m256i same = load256(query);
      a = _mm256_adds_epu16(a, bytePairs<kSquares>(load256(line), same));
      b = _mm256_adds_epu16(b, bytePairs<kSquares>(load256(line + 1), same));
    }
    found = bits32(_mm256_cmpeq_epi16(_mm256_subs_epu16(a, limits), zero),
                   _mm256_cmpeq_epi16(_mm256_subs_epu16(b, limits), zero));
    if (found != 0) {
      auto* to = reinterpret_cast<__m256i*>(scores);
      _mm256_storeu_si256(to, _mm256_cvtepu16_epi32(_mm256_castsi256_si128(a)));
      _mm256_storeu_si256(to + 1, _mm256_cvtepu16_epi32(_mm256_extracti128_si256(a, 1)));
      _mm256_storeu_si256(to + 2, _mm256_cvtepu16_epi32(_mm256_castsi256_si128(b)));
      _mm256_storeu_si256(to + 3, _mm256_cvtepu16_epi32(_mm256_extracti128_si256(b, 1)));
      return block;
    }
  }
  return task.numBlocks;
}

template <bool kSquares>
VX_SIMD_AVX2 std::size_t findWordsAvx2(const Task& task, std::size_t first, std::uint32_t limit,
                                       std::uint32_t* scores, std::uint32_t& found) {
  const __m256i limits = _mm256_set1_epi32(static_cast<std::int32_t>(limit));
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const auto* line = reinterpret_cast<const __m256i*>(task.patterns + 2 * block * task.numPairs);
    const auto* query = reinterpret_cast<const __m256i*>(task.query);
    __m256i sums[4];
    for (__m256i& sum : sums) sum = _mm256_setzero_si256();
    for (std::size_t j = 0; j < task.numPairs; ++j, line += 4, query += 2) {
      const __m256i same = load256(query);
      sums[0] = _mm256_add_epi32(sums[0], wordPairs<kSquares>(load256(line), same));
      sums[1] = _mm256_add_epi32(sums[1], wordPairs<kSquares>(load256(line + 1), same));
      sums[2] = _mm256_add_epi32(sums[2], wordPairs<kSquares>(load256(line + 2), same));
      sums[3] = _mm256_add_epi32(sums[3], wordPairs<kSquares>(load256(line + 3), same));
    }
    __m256i beyond[2];
    for (int i = 0; i < 2; ++i) {
      beyond[i] = _mm256_packs_epi32(_mm256_cmpgt_epi32(sums[2 * i], limits),
                                     _mm256_cmpgt_epi32(sums[2 * i + 1], limits));
      beyond[i] = _mm256_permute4x64_epi64(beyond[i], 0xd8);
    }
    found = ~bits32(beyond[0], beyond[1]);
    if (found != 0) {
      for (int i = 0; i < 4; ++i) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(scores) + i, sums[i]);
      }
      return block;
    }
  }
  return task.numBlocks;
}

VX_SIMD_AVX2 std::size_t countAvx2(const std::uint32_t* scores, std::size_t blocks,
                                   std::uint32_t limit) {
  const __m256i limits = _mm256_set1_epi32(static_cast<std::int32_t>(limit));
  std::size_t beyond = 0;
  for (std::size_t i = 0; i < 4 * blocks; ++i) {
    const __m256i some = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(scores) + i);
    const __m256 isBeyond = _mm256_castsi256_ps(_mm256_cmpgt_epi32(some, limits));
    const auto bits = static_cast<std::uint32_t>(_mm256_movemask_ps(isBeyond));
    beyond += static_cast<std::size_t>(_mm_popcnt_u32(bits));
  }
  return 32 * blocks - beyond;
}

// AVX-512

template <bool kSquares>
VX_SIMD_AVX512 __m512i bytePairs(__m512i line, __m512i query) {
  const __m512i difference =
      _mm512_or_si512(_mm512_subs_epu8(line, query), _mm512_subs_epu8(query, line));
  if (!kSquares) return _mm512_maddubs_epi16(difference, _mm512_set1_epi8(1));
  const __m512i cut = _mm512_min_epu8(difference, _mm512_set1_epi8(vx_CodeScan::kByteCut));
  return _mm512_maddubs_epi16(cut, cut);
}

template <bool kSquares>
VX_SIMD_AVX512 __m512i wordPairs(__m512i line, __m512i query) {
  const __m512i difference = _mm512_sub_epi16(line, query);
  if (kSquares) return _mm512_madd_epi16(difference, difference);
  const __m512i negative = _mm512_sub_epi16(_mm512_setzero_si512(), difference);
  return _mm512_madd_epi16(_mm512_max_epi16(difference, negative), _mm512_set1_epi16(1));
}

template <bool kSquares>
VX_SIMD_AVX512 std::size_t findBytesAvx512(const Task& task, std::size_t first, std::uint32_t limit,
                                           std::uint32_t* scores, std::uint32_t& found) {
  const __m512i limits = _mm512_set1_epi16(byteLimit(limit));
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const vx_CodeScan::Line* line = task.patterns + block * task.numPairs;
    __m512i sums = _mm512_setzero_si512();
    for (std::size_t j = 0; j < task.numPairs; ++j) {
      sums = _mm512_adds_epu16(sums, bytePairs<kSquares>(_mm512_load_si512(line + j),
                                                         _mm512_load_si512(task.query + j)));
    }
    found = _mm512_cmple_epu16_mask(sums, limits);
    if (found != 0) {
      // Through memory: gcc 12 takes the half registers of 512 bits for uses of unset variables.
      alignas(64) std::uint16_t words[vx_PackedPatterns::kLanes];
      _mm512_store_si512(words, sums);
      std::copy(words, words + vx_PackedPatterns::kLanes, scores);
      return block;
    }
  }
  return task.numBlocks;
}

template <bool kSquares>
VX_SIMD_AVX512 std::size_t findWordsAvx512(const Task& task, std::size_t first, std::uint32_t limit,
                                           std::uint32_t* scores, std::uint32_t& found) {
  const __m512i limits = _mm512_set1_epi32(static_cast<std::int32_t>(limit));
  for (std::size_t block = first; block < task.numBlocks; ++block) {
    const vx_CodeScan::Line* line = task.patterns + 2 * block * task.numPairs;
    __m512i low = _mm512_setzero_si512();
    __m512i high = low;
    for (std::size_t j = 0; j < task.numPairs; ++j) {
      const __m512i same = _mm512_load_si512(task.query + j);
      low = _mm512_add_epi32(low, wordPairs<kSquares>(_mm512_load_si512(line + 2 * j), same));
      high = _mm512_add_epi32(high, wordPairs<kSquares>(_mm512_load_si512(line + 2 * j + 1), same));
    }
    found = static_cast<std::uint32_t>(_mm512_cmple_epi32_mask(low, limits)) |
            static_cast<std::uint32_t>(_mm512_cmple_epi32_mask(high, limits)) << 16;
    if (found != 0) {
      _mm512_storeu_si512(scores, low);
      _mm512_storeu_si512(scores + 16, high);
      return block;
    }
  }
  return task.numBlocks;
}

VX_SIMD_AVX512 std::size_t countAvx512(const std::uint32_t* scores, std::size_t blocks,
                                       std::uint32_t limit) {
  const __m512i limits = _mm512_set1_epi32(static_cast<std::int32_t>(limit));
  std::size_t count = 0;
  for (std::size_t i = 0; i < blocks; ++i, scores += 32) {
    const auto low =
        static_cast<std::uint32_t>(_mm512_cmple_epi32_mask(_mm512_loadu_si512(scores), limits));
    const auto high = static_cast<std::uint32_t>(
        _mm512_cmple_epi32_mask(_mm512_loadu_si512(scores + 16), limits));
    count += static_cast<std::size_t>(_mm_popcnt_u32(low | high << 16));
  }
  return count;
}

#endif

}  // namespace

const vx_CodeScan vx_CodeScan::kSse2 = {{findBytesSse2<false>, findBytesSse2<true>},
                                        {findWordsSse2<false>, findWordsSse2<true>},
                                        countSse2};
#ifdef VX_SIMD_X86
const vx_CodeScan vx_CodeScan::kAvx2 = {{findBytesAvx2<false>, findBytesAvx2<true>},
                                        {findWordsAvx2<false>, findWordsAvx2<true>},
                                        countAvx2};
const vx_CodeScan vx_CodeScan::kAvx512 = {{findBytesAvx512<false>, findBytesAvx512<true>},
                                          {findWordsAvx512<false>, findWordsAvx512<true>},
                                          countAvx512};
#endif

#endif
