// SPDX-License-Identifier: MIT
#ifndef TOOLS_CORRELATION_H_
#define TOOLS_CORRELATION_H_

#include <vector>

#include "tools/table.h"

namespace cli {

/// Measurements that depend on each other within the categories, in groups of two or more.
///
/// A pair whose correlation, with each category's means taken off and all categories pooled, is
/// above `threshold` or below its negative belongs together; so does what two pairs share. Patterns
/// that lack one of the two don't count for the pair. Measurements ascend within a group, groups by
/// their first one.
std::vector<std::vector<long>> correlatedGroups(const Dataset& data, double threshold);

}  // namespace cli

#endif  // TOOLS_CORRELATION_H_
