// SPDX-License-Identifier: MIT
// Teaches a stored nearest-neighbour model parts that were sorted since, without its first data.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <iostream>
#include <sstream>

vxPtrHandle_const<vxFeaturePattern> vfPart(double size) {
  return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({size}, {}));
}

// A new tool, so that the one in service stays as it is whatever goes wrong here.
vxClassifierTool vfUpdated(const vxClassifierTool& tool, const vxFeaturePattern& part, long label) {
  const auto classifier = tool.classifier();
  const auto& stored = dynamic_cast<const vx_ClassifierKNN&>(*classifier);
  vxClassifierDataProviderMemory data = *stored.data();  // shares the patterns
  data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(part)), label);
  vxClassifierTool updated;
  updated.train(data, *tool.trainParams());
  return updated;
}

void vfDecide(const vxClassifierTool& tool) {
  vxClassifierResult result;
  tool.run(*vfPart(6.0), result);
  const vxClassifierCategoryResult& first = result.categoryResults().front();
  std::cout << "category " << first.categoryLabel() << ", score " << first.classScore() << "\n";
}

int main() try {
  vxClassifierDataProviderMemory data;
  for (const double size : {3.0, 4.0, 5.0}) data.addData(vfPart(size), 0);
  for (const double size : {8.0, 9.0}) data.addData(vfPart(size), 1);
  vxClassifierTool trained;
  trained.train(data, vxClassifierTrainParamsKNN(3));
  std::stringstream file(std::ios::in | std::ios::out | std::ios::binary);
  vxOutputArchive output(file);
  output || trained;

  vxClassifierTool tool;
  vxInputArchive input(file);
  input || tool;
  tool.retrain(*tool.trainParams(), nullptr, 0);  // a loaded tool forgot its k
  vfDecide(tool);
  try {
    tool = vfUpdated(tool, vxFeaturePattern({6.5, 1.0}, {}), 1);
  } catch (const vxClassifierDefs::Errors& error) {
    std::cout << "not learnt: " << vfNarrow(error.message()) << "\n";
  }
  vfDecide(tool);
  tool = vfUpdated(tool, *vfPart(6.5), 1);
  vfDecide(tool);
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
