// SPDX-License-Identifier: MIT
#include "vxclss/data_generator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "tests/support/error_matcher.h"
#include "vxclss/errors.h"
#include "vxfoundation/random.h"

namespace {

using Pairs = std::vector<vxPair<double>>;
using Provider = vxClassifierDataProviderMemory;
using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;

constexpr wchar_t kBadIndex[] = L"Feature pattern index must be >=0 and < number of patterns.";
constexpr wchar_t kBadCount[] =
    L"Feature pattern must have the same number of measurements as the rest of the data.";

/// `count` equal distributions.
Pairs repeated(std::size_t count, double mean, double spread) {
  return Pairs(count, vxPair<double>(mean, spread));
}

std::vector<std::vector<double>> measurementsOf(const Provider& provider) {
  std::vector<std::vector<double>> rows;
  for (long i = 0; i < provider.numPatterns(); ++i) {
    rows.push_back(provider.featurePattern(i)->featureMeasurements(true));
  }
  return rows;
}

std::vector<long> labelsOf(const Provider& provider) {
  std::vector<long> labels;
  for (long i = 0; i < provider.numPatterns(); ++i) labels.push_back(provider.categoryLabel(i));
  return labels;
}

/// The same patterns, not only equal ones.
bool sharesPatterns(const Provider& a, const Provider& b) {
  if (a.numPatterns() != b.numPatterns()) return false;
  for (long i = 0; i < a.numPatterns(); ++i) {
    if (a.featurePattern(i) != b.featurePattern(i)) return false;
  }
  return true;
}

/// What a class generator draws, by its definition.
std::vector<std::vector<double>> drawn(const Pairs& distributions, long numPatterns) {
  vxRandomGaussian random(1);
  std::vector<std::vector<double>> rows;
  for (long i = 0; i < numPatterns; ++i) {
    rows.emplace_back();
    for (const vxPair<double>& pair : distributions) {
      rows.back().push_back(random.next(pair.first, pair.second));
    }
  }
  return rows;
}

/// The order in which the total generator hands out its first `count` patterns: every place is
/// swapped with one drawn from the whole list.
std::vector<std::size_t> shuffled(std::size_t count) {
  vxRandomUniform random(1);
  std::vector<std::size_t> order(count);
  for (std::size_t i = 0; i < count; ++i) order[i] = i;
  for (std::size_t i = 0; i < count; ++i) {
    auto place = static_cast<std::size_t>(random.next(0.0, static_cast<double>(count)));
    if (place == count) place = count - 1;
    std::swap(order[place], order[i]);
  }
  return order;
}

TEST(ClassDataGeneratorTest, MakesNothingByDefault) {
  vx_ClassDataGenerator generator;
  for (int call = 0; call < 3; ++call) EXPECT_EQ(generator.generateData(), Provider());
}

TEST(ClassDataGeneratorTest, MakesNothingForLessThanOnePattern) {
  for (const long numPatterns : {0L, -1L, -2147483647L - 1}) {
    EXPECT_EQ(vx_ClassDataGenerator(repeated(2, 0, 1), numPatterns).generateData(), Provider());
    EXPECT_EQ(vx_ClassDataGenerator({}, numPatterns).generateData(), Provider());
  }
}

TEST(ClassDataGeneratorTest, DrawsEachMeasurementOfEachPatternInOrder) {
  const Pairs pairs = {{0, 1}, {10, 1}};
  vx_ClassDataGenerator generator(pairs, 5);
  const Provider data = generator.generateData();
  EXPECT_EQ(data.numPatterns(), 5);
  EXPECT_EQ(data.numMeasurements(), 2);
  EXPECT_EQ(labelsOf(data), std::vector<long>(5, 0));
  EXPECT_EQ(measurementsOf(data), drawn(pairs, 5));
  EXPECT_EQ(data.name(), L"");
  EXPECT_EQ(data.description(), L"");
}

TEST(ClassDataGeneratorTest, HandsOutTheSamePatternsAfterwards) {
  vx_ClassDataGenerator generator({{0, 1}, {10, 1}}, 5);
  const Provider first = generator.generateData();
  EXPECT_TRUE(sharesPatterns(generator.generateData(), first));
  EXPECT_TRUE(sharesPatterns(generator.generateData(), first));
}

TEST(ClassDataGeneratorTest, HandsOutACopyThatTheCallerMayChange) {
  vx_ClassDataGenerator generator({{0, 1}}, 2);
  Provider first = generator.generateData();
  first.setName(L"mine");
  first.addData(first.featurePattern(0), 7);
  EXPECT_EQ(generator.generateData().numPatterns(), 2);
  EXPECT_EQ(generator.generateData().name(), L"");
}

TEST(ClassDataGeneratorTest, DrawsTheSameNumbersInEveryGenerator) {
  const Pairs pairs = {{1.5, 0.25}, {-3, 2}, {0, 1e-3}};
  vx_ClassDataGenerator a(pairs, 20);
  vx_ClassDataGenerator b(pairs, 20);
  EXPECT_EQ(a.generateData(), b.generateData());
}

TEST(ClassDataGeneratorTest, DeviatesAlikeWhateverTheMeans) {
  // Powers of two as spreads and small whole means, so that no deviation is rounded away.
  vx_ClassDataGenerator centred({{0, 1}, {0, 2}}, 30);
  vx_ClassDataGenerator moved({{4, 1}, {-8, 2}}, 30);
  const auto deviations = measurementsOf(centred.generateData());
  const auto values = measurementsOf(moved.generateData());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(values[i][0], 4 + deviations[i][0]) << "pattern " << i;
    EXPECT_EQ(values[i][1], -8 + deviations[i][1]) << "pattern " << i;
  }
}

TEST(ClassDataGeneratorTest, StartsWithTheSameNumbersWhateverTheCount) {
  vx_ClassDataGenerator few({{0, 1}, {5, 3}}, 3);
  vx_ClassDataGenerator many({{0, 1}, {5, 3}}, 9);
  const auto rows = measurementsOf(many.generateData());
  EXPECT_EQ(measurementsOf(few.generateData()), decltype(rows)(rows.begin(), rows.begin() + 3));
}

TEST(ClassDataGeneratorTest, GivesTheMeanForASpreadOf0) {
  vx_ClassDataGenerator generator({{2.5, 0}}, 3);
  EXPECT_EQ(measurementsOf(generator.generateData()),
            (std::vector<std::vector<double>>{{2.5}, {2.5}, {2.5}}));
}

TEST(ClassDataGeneratorTest, HasTheGoldenNumbers) {
  vx_ClassDataGenerator generator({{0, 1}, {10, 0.5}}, 3);
  EXPECT_EQ(measurementsOf(generator.generateData()),
            (std::vector<std::vector<double>>{{0x1.e267c87ac62ebp+0, 0x1.430957b0f3a1cp+3},
                                              {0x1.4d55c9633557cp+0, 0x1.2172f4fc66116p+3},
                                              {0x1.c0d732ae4b3ddp-2, 0x1.3352a0ab6bf3ep+3}}));
}

TEST(ClassDataGeneratorTest, AddsABatchAtEachCallWithoutMeasurements) {
  vx_ClassDataGenerator generator({}, 3);
  const Provider first = generator.generateData();
  EXPECT_EQ(first.numPatterns(), 3);
  EXPECT_EQ(first.numMeasurements(), 0);
  EXPECT_EQ(generator.generateData().numPatterns(), 6);
  EXPECT_EQ(generator.generateData().numPatterns(), 9);
  EXPECT_EQ(labelsOf(generator.generateData()), std::vector<long>(12, 0));
  EXPECT_EQ(first.numPatterns(), 3);
}

TEST(ClassDataGeneratorTest, CopiesWhatItHasMade) {
  vx_ClassDataGenerator generator({{0, 1}}, 4);
  vx_ClassDataGenerator before(generator);
  const Provider data = generator.generateData();
  vx_ClassDataGenerator after(generator);
  vx_ClassDataGenerator assigned({{5, 5}, {6, 6}}, 7);
  assigned.generateData();
  assigned = generator;
  EXPECT_TRUE(sharesPatterns(after.generateData(), data));
  EXPECT_TRUE(sharesPatterns(assigned.generateData(), data));
  EXPECT_FALSE(sharesPatterns(before.generateData(), data)) << "made afresh";
  EXPECT_EQ(before.generateData(), data);
}

TEST(TotalDataGeneratorTest, MakesNothingByDefault) {
  vx_TotalDataGenerator generator;
  EXPECT_EQ(generator.generateData(), Provider());
  EXPECT_EQ(generator.generateData(), Provider());
}

TEST(TotalDataGeneratorTest, HandsOutAsManyPatternsAsAPatternHasMeasurements) {
  const Pairs first = {{0, 1}, {10, 1}, {20, 1}};
  const Pairs second = {{5, 1}, {15, 1}, {25, 1}};
  vx_TotalDataGenerator generator(
      {vx_ClassDataGenerator(first, 10), vx_ClassDataGenerator(second, 10)});
  const Provider data = generator.generateData();
  const auto rows = drawn(first, 10);
  std::vector<std::vector<double>> expected;
  for (const std::size_t index : shuffled(3)) expected.push_back(rows[index]);
  EXPECT_EQ(measurementsOf(data), expected);
  EXPECT_EQ(labelsOf(data), std::vector<long>(3, 0)) << "of the first category alone";
}

TEST(TotalDataGeneratorTest, SwapsEachPlaceWithOneOfTheWholeList) {
  for (const std::size_t count : {1u, 2u, 5u, 17u, 100u}) {
    const Pairs pairs = repeated(count, 1.5, 2.0);
    const auto numPatterns = static_cast<long>(count) + 2;
    vx_TotalDataGenerator generator({vx_ClassDataGenerator(pairs, numPatterns)});
    const auto rows = drawn(pairs, numPatterns);
    std::vector<std::vector<double>> expected;
    for (const std::size_t index : shuffled(count)) expected.push_back(rows[index]);
    EXPECT_EQ(measurementsOf(generator.generateData()), expected) << count;
  }
}

TEST(TotalDataGeneratorTest, HasTheGoldenOrder) {
  EXPECT_EQ(shuffled(8), (std::vector<std::size_t>{6, 2, 1, 7, 0, 4, 5, 3}));
  vx_TotalDataGenerator generator({vx_ClassDataGenerator(repeated(8, 0, 1), 8)});
  std::vector<double> firsts;
  for (const auto& row : measurementsOf(generator.generateData())) firsts.push_back(row[0]);
  EXPECT_EQ(firsts,
            (std::vector<double>{0x1.ea6573d1a462ap-1, -0x1.9b5343937a773p+1, 0x1.153c160bd1468p+0,
                                 0x1.061599693170ep-5, 0x1.e267c87ac62ebp+0, -0x1.822dda0a61895p-4,
                                 -0x1.3a412a2ec3d8fp+0, -0x1.5291f682e0fd9p+0}));
}

TEST(TotalDataGeneratorTest, LabelsACategoryWithThePlaceOfItsGenerator) {
  // Generators that make nothing, and one whose patterns have no measurements, hand out none.
  const vx_ClassDataGenerator none;
  const vx_ClassDataGenerator noMeasurements({}, 4);
  const vx_ClassDataGenerator some(repeated(2, 3, 1), 2);
  vx_TotalDataGenerator generator({none, noMeasurements, none, some, some});
  const Provider data = generator.generateData();
  EXPECT_EQ(labelsOf(data), (std::vector<long>{3, 3}));
  EXPECT_EQ(data.numMeasurements(), 2);
}

TEST(TotalDataGeneratorTest, HandsOutTheSamePatternsAfterwards) {
  const vx_ClassDataGenerator one(repeated(4, 0, 1), 4);
  vx_TotalDataGenerator generator({one, one});
  const Provider first = generator.generateData();
  EXPECT_EQ(first.numPatterns(), 4);
  EXPECT_TRUE(sharesPatterns(generator.generateData(), first));

  vx_TotalDataGenerator other({one, one});
  EXPECT_EQ(other.generateData(), first);
  EXPECT_FALSE(sharesPatterns(other.generateData(), first));
}

TEST(TotalDataGeneratorTest, FillsItsOwnGeneratorsAndNotTheCallers) {
  vx_ClassDataGenerator unused(repeated(3, 0, 1), 3);
  vx_TotalDataGenerator generator({unused});
  const Provider data = generator.generateData();
  const Provider mine = unused.generateData();
  for (long i = 0; i < 3; ++i) {
    for (long j = 0; j < 3; ++j) EXPECT_NE(data.featurePattern(i), mine.featurePattern(j));
  }

  vx_ClassDataGenerator used(repeated(3, 0, 1), 3);
  const Provider made = used.generateData();
  vx_TotalDataGenerator sharing({used});
  EXPECT_EQ(sharing.generateData().featurePattern(0),
            made.featurePattern(static_cast<long>(shuffled(3)[0])));
}

TEST(TotalDataGeneratorTest, CopiesWhatItHasMade) {
  vx_TotalDataGenerator generator({vx_ClassDataGenerator(repeated(3, 0, 1), 3)});
  vx_TotalDataGenerator before(generator);
  const Provider data = generator.generateData();
  vx_TotalDataGenerator after(generator);
  vx_TotalDataGenerator assigned;
  assigned = generator;
  EXPECT_TRUE(sharesPatterns(after.generateData(), data));
  EXPECT_TRUE(sharesPatterns(assigned.generateData(), data));
  EXPECT_FALSE(sharesPatterns(before.generateData(), data));
}

TEST(TotalDataGeneratorTest, RefusesACategoryWithFewerPatternsThanMeasurements) {
  const vx_ClassDataGenerator few(repeated(4, 0, 1), 2);
  const vx_ClassDataGenerator enough(repeated(4, 0, 1), 4);
  for (const auto& generators : {std::vector{few, few}, {enough, few}, {few}}) {
    vx_TotalDataGenerator generator(generators);
    // Nothing reached what it keeps, so it fails again rather than hand out half the data.
    for (int call = 0; call < 2; ++call) {
      expectThrows<BadIndex>([&] { generator.generateData(); }, kBadIndex);
    }
  }
}

TEST(TotalDataGeneratorTest, RefusesCategoriesWithDifferentMeasurements) {
  const vx_ClassDataGenerator two(repeated(2, 0, 1), 5);
  const vx_ClassDataGenerator three(repeated(3, 0, 1), 5);
  const vx_ClassDataGenerator threeOfOne(repeated(3, 0, 1), 1);
  for (const auto& generators : {std::vector{two, three}, {three, two}, {two, threeOfOne}}) {
    vx_TotalDataGenerator generator(generators);
    for (int call = 0; call < 2; ++call) {
      expectThrows<BadFeatures>([&] { generator.generateData(); }, kBadCount);
    }
  }
}

TEST(TotalDataGeneratorTest, KeepsTheBatchesThatAFailedCallAdded) {
  // A generator without measurements adds a batch at each call, also where a later one fails; what
  // it holds is never handed out.
  const vx_ClassDataGenerator batches({}, 2);
  const vx_ClassDataGenerator few(repeated(2, 0, 1), 1);
  vx_TotalDataGenerator generator({batches, few});
  for (int call = 0; call < 3; ++call) {
    expectThrows<BadIndex>([&] { generator.generateData(); }, kBadIndex);
  }
}

}  // namespace
