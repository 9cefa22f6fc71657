// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_BAYES_KERNEL_H_
#define TESTS_SUPPORT_BAYES_KERNEL_H_

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kernel/normal_density.h"
#include "tests/support/numbers.h"

using Patterns = std::vector<vx_KernelPattern>;

inline bool isMarked(double value) { return value == 0.0 && std::signbit(value); }

/// Mean and covariance, every bit of them, and the count.
inline std::string bitsOf(const vx_NormalDensity& density) {
  std::vector<double> numbers = density.mean().elements;
  for (const double element : density.covariance().elements) numbers.push_back(element);
  std::string bits(numbers.size() * sizeof(double), '\0');
  if (!bits.empty()) std::memcpy(&bits[0], numbers.data(), bits.size());
  return std::to_string(density.sampleCount()) + bits;
}

inline double valueAt(const vx_NormalDensity& density, const vx_KernelPattern& pattern) {
  double value = kNaN;
  EXPECT_EQ(density.logDensity(pattern, value), 0);
  return value;
}

inline long statusAt(const vx_NormalDensity& density, const vx_KernelPattern& pattern) {
  double value = 0.0;
  return density.logDensity(pattern, value);
}

inline vx_NormalDensity densityOf(const Patterns& patterns) {
  vx_NormalDensity density;
  EXPECT_EQ(density.update(patterns, 1.0), 0);
  return density;
}

/// Random samples of dimension d, some measurements of them invalid; zeros of both signs and
/// numbers of very different size among them.
inline Patterns randomPatterns(std::mt19937_64& random, std::size_t d, std::size_t count,
                               bool withInvalid) {
  Patterns patterns(count);
  for (vx_KernelPattern& pattern : patterns) {
    for (std::size_t i = 0; i < d; ++i) {
      const double magnitudes[] = {1.0, 1e9, 1e-7, 0.0, -0.0};
      pattern.values.push_back(std::ldexp(static_cast<double>(random()), -63) *
                               magnitudes[random() % 5]);
      if (withInvalid && random() % 4 == 0) {
        pattern.invalidIndices.push_back(static_cast<std::int32_t>(i));
        if (random() % 2 == 0) pattern.values.back() = kNaN;
      }
    }
  }
  return patterns;
}

#endif  // TESTS_SUPPORT_BAYES_KERNEL_H_
