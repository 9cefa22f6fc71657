// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_MEMORY_BOUND_H_
#define TESTS_SUPPORT_MEMORY_BOUND_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "tests/support/failing_allocator.h"

/// The most that a load, with the first run of what it brought, may take for so many bytes: of all
/// allocations together, not only of those in use at once.
inline std::size_t memoryBound(std::size_t bytesRead) { return 64 * bytesRead + (1 << 16); }

inline void expectWithinBound(const allocator::Meter& meter, std::size_t bytesRead) {
  EXPECT_LE(meter.bytesTaken(), memoryBound(bytesRead)) << bytesRead << " bytes were read";
  EXPECT_LE(meter.peak(), memoryBound(bytesRead)) << bytesRead << " bytes were read";
}

#endif  // TESTS_SUPPORT_MEMORY_BOUND_H_
