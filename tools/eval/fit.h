// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_FIT_H_
#define TOOLS_EVAL_FIT_H_

#include <vxclss/vxclss.h>

namespace eval {

/// How near a pattern is to anything that the tool has learnt, whatever it is decided to be: the
/// larger, the nearer. `result` is what the tool says of the pattern.
///
/// Bayesian: the log-likelihood of the best category, which is minus the result's factor; the best
/// match score is 1 however far off the pattern is. Nearest neighbours: minus the distance to the
/// nearest stored pattern, whatever k is, in time linear in the number of stored patterns; match
/// scores count neighbours and say nothing of distance. Others: the best match score.
double absoluteFit(const vxClassifierTool& tool, const vxFeaturePattern& pattern,
                   const vxClassifierResult& result);

}  // namespace eval

#endif  // TOOLS_EVAL_FIT_H_
