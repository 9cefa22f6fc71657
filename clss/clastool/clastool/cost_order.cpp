// SPDX-License-Identifier: MIT
#include "cost_order.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

// The order is that of inserting one by one in runs of 32 and merging these, stably. The standard
// sort may read past its range when costs are NaN; this one stays within bounds whatever < says.
//
// Many costs that are numbers and bear no sign are in the order of their bits, so there the same
// comes from distributing them by each byte, lowest first, stably, without a branch that hangs on
// the data (D. E. Knuth, The Art of Computer Programming, vol. 3, 2nd ed., section 5.2.5).

namespace {

// Numbers that hang on each other: measured, but for kRun, which what NaN lead to hangs on.
constexpr std::size_t kRun = 32;
constexpr std::size_t kMany = 96;
constexpr std::size_t kBytes = sizeof(double);

std::uint64_t bitsOf(double cost) {
  std::uint64_t bits;
  static_assert(sizeof bits == sizeof cost);
  std::memcpy(&bits, &cost, sizeof bits);
  return bits;
}

std::size_t byteOf(double cost, std::size_t byte) {
  return static_cast<std::size_t>(bitsOf(cost) >> (8 * byte) & 0xff);
}

bool isInOrderOfBits(const vx_PlacedCost* items, std::size_t count) {
  constexpr std::uint64_t kInfinity = 0x7ff0000000000000;
  return std::all_of(items, items + count,
                     [](const vx_PlacedCost& item) { return bitsOf(item.cost) <= kInfinity; });
}

vx_PlacedCost* sortByBytes(vx_PlacedCost* items, vx_PlacedCost* room, std::size_t count) {
  std::array<std::array<std::size_t, 256>, kBytes> counts{};
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t byte = 0; byte < kBytes; ++byte) ++counts[byte][byteOf(items[i].cost, byte)];
  }
  for (std::size_t byte = 0; byte < kBytes; ++byte) {
    std::array<std::size_t, 256>& places = counts[byte];
    if (places[byteOf(items[0].cost, byte)] == count) continue;
    std::size_t begin = 0;
    for (std::size_t& place : places) begin += std::exchange(place, begin);
    for (std::size_t i = 0; i < count; ++i) room[places[byteOf(items[i].cost, byte)]++] = items[i];
    std::swap(items, room);
  }
  return items;
}

void insertionSort(vx_PlacedCost* begin, vx_PlacedCost* end) {
  for (vx_PlacedCost* next = begin + 1; next < end; ++next) {
    const vx_PlacedCost moving = *next;
    vx_PlacedCost* place = next;
    for (; place > begin && moving.cost < place[-1].cost; --place) *place = place[-1];
    *place = moving;
  }
}

// Which side comes next is as good as random, so it is computed and not branched on.
void merge(const vx_PlacedCost* left, const vx_PlacedCost* middle, const vx_PlacedCost* end,
           vx_PlacedCost* place) {
  const vx_PlacedCost* right = middle;
  while (left != middle && right != end) {
    const std::ptrdiff_t takesRight = right->cost < left->cost ? 1 : 0;
    *place++ = left[(right - left) & -takesRight];
    right += takesRight;
    left += 1 - takesRight;
  }
  place = std::copy(left, middle, place);
  std::copy(right, end, place);
}

}  // namespace

vx_PlacedCost* vx_sortByCost(vx_PlacedCost* items, vx_PlacedCost* room, std::size_t count) {
  if (count >= kMany && isInOrderOfBits(items, count)) return sortByBytes(items, room, count);
  for (std::size_t begin = 0; begin < count; begin += kRun) {
    insertionSort(items + begin, items + std::min(begin + kRun, count));
  }
  for (std::size_t width = kRun; width < count; width *= 2) {
    for (std::size_t begin = 0; begin < count; begin += 2 * width) {
      merge(items + begin, items + std::min(begin + width, count),
            items + std::min(begin + 2 * width, count), room + begin);
    }
    std::swap(items, room);
  }
  return items;
}
