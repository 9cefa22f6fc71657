// SPDX-License-Identifier: MIT
#include "vxclss/feature_pattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/handle.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;

constexpr long kLargest = std::numeric_limits<long>::max();
constexpr long kSmallest = std::numeric_limits<long>::min();

const wchar_t* const kNegative = L"Feature measurement indices must be >= 0";
const wchar_t* const kPastTheEnd = L"Feature measurement indices must be < number of features";
const wchar_t* const kNotValid =
    L"The measurement for the specified measurement index is not valid.";
const wchar_t* const kNotAllValid =
    L"Access to full feature vector requires that all features are valid.";

static_assert(std::is_base_of_v<vxPersistent, vxFeaturePattern>);
static_assert(std::is_base_of_v<vxRepBase, vxFeaturePattern>);
static_assert(!std::is_invocable_v<decltype(&vxFeaturePattern::invalidFeatureIndices),
                                   const vxFeaturePattern&>);

/// 10, 20, 30, of which 20 is invalid.
vxFeaturePattern partlyValid() { return {{10.0, 20.0, 30.0}, {1}}; }

std::vector<bool> validity(const vxFeaturePattern& pattern) {
  std::vector<bool> flags;
  for (long i = 0; i < pattern.numMeasurements(); ++i) flags.push_back(pattern.isValid(i));
  return flags;
}

TEST(FeaturePatternTest, CanBeEmpty) {
  vxFeaturePattern pattern({}, {});
  EXPECT_EQ(pattern.numMeasurements(), 0);
  EXPECT_EQ(pattern.numInvalid(), 0);
  EXPECT_FALSE(pattern.isValid(0));
  EXPECT_TRUE(pattern.invalidFeatureIndices().empty());
  EXPECT_TRUE(pattern.featureMeasurements(true).empty());
  EXPECT_EQ(pattern.featureMeasurement(0, false), 0.0);
  EXPECT_TRUE(pattern == vxFeaturePattern({}, {}));
}

TEST(FeaturePatternTest, HoldsItsMeasurements) {
  const std::vector<double> numbers = {1.5, -0.0, kInfinity, 0x1.fffffffffffffp+1023};
  const vxFeaturePattern pattern(numbers, {});
  EXPECT_EQ(pattern.numMeasurements(), 4);
  EXPECT_EQ(pattern.numInvalid(), 0);
  EXPECT_EQ(pattern.featureMeasurements(true), numbers);
  EXPECT_TRUE(std::signbit(pattern.featureMeasurement(1, true)));
}

TEST(FeaturePatternTest, MarksTheListedMeasurementsAsInvalid) {
  vxFeaturePattern pattern({1, 2, 3, 4}, {3, 0, 3, 0, 3});
  EXPECT_EQ(validity(pattern), (std::vector<bool>{false, true, true, false}));
  EXPECT_EQ(pattern.numInvalid(), 2) << "repeats count once";
  EXPECT_EQ(pattern.invalidFeatureIndices(), (std::vector<long>{0, 3}));
}

TEST(FeaturePatternTest, ReportsTheFirstBadIndexOfTheList) {
  struct Row {
    const char* name;
    std::vector<long> indices;
    const wchar_t* text;
  };
  const Row rows[] = {
      {"negative", {-1}, kNegative},
      {"most negative", {kSmallest}, kNegative},
      {"one past the end", {2}, kPastTheEnd},
      {"largest", {kLargest}, kPastTheEnd},
      {"negative, then past the end", {0, -1, 2}, kNegative},
      {"past the end, then negative", {1, 2, -1}, kPastTheEnd},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    expectThrows<BadIndex>([&row] { vxFeaturePattern({1.0, 2.0}, row.indices); }, row.text);
  }
  expectThrows<BadIndex>([] { vxFeaturePattern({}, {0}); }, kPastTheEnd);
}

TEST(FeaturePatternTest, CallsAMeasurementPastTheLastOneInvalid) {
  const vxFeaturePattern pattern = partlyValid();
  EXPECT_TRUE(pattern.isValid(2));
  EXPECT_FALSE(pattern.isValid(3));
  EXPECT_FALSE(pattern.isValid(kLargest));
}

TEST(FeaturePatternTest, RefusesNegativeIndices) {
  const vxFeaturePattern pattern = partlyValid();
  for (const long index : {-1L, kSmallest}) {
    expectThrows<BadIndex>([&] { pattern.isValid(index); }, kNegative);
    expectThrows<BadIndex>([&] { pattern.featureMeasurement(index, false); }, kNegative);
    expectThrows<BadIndex>([&] { pattern.featureMeasurement(index, true); }, kNegative);
  }
}

TEST(FeaturePatternTest, GivesOneMeasurement) {
  const vxFeaturePattern pattern = partlyValid();
  EXPECT_EQ(pattern.featureMeasurement(0, true), 10.0);
  EXPECT_EQ(pattern.featureMeasurement(2, false), 30.0);
  EXPECT_EQ(pattern.featureMeasurement(1, false), 20.0) << "the stored number shows";
  EXPECT_EQ(pattern.featureMeasurement(3, false), 0.0);
  EXPECT_EQ(pattern.featureMeasurement(5, false), 0.0);
  EXPECT_EQ(pattern.featureMeasurement(kLargest, false), 0.0);
  for (const long index : {1L, 3L, 5L, kLargest}) {
    expectThrows<BadFeatures>([&] { pattern.featureMeasurement(index, true); }, kNotValid);
  }
}

TEST(FeaturePatternTest, GivesAllMeasurements) {
  const vxFeaturePattern pattern = partlyValid();
  EXPECT_EQ(pattern.featureMeasurements(false), (std::vector<double>{10.0, 20.0, 30.0}));
  expectThrows<BadFeatures>([&] { pattern.featureMeasurements(true); }, kNotAllValid);
  EXPECT_EQ(&pattern.featureMeasurements(false), &pattern.featureMeasurements(false));
}

TEST(FeaturePatternTest, ComparesNumbersAndFlags) {
  const vxFeaturePattern pattern({1.0, 2.0}, {1});
  EXPECT_TRUE(pattern == vxFeaturePattern({1.0, 2.0}, {1}));
  EXPECT_FALSE(pattern != vxFeaturePattern({1.0, 2.0}, {1, 1}));
  const std::pair<const char*, vxFeaturePattern> others[] = {
      {"a flag", {{1.0, 2.0}, {}}},
      {"another flag", {{1.0, 2.0}, {0}}},
      {"the last bit", {{0x1.0000000000001p+0, 2.0}, {1}}},
      {"the number of an invalid measurement", {{1.0, 3.0}, {1}}},
      {"shorter", {{1.0}, {}}},
      {"longer", {{1.0, 2.0, 3.0}, {1}}},
      {"empty", {{}, {}}},
  };
  for (const auto& [name, other] : others) {
    EXPECT_FALSE(pattern == other) << name;
    EXPECT_TRUE(pattern != other) << name;
    EXPECT_FALSE(other == pattern) << name;
  }
  EXPECT_TRUE(vxFeaturePattern({0.0}, {}) == vxFeaturePattern({-0.0}, {}));
  EXPECT_TRUE(vxFeaturePattern({kInfinity}, {}) == vxFeaturePattern({kInfinity}, {}));
}

TEST(FeaturePatternTest, DiffersFromItselfWhereItHoldsANan) {
  const vxFeaturePattern pattern({1.0, kNaN}, {});
  EXPECT_FALSE(pattern == pattern);
  EXPECT_TRUE(pattern != pattern);
  EXPECT_FALSE(pattern == vxFeaturePattern({1.0, 2.0}, {}));
  EXPECT_FALSE(vxFeaturePattern({1.0, 2.0}, {}) == pattern);
  const vxFeaturePattern hidden({1.0, kNaN}, {1});
  EXPECT_FALSE(hidden == hidden) << "an invalid NaN is still a NaN";
}

TEST(FeaturePatternTest, CopiesAndAssigns) {
  const vxFeaturePattern pattern = partlyValid();
  vxFeaturePattern copy(pattern);
  EXPECT_TRUE(copy == pattern);
  copy = vxFeaturePattern({7.0}, {});
  EXPECT_TRUE(copy == vxFeaturePattern({7.0}, {}));
  EXPECT_TRUE(pattern == partlyValid());
  const vxFeaturePattern& same = copy;
  copy = same;
  EXPECT_TRUE(copy == vxFeaturePattern({7.0}, {}));
  auto&& itself = std::move(copy);
  copy = std::move(itself);
  EXPECT_TRUE(copy == vxFeaturePattern({7.0}, {}));
}

TEST(FeaturePatternTest, CountsHandlesOfACopyAnew) {
  const vxPtrHandle_const<vxFeaturePattern> held(new vxFeaturePattern(partlyValid()));
  const vxFeaturePattern copy(*held);
  EXPECT_EQ(held->referenceCount(), 1);
  EXPECT_EQ(copy.referenceCount(), 0);
}

TEST(FeaturePatternTest, MovesToAnEqualPatternAndLeavesAConsistentOne) {
  vxFeaturePattern source = partlyValid();
  const vxFeaturePattern target(std::move(source));
  EXPECT_TRUE(target == partlyValid());
  // NOLINTNEXTLINE(bugprone-use-after-move): every pattern has a flag per measurement.
  EXPECT_EQ(validity(source).size(), source.featureMeasurements(false).size());
}

TEST(FeaturePatternTest, IsArchivedFieldByField) {
  vxFeaturePattern empty({}, {});
  EXPECT_EQ(storedHex(empty), packedHex("00  00 00000000  00 00000000"));
  vxFeaturePattern pattern({1.5, -2.0, 0.0}, {1});
  const std::string bytes = packedHex(
      "00"
      "00 03000000 000000000000f83f 00000000000000c0 0000000000000000"
      "00 03000000 01 00 01");
  EXPECT_EQ(storedHex(pattern), bytes);

  vxFeaturePattern target({9.0}, {0});
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == pattern);
}

TEST(FeaturePatternTest, RefusesUnknownVersionsWithoutAName) {
  vxFeaturePattern source({1.0}, {});
  for (const std::size_t version : {0u, 1u, 14u}) {  // its own, and those of the two vectors
    SCOPED_TRACE(version);
    std::string bytes = stored(source);
    ASSERT_EQ(bytes[version], '\0');
    bytes[version] = '\x01';
    vxFeaturePattern target = partlyValid();
    expectUnknownVersion([&] { load(bytes, target); }, "");
    EXPECT_TRUE(target == partlyValid());
  }
}

TEST(FeaturePatternTest, RefusesAFlagTooFewOrTooMany) {
  const char* const archives[] = {
      "00  00 01000000 000000000000f03f  00 00000000",
      "00  00 01000000 000000000000f03f  00 02000000 01 01",
      "00  00 00000000  00 01000000 01",
  };
  for (const char* const archive : archives) {
    vxFeaturePattern target = partlyValid();
    EXPECT_THROW(load(fromHex(archive), target), vxArchive::Malformed) << archive;
    EXPECT_TRUE(target == partlyValid());
  }
}

/// What one archive stores for an object before and after a change, loaded again.
template <class Change>
std::vector<vxPtrHandle_const<vxFeaturePattern>> storedAround(vxFeaturePattern& pattern,
                                                              Change&& change) {
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(output, &pattern, unused);
  change();
  vxPersistent::serializePointer(output, &pattern, unused);

  std::vector<vxPtrHandle_const<vxFeaturePattern>> arrived(2);
  load(out.str(), arrived[0], arrived[1]);
  return arrived;
}

TEST(FeaturePatternTest, IsStoredOnceWhileItStaysTheSame) {
  vxFeaturePattern pattern = partlyValid();
  const auto arrived = storedAround(pattern, [] {});
  EXPECT_TRUE(arrived[0] == arrived[1]);
}

TEST(FeaturePatternTest, IsStoredAnewAfterAnAssignment) {
  vxFeaturePattern pattern = partlyValid();
  const auto arrived = storedAround(pattern, [&] { pattern = vxFeaturePattern({7.0}, {}); });
  EXPECT_TRUE(*arrived[0] == partlyValid());
  EXPECT_TRUE(*arrived[1] == vxFeaturePattern({7.0}, {}));
}

TEST(FeaturePatternTest, IsStoredAnewAfterItWasMovedFrom) {
  vxFeaturePattern pattern = partlyValid();
  vxFeaturePattern taken({}, {});
  const auto byAssignment = storedAround(pattern, [&] { taken = std::move(pattern); });
  EXPECT_TRUE(*byAssignment[0] == partlyValid());
  EXPECT_TRUE(*byAssignment[1] == pattern);

  pattern = partlyValid();
  const auto byConstruction = storedAround(pattern, [&] { vxFeaturePattern(std::move(pattern)); });
  EXPECT_TRUE(*byConstruction[1] == pattern);
}

}  // namespace
