// SPDX-License-Identifier: MIT
#include "tests/support/plain_normal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace plain {

namespace {

bool isValid(const vx_KernelPattern& pattern, std::size_t i) {
  const auto index = static_cast<std::int32_t>(i);
  return std::count(pattern.invalidIndices.begin(), pattern.invalidIndices.end(), index) == 0;
}

const Real kLn2Pi = std::log(2.0L * std::acos(-1.0L));

std::vector<Real> column(const std::vector<vx_KernelPattern>& samples, std::size_t i,
                         std::size_t other, double normalizer) {
  std::vector<Real> values;
  for (const vx_KernelPattern& sample : samples) {
    if (!isValid(sample, i) || !isValid(sample, other)) continue;
    values.push_back(static_cast<Real>(sample.values[i] / normalizer));
  }
  return values;
}

Real average(const std::vector<Real>& values) {
  // Around the first one, so that an offset does not cost digits.
  Real sum = 0;
  for (const Real value : values) sum += value - values[0];
  return values.empty() ? 0 : values[0] + sum / static_cast<Real>(values.size());
}

Real covarianceOf(const std::vector<Real>& a, const std::vector<Real>& b) {
  if (a.size() < 2) return 0;
  const Real meanA = average(a);
  const Real meanB = average(b);
  Real sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += (a[k] - meanA) * (b[k] - meanB);
  return sum / static_cast<Real>(a.size() - 1);
}

}  // namespace

Moments momentsOf(const std::vector<vx_KernelPattern>& samples, double normalizer) {
  const std::size_t d = samples.at(0).values.size();
  Moments moments;
  for (std::size_t i = 0; i < d; ++i) {
    moments.mean.push_back(average(column(samples, i, i, normalizer)));
    moments.covariance.emplace_back();
    for (std::size_t j = 0; j < d; ++j) {
      moments.covariance.back().push_back(
          covarianceOf(column(samples, i, j, normalizer), column(samples, j, i, normalizer)));
    }
  }
  return moments;
}

Real logNormal(const Moments& moments, const vx_KernelPattern& x) {
  std::vector<std::size_t> members;
  for (std::size_t i = 0; i < x.values.size(); ++i) {
    if (isValid(x, i)) members.push_back(i);
  }
  // Row by row: a row of the Cholesky factor, then the element of the solution that it gives.
  RealMatrix factor;
  std::vector<Real> solution;
  Real value = 0;
  for (std::size_t r = 0; r < members.size(); ++r) {
    const std::size_t i = members[r];
    std::vector<Real> row;
    Real pivot = moments.covariance[i][i];
    Real y = static_cast<Real>(x.values[i]) - moments.mean[i];
    for (std::size_t c = 0; c < r; ++c) {
      Real element = moments.covariance[i][members[c]];
      for (std::size_t k = 0; k < c; ++k) element -= row[k] * factor[c][k];
      row.push_back(element / factor[c][c]);
      pivot -= row[c] * row[c];
      y -= row[c] * solution[c];
    }
    row.push_back(std::sqrt(pivot));
    solution.push_back(y / row[r]);
    factor.push_back(row);
    value -= 0.5L * (kLn2Pi + solution[r] * solution[r]) + std::log(row[r]);
  }
  return value;
}

void RunningMoments::fold(const vx_KernelPattern& sample, double normalizer) {
  bool isCounted = false;
  for (std::size_t i = 0; i < pairs_.size(); ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      if (!isValid(sample, i) || !isValid(sample, j)) continue;
      isCounted = true;
      Pair& pair = pairs_[i][j];
      const double x = sample.values[i] / normalizer;
      const double y = sample.values[j] / normalizer;
      ++pair.count;
      const auto n = static_cast<double>(pair.count);
      const double deviation = x - pair.rowMean;
      pair.rowMean = pair.rowMean + deviation / n + 0.0;
      pair.columnMean = pair.columnMean + (y - pair.columnMean) / n + 0.0;
      pair.products = pair.products + deviation * (y - pair.columnMean);
    }
  }
  if (isCounted) ++sampleCount_;
}

double RunningMoments::covariance(std::size_t row, std::size_t column) const {
  const Pair& pair = pairs_[row][column];
  if (pair.count < 2) return row == column ? -0.0 : 0.0;
  return pair.products / static_cast<double>(pair.count - 1);
}

}  // namespace plain
