// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_STOP_STATUS_H_
#define FOUNDATION_STOP_STATUS_H_

#include <cstdint>

/// What vfCheckAttention() reports for a stop request: failure, module 1 (the foundation), code 1.
constexpr std::uint32_t kStopStatus = 0x80000021;

#endif  // FOUNDATION_STOP_STATUS_H_
