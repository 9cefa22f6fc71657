// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ATTENTION_COUNTER_H_
#define TESTS_SUPPORT_ATTENTION_COUNTER_H_

#include <atomic>

#include "vxfoundation/attention.h"

/// While it lives, counts the polls of the attention check, and stops at one of them.
class AttentionCounter {
 public:
  /// Asks to stop from poll `stopAt` on, counted from 1; never for 0.
  explicit AttentionCounter(long stopAt = 0) : stopAt_(stopAt) {
    vfSetAttentionHandler(&AttentionCounter::poll, this);
  }
  AttentionCounter(const AttentionCounter&) = delete;
  AttentionCounter& operator=(const AttentionCounter&) = delete;
  ~AttentionCounter() { vfSetAttentionHandler(nullptr, nullptr); }

  long polls() const { return polls_.load(); }

 private:
  static bool poll(void* context) {
    auto* const counter = static_cast<AttentionCounter*>(context);
    const long number = ++counter->polls_;
    return counter->stopAt_ != 0 && number >= counter->stopAt_;
  }

  const long stopAt_;
  std::atomic<long> polls_{0};
};

#endif  // TESTS_SUPPORT_ATTENTION_COUNTER_H_
