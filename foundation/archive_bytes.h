// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_ARCHIVE_BYTES_H_
#define FOUNDATION_ARCHIVE_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "vxfoundation/archive.h"

/// What stands before an object that is transferred through a pointer; archived: never renumber.
enum class vx_PointerKind : unsigned char {
  kNull = 0,
  kNewClass = 1,    // class name (count, characters), then the object
  kKnownClass = 2,  // number of the class, in order of first appearance, then the object
  kReference = 3,   // number of the object, in order of first appearance
};

constexpr std::size_t kLongestClassName = 1024;

inline void vx_encode(std::uint32_t word, unsigned char* bytes) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(word >> (8 * i));
}

inline std::uint32_t vx_decodeWord(const unsigned char* bytes) {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
  return word;
}

inline void vx_encode(double value, unsigned char* bytes) {
  static_assert(sizeof(double) == 8 && std::numeric_limits<double>::is_iec559);
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
}

inline double vx_decodeDouble(const unsigned char* bytes) {
  std::uint64_t bits = 0;
  for (int i = 0; i < 8; ++i) bits |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

/// The count as archives hold it, or Unstorable.
inline std::uint32_t vx_checkedCount(std::size_t count) {
  if (count > std::numeric_limits<std::uint32_t>::max()) {
    throw vxArchive::Unstorable(L"A count does not fit 32 bits");
  }
  return static_cast<std::uint32_t>(count);
}

#endif  // FOUNDATION_ARCHIVE_BYTES_H_
