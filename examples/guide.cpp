// SPDX-License-Identifier: MIT
// From measured parts to a model in service, step by step as docs/guide.md tells it.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cstdio>
#include <fstream>
#include <iostream>

constexpr long kBolt = 0, kWasher = 1, kFolds = 5;
constexpr const char* kModel = "guide.model";

vxClassifierDataProviderMemory vfSorted() {
  // Stand-ins for parts that a person has sorted: area and grey value, with their deviations.
  const auto bolts = vx_ClassDataGenerator({{95.0, 12.0}, {140.0, 9.0}}, 50).generateData();
  const auto washers = vx_ClassDataGenerator({{72.0, 8.0}, {160.0, 12.0}}, 50).generateData();
  vxClassifierDataProviderMemory data;
  for (long i = 0; i < 50; ++i) {
    data.addData(bolts.featurePattern(i), kBolt);
    data.addData(washers.featurePattern(i), kWasher);
  }
  return data;
}

// Each part is decided by a tool that was trained on the other folds.
void vfJudge(const char* name, const vxClassifierDataProvider& data,
             const vxClassifierTrainParams& params) {
  long wrong = 0;
  for (long fold = 0; fold < kFolds; ++fold) {
    vxClassifierDataProviderMemory others;
    for (long i = 0; i < data.numPatterns(); ++i) {
      if (i % kFolds != fold) others.addData(data.featurePattern(i), data.categoryLabel(i));
    }
    vxClassifierTool tool;
    tool.train(others, params);
    for (long i = fold; i < data.numPatterns(); i += kFolds) {
      vxClassifierResult result;
      tool.run(*data.featurePattern(i), result);
      if (result.categoryResults().front().categoryLabel() != data.categoryLabel(i)) ++wrong;
    }
  }
  std::cout << name << ": " << wrong << " of " << data.numPatterns() << " wrong\n";
}

vxClassifierTrainParamsBayesian vfBayes(double costOfLostBolt) {
  vxClassifierCosts costs(1.0);
  costs.misclassificationCostOverride(kBolt, kWasher, costOfLostBolt);
  return {vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0), costs,
          vxFeaturePattern({}, {})};
}

void vfStore(vxClassifierTool& tool) {
  std::ofstream file(kModel, std::ios::binary);
  vxOutputArchive archive(file);
  archive || tool;
}

void vfLoad(vxClassifierTool& tool) {
  std::ifstream file(kModel, std::ios::binary);
  vxInputArchive archive(file);
  archive || tool;
}

void vfDecide(const vxClassifierTool& tool, const vxFeaturePattern& part) {
  vxClassifierResult result;
  tool.run(part, result);
  const vxClassifierCategoryResult& cheapest = result.categoryResults().front();
  std::cout << (cheapest.categoryLabel() == kBolt ? "bolt" : "washer") << ", expected cost "
            << cheapest.expectedCost() << "\n";
}

int main() try {
  const vxClassifierDataProviderMemory data = vfSorted();
  vfJudge("nearest neighbours", data, vxClassifierTrainParamsKNN(5));
  vfJudge("Bayes", data, vfBayes(1.0));

  vxClassifierTool trained;
  trained.train(data, vfBayes(1.0));
  vfStore(trained);

  vxClassifierTool tool;
  vfLoad(tool);
  std::remove(kModel);
  const vxFeaturePattern part({81.0, 150.0}, {});
  vfDecide(tool, part);

  tool.retrain(vfBayes(10.0));  // a bolt among the washers stops the machine
  vfDecide(tool, part);
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
