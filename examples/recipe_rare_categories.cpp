// SPDX-License-Identifier: MIT
// Tells the tool that cracks are rare, though half of the training data shows one.
#include <vxclss/vxclss.h>

#include <iostream>

constexpr long kGood = 0, kCrack = 1;

vxClassifierTrainParamsBayesian vfParams(double frequencyOfCracks, double costOfMissedCrack) {
  vxClassifierFrequencies frequencies(1.0 - frequencyOfCracks);
  frequencies.categoryFrequencyOverride(kCrack, frequencyOfCracks);
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(kCrack, kGood, costOfMissedCrack);
  return {vxClassifierDistributionTypes(), frequencies, costs, vxFeaturePattern({}, {})};
}

void vfDecide(const vxClassifierTool& tool, double darkness) {
  vxClassifierResult result;
  tool.run(vxFeaturePattern({darkness}, {}), result);
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    if (category.categoryLabel() == kCrack) std::cout << "crack " << category.classScore();
  }
  const long decision = result.categoryResults().front().categoryLabel();
  std::cout << (decision == kCrack ? ", thrown away\n" : ", passed\n");
}

int main() try {
  vxClassifierDataProviderMemory data;
  for (const double darkness : {10.0, 12.0, 13.0, 15.0, 20.0, 22.0, 23.0, 25.0}) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({darkness}, {})),
                 darkness < 18.0 ? kGood : kCrack);
  }
  vxClassifierTool tool;
  tool.train(data, vfParams(0.5, 1.0));
  vfDecide(tool, 18.0);
  tool.retrain(vfParams(0.01, 1.0));  // one part in a hundred is cracked
  vfDecide(tool, 18.0);
  tool.retrain(vfParams(0.01, 200.0));  // and a customer who finds it costs 200 good parts
  vfDecide(tool, 18.0);
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
