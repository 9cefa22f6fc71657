// SPDX-License-Identifier: MIT
#ifndef TOOLS_TREE_TEXT_H_
#define TOOLS_TREE_TEXT_H_

#include <vxclss/vxclss.h>

#include <map>
#include <string>

#include "tools/table.h"

namespace cli {

/// What a predicate asks, in measurement names.
std::string predicateText(const vxPredicateFunction& predicate, const Names& names);

/// How often each node of a tree is a child, the root counted once; from the second time on nobody
/// looks below it. `root` may be null.
std::map<const vxDecisionTreeNode*, long> timesReached(const vxDecisionTree* root);

/// A tree drawn with box characters, one line a node or leaf. A node that several others share is
/// drawn once, with a number that the other places refer to. `tree` may be null.
std::string treeText(const vxDecisionTree* tree, const Names& names);

}  // namespace cli

#endif  // TOOLS_TREE_TEXT_H_
