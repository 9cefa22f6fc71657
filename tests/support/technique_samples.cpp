// SPDX-License-Identifier: MIT
#include "tests/support/technique_samples.h"

#include "tests/support/samples.h"
#include "tests/support/tree_samples.h"
#include "vxfoundation/random.h"

vxClassifierDataProviderMemory techniqueData() {
  vxRandomUniform random(6);
  std::vector<LabelledSample> samples;
  for (long i = 0; i < 24; ++i) {
    LabelledSample sample{{}, i % 4};
    for (int m = 0; m < 5; ++m) sample.measurements.push_back(random.next(0.0, 1.0));
    samples.push_back(sample);
  }
  return providerOf(samples);
}

vxPtrHandle_const<vxDecisionTree> techniqueTree() {
  const vxDecisionTreeNode low = sampleTree();
  vxDecisionTreeNode tree(vxRangePredicate({0.2, 0.8}, {0, 2}), low, leafWith({3, 0}));
  for (long i = 0; i < 6; ++i) {
    tree = vxDecisionTreeNode(vxComparisonPredicate(i % 5, (i + 1) % 5), tree,
                              i % 2 == 0 ? low : vxDecisionTreeNode());
  }
  return tree.clone();
}

vxClassifierTrainParamsKNN knnParams(long k, double order) {
  return {k, vxPatternDistanceMetricNorm(order), vxClassifierCosts(1.0)};
}

vxClassifierTrainParamsBayesian bayesianParams(double cost) {
  vxClassifierDistributionTypes types;
  types.setDependent(0, {3, 1});
  types.setDependent(2, {0, 3});
  types.distributionTypeOverride(1, 2, vxClassifierDistributionTypes::eBinomial);
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(cost), {{}, {}}};
}

vxFeaturePattern techniqueQuery(int number) {
  std::vector<double> values;
  for (int m = 0; m < 5; ++m) values.push_back(0.1 * ((number * (m + 3)) % 10));
  return {values, number % 4 == 0 ? std::vector<long>{number % 5} : std::vector<long>()};
}

std::vector<Technique> techniques() {
  using Tool = vxClassifierTool;
  const auto data = techniqueData();
  const auto tree = techniqueTree();
  const auto knn = [data](Tool& tool) { tool.train(data, knnParams(3)); };
  const auto knnAgain = [](Tool& tool) { tool.retrain(knnParams(5, 1.0)); };
  const auto bayesian = [data](Tool& tool) { tool.train(data, bayesianParams(1.0)); };
  const auto bayesianAgain = [](Tool& tool) { tool.retrain(bayesianParams(5.0)); };
  return {{"Bayes", bayesian, bayesianAgain, bayesianParams(1.0).clone()},
          {"KNN", knn, knnAgain, knnParams(3).clone()},
          {"Tree", [tree](Tool& tool) { tool.train(*tree); }, nullptr, {}}};
}
