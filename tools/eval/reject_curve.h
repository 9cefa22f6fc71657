// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_REJECT_CURVE_H_
#define TOOLS_EVAL_REJECT_CURVE_H_

#include <cstddef>
#include <vector>

#include "tools/eval/evaluation.h"

namespace eval {

/// By what the doubtful decisions are told from the safe ones.
enum class Criterion {
  eExpectedCost,  ///< rejects what is expected to cost more than the threshold
  eMargin,        ///< rejects a margin between first and second class score below the threshold
  eFit            ///< rejects an absolute fit below the threshold
};

/// What remains when the decisions beyond a threshold are rejected.
struct RejectPoint {
  double threshold;  // the value of the most doubtful decision kept, which is at the threshold
  long accepted;
  long correct;           // of these
  double rejected;        // share of all, [0, 1)
  double errorRate;       // of the accepted
  double meanActualCost;  // of the accepted
};

/// A point for every threshold that makes a difference, the first of which rejects nothing; equal
/// values go together. A decision whose value is NaN is rejected first. Empty without a record,
/// and for eFit if the fit was not asked for.
std::vector<RejectPoint> rejectCurve(const Evaluation& evaluation, Criterion criterion);

/// At most `count` >= 2 of the points, as evenly spread as may be, first and last among them.
std::vector<RejectPoint> thinned(const std::vector<RejectPoint>& curve, std::size_t count);

}  // namespace eval

#endif  // TOOLS_EVAL_REJECT_CURVE_H_
