// SPDX-License-Identifier: MIT
#include "tools/confusion_table.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>

#include "tools/columns.h"
#include "tools/text.h"

namespace cli {
namespace {

constexpr std::size_t kWidestLine = 100;

std::vector<Cells> tableLines(const eval::Confusion& confusion, const Cells& rowNames,
                              const Cells& columnNames) {
  std::vector<Cells> lines{{"true \\ decided"}};
  lines[0].insert(lines[0].end(), columnNames.begin(), columnNames.end());
  lines[0].insert(lines[0].end(), {"total", "recall", "precision"});
  for (long row = 0; row < confusion.numCategories(); ++row) {
    Cells line{rowNames[static_cast<std::size_t>(row)]};
    for (long column = 0; column < confusion.numCategories(); ++column) {
      line.push_back(fmt::format("{}", confusion.count(row, column)));
    }
    line.push_back(fmt::format("{}", confusion.numOf(row)));
    line.push_back(percentage(confusion.recall(row)));
    line.push_back(percentage(confusion.precision(row)));
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

std::string percentage(double share) {
  return std::isnan(share) ? "-" : fmt::format("{:.1f} %", 100.0 * share);
}

std::string confusionTable(const eval::Confusion& confusion,
                           const std::vector<std::string>& categories) {
  Cells names;
  Cells numbers;
  Cells numberedNames;
  for (const std::string& category : categories) {
    names.push_back(printable(category));
    numbers.push_back(fmt::format("({})", names.size()));
    numberedNames.push_back(fmt::format("{} {}", numbers.back(), names.back()));
  }
  const std::vector<Cells> named = tableLines(confusion, names, names);
  if (lineWidth(named) <= kWidestLine) return aligned(named);
  return aligned(tableLines(confusion, numberedNames, numbers));
}

}  // namespace cli
