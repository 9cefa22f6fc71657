// SPDX-License-Identifier: MIT
#include "tools/eval/report/html.h"

#include <fmt/format.h>

#include <cmath>

namespace eval {
namespace {

bool continues(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20 && byte != '\t' && byte != '\n') || code == 0x7F;
}

std::string withMinusSign(std::string number) {
  for (std::size_t at = number.find('-'); at != std::string::npos; at = number.find('-', at)) {
    number.replace(at, 1, "\u2212");
  }
  return number;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    switch (byte) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        if (isControl(byte)) {
          result += "\uFFFD";
        } else {
          result += byte;
        }
    }
  }
  return result;
}

std::string clipped(std::string_view text, std::size_t most) {
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (continues(text[i])) continue;
    if (++characters > most) {
      std::size_t end = i;
      do --end;
      while (continues(text[end]));
      return std::string(text.substr(0, end)) + "\u2026";
    }
  }
  return std::string(text);
}

std::string shortNumber(double value) {
  if (std::isnan(value)) return "\u2013";
  if (std::isinf(value)) return value > 0.0 ? "\u221E" : "\u2212\u221E";
  return withMinusSign(fmt::format("{:.4g}", value == 0.0 ? 0.0 : value));  // no -0
}

std::string percent(double share) {
  return std::isnan(share) ? "\u2013" : fmt::format("{:.1f}\u00A0%", 100.0 * share);
}

std::string coordinate(double value) {
  std::string text = fmt::format("{:.1f}", value);
  if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
  return text == "-0" ? "0" : text;
}

std::string ranges(const std::vector<long>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    if (!text.empty()) text += ", ";
    text += fmt::format("{}", numbers[i]);
    if (last > i) text += fmt::format("{}{}", last > i + 1 ? "\u2013" : ", ", numbers[last]);
    i = last + 1;
  }
  return text;
}

}  // namespace eval
