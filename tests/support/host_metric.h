// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_HOST_METRIC_H_
#define TESTS_SUPPORT_HOST_METRIC_H_

#include <functional>
#include <utility>

#include "vxclss/distance_metric.h"

/// A metric of a host; its clones call the same function.
class HostMetric : public vxPatternDistanceMetric {
 public:
  using Function = std::function<double(const vxFeaturePattern&, const vxFeaturePattern&)>;

  explicit HostMetric(Function function) : function_(std::move(function)) {}

  double distance(const vxFeaturePattern& a, const vxFeaturePattern& b) const override {
    return function_(a, b);
  }
  vxPtrHandle<vxPatternDistanceMetric> clone() const override {
    return vxPtrHandle<vxPatternDistanceMetric>(new HostMetric(*this));
  }

 private:
  Function function_;
};

/// A norm with another idea of distance: the farthest pattern is the nearest.
class FarthestFirst : public vxPatternDistanceMetricNorm {
 public:
  using vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm;

  double distance(const vxFeaturePattern& a, const vxFeaturePattern& b) const override {
    return -vxPatternDistanceMetricNorm::distance(a, b);
  }
  vxPtrHandle<vxPatternDistanceMetric> clone() const override {
    return vxPtrHandle<vxPatternDistanceMetric>(new FarthestFirst(*this));
  }
};

#endif  // TESTS_SUPPORT_HOST_METRIC_H_
