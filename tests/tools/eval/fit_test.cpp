// SPDX-License-Identifier: MIT
#include "tools/eval/fit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/eval/samples.h"
#include "tools/eval/nearest.h"

namespace {

double fitAt(const vxClassifierTool& tool, const std::vector<double>& measurements) {
  const auto pattern = sharedPattern(measurements);
  vxClassifierResult result;
  tool.run(*pattern, result);
  return eval::absoluteFit(tool, *pattern, result);
}

TEST(AbsoluteFitTest, OfDensitiesIsTheBestLogLikelihood) {
  vxClassifierTool tool;
  tool.train(providerOf({{{9}, 0}, {{10}, 0}, {{11}, 0}, {{12}, 1}, {{13}, 1}, {{14}, 1}}),
             bayes());
  const double atMean = -0.5 * std::log(2.0 * 3.14159265358979323846);
  EXPECT_NEAR(fitAt(tool, {13}), atMean, 1e-12);
  EXPECT_NEAR(fitAt(tool, {14}), atMean - 0.5, 1e-12);
  EXPECT_NEAR(fitAt(tool, {113}), atMean - 5000.0, 1e-9);
}

TEST(AbsoluteFitTest, OfNeighboursIsMinusTheDistanceToTheNearest) {
  for (const double order : {1.0, 2.0, 3.0}) {
    vxClassifierTool tool;
    tool.train(providerOf({{{0, 0}, 0}, {{10, 0}, 1}, {{10, 1}, 1}}),
               neighbours(3, vxClassifierCosts(1.0), order));
    EXPECT_NEAR(fitAt(tool, {3, 4}), -std::pow(std::pow(3, order) + std::pow(4, order), 1 / order),
                1e-12)
        << order;
  }
}

TEST(NearestStoredTest, IsTheFirstOfEquallyNearOnesOfALabel) {
  vx_ClassifierKNN classifier;
  classifier.train(providerOf({{{2}, 0}, {{5}, 1}, {{7}, 0}, {{3}, 1}}), neighbours(1), nullptr, 0);
  const auto near = [&](double x, long label) {
    return eval::nearestStored(classifier, *sharedPattern({x}), label).index;
  };
  EXPECT_EQ(near(4, -1), 1);
  EXPECT_EQ(near(4, 0), 0);
  EXPECT_EQ(near(6, 0), 2);
  EXPECT_EQ(near(6, 7), -1);
}

}  // namespace
