// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_LIFELINE_H_
#define FOUNDATION_LIFELINE_H_

#include <atomic>
#include <cstdint>
#include <memory>

/// Tells a loading archive whether an object that it handed out without a count is still alive.
/// Shared by the object and the archive; the one that leaves last frees it.
struct vx_Lifeline {
  std::atomic<std::uint64_t> stamp{0};  // what the object's own stamp would hold
  std::atomic<bool> alive{true};
  std::atomic<int> holders{2};

  void release() noexcept {
    if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
};

struct vx_ReleaseLifeline {
  void operator()(vx_Lifeline* lifeline) const noexcept { lifeline->release(); }
};
using vx_LifelineHold = std::unique_ptr<vx_Lifeline, vx_ReleaseLifeline>;

#endif  // FOUNDATION_LIFELINE_H_
