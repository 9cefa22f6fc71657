// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_NORMAL_DENSITY_H_
#define FOUNDATION_KERNEL_NORMAL_DENSITY_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernel/normal_factor.h"
#include "vxfoundation/export.h"

// Statuses of the kernel: failure, module 91, codes 1 to 3. 0 is success.
constexpr long kVxNoUsableData = static_cast<std::int32_t>(0x80000B61);
constexpr long kVxDimensionChanged = static_cast<std::int32_t>(0x80000B62);
constexpr long kVxOtherDimension = static_cast<std::int32_t>(0x80000B63);

/// One sample: its measurements and the indices of those that are invalid.
struct vx_KernelPattern {
  std::vector<double> values;
  std::vector<std::int32_t> invalidIndices;
};

/// A dense matrix, row-major.
struct VXFOUNDATION_EXPORT vx_KernelMatrix {
  void resize(std::size_t newRows, std::size_t newColumns);

  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> elements;
};

/// Running statistics of a multivariate normal density, and its logarithm.
///
/// An invalid measurement is left out: each mean and variance comes from the samples in which that
/// measurement is valid, each covariance from those in which both are. The order of the samples
/// counts, how they are grouped into updates doesn't: the bits are the same.
///
/// Const operations on one object may run on many threads.
class VXFOUNDATION_EXPORT vx_NormalDensity {
 public:
  vx_NormalDensity() = default;
  vx_NormalDensity(const vx_NormalDensity& other);
  vx_NormalDensity& operator=(const vx_NormalDensity& other);
  ~vx_NormalDensity();

  std::size_t dimension() const { return mean_.size(); }

  /// Samples folded in that had at least one valid measurement.
  std::int32_t sampleCount() const { return sampleCount_; }

  /// How the statistics are kept: 0 with one count for all, 1 with a count for each pair.
  std::int32_t workWord() const { return pairCounts_.empty() ? 0 : 1; }

  /// Element i of the mean; -0.0 if measurement i has no sample.
  double mean(std::size_t i) const { return mean_[i]; }

  /// Element of the covariance (divisor n - 1). The variance of a measurement with fewer than two
  /// samples is -0.0, which compares equal to 0 and tells that case from a constant.
  double covariance(std::size_t row, std::size_t column) const;

  /// d x 1 and d x d.
  vx_KernelMatrix mean() const;
  vx_KernelMatrix covariance() const;

  /// Takes statistics from outside: d x 1, d x d and a count >= 0. Later updates take that one
  /// count for every pair of measurements that have at least two samples.
  void restore(const vx_KernelMatrix& mean, const vx_KernelMatrix& covariance,
               std::int32_t sampleCount);

  /// Divides every measurement by `normalizer` and folds the samples in, in order.
  /// kVxDimensionChanged if a pattern differs from the others or from what was folded in before;
  /// then nothing is folded in. The first pattern fixes the dimension.
  long update(const std::vector<vx_KernelPattern>& patterns, double normalizer);

  /// The same for one sample; `valid` has a flag a measurement, or is null if all are valid.
  long update(const double* values, const bool* valid, std::size_t dimension, double normalizer);

  /// Natural logarithm of the marginal density over the pattern's valid measurements; 0.0 if there
  /// is none. kVxNoUsableData if there is no sample, or a valid measurement has fewer than two;
  /// kVxOtherDimension if the pattern is of another dimension.
  long logDensity(const vx_KernelPattern& pattern, double& value) const;
  long logDensity(const double* values, const bool* valid, std::size_t dimension,
                  double& value) const;

  /// The factor of the whole density, made at first use; null if a measurement has fewer than two
  /// samples. It lives until the next update, restore or assignment.
  const vx_NormalFactor* factor() const;

  /// The serial of the factor, 0 while there is none: tells whether the density is still the one
  /// that a factor was taken from.
  std::uint64_t factorSerial() const;

  /// Changes whenever some density of the process that had a factor changes: who keeps factors
  /// needs to look at them again only then.
  static std::uint64_t epoch();

  /// For who changes which densities there are.
  static void advanceEpoch();

 private:
  friend class vx_NormalBatch;
  friend class vx_NormalLanes;

  void prepare_(std::size_t dimension, bool withInvalid);
  void takeUpRestored_();
  void countPairs_();
  void fold_(const double* values, const bool* valid, double* room);
  void moveMeans_(const double* values, double* before, double* after);
  void swapStatistics_(vx_NormalDensity& other) noexcept;
  void dropFactor_() noexcept;
  bool isEvaluable_(std::size_t i) const;

  std::int32_t sampleCount_ = 0;
  std::vector<double> mean_;

  // Packed lower triangles, row by row. Sums of products of deviations:
  std::vector<double> comoments_;
  // Only once a sample had an invalid measurement: for each pair, the samples in which both were
  // valid and the means of row and column measurement over those.
  std::vector<std::int32_t> pairCounts_;
  std::vector<double> rowMeans_;
  std::vector<double> columnMeans_;

  std::vector<double> restored_;  // d x d covariance from restore(), until the next update

  mutable std::atomic<const vx_NormalFactor*> factor_{nullptr};
};

#endif  // FOUNDATION_KERNEL_NORMAL_DENSITY_H_
