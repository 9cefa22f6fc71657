// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_ARCHIVE_BYTES_H_
#define FOUNDATION_ARCHIVE_BYTES_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ios>
#include <limits>
#include <streambuf>

#include "vxfoundation/archive.h"

/// What stands before an object that is transferred through a pointer; archived: never renumber.
enum class vx_PointerKind : unsigned char {
  kNull = 0,
  kNewClass = 1,    // class name (count, characters), then the object
  kKnownClass = 2,  // number of the class, in order of first appearance, then the object
  kReference = 3,   // number of the object, in order of first appearance
};

constexpr std::size_t kLongestClassName = 1024;

/// What is read or converted in one piece. A count in hostile bytes reserves no more than this
/// before its elements have really arrived.
constexpr std::size_t kPieceBytes = 4096;

static_assert(sizeof(double) == 8 && std::numeric_limits<double>::is_iec559);

/// Numbers stand in archives with their lowest byte first. So they do in the memory of most
/// processors, where their bytes are copied; elsewhere they are turned around.
inline bool vx_isLittleEndian() {
  const std::uint32_t one = 1;
  unsigned char lowest;
  std::memcpy(&lowest, &one, 1);
  return lowest == 1;
}

/// From memory's order of bytes to the archive's, or back.
template <std::size_t kWidth>
void vx_swapBytes(unsigned char* bytes, std::size_t numNumbers = 1) {
  if (vx_isLittleEndian()) return;
  // GCOVR_EXCL_START: another order of bytes
  for (; numNumbers > 0; --numNumbers, bytes += kWidth) std::reverse(bytes, bytes + kWidth);
}  // GCOVR_EXCL_STOP

/// The count as archives hold it, or Unstorable.
inline std::uint32_t vx_checkedCount(std::size_t count) {
  if (count > std::numeric_limits<std::uint32_t>::max()) {
    throw vxArchive::Unstorable(L"A count does not fit 32 bits");
  }
  return static_cast<std::uint32_t>(count);
}

/// Copies bytes. Not by memcpy(): where gcc knows a bound of the size it puts a string instruction
/// in its place, which starts slower than most copies end.
inline void vx_copy(const void* source, void* target, std::size_t size) {
  std::memmove(target, source, size);
}

/// What a stream buffer holds ready. Reading it there takes a few instructions, where a call of
/// sgetn() costs more than most transfers are long; the position moves all the same.
class vx_ReadyBytes : private std::streambuf {
 public:
  static std::size_t count(const std::streambuf& buffer) {
    return static_cast<std::size_t>((buffer.*&vx_ReadyBytes::egptr)() -
                                    (buffer.*&vx_ReadyBytes::gptr)());
  }

  /// False, and nothing taken, if there are fewer or the stream has failed.
  static bool take(const std::ios& stream, unsigned char* bytes, std::size_t size) {
    std::streambuf* const buffer = stream.rdbuf();
    if (!stream.good() || count(*buffer) < size) return false;
    vx_copy((buffer->*&vx_ReadyBytes::gptr)(), bytes, size);
    (buffer->*&vx_ReadyBytes::gbump)(static_cast<int>(size));
    return true;
  }
};

/// The transfers that all others are made of. `size` fits an int when loading.
struct vx_ArchiveBytes {
  static void transfer(vxArchive& archive, unsigned char* bytes, std::size_t size) {
    if (!archive.storing_) {
      if (vx_ReadyBytes::take(*archive.source_, bytes, size)) return;
    } else if (size <= static_cast<std::size_t>(archive.end_ - archive.free_)) {
      vx_copy(bytes, archive.free_, size);
      archive.free_ += size;
      return;
    }
    archive.transferBytes_(bytes, size);
  }

  /// A word or a double; storing leaves it alone.
  template <class Number>
  static void number(vxArchive& archive, Number& value) {
    unsigned char bytes[sizeof(Number)];
    std::memcpy(bytes, &value, sizeof(Number));
    vx_swapBytes<sizeof(Number)>(bytes);
    transfer(archive, bytes, sizeof(Number));
    if (archive.storing_) return;
    vx_swapBytes<sizeof(Number)>(bytes);
    std::memcpy(&value, bytes, sizeof(Number));
  }

  static unsigned char byte(vxArchive& archive, unsigned char value = 0) {
    transfer(archive, &value, 1);
    return value;
  }

  static std::uint32_t word(vxArchive& archive, std::uint32_t value = 0) {
    number(archive, value);
    return value;
  }

  static void version(vxArchive& archive, const char* name, long line) {
    if (byte(archive) != 0) throw vxArchive::UnknownVersion(name, line);
  }

  static std::size_t vectorHead(vxArchive& archive, std::size_t count) {
    version(archive, "", 0);
    return word(archive, archive.storing_ ? vx_checkedCount(count) : 0);
  }

  /// How many of the bytes that a load needs have surely arrived.
  static std::size_t numReady(const vxArchive& archive) {
    const std::ios& stream = *archive.source_;
    return stream.good() ? vx_ReadyBytes::count(*stream.rdbuf()) : 0;
  }
};

#endif  // FOUNDATION_ARCHIVE_BYTES_H_
