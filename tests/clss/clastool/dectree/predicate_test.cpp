// SPDX-License-Identifier: MIT
#include "vxclss/predicate.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_tree.h"
#include "tests/support/tree_samples.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadParams;

constexpr wchar_t kSameIndices[] = L"Measurement indices must be different.";
constexpr wchar_t kBadIndex[] = L"Measurement index must be >= 0 and < number of measurements.";

PredicateHandle comparison(long index1, long index2) {
  return PredicateHandle(new vxComparisonPredicate(index1, index2));
}
PredicateHandle range(double low, double high, const std::vector<long>& indices) {
  return PredicateHandle(new vxRangePredicate({low, high}, indices));
}
PredicateHandle validity(const std::vector<long>& indices) {
  return PredicateHandle(new vxValidityPredicate(indices));
}

struct Outcome {
  const char* name;
  PredicateHandle predicate;
  std::vector<double> measurements;
  std::vector<long> invalid;
  bool outcome;
};

void PrintTo(const Outcome& row, std::ostream* out) { *out << row.name; }

class PredicateOutcomeTest : public testing::TestWithParam<Outcome> {};

TEST_P(PredicateOutcomeTest, IsAsStated) {
  const Outcome& row = GetParam();
  EXPECT_EQ(row.predicate->outcome({row.measurements, row.invalid}), row.outcome);
  EXPECT_EQ(row.predicate->clone()->outcome({row.measurements, row.invalid}), row.outcome);
}

const auto outcomeName = [](const auto& test) { return test.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Comparison, PredicateOutcomeTest,
    testing::Values(Outcome{"Greater", comparison(0, 1), {6, 5}, {}, true},
                    Outcome{"Equal", comparison(0, 1), {5, 5}, {}, false},
                    Outcome{"Less", comparison(0, 1), {5, 6}, {}, false},
                    Outcome{"Swapped", comparison(1, 0), {5, 6}, {}, true},
                    Outcome{"FirstInvalid", comparison(0, 1), {6, 5}, {0}, false},
                    Outcome{"SecondInvalid", comparison(0, 1), {6, 5}, {1}, false},
                    Outcome{"OtherInvalid", comparison(0, 2), {6, 5, 4}, {1}, true},
                    Outcome{"FirstPastTheEnd", comparison(5, 0), {1, 2, 3}, {}, false},
                    Outcome{"SecondPastTheEnd", comparison(0, 5), {1, 2, 3}, {}, false},
                    Outcome{"SecondJustPastTheEnd", comparison(0, 3), {1, 2, 3}, {}, false},
                    Outcome{"NoMeasurements", comparison(0, 1), {}, {}, false},
                    Outcome{"FirstNaN", comparison(0, 1), {kNaN, 5}, {}, false},
                    Outcome{"SecondNaN", comparison(0, 1), {5, kNaN}, {}, false},
                    Outcome{"SignedZeros", comparison(0, 1), {0.0, -0.0}, {}, false},
                    Outcome{"LastBit", comparison(0, 1), {0x1.0000000000001p0, 1.0}, {}, true},
                    Outcome{"Infinite", comparison(0, 1), {kInfinity, -kInfinity}, {}, true}),
    outcomeName);

INSTANTIATE_TEST_SUITE_P(
    Range, PredicateOutcomeTest,
    testing::Values(Outcome{"Inside", range(1, 2, {0, 1}), {1.5, 1.25}, {}, true},
                    Outcome{"LowEnd", range(1, 2, {0}), {1.0}, {}, true},
                    Outcome{"HighEnd", range(1, 2, {0}), {2.0}, {}, true},
                    Outcome{"FirstBelow", range(1, 2, {0, 1}), {0.5, 1.5}, {}, false},
                    Outcome{"SecondAbove", range(1, 2, {0, 1}), {1.5, 2.5}, {}, false},
                    Outcome{"OutsideButNotListed", range(1, 2, {1}), {9, 1.5}, {}, true},
                    Outcome{"ListedTwice", range(1, 2, {1, 1}), {9, 1.5}, {}, true},
                    Outcome{"Invalid", range(1, 2, {0, 1}), {1.5, 1.5}, {1}, false},
                    Outcome{"PastTheEnd", range(1, 2, {0, 1}), {1.5}, {}, false},
                    // The stand-in of a missing measurement, 0.0, would be inside.
                    Outcome{"PastTheEndNotZero", range(-1, 1, {4}), {0.0}, {}, false},
                    Outcome{"EmptyList", range(1, 2, {}), {9}, {}, true},
                    Outcome{"EmptyListAllInvalid", range(1, 2, {}), {9, 9}, {0, 1}, true},
                    Outcome{"EmptyListNoMeasurements", range(1, 2, {}), {}, {}, true},
                    Outcome{"EmptyRange", range(2, 1, {0}), {1.5}, {}, false},
                    Outcome{"EmptyRangeEmptyList", range(2, 1, {}), {1.5}, {}, true},
                    Outcome{"NaN", range(1, 2, {0}), {kNaN}, {}, false},
                    Outcome{"NaNInFullRange", range(-kInfinity, kInfinity, {0}), {kNaN}, {}, true},
                    Outcome{"FullRangeInvalid", range(-kInfinity, kInfinity, {0}), {1}, {0}, false},
                    Outcome{"Default", PredicateHandle(new vxRangePredicate), {-9}, {}, true},
                    Outcome{
                        "DefaultInvalid", PredicateHandle(new vxRangePredicate), {1}, {0}, false}),
    outcomeName);

INSTANTIATE_TEST_SUITE_P(
    Validity, PredicateOutcomeTest,
    testing::Values(
        Outcome{"AllValid", validity({0, 2}), {1, 2, 3}, {1}, true},
        Outcome{"LastInvalid", validity({0, 2}), {1, 2, 3}, {2}, false},
        Outcome{"FirstInvalid", validity({0, 2}), {1, 2, 3}, {0}, false},
        Outcome{"PastTheEnd", validity({0, 2}), {1, 2}, {}, false},
        Outcome{"NaNIsValid", validity({0}), {kNaN}, {}, true},
        Outcome{"EmptyList", validity({}), {1}, {0}, true},
        Outcome{"EmptyListNoMeasurements", validity({}), {}, {}, true},
        Outcome{"Default", PredicateHandle(new vxValidityPredicate), {1, 2}, {1}, true},
        Outcome{"DefaultInvalid", PredicateHandle(new vxValidityPredicate), {1}, {0}, false}),
    outcomeName);

TEST(PredicateTest, RefusesEqualIndicesBeforeNegativeOnes) {
  expectThrows<BadParams>([] { vxComparisonPredicate(2, 2); }, kSameIndices);
  expectThrows<BadParams>([] { vxComparisonPredicate(-1, -1); }, kSameIndices);
  expectThrows<BadIndex>([] { vxComparisonPredicate(-1, 3); }, kBadIndex);
  expectThrows<BadIndex>([] { vxComparisonPredicate(3, -1); }, kBadIndex);
  expectThrows<BadIndex>([] { vxComparisonPredicate(-1, -2); }, kBadIndex);
}

TEST(PredicateTest, RefusesANegativeIndexAnywhereInAList) {
  const std::vector<std::vector<long>> lists = {{-1}, {0, 3, -1}, {-2147483647, 4}, {1, -5, 2}};
  for (const std::vector<long>& list : lists) {
    SCOPED_TRACE(testing::PrintToString(list));
    expectThrows<BadIndex>([&] { vxRangePredicate(vxRange::FullRange(), list); }, kBadIndex);
    expectThrows<BadIndex>([&] { vxValidityPredicate{list}; }, kBadIndex);
  }
}

TEST(PredicateTest, AcceptsAnIndexThatNoPatternReaches) {
  EXPECT_EQ(vxComparisonPredicate(2147483647, 0).measurementIndex1(), 2147483647);
  EXPECT_EQ(vxValidityPredicate({2147483647}).measurementIndices().front(), 2147483647);
}

TEST(PredicateTest, GivesBackWhatItWasMadeOf) {
  const std::vector<long> indices = {4, 0, 4, 2};
  const vxComparisonPredicate comparison(3, 1);
  EXPECT_EQ(comparison.measurementIndex1(), 3);
  EXPECT_EQ(comparison.measurementIndex2(), 1);
  const vxRangePredicate range({-1.5, 2.5}, indices);
  EXPECT_EQ(range.measurementRange(), vxRange(-1.5, 2.5));
  EXPECT_EQ(range.measurementIndices(), indices);
  EXPECT_EQ(vxValidityPredicate(indices).measurementIndices(), indices);
}

TEST(PredicateTest, AsksForMeasurement0ByDefault) {
  EXPECT_EQ(vxRangePredicate().measurementRange(), vxRange::FullRange());
  EXPECT_EQ(vxRangePredicate().measurementIndices(), (std::vector<long>{0}));
  EXPECT_EQ(vxValidityPredicate().measurementIndices(), (std::vector<long>{0}));
}

TEST(PredicateTest, AgreesWithThePlainDefinition) {
  RandomTrees random(20);
  for (int round = 0; round < 2000; ++round) {
    const TreeHandle tree = random.tree(1);
    const vxPredicateFunction& predicate = *asNode(*tree).predicateFunction();
    const vxFeaturePattern pattern = random.pattern();
    ASSERT_EQ(predicate.outcome(pattern), plain::outcome(predicate, pattern)) << "round " << round;
  }
}

/// All different.
std::vector<PredicateHandle> differentPredicates() {
  return {comparison(0, 1),
          comparison(1, 0),
          comparison(0, 2),
          comparison(2, 1),
          range(0, 1, {0, 1}),
          range(0, 1, {1, 0}),
          range(0, 1, {0}),
          range(0, 1, {0, 1, 1}),
          range(0, 2, {0, 1}),
          range(-1, 1, {0, 1}),
          range(0, 1, {}),
          validity({0, 1}),
          validity({1, 0}),
          validity({0}),
          validity({}),
          PredicateHandle(new HostPredicate([](const vxFeaturePattern&) { return true; }))};
}

TEST(PredicateTest, IsEqualToOneOfTheSameClassAndFieldsOnly) {
  const std::vector<PredicateHandle> rows = differentPredicates();
  // The base, and so the last one, has nothing to compare.
  for (std::size_t i = 0; i + 1 < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows.size(); ++j) {
      EXPECT_EQ(rows[i]->isEqual(*rows[j]), i == j) << i << ", " << j;
      EXPECT_EQ(rows[i]->isEqual(*rows[j]->clone()), i == j) << i << ", " << j;
    }
  }
  EXPECT_TRUE(rows.back()->isEqual(*rows.front()));
}

TEST(PredicateTest, HasOperatorsThatAskIsEqual) {
  const vxComparisonPredicate comparison(0, 1);
  EXPECT_TRUE(comparison == vxComparisonPredicate(0, 1));
  EXPECT_TRUE(comparison != vxComparisonPredicate(1, 0));
  EXPECT_TRUE(vxRangePredicate() == vxRangePredicate(vxRange::FullRange(), {0}));
  EXPECT_TRUE(vxRangePredicate() != vxRangePredicate(vxRange::FullRange(), {1}));
  EXPECT_TRUE(vxValidityPredicate() == vxValidityPredicate({0}));
  EXPECT_TRUE(vxValidityPredicate() != vxValidityPredicate(std::vector<long>()));
}

TEST(PredicateTest, DiffersFromItselfIfItsRangeHoldsANaN) {
  const vxRangePredicate predicate({kNaN, 1.0}, {0});
  EXPECT_FALSE(predicate == predicate);
}

class DerivedComparison : public vxComparisonPredicate {
  using vxComparisonPredicate::vxComparisonPredicate;
};

TEST(PredicateTest, DiffersFromADerivedClassInBothDirections) {
  const vxComparisonPredicate base(0, 1);
  const DerivedComparison derived(0, 1);
  EXPECT_FALSE(base.isEqual(derived));
  EXPECT_FALSE(derived.isEqual(base));
}

TEST(PredicateTest, ClonesItsConcreteClassWithoutSharing) {
  for (const PredicateHandle& predicate : differentPredicates()) {
    const vxPtrHandle<vxPredicateFunction> clone = predicate->clone();
    const vxPredicateFunction& original = *predicate;
    const vxPredicateFunction& copy = *clone;
    EXPECT_EQ(typeid(copy), typeid(original));
    EXPECT_NE(&copy, &original);
    EXPECT_EQ(copy.referenceCount(), 1);
    EXPECT_TRUE(original.isEqual(copy));
  }
}

TEST(PredicateTest, CopiesItsFieldsOnAssignment) {
  vxComparisonPredicate comparison(0, 1);
  comparison = vxComparisonPredicate(4, 2);
  EXPECT_EQ(comparison, vxComparisonPredicate(4, 2));

  vxRangePredicate range;
  const vxRangePredicate other({1.0, 2.0}, {5, 6});
  range = other;
  EXPECT_EQ(range, other);
  range = *&range;
  EXPECT_EQ(range, other);

  vxValidityPredicate validity;
  const vxValidityPredicate listed({5, 6});
  validity = listed;
  EXPECT_EQ(validity, listed);
}

TEST(PredicateTest, CanBeMoved) {
  vxRangePredicate range({1.0, 2.0}, {3, 4});
  const vxRangePredicate movedRange(std::move(range));
  EXPECT_EQ(movedRange, vxRangePredicate({1.0, 2.0}, {3, 4}));
  vxValidityPredicate validity({5});
  const vxValidityPredicate movedValidity(std::move(validity));
  EXPECT_EQ(movedValidity, vxValidityPredicate({5}));
}

TEST(PredicateTest, IsStoredAnewAfterAnAssignment) {
  vxComparisonPredicate comparison(0, 1);
  EXPECT_EQ(*arrivedAfterChange(comparison, [&] { comparison = vxComparisonPredicate(4, 2); }),
            vxComparisonPredicate(4, 2));
  vxRangePredicate range;
  const vxRangePredicate otherRange({1.0, 2.0}, {5, 6});
  EXPECT_EQ(*arrivedAfterChange(range, [&] { range = otherRange; }), otherRange);
  vxValidityPredicate validity;
  const vxValidityPredicate otherValidity({7});
  EXPECT_EQ(*arrivedAfterChange(validity, [&] { validity = otherValidity; }), otherValidity);
}

const char* const kComparisonBytes = "00 00 03000000 01000000";
const char* const kRangeBytes =
    "00 00 000000000000f0bf 0000000000000440 00 03000000 04000000 00000000 04000000";
const char* const kValidityBytes = "00 00 00 02000000 02000000 07000000";

TEST(PredicateTest, IsArchivedFieldByField) {
  vxComparisonPredicate comparison(3, 1);
  EXPECT_EQ(storedHex(comparison), packedHex(kComparisonBytes));
  vxRangePredicate range({-1.0, 2.5}, {4, 0, 4});
  EXPECT_EQ(storedHex(range), packedHex(kRangeBytes));
  vxValidityPredicate validity({2, 7});
  EXPECT_EQ(storedHex(validity), packedHex(kValidityBytes));
}

TEST(PredicateTest, ComesBackThroughAPointerToItsBase) {
  const std::vector<PredicateHandle> rows = differentPredicates();
  for (std::size_t i = 0; i + 1 < rows.size(); ++i) {
    PredicateHandle handle = rows[i];
    const auto arrived = loaded<PredicateHandle>(stored(handle));
    EXPECT_TRUE(arrived->isEqual(*rows[i])) << i;
    EXPECT_TRUE(rows[i]->isEqual(*arrived)) << i;
  }
}

template <class T>
void expectVersionBytesRefused(const T& target, const std::string& digits) {
  for (const std::size_t place : {0u, 1u}) {
    std::string bytes = fromHex(digits);
    bytes.at(place) = 1;
    T copy(target);
    expectUnknownVersion([&] { load(bytes, copy); }, "");
    EXPECT_EQ(copy, target);
  }
}

TEST(PredicateTest, RefusesAnotherVersionAtBothLevels) {
  expectVersionBytesRefused(vxComparisonPredicate(0, 1), kComparisonBytes);
  expectVersionBytesRefused(vxRangePredicate(), kRangeBytes);
  expectVersionBytesRefused(vxValidityPredicate(), kValidityBytes);
}

TEST(PredicateTest, AcceptsArchivedIndicesThatItsConstructorRefuses) {
  vxComparisonPredicate comparison(0, 1);
  load(fromHex("00 00 02000000 02000000"), comparison);
  EXPECT_EQ(comparison.measurementIndex1(), comparison.measurementIndex2());
  EXPECT_FALSE(comparison.outcome({{1, 2, 3}, {}}));

  // A negative one reaches the pattern, which refuses it.
  load(fromHex("00 00 ffffffff 02000000"), comparison);
  expectThrows<BadIndex>(
      [&] {
        comparison.outcome({{1, 2, 3}, {}});
      },
      L"Feature measurement indices must be >= 0");
  vxValidityPredicate validity;
  load(fromHex("00 00 00 01000000 feffffff"), validity);
  EXPECT_EQ(validity.measurementIndices(), (std::vector<long>{-2}));
}

}  // namespace
