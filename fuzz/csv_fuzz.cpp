// SPDX-License-Identifier: MIT
// The command's CSV reader, and the tables and datasets made of what it reads.

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "fuzz/byte_streams.h"
#include "fuzz/input_file.h"
#include "fuzz/target.h"
#include "tools/csv.h"
#include "tools/error.h"
#include "tools/table.h"
#include "tools/text.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

/// The rows of a text; false if it is refused.
bool readRows(const std::uint8_t* data, std::size_t size, Rows& rows) {
  fuzz::ByteSource source(data, size);
  std::istream stream(&source);
  try {
    cli::CsvReader reader(stream, "input");
    std::vector<std::string> cells;
    long last = 0;
    while (reader.next(cells)) {
      fuzz::demand(reader.row() > last, "rows come in the order of their lines");
      last = reader.row();
      rows.push_back(cells);
    }
    fuzz::demand(reader.bytesRead() == static_cast<double>(size), "all bytes are read");
    return true;
  } catch (const cli::InputError&) {
    return false;
  }
}

/// A line that holds nothing is no row, so an only cell that is empty needs its quotes.
std::string written(const Rows& rows) {
  std::string text;
  for (const auto& cells : rows) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      text += i == 0 ? "" : ",";
      text += cells.size() == 1 && cells[0].empty() ? "\"\"" : cli::csvCell(cells[i]);
    }
    text += '\n';
  }
  return text;
}

void readTable(const std::string& path) {
  for (const bool allowInvalid : {false, true}) {
    try {
      const cli::Dataset data = cli::readDataset(
          path, {"c", {"x"}}, allowInvalid,
          [](const cli::Table& table) { fuzz::demand(table.row() > 0, "a row has a line"); });
      fuzz::demand(data.patterns.size() == data.labels.size() &&
                       data.rows.size() == data.labels.size() && data.numLabelled() > 0,
                   "a dataset holds a label and a line a pattern");
      for (const auto& pattern : data.patterns) {
        fuzz::demand(
            pattern->numMeasurements() == static_cast<long>(data.names.measurements.size()),
            "a pattern has a measurement a column");
      }
    } catch (const cli::InputError&) {
    }
  }
}

}  // namespace

VX_FUZZ_TARGET(csv) {
  Rows rows;
  if (readRows(data, size, rows)) {
    // A byte-order mark that is content needs quotes where it would begin a file.
    const std::string text = '\n' + written(rows);
    Rows again;
    fuzz::demand(readRows(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), again) &&
                     again == rows,
                 "what is written is read again");
  }
  static fuzz::InputFile file;
  readTable(file.holding(data, size));
}
