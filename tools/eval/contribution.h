// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_CONTRIBUTION_H_
#define TOOLS_EVAL_CONTRIBUTION_H_

#include <vxclss/vxclss.h>

#include <vector>

namespace eval {

/// How a group of measurements spoke for two categories.
struct Contribution {
  std::vector<long> measurements;  // ascending
  double forDecided = 0.0;
  double forTrue = 0.0;
};

/// Why a pattern was decided to be of one category and not of its true one.
///
/// Bayesian: the log density of each group of measurements in either category; what is one group in
/// one category and several in the other is taken together. The sums are the categories'
/// log-likelihoods. Nearest neighbours with a norm of order p: minus |difference|^p of each
/// measurement to the nearest stored pattern of either category; the sums are minus the distances
/// to these two patterns, to the power p.
///
/// The groups stand in the order of their first measurements. There are none for other techniques
/// and metrics, and where the tool knows one of the two categories not at all.
struct Explanation {
  std::vector<Contribution> contributions;
};

Explanation explanation(const vxClassifierTool& tool, const vxFeaturePattern& pattern,
                        long decidedLabel, long trueLabel);

}  // namespace eval

#endif  // TOOLS_EVAL_CONTRIBUTION_H_
