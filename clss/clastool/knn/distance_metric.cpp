// SPDX-License-Identifier: MIT
#include "vxclss/distance_metric.h"

#include <cmath>

#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

vxPatternDistanceMetric::~vxPatternDistanceMetric() = default;

bool vxPatternDistanceMetric::isEquivalent(const vxPatternDistanceMetric&) const { return true; }

void vxPatternDistanceMetric::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxPatternDistanceMetric)}) {
    vxPersistent::dispatchSerialize(archive);
  }
}

vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm(double order) { this->order(order); }

vxPatternDistanceMetricNorm::~vxPatternDistanceMetricNorm() = default;

void vxPatternDistanceMetricNorm::order(double order) {
  if (!(order > 0.0)) {
    throw vxClassifierDefs::BadParams(L"Order of norm distance must be > 0");
  }
  mutating_();
  order_ = order;
}

double vxPatternDistanceMetricNorm::distance(const vxFeaturePattern& a,
                                             const vxFeaturePattern& b) const {
  if (a.numMeasurements() != b.numMeasurements()) {
    throw vxClassifierDefs::BadFeatures(
        L"Pattern distance function requires the number of measurementsin the two patterns to be equal");
  }
  const std::vector<double>& x = a.featureMeasurements(true);
  const std::vector<double>& y = b.featureMeasurements(true);
  double sum = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) sum += std::pow(std::fabs(x[i] - y[i]), order_);
  return std::pow(sum, 1.0 / order_);
}

vxPtrHandle<vxPatternDistanceMetric> vxPatternDistanceMetricNorm::clone() const {
  return vxPtrHandle<vxPatternDistanceMetric>(new vxPatternDistanceMetricNorm(*this));
}

bool vxPatternDistanceMetricNorm::isEquivalent(const vxPatternDistanceMetric& other) const {
  const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(&other);
  // Not ==: a NaN order, which only an archive can bring, is equivalent to every order.
  return norm != nullptr && !(norm->order_ < order_) && !(norm->order_ > order_);
}

void vxPatternDistanceMetricNorm::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxPatternDistanceMetricNorm)}) {
    vxPatternDistanceMetric::dispatchSerialize(archive);
    archive || order_;
  }
}

vxPersistent* vxPatternDistanceMetricNorm::make() { return new vxPatternDistanceMetricNorm(2.0); }
vx_Instantiator vxPatternDistanceMetricNorm::sExemplar(typeid(vxPatternDistanceMetricNorm),
                                                       &vxPatternDistanceMetricNorm::make);
