// SPDX-License-Identifier: MIT
#include "vxclss/distance_metric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <random>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/host_metric.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadParams;

constexpr wchar_t kBadOrder[] = L"Order of norm distance must be > 0";
constexpr wchar_t kBadCounts[] =
    L"Pattern distance function requires the number of measurementsin the two patterns to be equal";
constexpr wchar_t kInvalid[] =
    L"Access to full feature vector requires that all features are valid.";

// The C library's own, whatever the compiler thinks of a call that it can see.
double (*volatile const cPow)(double, double) = &std::pow;

/// A norm of an order that only an archive can bring.
vxPatternDistanceMetricNorm archivedNorm(double order) {
  vxPatternDistanceMetricNorm norm(2.0);
  std::string bytes = stored(static_cast<vxPersistent&>(norm));
  double two = 2.0;
  const std::size_t place = bytes.rfind(stored(two));
  EXPECT_NE(place, std::string::npos);
  bytes.replace(place, sizeof(order), stored(order));
  load(bytes, static_cast<vxPersistent&>(norm));
  return norm;
}

double distance(double order, const std::vector<double>& a, const std::vector<double>& b) {
  return vxPatternDistanceMetricNorm(order).distance({a, {}}, {b, {}});
}

/// Only cases in which every pow is exact.
struct ExactDistance {
  const char* name;
  double order;
  std::vector<double> a;
  std::vector<double> b;
  double distance;
};

void PrintTo(const ExactDistance& row, std::ostream* out) { *out << row.name; }

class ExactDistanceTest : public testing::TestWithParam<ExactDistance> {};

TEST_P(ExactDistanceTest, IsTheSameInBothDirections) {
  const auto& row = GetParam();
  EXPECT_EQ(bitsOf(distance(row.order, row.a, row.b)), bitsOf(row.distance));
  EXPECT_EQ(bitsOf(distance(row.order, row.b, row.a)), bitsOf(row.distance));
}

INSTANTIATE_TEST_SUITE_P(
    Norm, ExactDistanceTest,
    testing::Values(ExactDistance{"Euclidean", 2.0, {0, 0}, {3, 4}, 0x1.4p+2},
                    ExactDistance{"CityBlock", 1.0, {0, 0}, {3, 4}, 0x1.cp+2},
                    ExactDistance{"CityBlockOfFractions", 1.0, {0.25, -1.5}, {1, 1}, 0x1.ap+1},
                    ExactDistance{"BelowOne", 0.5, {0, 0}, {1, 4}, 0x1.2p+3},
                    ExactDistance{"Quarter", 0.25, {0, 1}, {16, 0}, 0x1.44p+6},
                    ExactDistance{"Huge", 1e6, {1, 0}, {0, 0.5}, 0x1p+0},
                    ExactDistance{"HugeOverflows", 1e6, {3}, {0}, kInfinity},
                    ExactDistance{"HugeUnderflows", 1e6, {0.5}, {0}, 0x0p+0},
                    ExactDistance{"SquaresOverflow", 2.0, {0x1p+600}, {0}, kInfinity},
                    ExactDistance{"SquaresUnderflow", 2.0, {0x1p-600}, {0}, 0x0p+0},
                    ExactDistance{"PowersOfTwo", 2.0, {-0x1p-500}, {0x1p-500}, 0x1p-499},
                    ExactDistance{"Equal", 2.0, {1, 2, 3}, {1, 2, 3}, 0x0p+0},
                    ExactDistance{"SignedZeros", 1.0, {-0.0}, {0.0}, 0x0p+0},
                    ExactDistance{"NoMeasurements", 2.0, {}, {}, 0x0p+0},
                    ExactDistance{"NoMeasurementsBelowOne", 0.5, {}, {}, 0x0p+0},
                    ExactDistance{"InfinitelyFar", 2.0, {kInfinity, 0}, {1, 0}, kInfinity},
                    ExactDistance{"OppositeInfinities", 1.0, {kInfinity}, {-kInfinity}, kInfinity},
                    // pow(x, 0) is 1 for every x.
                    ExactDistance{"InfiniteOrder", kInfinity, {0.5, 7}, {0, 0}, 0x1p+0},
                    ExactDistance{"InfiniteOrderNoMeasurements", kInfinity, {}, {}, 0x1p+0}),
    [](const auto& row) { return row.param.name; });

TEST(PatternDistanceMetricNormTest, AgreesWithTheCubeRootOf91ForOrderThree) {
  EXPECT_EQ(bitsOf(distance(3.0, {0, 0}, {3, 4})), bitsOf(cPow(91.0, 1.0 / 3.0)));
  EXPECT_NEAR(distance(3.0, {0, 0}, {3, 4}), 4.4979, 5e-5);
}

TEST(PatternDistanceMetricNormTest, IsNaNForANaNAndForEqualInfinities) {
  EXPECT_TRUE(std::isnan(distance(2.0, {kNaN}, {1})));
  EXPECT_TRUE(std::isnan(distance(1.0, {1, 2}, {1, kNaN})));
  EXPECT_TRUE(std::isnan(distance(2.0, {kInfinity}, {kInfinity})));
  EXPECT_TRUE(std::isnan(distance(2.0, {kInfinity, 1}, {kNaN, 1})));
}

class PowBitsTest : public testing::TestWithParam<double> {};

TEST_P(PowBitsTest, EqualTheCLibrarysForFullMantissas) {
  const double order = GetParam();
  std::mt19937_64 random(17);
  const auto draw = [&] { return std::ldexp(static_cast<double>(random()), -62); };
  for (int i = 0; i < 2000; ++i) {
    std::vector<double> a(random() % 5);
    std::vector<double> b(a.size());
    double sum = 0.0;
    for (std::size_t j = 0; j < a.size(); ++j) {
      a[j] = draw();
      b[j] = draw();
      sum += cPow(std::fabs(a[j] - b[j]), order);
    }
    ASSERT_EQ(bitsOf(distance(order, a, b)), bitsOf(cPow(sum, 1.0 / order))) << "pattern " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Orders, PowBitsTest, testing::Values(0.5, 1.0, 2.0, 3.0, 2.5, 10.0, 1e6));

TEST(PatternDistanceMetricNormTest, TakesNoShortCutForOrderTwo) {
  std::mt19937_64 random(23);
  int squaresThatDiffer = 0;
  int rootsThatDiffer = 0;
  for (int i = 0; i < 40000; ++i) {
    const double x = std::ldexp(static_cast<double>(random()), -63);
    const double y = std::ldexp(static_cast<double>(random()), -63);
    const double sum = cPow(x, 2.0) + cPow(y, 2.0);
    const double squares = cPow(x * x + y * y, 0.5);
    const double root = std::sqrt(sum);
    const double expected = cPow(sum, 0.5);
    squaresThatDiffer += squares != expected ? 1 : 0;
    rootsThatDiffer += root != expected ? 1 : 0;
    ASSERT_EQ(bitsOf(distance(2.0, {x, 0}, {0, y})), bitsOf(expected));
  }
  EXPECT_GT(squaresThatDiffer, 0);
  EXPECT_GT(rootsThatDiffer, 0);
}

TEST(PatternDistanceMetricNormTest, RefusesPatternsOfDifferentLength) {
  const vxPatternDistanceMetricNorm norm(2.0);
  const vxFeaturePattern three({1, 2, 3}, {});
  const vxFeaturePattern four({1, 2, 3, 4}, {});
  expectThrows<BadFeatures>([&] { norm.distance(three, four); }, kBadCounts);
  expectThrows<BadFeatures>([&] { norm.distance(four, three); }, kBadCounts);
  expectThrows<BadFeatures>([&] { norm.distance(vxFeaturePattern({}, {}), three); }, kBadCounts);
}

TEST(PatternDistanceMetricNormTest, RefusesInvalidMeasurementsAfterTheLengths) {
  const vxPatternDistanceMetricNorm norm(2.0);
  const vxFeaturePattern valid({1, 2, 3}, {});
  const vxFeaturePattern invalid({1, 2, 3}, {1});
  expectThrows<BadFeatures>([&] { norm.distance(invalid, valid); }, kInvalid);
  expectThrows<BadFeatures>([&] { norm.distance(valid, invalid); }, kInvalid);
  expectThrows<BadFeatures>([&] { norm.distance(invalid, vxFeaturePattern({1}, {})); }, kBadCounts);
}

TEST(PatternDistanceMetricNormTest, TakesEveryOrderAboveZero) {
  for (const double order : {0.5, 1.0, 2.0, 1e6, 5e-324, kInfinity}) {
    EXPECT_EQ(vxPatternDistanceMetricNorm(order).order(), order);
    vxPatternDistanceMetricNorm norm(3.0);
    norm.order(order);
    EXPECT_EQ(norm.order(), order);
  }
}

TEST(PatternDistanceMetricNormTest, RefusesEveryOtherOrder) {
  vxPatternDistanceMetricNorm norm(3.0);
  for (const double order : {0.0, -0.0, -1.0, -kInfinity, kNaN, -5e-324}) {
    expectRefused<BadParams>(
        norm, [&] { norm.order(order); }, kBadOrder);
    EXPECT_EQ(norm.order(), 3.0);
    expectThrows<BadParams>([&] { vxPatternDistanceMetricNorm{order}; }, kBadOrder);
  }
}

TEST(PatternDistanceMetricNormTest, ComputesWithAnyOrderThatAnArchiveBrings) {
  const vxPatternDistanceMetricNorm nan = archivedNorm(kNaN);
  EXPECT_TRUE(std::isnan(nan.order()));
  EXPECT_TRUE(std::isnan(nan.distance({{3}, {}}, {{0}, {}})));
  EXPECT_TRUE(std::isnan(nan.distance({{}, {}}, {{}, {}})));
  // pow(1, NaN) is 1.
  EXPECT_EQ(nan.distance({{1}, {}}, {{0}, {}}), 1.0);

  const vxPatternDistanceMetricNorm zero = archivedNorm(0.0);
  EXPECT_EQ(zero.distance({{3, 4}, {}}, {{0, 0}, {}}), kInfinity);
  EXPECT_EQ(zero.distance({{3}, {}}, {{0}, {}}), 1.0);
  const vxPatternDistanceMetricNorm negative = archivedNorm(-1.0);
  EXPECT_EQ(negative.distance({{4, 4}, {}}, {{0, 0}, {}}), 2.0);
}

TEST(PatternDistanceMetricNormTest, IsCopiedAssignedAndCloned) {
  const vxPatternDistanceMetricNorm original(3.0);
  vxPatternDistanceMetricNorm copy(original);
  EXPECT_EQ(copy.order(), 3.0);
  copy.order(4.0);
  EXPECT_EQ(original.order(), 3.0);
  copy = original;
  EXPECT_EQ(copy.order(), 3.0);

  const vxPtrHandle<vxPatternDistanceMetric> clone = original.clone();
  EXPECT_EQ(clone->referenceCount(), 1);
  EXPECT_NE(clone.get(), static_cast<const vxPatternDistanceMetric*>(&original));
  const vxPatternDistanceMetric& cloned = *clone;
  EXPECT_EQ(typeid(cloned), typeid(vxPatternDistanceMetricNorm));
  EXPECT_TRUE(clone->isEquivalent(original));
}

TEST(PatternDistanceMetricNormTest, ComparesOrders) {
  const vxPatternDistanceMetricNorm two(2.0);
  EXPECT_TRUE(two == vxPatternDistanceMetricNorm(2.0));
  EXPECT_FALSE(two != vxPatternDistanceMetricNorm(2.0));
  const vxPatternDistanceMetricNorm next(std::nextafter(2.0, 3.0));
  EXPECT_FALSE(two == next);
  EXPECT_FALSE(next == two);
  EXPECT_TRUE(two != next);
}

TEST(PatternDistanceMetricNormTest, EqualsEveryOrderWithANaNOrder) {
  const vxPatternDistanceMetricNorm nan = archivedNorm(kNaN);
  EXPECT_TRUE(nan == nan);
  for (const double order : {0.5, 2.0, kInfinity}) {
    EXPECT_TRUE(nan == vxPatternDistanceMetricNorm(order));
    EXPECT_TRUE(vxPatternDistanceMetricNorm(order) == nan);
  }
}

TEST(PatternDistanceMetricNormTest, DiffersFromEveryOtherClass) {
  const vxPatternDistanceMetricNorm norm(2.0);
  const HostMetric host([](const auto&, const auto&) { return 0.0; });
  EXPECT_FALSE(norm.isEquivalent(host));
  EXPECT_TRUE(host.isEquivalent(norm));  // the base has nothing to compare
}

TEST(PatternDistanceMetricNormTest, ComesBackThroughAPointerToItsBase) {
  vxPtrHandle<vxPatternDistanceMetric> metric(new vxPatternDistanceMetricNorm(0.1));
  vxPtrHandle<vxPatternDistanceMetric> read;
  load(stored(metric), read);
  ASSERT_FALSE(read.isNull());
  EXPECT_EQ(dynamic_cast<const vxPatternDistanceMetricNorm&>(*read).order(), 0.1);
}

}  // namespace
