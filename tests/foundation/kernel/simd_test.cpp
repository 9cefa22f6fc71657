// SPDX-License-Identifier: MIT
#include "kernel/simd.h"

#include <gtest/gtest.h>

namespace {

TEST(SimdTest, RunsAtTheProcessorsBestLevelUntilLimited) {
  EXPECT_EQ(vx_simd(), vx_simdDetected());

  vx_simdLimit(vx_Simd::kPlain);
  EXPECT_EQ(vx_simd(), vx_Simd::kPlain);

  vx_simdLimit(vx_Simd::kAvx512);
  EXPECT_EQ(vx_simd(), vx_simdDetected());
}

}  // namespace
