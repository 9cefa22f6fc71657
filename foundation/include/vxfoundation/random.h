// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_RANDOM_H_
#define VXFOUNDATION_RANDOM_H_

#include <array>
#include <cstdint>

#include "vxfoundation/export.h"

// Equal seeds give equal sequences, bit for bit, on every machine: both generators use only
// operations whose results IEEE 754 fixes. Neither is fit for cryptography.

/// Uniformly distributed doubles.
class VXFOUNDATION_EXPORT vxRandomUniform {
 public:
  /// Only the low 32 bits of `seed` count.
  explicit vxRandomUniform(long seed);

  /// A number in [low, high); `low` if both are equal. With `low` above `high`, one in
  /// (high, low]. NaN if an end is NaN; both ends must be finite otherwise.
  double next(double low, double high);

 private:
  std::array<std::uint64_t, 4> state_;
};

/// Normally distributed doubles.
class VXFOUNDATION_EXPORT vxRandomGaussian {
 public:
  /// Only the low 32 bits of `seed` count.
  explicit vxRandomGaussian(long seed);

  /// A number from the normal distribution with this mean and standard deviation.
  double next(double mean, double spread);

 private:
  vxRandomUniform uniform_;
  double spare_ = 0.0;
  bool hasSpare_ = false;
};

#endif  // VXFOUNDATION_RANDOM_H_
