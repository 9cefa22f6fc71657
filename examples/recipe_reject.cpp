// SPDX-License-Identifier: MIT
// Leaves a part to a person where deciding is too dear, where two categories are too close, or
// where the part is like nothing that the tool has learnt.
#include <vxclss/vxclss.h>

#include <algorithm>
#include <iostream>
#include <string>

constexpr double kDearest = 0.4, kLeastMargin = 0.5;

// Minus the logarithm of the best category's likelihood: how far off the pattern is.
double vfMisfit(const vxClassifierTool& tool, const vxFeaturePattern& part) {
  vxClassifierResult result;
  tool.run(part, result);
  return result.matchScoreFactorLog();
}

std::string vfDecision(const vxClassifierTool& tool, const vxFeaturePattern& part, double worst) {
  vxClassifierResult result;
  tool.run(part, result);
  const auto& categories = result.categoryResults();
  if (!(result.matchScoreFactorLog() <= worst)) return "rejected: unlike all categories";
  if (!(categories[0].expectedCost() <= kDearest)) return "rejected: too dear to decide";
  if (!(categories[0].classScore() - categories[1].classScore() >= kLeastMargin)) {
    return "rejected: two categories are close";
  }
  return "category " + std::to_string(categories[0].categoryLabel());
}

int main() try {
  vxClassifierDataProviderMemory data;
  for (const double size : {4.0, 7.0, 10.0, 13.0, 16.0}) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({size}, {})), 0);
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({size + 10.0}, {})), 1);
  }
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(/*trueLabel=*/0, /*assignedLabel=*/1, 5.0);
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsBayesian(vxClassifierDistributionTypes(),
                                                   vxClassifierFrequencies(1.0), costs,
                                                   vxFeaturePattern({}, {})));
  double worst = vfMisfit(tool, *data.featurePattern(0));
  for (long i = 1; i < data.numPatterns(); ++i) {
    worst = std::max(worst, vfMisfit(tool, *data.featurePattern(i)));
  }
  worst += 2.0;  // some more than the training data, which fits itself best
  for (const double size : {10.0, 13.5, 15.0, 21.0, 40.0}) {
    std::cout << size << ": " << vfDecision(tool, vxFeaturePattern({size}, {}), worst) << "\n";
  }
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
