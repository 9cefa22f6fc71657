// SPDX-License-Identifier: MIT
#ifndef TOOLS_CONFUSION_TABLE_H_
#define TOOLS_CONFUSION_TABLE_H_

#include <string>
#include <vector>

#include "tools/eval/confusion.h"

namespace cli {

/// The confusion matrix for people: a row for each true category, a column for each decision, then
/// the row's total, the share of it decided correctly, and the share of the decisions for the
/// category that are correct. Where the names would make it too wide, columns are headed by numbers
/// that the rows explain.
std::string confusionTable(const eval::Confusion& confusion,
                           const std::vector<std::string>& categories);

/// A share as people read it, "96.7 %"; "-" for NaN.
std::string percentage(double share);

}  // namespace cli

#endif  // TOOLS_CONFUSION_TABLE_H_
