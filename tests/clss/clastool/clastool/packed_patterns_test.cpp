// SPDX-License-Identifier: MIT
#include "clastool/clastool/packed_patterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "tests/clss/clastool/knn/knn_data.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/samples.h"
#include "tests/support/simd_levels.h"

namespace {

using Patterns = vx_PackedPatterns::Patterns;
constexpr std::size_t kLanes = vx_PackedPatterns::kLanes;

std::vector<vxPtrHandle<vxFeaturePattern>> changeable(std::size_t count, std::size_t d,
                                                      std::uint64_t seed = 1) {
  knn_data::Random random(seed);
  std::vector<vxPtrHandle<vxFeaturePattern>> patterns;
  for (std::size_t i = 0; i < count; ++i) {
    std::vector<double> x(d);
    for (double& value : x) value = knn_data::fraction(random);
    patterns.emplace_back(new vxFeaturePattern(x, {}));
  }
  return patterns;
}

Patterns handles(const std::vector<vxPtrHandle<vxFeaturePattern>>& patterns) {
  return {patterns.begin(), patterns.end()};
}

/// The codes of one pattern, by what is said about lines.
std::vector<std::uint16_t> codesOf(const vx_PackedPatterns& packed, std::size_t index) {
  const vx_PackedPatterns::Line* lines = packed.lines() + index / kLanes * packed.numLines();
  const std::size_t lane = index % kLanes;
  std::vector<std::uint16_t> codes;
  for (std::size_t j = 0; j < packed.numPairs(); ++j) {
    if (packed.isWide()) {
      const auto& words = lines[2 * j + lane / 16].words;
      codes.push_back(words[2 * (lane % 16)]);
      codes.push_back(words[2 * (lane % 16) + 1]);
    } else {
      const std::uint16_t word = lines[j].words[lane];
      codes.push_back(word & 0xff);
      codes.push_back(word >> 8);
    }
  }
  return codes;
}

void expectWellLaidOut(const vx_PackedPatterns& packed, const Patterns& patterns) {
  ASSERT_TRUE(packed.isUsable());
  ASSERT_EQ(packed.size(), patterns.size());
  ASSERT_EQ(packed.numBlocks(), (patterns.size() + kLanes - 1) / kLanes);
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    const std::vector<double>& x = patterns[i]->featureMeasurements(true);
    EXPECT_EQ(&packed.pattern(i), patterns[i].get());
    EXPECT_TRUE(std::equal(x.begin(), x.end(), packed.row(i)));
    std::vector<std::uint16_t> codes(packed.grid().numCodes());
    const vx_CodeGrid::Residual residual = packed.grid().encode(x.data(), codes.data());
    EXPECT_LE(residual.absolute, packed.residual().absolute);
    EXPECT_LE(residual.euclidean, packed.residual().euclidean);
    codes.resize(2 * packed.numPairs());
    ASSERT_EQ(codesOf(packed, i), codes) << i;
  }
}

TEST(PackedPatternsTest, LaysOutRowsAndCodes) {
  for (const std::size_t d : {1, 2, 3, 7, 8, 9, 15, 70}) {
    for (const std::size_t count : {2, 31, 32, 33, 100}) {
      const Patterns patterns = handles(changeable(count, d));
      atEverySimdLevel([&] { expectWellLaidOut(vx_PackedPatterns(patterns), patterns); });
    }
  }
}

TEST(PackedPatternsTest, TakesUpPatternsUntilTheyAreTwiceAsMany) {
  const auto all = changeable(200, 3);
  Patterns patterns = handles({all.begin(), all.begin() + 40});
  vx_PackedPatterns packed(patterns);
  while (patterns.size() < 80) {
    patterns.push_back(all[patterns.size()]);
    ASSERT_TRUE(packed.append(patterns));
    ASSERT_NO_FATAL_FAILURE(expectWellLaidOut(packed, patterns));
  }
  patterns.push_back(all[80]);
  EXPECT_FALSE(packed.append(patterns));
}

TEST(PackedPatternsTest, TakesUpNothingThatItCannotHold) {
  for (const vxFeaturePattern& odd :
       {vxFeaturePattern({1.0, 2.0}, {1}), vxFeaturePattern({1.0}, {}),
        vxFeaturePattern({1.0, 2.0, 3.0}, {}), vxFeaturePattern({1.0, kNaN}, {}),
        vxFeaturePattern({-kInfinity, 1.0}, {}), vxFeaturePattern({}, {})}) {
    Patterns patterns = handles(changeable(40, 2));
    vx_PackedPatterns packed(patterns);
    patterns.emplace_back(new vxFeaturePattern(odd));
    EXPECT_FALSE(packed.append(patterns));
    EXPECT_FALSE(vx_PackedPatterns(patterns).isUsable());
    std::swap(patterns.front(), patterns.back());
    EXPECT_FALSE(vx_PackedPatterns(patterns).isUsable());
  }
  Patterns patterns = handles(changeable(40, 2));
  vx_PackedPatterns packed(patterns);
  patterns.emplace_back();
  EXPECT_FALSE(packed.append(patterns));
  EXPECT_FALSE(vx_PackedPatterns(patterns).isUsable());
  std::swap(patterns.front(), patterns.back());
  EXPECT_FALSE(vx_PackedPatterns(patterns).isUsable());
}

TEST(PackedPatternsTest, IsNotUsableWhereTheGridIsNot) {
  Patterns patterns;
  EXPECT_FALSE(vx_PackedPatterns(patterns).isUsable());
  EXPECT_FALSE(vx_PackedPatterns(patterns).append(patterns));
  patterns.push_back(sharedPattern({1.0, 2.0}));
  for (int i = 0; i < 40; ++i) {
    vx_PackedPatterns packed(patterns);
    EXPECT_FALSE(packed.isUsable());
    patterns.push_back(i % 2 == 0 ? patterns[0] : sharedPattern({1.0, 2.0}));
    EXPECT_FALSE(packed.append(patterns));
  }
}

/// A way to change a pattern that a host shares with a training set.
struct Change {
  const char* name;
  void (*apply)(vxFeaturePattern& pattern);
  bool leavesValue = false;
};

void PrintTo(const Change& row, std::ostream* out) { *out << row.name; }

class PackedPatternsChangeTest : public testing::TestWithParam<Change> {};

TEST_P(PackedPatternsChangeTest, IsNoticedInAnyPlaceByEverySetThatHoldsThePattern) {
  for (const std::size_t place : {0, 17, 31, 32, 39}) {
    const auto shared = changeable(40, 2);
    const auto others = changeable(40, 2, 2);
    auto mixed = others;
    mixed[place / 2] = shared[place];
    mixed[place / 2 + 1] = shared[place];
    const vx_PackedPatterns holder(handles(shared));
    const vx_PackedPatterns alsoHolder(handles(mixed));
    auto gone = std::make_unique<vx_PackedPatterns>(handles(shared));
    const vx_PackedPatterns stranger(handles(others));
    EXPECT_TRUE(holder.isUsable() && alsoHolder.isUsable() && gone->isUsable());
    gone.reset();

    GetParam().apply(*shared[place]);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(holder.isUsable(), GetParam().leavesValue);
      EXPECT_EQ(alsoHolder.isUsable(), GetParam().leavesValue);
      EXPECT_TRUE(stranger.isUsable());
    }
    *shared[place] = *changeable(40, 2)[place];
    EXPECT_EQ(holder.isUsable(), GetParam().leavesValue);
  }
}

TEST_P(PackedPatternsChangeTest, IsNoticedAlsoInAPatternThatWasTakenUpLater) {
  const auto shared = changeable(40, 2);
  Patterns patterns = handles({shared.begin(), shared.end() - 1});
  vx_PackedPatterns packed(patterns);
  patterns.push_back(shared.back());
  ASSERT_TRUE(packed.append(patterns));
  EXPECT_TRUE(packed.isUsable());
  GetParam().apply(*shared.back());
  EXPECT_EQ(packed.isUsable(), GetParam().leavesValue);
  patterns.push_back(sharedPattern({0.0, 0.0}));
  EXPECT_EQ(packed.append(patterns), GetParam().leavesValue);
}

TEST_P(PackedPatternsChangeTest, IsNoticedWhereTakingUpComesBeforeTheNextLook) {
  const auto shared = changeable(40, 2);
  Patterns patterns = handles(shared);
  vx_PackedPatterns packed(patterns);
  GetParam().apply(*shared[5]);
  patterns.push_back(sharedPattern({0.0, 0.0}));
  EXPECT_TRUE(packed.append(patterns));
  EXPECT_EQ(packed.isUsable(), GetParam().leavesValue);
}

void assignAnother(vxFeaturePattern& pattern) { pattern = vxFeaturePattern({0.5, 0.25}, {}); }
void copyAnother(vxFeaturePattern& pattern) {
  const vxFeaturePattern other({0.5, 0.25}, {});
  pattern = other;
}
void assignInvalid(vxFeaturePattern& pattern) {
  pattern = vxFeaturePattern(pattern.featureMeasurements(false), {0});
}
void assignLonger(vxFeaturePattern& pattern) { pattern = vxFeaturePattern({0.5, 0.25, 1.0}, {}); }
void assignNothing(vxFeaturePattern& pattern) { pattern = vxFeaturePattern({}, {}); }
void assignNaN(vxFeaturePattern& pattern) { pattern = vxFeaturePattern({0.5, kNaN}, {}); }
void moveFrom(vxFeaturePattern& pattern) { const vxFeaturePattern taken(std::move(pattern)); }
void moveAssignFrom(vxFeaturePattern& pattern) {
  vxFeaturePattern taken({1.0}, {});
  taken = std::move(pattern);
}
void swapWithAnother(vxFeaturePattern& pattern) {
  vxFeaturePattern other({1.0, 2.0}, {});
  std::swap(pattern, other);
}
void loadInPlace(vxFeaturePattern& pattern) {
  vxFeaturePattern other({1.0, 2.0}, {});
  vxPersistent& target = pattern;
  load(stored(static_cast<vxPersistent&>(other)), target);
}
void assignItself(vxFeaturePattern& pattern) { pattern = *&pattern; }
void assignACopy(vxFeaturePattern& pattern) { pattern = vxFeaturePattern(pattern); }
void readIt(vxFeaturePattern& pattern) { pattern.invalidFeatureIndices(); }
void moveAwayAndBack(vxFeaturePattern& pattern) {
  vxFeaturePattern taken(std::move(pattern));
  pattern = std::move(taken);
}
void loadNothing(vxFeaturePattern& pattern) {
  vxPersistent& target = pattern;
  EXPECT_FALSE(succeedsOrRefuses([&] { load(std::string(2, '\1'), target); }));
}

INSTANTIATE_TEST_SUITE_P(
    Ways, PackedPatternsChangeTest,
    testing::Values(Change{"AssignAnother", &assignAnother}, Change{"CopyAnother", &copyAnother},
                    Change{"AssignInvalid", &assignInvalid}, Change{"AssignLonger", &assignLonger},
                    Change{"AssignNothing", &assignNothing}, Change{"AssignNaN", &assignNaN},
                    Change{"MoveFrom", &moveFrom}, Change{"MoveAssignFrom", &moveAssignFrom},
                    Change{"SwapWithAnother", &swapWithAnother},
                    Change{"LoadInPlace", &loadInPlace},
                    Change{"AssignItself", &assignItself, true},
                    Change{"AssignACopy", &assignACopy, true}, Change{"ReadIt", &readIt, true},
                    Change{"MoveAwayAndBack", &moveAwayAndBack, true},
                    Change{"LoadNothing", &loadNothing, true}),
    [](const auto& row) { return row.param.name; });

TEST(PackedPatternsTest, MayDieBeforeOrAfterOthersThatHoldItsPatterns) {
  for (int last = 0; last < 3; ++last) {
    const auto shared = changeable(40, 2);
    std::vector<std::unique_ptr<vx_PackedPatterns>> sets;
    for (int i = 0; i < 3; ++i) {
      sets.push_back(std::make_unique<vx_PackedPatterns>(handles(shared)));
    }
    std::swap(sets[static_cast<std::size_t>(last)], sets[2]);
    sets.erase(sets.begin(), sets.begin() + 2);
    EXPECT_TRUE(sets[0]->isUsable());
    *shared[3] = vxFeaturePattern({9.0, 9.0}, {});
    EXPECT_FALSE(sets[0]->isUsable());
    // A new one has the new value.
    expectWellLaidOut(vx_PackedPatterns(handles(shared)), handles(shared));
  }
}

}  // namespace
