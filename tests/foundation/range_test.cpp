// SPDX-License-Identifier: MIT
#include "vxfoundation/range.h"

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "vxfoundation/archive.h"

namespace {

static_assert(std::is_copy_assignable_v<vxRange>);

TEST(RangeTest, KeepsItsEnds) {
  const vxRange range(-1.5, 2.0);
  EXPECT_EQ(range.low(), -1.5);
  EXPECT_EQ(range.high(), 2.0);
}

TEST(RangeTest, ContainsItsEndsAndWhatLiesBetween) {
  const vxRange range(-1.0, 2.0);
  for (const double inside : {-1.0, 2.0, 0.0, -0.0}) EXPECT_TRUE(range.isWithin(inside)) << inside;
  EXPECT_FALSE(range.isWithin(std::nextafter(-1.0, -2.0)));
  EXPECT_FALSE(range.isWithin(std::nextafter(2.0, 3.0)));
  EXPECT_FALSE(range.isWithin(kInfinity));
  EXPECT_FALSE(range.isWithin(-kInfinity));
  EXPECT_FALSE(range.isWithin(kNaN));
}

TEST(RangeTest, OfOnePointContainsThatPoint) {
  EXPECT_TRUE(vxRange(3.0, 3.0).isWithin(3.0));
  EXPECT_TRUE(vxRange(0.0, 0.0).isWithin(-0.0));
  EXPECT_FALSE(vxRange(3.0, 3.0).isWithin(std::nextafter(3.0, 4.0)));
}

TEST(RangeTest, WithReversedEndsContainsNothing) {
  for (const double value : {1.0, 2.0, 1.5, 0.0, kInfinity, -kInfinity, kNaN}) {
    EXPECT_FALSE(vxRange(2.0, 1.0).isWithin(value)) << value;
    EXPECT_FALSE(vxRange(kInfinity, -kInfinity).isWithin(value)) << value;
  }
}

TEST(RangeTest, MayBeOpenOnOneSide) {
  const vxRange above(1.0, kInfinity);
  EXPECT_TRUE(above.isWithin(kInfinity));
  EXPECT_TRUE(above.isWithin(kMost));
  EXPECT_FALSE(above.isWithin(0.0));
  EXPECT_FALSE(above.isWithin(kNaN));
  const vxRange below(-kInfinity, 1.0);
  EXPECT_TRUE(below.isWithin(-kInfinity));
  EXPECT_FALSE(below.isWithin(kInfinity));
  EXPECT_FALSE(below.isWithin(kNaN));
}

TEST(RangeTest, WithNaNEndsContainsNothing) {
  for (const double value : {0.0, kInfinity, -kInfinity, kNaN}) {
    EXPECT_FALSE(vxRange(kNaN, kNaN).isWithin(value)) << value;
    EXPECT_FALSE(vxRange(-kInfinity, kNaN).isWithin(value)) << value;
    EXPECT_FALSE(vxRange(kNaN, kInfinity).isWithin(value)) << value;
  }
}

TEST(RangeTest, ContainsEveryDoubleWhenFull) {
  for (const double value : {0.0, -0.0, kMost, -kMost, kInfinity, -kInfinity, kNaN}) {
    EXPECT_TRUE(vxRange::FullRange().isWithin(value)) << value;
  }
}

TEST(RangeTest, IsTheFullOneWhenItHasItsEnds) {
  const vxRange range(-kInfinity, kInfinity);
  EXPECT_TRUE(range == vxRange::FullRange());
  EXPECT_TRUE(range.isWithin(kNaN));
  EXPECT_FALSE(vxRange(-kMost, kMost) == vxRange::FullRange());
}

TEST(RangeTest, ComparesItsEndsExactly) {
  EXPECT_TRUE(vxRange(1.0, 2.0) == vxRange(1.0, 2.0));
  EXPECT_FALSE(vxRange(1.0, 2.0) != vxRange(1.0, 2.0));
  EXPECT_TRUE(vxRange(1.0, 2.0) != vxRange(1.0, std::nextafter(2.0, 3.0)));
  EXPECT_TRUE(vxRange(1.0, 2.0) != vxRange(std::nextafter(1.0, 0.0), 2.0));
  EXPECT_TRUE(vxRange(0.0, 0.0) == vxRange(-0.0, 0.0));
  EXPECT_FALSE(vxRange(kNaN, 1.0) == vxRange(kNaN, 1.0));
}

TEST(RangeTest, IsArchivedAsItsTwoEnds) {
  vxRange range(1.0, -2.0);
  EXPECT_EQ(storedHex(range), packedHex("000000000000f03f 00000000000000c0"));
  EXPECT_EQ(storedHex(vxRange::FullRange()), packedHex("000000000000f0ff 000000000000f07f"));
}

TEST(RangeTest, ComesBackFromAnArchive) {
  vxRange target(5.0, 6.0);
  load(stored(vxRange(-0.0, 2.0)), target);
  EXPECT_TRUE(target == vxRange(0.0, 2.0));
  EXPECT_TRUE(std::signbit(target.low()));
  load(stored(vxRange::FullRange()), target);
  EXPECT_TRUE(target.isWithin(kNaN));
}

TEST(RangeTest, StaysAsItWasAfterALoadThatFails) {
  forEachTruncation(stored(vxRange(1.0, 2.0)), [](const std::string& bytes) {
    vxRange target(5.0, 6.0);
    EXPECT_THROW(load(bytes, target), vxArchive::Malformed);
    EXPECT_TRUE(target == vxRange(5.0, 6.0));
  });
}

}  // namespace
