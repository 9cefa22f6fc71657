// SPDX-License-Identifier: MIT
#include "archive_bytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "tests/support/error_matcher.h"

namespace {

constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();

TEST(CheckedCountTest, TakesWhatFits32Bits) {
  EXPECT_EQ(vx_checkedCount(0), 0u);
  EXPECT_EQ(vx_checkedCount(kMost), kMost);
}

TEST(CheckedCountTest, RefusesMore) {
  if (sizeof(std::size_t) == sizeof(std::uint32_t)) GTEST_SKIP() << "no count is larger here";
  const auto least = static_cast<std::size_t>(std::uint64_t{kMost} + 1);
  expectThrows<vxArchive::Unstorable>([&] { vx_checkedCount(least); },
                                      L"A count does not fit 32 bits");
}

}  // namespace
