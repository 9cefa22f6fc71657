// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_SIMD_LEVELS_H_
#define TESTS_SUPPORT_SIMD_LEVELS_H_

#include <gtest/gtest.h>

#include <string>

#include "kernel/simd.h"

/// Calls `body()` at each level of instructions that this processor has, the plain code first.
template <class Body>
void atEverySimdLevel(Body&& body) {
  for (const vx_Simd level : {vx_Simd::kPlain, vx_Simd::kAvx2, vx_Simd::kAvx512}) {
    if (level > vx_simdDetected()) break;
    SCOPED_TRACE("simd level " + std::to_string(static_cast<int>(level)));
    vx_simdLimit(level);
    body();
  }
  vx_simdLimit(vx_Simd::kAvx512);
}

#endif  // TESTS_SUPPORT_SIMD_LEVELS_H_
