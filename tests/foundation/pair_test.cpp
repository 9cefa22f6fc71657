// SPDX-License-Identifier: MIT
#include "vxfoundation/pair.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/numbers.h"

namespace {

static_assert(std::is_same_v<decltype(vxPair<double>::first), double>);
static_assert(std::is_same_v<decltype(vxPair<double>::second), double>);
static_assert(!std::is_convertible_v<double, vxPair<double>>);

TEST(PairTest, IsZeroByDefault) {
  const vxPair<double> pair;
  EXPECT_EQ(pair.first, 0.0);
  EXPECT_EQ(pair.second, 0.0);
  const auto* counts = new vxPair<long>;
  EXPECT_EQ(counts->first, 0);
  EXPECT_EQ(counts->second, 0);
  delete counts;
}

TEST(PairTest, KeepsTheOrderOfItsValues) {
  const vxPair<double> pair(1.5, -2.0);
  EXPECT_EQ(pair.first, 1.5);
  EXPECT_EQ(pair.second, -2.0);
}

TEST(PairTest, KeepsAnyDouble) {
  const vxPair<double> pair(-kInfinity, std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(pair.first, -kInfinity);
  EXPECT_NE(pair.second, pair.second);
}

TEST(PairTest, IsChangedThroughItsMembers) {
  vxPair<double> pair(1.0, 2.0);
  const vxPair<double> copy(pair);
  pair.second = 9.0;
  EXPECT_EQ(copy.second, 2.0);
  pair = copy;
  EXPECT_EQ(pair.second, 2.0);
}

TEST(PairTest, HoldsOtherTypesAndStandsInContainers) {
  std::vector<vxPair<std::string>> pairs(2);
  pairs[1] = vxPair<std::string>("low", "high");
  EXPECT_EQ(pairs[0].first, "");
  EXPECT_EQ(pairs[1].second, "high");
}

}  // namespace
