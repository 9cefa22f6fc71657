// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_rules.h"
#include "vxclss/errors.h"
#include "vxclss/rule_table.h"

namespace {

using Handle = vxPtrHandle<vxClsFtSc>;
using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;

/// Another answer than its base gives.
class Halved : public TwoSided {
 public:
  double score(double x) const override { return TwoSided::score(x) / 2.0; }
};

/// The score of a rule as its definition says it, function by function through the virtual one.
double plainScore(const vxClassifierRule& rule, const std::vector<double>& values) {
  double product = 1.0;
  double counted = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double score = (*rule.scoringMethods()[i]).score(values[i]);
    if (score == -1.0) continue;
    product *= score;
    counted += 1.0;
  }
  return product > 0.0 ? std::pow(product, 1.0 / counted) : product;
}

long plainLabel(const vxClassifierRuleTable& table, const std::vector<double>& values,
                double threshold) {
  for (const vxClassifierRule& rule : table.rules()) {
    if (plainScore(rule, values) > threshold) return rule.label();
  }
  return -1;
}

/// Random functions, in order or not, of all classes.
class RandomFunctions {
 public:
  explicit RandomFunctions(unsigned seed) : random_(seed) {}

  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

  /// Whole or not, now and then none at all.
  double number() {
    const double rare[] = {kNaN, kInfinity, -kInfinity, -0.0, 5e-324, -1e308};
    if (below(40) == 0) return rare[below(6)];
    if (below(2) == 0) return below(9) - 4;
    return std::uniform_real_distribution<double>(-4.0, 4.0)(random_);
  }

  /// Changes one of the values, so that a function in order may leave it or come back.
  void change(vxClsFtSc& function) {
    if (auto* side = dynamic_cast<OneSided*>(&function)) changeSide_(*side);
    if (auto* band = dynamic_cast<TwoSided*>(&function)) changeBand_(*band);
  }

  Handle function() {
    switch (below(12)) {
      case 0:
        return Handle(new vxClassifierFeatureScoreIgnore);
      case 1:
        return Handle(new HostScore([](double x) { return x > 0.0 ? 0.75 : -1.0; }));
      case 2:
        return Handle(new Halved);
      case 3:
        return below(20) == 0 ? Handle() : Handle(new HostScore([](double x) -> double {
          if (x == 3.0) throw HostError();
          return 1.0;
        }));
      case 4:
      case 5:
      case 6:
        return changed_(Handle(new OneSided));
      default:
        return changed_(Handle(new TwoSided));
    }
  }

 private:
  Handle changed_(const Handle& function) {
    for (int i = below(6); i > 0; --i) {
      const Handle before(function->clone());
      change(*function);
      // Functions out of order throw: most stay as they are supposed to be.
      if (below(8) == 0 || outcomeOf([&] { function->score(0.0); }) == "done") continue;
      if (auto* side = dynamic_cast<OneSided*>(function.get())) {
        *side = static_cast<const OneSided&>(*before);
      } else {
        static_cast<TwoSided&>(*function) = static_cast<const TwoSided&>(*before);
      }
    }
    return function;
  }

  void changeSide_(OneSided& side) {
    const double x = number();
    const double y = below(5) / 4.0;
    const std::function<void()> changes[] = {
        [&] { side.x0(x); },       [&] { side.x1(x); }, [&] { side.xc(x); },
        [&] { side.y0(y); },       [&] { side.y1(y); }, [&] { side.init(x, 1, 2, y, 1); },
        [&] { side = OneSided(); }};
    static_cast<void>(outcomeOf(changes[below(7)]));
  }

  void changeBand_(TwoSided& band) {
    const double x = number();
    const double y = below(5) / 4.0;
    const std::function<void()> changes[] = {
        [&] { band.x0(x); },        [&] { band.x1(x); },
        [&] { band.xc(x); },        [&] { band.x0h(x); },
        [&] { band.x1h(x); },       [&] { band.xch(x); },
        [&] { band.y0(y); },        [&] { band.y1(y); },
        [&] { band.y0h(y); },       [&] { band.y1h(y); },
        [&] { band = TwoSided(); }, [&] { band.init(-1, -2, -3, 1, 2, 3, y, 0.5, 1, y); }};
    static_cast<void>(outcomeOf(changes[below(12)]));
  }

  std::mt19937 random_;
};

std::string scoreOutcome(const std::function<double()>& score) {
  double value = 0.0;
  const std::string outcome = outcomeOf([&] { value = score(); });
  return outcome + " " + bitsOf(value);
}

TEST(RuleInLineTest, ScoresAsTheVirtualFunctionsDo) {
  RandomFunctions random(91);
  int numDone = 0;
  for (int round = 0; round < 4000; ++round) {
    std::vector<Handle> functions;
    for (int i = 1 + random.below(5); i > 0; --i) functions.push_back(random.function());
    vxClassifierRule rule;
    rule.init(functions, 1);
    for (int i = 0; i < 4; ++i) {
      std::vector<double> values;
      while (values.size() < functions.size()) values.push_back(random.number());
      const std::string expected = scoreOutcome([&] { return plainScore(rule, values); });
      ASSERT_EQ(scoreOutcome([&] { return rule.score(vxClassifierFeatureVector(values)); }),
                expected)
          << "round " << round;
      numDone += expected.rfind("done", 0) == 0 ? 1 : 0;
      // The rule shares its functions, so a change shows.
      Handle& function = functions[static_cast<std::size_t>(i) % functions.size()];
      if (function) random.change(*function);
    }
  }
  EXPECT_GT(numDone, 4000);
}

TEST(RuleInLineTest, AgreesWithThePlainNumbersOfEveryFunctionInOrder) {
  RandomFunctions random(92);
  int numSides = 0;
  for (int round = 0; round < 20000; ++round) {
    const Handle function = random.function();
    const auto* side = dynamic_cast<const OneSided*>(function.get());
    if (side == nullptr) continue;
    const plain::OneSided plainSide = {side->x0(), side->x1(), side->xc(), side->y0(), side->y1()};
    vxClassifierRule rule;
    rule.init({function, Handle(new vxClassifierFeatureScoreIgnore)}, 1);
    const double x = random.number();
    if (!plainSide.isConsistent()) {
      EXPECT_THROW(rule.score(vxClassifierFeatureVector({x, x})), vxClassifierDefs::BadParams);
      continue;
    }
    const double score = plainSide.score(x);
    const double expected = score == -1.0 ? 1.0 : score > 0.0 ? std::pow(score, 1.0) : 1.0 * score;
    ASSERT_EQ(bitsOf(rule.score(vxClassifierFeatureVector({x, x}))), bitsOf(expected))
        << "round " << round;
    ASSERT_EQ(bitsOf(side->score(x)), bitsOf(score)) << "round " << round;
    ++numSides;
  }
  EXPECT_GT(numSides, 2000);
}

TEST(RuleInLineTest, DecidesAsTheScoresDoHoweverCloseTheThreshold) {
  RandomFunctions random(93);
  int numPassed = 0;
  for (int round = 0; round < 1500; ++round) {
    const auto numFeatures = static_cast<std::size_t>(1 + random.below(6));
    std::vector<vxClassifierRule> rules(static_cast<std::size_t>(1 + random.below(5)));
    for (vxClassifierRule& rule : rules) {
      std::vector<Handle> functions;
      while (functions.size() < numFeatures) {
        const double score = random.below(3) == 0 ? -1.0 : (1 + random.below(16)) / 17.0;
        functions.emplace_back(new HostScore([score](double) { return score; }));
      }
      rule.init(functions, static_cast<long>(&rule - rules.data()));
    }
    vxClassifierRuleTable table;
    table.train(rules);
    const std::vector<double> values(numFeatures, 0.0);
    const vxClassifierFeatureVector vector(values);
    std::vector<double> thresholds = {0.0, 1e-310, 1e-60, 0.5, 1.0};
    for (const vxClassifierRule& rule : rules) {
      const double score = plainScore(rule, values);
      for (const double t : {score, std::nextafter(score, 0.0), std::nextafter(score, 1.0),
                             score * (1.0 - 1e-7), score * (1.0 - 1e-8), score * (1.0 - 1e-6)}) {
        thresholds.push_back(t);
      }
    }
    for (const double threshold : thresholds) {
      const long expected = plainLabel(table, values, threshold);
      ASSERT_EQ(table.classifyHardThreshold(vector, threshold), expected)
          << "round " << round << ", threshold " << threshold;
      numPassed += expected >= 0 ? 1 : 0;
    }
  }
  EXPECT_GT(numPassed, 5000);
}

TEST(RuleInLineTest, MeetsErrorsInTheOrderOfRulesAndFeatures) {
  RandomFunctions random(94);
  for (int round = 0; round < 2000; ++round) {
    const auto numFeatures = static_cast<std::size_t>(1 + random.below(4));
    std::vector<vxClassifierRule> rules(static_cast<std::size_t>(1 + random.below(4)));
    for (vxClassifierRule& rule : rules) {
      std::vector<Handle> functions;
      while (functions.size() < numFeatures) functions.push_back(random.function());
      rule.init(functions, random.below(9));
    }
    vxClassifierRuleTable table;
    table.train(rules);
    std::vector<double> values;
    while (values.size() < numFeatures) values.push_back(random.number());
    const vxClassifierFeatureVector vector(values);
    for (const double threshold : {0.0, 0.5, 1.0}) {
      const auto labelOutcome = [](const std::function<long()>& decide) {
        long label = -7;
        const std::string outcome = outcomeOf([&] { label = decide(); });
        return outcome + " " + std::to_string(label);
      };
      ASSERT_EQ(labelOutcome([&] { return table.classifyHardThreshold(vector, threshold); }),
                labelOutcome([&] { return plainLabel(table, values, threshold); }))
          << "round " << round;
    }
  }
}

TEST(RuleInLineTest, KnowsTheOrderOfLoadedValues) {
  // Values that only bytes can bring: neither in order nor within [0, 1].
  OneSided broken;
  load(fromHex("0000000000000000 0000000000000040 000000000000f03f "
               "000000000000f0bf 000000000000f03f"),
       broken);
  EXPECT_EQ(outcomeOf([&] { broken.score(0.0); }),
            "vxClassifierDefs::BadParams: x1 must lie between x0 and xc");
  broken.xc(2.0);
  EXPECT_EQ(broken.score(0.0), -1.0) << "y0 is what was loaded";

  TwoSided band;
  band.x0(0.5);
  const std::string bytes = stored(band);
  TwoSided arrived;
  load(bytes, arrived);
  EXPECT_EQ(outcomeOf([&] { arrived.score(0.0); }), "vxClassifierDefs::BadParams: Bad x values");
  arrived.x0(0.0);
  EXPECT_EQ(arrived.score(0.5), 0.5);
  const Handle clone(arrived.clone());
  EXPECT_EQ(clone->score(-0.5), 0.5);
}

}  // namespace
