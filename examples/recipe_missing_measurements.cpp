// SPDX-License-Identifier: MIT
// Classifies parts of which one measurement is missing now and then, in training and in production.
#include <vxclss/vxclss.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <vector>

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// The measuring code gives NaN for what it could not measure; the pattern has to be told so.
vxPtrHandle_const<vxFeaturePattern> vfPattern(const std::vector<double>& values) {
  std::vector<long> invalid;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i])) invalid.push_back(static_cast<long>(i));
  }
  return vxPtrHandle_const(new vxFeaturePattern(values, invalid));
}

int main() try {
  vxClassifierDataProviderMemory data;  // length and gloss of bolts (0) and pins (1)
  for (const auto& part : {vfPattern({20.0, 0.8}), vfPattern({21.0, kMissing}),
                           vfPattern({23.0, 0.6}), vfPattern({24.0, 0.7})}) {
    data.addData(part, 0);
  }
  for (const auto& part : {vfPattern({24.0, 0.2}), vfPattern({26.0, 0.3}),
                           vfPattern({kMissing, 0.1}), vfPattern({29.0, 0.3})}) {
    data.addData(part, 1);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsBayesian(
                       vxClassifierDistributionTypes(), vxClassifierFrequencies(1.0),
                       vxClassifierCosts(1.0), vxFeaturePattern({}, {})));

  for (const auto& part : {vfPattern({23.5, 0.3}), vfPattern({23.5, kMissing}),
                           vfPattern({kMissing, 0.3}), vfPattern({kMissing, kMissing})}) {
    if (part->numInvalid() == part->numMeasurements()) {
      std::cout << "nothing measured, not classified\n";
      continue;
    }
    vxClassifierResult result;
    tool.run(*part, result);
    const vxClassifierCategoryResult& first = result.categoryResults().front();
    std::cout << (first.categoryLabel() == 0 ? "bolt" : "pin") << ", class score "
              << first.classScore() << "\n";
  }
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
