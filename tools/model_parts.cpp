// SPDX-License-Identifier: MIT
#include "tools/model_parts.h"

#include <vxfoundation/vxfoundation.h>

namespace cli {

std::string methodName(const vxClassifierTool& tool) {
  const vx_Classifier* classifier = tool.classifier().get();
  if (dynamic_cast<const vx_ClassifierKNN*>(classifier) != nullptr) return "knn";
  if (dynamic_cast<const vx_ClassifierBayesian*>(classifier) != nullptr) return "bayes";
  if (dynamic_cast<const vx_ClassifierDecisionTree*>(classifier) != nullptr) return "tree";
  return "other";
}

const vxClassifierTrainParamsBayesian& bayesianParams(const vxClassifierTool& tool) {
  return vfCheckedCast<vxClassifierTrainParamsBayesian>(*tool.trainParams());
}

// Whether a pair or a category has a value of its own shows only when the default changes.

std::vector<PairCost> ownCosts(const vxClassifierCosts& costs, long numCategories) {
  vxClassifierCosts one(costs);
  vxClassifierCosts two(costs);
  one.defaultMisclassificationCost(1.0);
  two.defaultMisclassificationCost(2.0);
  std::vector<PairCost> own;
  for (long actual = 0; actual < numCategories; ++actual) {
    for (long assigned = 0; assigned < numCategories; ++assigned) {
      if (actual == assigned) continue;
      const double cost = one.misclassificationCost(actual, assigned);
      if (cost == 1.0 && two.misclassificationCost(actual, assigned) == 2.0) continue;
      own.push_back({actual, assigned, cost});
    }
  }
  return own;
}

std::vector<std::pair<long, double>> ownFrequencies(const vxClassifierFrequencies& frequencies,
                                                    long numCategories) {
  vxClassifierFrequencies one(frequencies);
  vxClassifierFrequencies two(frequencies);
  one.defaultCategoryFrequency(1.0);
  two.defaultCategoryFrequency(2.0);
  std::vector<std::pair<long, double>> own;
  for (long label = 0; label < numCategories; ++label) {
    const double frequency = one.categoryFrequency(label);
    if (frequency == 1.0 && two.categoryFrequency(label) == 2.0) continue;
    own.emplace_back(label, frequency);
  }
  return own;
}

std::map<long, long> patternCounts(const vxClassifierDataProvider& data) {
  std::map<long, long> counts;
  for (long i = 0; i < data.numPatterns(); ++i) ++counts[data.categoryLabel(i)];
  return counts;
}

}  // namespace cli
