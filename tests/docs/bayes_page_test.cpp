// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "tests/support/page.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/train_params_bayesian.h"

namespace {

constexpr const char* kPage = "docs/bayes.md";

vxClassifierTrainParamsBayesian paramsWith(double frequencyOfGood, double costOfPassing) {
  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(0, frequencyOfGood);
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(1, 0, costOfPassing);
  return {vxClassifierDistributionTypes(), frequencies, costs, vxFeaturePattern({}, {})};
}

/// The page's part, weighed by a tool that was retrained from other frequencies and costs.
vxClassifierResult resultWith(double frequencyOfGood, double costOfPassing) {
  vxClassifierTool tool;
  tool.train(
      providerOf({{{9.0}, 0}, {{10.0}, 0}, {{11.0}, 0}, {{12.0}, 1}, {{13.0}, 1}, {{14.0}, 1}}),
      paramsWith(1.0, 1.0));
  tool.retrain(paramsWith(frequencyOfGood, costOfPassing));
  vxClassifierResult result;
  tool.run(vxFeaturePattern({12.0}, {}), result);
  return result;
}

/// A row of the page's table: a number of each category and the decision.
template <class Getter>
std::string row(const std::string& title, const vxClassifierResult& result, Getter number) {
  double numbers[2] = {};
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    numbers[category.categoryLabel()] = (category.*number)();
  }
  const bool isGood = result.categoryResults().front().categoryLabel() == 0;
  std::ostringstream text;
  text << "| " << title << " | " << std::fixed << std::setprecision(4) << numbers[0] << " | "
       << numbers[1] << " | " << (isGood ? "good" : "damaged") << " |\n";
  return text.str();
}

TEST(BayesPageTest, ShowsTheNumbersOfItsExample) {
  constexpr auto kClassScore = &vxClassifierCategoryResult::classScore;
  constexpr auto kExpectedCost = &vxClassifierCategoryResult::expectedCost;
  const std::string page = readSource(kPage);
  for (const std::string& expected : {
           row("class score, frequencies 1 : 1", resultWith(1.0, 1.0), kClassScore),
           row("class score, frequencies 9 : 1", resultWith(9.0, 1.0), kClassScore),
           row("expected cost with these, all costs 1", resultWith(9.0, 1.0), kExpectedCost),
           row("expected cost, 5 for a damaged part passed", resultWith(9.0, 5.0), kExpectedCost),
       }) {
    EXPECT_NE(page.find(expected), std::string::npos) << expected;
  }
  EXPECT_NE(page.find("| match score | 0.2231 | 1.0000 | |\n"), std::string::npos);
  const vxClassifierResult result = resultWith(1.0, 1.0);
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    EXPECT_NEAR(category.matchScore(), category.categoryLabel() == 0 ? 0.2231 : 1.0, 5e-5);
  }
}

}  // namespace
