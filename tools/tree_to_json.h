// SPDX-License-Identifier: MIT
#ifndef TOOLS_TREE_TO_JSON_H_
#define TOOLS_TREE_TO_JSON_H_

#include <vxclss/vxclss.h>

#include "tools/json_text.h"
#include "tools/table.h"

namespace cli {

/// A tree in the form that readTree() takes. A node that several places share is written once, with
/// a number under "id"; the other places are {"same_as": that number}. Names that there are not
/// become the indices; `tree` and what hangs below it may be null.
Json treeJson(const vxDecisionTree* tree, const Names& names);

}  // namespace cli

#endif  // TOOLS_TREE_TO_JSON_H_
