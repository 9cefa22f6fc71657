// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_SAMPLES_H_
#define TESTS_SUPPORT_SAMPLES_H_

#include <vector>

#include "vxclss/data_provider.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"

/// A labelled pattern as tests write it.
struct LabelledSample {
  std::vector<double> measurements;
  long label;
  std::vector<long> invalid = {};
};

inline vxPtrHandle_const<vxFeaturePattern> sharedPattern(const std::vector<double>& measurements,
                                                         const std::vector<long>& invalid = {}) {
  return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(measurements, invalid));
}

inline vxClassifierDataProviderMemory providerOf(const std::vector<LabelledSample>& samples) {
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;
  for (const LabelledSample& sample : samples) {
    patterns.push_back(sharedPattern(sample.measurements, sample.invalid));
    labels.push_back(sample.label);
  }
  vxClassifierDataProviderMemory provider;
  provider.data(patterns, labels);
  return provider;
}

/// Labels of a result, cheapest first.
inline std::vector<long> labelsOf(const vxClassifierResult& result) {
  std::vector<long> labels;
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    labels.push_back(category.categoryLabel());
  }
  return labels;
}

#endif  // TESTS_SUPPORT_SAMPLES_H_
