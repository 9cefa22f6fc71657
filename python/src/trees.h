// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_TREES_H_
#define VXCLSS_PYTHON_TREES_H_

#include "bindings.h"

namespace vxpy {

/// One more than the largest measurement index that a question of the tree asks about.
long askedMeasurements(const vxDecisionTree& root);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_TREES_H_
