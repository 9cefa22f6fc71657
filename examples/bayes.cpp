// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <iostream>

int main() try {
  const auto part = [](double x) { return vxPtrHandle_const(new vxFeaturePattern({x}, {})); };
  vxClassifierDataProviderMemory data;
  for (const double x : {9.0, 10.0, 11.0, 12.0, 13.0, 14.0}) data.addData(part(x), x < 12 ? 0 : 1);
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsBayesian(
                       vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0),
                       vxClassifierCosts(1.0), vxFeaturePattern({}, {})));
  vxClassifierResult result;
  tool.run(*part(12.0), result);
  std::cout << "class score " << result.categoryResults().front().classScore() << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
