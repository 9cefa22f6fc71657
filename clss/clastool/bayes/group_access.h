// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_BAYES_GROUP_ACCESS_H_
#define CLSS_CLASTOOL_BAYES_GROUP_ACCESS_H_

#include <vector>

#include "vxclss/density.h"
#include "vxclss/feature_pattern.h"

class vx_NormalDensity;

/// Evaluates and updates the density of a group of measurements with a whole pattern.
///
/// Our own densities take the measurements where they are; any other one is given the reduced
/// pattern. The results are the same to the bit.
class vx_GroupAccess {
 public:
  /// Measurement j of the result is measurement group[j] of `pattern`, invalid and 0.0 where that
  /// is invalid or missing.
  static vxFeaturePattern reduced(const vxFeaturePattern& pattern, const std::vector<long>& group);

  static double logValue(const vx_ProbabilityDensityFunction& density,
                         const std::vector<long>& group, const vxFeaturePattern& pattern);
  static void update(vx_ProbabilityDensityFunction& density, const std::vector<long>& group,
                     const vxFeaturePattern& pattern);

  /// The statistics of a normal density of our own; null for any other density.
  static const vx_NormalDensity* normalState(const vx_ProbabilityDensityFunction& density);
  static vx_NormalDensity* normalState(vx_ProbabilityDensityFunction& density);
};

#endif  // CLSS_CLASTOOL_BAYES_GROUP_ACCESS_H_
