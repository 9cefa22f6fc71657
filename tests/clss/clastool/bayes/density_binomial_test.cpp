// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "saturating_cast.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_host.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_bayes.h"
#include "tests/support/unknown_version.h"
#include "vxclss/density.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;
using Patterns = std::vector<vxFeaturePattern>;

constexpr wchar_t kNoData[] = L"Insufficient data has been used to train the distribution";
constexpr wchar_t kMultivariate[] = L"Multivariate Binomial Distributions are not implemented";
constexpr wchar_t kAbove[] = L"Feature measurement must be <= specified maximum value";
constexpr wchar_t kTrainAbove[] =
    L"Train data measurement cannot exceed its maximum value when using binomial distribution";

vxFeaturePattern one(double value) { return {{value}, {}}; }
vxFeaturePattern invalid() { return {{77.0}, {0}}; }

vx_PDFBinomial newDensity(double maximum) { return vx_PDFBinomial(one(maximum)); }

vx_PDFBinomial densityOf(long numTrials, double theta, double maximum) {
  vx_PDFBinomial density = newDensity(1.0);
  load(binomialBytes(numTrials, theta, maximum), density);
  return density;
}

vx_PDFBinomial trained(double maximum, const std::vector<double>& samples) {
  vx_PDFBinomial density = newDensity(maximum);
  for (const double sample : samples) density.updateWithData({one(sample)});
  return density;
}

TEST(DensityBinomialTest, StartsWithoutTrials) {
  const vx_PDFBinomial density = newDensity(10.0);
  EXPECT_EQ(density.numTrials(), 0);
  EXPECT_EQ(density.theta(), 0.0);
  EXPECT_EQ(density.maximumValue(), 10.0);
}

TEST(DensityBinomialTest, TakesItsMaximumFromTheFirstMeasurement) {
  EXPECT_EQ(vx_PDFBinomial({{3.0, 9.0}, {1}}).maximumValue(), 3.0);
  constexpr wchar_t kInvalid[] =
      L"The measurement for the specified measurement index is not valid.";
  expectThrows<BadFeatures>([] { vx_PDFBinomial({{}, {}}); }, kInvalid);
  expectThrows<BadFeatures>([] { vx_PDFBinomial({{3.0, 9.0}, {0}}); }, kInvalid);
}

TEST(DensityBinomialTest, EstimatesFromMeanAndVariance) {
  vx_PDFBinomial density = newDensity(10.0);
  density.updateWithData({one(2.0)});
  EXPECT_EQ(density.numTrials(), 0);
  EXPECT_EQ(density.theta(), 0.2);
  expectThrows<InsufficientTrainData>([&] { density.logValue(one(2.0)); }, kNoData);
  density.updateWithData({one(4.0)});
  EXPECT_DOUBLE_EQ(density.theta(), 0.3);
  EXPECT_EQ(density.numTrials(), 11);  // 0.21 / 0.02 + 0.5
}

TEST(DensityBinomialTest, EstimatesFromAllSamplesHoweverTheyAreGrouped) {
  const std::vector<double> samples = {3, 5, 4, 6, 2, 4, 5, 3, 7, 1};
  Patterns patterns;
  for (const double sample : samples) patterns.push_back(one(sample));
  vx_PDFBinomial atOnce = newDensity(12.0);
  atOnce.updateWithData(patterns);
  const vx_PDFBinomial oneByOne = trained(12.0, samples);
  EXPECT_EQ(oneByOne.theta(), atOnce.theta());
  EXPECT_EQ(oneByOne.numTrials(), atOnce.numTrials());

  std::vector<vx_KernelPattern> kernel;
  for (const double sample : samples) kernel.push_back({{sample}, {}});
  const plain::Moments moments = plain::momentsOf(kernel, 12.0);
  const plain::Real m = moments.mean[0];
  EXPECT_NEAR(atOnce.theta(), static_cast<double>(m), 1e-15);
  EXPECT_EQ(atOnce.numTrials(), static_cast<long>((1 - m) * m / moments.covariance[0][0] + 0.5L));
}

TEST(DensityBinomialTest, KeepsItsTrialsWhereTheSamplesDoNotVary) {
  vx_PDFBinomial density = trained(10.0, {4.0, 4.0, 4.0});
  EXPECT_EQ(density.numTrials(), 0);
  EXPECT_EQ(density.theta(), 0.4);
  density = trained(1.0, {0.5, 0.5 + 4e-8});  // a variance of 8e-16
  EXPECT_EQ(density.numTrials(), 0);
  EXPECT_GT(density.theta(), 0.5);
}

TEST(DensityBinomialTest, LeavesInvalidSamplesOut) {
  vx_PDFBinomial density = newDensity(10.0);
  density.updateWithData({invalid()});
  EXPECT_EQ(density.theta(), 0.0);
  density.updateWithData({one(2.0), invalid(), one(4.0)});
  EXPECT_TRUE(density == trained(10.0, {2.0, 4.0}));
}

TEST(DensityBinomialTest, SaturatesTheNumberOfTrials) {
  EXPECT_EQ(trained(1.0, {0.5 - 4e-8, 0.5 + 4e-8}).numTrials(), 2147483647);
  EXPECT_EQ(trained(1.0, {-0.5 - 4e-8, -0.5 + 4e-8}).numTrials(), -2147483647L - 1);
}

TEST(DensityBinomialTest, TakesNegativeTrialsAsTheyCome) {
  const vx_PDFBinomial density = trained(10.0, {-1.0, -2.0});
  EXPECT_EQ(density.numTrials(), -34);  // -0.1725 / 0.005 + 0.5 = -34, toward zero
  EXPECT_TRUE(std::isnan(density.logValue(one(1.0))));
}

TEST(DensityBinomialTest, ChecksTrialsThenSizeThenValidityThenValue) {
  const vx_PDFBinomial empty = newDensity(1.0);
  const vx_PDFBinomial density = densityOf(10, 0.25, 5.0);
  const vxFeaturePattern two({9.0, 9.0}, {});
  const vxFeaturePattern twoInvalid({9.0, 9.0}, {0, 1});
  for (const vxFeaturePattern& pattern : {two, twoInvalid, invalid(), one(9.0)}) {
    expectThrows<InsufficientTrainData>([&] { empty.logValue(pattern); }, kNoData);
  }
  for (const vxFeaturePattern& pattern : {two, twoInvalid, vxFeaturePattern({}, {})}) {
    expectThrows<NotImplemented>([&] { density.logValue(pattern); }, kMultivariate);
  }
  EXPECT_EQ(density.logValue(invalid()), 0.0);
  EXPECT_FALSE(std::signbit(density.logValue(invalid())));
  EXPECT_NO_THROW(density.logValue(one(5.0)));
  expectThrows<BadParams>([&] { density.logValue(one(std::nextafter(5.0, 6.0))); }, kAbove);
  EXPECT_NO_THROW(density.logValue(one(-1e300)));
}

TEST(DensityBinomialTest, ChecksEverySampleBeforeItLearns) {
  vx_PDFBinomial density = trained(10.0, {2.0, 4.0});
  const vx_PDFBinomial before(density);
  density.updateWithData({});
  expectRefused<NotImplemented>(
      density,
      [&] {
        density.updateWithData({{{1.0, 99.0}, {}}, one(1.0)});
      },
      kMultivariate);
  expectRefused<NotImplemented>(
      density,
      [&] {
        density.updateWithData({{{}, {}}});
      },
      kMultivariate);
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({one(3.0), one(10.5)});
      },
      kTrainAbove);
  // Of later patterns every measurement is looked at, their number is not.
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({one(3.0), {{1.0, 11.0}, {}}});
      },
      kTrainAbove);
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({one(3.0), {{1.0, 11.0}, {1}}});
      },
      L"Must call clear before updating with feature vectors of different sizes");
  density.updateWithData({one(10.0)});
  vx_PDFBinomial expected = trained(10.0, {2.0, 4.0, 10.0});
  EXPECT_EQ(density.theta(), expected.theta());  // what was refused left the accumulator alone
  EXPECT_TRUE(density == expected);
}

TEST(DensityBinomialTest, LetsANaNPass) {
  vx_PDFBinomial density = trained(10.0, {2.0, 4.0});
  EXPECT_NO_THROW(density.logValue(one(kNaN)));
  density.updateWithData({one(kNaN)});
  EXPECT_TRUE(std::isnan(density.theta()));
  EXPECT_EQ(density.numTrials(), 11);
  EXPECT_TRUE(std::isnan(density.logValue(one(1.0))));
}

TEST(DensityBinomialTest, DoesNotGuardThetaOfZeroAndOne) {
  EXPECT_TRUE(std::isnan(densityOf(4, 0.0, 1.0).logValue(one(0.0))));
  EXPECT_EQ(densityOf(4, 0.0, 1.0).logValue(one(0.5)), -kInfinity);
  EXPECT_TRUE(std::isnan(densityOf(4, 1.0, 1.0).logValue(one(1.0))));
  EXPECT_EQ(densityOf(4, 1.0, 1.0).logValue(one(0.5)), -kInfinity);
}

TEST(DensityBinomialTest, RoundsTheNumberOfSuccesses) {
  const vx_PDFBinomial density = densityOf(10, 0.25, 5.0);
  EXPECT_EQ(density.logValue(one(0.2499)), density.logValue(one(0.0)));
  EXPECT_EQ(density.logValue(one(0.25)), density.logValue(one(0.5)));
  EXPECT_EQ(density.logValue(one(-0.7)), density.logValue(one(0.0)));  // -0.9, toward zero
}

/// The sum as the definition has it, term by term.
double lnFactLoop(long n) {
  double sum = 0.0;
  for (long i = 2; i <= n; ++i) sum += std::log(static_cast<double>(i));
  return sum;
}

TEST(DensityBinomialTest, HasTheBitsOfThePlainSumForUpTo1024Trials) {
  for (const long n : {1L, 2L, 3L, 10L, 57L, 170L, 1023L, 1024L}) {
    for (const double theta : {0.3, 1e-9, 0.999, 0.5}) {
      const vx_PDFBinomial density = densityOf(n, theta, static_cast<double>(n));
      for (long k = 0; k <= n; k += 1 + n / 20) {
        const double expected = lnFactLoop(n) - (lnFactLoop(n - k) + lnFactLoop(k)) +
                                static_cast<double>(k) * std::log(theta) +
                                static_cast<double>(n - k) * std::log(1 - theta);
        EXPECT_EQ(density.logValue(one(static_cast<double>(k))), expected) << n << ", " << k;
      }
    }
  }
}

TEST(DensityBinomialTest, AgreesWithTheGammaFunctionForAnyNumberOfTrials) {
  for (const long n : {5L, 1000L, 1024L, 1025L, 1026L, 5000L, 100000L, 2000000000L, 2147483647L}) {
    const double theta = 0.3;
    const vx_PDFBinomial density = densityOf(n, theta, static_cast<double>(n));
    const plain::Real scale = 1 + std::lgamma(static_cast<plain::Real>(n) + 1);
    for (const double share : {0.0, 1e-6, 0.1, 0.3, 0.30001, 0.5, 0.9, 1.0}) {
      const double k = std::floor(share * static_cast<double>(n));
      const plain::Real expected = plain::logBinomial(static_cast<plain::Real>(n), k, theta);
      EXPECT_NEAR(density.logValue(one(k)), static_cast<double>(expected),
                  static_cast<double>(3e-14L * scale))
          << n << ", " << k;
    }
  }
}

TEST(DensityBinomialTest, JoinsTableAndSeriesWithoutAStep) {
  // With theta of one half ln n! alone makes the difference.
  for (long n = 1020; n <= 1030; ++n) {
    const vx_PDFBinomial density = densityOf(n, 0.5, static_cast<double>(n));
    const double lnFact = lnFactLoop(n);
    const double value = density.logValue(one(1.0));
    const double expected =
        std::log(static_cast<double>(n)) + static_cast<double>(n) * std::log(0.5);
    EXPECT_NEAR(value, expected, 2e-12 * lnFact);
  }
}

TEST(DensityBinomialTest, IsQuickHoweverManyTrialsThereAre) {
  // A loop over the trials would take hours.
  const vx_PDFBinomial density = densityOf(2000000000, 0.5, 1.0);
  double sum = 0.0;
  for (int i = 0; i < 20000; ++i) sum += density.logValue(one(i / 20000.0));
  EXPECT_LT(sum, 0.0);
}

TEST(DensityBinomialTest, CountsFailuresBeyond32Bits) {
  // All values below any success saturate at the lowest k: the failures are N - k, 2^32 - 1.
  const vx_PDFBinomial density = densityOf(2147483647, 0.5, 1.0);
  const double value = density.logValue(one(-1e300));
  const plain::Real n = 2147483647.0L;
  const plain::Real k = -2147483648.0L;
  const plain::Real expected = std::lgamma(n + 1) - std::lgamma(n - k + 1) + n * std::log(0.5L);
  EXPECT_NEAR(value, static_cast<double>(expected),
              1e-12 * std::fabs(static_cast<double>(expected)));
}

TEST(DensityBinomialTest, ConvertsAnyNumberToAnInteger) {
  struct Row {
    double value;
    long expected;
  };
  const Row rows[] = {{0.0, 0},
                      {2.9, 2},
                      {-2.9, -2},
                      {2147483646.9, 2147483646},
                      {2147483647.0, 2147483647},
                      {2147483648.0, 2147483647},
                      {1e300, 2147483647},
                      {kInfinity, 2147483647},
                      {-2147483648.9, -2147483647L - 1},
                      {-1e300, -2147483647L - 1},
                      {-kInfinity, -2147483647L - 1},
                      {kNaN, 0}};
  for (const Row& row : rows) EXPECT_EQ(vx_saturatingCast(row.value), row.expected) << row.value;
}

TEST(DensityBinomialTest, ForgetsSamplesAndTrialsButNotThetaWhenCleared) {
  vx_PDFBinomial density = trained(10.0, {2.0, 4.0});
  density.clear();
  EXPECT_EQ(density.numTrials(), 0);
  EXPECT_DOUBLE_EQ(density.theta(), 0.3);
  EXPECT_EQ(density.maximumValue(), 10.0);
  density.updateWithData({one(6.0)});
  EXPECT_EQ(density.theta(), 0.6);
  EXPECT_EQ(density.numTrials(), 0);
}

TEST(DensityBinomialTest, ComparesWithoutItsSamples) {
  const vx_PDFBinomial density = trained(10.0, {2.0, 4.0});
  EXPECT_TRUE(density == densityOf(11, density.theta(), 10.0));
  EXPECT_FALSE(density != densityOf(11, density.theta(), 10.0));
  EXPECT_TRUE(density.isEquivalent(densityOf(11, density.theta(), 10.0)));
  for (const vx_PDFBinomial& other :
       {densityOf(12, density.theta(), 10.0), densityOf(11, 0.31, 10.0), densityOf(11, 0.29, 10.0),
        densityOf(11, density.theta(), 10.5), densityOf(11, density.theta(), 9.5)}) {
    EXPECT_FALSE(density == other);
    EXPECT_TRUE(other != density);
    EXPECT_FALSE(density.isEquivalent(other));
  }
  EXPECT_FALSE(density.isEquivalent(vx_PDFMultivariateNormal()));
  EXPECT_FALSE(density.isEquivalent(host::WrappedBinomial(density)));
}

TEST(DensityBinomialTest, TakesANaNForEqualToAnything) {
  EXPECT_TRUE(densityOf(3, kNaN, 1.0) == densityOf(3, 0.5, 1.0));
  EXPECT_TRUE(densityOf(3, 0.5, 1.0) == densityOf(3, 0.5, kNaN));
  EXPECT_TRUE(densityOf(3, kNaN, kNaN) == densityOf(3, kNaN, kNaN));
  EXPECT_FALSE(densityOf(3, kNaN, 1.0) == densityOf(4, kNaN, 1.0));
}

TEST(DensityBinomialTest, CopiesItsSamplesToo) {
  const vx_PDFBinomial source = trained(10.0, {2.0, 4.0});
  vx_PDFBinomial copy(source);
  vx_PDFBinomial assigned = newDensity(1.0);
  assigned = source;
  for (vx_PDFBinomial* density : {&copy, &assigned}) {
    density->updateWithData({one(9.0)});
    EXPECT_TRUE(*density == trained(10.0, {2.0, 4.0, 9.0}));
  }
  EXPECT_TRUE(source == trained(10.0, {2.0, 4.0}));
}

TEST(DensityBinomialTest, IsArchivedWithoutItsSamples) {
  vx_PDFBinomial density = trained(4.0, {1.0, 3.0});
  EXPECT_EQ(density.numTrials(), 2);  // 0.25 / 0.125
  EXPECT_EQ(storedHex(density), packedHex("00 00 02000000 000000000000e03f 0000000000001040"));
  vx_PDFBinomial copy = newDensity(1.0);
  load(stored(density), copy);
  EXPECT_TRUE(copy == density);
  EXPECT_EQ(copy.logValue(one(1.0)), density.logValue(one(1.0)));
  copy.updateWithData({one(1.0)});
  EXPECT_EQ(copy.theta(), 0.25);
  EXPECT_EQ(copy.numTrials(), 2);
  copy.updateWithData({one(2.0)});
  EXPECT_EQ(copy.theta(), trained(4.0, {1.0, 2.0}).theta());
  EXPECT_EQ(copy.numTrials(), trained(4.0, {1.0, 2.0}).numTrials());
}

TEST(DensityBinomialTest, ForgetsItsSamplesWhenItIsLoadedInto) {
  vx_PDFBinomial density = trained(4.0, {1.0, 3.0});
  load(binomialBytes(7, 0.5, 4.0), density);
  density.updateWithData({one(4.0)});
  EXPECT_EQ(density.theta(), 1.0);
}

TEST(DensityBinomialTest, RefusesAnUnknownVersionWithoutAName) {
  for (const std::size_t level : {0u, 1u}) {
    std::string bytes = binomialBytes(3, 0.5, 2.0);
    bytes[level] = '\xff';
    vx_PDFBinomial density = trained(4.0, {1.0, 3.0});
    expectUnknownVersion([&] { load(bytes, density); }, "");
    EXPECT_TRUE(density == trained(4.0, {1.0, 3.0}));
  }
}

}  // namespace
