// SPDX-License-Identifier: MIT
#include "kernel/normal_factor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "tests/support/numbers.h"

namespace {

const double kLn2Pi = std::log(2.0 * std::acos(-1.0));

vx_NormalFactor factorOf(const std::vector<double>& mean, const std::vector<double>& covariance) {
  const std::size_t d = mean.size();
  return {mean, [&](std::size_t row, std::size_t column) {
            EXPECT_GE(row, column);
            EXPECT_LT(row, d);
            return covariance.at(row * d + column);
          }};
}

double valueAt(const vx_NormalFactor& factor, std::vector<double> x) {
  return factor.logDensity(x.data());
}

TEST(NormalFactorTest, HasSerialsThatAreNeverGivenTwice) {
  const vx_NormalFactor first = factorOf({0.0}, {1.0});
  const vx_NormalFactor second = factorOf({0.0}, {1.0});
  EXPECT_NE(first.serial(), 0u);
  EXPECT_NE(second.serial(), 0u);
  EXPECT_NE(first.serial(), second.serial());
}

TEST(NormalFactorTest, IsTheFamiliarFormulaInOneDimension) {
  const vx_NormalFactor factor = factorOf({3.0}, {4.0});
  EXPECT_EQ(factor.dimension(), 1u);
  EXPECT_EQ(factor.mean(0), 3.0);
  EXPECT_EQ(factor.scale(0), 0.5);
  EXPECT_DOUBLE_EQ(factor.constant(), -0.5 * (kLn2Pi + std::log(4.0)));
  EXPECT_DOUBLE_EQ(valueAt(factor, {7.0}), -0.5 * (kLn2Pi + std::log(4.0) + 4.0));
}

TEST(NormalFactorTest, IsConstantLessHalfASquareToTheBitInOneDimension) {
  for (int i = 0; i < 200; ++i) {
    const vx_NormalFactor factor = factorOf({0.1 * i}, {1.0 / (3.0 + i)});
    for (const double x : {0.0, 1.0 / 3.0, -7.7, 1e3 + i}) {
      const double z = (x - factor.mean(0)) * factor.scale(0);
      EXPECT_EQ(valueAt(factor, {x}), factor.constant() - 0.5 * (z * z));
    }
  }
}

TEST(NormalFactorTest, TakesCorrelationsIntoAccount) {
  // Variances 4 and 9, correlation 1/2: determinant 27.
  const vx_NormalFactor factor = factorOf({1.0, -1.0}, {4.0, 3.0, 3.0, 9.0});
  EXPECT_NEAR(valueAt(factor, {1.0, -1.0}), -kLn2Pi - 0.5 * std::log(27.0), 1e-15);
  // (2, 3) times the inverse times (2, 3): (9*4 - 2*3*6 + 4*9) / 27.
  EXPECT_NEAR(valueAt(factor, {3.0, 2.0}), -kLn2Pi - 0.5 * std::log(27.0) - 0.5 * 36.0 / 27.0,
              1e-14);
}

TEST(NormalFactorTest, IsOneForNoMeasurements) { EXPECT_EQ(valueAt(factorOf({}, {}), {}), 0.0); }

TEST(NormalFactorTest, LeavesAStrongCorrelationAlone) {
  for (const double gap : {1e-3, 1e-6, 1e-9, 1e-12}) {
    const double rho = 1.0 - gap;
    const double exactGap = 1.0 - rho;
    const double determinant = exactGap * (1.0 + rho);
    EXPECT_NEAR(valueAt(factorOf({0.0, 0.0}, {1.0, rho, rho, 1.0}), {0.0, 0.0}),
                -kLn2Pi - 0.5 * std::log(determinant), 1e-3);
  }
}

TEST(NormalFactorTest, JudgesSingularityFreeOfUnits) {
  for (const double unit : {1e-9, 1e-4, 1.0, 1e5, 1e9}) {
    // Independent, of very different size.
    const vx_NormalFactor apart = factorOf({0.0, 0.0}, {1e-18, 0.0, 0.0, unit * unit});
    EXPECT_NEAR(valueAt(apart, {0.0, 0.0}), -kLn2Pi - std::log(1e-9 * unit), 1e-12);
    // Dependent: the same ridge in any unit.
    const vx_NormalFactor equal = factorOf({0.0, 0.0}, {1.0, unit, unit, unit * unit});
    const double value = valueAt(equal, {0.0, 0.0}) + std::log(unit);
    const vx_NormalFactor reference = factorOf({0.0, 0.0}, {1.0, 1.0, 1.0, 1.0});
    EXPECT_NEAR(value, valueAt(reference, {0.0, 0.0}), 1e-9);
    EXPECT_TRUE(std::isfinite(value));
  }
}

TEST(NormalFactorTest, KeepsTheVariancesWhenItRegularisesCorrelations) {
  const vx_NormalFactor factor = factorOf({0.0, 0.0}, {4.0, 6.0, 6.0, 9.0});
  EXPECT_EQ(factor.scale(0), 0.5);
  EXPECT_EQ(factor.scale(1), 1.0 / 3.0);
  // Along the dependence a sample is as likely as its first measurement alone, but for a constant.
  const double along = valueAt(factor, {0.0, 0.0}) - valueAt(factor, {2.0, 3.0});
  EXPECT_NEAR(along, 0.5, 1e-5);
  EXPECT_GT(valueAt(factor, {0.0, 0.0}) - valueAt(factor, {2.0, -3.0}), 1e5);
}

TEST(NormalFactorTest, RegularisesAnIndefiniteMatrix) {
  const vx_NormalFactor factor =
      factorOf({0, 0, 0}, {1.0, 0.9, 0.9, 0.9, 1.0, -0.9, 0.9, -0.9, 1.0});
  EXPECT_TRUE(std::isfinite(valueAt(factor, {0, 0, 0})));
  EXPECT_TRUE(std::isfinite(valueAt(factor, {100, -100, 100})));
  EXPECT_GT(valueAt(factor, {0, 0, 0}), valueAt(factor, {1, 0, 0}));
  EXPECT_GT(valueAt(factor, {0, 0, 0}), valueAt(factor, {0, 1, -1}));
}

TEST(NormalFactorTest, EndsWithWhateverNumbersItIsGiven) {
  for (const double odd : {kInfinity, -kInfinity, kNaN, -1.0, 1e308, -1e308, 5e-324, -0.0}) {
    for (std::size_t place = 0; place < 4; ++place) {
      std::vector<double> covariance = {1.0, 0.0, 0.0, 1.0};
      covariance[place] = odd;
      valueAt(factorOf({0.0, 0.0}, covariance), {1.0, 1.0});
      valueAt(factorOf({odd, 0.0}, {0.0, 0.0, 0.0, 0.0}), {1.0, 1.0});
      valueAt(factorOf({odd, 1.0}, covariance), {odd, odd});
    }
  }
  EXPECT_TRUE(std::isfinite(valueAt(factorOf({0.0, 0.0}, {-1.0, 5.0, 5.0, 2.0}), {1.0, 1.0})));
}

}  // namespace
