// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/host_error.h"
#include "tests/support/plain_rules.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"
#include "vxclss/rule_table.h"

namespace {

using Handle = vxPtrHandle<vxClsFtSc>;
using vxClassifierDefs::BadParams;

constexpr wchar_t kMismatch[] = L"MismatchedFeatureVectorSize";
constexpr wchar_t kNoValues[] = L"featureVector.featureValues().size() == 0";

/// A function that gives this score for every value.
Handle constant(double score) {
  return Handle(new HostScore([score](double) { return score; }));
}
Handle ignore() { return Handle(new vxClassifierFeatureScoreIgnore); }
Handle ramp() { return Handle(new vxClassifierFeatureScoreOneSided); }

vxClassifierRule ruleOf(const std::vector<Handle>& functions, long label = 0) {
  vxClassifierRule rule;
  rule.init(functions, label);
  return rule;
}

vxClassifierFeatureVector zeros(std::size_t count) {
  return vxClassifierFeatureVector(std::vector<double>(count, 0.0));
}

double scoreOf(const std::vector<double>& scores) {
  std::vector<Handle> functions;
  for (const double score : scores) functions.push_back(constant(score));
  return ruleOf(functions).score(zeros(scores.size()));
}

TEST(FeatureVectorTest, HoldsACopyOfItsValues) {
  std::vector<double> values = {1.0, -0.0, 3.0};
  const vxClassifierFeatureVector vector(values);
  values[0] = 9.0;
  EXPECT_EQ(vector.featureValues(), (std::vector<double>{1.0, 0.0, 3.0}));
  vxClassifierFeatureVector assigned{std::vector<double>()};
  EXPECT_TRUE(assigned.featureValues().empty());
  assigned = vector;
  EXPECT_EQ(assigned.featureValues(), vector.featureValues());
}

TEST(FeatureVectorTest, IsArchivedAsAVector) {
  vxClassifierFeatureVector vector({1.0, -2.5});
  EXPECT_EQ(storedHex(vector), packedHex("00 02000000 000000000000f03f 00000000000004c0"));
  vxClassifierFeatureVector arrived({7.0});
  load(stored(vector), arrived);
  EXPECT_EQ(arrived.featureValues(), vector.featureValues());
  expectUnknownVersion([&] { load(fromHex("01 00000000"), arrived); }, "");
  EXPECT_EQ(arrived.featureValues(), vector.featureValues());
}

TEST(RuleTest, HasNoFunctionsAndLabel0ByDefault) {
  EXPECT_TRUE(vxClassifierRule().scoringMethods().empty());
  EXPECT_EQ(vxClassifierRule().label(), 0);
}

TEST(RuleTest, RefusesANegativeLabelBeforeAnEmptyList) {
  vxClassifierRule rule = ruleOf({ramp()}, 4);
  expectRefused<BadParams>(
      rule, [&] { rule.init({}, -1); }, L"label < 0");
  expectRefused<BadParams>(
      rule, [&] { rule.init({ramp()}, -1); }, L"label < 0");
  expectRefused<BadParams>(
      rule, [&] { rule.init({}, 3); }, L"scoringMethods.size() == 0");
  rule.init({ignore()}, 0);
  EXPECT_EQ(rule.label(), 0);
}

TEST(RuleTest, SharesItsFunctionsWithItsCopiesAndTheCaller) {
  const vxPtrHandle<vxClassifierFeatureScoreOneSided> function(
      new vxClassifierFeatureScoreOneSided);
  std::vector<Handle> functions = {function, function};
  const vxClassifierRule rule = ruleOf(functions, 2);
  functions[0] = ignore();
  EXPECT_EQ(rule.scoringMethods()[0], function);
  const vxClassifierRule copy(rule);
  vxClassifierRule assigned;
  assigned = rule;
  EXPECT_EQ(copy.scoringMethods()[1], function);
  EXPECT_EQ(assigned.label(), 2);
  function->y0(0.25);
  for (const vxClassifierRule& each : {rule, copy, assigned}) {
    EXPECT_EQ(each.score(zeros(2)), 0.25);
  }
}

TEST(RuleTest, ScoresTheGeometricMeanOfWhatCounts) {
  EXPECT_EQ(scoreOf({0.25, 1.0}), 0.5);
  EXPECT_EQ(scoreOf({0.25, -1.0, 1.0}), 0.5);
  EXPECT_EQ(scoreOf({0.125, 1.0, 1.0, -1.0}), std::pow(0.125, 1.0 / 3.0));
  EXPECT_EQ(scoreOf({0.7}), 0.7);
  EXPECT_EQ(scoreOf({1.0, 1.0}), 1.0);
}

TEST(RuleTest, Scores1IfNothingCounts) {
  EXPECT_EQ(scoreOf({-1.0}), 1.0);
  EXPECT_EQ(scoreOf({-1.0, -1.0, -1.0}), 1.0);
  EXPECT_EQ(ruleOf({ignore(), ignore()}).score(zeros(2)), 1.0);
}

TEST(RuleTest, ScoresTheProductItselfUnlessItIsAbove0) {
  EXPECT_EQ(plain::bitsOf(scoreOf({0.5, 0.0, 0.5})), plain::bitsOf(0.0));
  EXPECT_EQ(plain::bitsOf(scoreOf({0.5, -0.0})), plain::bitsOf(-0.0));
  EXPECT_EQ(scoreOf({-0.5, 0.5}), -0.25);
  EXPECT_TRUE(std::isnan(scoreOf({0.5, std::numeric_limits<double>::quiet_NaN()})));
  EXPECT_EQ(scoreOf({-0.5, -0.5}), 0.5) << "a product above 0 has a root";
  EXPECT_EQ(scoreOf({1e-200, 1e-200}), 0.0) << "the product underflows";
}

TEST(RuleTest, TakesExactlyMinus1AsTheMark) {
  EXPECT_EQ(scoreOf({0.25, std::nextafter(-1.0, 0.0)}), 0.25 * std::nextafter(-1.0, 0.0));
  EXPECT_EQ(scoreOf({0.25, -1.0}), 0.25);
}

TEST(RuleTest, AsksEveryFunctionInOrderEvenAfterA0) {
  std::vector<double> asked;
  const Handle recorder(new HostScore([&asked](double x) {
    asked.push_back(x);
    return x == 2.0 ? 0.0 : 0.5;
  }));
  EXPECT_EQ(ruleOf({recorder, recorder, recorder}).score(vxClassifierFeatureVector({1, 2, 3})),
            0.0);
  EXPECT_EQ(asked, (std::vector<double>{1, 2, 3}));
}

TEST(RuleTest, RefusesAVectorOfAnotherSizeBeforeAnEmptyOne) {
  const vxClassifierRule rule = ruleOf({ramp(), ramp()});
  for (const std::size_t size : {0u, 1u, 3u}) {
    expectThrows<BadParams>([&] { rule.score(zeros(size)); }, kMismatch);
  }
  expectThrows<BadParams>([] { vxClassifierRule().score(zeros(0)); }, kNoValues);
  expectThrows<BadParams>([] { vxClassifierRule().score(zeros(1)); }, kMismatch);
}

TEST(RuleTest, LetsAFunctionsErrorPassInItsTurn) {
  const vxPtrHandle<vxClassifierFeatureScoreOneSided> bad(new vxClassifierFeatureScoreOneSided);
  bad->x1(2);
  const wchar_t* const text = L"x1 must lie between x0 and xc";
  expectThrows<BadParams>([&] { ruleOf({constant(0.0), bad}).score(zeros(2)); }, text);
  expectThrows<BadParams>([&] { ruleOf({bad, Handle()}).score(zeros(2)); }, text);
  expectThrows<vxBadPointer>([&] { ruleOf({Handle(), bad}).score(zeros(2)); }, L"");
  const Handle throwing(new HostScore([](double) -> double { throw HostError(); }));
  EXPECT_THROW(ruleOf({throwing}).score(zeros(1)), HostError);
}

TEST(RuleTest, ComparesSizeFunctionsAndLabel) {
  EXPECT_TRUE(ruleOf({ramp(), ignore()}, 3) == ruleOf({ramp(), ignore()}, 3));
  EXPECT_TRUE(ruleOf({ramp(), ignore()}, 3) != ruleOf({ramp(), ignore()}, 4));
  EXPECT_TRUE(ruleOf({ramp(), ignore()}, 3) != ruleOf({ignore(), ramp()}, 3));
  EXPECT_TRUE(ruleOf({ramp()}, 3) != ruleOf({ramp(), ramp()}, 3));
  EXPECT_TRUE(vxClassifierRule() == vxClassifierRule());
  EXPECT_TRUE(vxClassifierRule() != ruleOf({ramp()}));
  const vxClassifierRule empty = ruleOf({Handle()});
  EXPECT_THROW(static_cast<void>(empty == ruleOf({ramp()})), vxBadPointer);
}

TEST(RuleArchiveTest, HasItsFunctionsAndThenItsLabel) {
  vxClassifierRule rule = ruleOf({ignore(), ramp()}, 258);
  EXPECT_EQ(storedHex(rule),
            packedHex("00 02000000 32160000 69820000 0000000000000000 000000000000f03f "
                      "000000000000f03f 000000000000f03f 0000000000000000 02010000"));
  vxClassifierRule arrived = ruleOf({ramp()}, 1);
  load(stored(rule), arrived);
  EXPECT_EQ(arrived, rule);
  vxClassifierRule empty;
  EXPECT_EQ(storedHex(empty), packedHex("00 00000000 00000000"));
  load(stored(empty), arrived);
  EXPECT_EQ(arrived, empty);
}

TEST(RuleArchiveTest, KeepsTheFunctionWhereATagIsUnknown) {
  const Handle first = ramp();
  const Handle second = ramp();
  vxClassifierRule rule = ruleOf({first, second}, 1);
  const vxClassifierRule former(rule);
  load(fromHex("00 03000000  01000000 32160000 02000000  09000000"), rule);
  ASSERT_EQ(rule.scoringMethods().size(), 3u);
  EXPECT_EQ(rule.scoringMethods()[0], first);
  EXPECT_TRUE(*rule.scoringMethods()[1] == vxClassifierFeatureScoreIgnore());
  EXPECT_TRUE(rule.scoringMethods()[2].isNull()) << "there was none";
  EXPECT_EQ(rule.label(), 9);
  EXPECT_EQ(former.scoringMethods()[1], second) << "copies keep theirs";
  expectThrows<vxBadPointer>([&] { rule.score(zeros(3)); }, L"");
  expectThrows<vxBadPointer>([&] { stored(rule); }, L"");

  load(fromHex("00 01000000  05000000  08000000"), rule);
  EXPECT_EQ(rule, ruleOf({ramp()}, 8));
}

TEST(RuleArchiveTest, StoresNothingInTheStreamForAnEmptyHandle) {
  vxClassifierRule rule = ruleOf({ramp(), Handle(), ramp()}, 1);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  EXPECT_THROW(archive || rule, vxBadPointer);
  EXPECT_EQ(stream.str(), "");
}

TEST(RuleArchiveTest, LeavesOutAHostsFunction) {
  vxClassifierRule rule = ruleOf({ignore(), constant(1.0)}, 5);
  EXPECT_EQ(storedHex(rule), packedHex("00 02000000 32160000 05000000"));
}

TEST(RuleArchiveTest, LoadsALabelThatInitRefuses) {
  vxClassifierRule rule;
  load(fromHex("00 01000000 32160000 feffffff"), rule);
  EXPECT_EQ(rule.label(), -2);
  EXPECT_EQ(rule.score(zeros(1)), 1.0);
}

TEST(RuleArchiveTest, IsLeftAloneByALoadThatFails) {
  vxClassifierRule source = ruleOf({ignore(), ramp(), ramp()}, 7);
  vxClassifierRule target = ruleOf({ramp(), ignore()}, 1);
  const vxClassifierRule before(target);
  forEachTruncation(stored(source), [&](const std::string& bytes) {
    EXPECT_THROW(loadFront(bytes, target), vxArchive::Malformed);
    EXPECT_EQ(target, before);
  });
  std::string bytes = stored(source);
  bytes[0] = 1;
  expectUnknownVersion([&] { load(bytes, target); }, "");
  EXPECT_EQ(target, before);
}

}  // namespace
