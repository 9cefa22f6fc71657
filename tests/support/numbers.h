// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_NUMBERS_H_
#define TESTS_SUPPORT_NUMBERS_H_

#include <limits>

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMost = std::numeric_limits<double>::max();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

#endif  // TESTS_SUPPORT_NUMBERS_H_
