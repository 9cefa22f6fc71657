// SPDX-License-Identifier: MIT
#include "stamp_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include "tests/support/allocation_meter.h"

namespace {

TEST(StampTableTest, NumbersStampsInTheOrderInWhichTheyCome) {
  vx_StampTable table;
  EXPECT_EQ(table.size(), 0u);
  EXPECT_EQ(table.add(7), 0u);
  EXPECT_EQ(table.add(1), 1u);
  EXPECT_EQ(table.add(7), 0u);
  EXPECT_EQ(table.add(~std::uint64_t{0}), 2u);
  EXPECT_EQ(table.add(1), 1u);
  EXPECT_EQ(table.size(), 3u);
}

TEST(StampTableTest, AgreesWithAMapWhateverTheDistanceOfStamps) {
  for (const std::uint64_t distance : {2u, 4u, 32u, 1u << 10, 1u << 20}) {
    vx_StampTable table;
    std::map<std::uint64_t, std::uint32_t> plain;
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
      const std::uint64_t stamp = 1 + distance * (random() % 8000);
      const auto number = static_cast<std::uint32_t>(plain.size());
      ASSERT_EQ(table.add(stamp), plain.try_emplace(stamp, number).first->second)
          << "distance " << distance << ", step " << step;
    }
    EXPECT_EQ(table.size(), plain.size());
  }
}

TEST(StampTableTest, ForgetsTheLastOnesWithoutTakingMemory) {
  std::mt19937 random(8);
  vx_StampTable table;
  std::vector<std::uint64_t> plain;
  for (int round = 0; round < 300; ++round) {
    for (auto i = random() % 200; i > 0; --i) {
      const std::uint64_t stamp = 2 * (random() % 5000) + 1;
      const auto known = std::find(plain.begin(), plain.end(), stamp);
      const auto expected = static_cast<std::uint32_t>(known - plain.begin());
      if (known == plain.end()) plain.push_back(stamp);
      ASSERT_EQ(table.add(stamp), expected) << "round " << round;
    }
    plain.resize(plain.size() - random() % (plain.size() + 1));
    const AllocationMeter meter;
    table.shrink(plain.size());
    const std::size_t calls = meter.calls();
    ASSERT_EQ(calls, 0u);
    ASSERT_EQ(table.size(), plain.size());
  }
}

}  // namespace
