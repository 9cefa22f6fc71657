// SPDX-License-Identifier: MIT
#include "clastool/clastool/lane_adder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/numbers.h"
#include "tests/support/simd_levels.h"
#include "tests/support/weighting_problem.h"

namespace {

/// Numbers of all sizes, now and then one that is none.
double anyNumber(std::mt19937_64& random) {
  const double odd[] = {0.0,   -0.0,      std::numeric_limits<double>::denorm_min(),
                        1e308, kInfinity, kNaN};
  if (random() % 50 == 0) return odd[random() % 6];
  const double fraction = static_cast<double>(random() >> 11) * 0x1p-53 - 0.25;
  return std::ldexp(fraction, static_cast<int>(random() % 60));
}

std::vector<double> anyNumbers(std::size_t count, std::mt19937_64& random) {
  std::vector<double> numbers(count);
  for (double& number : numbers) number = anyNumber(random);
  return numbers;
}

TEST(LaneAdderTest, AddsEveryTermToEveryLaneInOrder) {
  std::mt19937_64 random(1);
  for (std::size_t lanes = 0; lanes <= 200; lanes += vx_LaneAdder::kMultiple) {
    for (const std::size_t count : {0u, 1u, 2u, 7u, 40u}) {
      SCOPED_TRACE(testing::Message() << lanes << " lanes, " << count << " terms");
      const std::vector<double> start = anyNumbers(lanes + 1, random);
      const std::vector<double> terms = anyNumbers(count, random);
      atEverySimdLevel([&] {
        std::vector<double> sums = start;
        vx_LaneAdder::forSimd().add(sums.data(), lanes, terms.data(), count);
        for (std::size_t i = 0; i < lanes; ++i) {
          double sum = start[i];
          for (const double term : terms) sum += term;
          ASSERT_TRUE(isSameNumber(sums[i], sum)) << "lane " << i;
        }
        EXPECT_TRUE(isSameNumber(sums[lanes], start[lanes])) << "past the last lane";
      });
    }
  }
}

TEST(LaneAdderTest, HasAWidthThatItsLanesFill) {
  atEverySimdLevel([] {
    const std::size_t width = vx_LaneAdder::forSimd().width;
    EXPECT_EQ(width % vx_LaneAdder::kMultiple, 0u);
    EXPECT_EQ(width & (width - 1), 0u);
    EXPECT_LE(width, 64u);
  });
}

}  // namespace
