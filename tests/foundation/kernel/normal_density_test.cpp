// SPDX-License-Identifier: MIT
#include "kernel/normal_density.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/bayes_kernel.h"
#include "vxfoundation/random.h"

namespace {

TEST(NormalDensityTest, StartsEmpty) {
  const vx_NormalDensity density;
  EXPECT_EQ(density.dimension(), 0u);
  EXPECT_EQ(density.sampleCount(), 0);
  EXPECT_EQ(density.workWord(), 0);
  EXPECT_EQ(density.mean().elements.size(), 0u);
  EXPECT_EQ(density.covariance().elements.size(), 0u);
  EXPECT_EQ(statusAt(density, {{1.0}, {}}), kVxNoUsableData);
  EXPECT_EQ(statusAt(density, {{}, {}}), kVxNoUsableData);
}

TEST(NormalDensityTest, HasStatusesOfTheKernelsModule) {
  EXPECT_EQ(static_cast<std::uint32_t>(kVxNoUsableData), 0x80000B61u);
  EXPECT_EQ(static_cast<std::uint32_t>(kVxDimensionChanged), 0x80000B62u);
  const auto other = static_cast<std::uint32_t>(kVxOtherDimension);
  EXPECT_EQ((other & 0x7fffffff) >> 5, 91u);
  EXPECT_NE(other, 0x80000B61u);
  EXPECT_NE(other, 0x80000B62u);
}

TEST(NormalDensityTest, HasMeanAndCovarianceOfItsSamples) {
  const vx_NormalDensity density =
      densityOf({{{1.0, 2.0}, {}}, {{3.0, 8.0}, {}}, {{8.0, 5.0}, {}}});
  EXPECT_EQ(density.sampleCount(), 3);
  EXPECT_EQ(density.mean().rows, 2u);
  EXPECT_EQ(density.mean().columns, 1u);
  EXPECT_DOUBLE_EQ(density.mean(0), 4.0);
  EXPECT_DOUBLE_EQ(density.mean(1), 5.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 0), 13.0);
  EXPECT_DOUBLE_EQ(density.covariance(1, 1), 9.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 1), 3.0);
  EXPECT_EQ(density.covariance(0, 1), density.covariance(1, 0));
}

TEST(NormalDensityTest, DividesByTheNormalizer) {
  vx_NormalDensity density;
  density.update({{{2.0}, {}}, {{4.0}, {}}}, 10.0);
  EXPECT_DOUBLE_EQ(density.mean(0), 0.3);
  EXPECT_DOUBLE_EQ(density.covariance(0, 0), 0.02);
}

TEST(NormalDensityTest, KeepsTheVarianceBesideAHugeMean) {
  vxRandomGaussian random(7);
  vx_NormalDensity density;
  std::vector<double> offsets;
  for (int i = 0; i < 2000; ++i) {
    const double x = 1e9 + random.next(0.0, 1.0);
    offsets.push_back(x - 1e9);
    density.update({{{x}, {}}}, 1.0);
  }
  long double mean = 0;
  for (const double offset : offsets) mean += offset;
  mean /= 2000;
  long double sum = 0;
  for (const double offset : offsets) sum += (offset - mean) * (offset - mean);
  EXPECT_NEAR(density.covariance(0, 0), static_cast<double>(sum / 1999), 1e-6);
  EXPECT_NEAR(density.mean(0) - 1e9, static_cast<double>(mean), 1e-5);
}

TEST(NormalDensityTest, TakesItsDimensionFromTheFirstPattern) {
  vx_NormalDensity density = densityOf({{{1.0, 2.0}, {}}});
  const std::string before = bitsOf(density);
  EXPECT_EQ(density.update({{{1.0}, {}}}, 1.0), kVxDimensionChanged);
  EXPECT_EQ(density.update({{{}, {}}}, 1.0), kVxDimensionChanged);
  const double values[] = {1.0, 2.0, 3.0};
  EXPECT_EQ(density.update(values, nullptr, 3, 1.0), kVxDimensionChanged);
  EXPECT_EQ(bitsOf(density), before);
  EXPECT_EQ(density.update({}, 1.0), 0);
  EXPECT_EQ(bitsOf(density), before);
}

TEST(NormalDensityTest, ChecksEveryPatternBeforeItFoldsOneIn) {
  vx_NormalDensity density;
  EXPECT_EQ(density.update({{{1.0}, {}}, {{2.0}, {}}, {{3.0, 4.0}, {}}}, 1.0), kVxDimensionChanged);
  EXPECT_EQ(density.sampleCount(), 0);
  EXPECT_EQ(density.dimension(), 0u);
  EXPECT_EQ(density.update({{{3.0, 4.0}, {}}}, 1.0), 0);

  density = densityOf({{{1.0}, {}}, {{2.0}, {}}});
  const std::string before = bitsOf(density);
  EXPECT_EQ(density.update({{{5.0}, {}}, {{3.0, 4.0}, {}}}, 1.0), kVxDimensionChanged);
  EXPECT_EQ(bitsOf(density), before);
}

TEST(NormalDensityTest, CountsNoSampleWithoutAValidMeasurement) {
  vx_NormalDensity density = densityOf({{{1.0, 2.0}, {0, 1}}});
  EXPECT_EQ(density.sampleCount(), 0);
  EXPECT_EQ(density.dimension(), 2u);
  EXPECT_EQ(density.update({{{1.0}, {}}}, 1.0), kVxDimensionChanged);
  EXPECT_EQ(statusAt(density, {{1.0, 1.0}, {}}), kVxNoUsableData);

  density.update({{{1.0, 2.0}, {}}, {{9.0, 9.0}, {1, 0}}, {{3.0, 4.0}, {}}}, 1.0);
  EXPECT_EQ(density.sampleCount(), 2);
  EXPECT_DOUBLE_EQ(density.mean(0), 2.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 1), 2.0);
}

TEST(NormalDensityTest, LeavesInvalidMeasurementsOut) {
  const vx_NormalDensity density =
      densityOf({{{1.0, kNaN}, {1}}, {{2.0, 10.0}, {}}, {{kNaN, 12.0}, {0}}, {{6.0, 20.0}, {}}});
  EXPECT_EQ(density.sampleCount(), 4);
  EXPECT_DOUBLE_EQ(density.mean(0), 3.0);
  EXPECT_DOUBLE_EQ(density.mean(1), 14.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 0), 7.0);
  EXPECT_DOUBLE_EQ(density.covariance(1, 1), 28.0);
  EXPECT_DOUBLE_EQ(density.covariance(0, 1), 20.0);  // of (2, 10) and (6, 20)
}

TEST(NormalDensityTest, TakesAnInvalidIndexTwice) {
  const vx_NormalDensity twice = densityOf({{{1.0, 2.0}, {1, 1}}, {{4.0, 2.0}, {}}});
  const vx_NormalDensity once = densityOf({{{1.0, 7.0}, {1}}, {{4.0, 2.0}, {}}});
  EXPECT_EQ(bitsOf(twice), bitsOf(once));
}

TEST(NormalDensityTest, MarksTheVarianceOfFewerThanTwoSamples) {
  const vx_NormalDensity density =
      densityOf({{{1.0, 5.0, 0.0}, {2}}, {{2.0, 5.0, 0.0}, {0, 2}}, {{4.0, 5.0, 0.0}, {0, 2}}});
  EXPECT_TRUE(isMarked(density.covariance(0, 0)));   // one sample
  EXPECT_FALSE(isMarked(density.covariance(1, 1)));  // constant
  EXPECT_EQ(density.covariance(1, 1), 0.0);
  EXPECT_TRUE(isMarked(density.covariance(2, 2)));  // none
  EXPECT_EQ(density.covariance(0, 1), 0.0);
  EXPECT_EQ(statusAt(density, {{1.0, 5.0, 0.0}, {2}}), kVxNoUsableData);
  EXPECT_EQ(statusAt(density, {{1.0, 5.0, 0.0}, {0, 1}}), kVxNoUsableData);
  EXPECT_EQ(statusAt(density, {{1.0, 5.0, 0.0}, {0, 2}}), 0);
  EXPECT_EQ(valueAt(density, {{1.0, 5.0, 0.0}, {0, 1, 2}}), 0.0);
}

TEST(NormalDensityTest, NeedsTwoSamples) {
  vx_NormalDensity density = densityOf({{{1.0}, {}}});
  EXPECT_TRUE(isMarked(density.covariance(0, 0)));
  EXPECT_EQ(statusAt(density, {{1.0}, {}}), kVxNoUsableData);
  EXPECT_EQ(valueAt(density, {{1.0}, {0}}), 0.0);
  EXPECT_EQ(density.factor(), nullptr);
  density.update({{{3.0}, {}}}, 1.0);
  EXPECT_DOUBLE_EQ(valueAt(density, {{2.0}, {}}), -0.5 * std::log(2.0 * std::acos(-1.0) * 2.0));
}

TEST(NormalDensityTest, RefusesAPatternOfAnotherDimension) {
  const vx_NormalDensity density = densityOf({{{1.0, 2.0}, {}}, {{3.0, 1.0}, {}}});
  EXPECT_EQ(statusAt(density, {{1.0}, {}}), kVxOtherDimension);
  EXPECT_EQ(statusAt(density, {{1.0, 2.0, 3.0}, {}}), kVxOtherDimension);
  EXPECT_EQ(statusAt(density, {{1.0, 2.0, 3.0}, {0, 1, 2}}), kVxOtherDimension);
  EXPECT_EQ(statusAt(density, {{}, {}}), kVxOtherDimension);
}

TEST(NormalDensityTest, LeavesTheValueAloneWhenItRefuses) {
  const vx_NormalDensity density = densityOf({{{1.0, 2.0}, {}}});
  double value = 42.0;
  density.logDensity({{1.0}, {}}, value);
  density.logDensity({{1.0, 1.0}, {}}, value);
  EXPECT_EQ(value, 42.0);
}

/// The same samples in another form: flags.
void updateWithFlags(vx_NormalDensity& density, const vx_KernelPattern& pattern,
                     double normalizer) {
  const std::size_t d = pattern.values.size();
  const std::unique_ptr<bool[]> valid(new bool[d]);
  std::fill(valid.get(), valid.get() + d, true);
  for (const std::int32_t i : pattern.invalidIndices) valid[static_cast<std::size_t>(i)] = false;
  EXPECT_EQ(density.update(pattern.values.data(),
                           pattern.invalidIndices.empty() && d % 2 == 0 ? nullptr : valid.get(), d,
                           normalizer),
            0);
}

TEST(NormalDensityTest, HasTheSameBitsHoweverItsSamplesAreGrouped) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const std::size_t d = 1 + random() % 9;
    const double normalizer = seed % 3 == 0 ? 1.0 : 3.7;
    // The first samples are whole now and then, so that the statistics change their form midway.
    Patterns patterns = randomPatterns(random, d, 7, seed % 4 == 0);
    const Patterns more = randomPatterns(random, d, 12, seed % 2 == 0);
    patterns.insert(patterns.end(), more.begin(), more.end());

    vx_NormalDensity atOnce;
    atOnce.update(patterns, normalizer);
    vx_NormalDensity oneByOne;
    vx_NormalDensity flagged;
    vx_NormalDensity chunked;
    Patterns chunk;
    for (const vx_KernelPattern& pattern : patterns) {
      oneByOne.update({pattern}, normalizer);
      updateWithFlags(flagged, pattern, normalizer);
      chunk.push_back(pattern);
      if (random() % 3 == 0) {
        chunked.update(chunk, normalizer);
        chunk.clear();
        double unused = 0.0;
        chunked.logDensity(pattern, unused);  // looking changes nothing
        chunked = vx_NormalDensity(chunked);  // nor does copying
      }
    }
    chunked.update(chunk, normalizer);
    EXPECT_EQ(bitsOf(oneByOne), bitsOf(atOnce));
    EXPECT_EQ(bitsOf(flagged), bitsOf(atOnce));
    EXPECT_EQ(bitsOf(chunked), bitsOf(atOnce));
  }
}

TEST(NormalDensityTest, CarriesANaNThatIsValid) {
  vx_NormalDensity density = densityOf({{{1.0, 1.0}, {}}, {{kNaN, 2.0}, {}}, {{3.0, 5.0}, {}}});
  EXPECT_TRUE(std::isnan(density.mean(0)));
  EXPECT_TRUE(std::isnan(density.covariance(0, 0)));
  EXPECT_FALSE(std::isnan(density.covariance(1, 1)));
  EXPECT_TRUE(std::isnan(valueAt(density, {{1.0, 1.0}, {}})));
  EXPECT_FALSE(std::isnan(valueAt(density, {{1.0, 1.0}, {0}})));
  const vx_NormalDensity sound = densityOf({{{1.0}, {}}, {{2.0}, {}}});
  EXPECT_TRUE(std::isnan(valueAt(sound, {{kNaN}, {}})));
}

TEST(NormalDensityTest, KeepsOneFactorUntilItChanges) {
  vx_NormalDensity density = densityOf({{{1.0}, {}}, {{2.0}, {}}});
  EXPECT_EQ(density.factorSerial(), 0u);
  const vx_NormalFactor* factor = density.factor();
  ASSERT_NE(factor, nullptr);
  EXPECT_EQ(density.factor(), factor);
  const std::uint64_t serial = density.factorSerial();
  EXPECT_EQ(serial, factor->serial());
  const vx_NormalDensity copy(density);
  EXPECT_EQ(copy.factorSerial(), 0u);
  EXPECT_EQ(density.factorSerial(), serial);

  std::uint64_t epoch = vx_NormalDensity::epoch();
  density.update({{{5.0}, {}}}, 1.0);
  EXPECT_NE(vx_NormalDensity::epoch(), epoch);
  EXPECT_EQ(density.factorSerial(), 0u);
  density.factor();
  EXPECT_NE(density.factorSerial(), serial);

  epoch = vx_NormalDensity::epoch();
  density = copy;
  EXPECT_NE(vx_NormalDensity::epoch(), epoch);
  EXPECT_EQ(density.factorSerial(), 0u);
  EXPECT_EQ(bitsOf(density), bitsOf(copy));
}

TEST(NormalDensityTest, AssignsItselfUnharmed) {
  vx_NormalDensity density = densityOf({{{1.0, 2.0}, {}}, {{2.0, 7.0}, {1}}, {{3.0, 3.0}, {}}});
  const std::string before = bitsOf(density);
  const double value = valueAt(density, {{1.0, 1.0}, {}});
  const vx_NormalDensity& same = density;
  density = same;
  EXPECT_EQ(bitsOf(density), before);
  EXPECT_EQ(valueAt(density, {{1.0, 1.0}, {}}), value);
}

}  // namespace
