// SPDX-License-Identifier: MIT
#include "vxclss/costs.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

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

constexpr long kMostNegative = std::numeric_limits<long>::min();

const wchar_t* const kNegativeCost = L"Costs must be >= 0.0";
const wchar_t* const kSameLabels = L"Category labels must be different";
const wchar_t* const kNegativeLabel = L"Category labels must be >= 0";

static_assert(!std::is_default_constructible_v<vxClassifierCosts>);
static_assert(!std::is_convertible_v<double, vxClassifierCosts>);

/// Default 0.5, two overrides.
vxClassifierCosts filled() {
  vxClassifierCosts costs(0.5);
  costs.misclassificationCostOverride(1, 2, 5.0);
  costs.misclassificationCostOverride(2, 1, 0.0);
  return costs;
}

TEST(CostsTest, HasADefaultForEveryPair) {
  const vxClassifierCosts costs(2.5);
  EXPECT_EQ(costs.defaultMisclassificationCost(), 2.5);
  EXPECT_EQ(costs.misclassificationCost(0, 1), 2.5);
  EXPECT_EQ(costs.misclassificationCost(std::numeric_limits<long>::max(), 0), 2.5);
}

TEST(CostsTest, AcceptsEveryCostThatIsNotNegative) {
  for (const double cost : {0.0, -0.0, kTiny, 1.0, kInfinity}) {
    vxClassifierCosts costs(cost);
    EXPECT_EQ(costs.defaultMisclassificationCost(), cost);
    costs.misclassificationCostOverride(0, 1, cost);
    EXPECT_EQ(costs.misclassificationCost(0, 1), cost);
  }
}

TEST(CostsTest, RefusesANegativeCost) {
  for (const double cost : {-kTiny, -1.0, -kInfinity}) {
    expectThrows<BadParams>([cost] { vxClassifierCosts{cost}; }, kNegativeCost);
    vxClassifierCosts costs = filled();
    expectRefused<BadParams>(
        costs, [&] { costs.defaultMisclassificationCost(cost); }, kNegativeCost);
    expectRefused<BadParams>(
        costs, [&] { costs.misclassificationCostOverride(1, 2, cost); }, kNegativeCost);
  }
}

TEST(CostsTest, RefusesAnOverrideInTheOrderOfItsChecks) {
  vxClassifierCosts costs = filled();
  const auto set = [&costs](long trueLabel, long assignedLabel, double cost) {
    return [&costs, trueLabel, assignedLabel, cost] {
      costs.misclassificationCostOverride(trueLabel, assignedLabel, cost);
    };
  };
  expectRefused<BadParams>(costs, set(3, 3, -1.0), kNegativeCost);
  expectRefused<BadParams>(costs, set(-1, 2, -1.0), kNegativeCost);
  expectRefused<BadParams>(costs, set(-1, -1, -1.0), kNegativeCost);
  expectRefused<BadLabel>(costs, set(3, 3, 1.0), kSameLabels);
  expectRefused<BadLabel>(costs, set(-1, -1, 1.0), kSameLabels);
  expectRefused<BadLabel>(costs, set(-1, 2, 1.0), kNegativeLabel);
  expectRefused<BadLabel>(costs, set(2, -1, 1.0), kNegativeLabel);
  expectRefused<BadLabel>(costs, set(kMostNegative, -1, 1.0), kNegativeLabel);
}

TEST(CostsTest, RefusesAQuestionInTheOrderOfItsChecks) {
  const vxClassifierCosts costs = filled();
  expectThrows<BadLabel>([&] { costs.misclassificationCost(3, 3); }, kSameLabels);
  expectThrows<BadLabel>([&] { costs.misclassificationCost(-1, -1); }, kSameLabels);
  expectThrows<BadLabel>([&] { costs.misclassificationCost(-1, 2); }, kNegativeLabel);
  expectThrows<BadLabel>([&] { costs.misclassificationCost(2, -1); }, kNegativeLabel);
  expectThrows<BadLabel>([&] { costs.misclassificationCost(-2, -1); }, kNegativeLabel);
}

TEST(CostsTest, TellsThePairsOfTwoLabelsApart) {
  const vxClassifierCosts costs = filled();
  EXPECT_EQ(costs.misclassificationCost(1, 2), 5.0);
  EXPECT_EQ(costs.misclassificationCost(2, 1), 0.0);
  EXPECT_EQ(costs.misclassificationCost(1, 3), 0.5);
  EXPECT_EQ(costs.misclassificationCost(3, 2), 0.5);
}

TEST(CostsTest, ReplacesAnOverrideInItsPlace) {
  vxClassifierCosts costs = filled();
  costs.misclassificationCostOverride(1, 2, 9.0);
  EXPECT_EQ(costs.misclassificationCost(1, 2), 9.0);
  EXPECT_EQ(stored(costs).size(), 8u + 1 + 2 * (5 + 2 * 4) + 5 + 2 * 8) << "still two overrides";
  costs.misclassificationCostOverride(1, 2, 5.0);
  EXPECT_TRUE(costs == filled());
}

TEST(CostsTest, KeepsTheDefaultWhenItsOverridesAreCleared) {
  vxClassifierCosts costs = filled();
  costs.clearMisclassificationOverrides();
  EXPECT_EQ(costs.misclassificationCost(1, 2), 0.5);
  EXPECT_TRUE(costs == vxClassifierCosts(0.5));
  costs.clearMisclassificationOverrides();
  EXPECT_TRUE(costs == vxClassifierCosts(0.5));
}

TEST(CostsTest, KeepsItsOverridesWhenTheDefaultChanges) {
  vxClassifierCosts costs = filled();
  costs.defaultMisclassificationCost(3.0);
  EXPECT_EQ(costs.misclassificationCost(1, 2), 5.0);
  EXPECT_EQ(costs.misclassificationCost(1, 3), 3.0);
}

TEST(CostsTest, ComparesOverridesInTheOrderOfTheirFirstSetting) {
  vxClassifierCosts reversed(0.5);
  reversed.misclassificationCostOverride(2, 1, 0.0);
  reversed.misclassificationCostOverride(1, 2, 5.0);
  EXPECT_FALSE(filled() == reversed);
  EXPECT_TRUE(filled() != reversed);

  vxClassifierCosts again = filled();
  again.misclassificationCostOverride(1, 2, 5.0);
  EXPECT_TRUE(again == filled()) << "the first setting keeps its place";
}

TEST(CostsTest, ComparesEveryField) {
  vxClassifierCosts other = filled();
  EXPECT_TRUE(other == filled());
  other.defaultMisclassificationCost(0x1.0000000000001p-1);
  EXPECT_TRUE(other != filled());
  other = filled();
  other.misclassificationCostOverride(1, 2, 6.0);
  EXPECT_TRUE(other != filled());
  other = filled();
  other.misclassificationCostOverride(1, 3, 0.5);
  EXPECT_TRUE(other != filled()) << "an override counts even where it says what the default does";
  vxClassifierCosts first(0.5);
  vxClassifierCosts second(0.5);
  first.misclassificationCostOverride(1, 2, 6.0);
  second.misclassificationCostOverride(1, 3, 6.0);
  EXPECT_TRUE(first != second);
  EXPECT_TRUE(vxClassifierCosts(0.0) == vxClassifierCosts(-0.0));
}

TEST(CostsTest, DiffersFromItselfWhereItHoldsANan) {
  const vxClassifierCosts costs(kNaN);
  EXPECT_FALSE(costs == costs);
  vxClassifierCosts overridden(1.0);
  overridden.misclassificationCostOverride(0, 1, kNaN);
  EXPECT_FALSE(overridden == overridden);
}

TEST(CostsTest, AnswersLikeAPlainListAfterAnySequence) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    vxClassifierCosts costs(1.0);
    plain::Costs expected;
    for (int step = 0; step < 300; ++step) {
      const auto trueLabel = static_cast<long>(random() % 9);
      const auto assignedLabel =
          static_cast<long>((static_cast<unsigned long>(trueLabel) + 1 + random() % 8) % 9);
      const double cost = static_cast<double>(random() % 1000) / 7.0;
      switch (random() % 16) {
        case 0:
          costs.defaultMisclassificationCost(cost);
          expected.defaultCost = cost;
          break;
        case 1:
          if (random() % 8 == 0) {
            costs.clearMisclassificationOverrides();
            expected.overrides.clear();
          }
          break;
        default:
          costs.misclassificationCostOverride(trueLabel, assignedLabel, cost);
          expected.set(trueLabel, assignedLabel, cost);
      }
      ASSERT_EQ(costs.misclassificationCost(assignedLabel, trueLabel),
                expected.of(assignedLabel, trueLabel));
      ASSERT_EQ(costs.misclassificationCost(trueLabel, assignedLabel),
                expected.of(trueLabel, assignedLabel));
    }
    EXPECT_TRUE(costs == expected.record());
  }
}

TEST(CostsTest, IsArchivedFieldByField) {
  vxClassifierCosts plainCosts(1.0);
  EXPECT_EQ(storedHex(plainCosts),
            packedHex("00 000000000000f03f  00 00000000  00 00000000  00 00000000"));
  vxClassifierCosts costs = filled();
  const std::string bytes = packedHex(
      "00 000000000000e03f"
      "00 02000000 01000000 02000000"
      "00 02000000 02000000 01000000"
      "00 02000000 0000000000001440 0000000000000000");
  EXPECT_EQ(storedHex(costs), bytes);
  vxClassifierCosts target(9.0);
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == filled());
}

TEST(CostsTest, NamesTheRecordWhoseVersionIsUnknown) {
  vxClassifierCosts source = filled();
  struct Row {
    std::size_t version;
    std::string name;
  };
  for (const Row& row : {Row{0, recordUnit()}, Row{9, ""}, Row{22, ""}, Row{35, ""}}) {
    SCOPED_TRACE(row.version);
    std::string bytes = stored(source);
    ASSERT_EQ(bytes[row.version], '\0');
    bytes[row.version] = '\x01';
    vxClassifierCosts target(9.0);
    expectUnknownVersion([&] { load(bytes, target); }, row.name);
    EXPECT_TRUE(target == vxClassifierCosts(9.0));
  }
}

TEST(CostsTest, RefusesOverridesOfDifferentNumbers) {
  const char* const head = "00 000000000000f03f ";
  for (const char* const overrides :
       {"00 00000000 00 01000000 01000000 00 01000000 0000000000000000",
        "00 01000000 01000000 00 00000000 00 01000000 0000000000000000",
        "00 01000000 01000000 00 01000000 02000000 00 00000000"}) {
    vxClassifierCosts target(9.0);
    EXPECT_THROW(load(fromHex(head + std::string(overrides)), target), vxArchive::Malformed)
        << overrides;
    EXPECT_TRUE(target == vxClassifierCosts(9.0));
  }
}

TEST(CostsTest, DoesNotCheckTheRangeOfWhatItLoads) {
  vxClassifierCosts target(9.0);
  load(fromHex("00 000000000000f0bf  00 00000000  00 00000000  00 00000000"), target);
  EXPECT_EQ(target.defaultMisclassificationCost(), -1.0);
}

}  // namespace
