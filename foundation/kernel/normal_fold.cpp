// SPDX-License-Identifier: MIT
// With x' and x" the deviations of a measurement x from its mean before and after the sample, the
// centred one-pass rule (see normal_density.cpp) is
//
//     mean_i += x'_i / n,   S_ij += x'_i x"_j   (j <= i),
//
// each step of it the same for all measurements, or for all columns j of a row. So these are the
// lanes: every number goes through the operations of the plain rule in the same order, whatever the
// width, and its bits are the same. The division stays one: multiplying by 1 / n rounds otherwise.
//
// The means don't depend on S. So they may run ahead for a few samples, whose products are then
// added one after another while an element of S is in a register.
//
// The blocks have a width known to the compiler and operands that don't overlap; then it needs no
// more than baseline optimisation to turn each into a few instructions of the set it compiles for.
#include "kernel/normal_fold.h"

#include "kernel/simd.h"

#if defined(__GNUC__) || defined(__clang__)
#define VX_ALWAYS_INLINE inline __attribute__((always_inline))
#define VX_RESTRICT __restrict
#else
#define VX_ALWAYS_INLINE inline
#define VX_RESTRICT
#endif

namespace {

// The first sum of a mean without samples, -0.0, must not keep the sign of a zero.
VX_ALWAYS_INLINE double movedMean(double mean, double deviation, double n) {
  return mean + deviation / n + 0.0;
}

template <std::size_t kWidth>
VX_ALWAYS_INLINE void foldSingleBlock(const double* VX_RESTRICT x, double* VX_RESTRICT count,
                                      double* VX_RESTRICT mean, double* VX_RESTRICT squares) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    count[k] += 1.0;
    const double before = x[k] - mean[k];
    mean[k] = movedMean(mean[k], before, count[k]);
    squares[k] += before * (x[k] - mean[k]);
  }
}

template <std::size_t kWidth>
VX_ALWAYS_INLINE void foldSingles(const double* x, std::size_t count, vx_SingleMoments* moments) {
  for (; count >= 8; count -= 8, x += 8, ++moments) {
    for (std::size_t k = 0; k < 8; k += kWidth) {
      foldSingleBlock<kWidth>(x + k, &moments->count[k], &moments->mean[k], &moments->squares[k]);
    }
  }
  for (std::size_t k = 0; k < count; ++k) vx_foldSingle(x[k], k, *moments);
}

template <std::size_t kWidth>
VX_ALWAYS_INLINE void moveMeanBlock(const double* VX_RESTRICT x, double n, double* VX_RESTRICT mean,
                                    double* VX_RESTRICT before, double* VX_RESTRICT after) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    before[k] = x[k] - mean[k];
    mean[k] = movedMean(mean[k], before[k], n);
    after[k] = x[k] - mean[k];
  }
}

template <std::size_t kWidth>
VX_ALWAYS_INLINE void moveMeans(const double* x, double n, std::size_t d, double* mean,
                                double* before, double* after) {
  std::size_t k = 0;
  for (; k + kWidth <= d; k += kWidth) {
    moveMeanBlock<kWidth>(x + k, n, mean + k, before + k, after + k);
  }
  for (; k < d; ++k) moveMeanBlock<1>(x + k, n, mean + k, before + k, after + k);
}

// Element k of term t stands at terms[t * stride + k].
// Element k of term t stands at terms[t * stride + k].
template <std::size_t kWidth, std::size_t kTerms>
VX_ALWAYS_INLINE void addBlock(const double* VX_RESTRICT factors, const double* VX_RESTRICT terms,
                               std::size_t stride, double* VX_RESTRICT sums) {
  static_assert(kTerms == 1 || kTerms == 4);
  const double* const t1 = terms + (kTerms > 1 ? stride : 0);
  const double* const t2 = t1 + (kTerms > 1 ? stride : 0);
  const double* const t3 = t2 + (kTerms > 1 ? stride : 0);
  for (std::size_t k = 0; k < kWidth; ++k) {
    if constexpr (kTerms == 1) {
      sums[k] += factors[0] * terms[k];
    } else {
      sums[k] = sums[k] + factors[0] * terms[k] + factors[1] * t1[k] + factors[2] * t2[k] +
                factors[3] * t3[k];
    }
  }
}

// What doesn't fill a block goes into blocks of half the width.
template <std::size_t kWidth, std::size_t kTerms>
VX_ALWAYS_INLINE void addRow(const double* factors, const double* terms, std::size_t stride,
                             std::size_t count, double* sums) {
  std::size_t k = 0;
  for (; k + kWidth <= count; k += kWidth) {
    addBlock<kWidth, kTerms>(factors, terms + k, stride, sums + k);
  }
  if constexpr (kWidth > 1) {
    addRow<kWidth / 2, kTerms>(factors, terms + k, stride, count - k, sums + k);
  }
}

template <std::size_t kWidth, std::size_t kSamples>
VX_ALWAYS_INLINE void addTriangle(const double* before, const double* after, std::size_t d,
                                  double* sums) {
  for (std::size_t i = 0; i < d; sums += ++i) {
    double factors[kSamples];
    for (std::size_t s = 0; s < kSamples; ++s) factors[s] = before[s * d + i];
    addRow<kWidth, kSamples>(factors, after, d, i + 1, sums);
  }
}

template <std::size_t kWidth>
VX_ALWAYS_INLINE void addProducts(const double* before, const double* after, std::size_t numSamples,
                                  std::size_t d, double* sums) {
  if (numSamples == 1) {
    addTriangle<kWidth, 1>(before, after, d, sums);
  } else {
    addTriangle<kWidth, kVxSamplesAtOnce>(before, after, d, sums);
  }
}

#ifdef VX_SIMD_X86

VX_SIMD_AVX2 void foldSinglesAvx2(const double* x, std::size_t count, vx_SingleMoments* moments) {
  foldSingles<4>(x, count, moments);
}

VX_SIMD_AVX512 void foldSinglesAvx512(const double* x, std::size_t count,
                                      vx_SingleMoments* moments) {
  foldSingles<8>(x, count, moments);
}

VX_SIMD_AVX2 void moveMeansAvx2(const double* x, double n, std::size_t d, double* mean,
                                double* before, double* after) {
  moveMeans<4>(x, n, d, mean, before, after);
}

VX_SIMD_AVX512 void moveMeansAvx512(const double* x, double n, std::size_t d, double* mean,
                                    double* before, double* after) {
  moveMeans<8>(x, n, d, mean, before, after);
}

VX_SIMD_AVX2 void addProductsAvx2(const double* before, const double* after, std::size_t numSamples,
                                  std::size_t d, double* sums) {
  addProducts<4>(before, after, numSamples, d, sums);
}

VX_SIMD_AVX512 void addProductsAvx512(const double* before, const double* after,
                                      std::size_t numSamples, std::size_t d, double* sums) {
  addProducts<8>(before, after, numSamples, d, sums);
}

#endif

}  // namespace

void vx_foldSingles(const double* x, std::size_t count, vx_SingleMoments* moments) {
#ifdef VX_SIMD_X86
  if (vx_simd() == vx_Simd::kAvx512) return foldSinglesAvx512(x, count, moments);
  if (vx_simd() == vx_Simd::kAvx2) return foldSinglesAvx2(x, count, moments);
#endif
  foldSingles<2>(x, count, moments);
}

void vx_foldSingle(double x, std::size_t k, vx_SingleMoments& moments) {
  foldSingleBlock<1>(&x, &moments.count[k], &moments.mean[k], &moments.squares[k]);
}

void vx_moveMeans(const double* x, double n, std::size_t d, double* mean, double* before,
                  double* after) {
#ifdef VX_SIMD_X86
  if (vx_simd() == vx_Simd::kAvx512) return moveMeansAvx512(x, n, d, mean, before, after);
  if (vx_simd() == vx_Simd::kAvx2) return moveMeansAvx2(x, n, d, mean, before, after);
#endif
  moveMeans<2>(x, n, d, mean, before, after);
}

void vx_addProducts(const double* before, const double* after, std::size_t numSamples,
                    std::size_t d, double* sums) {
#ifdef VX_SIMD_X86
  if (vx_simd() == vx_Simd::kAvx512) return addProductsAvx512(before, after, numSamples, d, sums);
  if (vx_simd() == vx_Simd::kAvx2) return addProductsAvx2(before, after, numSamples, d, sums);
#endif
  addProducts<2>(before, after, numSamples, d, sums);
}
