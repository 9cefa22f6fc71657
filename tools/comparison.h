// SPDX-License-Identifier: MIT
#ifndef TOOLS_COMPARISON_H_
#define TOOLS_COMPARISON_H_

#include <functional>
#include <string>
#include <vector>

#include "tools/eval/evaluation.h"
#include "tools/eval/scores.h"
#include "tools/eval/split.h"
#include "tools/table.h"
#include "tools/variants.h"

namespace cli {

/// What a variant was worth.
struct Contestant {
  Variant variant;
  std::string obstacle;  // why it can't work on the data, printable; empty if it can

  // What follows is unset with an obstacle.
  long numCorrect = 0;
  long numTested = 0;
  eval::Interval interval{};  // of the accuracy
  double logLoss = 0.0;
  double meanExpectedCost = 0.0;
  double meanActualCost = 0.0;
  eval::Timings timings;

  // Against the best; p is 1 for the best itself.
  long onlyBest = 0;  // patterns that the best alone decided correctly
  long onlyThis = 0;
  double p = 1.0;  // mcNemarTest() of the two

  /// Whether the difference may well be chance, at a level of 5 %.
  bool isWithinNoise() const { return p >= 0.05; }

  double accuracy() const {
    return static_cast<double>(numCorrect) / static_cast<double>(numTested);
  }
};

/// Tries the variants on the same parts of the data. The cheapest stands first, by mean actual
/// cost, then by log loss; those that can't work stand last, in their own order.
///
/// `costs` are arguments of --default-cost and --cost. Calls `onPattern` after each decision; it
/// may throw to stop. Throws InputError for costs that don't fit the data.
std::vector<Contestant> compare(const Dataset& data, const std::vector<Variant>& variants,
                                const std::vector<std::string>& costs, const eval::Split& split,
                                const std::function<void()>& onPattern);

}  // namespace cli

#endif  // TOOLS_COMPARISON_H_
