// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_NORMAL_FACTOR_H_
#define FOUNDATION_KERNEL_NORMAL_FACTOR_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "vxfoundation/export.h"

/// What evaluating a normal density needs of its moments: with z_i = (x_i - mean_i) scale_i and
/// the correlation matrix R = L L^T,
///
///     ln p(x) = constant - |y|^2 / 2,   L y = z.
///
/// A density of one measurement is constant - z^2 / 2 to the bit.
class VXFOUNDATION_EXPORT vx_NormalFactor {
 public:
  /// From means and covariance(row, column), row >= column. Regularises a covariance that is not
  /// positive definite; see the source.
  vx_NormalFactor(std::vector<double> mean,
                  const std::function<double(std::size_t, std::size_t)>& covariance);

  /// A number that no other factor of this process has.
  std::uint64_t serial() const { return serial_; }

  std::size_t dimension() const { return mean_.size(); }
  double mean(std::size_t i) const { return mean_[i]; }
  double scale(std::size_t i) const { return scale_[i]; }
  double constant() const { return constant_; }
  /// 1 / L_ii.
  double inverseDiagonal(std::size_t i) const { return inverseDiagonal_[i]; }
  /// The columns of L below the diagonal, one after another.
  const double* columns() const { return columns_.data(); }

  /// Overwrites `x`, the dimension() measurements, and gives the log-density there.
  double logDensity(double* x) const;

 private:
  bool factorise_(const std::vector<double>& correlations, double shrinkage);

  std::uint64_t serial_;
  std::vector<double> mean_;
  std::vector<double> scale_;
  double constant_ = 0.0;
  std::vector<double> inverseDiagonal_;
  std::vector<double> columns_;
};

#endif  // FOUNDATION_KERNEL_NORMAL_FACTOR_H_
