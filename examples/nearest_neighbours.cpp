// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <iostream>

int main() try {
  vxClassifierDataProviderMemory data;
  for (const double x : {3.9, 4.1, 4.4, 5.8, 6.3, 6.4}) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x}, {})), x < 5 ? 0 : 1);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsKNN(3));
  vxClassifierResult result;
  tool.run(vxFeaturePattern({5.2}, {}), result);
  std::cout << "category " << result.categoryResults().front().categoryLabel() << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
