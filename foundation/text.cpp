// SPDX-License-Identifier: MIT
#include "vxfoundation/text.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace {

constexpr std::uint32_t kReplacement = 0xfffd;
constexpr bool kWideIs16Bits = sizeof(wchar_t) == 2;

bool isSurrogate(std::uint32_t code) { return code >= 0xd800 && code <= 0xdfff; }

void appendWide(std::wstring& out, std::uint32_t code) {
  if (kWideIs16Bits && code > 0xffff) {
    out += static_cast<wchar_t>(0xd800 + ((code - 0x10000) >> 10));
    out += static_cast<wchar_t>(0xdc00 + ((code - 0x10000) & 0x3ff));
  } else {
    out += static_cast<wchar_t>(code);
  }
}

void appendNarrow(std::string& out, std::uint32_t code) {
  const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xc0 | (code >> 6));
    put(0x80 | (code & 0x3f));
  } else if (code < 0x10000) {
    put(0xe0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3f));
    put(0x80 | (code & 0x3f));
  } else {
    put(0xf0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3f));
    put(0x80 | ((code >> 6) & 0x3f));
    put(0x80 | (code & 0x3f));
  }
}

// Takes one character, or one ill-formed sequence, from `in` at `position`. The table of what may
// follow a lead byte is table 3-7 of the Unicode Standard.
std::uint32_t takeCharacter(const std::string& in, std::size_t& position) {
  const auto byteAt = [&in](std::size_t i) { return static_cast<unsigned char>(in[i]); };
  const unsigned char lead = byteAt(position++);
  if (lead < 0x80) return lead;
  if (lead < 0xc2 || lead > 0xf4) return kReplacement;

  const int following = lead < 0xe0 ? 1 : lead < 0xf0 ? 2 : 3;
  std::uint32_t code = lead & (0x3f >> following);
  unsigned char low = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
  unsigned char high = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
  for (int i = 0; i < following; ++i) {
    if (position == in.size() || byteAt(position) < low || byteAt(position) > high) {
      return kReplacement;
    }
    code = (code << 6) | (byteAt(position++) & 0x3f);
    low = 0x80;
    high = 0xbf;
  }
  return code;
}

}  // namespace

std::wstring vfStr(long value) {
  wchar_t digits[std::numeric_limits<long>::digits10 + 3];
  wchar_t* const end = digits + sizeof(digits) / sizeof(digits[0]);
  wchar_t* first = end;
  unsigned long rest =
      value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
  do {
    *--first = static_cast<wchar_t>(L'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (value < 0) *--first = L'-';
  return std::wstring(first, end);
}

void vfConvertString(std::wstring& out, const std::string& in) {
  std::wstring wide;
  for (std::size_t position = 0; position < in.size();) {
    appendWide(wide, takeCharacter(in, position));
  }
  out.swap(wide);
}

std::string vfNarrow(const std::wstring& text) {
  std::string narrow;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto code = static_cast<std::uint32_t>(text[i]);
    const std::uint32_t next = i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) : 0;
    if (kWideIs16Bits && (code >> 10) == 0x36 && (next >> 10) == 0x37) {
      code = 0x10000 + ((code & 0x3ff) << 10) + (next & 0x3ff);
      ++i;
    } else if (isSurrogate(code) || code > 0x10ffff) {
      code = kReplacement;
    }
    appendNarrow(narrow, code);
  }
  return narrow;
}
