// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_HOST_PROVIDER_H_
#define TESTS_SUPPORT_HOST_PROVIDER_H_

#include <string>
#include <vector>

#include "vxclss/data_provider.h"

/// A provider of a host, which checks nothing and writes down which pattern or label it is asked
/// for.
class HostProvider : public vxClassifierDataProvider {
 public:
  HostProvider(const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns,
               const std::vector<long>& labels)
      : patterns_(patterns), labels_(labels) {}

  /// "pattern 0", "label 0", ... in the order of the calls.
  const std::vector<std::string>& calls() const { return calls_; }

  std::wstring name() const override { return L"host"; }
  std::wstring description() const override { return L"not checked"; }
  long numMeasurements() const override { return 0; }
  long numPatterns() const override { return static_cast<long>(patterns_.size()); }
  vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
    calls_.push_back("pattern " + std::to_string(index));
    return patterns_.at(static_cast<std::size_t>(index));
  }
  long categoryLabel(long index) const override {
    calls_.push_back("label " + std::to_string(index));
    return labels_.at(static_cast<std::size_t>(index));
  }

 private:
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns_;
  std::vector<long> labels_;
  mutable std::vector<std::string> calls_;
};

#endif  // TESTS_SUPPORT_HOST_PROVIDER_H_
