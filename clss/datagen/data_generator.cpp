// SPDX-License-Identifier: MIT
#include "vxclss/data_generator.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "saturating_cast.h"
#include "vxfoundation/random.h"

namespace {

// Callers rely on it: every generator draws the same numbers.
constexpr long kSeed = 1;

}  // namespace

vx_ClassDataGenerator::vx_ClassDataGenerator(const std::vector<vxPair<double>>& distributions,
                                             long numPatterns)
    : distributions_(distributions), numPatterns_(numPatterns) {}

vxClassifierDataProviderMemory vx_ClassDataGenerator::generateData() {
  vxRandomGaussian gaussian(kSeed);
  // Patterns without measurements don't count as made: each call adds another batch of them.
  if (generated_.numMeasurements() != 0) return generated_;
  for (long i = 0; i < numPatterns_; ++i) {
    std::vector<double> measurements;
    for (const vxPair<double>& distribution : distributions_) {
      measurements.push_back(gaussian.next(distribution.first, distribution.second));
    }
    generated_.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(measurements, {})),
                       0);
  }
  return generated_;
}

vx_TotalDataGenerator::vx_TotalDataGenerator(const std::vector<vx_ClassDataGenerator>& generators)
    : generators_(generators) {}

vxClassifierDataProviderMemory vx_TotalDataGenerator::generateData() {
  if (generated_.numMeasurements() != 0) return generated_;

  // Of each category, and in all, as many patterns as a pattern has measurements: callers rely on
  // these bounds.
  vxClassifierDataProviderMemory ordered;
  for (std::size_t k = 0; k < generators_.size(); ++k) {
    const vxClassifierDataProviderMemory category = generators_[k].generateData();
    for (long j = 0; j < category.numMeasurements(); ++j) {
      ordered.addData(category.featurePattern(j), static_cast<long>(k));
    }
  }

  // Each position is swapped with any other, not only with one of the rest: callers rely on the
  // order that this gives.
  const long count = ordered.numMeasurements();
  std::vector<long> order(static_cast<std::size_t>(count));
  std::iota(order.begin(), order.end(), 0L);
  vxRandomUniform uniform(kSeed);
  for (std::size_t i = 0; i < order.size(); ++i) {
    const long drawn = vx_saturatingCast(uniform.next(0.0, static_cast<double>(count)));
    const auto j = static_cast<std::size_t>(std::min(drawn, count - 1));
    std::swap(order[j], order[i]);
  }
  for (const long index : order) {
    generated_.addData(ordered.featurePattern(index), ordered.categoryLabel(index));
  }
  return generated_;
}
