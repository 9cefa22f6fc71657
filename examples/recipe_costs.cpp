// SPDX-License-Identifier: MIT
// Finds the cost at which a decision turns, on a trained tool and without the training data.
#include <vxclss/vxclss.h>

#include <iostream>

constexpr long kGood = 0, kDamaged = 1;

void vfDecide(const vxClassifierTool& tool, const vxFeaturePattern& part) {
  vxClassifierResult result;
  tool.run(part, result);
  const vxClassifierCategoryResult& cheapest = result.categoryResults().front();
  std::cout << (cheapest.categoryLabel() == kGood ? "pass" : "throw away") << ", expected cost "
            << cheapest.expectedCost() << "\n";
}

int main() try {
  vxClassifierDataProviderMemory data;
  for (const double size : {9.0, 10.0, 11.0, 12.0, 13.0, 14.0}) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({size}, {})),
                 size < 11.5 ? kGood : kDamaged);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsBayesian(
                       vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0),
                       vxClassifierCosts(1.0), vxFeaturePattern({}, {})));
  const vxFeaturePattern part({12.0}, {});
  vfDecide(tool, part);

  vxClassifierFrequencies frequencies(1.0);
  frequencies.categoryFrequencyOverride(0, 9.0);
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(/*trueLabel=*/1, /*assignedLabel=*/0, 5.0);
  tool.retrain(vxClassifierTrainParamsBayesian(vxClassifierDistributionTypes(), frequencies, costs,
                                               vxFeaturePattern({}, {})));
  vfDecide(tool, part);

  for (const double cost : {1.0, 2.0, 3.0, 4.0}) {  // of passing a damaged part
    costs.misclassificationCostOverride(kDamaged, kGood, cost);
    tool.retrain(vxClassifierTrainParamsBayesian(vxClassifierDistributionTypes(), frequencies,
                                                 costs, vxFeaturePattern({}, {})));
    std::cout << "at " << cost << ": ";
    vfDecide(tool, part);
  }
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
