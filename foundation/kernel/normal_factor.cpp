// SPDX-License-Identifier: MIT
// Evaluates a normal density by a Cholesky factor of its correlation matrix (G. H. Golub,
// C. F. Van Loan, Matrix Computations, 4th edition, Johns Hopkins 2013, section 4.2): d^3 / 6
// multiplications to factorise, d^2 / 2 a sample.
//
// On correlations whether a matrix is singular does not depend on the units of the measurements.
// What is positive definite is never altered. Otherwise
// - a variance of 0 (a constant measurement) becomes 1e-6 of the squared mean, or, if the mean is
//   0, of the largest variance of the group, or 1e-6: a thousandth of the scale as deviation. A
//   sample that differs from the constant then scores low, but finitely;
// - all correlations are divided by 1 + r (a ridge r on the diagonal, scaled back so that the
//   variances stay; A. E. Hoerl, R. W. Kennard, "Ridge regression: biased estimation for
//   nonorthogonal problems", Technometrics 12(1), 1970, 55-67), for r = 1e-6, 1e-5, ... until the
//   matrix is positive definite. A linear dependence between measurements takes the first; what
//   left-out invalid measurements make indefinite takes more.
#include "kernel/normal_factor.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double kLn2Pi = 0x1.d67f1c864beb4p+0;
constexpr double kRegularisation = 1e-6;
constexpr double kLargestShrinkage = 1e6;

std::atomic<std::uint64_t> nextSerial{1};

// Variances that stand for themselves; zero, negative and subnormal ones say that the measurement
// did not vary within what doubles can tell.
bool isProperVariance(double variance) {
  return !(variance < std::numeric_limits<double>::min());  // a NaN stays
}

void regulariseVariances(const std::vector<double>& mean, std::vector<double>& variances) {
  double largest = 0.0;
  for (const double variance : variances) largest = std::max(largest, variance);
  for (std::size_t i = 0; i < variances.size(); ++i) {
    if (isProperVariance(variances[i])) continue;
    for (const double square : {mean[i] * mean[i], largest, 1.0}) {
      variances[i] = kRegularisation * square;
      if (isProperVariance(variances[i]) && !std::isinf(variances[i])) break;
    }
  }
}

}  // namespace

vx_NormalFactor::vx_NormalFactor(std::vector<double> mean,
                                 const std::function<double(std::size_t, std::size_t)>& covariance)
    : serial_(nextSerial.fetch_add(1, std::memory_order_relaxed)), mean_(std::move(mean)) {
  const std::size_t d = dimension();
  std::vector<double> variances(d);
  for (std::size_t i = 0; i < d; ++i) variances[i] = covariance(i, i);
  regulariseVariances(mean_, variances);

  scale_.resize(d);
  double sumOfLogs = 0.0;
  for (std::size_t i = 0; i < d; ++i) {
    scale_[i] = 1.0 / std::sqrt(variances[i]);
    sumOfLogs += std::log(variances[i]);
  }

  std::vector<double> correlations;  // columns below the diagonal, as in columns_
  correlations.reserve(d * (d - 1) / 2);
  for (std::size_t j = 0; j < d; ++j) {
    for (std::size_t i = j + 1; i < d; ++i) {
      correlations.push_back(covariance(i, j) * scale_[i] * scale_[j]);
    }
  }

  inverseDiagonal_.resize(d);
  double shrinkage = 0.0;
  while (!factorise_(correlations, shrinkage) && shrinkage <= kLargestShrinkage) {
    shrinkage = shrinkage == 0.0 ? kRegularisation : 10.0 * shrinkage;
  }
  if (shrinkage > kLargestShrinkage) {  // nonsense from a damaged archive: no correlations
    std::fill(columns_.begin(), columns_.end(), 0.0);
    std::fill(inverseDiagonal_.begin(), inverseDiagonal_.end(), 1.0);
  }

  double sumOfDiagonalLogs = 0.0;
  for (const double inverse : inverseDiagonal_) sumOfDiagonalLogs -= std::log(inverse);
  constant_ = -(0.5 * (static_cast<double>(d) * kLn2Pi + sumOfLogs) + sumOfDiagonalLogs);
}

bool vx_NormalFactor::factorise_(const std::vector<double>& correlations, double shrinkage) {
  const std::size_t d = dimension();
  // What rounding leaves of a pivot that is 0 in truth.
  const double smallest = 16.0 * static_cast<double>(d) * std::numeric_limits<double>::epsilon();

  columns_ = correlations;
  if (shrinkage > 0.0) {
    for (double& correlation : columns_) correlation /= 1.0 + shrinkage;
  }
  std::vector<double> diagonal(d, 1.0);
  double* column = columns_.data();
  for (std::size_t j = 0; j < d; ++j) {
    if (!(diagonal[j] > smallest)) return false;
    inverseDiagonal_[j] = 1.0 / std::sqrt(diagonal[j]);
    const std::size_t below = d - j - 1;
    for (std::size_t i = 0; i < below; ++i) column[i] *= inverseDiagonal_[j];
    // Takes this column's share off everything to the right of it.
    double* later = column + below;
    for (std::size_t k = 0; k < below; ++k) {
      diagonal[j + 1 + k] -= column[k] * column[k];
      for (std::size_t i = k + 1; i < below; ++i) later[i - k - 1] -= column[i] * column[k];
      later += below - k - 1;
    }
    column += below;
  }
  return true;
}

double vx_NormalFactor::logDensity(double* x) const {
  const std::size_t d = dimension();
  for (std::size_t i = 0; i < d; ++i) x[i] = (x[i] - mean_[i]) * scale_[i];

  double square = 0.0;
  const double* column = columns_.data();
  for (std::size_t j = 0; j < d; ++j) {
    const double y = x[j] * inverseDiagonal_[j];
    square += y * y;
    const std::size_t below = d - j - 1;
    for (std::size_t i = 0; i < below; ++i) x[j + 1 + i] -= column[i] * y;
    column += below;
  }
  return constant_ - 0.5 * square;
}
