// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_NEAREST_H_
#define TOOLS_EVAL_NEAREST_H_

#include <vxclss/vxclss.h>

namespace eval {

/// The stored pattern nearest to another one.
struct Nearest {
  long index;       // -1 if there is none
  double distance;  // infinite then
};

/// Of the stored patterns of a label, or of all for -1; of equally near ones the first. Where the
/// metric is the norm of order 1 or 2, distances may differ from it in the last digits.
Nearest nearestStored(const vx_ClassifierKNN& classifier, const vxFeaturePattern& pattern,
                      long label);

}  // namespace eval

#endif  // TOOLS_EVAL_NEAREST_H_
