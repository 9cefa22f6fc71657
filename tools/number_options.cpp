// SPDX-License-Identifier: MIT
#include "tools/number_options.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "tools/text.h"

namespace cli {

OptionCheck wholeNumber(long low) {
  return [low](const std::string& text) -> std::string {
    constexpr std::int32_t high = std::numeric_limits<std::int32_t>::max();
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size() && value >= low) return {};
    return fmt::format("{} is not a whole number from {} to {}", shown(text), low, high);
  };
}

OptionCheck positiveNumber(bool zeroAllowed) {
  return [zeroAllowed](const std::string& text) -> std::string {
    const std::optional<double> number = parsedNumber(text);
    const bool finite = number && std::isfinite(*number);
    if (finite && (zeroAllowed ? *number >= 0.0 : *number > 0.0)) return {};
    return fmt::format("{} is not a number {} 0", shown(text), zeroAllowed ? ">=" : ">");
  };
}

OptionCheck share() {
  return [](const std::string& text) -> std::string {
    const std::optional<double> number = parsedNumber(text);
    if (number && *number >= 0.0 && *number <= 1.0) return {};
    return shown(text) + " is not a number from 0 to 1";
  };
}

long wholeOf(const std::string& text) { return static_cast<long>(numberOf(text)); }

double numberOf(const std::string& text) { return parsedNumber(text).value(); }

}  // namespace cli
