// SPDX-License-Identifier: MIT
#include "tools/eval/nearest.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace eval {
namespace {

constexpr double kFarthest = std::numeric_limits<double>::infinity();

/// Sum of |a - b|^order for the two orders that need no pow; more than `limit` as soon as that is
/// known.
double powerSum(const std::vector<double>& a, const std::vector<double>& b, double order,
                double limit) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size() && sum <= limit; ++i) {
    const double difference = std::fabs(a[i] - b[i]);
    sum += order == 1.0 ? difference : difference * difference;
  }
  return sum;
}

}  // namespace

Nearest nearestStored(const vx_ClassifierKNN& classifier, const vxFeaturePattern& pattern,
                      long label) {
  const vxClassifierDataProviderMemory& data = *classifier.data();
  const vxPatternDistanceMetric& metric = *classifier.params().distanceMetric();
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(&metric);
  const double order = norm != nullptr ? norm->order() : 0.0;
  const bool isPlain = order == 1.0 || order == 2.0;
  const std::vector<double>& query = pattern.featureMeasurements(false);
  Nearest nearest{-1, kFarthest};
  for (long i = 0; i < data.numPatterns(); ++i) {
    if (label >= 0 && data.categoryLabel(i) != label) continue;
    const vxPtrHandle_const<vxFeaturePattern> stored = data.featurePattern(i);
    const double distance =
        isPlain ? powerSum(query, stored->featureMeasurements(false), order, nearest.distance)
                : metric.distance(pattern, *stored);
    if (distance < nearest.distance) nearest = {i, distance};
  }
  if (isPlain && order == 2.0) nearest.distance = std::sqrt(nearest.distance);
  return nearest;
}

}  // namespace eval
