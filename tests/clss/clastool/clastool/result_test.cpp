// SPDX-License-Identifier: MIT
#include "vxclss/result.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/attention_counter.h"
#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;
using Category = vxClassifierCategoryResult;
using Categories = std::vector<vxClassifierCategoryResult>;

constexpr double kBelowZero = -kTiny;
constexpr double kAboveOne = 0x1.0000000000001p+0;

const wchar_t* const kNegativeLabel = L"Category labels must be >= 0";
const wchar_t* const kBadScore = L"Scores must be >= 0.0 and <= 1.0";
const wchar_t* const kBadCost = L"Costs must be >= 0.0";
const wchar_t* const kNotUnique = L"The category labels of the match results must be unique.";
const wchar_t* const kNoClassScore = L"At least one of the classification scores must be > 0.";

static_assert(!std::is_default_constructible_v<Category>);

/// A record with any numbers at all, as only an archive can bring it.
Category unchecked(long label, double matchScore, double classScore, double expectedCost) {
  unsigned char version = 0;
  const std::string bytes = stored(version, label, matchScore, classScore, expectedCost);
  Category category(0, 0.0, 0.0, 0.0);
  load(bytes, category);
  return category;
}

std::vector<long> labels(const vxClassifierResult& result) {
  std::vector<long> list;
  for (const Category& category : result.categoryResults()) {
    list.push_back(category.categoryLabel());
  }
  return list;
}

/// Label 1 for 0.5, 2 for 0.25, of class scores 0.25 and 0.75.
vxClassifierResult filled() {
  return {Categories{{1, 0.5, 0.25, 0.5}, {2, 0.75, 0.75, 0.25}}, -3.0};
}

TEST(CategoryResultTest, HoldsItsFields) {
  const Category category(7, 0.25, 0.5, 3.0);
  EXPECT_EQ(category.categoryLabel(), 7);
  EXPECT_EQ(category.matchScore(), 0.25);
  EXPECT_EQ(category.classScore(), 0.5);
  EXPECT_EQ(category.expectedCost(), 3.0);
}

TEST(CategoryResultTest, AcceptsTheEndsOfItsRangesAndNan) {
  EXPECT_NO_THROW(Category(0, 0.0, 0.0, 0.0));
  EXPECT_NO_THROW(Category(std::numeric_limits<long>::max(), 1.0, 1.0, kInfinity));
  EXPECT_NO_THROW(Category(0, -0.0, -0.0, -0.0));
  EXPECT_NO_THROW(Category(0, kNaN, kNaN, kNaN));
}

TEST(CategoryResultTest, ChecksItsFieldsInOrder) {
  struct Row {
    const char* name;
    long label;
    double match, score, cost;
  };
  const Row labelRows[] = {{"label", -1, 0, 0, 0}, {"label before the rest", -1, 2, 2, -1}};
  for (const Row& row : labelRows) {
    SCOPED_TRACE(row.name);
    expectThrows<BadLabel>([&] { Category(row.label, row.match, row.score, row.cost); },
                           kNegativeLabel);
  }
  const Row scoreRows[] = {
      {"match score below", 0, kBelowZero, 0, 0},   {"match score above", 0, kAboveOne, 0, 0},
      {"match score at -inf", 0, -kInfinity, 0, 0}, {"class score below", 0, 0, kBelowZero, 0},
      {"class score above", 0, 0, kAboveOne, 0},    {"class score at inf", 0, 0, kInfinity, 0},
      {"class score before cost", 0, 0, 2, -1},     {"match score before cost", 0, 2, 0, -1},
  };
  for (const Row& row : scoreRows) {
    SCOPED_TRACE(row.name);
    expectThrows<BadParams>([&] { Category(row.label, row.match, row.score, row.cost); },
                            kBadScore);
  }
  for (const double cost : {kBelowZero, -1.0, -kInfinity}) {
    expectThrows<BadParams>([cost] { Category(0, kNaN, 1.0, cost); }, kBadCost);
  }
}

TEST(CategoryResultTest, ComparesEveryFieldExactly) {
  const Category category(1, 0.25, 0.5, 3.0);
  EXPECT_TRUE(category == Category(1, 0.25, 0.5, 3.0));
  EXPECT_FALSE(category != Category(1, 0.25, 0.5, 3.0));
  for (const Category& other :
       {Category(2, 0.25, 0.5, 3.0), Category(1, 0x1.0000000000001p-2, 0.5, 3.0),
        Category(1, 0.25, 0x1.0000000000001p-1, 3.0), Category(1, 0.25, 0.5, 4.0)}) {
    EXPECT_FALSE(category == other);
    EXPECT_TRUE(category != other);
  }
  EXPECT_TRUE(Category(0, 0.0, 0.0, 0.0) == Category(0, -0.0, -0.0, -0.0));
}

TEST(CategoryResultTest, DiffersFromItselfWhereItHoldsANan) {
  for (const Category& category :
       {Category(1, kNaN, 0.5, 3.0), Category(1, 0.5, kNaN, 3.0), Category(1, 0.5, 0.5, kNaN)}) {
    const Category copy(category);
    EXPECT_FALSE(copy == category);
    EXPECT_TRUE(copy != category);
  }
}

TEST(CategoryResultTest, IsArchivedFieldByField) {
  Category category(7, 0.25, 0.5, 3.0);
  const std::string bytes =
      packedHex("00 07000000 000000000000d03f 000000000000e03f 0000000000000840");
  EXPECT_EQ(storedHex(category), bytes);
  Category target(0, 0.0, 0.0, 0.0);
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == category);
}

TEST(CategoryResultTest, NamesTheRecordWhoseVersionIsUnknown) {
  Category source(7, 0.25, 0.5, 3.0);
  std::string bytes = stored(source);
  bytes[0] = '\x01';
  Category target(1, 0.0, 0.0, 0.0);
  expectUnknownVersion([&] { load(bytes, target); }, recordUnit());
  EXPECT_TRUE(target == Category(1, 0.0, 0.0, 0.0));
}

TEST(ResultTest, StartsEmpty) {
  const vxClassifierResult result;
  EXPECT_TRUE(result.categoryResults().empty());
  EXPECT_EQ(result.matchScoreFactorLog(), 0.0);
  EXPECT_TRUE(result == vxClassifierResult());
}

TEST(ResultTest, SortsGivenCostsAndScalesClassScores) {
  const vxClassifierResult result(
      Categories{{5, 0.1, 0.5, 2.0}, {3, 0.2, 0.25, 1.0}, {9, 0.3, 0.25, 3.0}, {4, 0.4, 0.0, 0.0}},
      -7.5);
  EXPECT_EQ(labels(result), (std::vector<long>{4, 3, 5, 9}));
  const Category& cheapest = result.categoryResults()[0];
  EXPECT_EQ(cheapest.matchScore(), 0.4);
  EXPECT_EQ(cheapest.classScore(), 0.0);
  EXPECT_EQ(cheapest.expectedCost(), 0.0);
  EXPECT_EQ(result.categoryResults()[2].classScore(), 0.5);
  EXPECT_EQ(result.categoryResults()[3].expectedCost(), 3.0);
  EXPECT_EQ(result.matchScoreFactorLog(), -7.5);
}

TEST(ResultTest, ScalesClassScoresBySumsInTheOrderOfCosts) {
  // Adding these in the order given, and not in that of the costs, gives another last bit.
  const Categories given = {{0, 0.0, 0.1, 3.0}, {1, 0.0, 0.2, 2.0}, {2, 0.0, 0.3, 1.0}};
  const vxClassifierResult result(given, 0.0);
  const double sum = 0.3 + 0.2 + 0.1;
  ASSERT_NE(sum, 0.1 + 0.2 + 0.3);
  EXPECT_EQ(result.categoryResults()[0].classScore(), 0.3 / sum);
  EXPECT_EQ(result.categoryResults()[1].classScore(), 0.2 / sum);
  EXPECT_EQ(result.categoryResults()[2].classScore(), 0.1 / sum);
}

TEST(ResultTest, KeepsGivenClassScoresOfSumOne) {
  const vxClassifierResult result = filled();
  EXPECT_EQ(labels(result), (std::vector<long>{2, 1}));
  EXPECT_EQ(result.categoryResults()[0].classScore(), 0.75);
  EXPECT_EQ(result.categoryResults()[1].classScore(), 0.25);
}

TEST(ResultTest, ScalesTinyAndSingleClassScores) {
  const vxClassifierResult one(Categories{{3, 0.0, kTiny, 1.0}}, 0.0);
  EXPECT_EQ(one.categoryResults()[0].classScore(), 1.0);
}

TEST(ResultTest, ChecksGivenCategoriesInOrder) {
  const auto build = [](const Categories& categories) {
    return [categories] { vxClassifierResult(categories, 0.0); };
  };
  expectThrows<BadParams>(build({{1, 0, 0.0, 0}, {1, 0, 0.0, 0}}), kNotUnique);
  expectThrows<BadParams>(build({{1, 0, 0.5, 0}, {2, 0, 0.5, 0}, {1, 0, 0.5, 0}}), kNotUnique);
  expectThrows<BadParams>(build({}), kNoClassScore);
  expectThrows<BadParams>(build({{1, 0, 0.0, 0}, {2, 1, -0.0, 0}}), kNoClassScore);
}

TEST(ResultTest, ChecksRangesAgainWhileItScales) {
  const auto build = [](const Categories& categories) {
    return [categories] { vxClassifierResult(categories, 0.0); };
  };
  expectThrows<BadParams>(build({unchecked(1, 0.0, 5.0, 0.0), unchecked(2, 0.0, -4.0, 0.0)}),
                          kBadScore);
  expectThrows<BadParams>(build({unchecked(1, 1.5, 0.5, 0.0)}), kBadScore);
  expectThrows<BadParams>(build({unchecked(1, 1.0, 0.5, -1.0)}), kBadCost);
  expectThrows<BadLabel>(build({unchecked(-5, 1.5, 0.5, -1.0)}), kNegativeLabel);
  expectThrows<BadParams>(build({unchecked(-5, 0.0, 5.0, 0.0), unchecked(1, 0.0, -5.0, 0.0)}),
                          kNoClassScore);
  expectThrows<BadParams>(build({unchecked(-5, 0.0, 1.0, 0.0), unchecked(-5, 0.0, 1.0, 0.0)}),
                          kNotUnique);
}

TEST(ResultTest, TakesNanScores) {
  const vxClassifierResult result(Categories{{1, kNaN, kNaN, 2.0}, {2, 0.5, 0.5, 1.0}}, kNaN);
  EXPECT_EQ(labels(result), (std::vector<long>{2, 1}));
  EXPECT_TRUE(std::isnan(result.categoryResults()[0].classScore())) << "the sum is a NaN";
  EXPECT_TRUE(std::isnan(result.matchScoreFactorLog()));
}

TEST(ResultTest, DoesNotPollWhereNothingIsWeighted) {
  const AttentionCounter attention(1);
  EXPECT_EQ(labels(filled()), (std::vector<long>{2, 1}));
  EXPECT_EQ(attention.polls(), 0);
}

TEST(ResultTest, TakesItsOwnCategoriesBack) {
  vxClassifierResult result = filled();
  result = vxClassifierResult(result.categoryResults(), -3.0);
  EXPECT_TRUE(result == filled());
  const vxClassifierResult& same = result;
  result = same;
  EXPECT_TRUE(result == filled());
}

TEST(ResultTest, ComparesCategoriesInOrderAndTheFactor) {
  EXPECT_TRUE(filled() == filled());
  EXPECT_FALSE(filled() != filled());
  const Categories tied = {{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}};
  const Categories reversed = {tied[1], tied[0]};
  EXPECT_TRUE(vxClassifierResult(tied, 0.0) == vxClassifierResult(tied, -0.0));
  EXPECT_TRUE(vxClassifierResult(tied, 0.0) != vxClassifierResult(tied, kTiny));
  EXPECT_TRUE(vxClassifierResult(tied, 0.0) != vxClassifierResult(reversed, 0.0));
  EXPECT_TRUE(vxClassifierResult(tied, 0.0) != vxClassifierResult());
  const vxClassifierResult withNan(tied, kNaN);
  EXPECT_FALSE(withNan == withNan);
}

TEST(ResultTest, IsArchivedFieldByField) {
  vxClassifierResult empty;
  EXPECT_EQ(storedHex(empty), packedHex("00  00 00000000  0000000000000000"));
  vxClassifierResult result = filled();
  const std::string bytes = packedHex(
      "00  00 02000000"
      "00 02000000 000000000000e83f 000000000000e83f 000000000000d03f"
      "00 01000000 000000000000e03f 000000000000d03f 000000000000e03f"
      "00000000000008c0");
  EXPECT_EQ(storedHex(result), bytes);
  vxClassifierResult target;
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == result);
}

TEST(ResultTest, LoadsCategoriesInTheOrderInWhichTheyStand) {
  const std::string one = "00 01000000 0000000000000000 0000000000000000 0000000000000840";
  const std::string bytes = fromHex("00 00 02000000 " + one + one + "0000000000000000");
  vxClassifierResult target;
  load(bytes, target);
  EXPECT_EQ(labels(target), (std::vector<long>{1, 1})) << "nothing is sorted or checked again";
}

TEST(ResultTest, NamesTheRecordWhoseVersionIsUnknown) {
  vxClassifierResult source = filled();
  struct Row {
    std::size_t version;
    std::string name;
  };
  for (const Row& row : {Row{0, recordUnit()}, Row{1, ""}, Row{6, recordUnit()}}) {
    SCOPED_TRACE(row.version);
    std::string bytes = stored(source);
    ASSERT_EQ(bytes[row.version], '\0');
    bytes[row.version] = '\x01';
    vxClassifierResult target = filled();
    expectUnknownVersion([&] { load(bytes, target); }, row.name);
    EXPECT_TRUE(target == filled());
  }
}

}  // namespace
