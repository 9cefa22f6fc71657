// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_NORMAL_BATCH_H_
#define FOUNDATION_KERNEL_NORMAL_BATCH_H_

#include <cstddef>
#include <vector>

#include "kernel/normal_density.h"
#include "vxfoundation/export.h"

/// One density while many samples are folded in: the bits are those of updating it.
///
/// The density lags behind until write() is called.
class VXFOUNDATION_EXPORT vx_NormalBatch {
 public:
  /// The density is empty and lives longer; it gets its dimension now.
  vx_NormalBatch(vx_NormalDensity& density, std::size_t dimension);

  /// `valid` has a flag a measurement, or is null if all are valid. Only the first sample with an
  /// invalid measurement takes memory.
  void fold(const double* x, const bool* valid);

  void write() noexcept;

 private:
  vx_NormalDensity& density_;
  std::size_t numWaiting_ = 0;  // samples that moved the means, and nothing else yet
  std::vector<double> before_;
  std::vector<double> after_;
};

#endif  // FOUNDATION_KERNEL_NORMAL_BATCH_H_
