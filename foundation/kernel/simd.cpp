// SPDX-License-Identifier: MIT
#include "kernel/simd.h"

#include <algorithm>
#include <atomic>

namespace {

vx_Simd detect() noexcept {
#ifdef VX_SIMD_X86
  // GCOVR_EXCL_START: one processor takes one way.
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("avx2")) return vx_Simd::kPlain;
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
    return vx_Simd::kAvx512;
  }
  return vx_Simd::kAvx2;
  // GCOVR_EXCL_STOP
#else
  return vx_Simd::kPlain;
#endif
}

// Whoever runs before these are set finds kPlain, which is right everywhere.
const vx_Simd detected = detect();
std::atomic<vx_Simd> level{detected};

}  // namespace

vx_Simd vx_simdDetected() noexcept { return detected; }

vx_Simd vx_simd() noexcept { return level.load(std::memory_order_relaxed); }

void vx_simdLimit(vx_Simd highest) noexcept {
  level.store(std::min(highest, detected), std::memory_order_relaxed);
}
