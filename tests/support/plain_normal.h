// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_NORMAL_H_
#define TESTS_SUPPORT_PLAIN_NORMAL_H_

#include <vector>

#include "kernel/normal_density.h"

/// A normal density as its formulas say it, in long double.
namespace plain {

using Real = long double;
using RealMatrix = std::vector<std::vector<Real>>;

/// Two passes over the samples for each measurement and each pair of measurements, over those in
/// which it, or both, are valid; the divisor is n - 1.
struct Moments {
  std::vector<Real> mean;
  RealMatrix covariance;
};
Moments momentsOf(const std::vector<vx_KernelPattern>& samples, double normalizer = 1.0);

/// Logarithm of the marginal density over the valid measurements of `x`, 0 if there is none. The
/// marginal covariance must be positive definite.
Real logNormal(const Moments& moments, const vx_KernelPattern& x);

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_NORMAL_H_
