// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_NORMAL_FOLD_H_
#define FOUNDATION_KERNEL_NORMAL_FOLD_H_

#include <array>
#include <cstddef>

/// Running statistics of eight measurements, each on its own.
struct alignas(64) vx_SingleMoments {
  std::array<double, 8> count;
  std::array<double, 8> mean;     ///< -0.0 without a sample
  std::array<double, 8> squares;  ///< of the deviations, summed
};

/// Folds measurement k into statistics k, for each k < `count`; element k % 8 of moments[k / 8].
void vx_foldSingles(const double* x, std::size_t count, vx_SingleMoments* moments);

/// The same for element k alone.
void vx_foldSingle(double x, std::size_t k, vx_SingleMoments& moments);

/// Moves d means by sample number `n` and gives the deviations of the sample from them, before and
/// after.
void vx_moveMeans(const double* x, double n, std::size_t d, double* mean, double* before,
                  double* after);

constexpr std::size_t kVxSamplesAtOnce = 4;

/// Adds the products of the deviations in a sample to their sums, a packed lower triangle; those of
/// `numSamples` one after another, either 1 or kVxSamplesAtOnce.
void vx_addProducts(const double* before, const double* after, std::size_t numSamples,
                    std::size_t d, double* sums);

#endif  // FOUNDATION_KERNEL_NORMAL_FOLD_H_
