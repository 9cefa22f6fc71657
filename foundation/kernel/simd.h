// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_KERNEL_SIMD_H_
#define FOUNDATION_KERNEL_SIMD_H_

#include <cstddef>
#include <cstdint>

#include "vxfoundation/export.h"

// One binary serves every processor of its family: the build assumes the oldest one, and a loop
// that gains from wider registers is compiled once more for each set of instructions below. Which
// of them runs is read off the processor when the library is loaded.
//
// A vector lane computes what the plain code computes, operation by operation (no fused
// multiply-add, no other order of additions), so the level changes no bit of a result.

/// The sets of instructions that have code of their own, each including those before it.
enum class vx_Simd {
  kPlain,   ///< what the compiler was told to build for: SSE2 on x86-64
  kAvx2,    ///< 256-bit registers
  kAvx512,  ///< 512-bit registers: F, BW, DQ, VL
};

/// The best level of this processor that the build has code for.
VXFOUNDATION_EXPORT vx_Simd vx_simdDetected() noexcept;

/// The level in force: the detected one, unless vx_simdLimit() lowered it.
VXFOUNDATION_EXPORT vx_Simd vx_simd() noexcept;

/// Uses no level above `highest`, for tests that compare them. Never while an operation runs.
VXFOUNDATION_EXPORT void vx_simdLimit(vx_Simd highest) noexcept;

// VX_SIMD_X86 is defined where the levels above kPlain exist; functions for them bear the attribute
// and are called only behind vx_simd().
#if !defined(VXCLSS_NO_SIMD) && defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define VX_SIMD_X86 1
#define VX_SIMD_AVX2 __attribute__((target("avx2")))
#define VX_SIMD_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl")))
#endif

/// The number of the lowest bit that is set; `bits` is not 0.
inline std::size_t vx_lowestBit(std::uint32_t bits) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  return static_cast<std::size_t>(__builtin_ctz(bits));
#else
  std::size_t number = 0;
  for (; (bits & 1) == 0; bits >>= 1) ++number;
  return number;
#endif
}

#endif  // FOUNDATION_KERNEL_SIMD_H_
