// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_DECTREE_PREDICATE_OUTCOME_H_
#define CLSS_CLASTOOL_DECTREE_PREDICATE_OUTCOME_H_

#include <algorithm>
#include <vector>

#include "pattern_view.h"
#include "vxclss/predicate.h"

/// What outcome() of the library's predicates answers, in line for the walk down a tree.
struct vx_PredicateOutcome {
  static bool of(const vxComparisonPredicate& predicate, const vx_PatternView& pattern) {
    const long index1 = predicate.measurementIndex1_;
    const long index2 = predicate.measurementIndex2_;
    return pattern.isValid(index1) && pattern.isValid(index2) &&
           pattern.value(index1) > pattern.value(index2);
  }

  static bool of(const vxRangePredicate& predicate, const vx_PatternView& pattern) {
    const vxRange& range = predicate.measurementRange_;
    const auto isWithin = [&range](double value) {
      if (range.low() <= value && value <= range.high()) return true;
      return value != value && range.isWithin(value);  // the full range holds a NaN
    };
    const auto holds = [&](long index) {
      return pattern.isValid(index) && isWithin(pattern.value(index));
    };
    const std::vector<long>& indices = predicate.measurementIndices_;
    if (indices.size() == 1) return holds(predicate.firstIndex_);
    return std::all_of(indices.begin(), indices.end(), holds);
  }

  static bool of(const vxValidityPredicate& predicate, const vx_PatternView& pattern) {
    const std::vector<long>& indices = predicate.measurementIndices_;
    return std::all_of(indices.begin(), indices.end(),
                       [&pattern](long index) { return pattern.isValid(index); });
  }
};

#endif  // CLSS_CLASTOOL_DECTREE_PREDICATE_OUTCOME_H_
