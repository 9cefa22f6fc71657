// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_NORMAL_LANES_H_
#define FOUNDATION_KERNEL_NORMAL_LANES_H_

#include <cstddef>
#include <vector>

#include "kernel/normal_density.h"
#include "kernel/normal_fold.h"
#include "vxfoundation/export.h"

/// The statistics of many densities of one measurement each, side by side while samples are folded
/// in: the bits are those of updating one density after another.
///
/// The densities lag behind until write() is called.
class VXFOUNDATION_EXPORT vx_NormalLanes {
 public:
  /// The densities are empty, each another one, and live longer; they get their dimension now.
  explicit vx_NormalLanes(std::vector<vx_NormalDensity*> densities);

  std::size_t size() const { return densities_.size(); }

  /// Folds measurement k into density k; `valid` has a flag each, or is null if all are valid.
  void fold(const double* x, const bool* valid);

  void write() noexcept;

 private:
  std::vector<vx_NormalDensity*> densities_;
  std::vector<vx_SingleMoments> moments_;
};

#endif  // FOUNDATION_KERNEL_NORMAL_LANES_H_
