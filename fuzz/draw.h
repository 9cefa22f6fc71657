// SPDX-License-Identifier: MIT
#ifndef FUZZ_DRAW_H_
#define FUZZ_DRAW_H_

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

namespace fuzz {

/// Makes values of an input's bytes, front to back; zeros follow the last one.
class Draw {
 public:
  Draw(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool isEmpty() const { return next_ == end_; }
  std::uint8_t byte() { return isEmpty() ? std::uint8_t{0} : *next_++; }

  /// In [0, end), for an end up to 256.
  long below(long end) { return byte() % end; }

  /// One time in about `times`, never without input.
  bool rarely(long times) { return below(times) == times - 1; }

  /// The eight bytes of a double, from the front.
  double rawNumber() {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits |= static_cast<std::uint64_t>(byte()) << (8 * i);
    double value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
  }

  /// Whole numbers, so that ties are many; any bits, so that rounding shows; neighbours and
  /// opposites of the last number; and what arithmetic stumbles over.
  double number() {
    const std::uint8_t kind = byte();
    if (kind < 112) {
      last_ = static_cast<double>(kind % 9) - 4.0;
    } else if (kind < 128) {
      last_ = static_cast<double>(kind) / 7.0;
    } else if (kind < 176) {
      // Full mantissas of ordinary size.
      std::uint64_t bits = 0;
      for (int i = 0; i < 3; ++i) bits = bits * 251 + byte();
      bits *= 0x9E3779B97F4A7C15u;
      last_ = std::ldexp(static_cast<double>(bits >> 11), -51) - 2.0;
    } else if (kind < 192) {
      last_ = rawNumber();
    } else if (kind < 208) {
      last_ = std::nextafter(last_, kind % 2 == 0 ? HUGE_VAL : -HUGE_VAL);
    } else if (kind < 224) {
      last_ = -last_;
    } else if (kind < 240) {
      last_ = last_ * (kind % 2 == 0 ? 1e4 : 1e-3) + (kind % 3 == 0 ? 1e4 : 0.0);
    } else {
      static constexpr double kSpecial[] = {0.0,
                                            -0.0,
                                            1e300,
                                            -1e300,
                                            1e154,
                                            1e-160,
                                            1e6,
                                            -1e9,
                                            std::numeric_limits<double>::infinity(),
                                            -std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::denorm_min()};
      last_ = kSpecial[kind % std::size(kSpecial)];
    }
    return last_;
  }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
  double last_ = 0.0;
};

}  // namespace fuzz

#endif  // FUZZ_DRAW_H_
