// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_STAMP_TABLE_H_
#define FOUNDATION_STAMP_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

/// Numbers the stamps of objects from 0 in the order in which they come.
///
/// Open addressing: a slot holds a number + 1, or 0, and the stamps stand in a list of their own.
/// Stamps are given one after another, so objects that are stored together have stamps in a row:
/// sixteen of those share a cache line of slots, and the multiplication spreads the lines. Slots
/// are always as if all stamps had been added in order, so that taking the last ones out needs no
/// memory.
class vx_StampTable {
 public:
  std::size_t size() const { return stamps_.size(); }

  /// The number of `stamp`, which is given the next one if it is new.
  std::uint32_t add(std::uint64_t stamp);

  /// Forgets all but the first `size` stamps.
  void shrink(std::size_t size) noexcept;

 private:
  std::size_t firstSlot_(std::uint64_t stamp) const;
  void grow_();

  std::vector<std::uint64_t> stamps_;
  std::vector<std::uint32_t> slots_;  // twice as many at least, a power of two
  int shift_ = 64;                    // leaves as many bits as the slots have rows
};

#endif  // FOUNDATION_STAMP_TABLE_H_
