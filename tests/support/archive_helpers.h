// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVE_HELPERS_H_
#define TESTS_SUPPORT_ARCHIVE_HELPERS_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "tests/support/error_matcher.h"
#include "vxfoundation/archive.h"

/// Bytes as lower-case hexadecimal digits, without blanks.
inline std::string toHex(const std::string& bytes) {
  std::string digits;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    digits += "0123456789abcdef"[value >> 4];
    digits += "0123456789abcdef"[value & 15];
  }
  return digits;
}

/// Bytes from pairs of hexadecimal digits; blanks between pairs are skipped.
inline std::string fromHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size();) {
    if (digits[i] == ' ') {
      ++i;
    } else {
      bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

/// Hexadecimal digits without the blanks that make them readable.
inline std::string packedHex(const std::string& digits) { return toHex(fromHex(digits)); }

/// What one archive writes for `values`, one after another.
template <class... T>
std::string stored(T&&... values) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive output(stream);
  vxArchive& archive = output;
  static_cast<void>((archive || ... || values));
  return stream.str();
}

template <class... T>
std::string storedHex(T&&... values) {
  return toHex(stored(values...));
}

/// Fills `values` from one archive, which need not be read to its end.
template <class... T>
void loadFront(const std::string& bytes, T&... values) {
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive input(stream);
  vxArchive& archive = input;
  static_cast<void>((archive || ... || values));
}

/// Fills `values` from one archive that holds nothing else.
template <class... T>
void load(const std::string& bytes, T&... values) {
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive input(stream);
  vxArchive& archive = input;
  static_cast<void>((archive || ... || values));
  EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), bytes.size());
}

template <class T>
T loaded(const std::string& bytes) {
  T value{};
  load(bytes, value);
  return value;
}

/// Calls `check` with every shorter beginning of `bytes`.
template <class Check>
void forEachTruncation(const std::string& bytes, Check&& check) {
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, "cut at byte " + std::to_string(size));
    check(bytes.substr(0, size));
  }
}

/// Calls `check` with every string of bytes that differs from `bytes` in one byte.
template <class Check>
void forEachByteChange(const std::string& bytes, Check&& check) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (int change = 1; change < 256; ++change) {
      std::string changed = bytes;
      changed[i] = static_cast<char>(static_cast<unsigned char>(changed[i]) ^ change);
      const testing::ScopedTrace trace(
          __FILE__, __LINE__, "byte " + std::to_string(i) + " ^ " + std::to_string(change));
      check(changed);
    }
  }
}

/// True if `body()` returns, false if it throws a class under vxArchive::Errors.
template <class Body>
bool succeedsOrRefuses(Body&& body) {
  try {
    body();
    return true;
  } catch (const vxArchive::Errors&) {
    return false;
  }
}

/// As many zero bytes as versions.
inline void writeVersions(vxArchive& archive, int count) {
  for (unsigned char version = 0; count > 0; --count) archive || version;
}

inline void writePointer(vxArchive& archive, const vxPersistent* object) {
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(archive, object, unused);
}

#endif  // TESTS_SUPPORT_ARCHIVE_HELPERS_H_
