// SPDX-License-Identifier: MIT
#include "tools/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <system_error>

#include "tools/error.h"
#include "tools/text.h"

namespace cli {
namespace {

double sizeOf(const std::string& path) {
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(path, unknown);
  return unknown ? 0.0 : static_cast<double>(size);
}

std::vector<std::size_t> measurementColumns(const Table& table, const DatasetColumns& columns,
                                            std::size_t label) {
  std::set<std::size_t> others{label};
  for (const std::string& name : columns.ignored) {
    if (!others.insert(table.column(name)).second && table.column(name) == label) {
      table.refuse(label, "is the label and can't be ignored");
    }
  }
  std::vector<std::size_t> result;
  for (std::size_t i = 0; i < table.columns().size(); ++i) {
    if (others.count(i) > 0) continue;
    if (table.columns()[i].empty()) {
      table.refuse(fmt::format("cell {} names no column; --ignore \"\" leaves it out", i + 1));
    }
    result.push_back(i);
  }
  if (result.empty()) table.refuse("no measurement column beside " + shown(columns.label));
  return result;
}

/// Renumbers labels given in order of appearance by the order of their names.
void sortCategories(const std::map<std::string, long>& firstLabels, Dataset& data) {
  std::vector<long> sorted(firstLabels.size());
  for (const auto& [name, first] : firstLabels) {
    sorted[static_cast<std::size_t>(first)] = static_cast<long>(data.names.categories.size());
    data.names.categories.push_back(name);
  }
  for (long& label : data.labels) {
    if (label >= 0) label = sorted[static_cast<std::size_t>(label)];
  }
}

/// Label of the category in order of appearance, -1 for none.
long labelOf(const Table& table, std::size_t column, std::map<std::string, long>& firstLabels) {
  const std::string name(table.cell(column));
  if (name.empty()) return -1;
  const auto [entry, added] = firstLabels.emplace(name, static_cast<long>(firstLabels.size()));
  if (added && !isUtf8(name)) table.refuse(column, shown(name) + " is not UTF-8 text");
  return entry->second;
}

}  // namespace

std::unique_ptr<std::istream> openInput(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) throw InputError(path + ": is a directory");
  errno = 0;
  auto stream = std::make_unique<std::ifstream>(path, std::ios::binary);
  if (!*stream) throw InputError(fmt::format("{}: {}", path, std::strerror(errno)));
  return stream;
}

std::string fileContent(const std::string& path) {
  const auto stream = openInput(path);
  std::string bytes(std::istreambuf_iterator<char>(*stream), {});
  if (stream->bad()) throw InputError(path + ": cannot be read");
  return bytes;
}

Table::Table(const std::string& path)
    : path_(path), stream_(openInput(path)), reader_(*stream_, path), size_(sizeOf(path)) {
  readHeader_();
}

void Table::readHeader_() {
  if (!reader_.next(cells_)) throw InputError(path_ + ": no rows, not even one of column names");
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    columns_.emplace_back(trimmed(cells_[i]));
    if (!isUtf8(columns_[i])) {
      refuse(fmt::format("cell {}: {} is not UTF-8 text", i + 1, shown(columns_[i])));
    }
  }
  std::set<std::string> known;
  for (const std::string& name : columns_) {
    if (!known.insert(name).second) refuse("two columns named " + shown(name));
  }
}

std::size_t Table::column(const std::string& name) const {
  const auto found = std::find(columns_.begin(), columns_.end(), trimmed(name));
  if (found == columns_.end()) {
    throw InputError(fmt::format("{}: no column {}", path_, shown(name)));
  }
  return static_cast<std::size_t>(found - columns_.begin());
}

bool Table::next() {
  if (!reader_.next(cells_)) return false;
  const std::size_t wanted = columns_.size();
  if (cells_.size() == wanted) return true;
  if (cells_.size() < wanted) {
    refuse(cells_.size(), fmt::format("no cell; the row has {} of {}", cells_.size(), wanted));
  }
  refuse(fmt::format("{} cells for {} columns", cells_.size(), wanted));
}

std::string_view Table::cell(std::size_t column) const { return trimmed(cells_[column]); }

vxPtrHandle_const<vxFeaturePattern> Table::pattern(const std::vector<std::size_t>& columns,
                                                   bool allowInvalid) const {
  std::vector<double> measurements;
  std::vector<long> invalid;
  measurements.reserve(columns.size());
  for (const std::size_t column : columns) {
    const std::string_view text = cell(column);
    std::optional<double> number = text.empty() ? std::nan("") : parsedNumber(text);
    if (!number) refuse(column, shown(text) + " is not a number");
    if (std::isinf(*number)) refuse(column, shown(text) + " is not a finite number");
    if (std::isnan(*number)) {
      if (!allowInvalid) refuse(column, "a value is missing, and this method needs every one");
      invalid.push_back(static_cast<long>(measurements.size()));
      number = 0.0;
    }
    measurements.push_back(*number);
  }
  return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(measurements, invalid));
}

void Table::refuse(const std::string& what) const {
  throw InputError(fmt::format("{}, row {}: {}", path_, row(), what));
}

void Table::refuse(std::size_t column, const std::string& what) const {
  throw InputError(
      fmt::format("{}, row {}, column {}: {}", path_, row(), shown(columns_[column]), what));
}

long Dataset::numLabelled() const {
  return static_cast<long>(labels.size()) -
         static_cast<long>(std::count(labels.begin(), labels.end(), -1L));
}

vxClassifierDataProviderMemory Dataset::labelled() const {
  std::vector<vxPtrHandle_const<vxFeaturePattern>> kept;
  std::vector<long> keptLabels;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (labels[i] < 0) continue;
    kept.push_back(patterns[i]);
    keptLabels.push_back(labels[i]);
  }
  vxClassifierDataProviderMemory provider;
  provider.data(kept, keptLabels);
  return provider;
}

Dataset readDataset(const std::string& path, const DatasetColumns& columns, bool allowInvalid,
                    const std::function<void(const Table&)>& onRow) {
  Table table(path);
  const std::size_t labelColumn = table.column(columns.label);
  const std::vector<std::size_t> measured = measurementColumns(table, columns, labelColumn);

  Dataset data;
  data.path = path;
  for (const std::size_t column : measured) {
    data.names.measurements.push_back(table.columns()[column]);
  }
  std::map<std::string, long> firstLabels;
  while (table.next()) {
    const long label = labelOf(table, labelColumn, firstLabels);
    data.patterns.push_back(table.pattern(measured, allowInvalid || label < 0));
    data.labels.push_back(label);
    data.rows.push_back(table.row());
    onRow(table);
  }
  if (data.rows.empty()) throw InputError(path + ": no rows after the column names");
  if (firstLabels.empty()) {
    throw InputError(
        fmt::format("{}: no row has a category in column {}", path, shown(columns.label)));
  }
  sortCategories(firstLabels, data);
  return data;
}

}  // namespace cli
