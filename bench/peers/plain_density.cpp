// SPDX-License-Identifier: MIT
#include "bench/peers/plain_density.h"

#include <algorithm>
#include <cmath>

namespace peers {

PlainDensities::PlainDensities(const Rows& rows, std::size_t numCategories, bool isFull)
    : d_(rows.d),
      means_(numCategories, std::vector<double>(rows.d)),
      covariances_(numCategories, std::vector<double>(rows.d * rows.d)) {
  const double count = static_cast<double>(rows.n) / static_cast<double>(numCategories);
  for (std::size_t i = 0; i < rows.n; ++i) {
    std::vector<double>& mean = means_[i % numCategories];
    for (std::size_t j = 0; j < d_; ++j) mean[j] += rows.row(i)[j] / count;
  }
  for (std::size_t i = 0; i < rows.n; ++i) {
    const std::vector<double>& mean = means_[i % numCategories];
    std::vector<double>& covariance = covariances_[i % numCategories];
    for (std::size_t a = 0; a < d_; ++a) {
      for (std::size_t b = 0; b < d_; ++b) {
        if (!isFull && a != b) continue;
        covariance[a * d_ + b] +=
            (rows.row(i)[a] - mean[a]) * (rows.row(i)[b] - mean[b]) / (count - 1.0);
      }
    }
  }
}

bool PlainDensities::agree(const double* query, const vxClassifierResult& result) const {
  constexpr double kTolerance = 1e-9;
  std::vector<double> values;
  for (std::size_t category = 0; category < means_.size(); ++category) {
    values.push_back(logValue_(category, query));
  }
  const double largest = *std::max_element(values.begin(), values.end());
  return result.categoryResults().size() == values.size() &&
         std::all_of(result.categoryResults().begin(), result.categoryResults().end(),
                     [&](const vxClassifierCategoryResult& category) {
                       const auto label = static_cast<std::size_t>(category.categoryLabel());
                       const double expected = std::exp(values[label] - largest);
                       return std::fabs(category.matchScore() - expected) <= kTolerance;
                     });
}

double PlainDensities::logValue_(std::size_t category, const double* query) const {
  const double ln2Pi = std::log(2.0 * std::acos(-1.0));
  std::vector<double> matrix = covariances_[category];
  std::vector<double> rest(d_);
  for (std::size_t j = 0; j < d_; ++j) rest[j] = query[j] - means_[category][j];
  double logValue = 0.0;
  for (std::size_t k = 0; k < d_; ++k) {
    const double pivot = matrix[k * d_ + k];
    logValue -= 0.5 * (ln2Pi + std::log(pivot) + rest[k] * rest[k] / pivot);
    for (std::size_t i = k + 1; i < d_; ++i) {
      const double factor = matrix[i * d_ + k] / pivot;
      rest[i] -= factor * rest[k];
      for (std::size_t j = k + 1; j < d_; ++j) matrix[i * d_ + j] -= factor * matrix[k * d_ + j];
    }
  }
  return logValue;
}

}  // namespace peers
