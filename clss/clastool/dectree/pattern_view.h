// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_DECTREE_PATTERN_VIEW_H_
#define CLSS_CLASTOOL_DECTREE_PATTERN_VIEW_H_

#include <cstddef>
#include <vector>

#include "vxclss/feature_pattern.h"

/// A pattern as bare numbers, so that a predicate reads one without a call. It shows the pattern as
/// it was: whoever has let a host's code run since then makes a new one.
class vx_PatternView {
 public:
  explicit vx_PatternView(const vxFeaturePattern& pattern) : pattern_(&pattern) {
    const std::vector<double>& measurements = pattern.featureMeasurements(false);
    values_ = measurements.data();
    count_ = measurements.size();
    areAllValid_ = pattern.numInvalid() == 0;
  }

  /// What isValid() of the pattern says or throws.
  bool isValid(long index) const {
    if (areAllValid_ && static_cast<std::size_t>(index) < count_) return true;
    return pattern_->isValid(index);
  }

  /// Of a valid index.
  double value(long index) const { return values_[index]; }

 private:
  const vxFeaturePattern* pattern_;
  const double* values_;
  std::size_t count_;
  bool areAllValid_;
};

#endif  // CLSS_CLASTOOL_DECTREE_PATTERN_VIEW_H_
