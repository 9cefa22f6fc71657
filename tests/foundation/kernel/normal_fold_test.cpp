// SPDX-License-Identifier: MIT
// What densities learn, at every level of instructions, against the rule for one sample and one
// pair of measurements after another, bit for bit. Of a NaN only that it is one: which one an
// operation on two of them gives is left to the compiler.
#include "kernel/normal_fold.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "kernel/normal_batch.h"
#include "kernel/normal_lanes.h"
#include "tests/support/allocation_meter.h"
#include "tests/support/bayes_kernel.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_normal.h"
#include "tests/support/simd_levels.h"

namespace {

struct FoldRow {
  const char* name;
  double (*draw)(std::mt19937_64& random, std::size_t i);
  int invalidOneIn;  // 0: none
};

void PrintTo(const FoldRow& row, std::ostream* out) { *out << row.name; }

double fraction(std::mt19937_64& random) {
  return std::ldexp(static_cast<double>(random() >> 11), -53);
}

double continuous(std::mt19937_64& random, std::size_t) { return fraction(random) - 0.5; }

double whole(std::mt19937_64& random, std::size_t) {
  return static_cast<double>(random() % 5) - 2.0;
}

double zeros(std::mt19937_64& random, std::size_t) {
  constexpr double kZeros[] = {0.0, -0.0, -0.0, 1.0};
  return kZeros[random() % 4];
}

double farOff(std::mt19937_64& random, std::size_t) { return 1e4 + fraction(random); }

double scaled(std::mt19937_64& random, std::size_t i) {
  return std::pow(10.0, static_cast<double>(i % 13) - 6.0) * fraction(random);
}

double small(std::mt19937_64& random, std::size_t) {
  constexpr double kUnits[] = {5e-324, 3e-310, 1e-160, 2e-308};
  return kUnits[random() % 4] * static_cast<double>(random() % 7);
}

double large(std::mt19937_64& random, std::size_t) {
  constexpr double kUnits[] = {1e308, -1e308, 1e160, 1.0};
  return kUnits[random() % 4] * fraction(random);
}

double odd(std::mt19937_64& random, std::size_t) {
  constexpr double kOdd[] = {kNaN, kInfinity, -kInfinity};
  return random() % 40 == 0 ? kOdd[random() % 3] : fraction(random);
}

void append(std::string& bits, double value) {
  if (std::isnan(value)) {
    bits += " a NaN ";
    return;
  }
  char bytes[sizeof(value)];
  std::memcpy(bytes, &value, sizeof(value));
  bits.append(bytes, sizeof(value));
}

/// Count, means and covariances.
template <class Density>
std::string momentsOf(const Density& density, std::size_t d) {
  std::string bits = std::to_string(density.sampleCount());
  for (std::size_t i = 0; i < d; ++i) {
    append(bits, density.mean(i));
    for (std::size_t j = 0; j <= i; ++j) append(bits, density.covariance(i, j));
  }
  return bits;
}

class NormalFoldTest : public testing::TestWithParam<FoldRow> {
 protected:
  Patterns draw(std::mt19937_64& random, std::size_t d, std::size_t count) const {
    Patterns patterns(count);
    for (vx_KernelPattern& pattern : patterns) {
      for (std::size_t i = 0; i < d; ++i) {
        pattern.values.push_back(GetParam().draw(random, i));
        const int oneIn = GetParam().invalidOneIn;
        if (oneIn != 0 && random() % static_cast<std::uint64_t>(oneIn) == 0) {
          pattern.invalidIndices.push_back(static_cast<std::int32_t>(i));
        }
      }
    }
    return patterns;
  }
};

/// A sample as flags say it; null if all are valid, now and then in full all the same.
std::unique_ptr<bool[]> flagsOf(const vx_KernelPattern& pattern, bool areInFull) {
  if (pattern.invalidIndices.empty() && !areInFull) return nullptr;
  auto flags = std::make_unique<bool[]>(pattern.values.size() + 1);
  std::fill(flags.get(), flags.get() + pattern.values.size(), true);
  for (const std::int32_t index : pattern.invalidIndices) {
    flags[static_cast<std::size_t>(index)] = false;
  }
  return flags;
}

constexpr std::size_t kDimensions[] = {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 24, 31, 32, 33, 67};

TEST_P(NormalFoldTest, LearnsTogetherByThePlainRule) {
  for (const std::size_t d : kDimensions) {
    SCOPED_TRACE("dimension " + std::to_string(d));
    std::mt19937_64 random(d);
    const Patterns patterns = draw(random, d, 30);
    for (const double normalizer : {1.0, 3.7}) {
      plain::RunningMoments plain(d);
      for (const vx_KernelPattern& pattern : patterns) plain.fold(pattern, normalizer);
      const std::string expected = momentsOf(plain, d);
      atEverySimdLevel([&] {
        vx_NormalDensity atOnce;
        EXPECT_EQ(atOnce.update(patterns, normalizer), 0);
        EXPECT_EQ(momentsOf(atOnce, d), expected);
        vx_NormalDensity oneByOne;
        for (const vx_KernelPattern& pattern : patterns) {
          const auto flags = flagsOf(pattern, random() % 4 == 0);
          EXPECT_EQ(oneByOne.update(pattern.values.data(), flags.get(), d, normalizer), 0);
        }
        EXPECT_EQ(momentsOf(oneByOne, d), expected);
      });
    }
  }
}

TEST_P(NormalFoldTest, LearnsInABatchByThePlainRule) {
  for (const std::size_t d : kDimensions) {
    SCOPED_TRACE("dimension " + std::to_string(d));
    std::mt19937_64 random(100 + d);
    const Patterns patterns = draw(random, d, 31);
    atEverySimdLevel([&] {
      plain::RunningMoments plain(d);
      vx_NormalDensity density;
      vx_NormalBatch batch(density, d);
      EXPECT_EQ(momentsOf(density, d), momentsOf(plain, d));
      for (const vx_KernelPattern& pattern : patterns) {
        plain.fold(pattern);
        batch.fold(pattern.values.data(), flagsOf(pattern, random() % 8 == 0).get());
        if (random() % 3 != 0) continue;
        batch.write();
        EXPECT_EQ(momentsOf(density, d), momentsOf(plain, d));
      }
      batch.write();
      density.update(patterns, 1.0);
      for (const vx_KernelPattern& pattern : patterns) plain.fold(pattern);
      EXPECT_EQ(momentsOf(density, d), momentsOf(plain, d));
    });
  }
}

TEST_P(NormalFoldTest, LearnsSideBySideByThePlainRule) {
  for (const std::size_t count : kDimensions) {
    SCOPED_TRACE("densities " + std::to_string(count));
    std::mt19937_64 random(200 + count);
    const Patterns patterns = draw(random, count, 31);
    const Patterns more = draw(random, 1, 9);
    atEverySimdLevel([&] {
      std::vector<plain::RunningMoments> plain(count, plain::RunningMoments(1));
      std::vector<vx_NormalDensity> densities(count);
      std::vector<vx_NormalDensity*> pointers;
      for (vx_NormalDensity& density : densities) pointers.push_back(&density);
      vx_NormalLanes lanes(pointers);
      const auto expectSame = [&] {
        for (std::size_t k = 0; k < count; ++k) {
          EXPECT_EQ(momentsOf(densities[k], 1), momentsOf(plain[k], 1)) << k;
        }
      };
      const auto singleOf = [](const vx_KernelPattern& pattern, std::size_t k) {
        const auto& invalid = pattern.invalidIndices;
        const bool isInvalid = std::count(invalid.begin(), invalid.end(), k) != 0;
        return vx_KernelPattern{
            {pattern.values[k]},
            isInvalid ? std::vector<std::int32_t>{0} : std::vector<std::int32_t>{}};
      };
      for (const vx_KernelPattern& pattern : patterns) {
        for (std::size_t k = 0; k < count; ++k) plain[k].fold(singleOf(pattern, k));
        lanes.fold(pattern.values.data(), flagsOf(pattern, random() % 8 == 0).get());
        if (random() % 6 != 0) continue;
        lanes.write();
        expectSame();
      }
      lanes.write();
      for (std::size_t k = 0; k < count; ++k) {
        EXPECT_EQ(densities[k].dimension(), 1u);
        EXPECT_EQ(densities[k].update(more, 1.0), 0);
        for (const vx_KernelPattern& pattern : more) plain[k].fold(pattern);
      }
      expectSame();
    });
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NormalFoldTest,
    testing::Values(FoldRow{"Continuous", continuous, 0}, FoldRow{"Whole", whole, 0},
                    FoldRow{"Zeros", zeros, 0}, FoldRow{"FarOff", farOff, 0},
                    FoldRow{"Scaled", scaled, 0}, FoldRow{"Small", small, 0},
                    FoldRow{"Large", large, 0}, FoldRow{"Odd", odd, 0},
                    FoldRow{"SomeInvalid", continuous, 50}, FoldRow{"ManyInvalid", scaled, 3},
                    FoldRow{"ZerosInvalid", zeros, 10}, FoldRow{"OddInvalid", odd, 9}),
    [](const auto& row) { return row.param.name; });

TEST(NormalFoldZeroTest, MarksNoMeanThatHasASample) {
  // Sums of negative zeros, as only an archive brings them about.
  constexpr std::size_t kMany = 15;
  vx_KernelMatrix mean;
  mean.resize(kMany, 1);
  std::fill(mean.elements.begin(), mean.elements.end(), -0.0);
  vx_KernelMatrix covariance;
  covariance.resize(kMany, kMany);
  std::fill(covariance.elements.begin(), covariance.elements.end(), 1.0);
  const std::vector<double> tiny(kMany, -5e-324);
  atEverySimdLevel([&] {
    vx_NormalDensity density;
    density.restore(mean, covariance, 5);
    EXPECT_EQ(density.update(tiny.data(), nullptr, kMany, 1.0), 0);
    for (std::size_t i = 0; i < kMany; ++i) EXPECT_FALSE(isMarked(density.mean(i))) << i;
  });
}

TEST(NormalBatchTest, TakesNothingPerSample) {
  const std::vector<double> x(200, 0.25);
  vx_NormalDensity together;
  vx_NormalBatch batch(together, x.size());
  std::vector<vx_NormalDensity> singles(x.size());
  std::vector<vx_NormalDensity*> pointers;
  for (vx_NormalDensity& single : singles) pointers.push_back(&single);
  vx_NormalLanes lanes(pointers);
  const AllocationMeter meter;
  for (int i = 0; i < 10; ++i) {
    batch.fold(x.data(), nullptr);
    lanes.fold(x.data(), nullptr);
  }
  batch.write();
  lanes.write();
  EXPECT_EQ(meter.calls(), 0u);
  EXPECT_EQ(together.sampleCount(), 10);
  EXPECT_EQ(singles.back().sampleCount(), 10);
}

}  // namespace
