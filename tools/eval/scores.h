// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_SCORES_H_
#define TOOLS_EVAL_SCORES_H_

#include <vxclss/vxclss.h>

#include <vector>

#include "tools/eval/record.h"

namespace eval {

struct Interval {
  double low;
  double high;
};

/// In what interval a probability lies with a confidence of 95 %, judged by `successes` in
/// `trials`. NaN without a trial.
Interval wilsonInterval(long successes, long trials);

/// What was paid for a decision: 0 for the right one.
double actualCost(const vxClassifierCosts& costs, long trueLabel, long decidedLabel);

/// Means over all records, NaN if there are none.
double meanExpectedCost(const std::vector<Record>& records);
double meanActualCost(const std::vector<Record>& records, const vxClassifierCosts& costs);

/// The mean of -ln(class score of the true category), a score below 2^-52 counted as that.
double logLoss(const std::vector<Record>& records);

}  // namespace eval

#endif  // TOOLS_EVAL_SCORES_H_
