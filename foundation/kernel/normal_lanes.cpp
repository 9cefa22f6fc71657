// SPDX-License-Identifier: MIT
#include "kernel/normal_lanes.h"

#include <utility>

vx_NormalLanes::vx_NormalLanes(std::vector<vx_NormalDensity*> densities)
    : densities_(std::move(densities)), moments_((densities_.size() + 7) / 8) {
  for (vx_NormalDensity* density : densities_) density->prepare_(1, false);
  for (vx_SingleMoments& moments : moments_) {
    moments.count.fill(0.0);
    moments.mean.fill(-0.0);
    moments.squares.fill(0.0);
  }
}

void vx_NormalLanes::fold(const double* x, const bool* valid) {
  if (valid == nullptr) {
    vx_foldSingles(x, size(), moments_.data());
    return;
  }
  for (std::size_t k = 0; k < size(); ++k) {
    if (valid[k]) vx_foldSingle(x[k], k % 8, moments_[k / 8]);
  }
}

void vx_NormalLanes::write() noexcept {
  for (std::size_t k = 0; k < size(); ++k) {
    const vx_SingleMoments& moments = moments_[k / 8];
    vx_NormalDensity& density = *densities_[k];
    density.sampleCount_ = static_cast<std::int32_t>(moments.count[k % 8]);
    density.mean_[0] = moments.mean[k % 8];
    density.comoments_[0] = moments.squares[k % 8];
  }
}
