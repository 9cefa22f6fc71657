// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_SCRATCH_H_
#define FOUNDATION_KERNEL_SCRATCH_H_

#include <array>
#include <cstddef>
#include <memory>

/// Room for `count` numbers during a call: a few on the stack, many on the heap.
template <class T>
class vx_Scratch {
 public:
  explicit vx_Scratch(std::size_t count) {
    if (count > few_.size()) many_ = std::make_unique<T[]>(count);
  }
  T* data() { return many_ ? many_.get() : few_.data(); }

 private:
  std::array<T, 64> few_;
  std::unique_ptr<T[]> many_;
};

#endif  // FOUNDATION_KERNEL_SCRATCH_H_
