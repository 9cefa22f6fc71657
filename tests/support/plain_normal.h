// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_NORMAL_H_
#define TESTS_SUPPORT_PLAIN_NORMAL_H_

#include <cstddef>
#include <vector>

#include "kernel/normal_density.h"

/// A normal density as its formulas say it, in long double, and the rule by which one learns.
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

/// The centred one-pass rule in double, sample by sample: every pair of measurements keeps a count
/// and means of its own. A normal density that has learned the same has these bits.
class RunningMoments {
 public:
  explicit RunningMoments(std::size_t d) : pairs_(d, std::vector<Pair>(d)) {}

  void fold(const vx_KernelPattern& sample, double normalizer = 1.0);

  long sampleCount() const { return sampleCount_; }
  double mean(std::size_t i) const { return pairs_[i][i].rowMean; }
  /// Row >= column.
  double covariance(std::size_t row, std::size_t column) const;

 private:
  struct Pair {
    long count = 0;
    double rowMean = -0.0;
    double columnMean = -0.0;
    double products = 0.0;
  };

  long sampleCount_ = 0;  // of those with a valid measurement
  std::vector<std::vector<Pair>> pairs_;
};

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_NORMAL_H_
