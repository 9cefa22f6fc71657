// SPDX-License-Identifier: MIT
#include "tools/eval/contribution.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/eval/samples.h"

namespace {

using eval::Contribution;
using eval::Explanation;

std::vector<std::vector<long>> groupsOf(const Explanation& explanation) {
  std::vector<std::vector<long>> groups;
  for (const Contribution& group : explanation.contributions) groups.push_back(group.measurements);
  return groups;
}

double sumOf(const Explanation& explanation, double Contribution::*what) {
  double sum = 0.0;
  for (const Contribution& group : explanation.contributions) sum += group.*what;
  return sum;
}

eval::Dataset fourMeasurements() {
  std::vector<LabelledSample> samples;
  vxRandomGaussian random(8);
  for (long i = 0; i < 30; ++i) {
    const double a = random.next(0.0, 1.0);
    samples.push_back({{a + static_cast<double>(i % 2), a + random.next(0.0, 0.3),
                        random.next(0.5 * static_cast<double>(i % 2), 1.0), random.next(3.0, 1.0)},
                       i % 2});
  }
  return datasetOf(samples);
}

vxClassifierTool trained(const vxClassifierTrainParams& params) {
  const eval::Dataset data = fourMeasurements();
  vxClassifierTool tool;
  tool.train(eval::trainingSet(data, {1, std::vector<long>(data.labels.size(), -1)}, 0), params);
  return tool;
}

/// Log-likelihood of a category, from the tool's own model.
double logLikelihood(const vxClassifierTool& tool, const vxFeaturePattern& pattern, long label) {
  const auto classifier = tool.classifier();
  for (const auto& model :
       dynamic_cast<const vx_ClassifierBayesian&>(*classifier).categoryModels()) {
    if (model->categoryLabel() == label) return model->matchScore(pattern, nullptr, 0);
  }
  return std::nan("");
}

TEST(ExplanationTest, AddsUpToTheLogLikelihoods) {
  vxClassifierDistributionTypes types;
  types.setDependent(0, {0, 1});
  types.setDependent(1, {1, 3});
  const vxClassifierTool tool =
      trained(bayes(vxClassifierCosts(1.0), vxClassifierFrequencies(1.0), types));
  for (const auto& pattern :
       {sharedPattern({1.0, 0.4, 0.2, 2.5}), sharedPattern({1.0, 0.4, 0.2, 2.5}, {1, 2})}) {
    const Explanation explanation = eval::explanation(tool, *pattern, 1, 0);
    // {0, 1} of one category and {1, 3} of the other can be told together only.
    EXPECT_EQ(groupsOf(explanation), (std::vector<std::vector<long>>{{0, 1, 3}, {2}}));
    EXPECT_NEAR(sumOf(explanation, &Contribution::forDecided), logLikelihood(tool, *pattern, 1),
                1e-12);
    EXPECT_NEAR(sumOf(explanation, &Contribution::forTrue), logLikelihood(tool, *pattern, 0),
                1e-12);
  }
}

TEST(ExplanationTest, TellsEachIndependentMeasurementByItself) {
  const auto pattern = sharedPattern({1.0, 0.4, 0.2, 2.5}, {2});
  const Explanation explanation = eval::explanation(trained(bayes()), *pattern, 0, 1);
  EXPECT_EQ(groupsOf(explanation), (std::vector<std::vector<long>>{{0}, {1}, {2}, {3}}));
  EXPECT_EQ(explanation.contributions[2].forDecided, 0.0);
  EXPECT_EQ(explanation.contributions[2].forTrue, 0.0);
}

TEST(ExplanationTest, ComparesTheNearestNeighboursOfBothCategories) {
  vxClassifierTool tool;
  tool.train(providerOf({{{0, 0}, 0}, {{9, 9}, 0}, {{4, 1}, 1}, {{8, 0}, 1}}), neighbours(1));
  const Explanation explanation = eval::explanation(tool, *sharedPattern({3, 3}), 1, 0);
  EXPECT_EQ(groupsOf(explanation), (std::vector<std::vector<long>>{{0}, {1}}));
  EXPECT_EQ(explanation.contributions[0].forDecided, -1.0);
  EXPECT_EQ(explanation.contributions[1].forDecided, -4.0);
  EXPECT_EQ(explanation.contributions[0].forTrue, -9.0);
  EXPECT_EQ(explanation.contributions[1].forTrue, -9.0);
}

TEST(ExplanationTest, IsEmptyForACategoryThatTheToolDoesNotKnow) {
  const auto pattern = sharedPattern({1.0, 0.4, 0.2, 2.5});
  EXPECT_TRUE(eval::explanation(trained(bayes()), *pattern, 0, 7).contributions.empty());
  EXPECT_TRUE(eval::explanation(trained(neighbours(2)), *pattern, 0, 7).contributions.empty());
}

}  // namespace
