// SPDX-License-Identifier: MIT
#include "stamp_table.h"

namespace {

constexpr std::size_t kInARow = 16;
constexpr std::uint64_t kSpread = 0x9e3779b97f4a7c15;  // 2^64 / golden ratio, odd

}  // namespace

std::uint32_t vx_StampTable::add(std::uint64_t stamp) {
  if (2 * stamps_.size() >= slots_.size()) grow_();
  for (std::size_t slot = firstSlot_(stamp);; slot = (slot + 1) & (slots_.size() - 1)) {
    if (slots_[slot] == 0) {
      stamps_.push_back(stamp);
      slots_[slot] = static_cast<std::uint32_t>(stamps_.size());
      return slots_[slot] - 1;
    }
    if (stamps_[slots_[slot] - 1] == stamp) return slots_[slot] - 1;
  }
}

void vx_StampTable::shrink(std::size_t size) noexcept {
  while (stamps_.size() > size) {
    std::size_t slot = firstSlot_(stamps_.back());
    while (slots_[slot] != stamps_.size()) slot = (slot + 1) & (slots_.size() - 1);
    slots_[slot] = 0;
    stamps_.pop_back();
  }
}

std::size_t vx_StampTable::firstSlot_(std::uint64_t stamp) const {
  const std::uint64_t given = stamp >> 1;  // a stamp is odd
  const std::uint64_t row = given / kInARow * kSpread >> shift_;
  return static_cast<std::size_t>(row * kInARow + given % kInARow);
}

void vx_StampTable::grow_() {
  const bool isFirst = slots_.empty();
  std::vector<std::uint32_t> slots(isFirst ? 2 * kInARow : 2 * slots_.size());
  slots_.swap(slots);
  shift_ -= 1;
  for (std::size_t number = 0; number < stamps_.size(); ++number) {
    std::size_t slot = firstSlot_(stamps_[number]);
    while (slots_[slot] != 0) slot = (slot + 1) & (slots_.size() - 1);
    slots_[slot] = static_cast<std::uint32_t>(number + 1);
  }
}
