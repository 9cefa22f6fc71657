// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DATA_GENERATOR_H_
#define VXCLSS_DATA_GENERATOR_H_

#include <vector>

#include "vxclss/data_provider.h"
#include "vxclss/export.h"
#include "vxfoundation/pair.h"

/// Makes random patterns of one category, each measurement from a normal distribution of its own.
///
/// Every generator starts its random numbers from the same seed: two of them with equal spreads
/// give patterns that differ only by the means, on every machine.
class VXCLSS_EXPORT vx_ClassDataGenerator {
 public:
  /// One pair of mean and standard deviation per measurement. Nothing is checked.
  explicit vx_ClassDataGenerator(const std::vector<vxPair<double>>& distributions = {},
                                 long numPatterns = 0);

  /// The patterns, all valid and of label 0; made at the first call, the same ones afterwards.
  ///
  /// Without distributions each call adds another batch of patterns without measurements.
  vxClassifierDataProviderMemory generateData();

 private:
  std::vector<vxPair<double>> distributions_;
  long numPatterns_;
  vxClassifierDataProviderMemory generated_;
};

/// Combines generators of several categories, in shuffled order; a category's label is the place
/// of its generator.
///
/// It hands out only as many patterns of a category, and in all, as a pattern has measurements:
/// take the data of the class generators where every pattern is wanted.
class VXCLSS_EXPORT vx_TotalDataGenerator {
 public:
  explicit vx_TotalDataGenerator(const std::vector<vx_ClassDataGenerator>& generators = {});

  /// Made at the first call, the same patterns afterwards.
  ///
  /// Throws BadIndex if a category has fewer patterns than measurements; BadFeatures if the
  /// generators differ in their number of measurements.
  vxClassifierDataProviderMemory generateData();

 private:
  std::vector<vx_ClassDataGenerator> generators_;
  vxClassifierDataProviderMemory generated_;
};

#endif  // VXCLSS_DATA_GENERATOR_H_
