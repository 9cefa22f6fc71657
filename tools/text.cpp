// SPDX-License-Identifier: MIT
#include "tools/text.h"

#include <fmt/format.h>
#include <vxfoundation/text.h>

#include <charconv>
#include <iterator>

namespace cli {
namespace {

constexpr std::size_t kShownBytes = 40;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string printable(std::string_view text) {
  const bool utf8 = isUtf8(std::string(text));
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && !utf8)) {
      fmt::format_to(std::back_inserter(out), "\\x{:02x}", byte);
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::string shown(std::string_view text) {
  if (text.size() <= kShownBytes) return '"' + printable(text) + '"';
  std::size_t end = kShownBytes;
  while (end > 0 && isContinuation(text[end])) --end;
  return '"' + printable(text.substr(0, end)) + "...\"";
}

std::size_t lengthOf(std::string_view text) {
  std::size_t length = 0;
  for (const char byte : text) length += isContinuation(byte) ? 0 : 1;
  return length;
}

std::wstring widened(const std::string& text) {
  std::wstring wide;
  vfConvertString(wide, text);
  return wide;
}

bool isUtf8(const std::string& text) { return vfNarrow(widened(text)) == text; }

std::optional<double> parsedNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size()) return std::nullopt;
  if (error == std::errc()) return value;
  if (error != std::errc::result_out_of_range) return std::nullopt;
  // from_chars doesn't tell at which end the range was left. The exponent does, or without one the
  // first digit; a contradiction between them takes hundreds of digits.
  const bool negative = text[0] == '-';
  const std::size_t exponent = text.find_first_of("eE");
  const bool tiny = exponent == std::string_view::npos
                        ? text[negative ? 1 : 0] == '0' || text[negative ? 1 : 0] == '.'
                        : text[exponent + 1] == '-';
  if (!tiny) return std::nullopt;
  return negative ? -0.0 : 0.0;
}

std::string csvCell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos && trimmed(text).size() == text.size()) {
    return text;
  }
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"') out.push_back('"');
    out.push_back(c);
  }
  return out + '"';
}

}  // namespace cli
