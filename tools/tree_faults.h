// SPDX-License-Identifier: MIT
#ifndef TOOLS_TREE_FAULTS_H_
#define TOOLS_TREE_FAULTS_H_

#include <vxclss/vxclss.h>

#include "tools/fault_list.h"
#include "tools/table.h"

namespace cli {

/// Adds what is wrong with any part of a tree, reached or not. `tree` may be null.
void findTreeFaults(const vxDecisionTree* tree, const Names& names, FaultList& faults);

}  // namespace cli

#endif  // TOOLS_TREE_FAULTS_H_
