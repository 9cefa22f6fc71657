// SPDX-License-Identifier: MIT
#include "vxclss/feature_score.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_rules.h"
#include "vxclss/errors.h"

namespace {

using Ignore = vxClassifierFeatureScoreIgnore;
using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;
using vxClassifierDefs::BadParams;

constexpr wchar_t kBadY0[] = L"y0 must be between 0 and 1";
constexpr wchar_t kBadY1[] = L"y1 must be between 0 and 1";
// Of init() and of score(), on purpose with other words.
constexpr wchar_t kInitX1[] = L"x1 must be lie between x0 and xc";
constexpr wchar_t kScoreX1[] = L"x1 must lie between x0 and xc";

OneSided oneSided(const plain::OneSided& values) {
  OneSided score;
  score.init(values.x0, values.x1, values.xc, values.y0, values.y1);
  return score;
}

double above(double x) { return std::nextafter(x, kInfinity); }
double below(double x) { return std::nextafter(x, -kInfinity); }

struct Point {
  const char* name;
  plain::OneSided values;
  double x;
  double score;
};

void PrintTo(const Point& row, std::ostream* out) { *out << row.name; }

class OneSidedScoreTest : public testing::TestWithParam<Point> {};

TEST_P(OneSidedScoreTest, IsAsStated) {
  const Point& row = GetParam();
  EXPECT_EQ(plain::bitsOf(oneSided(row.values).score(row.x)), plain::bitsOf(row.score));
}

const auto pointName = [](const auto& test) { return test.param.name; };

constexpr plain::OneSided kDefault{0, 1, 1, 1, 0};
constexpr plain::OneSided kRising{2, 5, 10, 1, 0.5};
constexpr plain::OneSided kFalling{10, 5, 2, 1, 0.5};
constexpr plain::OneSided kRisingStep{3, 3, 8, 0.25, 0.75};
constexpr plain::OneSided kFallingStep{3, 3, 1, 0.25, 0.75};
constexpr plain::OneSided kOnePoint{3, 3, 3, 0.25, 0.75};

INSTANTIATE_TEST_SUITE_P(
    Rising, OneSidedScoreTest,
    testing::Values(
        Point{"DefaultFarBelow", kDefault, -5, 1}, Point{"DefaultAtX0", kDefault, 0, 1},
        Point{"DefaultOnTheRamp", kDefault, 0.25, 0.75}, Point{"DefaultAtX1", kDefault, 1, 0},
        Point{"DefaultBeyond", kDefault, 1.0001, 0}, Point{"MinusInfinity", kRising, -kInfinity, 1},
        Point{"JustBelowX0", kRising, below(2), 1}, Point{"AtX0", kRising, 2, 1},
        Point{"OnTheRamp", kRising, 3.5, 0.75}, Point{"AtX1", kRising, 5, 0.5},
        Point{"JustAboveX1", kRising, above(5), 0.5}, Point{"SecondPlateau", kRising, 7, 0.5},
        Point{"AtXc", kRising, 10, 0.5}, Point{"JustAboveXc", kRising, above(10), 0},
        Point{"Infinity", kRising, kInfinity, 0}),
    pointName);

INSTANTIATE_TEST_SUITE_P(
    Falling, OneSidedScoreTest,
    testing::Values(Point{"FarBelow", kFalling, 1, 0}, Point{"AtXc", kFalling, 2, 0.5},
                    Point{"JustBelowXc", kFalling, below(2), 0}, Point{"AtX1", kFalling, 5, 0.5},
                    Point{"SecondPlateau", kFalling, 3, 0.5},
                    Point{"OnTheRamp", kFalling, 7.5, 0.75}, Point{"AtX0", kFalling, 10, 1},
                    Point{"JustAboveX0", kFalling, above(10), 1},
                    Point{"FarAbove", kFalling, 20, 1}, Point{"Infinity", kFalling, kInfinity, 1},
                    Point{"MinusInfinity", kFalling, -kInfinity, 0}),
    pointName);

INSTANTIATE_TEST_SUITE_P(
    Steps, OneSidedScoreTest,
    testing::Values(
        Point{"RisingBelow", kRisingStep, below(3), 0.25}, Point{"RisingAt", kRisingStep, 3, 0.75},
        Point{"RisingAtXc", kRisingStep, 8, 0.75},
        Point{"FallingAbove", kFallingStep, above(3), 0.25},
        Point{"FallingAt", kFallingStep, 3, 0.75}, Point{"FallingAtXc", kFallingStep, 1, 0.75},
        Point{"FallingBelowXc", kFallingStep, below(1), 0},
        // All equal: the axis rises, so the cut-off is above.
        Point{"OnePointBelow", kOnePoint, below(3), 0.25}, Point{"OnePointAt", kOnePoint, 3, 0.75},
        Point{"OnePointAbove", kOnePoint, above(3), 0},
        // x1 at the cut-off, and a ramp as narrow as can be.
        Point{"NoSecondPlateau", {0, 4, 4, 1, 0.5}, 4, 0.5},
        Point{"NarrowRampAtX0", {0, kTiny, 1, 0.25, 0.5}, 0, 0.25},
        Point{"NarrowRampAtX1", {0, kTiny, 1, 0.25, 0.5}, kTiny, 0.5},
        Point{"LevelRamp", {0, 4, 8, 0.5, 0.5}, 3, 0.5},
        Point{"ClimbingRamp", {0, 4, 8, 0, 1}, 1, 0.25}),
    pointName);

TEST(FeatureScoreTest, IgnoresEveryValue) {
  for (const double x : {0.0, -1.0, 1e300, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(Ignore().score(x), -1.0);
  }
}

TEST(FeatureScoreTest, AgreesWithThePlainDefinitionInBothOrientations) {
  std::mt19937 random(71);
  std::uniform_int_distribution<int> whole(-4, 4);
  std::uniform_real_distribution<double> real(-4.0, 4.0);
  int consistent = 0;
  for (int round = 0; round < 20'000; ++round) {
    // Whole numbers, so that values meet; full mantissas, so that rounding shows.
    const auto number = [&] { return round % 2 == 0 ? whole(random) : real(random); };
    const auto unit = [&] { return std::abs(number()) / 4.0; };
    const plain::OneSided values{number(), number(), number(), unit(), unit()};
    OneSided score;
    score.x0(values.x0);
    score.x1(values.x1);
    score.xc(values.xc);
    score.y0(values.y0);
    score.y1(values.y1);
    const double x = number();
    if (values.isConsistent()) {
      ++consistent;
      ASSERT_EQ(plain::bitsOf(score.score(x)), plain::bitsOf(values.score(x))) << "round " << round;
      ASSERT_TRUE(score == oneSided(values));
    } else {
      expectRefused<BadParams>(
          score, [&] { score.score(x); }, kScoreX1);
      expectThrows<BadParams>([&] { oneSided(values); }, kInitX1);
    }
  }
  EXPECT_GT(consistent, 5000);
  EXPECT_LT(consistent, 15'000);
}

TEST(FeatureScoreTest, HasNoScoreForANaNUnlessItsXValuesHaveOne) {
  EXPECT_TRUE(std::isnan(oneSided(kRising).score(kNaN)));
  EXPECT_TRUE(std::isnan(oneSided(kFalling).score(kNaN)));
  EXPECT_TRUE(std::isnan(TwoSided().score(kNaN)));

  // No comparison with a NaN holds: neither the check nor the rising orientation.
  OneSided score = oneSided(kFalling);
  score.x1(kNaN);
  EXPECT_EQ(score.score(1), 0.0);
  EXPECT_EQ(score.score(10), 1.0);
  EXPECT_TRUE(std::isnan(score.score(7)));
  score.init(10, kNaN, 2, 1, 0.5);
  EXPECT_EQ(score.score(10), 1.0);
}

struct Refusal {
  const char* name;
  plain::OneSided values;
  const wchar_t* text;
};

void PrintTo(const Refusal& row, std::ostream* out) { *out << row.name; }

class OneSidedInitTest : public testing::TestWithParam<Refusal> {};

TEST_P(OneSidedInitTest, RefusesAndChangesNothing) {
  const auto& [name, values, text] = GetParam();
  OneSided score = oneSided(kRising);
  expectRefused<BadParams>(
      score, [&, v = values] { score.init(v.x0, v.x1, v.xc, v.y0, v.y1); }, text);
}

INSTANTIATE_TEST_SUITE_P(Values, OneSidedInitTest,
                         testing::Values(Refusal{"X1AboveBoth", {0, 2, 1, 1, 0}, kInitX1},
                                         Refusal{"X1BelowBoth", {0, -1, 1, 1, 0}, kInitX1},
                                         Refusal{"X1AboveBothFalling", {1, 2, 0, 1, 0}, kInitX1},
                                         Refusal{"X1JustAbove", {0, above(1), 1, 1, 0}, kInitX1},
                                         Refusal{"X1JustBelow", {0, -kTiny, 1, 1, 0}, kInitX1},
                                         Refusal{"Y0Above", {0, 1, 2, above(1), 0}, kBadY0},
                                         Refusal{"Y0Below", {0, 1, 2, -kTiny, 0}, kBadY0},
                                         Refusal{"Y1Above", {0, 1, 2, 0, 1.5}, kBadY1},
                                         Refusal{"Y1Below", {0, 1, 2, 0, -1}, kBadY1},
                                         Refusal{"Y0BeforeY1", {0, 1, 2, 2, 2}, kBadY0},
                                         Refusal{"Y0BeforeX1", {0, 2, 1, 2, 0}, kBadY0},
                                         Refusal{"Y1BeforeX1", {0, 2, 1, 0, 2}, kBadY1},
                                         Refusal{"Infinite", {0, 1, 2, kInfinity, 0}, kBadY0}),
                         [](const auto& test) { return test.param.name; });

TEST(OneSidedScoreTest, IsAFallingRampByDefault) {
  const OneSided score;
  EXPECT_EQ(score, oneSided(kDefault));
  EXPECT_EQ(score.x0(), 0.0);
  EXPECT_EQ(score.x1(), 1.0);
  EXPECT_EQ(score.xc(), 1.0);
  EXPECT_EQ(score.y0(), 1.0);
  EXPECT_EQ(score.y1(), 0.0);
}

TEST(OneSidedScoreTest, SetsXValuesUncheckedAndReportsThemWhenItScores) {
  OneSided score;
  score.x1(2);
  EXPECT_EQ(score.x1(), 2.0);
  expectRefused<BadParams>(
      score, [&] { score.score(0); }, kScoreX1);
  expectThrows<BadParams>([&] { score.score(kNaN); }, kScoreX1);
  score.xc(2);
  EXPECT_EQ(score.score(1), 0.5);
  score.x0(4);
  score.xc(3);
  expectThrows<BadParams>([&] { score.score(0); }, kScoreX1);
}

TEST(OneSidedScoreTest, ChecksItsYSetters) {
  OneSided score;
  for (const double good : {0.0, 0.5, 1.0, 0.25, -0.0}) {
    score.y0(good);
    score.y1(good);
    EXPECT_EQ(score.y0(), good);
    EXPECT_EQ(score.y1(), good);
  }
  score.y0(0.25);
  for (const double bad : {1.0000001, -0.1, -kTiny, kInfinity, -kInfinity}) {
    expectRefused<BadParams>(
        score, [&] { score.y0(bad); }, kBadY0);
    expectRefused<BadParams>(
        score, [&] { score.y1(bad); }, kBadY1);
  }
}

TEST(FeatureScoreTest, ClonesItsExactClassAndValues) {
  OneSided one = oneSided(kRising);
  one.x1(99);
  TwoSided two;
  two.y0h(0.25);
  for (const vxClsFtSc* score :
       {static_cast<const vxClsFtSc*>(&one), static_cast<const vxClsFtSc*>(&two)}) {
    const std::unique_ptr<vxClsFtSc> clone(score->clone());
    EXPECT_EQ(clone->referenceCount(), 0);
    EXPECT_TRUE(*clone == *score);
    const vxClsFtSc& copy = *clone;
    EXPECT_EQ(typeid(copy), typeid(*score));
  }
  const std::unique_ptr<Ignore> ignore(Ignore().clone());
  EXPECT_EQ(ignore->score(5), -1.0);
}

TEST(FeatureScoreTest, CopiesItsValuesAndNotItsReferenceCount) {
  const vxPtrHandle<OneSided> held(new OneSided(oneSided(kRising)));
  OneSided copy(*held);
  EXPECT_EQ(copy.referenceCount(), 0);
  *held = OneSided();
  EXPECT_EQ(held->referenceCount(), 1);
  EXPECT_EQ(copy, oneSided(kRising));
  EXPECT_EQ(*held, OneSided());
}

TEST(FeatureScoreTest, IsEqualToOneOfTheSameClassAndValuesOnly) {
  const Ignore ignore;
  const OneSided one;
  const TwoSided two;
  const vxClsFtSc* const scores[] = {&ignore, &one, &two};
  for (const vxClsFtSc* a : scores) {
    for (const vxClsFtSc* b : scores) {
      EXPECT_EQ(*a == *b, a == b);
      EXPECT_EQ(*a != *b, a != b);
    }
  }
  EXPECT_TRUE(ignore == Ignore());
  EXPECT_TRUE(one == OneSided());
  EXPECT_TRUE(two == TwoSided());
  EXPECT_FALSE(one == HostScore([](double) { return 1.0; }));
}

TEST(FeatureScoreTest, ComparesEveryValueExactly) {
  void (OneSided::*const set[])(double) = {&OneSided::x0, &OneSided::x1, &OneSided::xc,
                                           &OneSided::y0, &OneSided::y1};
  for (const auto setter : set) {
    OneSided a;
    OneSided b;
    (a.*setter)(0.5);
    (b.*setter)(above(0.5));
    EXPECT_FALSE(a == b);
    (b.*setter)(0.5);
    EXPECT_TRUE(a == b);
  }
  void (TwoSided::*const setTwo[])(double) = {
      &TwoSided::x0,  &TwoSided::x1,  &TwoSided::xc,  &TwoSided::y0,  &TwoSided::y1,
      &TwoSided::x0h, &TwoSided::x1h, &TwoSided::xch, &TwoSided::y0h, &TwoSided::y1h};
  for (const auto setter : setTwo) {
    TwoSided two;
    (two.*setter)(0.125);
    EXPECT_FALSE(two == TwoSided());
    EXPECT_FALSE(TwoSided() == two);
  }
  OneSided zero;
  zero.x0(-0.0);
  EXPECT_TRUE(zero == OneSided());
  zero.x0(kNaN);
  EXPECT_FALSE(zero == zero);
}

class DerivedScore : public OneSided {};

TEST(FeatureScoreTest, DiffersFromADerivedClassInBothDirections) {
  EXPECT_FALSE(OneSided() == DerivedScore());
  EXPECT_FALSE(DerivedScore() == OneSided());
}

}  // namespace
