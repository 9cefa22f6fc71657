// SPDX-License-Identifier: MIT
#include "lane_adder.h"

#include "kernel/simd.h"

#ifdef VX_SIMD_X86
#include <immintrin.h>
#endif

// An addition takes several cycles while two can start in each, so about eight registers of sums
// have to be under way. What is left of the lanes goes a register at a time: there the processor
// overlaps one register's additions with the next one's by itself.

namespace {

#ifdef VX_SIMD_X86

void addPlain(double* sums, std::size_t lanes, const double* terms, std::size_t count) {
  for (; lanes >= 16; lanes -= 16, sums += 16) {
    __m128d s0 = _mm_loadu_pd(sums);
    __m128d s1 = _mm_loadu_pd(sums + 2);
    __m128d s2 = _mm_loadu_pd(sums + 4);
    __m128d s3 = _mm_loadu_pd(sums + 6);
    __m128d s4 = _mm_loadu_pd(sums + 8);
    __m128d s5 = _mm_loadu_pd(sums + 10);
    __m128d s6 = _mm_loadu_pd(sums + 12);
    __m128d s7 = _mm_loadu_pd(sums + 14);
    for (std::size_t i = 0; i < count; ++i) {
      const __m128d term = _mm_set1_pd(terms[i]);
      s0 = _mm_add_pd(s0, term);
      s1 = _mm_add_pd(s1, term);
      s2 = _mm_add_pd(s2, term);
      s3 = _mm_add_pd(s3, term);
      s4 = _mm_add_pd(s4, term);
      s5 = _mm_add_pd(s5, term);
      s6 = _mm_add_pd(s6, term);
      s7 = _mm_add_pd(s7, term);
    }
    _mm_storeu_pd(sums, s0);
    _mm_storeu_pd(sums + 2, s1);
    _mm_storeu_pd(sums + 4, s2);
    _mm_storeu_pd(sums + 6, s3);
    _mm_storeu_pd(sums + 8, s4);
    _mm_storeu_pd(sums + 10, s5);
    _mm_storeu_pd(sums + 12, s6);
    _mm_storeu_pd(sums + 14, s7);
  }
  for (; lanes >= 4; lanes -= 4, sums += 4) {
    __m128d s0 = _mm_loadu_pd(sums);
    __m128d s1 = _mm_loadu_pd(sums + 2);
    for (std::size_t i = 0; i < count; ++i) {
      const __m128d term = _mm_set1_pd(terms[i]);
      s0 = _mm_add_pd(s0, term);
      s1 = _mm_add_pd(s1, term);
    }
    _mm_storeu_pd(sums, s0);
    _mm_storeu_pd(sums + 2, s1);
  }
}

VX_SIMD_AVX2 void addAvx2(double* sums, std::size_t lanes, const double* terms, std::size_t count) {
  for (; lanes >= 32; lanes -= 32, sums += 32) {
    __m256d s0 = _mm256_loadu_pd(sums);
    __m256d s1 = _mm256_loadu_pd(sums + 4);
    __m256d s2 = _mm256_loadu_pd(sums + 8);
    __m256d s3 = _mm256_loadu_pd(sums + 12);
    __m256d s4 = _mm256_loadu_pd(sums + 16);
    __m256d s5 = _mm256_loadu_pd(sums + 20);
    __m256d s6 = _mm256_loadu_pd(sums + 24);
    __m256d s7 = _mm256_loadu_pd(sums + 28);
    for (std::size_t i = 0; i < count; ++i) {
      const __m256d term = _mm256_set1_pd(terms[i]);
      s0 = _mm256_add_pd(s0, term);
      s1 = _mm256_add_pd(s1, term);
      s2 = _mm256_add_pd(s2, term);
      s3 = _mm256_add_pd(s3, term);
      s4 = _mm256_add_pd(s4, term);
      s5 = _mm256_add_pd(s5, term);
      s6 = _mm256_add_pd(s6, term);
      s7 = _mm256_add_pd(s7, term);
    }
    _mm256_storeu_pd(sums, s0);
    _mm256_storeu_pd(sums + 4, s1);
    _mm256_storeu_pd(sums + 8, s2);
    _mm256_storeu_pd(sums + 12, s3);
    _mm256_storeu_pd(sums + 16, s4);
    _mm256_storeu_pd(sums + 20, s5);
    _mm256_storeu_pd(sums + 24, s6);
    _mm256_storeu_pd(sums + 28, s7);
  }
  for (; lanes >= 8; lanes -= 8, sums += 8) {
    __m256d s0 = _mm256_loadu_pd(sums);
    __m256d s1 = _mm256_loadu_pd(sums + 4);
    for (std::size_t i = 0; i < count; ++i) {
      const __m256d term = _mm256_set1_pd(terms[i]);
      s0 = _mm256_add_pd(s0, term);
      s1 = _mm256_add_pd(s1, term);
    }
    _mm256_storeu_pd(sums, s0);
    _mm256_storeu_pd(sums + 4, s1);
  }
}

VX_SIMD_AVX512 void addAvx512(double* sums, std::size_t lanes, const double* terms,
                              std::size_t count) {
  for (; lanes >= 64; lanes -= 64, sums += 64) {
    __m512d s0 = _mm512_loadu_pd(sums);
    __m512d s1 = _mm512_loadu_pd(sums + 8);
    __m512d s2 = _mm512_loadu_pd(sums + 16);
    __m512d s3 = _mm512_loadu_pd(sums + 24);
    __m512d s4 = _mm512_loadu_pd(sums + 32);
    __m512d s5 = _mm512_loadu_pd(sums + 40);
    __m512d s6 = _mm512_loadu_pd(sums + 48);
    __m512d s7 = _mm512_loadu_pd(sums + 56);
    for (std::size_t i = 0; i < count; ++i) {
      const __m512d term = _mm512_set1_pd(terms[i]);
      s0 = _mm512_add_pd(s0, term);
      s1 = _mm512_add_pd(s1, term);
      s2 = _mm512_add_pd(s2, term);
      s3 = _mm512_add_pd(s3, term);
      s4 = _mm512_add_pd(s4, term);
      s5 = _mm512_add_pd(s5, term);
      s6 = _mm512_add_pd(s6, term);
      s7 = _mm512_add_pd(s7, term);
    }
    _mm512_storeu_pd(sums, s0);
    _mm512_storeu_pd(sums + 8, s1);
    _mm512_storeu_pd(sums + 16, s2);
    _mm512_storeu_pd(sums + 24, s3);
    _mm512_storeu_pd(sums + 32, s4);
    _mm512_storeu_pd(sums + 40, s5);
    _mm512_storeu_pd(sums + 48, s6);
    _mm512_storeu_pd(sums + 56, s7);
  }
  for (; lanes >= 8; lanes -= 8, sums += 8) {
    __m512d s0 = _mm512_loadu_pd(sums);
    for (std::size_t i = 0; i < count; ++i) s0 = _mm512_add_pd(s0, _mm512_set1_pd(terms[i]));
    _mm512_storeu_pd(sums, s0);
  }
}

constexpr std::size_t kPlainWidth = 16;
constexpr vx_LaneAdder kAvx2Adder{32, &addAvx2};
constexpr vx_LaneAdder kAvx512Adder{64, &addAvx512};

#else

void addPlain(double* sums, std::size_t lanes, const double* terms, std::size_t count) {
  for (; lanes >= 8; lanes -= 8, sums += 8) {
    double s0 = sums[0], s1 = sums[1], s2 = sums[2], s3 = sums[3];
    double s4 = sums[4], s5 = sums[5], s6 = sums[6], s7 = sums[7];
    for (std::size_t i = 0; i < count; ++i) {
      const double term = terms[i];
      s0 += term;
      s1 += term;
      s2 += term;
      s3 += term;
      s4 += term;
      s5 += term;
      s6 += term;
      s7 += term;
    }
    sums[0] = s0, sums[1] = s1, sums[2] = s2, sums[3] = s3;
    sums[4] = s4, sums[5] = s5, sums[6] = s6, sums[7] = s7;
  }
}

constexpr std::size_t kPlainWidth = 8;

#endif

constexpr vx_LaneAdder kPlainAdder{kPlainWidth, &addPlain};

}  // namespace

const vx_LaneAdder& vx_LaneAdder::forSimd() {
#ifdef VX_SIMD_X86
  switch (vx_simd()) {
    case vx_Simd::kAvx512:
      return kAvx512Adder;
    case vx_Simd::kAvx2:
      return kAvx2Adder;
    case vx_Simd::kPlain:
      break;
  }
#endif
  return kPlainAdder;
}
