// SPDX-License-Identifier: MIT
#include "tools/columns.h"

#include <algorithm>

#include "tools/text.h"

namespace cli {
namespace {

constexpr std::size_t kGap = 2;

std::vector<std::size_t> columnWidths(const std::vector<Cells>& lines) {
  std::vector<std::size_t> widths(lines[0].size(), 0);
  for (const Cells& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i) {
      widths[i] = std::max(widths[i], lengthOf(line[i]));
    }
  }
  return widths;
}

}  // namespace

std::size_t lineWidth(const std::vector<Cells>& lines) {
  std::size_t sum = 0;
  for (const std::size_t width : columnWidths(lines)) sum += width + kGap;
  return sum - kGap;
}

std::string aligned(const std::vector<Cells>& lines, const std::string& indent) {
  const std::vector<std::size_t> widths = columnWidths(lines);
  std::string text;
  for (const Cells& line : lines) {
    text += indent + line[0] + std::string(widths[0] - lengthOf(line[0]), ' ');
    for (std::size_t i = 1; i < line.size(); ++i) {
      text += std::string(kGap + widths[i] - lengthOf(line[i]), ' ') + line[i];
    }
    // A line may end with empty cells.
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

}  // namespace cli
