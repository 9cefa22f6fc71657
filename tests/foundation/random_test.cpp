// SPDX-License-Identifier: MIT
#include "vxfoundation/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/numbers.h"

namespace {

constexpr double kLeast = std::numeric_limits<double>::denorm_min();

static_assert(!std::is_convertible_v<long, vxRandomUniform>);
static_assert(!std::is_convertible_v<long, vxRandomGaussian>);

// xoshiro256** and splitmix64, written a second time after their authors' definitions.
struct Splitmix {
  std::uint64_t x;
  std::uint64_t next() {
    x += 11400714819323198485u;
    std::uint64_t z = x;
    z ^= z >> 30;
    z *= 13787848793156543929u;
    z ^= z >> 27;
    z *= 10723151780598845931u;
    return z ^ (z >> 31);
  }
};
struct Xoshiro {
  std::uint64_t a, b, c, d;
  static std::uint64_t turned(std::uint64_t x, int k) { return x << k | x >> (64 - k); }
  std::uint64_t next() {
    const std::uint64_t result = turned(b * 5, 7) * 9;
    const std::uint64_t shifted = b << 17;
    const std::uint64_t oldA = a;
    const std::uint64_t oldB = b;
    const std::uint64_t cA = c ^ oldA;
    const std::uint64_t dB = d ^ oldB;
    a = oldA ^ dB;
    b = oldB ^ cA;
    c = cA ^ shifted;
    d = turned(dB, 45);
    return result;
  }
};
Xoshiro seeded(std::uint32_t seed) {
  Splitmix filler{seed};
  Xoshiro generator{};
  generator.a = filler.next();
  generator.b = filler.next();
  generator.c = filler.next();
  generator.d = filler.next();
  return generator;
}
double unit(Xoshiro& generator) {
  return std::ldexp(static_cast<double>(generator.next() >> 11), -53);
}

struct Moments {
  double mean, deviation, skew;
};
template <class Next>
Moments momentsOf(int count, Next&& next) {
  std::vector<double> values(static_cast<std::size_t>(count));
  double sum = 0.0;
  for (double& value : values) sum += value = next();
  const double mean = sum / count;
  double squares = 0.0;
  double cubes = 0.0;
  for (const double value : values) {
    squares += (value - mean) * (value - mean);
    cubes += std::pow(value - mean, 3.0);
  }
  const double deviation = std::sqrt(squares / count);
  return {mean, deviation, cubes / count / std::pow(deviation, 3.0)};
}

TEST(RandomReferenceTest, GivesThePublishedNumbers) {
  // The authors' test vectors for a seed of 0 and of 1234567, and for the state 1, 2, 3, 4.
  EXPECT_EQ(Splitmix{0}.next(), 0xe220a8397b1dcdafu);
  EXPECT_EQ(Splitmix{1234567}.next(), 6457827717110365317u);
  Xoshiro generator{1, 2, 3, 4};
  for (const std::uint64_t expected : {11520ull, 0ull, 1509978240ull, 1215971899390074240ull}) {
    EXPECT_EQ(generator.next(), expected);
  }
}

TEST(RandomUniformTest, FollowsItsReference) {
  for (const long seed : {0L, 1L, -1L, 2147483647L, -2147483647L - 1, 20240601L}) {
    vxRandomUniform random(seed);
    Xoshiro reference = seeded(static_cast<std::uint32_t>(seed));
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(random.next(0.0, 1.0), unit(reference)) << seed;
    for (int i = 0; i < 1000; ++i) {
      ASSERT_EQ(random.next(-3.0, 10.0), -3.0 + unit(reference) * 13.0) << seed;
    }
  }
}

TEST(RandomUniformTest, KeepsItsSequenceForGood) {
  // Recorded from the first release; hosts rely on the data sets that follow from them.
  vxRandomUniform random(20240601);
  for (const double expected :
       {0x1.65d8425a5271ap-2, 0x1.f90d81a155beap-2, 0x1.cd4a3f7fac1dbp-1, 0x1.271013b0e0d83p-1}) {
    EXPECT_EQ(random.next(0.0, 1.0), expected);
  }
  vxRandomUniform other(7);
  for (const double expected :
       {0x1.86e12fa3c0aaap+2, 0x1.3f5e41440d54p-1, 0x1.fa91eeaf24d08p+2, 0x1.3822fbbb1190bp+3}) {
    EXPECT_EQ(other.next(-3.0, 10.0), expected);
  }
}

TEST(RandomUniformTest, TakesOnlyTheLow32BitsOfItsSeed) {
  vxRandomUniform first(-5);
  vxRandomUniform second(static_cast<long>(4294967291u));
  for (int i = 0; i < 10; ++i) EXPECT_EQ(first.next(0.0, 1.0), second.next(0.0, 1.0));
}

TEST(RandomUniformTest, ContinuesFromACopy) {
  vxRandomUniform random(3);
  random.next(0.0, 1.0);
  vxRandomUniform copy(random);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(copy.next(0.0, 1.0), random.next(0.0, 1.0));
}

TEST(RandomUniformTest, DiffersBetweenSeeds) {
  EXPECT_NE(vxRandomUniform(1).next(0.0, 1.0), vxRandomUniform(2).next(0.0, 1.0));
}

TEST(RandomUniformTest, StaysWithinItsBoundsAndNeverGivesTheUpperOne) {
  const std::pair<double, double> rows[] = {
      {0.0, 1.0},
      {-1.0, 1.0},
      {1.0, std::nextafter(1.0, 2.0)},    // adjacent
      {-1.0, std::nextafter(-1.0, 0.0)},  // adjacent below 0
      {0x1p52, 0x1p52 + 3.0},             // three steps apart
      {0.0, kLeast},                      // adjacent at 0
      {-kLeast, kLeast},                  // all three values
      {-kMost, kMost},                    // a span that is infinite as a double
      {-kMost, 1.0},
      {std::nextafter(kMost, 0.0), kMost},
      {1e300, 1.0000000001e300},
  };
  vxRandomUniform random(11);
  for (const auto& [low, high] : rows) {
    for (int i = 0; i < 20000; ++i) {
      const double value = random.next(low, high);
      ASSERT_GE(value, low) << low << " to " << high;
      ASSERT_LT(value, high) << low << " to " << high;
    }
  }
}

TEST(RandomUniformTest, GivesTheBoundWhenBothAreEqual) {
  vxRandomUniform random(12);
  for (const double bound : {0.0, 2.5, -kMost, kMost}) EXPECT_EQ(random.next(bound, bound), bound);
}

TEST(RandomUniformTest, StaysWithinReversedBounds) {
  vxRandomUniform random(13);
  for (int i = 0; i < 20000; ++i) {
    const double value = random.next(2.0, -1.0);
    ASSERT_LE(value, 2.0);
    ASSERT_GE(value, -1.0);
    ASSERT_NE(value, -1.0);
    ASSERT_EQ(random.next(std::nextafter(1.0, 2.0), 1.0), std::nextafter(1.0, 2.0));
  }
}

TEST(RandomUniformTest, GivesNaNForANaNBound) {
  vxRandomUniform random(14);
  EXPECT_TRUE(std::isnan(random.next(kNaN, 1.0)));
  EXPECT_TRUE(std::isnan(random.next(0.0, kNaN)));
}

TEST(RandomUniformTest, SpreadsEvenly) {
  vxRandomUniform random(15);
  std::vector<int> counts(10);
  const Moments moments = momentsOf(200000, [&] {
    const double value = random.next(0.0, 1.0);
    ++counts[static_cast<std::size_t>(value * 10.0)];
    return value;
  });
  EXPECT_NEAR(moments.mean, 0.5, 0.003);
  EXPECT_NEAR(moments.deviation, std::sqrt(1.0 / 12.0), 0.003);
  EXPECT_NEAR(moments.skew, 0.0, 0.02);
  for (const int count : counts) EXPECT_NEAR(count, 20000, 700);
}

TEST(RandomUniformTest, SpreadsEvenlyOverASpanThatIsInfiniteAsADouble) {
  vxRandomUniform random(16);
  int counts[4] = {};
  for (int i = 0; i < 40000; ++i) {
    const double share = random.next(-kMost, kMost) / kMost;  // [-1, 1)
    ++counts[share < -0.5 ? 0 : share < 0.0 ? 1 : share < 0.5 ? 2 : 3];
  }
  for (const int count : counts) EXPECT_NEAR(count, 10000, 400);
}

TEST(RandomGaussianTest, KeepsItsSequenceForGood) {
  // Recorded from the first release, as above.
  vxRandomGaussian random(20240601);
  for (const double expected :
       {-0x1.1812df7521bd2p+1, -0x1.93e701fda6f2ap-4, 0x1.c534030d94b6bp-1, 0x1.58f1a2353ac2cp-3}) {
    EXPECT_EQ(random.next(0.0, 1.0), expected);
  }
  vxRandomGaussian other(7);
  for (const double expected :
       {0x1.528408086c26p+2, 0x1.2b9370b66f869p+2, 0x1.3a2a1f66545f9p+2, 0x1.2ae65893063e9p+2}) {
    EXPECT_EQ(other.next(5.0, 0.3), expected);
  }
}

TEST(RandomGaussianTest, FollowsThePolarMethod) {
  vxRandomGaussian random(21);
  Xoshiro reference = seeded(21);
  for (int i = 0; i < 5000; ++i) {
    double x = 0.0;
    double y = 0.0;
    double square = 0.0;
    do {
      x = -1.0 + unit(reference) * 2.0;
      y = -1.0 + unit(reference) * 2.0;
      square = x * x + y * y;
    } while (square >= 1.0 || square == 0.0);
    const double factor = std::sqrt(-2.0 * std::log(square) / square);
    // The C library's logarithm may differ in its last bit.
    ASSERT_NEAR(random.next(0.0, 1.0), x * factor, 1e-14);
    ASSERT_NEAR(random.next(0.0, 1.0), y * factor, 1e-14);
  }
}

TEST(RandomGaussianTest, TakesAStandardDeviation) {
  vxRandomGaussian random(22);
  const Moments moments = momentsOf(200000, [&] { return random.next(10.0, 4.0); });
  EXPECT_NEAR(moments.mean, 10.0, 0.04);
  EXPECT_NEAR(moments.deviation, 4.0, 0.04);
  EXPECT_NEAR(moments.skew, 0.0, 0.03);
}

TEST(RandomGaussianTest, HasTheTailsOfTheNormalDistribution) {
  vxRandomGaussian random(23);
  int withinOne = 0;
  int withinTwo = 0;
  for (int i = 0; i < 200000; ++i) {
    const double size = std::fabs(random.next(0.0, 1.0));
    ASSERT_TRUE(std::isfinite(size));
    withinOne += size < 1.0 ? 1 : 0;
    withinTwo += size < 2.0 ? 1 : 0;
  }
  EXPECT_NEAR(withinOne / 200000.0, 0.6827, 0.005);
  EXPECT_NEAR(withinTwo / 200000.0, 0.9545, 0.003);
}

TEST(RandomGaussianTest, AppliesMeanAndDeviationToEachNumber) {
  vxRandomGaussian plain(24);
  vxRandomGaussian random(24);
  for (int i = 0; i < 20; ++i) {
    const double standard = plain.next(0.0, 1.0);
    EXPECT_EQ(random.next(i, i + 1.0), i + (i + 1.0) * standard);
  }
  EXPECT_EQ(random.next(6.0, 0.0), 6.0);
}

}  // namespace
