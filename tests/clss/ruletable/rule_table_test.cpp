// SPDX-License-Identifier: MIT
#include "vxclss/rule_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/host_error.h"
#include "tests/support/numbers.h"
#include "tests/support/plain_rules.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"

namespace {

using Handle = vxPtrHandle<vxClsFtSc>;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::NotTrained;

constexpr wchar_t kBadThreshold[] = L"hardThreshold < 0 || hardThreshold > 1";
constexpr wchar_t kNotTrained[] = L"the rule table needs to be trained before it can classify";
constexpr wchar_t kNoValues[] = L"featureVector.featureValues().size() == 0";
// The closing parenthesis has no opening one, and the index is the letter: hosts compare texts.
constexpr wchar_t kBadCount[] =
    L"featureVector.featureValues().size() != rules_[0].scoringMethods().size())";
constexpr wchar_t kBadRule[] = L"rules[i].scoringMethods().size() != ruleSize";

Handle ignore() { return Handle(new vxClassifierFeatureScoreIgnore); }

/// A rule of one function that gives this score for every value.
vxClassifierRule scoring(double score, long label) {
  vxClassifierRule rule;
  rule.init({Handle(new HostScore([score](double) { return score; }))}, label);
  return rule;
}

/// A rule of that many ignored features.
vxClassifierRule ignoring(std::size_t count, long label = 0) {
  vxClassifierRule rule;
  rule.init(std::vector<Handle>(count, ignore()), label);
  return rule;
}

vxClassifierRuleTable tableOf(const std::vector<vxClassifierRule>& rules) {
  vxClassifierRuleTable table;
  table.train(rules);
  return table;
}

/// A table as only bytes can bring it.
vxClassifierRuleTable archived(std::vector<vxClassifierRule> rules) {
  unsigned char version = 0;
  unsigned long count = rules.size();
  std::string bytes = stored(version, count);
  for (vxClassifierRule& rule : rules) bytes += stored(rule);
  return loaded<vxClassifierRuleTable>(bytes);
}

const vxClassifierFeatureVector kOneValue({0.0});
const vxClassifierFeatureVector kNoValue{std::vector<double>()};

struct Decision {
  const char* name;
  std::vector<double> scores;  // of rules labelled 3, 1, 2, ...
  double threshold;
  long label;
};

void PrintTo(const Decision& row, std::ostream* out) { *out << row.name; }

class RuleTableDecisionTest : public testing::TestWithParam<Decision> {};

TEST_P(RuleTableDecisionTest, IsTheFirstRuleAboveTheThreshold) {
  const Decision& row = GetParam();
  const long labels[] = {3, 1, 2};
  std::vector<vxClassifierRule> rules;
  for (const double score : row.scores) rules.push_back(scoring(score, labels[rules.size()]));
  EXPECT_EQ(tableOf(rules).classifyHardThreshold(kOneValue, row.threshold), row.label);
}

INSTANTIATE_TEST_SUITE_P(Rules, RuleTableDecisionTest,
                         testing::Values(Decision{"FirstNotBest", {0.6, 0.9, 0.9}, 0.5, 3},
                                         Decision{"FirstOfTwoEqual", {0.6, 0.9, 0.9}, 0.7, 1},
                                         Decision{"NonePasses", {0.6, 0.9, 0.9}, 0.95, -1},
                                         Decision{"EqualIsNotAbove", {0.5, 0.9}, 0.5, 1},
                                         Decision{"ThresholdOne", {1.0, 1.0}, 1.0, -1},
                                         Decision{"ThresholdOneAllIgnored", {-1.0}, 1.0, -1},
                                         Decision{"ThresholdZero", {0.0, 1e-300, 1.0}, 0.0, 1},
                                         Decision{"ThresholdZeroNothing", {0.0, -0.5}, 0.0, -1},
                                         Decision{"AllIgnoredFitsEverything", {-1.0}, 0.999, 3},
                                         Decision{"NaNNeverPasses", {kNaN, 0.5}, 0.25, 1},
                                         Decision{"MinusZero", {0.5}, -0.0, 3}),
                         [](const auto& test) { return test.param.name; });

TEST(RuleTableTest, IsEmptyAndUntrainedByDefault) {
  EXPECT_TRUE(vxClassifierRuleTable().rules().empty());
  expectThrows<NotTrained>([] { vxClassifierRuleTable().classifyHardThreshold(kOneValue, 0.5); },
                           kNotTrained);
}

TEST(RuleTableTest, TrainsWithACopyOfTheRules) {
  std::vector<vxClassifierRule> rules = {scoring(0.5, 4), scoring(0.5, 4)};
  const vxClassifierRuleTable table = tableOf(rules);
  EXPECT_EQ(table.rules(), rules) << "labels may repeat";
  rules[0] = scoring(0.5, 9);
  EXPECT_EQ(table.classifyHardThreshold(kOneValue, 0.25), 4);
  EXPECT_EQ(table.rules()[0].scoringMethods()[0]->referenceCount(), 1) << "the function is shared";
}

TEST(RuleTableTest, RefusesRulesOfDifferentSizesAndKeepsItsOwn) {
  vxClassifierRuleTable table = tableOf({ignoring(2, 6)});
  expectRefused<BadParams>(
      table, [&] { table.train({}); }, L"rules.size() == 0");
  expectRefused<BadParams>(
      table,
      [&] {
        table.train({ignoring(3), ignoring(4)});
      },
      kBadRule);
  expectRefused<BadParams>(
      table,
      [&] {
        table.train({ignoring(3), ignoring(3), vxClassifierRule()});
      },
      kBadRule);
  expectRefused<BadParams>(
      table,
      [&] {
        table.train({vxClassifierRule(), ignoring(1)});
      },
      kBadRule);
  vxClassifierRuleTable empty;
  expectRefused<BadParams>(
      empty, [&] { empty.train({}); }, L"rules.size() == 0");
}

TEST(RuleTableTest, AcceptsRulesWithoutFunctionsIfAllHaveNone) {
  const vxClassifierRuleTable table = tableOf({vxClassifierRule(), vxClassifierRule()});
  expectThrows<BadParams>([&] { table.classifyHardThreshold(kNoValue, 0.5); }, kNoValues);
  expectThrows<BadParams>([&] { table.classifyHardThreshold(kOneValue, 0.5); }, kBadCount);
}

TEST(RuleTableTest, ChecksThresholdThenTrainingThenValues) {
  const vxClassifierRuleTable untrained;
  const vxClassifierRuleTable table = tableOf({ignoring(2)});
  const vxClassifierFeatureVector three({1, 2, 3});
  for (const double threshold : {-0.1, 1.1, -5e-324, 1.0000000000000002}) {
    for (const vxClassifierRuleTable& each : {untrained, table}) {
      expectThrows<BadParams>([&] { each.classifyHardThreshold(kNoValue, threshold); },
                              kBadThreshold);
    }
  }
  for (const double threshold : {0.0, 1.0}) {
    expectThrows<NotTrained>([&] { untrained.classifyHardThreshold(kNoValue, threshold); },
                             kNotTrained);
    expectThrows<BadParams>([&] { table.classifyHardThreshold(kNoValue, threshold); }, kNoValues);
    expectThrows<BadParams>([&] { table.classifyHardThreshold(kOneValue, threshold); }, kBadCount);
    expectThrows<BadParams>([&] { table.classifyHardThreshold(three, threshold); }, kBadCount);
  }
}

TEST(RuleTableTest, IsNeverPassedForAThresholdThatIsANaN) {
  EXPECT_EQ(tableOf({ignoring(1, 5)}).classifyHardThreshold(kOneValue, kNaN), -1);
}

TEST(RuleTableTest, ScoresNoRuleAfterTheOneThatPasses) {
  const Handle throwing(new HostScore([](double) -> double { throw HostError(); }));
  vxClassifierRule last;
  last.init({throwing}, 2);
  const vxClassifierRuleTable table = tableOf({scoring(0.5, 1), last});
  EXPECT_EQ(table.classifyHardThreshold(kOneValue, 0.25), 1);
  EXPECT_THROW(table.classifyHardThreshold(kOneValue, 0.5), HostError);
}

TEST(RuleTableTest, ReportsAnArchivedRuleOfAnotherSizeWhenItReachesIt) {
  const vxClassifierRuleTable table =
      archived({ignoring(1, 8), ignoring(2, 9), vxClassifierRule()});
  EXPECT_EQ(table.classifyHardThreshold(kOneValue, 0.5), 8);
  expectThrows<BadParams>([&] { table.classifyHardThreshold(kOneValue, 1.0); },
                          L"MismatchedFeatureVectorSize");
}

TEST(RuleTableTest, ComparesItsRulesInOrder) {
  const vxClassifierRuleTable table = tableOf({ignoring(2, 1), ignoring(2, 3)});
  EXPECT_TRUE(table == tableOf({ignoring(2, 1), ignoring(2, 3)}));
  EXPECT_TRUE(table != tableOf({ignoring(2, 3), ignoring(2, 1)}));
  EXPECT_TRUE(table != tableOf({ignoring(2, 1)}));
  EXPECT_TRUE(table != vxClassifierRuleTable());
  EXPECT_TRUE(vxClassifierRuleTable() == vxClassifierRuleTable());
  vxClassifierRuleTable assigned;
  assigned = table;
  EXPECT_EQ(vxClassifierRuleTable(assigned), table);
}

/// Random rules, whose values are whole numbers or not.
class RandomRules {
 public:
  RandomRules(unsigned seed, bool whole) : random_(seed), whole_(whole) {}

  double number(double low, double high) {
    const double value = std::uniform_real_distribution<double>(low, high)(random_);
    return whole_ ? std::floor(value) : value;
  }

  plain::Rule rule(std::size_t numFeatures) {
    plain::Rule rule;
    rule.label = static_cast<long>(number(0, 9));
    while (rule.functions.size() < numFeatures) {
      const double kind = number(0, 4);
      if (kind < 1) {
        rule.functions.push_back({});
      } else if (kind < 3) {
        rule.functions.push_back({{side_(-8, 8)}});
      } else {
        rule.functions.push_back({{side_(-8, 0), side_(0, 8)}});
      }
    }
    return rule;
  }

 private:
  plain::OneSided side_(double low, double high) {
    double x[] = {number(low, high), number(low, high), number(low, high)};
    std::sort(x, x + 3);
    const bool rising = number(0, 2) < 1;
    // Scores of 0 are rare, so that a rule of several features often has one above it.
    const auto unit = [this] { return number(1, 17) / 17.0; };
    return {rising ? x[0] : x[2], x[1], rising ? x[2] : x[0], unit(), unit()};
  }

  std::mt19937 random_;
  bool whole_;
};

TEST(RuleTableTest, DecidesAsThePlainDefinitionDoes) {
  int decided = 0;
  for (const bool whole : {true, false}) {
    RandomRules random(81, whole);
    for (int round = 0; round < 2000; ++round) {
      const auto numFeatures = static_cast<std::size_t>(random.number(1, 6));
      std::vector<plain::Rule> plainRules;
      std::vector<vxClassifierRule> rules;
      for (double count = random.number(1, 8); count > 0; --count) {
        plainRules.push_back(random.rule(numFeatures));
        std::vector<Handle> functions;
        for (const auto& function : plainRules.back().functions) {
          functions.push_back(function.handle());
        }
        rules.emplace_back().init(functions, plainRules.back().label);
      }
      vxClassifierRuleTable table = tableOf(rules);
      const auto arrived = loaded<vxClassifierRuleTable>(stored(table));
      ASSERT_EQ(arrived, table);
      std::vector<double> values;
      while (values.size() < numFeatures) values.push_back(random.number(-9, 9));
      const vxClassifierFeatureVector vector(values);
      for (std::size_t i = 0; i < rules.size(); ++i) {
        ASSERT_EQ(plain::bitsOf(rules[i].score(vector)), plain::bitsOf(plainRules[i].score(values)))
            << "round " << round;
      }
      for (const double threshold : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        const long expected = plain::classify(plainRules, values, threshold);
        ASSERT_EQ(table.classifyHardThreshold(vector, threshold), expected) << "round " << round;
        ASSERT_EQ(arrived.classifyHardThreshold(vector, threshold), expected);
        decided += expected >= 0 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(decided, 2000);
}

TEST(RuleTableTest, ScoresWithoutMemoryAndWithoutTakingReferences) {
  constexpr std::size_t kFeatures = 16;
  long mostReferences = 0;
  HostScore* host = nullptr;
  const Handle watch(host = new HostScore([&](double) {
                       mostReferences = std::max(mostReferences, host->referenceCount());
                       return 0.5;
                     }));
  std::vector<vxClassifierRule> rules(100);
  RandomRules random(82, false);
  for (vxClassifierRule& rule : rules) {
    std::vector<Handle> functions = {watch};
    for (const auto& function : random.rule(kFeatures - 1).functions) {
      functions.push_back(function.handle());
    }
    rule.init(functions, 1);
  }
  const vxClassifierRuleTable table = tableOf(rules);
  const vxClassifierFeatureVector vector(std::vector<double>(kFeatures, 0.0));
  const long references = watch->referenceCount();

  const AllocationMeter meter;
  const long label = table.classifyHardThreshold(vector, 1.0);
  EXPECT_EQ(meter.calls(), 0u);
  EXPECT_EQ(label, -1);
  EXPECT_EQ(mostReferences, references);
  EXPECT_EQ(watch->referenceCount(), references);
}

TEST(RuleTableArchiveTest, IsAVectorOfRules) {
  vxClassifierRuleTable table = tableOf({ignoring(1, 3), ignoring(1, 4)});
  EXPECT_EQ(storedHex(table), packedHex("00 02000000 00 01000000 32160000 03000000 "
                                        "00 01000000 32160000 04000000"));
  EXPECT_EQ(loaded<vxClassifierRuleTable>(stored(table)), table);
  vxClassifierRuleTable empty;
  EXPECT_EQ(storedHex(empty), packedHex("00 00000000"));
  load(stored(empty), table);
  EXPECT_EQ(table, empty);
}

TEST(RuleTableArchiveTest, KeepsTheFunctionWhereATagIsUnknown) {
  vxClassifierRule ramp;
  ramp.init({Handle(new vxClassifierFeatureScoreOneSided)}, 5);
  vxClassifierRuleTable table = tableOf({ramp, ignoring(1, 6)});
  const Handle former = table.rules()[0].scoringMethods()[0];
  load(fromHex("00 01000000 00 01000000 07000000 08000000"), table);
  ASSERT_EQ(table.rules().size(), 1u);
  EXPECT_EQ(table.rules()[0].scoringMethods()[0], former);
  EXPECT_EQ(table.rules()[0].label(), 8);
}

TEST(RuleTableArchiveTest, LoadsLabelsThatInitRefuses) {
  const auto table =
      loaded<vxClassifierRuleTable>(fromHex("00 01000000 00 01000000 32160000 fbffffff"));
  EXPECT_EQ(table.classifyHardThreshold(kOneValue, 0.5), -5);
}

TEST(RuleTableArchiveTest, IsLeftAloneByALoadThatFails) {
  vxClassifierRuleTable source = tableOf({ignoring(2, 3), ignoring(2, 4)});
  vxClassifierRuleTable target = tableOf({ignoring(1, 7)});
  const vxClassifierRuleTable before(target);
  const std::string bytes = stored(source);
  forEachTruncation(bytes, [&](const std::string& cut) {
    EXPECT_THROW(loadFront(cut, target), vxArchive::Malformed);
    EXPECT_EQ(target, before);
  });
  // The table's version and that of each rule's functions.
  for (const std::size_t place : {0u, 5u, 22u}) {
    std::string changed = bytes;
    ASSERT_EQ(changed.at(place), 0);
    changed[place] = 1;
    expectUnknownVersion([&] { load(changed, target); }, "");
    EXPECT_EQ(target, before);
  }
}

}  // namespace
