// SPDX-License-Identifier: MIT
// Uniform numbers: xoshiro256** (D. Blackman, S. Vigna, "Scrambled linear pseudorandom number
// generators", ACM Transactions on Mathematical Software 47(4), 2021, article 36), its state filled
// by splitmix64 as the authors advise. Normal numbers: the polar method (G. Marsaglia, T. A. Bray,
// "A convenient method for generating normal variables", SIAM Review 6(3), 1964, 260-264).
//
// The C library's log may differ in its last bit from one machine to another, and with it the
// sequence; the logarithm below is made of operations that IEEE 754 fixes.
#include "vxfoundation/random.h"

#include <cmath>

namespace {

std::uint64_t rotateLeft(std::uint64_t x, int bits) { return (x << bits) | (x >> (64 - bits)); }

std::uint64_t splitmix64(std::uint64_t& state) {
  std::uint64_t z = (state += 0x9e3779b97f4a7c15);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
  z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
  return z ^ (z >> 31);
}

std::uint64_t xoshiro256(std::array<std::uint64_t, 4>& state) {
  const std::uint64_t result = rotateLeft(state[1] * 5, 7) * 9;
  const std::uint64_t t = state[1] << 17;
  state[2] ^= state[0];
  state[3] ^= state[1];
  state[1] ^= state[2];
  state[0] ^= state[3];
  state[2] ^= t;
  state[3] = rotateLeft(state[3], 45);
  return result;
}

// Natural logarithm of a finite x > 0: x = m * 2^e with m near 1, then ln m = 2 artanh z with
// z = (m - 1) / (m + 1). |z| < 0.172, so 13 terms of the series leave less than 1e-21.
double portableLog(double x) {
  constexpr double kLn2 = 0x1.62e42fefa39efp-1;
  constexpr double kSqrtHalf = 0x1.6a09e667f3bcdp-1;
  int exponent = 0;
  double m = std::frexp(x, &exponent);
  if (m < kSqrtHalf) {
    m *= 2.0;
    --exponent;
  }
  const double z = (m - 1.0) / (m + 1.0);
  const double square = z * z;
  double sum = 0.0;
  for (int i = 12; i >= 0; --i) sum = sum * square + 1.0 / (2 * i + 1);
  return 2.0 * z * sum + exponent * kLn2;
}

}  // namespace

vxRandomUniform::vxRandomUniform(long seed) {
  std::uint64_t filler = static_cast<std::uint32_t>(seed);
  for (std::uint64_t& word : state_) word = splitmix64(filler);
}

double vxRandomUniform::next(double low, double high) {
  const double u = static_cast<double>(xoshiro256(state_) >> 11) * 0x1p-53;  // [0, 1)
  if (low == high) return low;
  double value = low + u * (high - low);
  if (std::isinf(high - low)) value = low * (1.0 - u) + high * u;
  const bool beyond = low < high ? value >= high : value <= high;
  return beyond ? std::nextafter(high, low) : value;
}

vxRandomGaussian::vxRandomGaussian(long seed) : uniform_(seed) {}

double vxRandomGaussian::next(double mean, double spread) {
  if (hasSpare_) {
    hasSpare_ = false;
    return mean + spread * spare_;
  }
  double x;
  double y;
  double square;
  do {
    x = uniform_.next(-1.0, 1.0);
    y = uniform_.next(-1.0, 1.0);
    square = x * x + y * y;
  } while (square >= 1.0 || square == 0.0);
  const double factor = std::sqrt(-2.0 * portableLog(square) / square);
  spare_ = y * factor;
  hasSpare_ = true;
  return mean + spread * (x * factor);
}
