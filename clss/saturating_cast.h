// SPDX-License-Identifier: MIT
#ifndef CLSS_SATURATING_CAST_H_
#define CLSS_SATURATING_CAST_H_

#include <cstdint>
#include <limits>

/// Truncates toward zero; what does not fit becomes the nearest end, NaN 0.
inline std::int32_t vx_saturatingCast(double value) {
  constexpr double kLow = std::numeric_limits<std::int32_t>::min();
  constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
  if (value != value) return 0;
  if (value <= kLow) return std::numeric_limits<std::int32_t>::min();
  if (value >= kHigh) return std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(value);
}

#endif  // CLSS_SATURATING_CAST_H_
