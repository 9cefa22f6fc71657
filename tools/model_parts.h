// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_PARTS_H_
#define TOOLS_MODEL_PARTS_H_

#include <vxclss/vxclss.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/table.h"

namespace cli {

/// What --method calls the technique of a tool: "knn", "bayes", "tree"; "other" for a host's own.
std::string methodName(const vxClassifierTool& tool);

/// Parameters of a Bayesian tool, which holds them. Throws BadMethod if it was archived without.
const vxClassifierTrainParamsBayesian& bayesianParams(const vxClassifierTool& tool);

/// What mistaking one category for another costs.
struct PairCost {
  long actual;
  long assigned;
  double cost;
};

/// The pairs of labels below `numCategories` whose cost was set, ascending. One that was set to
/// the default is among them.
std::vector<PairCost> ownCosts(const vxClassifierCosts& costs, long numCategories);

/// Label and frequency of the categories whose frequency was set, ascending.
std::vector<std::pair<long, double>> ownFrequencies(const vxClassifierFrequencies& frequencies,
                                                    long numCategories);

/// Number of patterns of each label.
std::map<long, long> patternCounts(const vxClassifierDataProvider& data);

}  // namespace cli

#endif  // TOOLS_MODEL_PARTS_H_
