// SPDX-License-Identifier: MIT
#include "vxclss/frequencies.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <type_traits>

#include "tests/support/archive_helpers.h"
#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_result.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

const wchar_t* const kNotPositive = L"Category frequencies must be > 0.0";
const wchar_t* const kNegativeLabel = L"Category labels must be >= 0";

static_assert(!std::is_default_constructible_v<vxClassifierFrequencies>);
static_assert(!std::is_convertible_v<double, vxClassifierFrequencies>);

/// Default 2, two overrides.
vxClassifierFrequencies filled() {
  vxClassifierFrequencies frequencies(2.0);
  frequencies.categoryFrequencyOverride(7, 0.5);
  frequencies.categoryFrequencyOverride(0, 3.0);
  return frequencies;
}

TEST(FrequenciesTest, HasADefaultForEveryCategory) {
  const vxClassifierFrequencies frequencies(2.5);
  EXPECT_EQ(frequencies.defaultCategoryFrequency(), 2.5);
  EXPECT_EQ(frequencies.categoryFrequency(0), 2.5);
  EXPECT_EQ(frequencies.categoryFrequency(std::numeric_limits<long>::max()), 2.5);
}

TEST(FrequenciesTest, AcceptsEveryPositiveFrequency) {
  for (const double frequency : {kTiny, 1.0, 1e300, kInfinity}) {
    vxClassifierFrequencies frequencies(frequency);
    EXPECT_EQ(frequencies.defaultCategoryFrequency(), frequency);
    frequencies.categoryFrequencyOverride(0, frequency);
    EXPECT_EQ(frequencies.categoryFrequency(0), frequency);
  }
}

TEST(FrequenciesTest, RefusesAFrequencyThatIsNotPositive) {
  for (const double frequency : {0.0, -0.0, -kTiny, -kInfinity}) {
    expectThrows<BadParams>([frequency] { vxClassifierFrequencies{frequency}; }, kNotPositive);
    vxClassifierFrequencies frequencies = filled();
    expectRefused<BadParams>(
        frequencies, [&] { frequencies.defaultCategoryFrequency(frequency); }, kNotPositive);
    expectRefused<BadParams>(
        frequencies, [&] { frequencies.categoryFrequencyOverride(7, frequency); }, kNotPositive);
  }
}

TEST(FrequenciesTest, LooksAtTheFrequencyBeforeTheLabel) {
  vxClassifierFrequencies frequencies = filled();
  expectRefused<BadParams>(
      frequencies, [&] { frequencies.categoryFrequencyOverride(-1, 0.0); }, kNotPositive);
  for (const long label : {-1L, std::numeric_limits<long>::min()}) {
    expectRefused<BadLabel>(
        frequencies, [&] { frequencies.categoryFrequencyOverride(label, 1.0); }, kNegativeLabel);
    expectThrows<BadLabel>([&] { frequencies.categoryFrequency(label); }, kNegativeLabel);
  }
}

TEST(FrequenciesTest, ReplacesAnOverrideInItsPlace) {
  vxClassifierFrequencies frequencies = filled();
  EXPECT_EQ(frequencies.categoryFrequency(7), 0.5);
  frequencies.categoryFrequencyOverride(7, 9.0);
  EXPECT_EQ(frequencies.categoryFrequency(7), 9.0);
  EXPECT_EQ(frequencies.categoryFrequency(0), 3.0);
  EXPECT_EQ(frequencies.categoryFrequency(1), 2.0);
  EXPECT_EQ(stored(frequencies).size(), 9u + 5 + 2 * 4 + 5 + 2 * 8) << "still two overrides";
  frequencies.categoryFrequencyOverride(7, 0.5);
  EXPECT_TRUE(frequencies == filled());
}

TEST(FrequenciesTest, KeepsTheDefaultWhenItsOverridesAreCleared) {
  vxClassifierFrequencies frequencies = filled();
  frequencies.clearFrequencyOverrides();
  EXPECT_EQ(frequencies.categoryFrequency(7), 2.0);
  EXPECT_TRUE(frequencies == vxClassifierFrequencies(2.0));
}

TEST(FrequenciesTest, KeepsItsOverridesWhenTheDefaultChanges) {
  vxClassifierFrequencies frequencies = filled();
  frequencies.defaultCategoryFrequency(4.0);
  EXPECT_EQ(frequencies.categoryFrequency(7), 0.5);
  EXPECT_EQ(frequencies.categoryFrequency(1), 4.0);
}

TEST(FrequenciesTest, ComparesOverridesInTheOrderOfTheirFirstSetting) {
  vxClassifierFrequencies reversed(2.0);
  reversed.categoryFrequencyOverride(0, 3.0);
  reversed.categoryFrequencyOverride(7, 0.5);
  EXPECT_FALSE(filled() == reversed);
  EXPECT_TRUE(filled() != reversed);
}

TEST(FrequenciesTest, ComparesEveryField) {
  vxClassifierFrequencies other = filled();
  EXPECT_TRUE(other == filled());
  other.defaultCategoryFrequency(0x1.0000000000001p+1);
  EXPECT_TRUE(other != filled());
  other = filled();
  other.categoryFrequencyOverride(7, 0.25);
  EXPECT_TRUE(other != filled());
  other = filled();
  other.categoryFrequencyOverride(8, 2.0);
  EXPECT_TRUE(other != filled()) << "an override counts even where it says what the default does";
}

TEST(FrequenciesTest, DiffersFromItselfWhereItHoldsANan) {
  const vxClassifierFrequencies frequencies(kNaN);
  EXPECT_FALSE(frequencies == frequencies);
  vxClassifierFrequencies overridden(1.0);
  overridden.categoryFrequencyOverride(0, kNaN);
  EXPECT_FALSE(overridden == overridden);
}

TEST(FrequenciesTest, AnswersLikeAPlainListAfterAnySequence) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    vxClassifierFrequencies frequencies(1.0);
    plain::Frequencies expected;
    for (int step = 0; step < 200; ++step) {
      const auto label = static_cast<long>(random() % 12);
      const double frequency = static_cast<double>(1 + random() % 1000) / 7.0;
      const auto choice = random() % 40;
      if (choice == 0) {
        frequencies.clearFrequencyOverrides();
        expected.overrides.clear();
      } else if (choice < 5) {
        frequencies.defaultCategoryFrequency(frequency);
        expected.defaultFrequency = frequency;
      } else {
        frequencies.categoryFrequencyOverride(label, frequency);
        expected.set(label, frequency);
      }
      for (long asked = 0; asked < 13; ++asked) {
        ASSERT_EQ(frequencies.categoryFrequency(asked), expected.of(asked));
      }
    }
    EXPECT_TRUE(frequencies == expected.record());
  }
}

TEST(FrequenciesTest, IsArchivedFieldByField) {
  vxClassifierFrequencies plainFrequencies(1.0);
  EXPECT_EQ(storedHex(plainFrequencies),
            packedHex("00 000000000000f03f  00 00000000  00 00000000"));
  vxClassifierFrequencies frequencies = filled();
  const std::string bytes = packedHex(
      "00 0000000000000040"
      "00 02000000 07000000 00000000"
      "00 02000000 000000000000e03f 0000000000000840");
  EXPECT_EQ(storedHex(frequencies), bytes);
  vxClassifierFrequencies target(9.0);
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == filled());
}

TEST(FrequenciesTest, NamesTheRecordWhoseVersionIsUnknown) {
  vxClassifierFrequencies source = filled();
  struct Row {
    std::size_t version;
    std::string name;
  };
  for (const Row& row : {Row{0, recordUnit()}, Row{9, ""}, Row{22, ""}}) {
    SCOPED_TRACE(row.version);
    std::string bytes = stored(source);
    ASSERT_EQ(bytes[row.version], '\0');
    bytes[row.version] = '\x01';
    vxClassifierFrequencies target(9.0);
    expectUnknownVersion([&] { load(bytes, target); }, row.name);
    EXPECT_TRUE(target == vxClassifierFrequencies(9.0));
  }
}

TEST(FrequenciesTest, RefusesOverridesOfDifferentNumbers) {
  for (const char* const archive :
       {"00 000000000000f03f  00 01000000 01000000  00 00000000",
        "00 000000000000f03f  00 00000000  00 01000000 000000000000f03f"}) {
    vxClassifierFrequencies target(9.0);
    EXPECT_THROW(load(fromHex(archive), target), vxArchive::Malformed) << archive;
    EXPECT_TRUE(target == vxClassifierFrequencies(9.0));
  }
}

TEST(FrequenciesTest, DoesNotCheckTheRangeOfWhatItLoads) {
  vxClassifierFrequencies target(9.0);
  load(fromHex("00 0000000000000000  00 00000000  00 00000000"), target);
  EXPECT_EQ(target.defaultCategoryFrequency(), 0.0);
}

}  // namespace
