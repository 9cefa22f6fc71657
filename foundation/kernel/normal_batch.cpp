// SPDX-License-Identifier: MIT
#include "kernel/normal_batch.h"

#include "kernel/normal_fold.h"

vx_NormalBatch::vx_NormalBatch(vx_NormalDensity& density, std::size_t dimension)
    : density_(density),
      before_(kVxSamplesAtOnce * dimension),
      after_(kVxSamplesAtOnce * dimension) {
  density_.prepare_(dimension, false);
}

void vx_NormalBatch::fold(const double* x, const bool* valid) {
  const std::size_t d = density_.dimension();
  if (valid != nullptr || density_.workWord() != 0) {
    write();
    density_.update(x, valid, d, 1.0);
    return;
  }
  const std::size_t first = numWaiting_ * d;
  density_.moveMeans_(x, before_.data() + first, after_.data() + first);
  if (++numWaiting_ == kVxSamplesAtOnce) write();
}

void vx_NormalBatch::write() noexcept {
  const std::size_t d = density_.dimension();
  const std::size_t atOnce = numWaiting_ == kVxSamplesAtOnce ? numWaiting_ : 1;
  for (std::size_t s = 0; s < numWaiting_; s += atOnce) {
    vx_addProducts(before_.data() + s * d, after_.data() + s * d, atOnce, d,
                   density_.comoments_.data());
  }
  numWaiting_ = 0;
}
