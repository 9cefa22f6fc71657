// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_LANE_ADDER_H_
#define CLSS_CLASTOOL_CLASTOOL_LANE_ADDER_H_

#include <cstddef>

/// Adds the same terms, one after another, to many running sums at once.
///
/// Each sum is a lane: it gets the terms in their order and by one addition each, so how many
/// advance together changes no bit.
struct vx_LaneAdder {
  static constexpr std::size_t kMultiple = 8;

  /// For the level of instructions in force.
  static const vx_LaneAdder& forSimd();

  /// How many lanes advance together best, a power of two and of kMultiple.
  std::size_t width;
  /// Adds terms[0], ..., terms[count - 1] to each of `lanes` sums, a multiple of kMultiple.
  void (*add)(double* sums, std::size_t lanes, const double* terms, std::size_t count);
};

#endif  // CLSS_CLASTOOL_CLASTOOL_LANE_ADDER_H_
