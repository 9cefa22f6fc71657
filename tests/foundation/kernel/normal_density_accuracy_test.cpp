// SPDX-License-Identifier: MIT
// Moments and log-densities against two passes and a Cholesky factor in long double, and what
// becomes of covariances that are not positive definite.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "kernel/normal_density.h"
#include "tests/support/bayes_kernel.h"
#include "tests/support/plain_normal.h"
#include "vxfoundation/random.h"

namespace {

using plain::Real;

const double kLn2Pi = std::log(2.0 * std::acos(-1.0));

/// d Gaussian measurements whose covariance has the eigenvalues 1 ... 1/condition along random
/// axes, each scaled and shifted.
class Source {
 public:
  Source(std::size_t d, double condition, double scale, double offset, long seed)
      : random_(seed), axes_(d), scale_(scale), offset_(offset) {
    for (std::size_t a = 0; a < d; ++a) {
      std::vector<double> axis(d);
      for (double& x : axis) x = random_.next(0.0, 1.0);
      for (std::size_t b = 0; b < a; ++b) addTo_(axis, axes_[b], -dot_(axis, axes_[b]));
      for (std::size_t b = 0; b < a; ++b) addTo_(axis, axes_[b], -dot_(axis, axes_[b]));
      const double length = std::sqrt(dot_(axis, axis));
      for (double& x : axis) x /= length;
      axes_[a] = axis;
      const double share = d == 1 ? 0.0 : static_cast<double>(a) / static_cast<double>(d - 1);
      deviations_.push_back(std::pow(condition, -0.5 * share));
    }
  }

  vx_KernelPattern next(long invalidOneIn = 0) {
    std::vector<double> x(axes_.size(), 0.0);
    for (std::size_t a = 0; a < axes_.size(); ++a) {
      addTo_(x, axes_[a], random_.next(0.0, deviations_[a]));
    }
    std::vector<std::int32_t> invalid;
    for (std::size_t i = 0; i < x.size(); ++i) {
      x[i] = offset_ + scale_ * x[i];
      if (invalidOneIn != 0 &&
          std::fabs(random_.next(0.0, 1.0)) < 1.2 / static_cast<double>(invalidOneIn)) {
        invalid.push_back(static_cast<std::int32_t>(i));
      }
    }
    return {x, invalid};
  }

  std::vector<vx_KernelPattern> many(std::size_t count, long invalidOneIn = 0) {
    std::vector<vx_KernelPattern> samples;
    while (samples.size() < count) samples.push_back(next(invalidOneIn));
    return samples;
  }

 private:
  static double dot_(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
  }
  static void addTo_(std::vector<double>& a, const std::vector<double>& b, double factor) {
    for (std::size_t i = 0; i < a.size(); ++i) a[i] += factor * b[i];
  }

  vxRandomGaussian random_;
  std::vector<std::vector<double>> axes_;
  std::vector<double> deviations_;
  double scale_;
  double offset_;
};

struct AccuracyRow {
  const char* name;
  double condition;
  double scale;
  double offset;
  long invalidOneIn;
};

void PrintTo(const AccuracyRow& row, std::ostream* out) { *out << row.name; }

class NormalAccuracyTest : public testing::TestWithParam<AccuracyRow> {
 protected:
  /// What rounding of moments may cost; a mean that is large beside the deviation costs its share.
  double unit(std::size_t d) const {
    const double ratio = 1.0 + std::fabs(GetParam().offset / GetParam().scale);
    return 64.0 * static_cast<double>(d) * std::numeric_limits<double>::epsilon() * ratio;
  }
};

TEST_P(NormalAccuracyTest, AgreesWithLongDouble) {
  const AccuracyRow& row = GetParam();
  for (const std::size_t d : {1u, 2u, 3u, 5u, 8u, 13u, 20u, 32u}) {
    SCOPED_TRACE("dimension " + std::to_string(d));
    Source source(d, row.condition, row.scale, row.offset, static_cast<long>(100 + d));
    const std::vector<vx_KernelPattern> samples =
        source.many((row.invalidOneIn != 0 ? 40 : 5) * d + 10, row.invalidOneIn);
    const plain::Moments expected = plain::momentsOf(samples);
    const vx_NormalDensity density = densityOf(samples);
    const auto isCounted = [d](const auto& sample) { return sample.invalidIndices.size() < d; };
    EXPECT_EQ(density.sampleCount(), std::count_if(samples.begin(), samples.end(), isCounted));

    const double variance = row.scale * row.scale;
    for (std::size_t i = 0; i < d; ++i) {
      EXPECT_NEAR(density.mean(i), static_cast<double>(expected.mean[i]), unit(d) * row.scale);
      for (std::size_t j = 0; j < d; ++j) {
        EXPECT_NEAR(density.covariance(i, j), static_cast<double>(expected.covariance[i][j]),
                    unit(d) * variance);
      }
    }
    for (const vx_KernelPattern& query : source.many(12, row.invalidOneIn)) {
      const Real value = plain::logNormal(expected, query);
      EXPECT_NEAR(valueAt(density, query), static_cast<double>(value),
                  unit(d) * row.condition * (10.0 + std::fabs(static_cast<double>(value))));
    }
  }
}

TEST_P(NormalAccuracyTest, AgreesWithLongDoubleOnTheMarginalOfEachMeasurement) {
  const AccuracyRow& row = GetParam();
  Source source(4, row.condition, row.scale, row.offset, 77);
  const std::vector<vx_KernelPattern> samples = source.many(200, row.invalidOneIn);
  const plain::Moments expected = plain::momentsOf(samples);
  const vx_NormalDensity density = densityOf(samples);
  for (std::int32_t i = 0; i < 4; ++i) {
    std::vector<std::int32_t> others;
    for (std::int32_t j = 0; j < 4; ++j) {
      if (j != i) others.push_back(j);
    }
    const vx_KernelPattern query{source.next().values, others};
    const auto value = static_cast<double>(plain::logNormal(expected, query));
    EXPECT_NEAR(valueAt(density, query), value, unit(4) * (10.0 + std::fabs(value)));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, NormalAccuracyTest,
                         testing::Values(AccuracyRow{"WellConditioned", 1.0, 1.0, 0.0, 0},
                                         AccuracyRow{"Condition1e3", 1e3, 1.0, 0.0, 0},
                                         AccuracyRow{"Condition1e6", 1e6, 1.0, 3.0, 0},
                                         AccuracyRow{"Condition1e9", 1e9, 1.0, 0.0, 0},
                                         AccuracyRow{"Condition1e12", 1e12, 1.0, 0.0, 0},
                                         AccuracyRow{"Offset1e9", 1.0, 1.0, 1e9, 0},
                                         AccuracyRow{"Offset1e6", 10.0, 1.0, 1e6, 0},
                                         AccuracyRow{"TinyVariance", 10.0, 1e-9, 0.0, 0},
                                         AccuracyRow{"HugeVariance", 10.0, 1e9, 0.0, 0},
                                         AccuracyRow{"TinyIllConditioned", 1e9, 1e-9, 1e-9, 0},
                                         AccuracyRow{"SomeInvalid", 4.0, 1.0, 2.0, 10},
                                         AccuracyRow{"ManyInvalid", 2.0, 1e-4, 0.0, 4}),
                         [](const auto& row) { return row.param.name; });

TEST(NormalScalesTest, SpreadOverManyOrdersOfMagnitudeIsOrdinary) {
  // The same correlated samples in other units: the log-density moves by the logarithm of the
  // units, nothing is taken for singular.
  const std::vector<std::vector<double>> units = {
      {1e5, 1e-4, 1.0, 1e5}, {1e9, 1e-9, 1e9, 1e-9}, {1e-4, 1e-4, 1e-4, 1e5}};
  for (const std::vector<double>& unit : units) {
    Source source(4, 50.0, 1.0, 0.0, 5);
    std::vector<vx_KernelPattern> samples;
    for (const vx_KernelPattern& sample : source.many(60)) {
      std::vector<double> x = sample.values;
      for (std::size_t i = 0; i < x.size(); ++i) x[i] *= unit[i];
      samples.push_back({x, {}});
    }
    const vx_KernelPattern query = samples[7];
    const auto value = static_cast<double>(plain::logNormal(plain::momentsOf(samples), query));
    EXPECT_NEAR(valueAt(densityOf(samples), query), value, 1e-10 * (10.0 + std::fabs(value)));
  }
}

TEST(NormalSingularTest, GivesAConstantAThousandthOfItsScale) {
  struct Row {
    const char* name;
    std::vector<vx_KernelPattern> samples;
    double variance;  // expected of measurement 0
  };
  const Row rows[] = {
      {"mean", {{{5.0}, {}}, {{5.0}, {}}, {{5.0}, {}}}, 25e-6},
      {"negative mean", {{{-200.0}, {}}, {{-200.0}, {}}}, 4e-2},
      {"zero alone", {{{0.0}, {}}, {{0.0}, {}}}, 1e-6},
      {"zero beside a deviation", {{{0.0, 1.0}, {}}, {{0.0, 5.0}, {}}}, 8e-6},
      {"not quite a tenth", {{{0.1}, {}}, {{0.1}, {}}, {{0.1}, {}}}, 1e-8},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const vx_NormalDensity density = densityOf(row.samples);
    EXPECT_EQ(density.covariance(0, 0), 0.0);  // shown as it is
    const std::vector<double> at = row.samples[0].values;
    double rest = 0.0;
    if (at.size() == 2) rest = -0.5 * (kLn2Pi + std::log(8.0) + 4.0 / 8.0);
    EXPECT_NEAR(valueAt(density, row.samples[0]), rest - 0.5 * (kLn2Pi + std::log(row.variance)),
                0.7);
    std::vector<double> off = at;
    off[0] += 3.0 * std::sqrt(row.variance);
    const double drop = valueAt(density, row.samples[0]) - valueAt(density, {off, {}});
    EXPECT_GT(drop, 2.0);
    EXPECT_LT(drop, 9.0);
  }
}

TEST(NormalSingularTest, AltersNoMarginalThatIsPositiveDefinite) {
  // Measurement 2 is the sum of the others, 3 is constant: without them all is ordinary.
  Source source(2, 3.0, 1.0, 4.0, 9);
  std::vector<vx_KernelPattern> samples;
  for (const vx_KernelPattern& pair : source.many(40)) {
    const double a = pair.values[0];
    const double b = pair.values[1];
    samples.push_back({{a, b, a + b, 6.0}, {}});
  }
  const vx_NormalDensity density = densityOf(samples);
  const plain::Moments moments = plain::momentsOf(samples);
  for (const std::vector<std::int32_t>& invalid :
       std::vector<std::vector<std::int32_t>>{{2, 3}, {0, 3}, {1, 3}, {0, 1, 3}}) {
    const vx_KernelPattern query{{4.1, 3.2, 7.0, 6.0}, invalid};
    const auto value = static_cast<double>(plain::logNormal(moments, query));
    EXPECT_NEAR(valueAt(density, query), value, 1e-12 * (10.0 + std::fabs(value)));
  }
}

TEST(NormalSingularTest, IsFiniteForFiniteInput) {
  struct Row {
    const char* name;
    std::vector<vx_KernelPattern> samples;
  };
  std::vector<vx_KernelPattern> dependent;
  std::vector<vx_KernelPattern> shifted;
  vxRandomGaussian random(2);
  for (int i = 0; i < 30; ++i) {
    const double x = random.next(0.0, 1.0);
    dependent.push_back({{x, 3.0 * x, -0.1 * x + 0.3, 1e-9 * x}, {}});
    shifted.push_back({{1e9 + x, 3.0 * (1e9 + x)}, {}});
  }
  const Row rows[] = {
      {"dependent", dependent},
      {"dependent far off", shifted},
      {"two samples of eight", {{{1, 2, 3, 4, 5, 6, 7, 8}, {}}, {{2, 2, 5, 1, 0, 9, 7, 8}, {}}}},
      {"equal samples", {{{1, 0, -3}, {}}, {{1, 0, -3}, {}}, {{1, 0, -3}, {}}}},
      {"square of the mean underflows", {{{1e-200, 1}, {}}, {{1e-200, 2}, {}}}},
      {"variance underflows", {{{1e-170}, {}}, {{2e-170}, {}}, {{3e-170}, {}}}},
      {"variance subnormal", {{{1e-158}, {}}, {{2e-158}, {}}, {{3e-158}, {}}}},
      {"smallest numbers", {{{5e-324, 0.0}, {}}, {{0.0, 5e-324}, {}}, {{0.0, 0.0}, {}}}},
      {"large", {{{1e150, 1e-150}, {}}, {{-1e150, 2e-150}, {}}, {{0.0, -3e-150}, {}}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const vx_NormalDensity density = densityOf(row.samples);
    for (const vx_KernelPattern& sample : row.samples) {
      EXPECT_TRUE(std::isfinite(valueAt(density, sample)));
    }
    const std::size_t d = density.dimension();
    EXPECT_TRUE(std::isfinite(valueAt(density, {std::vector<double>(d, 0.0), {}})));
    if (d > 1) {
      EXPECT_TRUE(std::isfinite(valueAt(density, {std::vector<double>(d, 1e-3), {0}})));
    }
  }
}

TEST(NormalSingularTest, IsFiniteAtAConstantWhoseSquareOverflows) {
  const vx_NormalDensity density = densityOf({{{1e200, 1}, {}}, {{1e200, 2}, {}}});
  EXPECT_TRUE(std::isfinite(valueAt(density, {{1e200, 1.5}, {}})));
  EXPECT_TRUE(std::isfinite(valueAt(density, {{1e200, 1.5}, {1}})));
}

TEST(NormalSingularTest, PrefersWhatKeepsALinearDependence) {
  std::vector<vx_KernelPattern> samples;
  for (int i = 0; i < 20; ++i) {
    const double x = 0.37 * i - 2.0;
    samples.push_back({{x, 2.0 * x}, {}});
  }
  const vx_NormalDensity density = densityOf(samples);
  EXPECT_GT(valueAt(density, {{1.0, 2.0}, {}}), valueAt(density, {{1.0, 2.2}, {}}) + 100.0);
  EXPECT_GT(valueAt(density, {{1.0, 2.0}, {}}), valueAt(density, {{1.0, -2.0}, {}}) + 1e5);
}

TEST(NormalSingularTest, IsFiniteWherePairwiseCovariancesAreIndefinite) {
  // Each pair was seen together in samples of its own, with correlations 1, 1 and -1.
  const std::vector<vx_KernelPattern> samples = {
      {{-1, -1, 0}, {2}}, {{1, 1, 0}, {2}},  {{-1, 0, -1}, {1}},
      {{1, 0, 1}, {1}},   {{0, -1, 1}, {0}}, {{0, 1, -1}, {0}},
  };
  const vx_NormalDensity density = densityOf(samples);
  EXPECT_GT(density.covariance(0, 1), 0.0);
  EXPECT_GT(density.covariance(0, 2), 0.0);
  EXPECT_LT(density.covariance(1, 2), 0.0);
  for (const double x : {-1e6, -1.0, 0.0, 0.5, 1e6}) {
    EXPECT_TRUE(std::isfinite(valueAt(density, {{x, 0.5, -x}, {}})));
  }
  EXPECT_GT(valueAt(density, {{0, 0, 0}, {}}), valueAt(density, {{1, 1, 1}, {}}));
  EXPECT_GT(valueAt(density, {{1, 1, 1}, {}}), valueAt(density, {{10, 10, 10}, {}}));

  // At random: every density is finite and largest at its mean.
  for (long seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Source source(6, 100.0, 1.0, 1.0, seed);
    const vx_NormalDensity odd = densityOf(source.many(14, 3));
    const std::vector<double> mean = odd.mean().elements;
    const double top = valueAt(odd, {mean, {}});
    ASSERT_TRUE(std::isfinite(top));
    for (const vx_KernelPattern& query : source.many(10)) {
      const double value = valueAt(odd, query);
      EXPECT_TRUE(std::isfinite(value));
      EXPECT_LE(value, top);
    }
  }
}

}  // namespace
