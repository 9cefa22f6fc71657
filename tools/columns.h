// SPDX-License-Identifier: MIT
#ifndef TOOLS_COLUMNS_H_
#define TOOLS_COLUMNS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

using Cells = std::vector<std::string>;

/// Characters in a line that holds the widest cell of every column. All lines have as many cells as
/// the first.
std::size_t lineWidth(const std::vector<Cells>& lines);

/// The lines with `indent` before each; the first column flush left, all others flush right.
std::string aligned(const std::vector<Cells>& lines, const std::string& indent = {});

}  // namespace cli

#endif  // TOOLS_COLUMNS_H_
