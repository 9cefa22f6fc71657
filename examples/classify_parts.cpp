// SPDX-License-Identifier: MIT
// Decides what a measured part is: trains a tool on parts that a person has sorted, stores and
// loads it as a host does between two shifts, and prints the decision on new parts.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <iostream>
#include <sstream>

constexpr long kBolt = 0, kWasher = 1, kDamaged = 2;
constexpr const char* kNames[] = {"bolt", "washer", "damaged"};

// Area in mm2 and mean grey value, of one magnitude so that both count alike in a distance.
constexpr struct {
  double area, grey;
  long category;
} kSorted[] = {{92, 141, kBolt},    {95, 138, kBolt},    {97, 145, kBolt},   {94, 149, kBolt},
               {61, 182, kWasher},  {64, 188, kWasher},  {60, 190, kWasher}, {63, 179, kWasher},
               {89, 127, kDamaged}, {58, 171, kDamaged}, {75, 96, kDamaged}, {90, 130, kDamaged}};

void vfDecide(const vxClassifierTool& tool, const vxFeaturePattern& part) try {
  vxClassifierResult result;
  tool.run(part, result);
  const vxClassifierCategoryResult& cheapest = result.categoryResults().front();
  std::cout << kNames[cheapest.categoryLabel()] << ": class score " << cheapest.classScore()
            << ", expected cost " << cheapest.expectedCost() << "\n";
} catch (const vxClassifierDefs::Errors& error) {
  std::cout << "refused: " << vfNarrow(error.message()) << "\n";
}

int main() try {
  vxClassifierDataProviderMemory data;
  for (const auto& [area, grey, category] : kSorted) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({area, grey}, {})),
                 category);
  }
  vxClassifierCosts costs(1.0);  // of a good part thrown away, say; a damaged one passed costs more
  costs.misclassificationCostOverride(kDamaged, kBolt, 20.0);
  costs.misclassificationCostOverride(kDamaged, kWasher, 20.0);
  vxClassifierTool trained;
  trained.train(data, vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(2.0), costs));

  std::stringstream file(std::ios::in | std::ios::out | std::ios::binary);
  vxOutputArchive output(file);
  output || trained;
  vxClassifierTool tool;
  vxInputArchive input(file);
  input || tool;
  tool.retrain(*tool.trainParams(), nullptr, 0);  // back to its k, metric and costs

  vfDecide(tool, vxFeaturePattern({95, 143}, {}));
  vfDecide(tool, vxFeaturePattern({62, 184}, {}));
  vfDecide(tool, vxFeaturePattern({91, 135}, {}));   // two bolts and a damaged part are nearest
  vfDecide(tool, vxFeaturePattern({91, 0.0}, {1}));  // the grey value could not be measured
  return 0;
} catch (const vxException& error) {
  std::cerr << "error 0x" << std::hex << error.errorNumber() << "\n";
  return 1;
}
