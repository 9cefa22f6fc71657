// SPDX-License-Identifier: MIT
#ifndef TOOLS_ROW_OUTPUT_H_
#define TOOLS_ROW_OUTPUT_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "tools/commands.h"
#include "tools/table.h"

namespace cli {

/// DATA.csv, -o and --json of the commands that answer each row of a table.
class RowOutput {
 public:
  RowOutput(CLI::App& command, const Console& console);

  const std::string& dataPath() const { return data_; }

  /// Whether rows are JSON objects, one a line, in place of CSV.
  bool json() const { return json_; }

  /// Writes `header`, unless rows are JSON, and for each row of the table what `append` adds to the
  /// text. Keeps an eye on stop requests. Throws InputError for a table without a row, and what
  /// `append` throws.
  void write(Table& table, const std::string& header,
             const std::function<void(std::string&)>& append) const;

 private:
  void writeRows_(Table& table, const std::string& header, std::ostream& out,
                  const std::function<void(std::string&)>& append) const;

  Console console_;
  std::string data_;
  std::optional<std::string> output_;
  bool json_ = false;
};

}  // namespace cli

#endif  // TOOLS_ROW_OUTPUT_H_
