// SPDX-License-Identifier: MIT
#include "vxfoundation/attention.h"

#include <atomic>

#include "kernel/attended.h"
#include "stop_status.h"

namespace {

// Relaxed throughout: the handler changes only while no operation runs, and how the host then
// starts its threads orders the change before them.
std::atomic<vxAttentionHandler> currentHandler{nullptr};
std::atomic<void*> currentContext{nullptr};

}  // namespace

void vfSetAttentionHandler(vxAttentionHandler handler, void* context) {
  currentContext.store(context, std::memory_order_relaxed);
  currentHandler.store(handler, std::memory_order_relaxed);
}

long vfCheckAttention() {
  const vxAttentionHandler handler = currentHandler.load(std::memory_order_relaxed);
  if (handler == nullptr) return 0;
  const bool stop = handler(currentContext.load(std::memory_order_relaxed));
  return stop ? static_cast<long>(kStopStatus) : 0;
}

bool vx_isAttended() noexcept { return currentHandler.load(std::memory_order_relaxed) != nullptr; }
