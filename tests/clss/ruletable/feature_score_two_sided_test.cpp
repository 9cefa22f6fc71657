// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "tests/support/error_matcher.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_rules.h"
#include "vxclss/errors.h"
#include "vxclss/feature_score.h"

namespace {

using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;
using vxClassifierDefs::BadParams;

constexpr wchar_t kBadY0[] = L"y0 must be between 0 and 1";
constexpr wchar_t kBadY1[] = L"y1 must be between 0 and 1";
// Of init() and of score(), on purpose with other words.
constexpr wchar_t kInitX1[] = L"x1 must be lie between x0 and xc";
constexpr wchar_t kScoreX1[] = L"x1 must lie between x0 and xc";
constexpr wchar_t kInitSides[] = L"x0 > lowest || x1 > lowest || xc > lowest";
constexpr wchar_t kScoreSides[] = L"Bad x values";

OneSided oneSided(const plain::OneSided& values) {
  OneSided score;
  score.init(values.x0, values.x1, values.xc, values.y0, values.y1);
  return score;
}

struct SidesPoint {
  const char* name;
  double x;
  double score;
};

class TwoSidedScoreTest : public testing::TestWithParam<SidesPoint> {};

TEST_P(TwoSidedScoreTest, IsAsStatedForTheDefaultTriangle) {
  EXPECT_EQ(plain::bitsOf(TwoSided().score(GetParam().x)), plain::bitsOf(GetParam().score));
}

INSTANTIATE_TEST_SUITE_P(Points, TwoSidedScoreTest,
                         testing::Values(SidesPoint{"Middle", 0, 1},
                                         SidesPoint{"JustBelowTheMiddle", -kTiny, 1},
                                         SidesPoint{"Low", -0.5, 0.5}, SidesPoint{"High", 0.5, 0.5},
                                         SidesPoint{"LowEnd", -1, 0}, SidesPoint{"HighEnd", 1, 0},
                                         SidesPoint{"BelowTheLowEnd", -2, 0},
                                         SidesPoint{"AboveTheHighEnd", 2, 0}),
                         [](const auto& test) { return test.param.name; });

TEST(TwoSidedScoreTest, KeepsTheOrderOfItsTenValues) {
  TwoSided score;
  score.init(3, 2, 1, 4, 5, 6, 0.1, 0.2, 0.3, 0.4);
  EXPECT_EQ(score.Low(), oneSided({3, 2, 1, 0.1, 0.2}));
  EXPECT_EQ(score.High(), oneSided({4, 5, 6, 0.3, 0.4}));
  const double values[] = {score.x0(),  score.x1(), score.xc(), score.x0h(), score.x1h(),
                           score.xch(), score.y0(), score.y1(), score.y0h(), score.y1h()};
  EXPECT_EQ(std::vector<double>(values, values + 10),
            (std::vector<double>{3, 2, 1, 4, 5, 6, 0.1, 0.2, 0.3, 0.4}));
}

TEST(TwoSidedScoreTest, SetsEachValueOfItsOwnSide) {
  TwoSided score;
  score.x0(-3);
  score.x1(-4);
  score.xc(-5);
  score.x0h(6);
  score.x1h(7);
  score.xch(8);
  score.y0(0.1);
  score.y1(0.2);
  score.y0h(0.3);
  score.y1h(0.4);
  TwoSided expected;
  expected.init(-3, -4, -5, 6, 7, 8, 0.1, 0.2, 0.3, 0.4);
  EXPECT_EQ(score, expected);
}

TEST(TwoSidedScoreTest, ChecksItsYSettersByTheirOwnNames) {
  TwoSided score;
  for (const double bad : {1.0000001, -0.1}) {
    expectRefused<BadParams>(
        score, [&] { score.y0(bad); }, kBadY0);
    expectRefused<BadParams>(
        score, [&] { score.y1(bad); }, kBadY1);
    expectRefused<BadParams>(
        score, [&] { score.y0h(bad); }, L"y0h must be between 0 and 1");
    expectRefused<BadParams>(
        score, [&] { score.y1h(bad); }, L"y1h must be between 0 and 1");
  }
}

struct SidesRefusal {
  const char* name;
  double v[10];
  const wchar_t* text;
};

class TwoSidedInitTest : public testing::TestWithParam<SidesRefusal> {};

TEST_P(TwoSidedInitTest, RefusesAndChangesNothing) {
  const auto& v = GetParam().v;
  TwoSided score;
  score.init(3, 2, 1, 4, 5, 6, 0.1, 0.2, 0.3, 0.4);
  const auto init = [&] { score.init(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9]); };
  expectRefused<BadParams>(score, init, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, TwoSidedInitTest,
    testing::Values(SidesRefusal{"X0AboveLowest", {0.5, -1, -1, 0, 1, 1, 1, 0, 1, 0}, kInitSides},
                    SidesRefusal{"X1AboveLowest", {0, 0.5, 0.5, 0, 1, 1, 1, 0, 1, 0}, kInitSides},
                    SidesRefusal{"XcAboveLowest", {0, 0, 0.5, 0, 1, 1, 1, 0, 1, 0}, kInitSides},
                    SidesRefusal{"LowestIsX1h", {0, 0, 0, 5, -1, 4, 1, 0, 1, 0}, kInitSides},
                    SidesRefusal{"LowestIsXch", {0, 0, 0, 5, 4, -1, 1, 0, 1, 0}, kInitSides},
                    SidesRefusal{"SidesBeforeY0", {0.5, -1, -1, 0, 1, 1, 2, 0, 1, 0}, kInitSides},
                    SidesRefusal{"LowY0", {0, -1, -1, 0, 1, 1, 2, 2, 2, 2}, kBadY0},
                    SidesRefusal{"LowY1", {0, -1, -1, 0, 1, 1, 1, 2, 2, 2}, kBadY1},
                    SidesRefusal{"LowX1BeforeHighY0", {-2, -1, -3, 0, 1, 1, 1, 0, 2, 2}, kInitX1},
                    // Not by the names of the setters.
                    SidesRefusal{"HighY0", {0, -1, -1, 0, 1, 1, 1, 0, 2, 2}, kBadY0},
                    SidesRefusal{"HighY1", {0, -1, -1, 0, 1, 1, 1, 0, 1, 2}, kBadY1},
                    SidesRefusal{"HighX1", {0, -1, -1, 0, 2, 1, 1, 0, 1, 0}, kInitX1}),
    [](const auto& test) { return test.param.name; });

TEST(TwoSidedScoreTest, AcceptsLowValuesAtTheLowestHighOne) {
  TwoSided score;
  score.init(2, 2, 2, 4, 3, 2, 0.25, 0.5, 0.75, 1);
  EXPECT_EQ(score.score(2), 1.0) << "the high side, from its lowest value on";
  EXPECT_EQ(score.score(std::nextafter(2.0, -kInfinity)), 0.25);
}

TEST(TwoSidedScoreTest, ReportsUncheckedValuesWhenItScores) {
  TwoSided score;
  score.x0(0.5);
  expectRefused<BadParams>(
      score, [&] { score.score(0); }, kScoreSides);
  score.x1h(9);
  expectThrows<BadParams>([&] { score.score(0); }, kScoreX1);
  score = TwoSided();
  score.x1(-2);
  expectThrows<BadParams>([&] { score.score(5); }, kScoreX1);
  score = TwoSided();
  score.x1h(-1);
  expectThrows<BadParams>([&] { score.score(-5); }, kScoreX1);
}

TEST(TwoSidedScoreTest, AgreesWithThePlainDefinition) {
  std::mt19937 random(72);
  std::uniform_int_distribution<int> whole(-4, 4);
  std::uniform_real_distribution<double> real(-4.0, 4.0);
  int scored = 0;
  for (int round = 0; round < 20'000; ++round) {
    // Whole numbers, so that values meet; full mantissas, so that rounding shows.
    const auto number = [&] { return round % 2 == 0 ? whole(random) : real(random); };
    const auto unit = [&] { return std::abs(number()) / 4.0; };
    const plain::OneSided low{number() - 2, number() - 2, number() - 2, unit(), unit()};
    const plain::OneSided high{number() + 2, number() + 2, number() + 2, unit(), unit()};
    const double lowest = std::min(high.x0, std::min(high.x1, high.xc));
    const bool apart = low.x0 <= lowest && low.x1 <= lowest && low.xc <= lowest;
    TwoSided score;
    score.x0(low.x0);
    score.x1(low.x1);
    score.xc(low.xc);
    score.x0h(high.x0);
    score.x1h(high.x1);
    score.xch(high.xc);
    score.y0(low.y0);
    score.y1(low.y1);
    score.y0h(high.y0);
    score.y1h(high.y1);
    const double x = number();
    const auto init = [&] {
      TwoSided().init(low.x0, low.x1, low.xc, high.x0, high.x1, high.xc, low.y0, low.y1, high.y0,
                      high.y1);
    };
    if (!low.isConsistent() || !high.isConsistent()) {
      expectThrows<BadParams>([&] { score.score(x); }, kScoreX1);
      expectThrows<BadParams>(init, apart ? kInitX1 : kInitSides);
    } else if (!apart) {
      expectThrows<BadParams>([&] { score.score(x); }, kScoreSides);
      expectThrows<BadParams>(init, kInitSides);
    } else {
      ++scored;
      ASSERT_EQ(plain::bitsOf(score.score(x)), plain::bitsOf(plain::Function{{low, high}}.score(x)))
          << "round " << round;
      init();
    }
  }
  EXPECT_GT(scored, 1000);
}

}  // namespace
