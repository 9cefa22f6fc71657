// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_DIFF_H_
#define TOOLS_MODEL_DIFF_H_

#include <vector>

#include "tools/json_diff.h"
#include "tools/model_file.h"

namespace cli {

/// How two models differ, in parameters and in what they have learnt. Of models of different
/// techniques only what both have is compared.
///
/// Stored patterns that are of the same names are compared, too: under "unmatched" stands how many
/// of each model have no equal in the other, under "order" the place in each of the first pattern
/// that stands elsewhere in the other, from 0.
///
/// Throws what modelJson() throws.
std::vector<JsonDifference> modelDifferences(const Model& a, const Model& b);

}  // namespace cli

#endif  // TOOLS_MODEL_DIFF_H_
