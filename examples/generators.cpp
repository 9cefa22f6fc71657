// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <iostream>

int main() try {
  const auto bolts = vx_ClassDataGenerator({{95.0, 4.0}, {140.0, 6.0}}, 50).generateData();
  const auto washers = vx_ClassDataGenerator({{62.0, 2.0}, {185.0, 6.0}}, 50).generateData();
  vxClassifierDataProviderMemory data;
  for (long i = 0; i < 50; ++i) {
    data.addData(bolts.featurePattern(i), 0);
    data.addData(washers.featurePattern(i), 1);
  }
  std::cout << data.numPatterns() << " patterns, the first of area "
            << data.featurePattern(0)->featureMeasurement(0, true) << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
