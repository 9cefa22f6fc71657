// SPDX-License-Identifier: MIT
// What a state answers and learns after its statistics came from outside.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "kernel/normal_density.h"
#include "tests/support/bayes_kernel.h"
#include "vxfoundation/random.h"

namespace {

vx_NormalDensity restored(const vx_NormalDensity& source) {
  vx_NormalDensity density;
  density.restore(source.mean(), source.covariance(), source.sampleCount());
  return density;
}

TEST(NormalDensityRestoredTest, AnswersTheSameWhenRestored) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const std::size_t d = 1 + random() % 6;
    const Patterns patterns = randomPatterns(random, d, random() % 9, seed % 2 == 0);
    const vx_NormalDensity source = densityOf(patterns);
    const vx_NormalDensity copy = restored(source);
    EXPECT_EQ(bitsOf(copy), bitsOf(source));
    EXPECT_EQ(bitsOf(restored(copy)), bitsOf(source));
    for (const vx_KernelPattern& pattern : randomPatterns(random, d, 10, seed % 3 == 0)) {
      double expected = 0.0;
      double value = 0.0;
      EXPECT_EQ(copy.logDensity(pattern, value), source.logDensity(pattern, expected));
      EXPECT_EQ(std::memcmp(&value, &expected, sizeof(value)), 0);
    }
  }
}

TEST(NormalDensityRestoredTest, GoesOnWhereARestoredStateStopped) {
  vxRandomGaussian random(3);
  Patterns patterns;
  for (int i = 0; i < 40; ++i) {
    patterns.push_back({{random.next(5.0, 2.0), random.next(-3.0, 0.5)}, {}});
  }
  const vx_NormalDensity whole = densityOf(patterns);
  vx_NormalDensity resumed = restored(densityOf({patterns.begin(), patterns.begin() + 25}));
  resumed.update({patterns.begin() + 25, patterns.end()}, 1.0);
  EXPECT_EQ(resumed.sampleCount(), 40);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_NEAR(resumed.mean(i), whole.mean(i), 1e-14);
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(resumed.covariance(i, j), whole.covariance(i, j), 1e-13);
    }
  }
}

TEST(NormalDensityRestoredTest, RemembersMarkedMeasurementsWhenItGoesOnFromARestoredState) {
  // Measurement 0 has no sample, 1 has one, 2 has two.
  const Patterns first = {{{0.0, 5.0, 1.0}, {0}}, {{0.0, 0.0, 3.0}, {0, 1}}};
  const Patterns then = {{{8.0, 7.0, 5.0}, {}}, {{10.0, 0.0, 0.0}, {1, 2}}};
  vx_NormalDensity whole = densityOf(first);
  vx_NormalDensity resumed = restored(whole);
  whole.update(then, 1.0);
  resumed.update(then, 1.0);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_DOUBLE_EQ(resumed.mean(i), whole.mean(i)) << i;
    EXPECT_DOUBLE_EQ(resumed.covariance(i, i), whole.covariance(i, i)) << i;
  }
  EXPECT_EQ(resumed.sampleCount(), 4);
}

TEST(NormalDensityRestoredTest, KeepsACountOfNoSamplesWithItsDimension) {
  vx_NormalDensity density = restored(densityOf({{{0.0, 0.0}, {0, 1}}}));
  EXPECT_EQ(density.sampleCount(), 0);
  EXPECT_EQ(density.update({{{1.0}, {}}}, 1.0), kVxDimensionChanged);
  EXPECT_EQ(density.update({{{1.0, 4.0}, {}}, {{3.0, 4.0}, {}}}, 1.0), 0);
  EXPECT_DOUBLE_EQ(density.mean(0), 2.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 0), 2.0);
}

TEST(NormalDensityRestoredTest, CountsNoFurtherThanTheLargestCount) {
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  for (const bool withInvalid : {false, true}) {
    SCOPED_TRACE(withInvalid);
    vx_NormalDensity density;
    vx_KernelMatrix mean;
    mean.resize(2, 1);
    vx_KernelMatrix covariance;
    covariance.resize(2, 2);
    covariance.elements = {1.0, 0.0, 0.0, 1.0};
    density.restore(mean, covariance, kMost);
    EXPECT_EQ(density.update({{{1.0, 1.0}, {}}}, 1.0), 0);
    if (withInvalid) {
      EXPECT_EQ(density.update({{{1.0, 1.0}, {1}}, {{1.0, 1.0}, {}}}, 1.0), 0);
    }
    EXPECT_GT(density.sampleCount(), 0);
    EXPECT_GT(density.covariance(0, 0), 0.0);
    EXPECT_TRUE(std::isfinite(valueAt(density, {{0.0, 0.0}, {}})));
  }
}

}  // namespace
