// SPDX-License-Identifier: MIT
#include "tools/dataset_options.h"

#include <optional>

#include "tools/progress.h"
#include "tools/stop.h"

namespace cli {

DatasetOptions::DatasetOptions(CLI::App& command) {
  command.add_option("DATA.csv", path_, "Patterns, one a row, under a row of column names")
      ->type_name("")
      ->required();
  command.add_option("--label", columns_.label, "Column that holds the category; empty: unknown")
      ->type_name("COLUMN")
      ->required();
  command
      .add_option("--ignore", columns_.ignored,
                  "Column that is no measurement; may be repeated. All others are measurements")
      ->type_name("COLUMN")
      ->allow_extra_args(false);
}

std::vector<std::string> DatasetOptions::arguments() const {
  std::vector<std::string> arguments{path_, "--label=" + columns_.label};
  for (const std::string& column : columns_.ignored) arguments.push_back("--ignore=" + column);
  return arguments;
}

Dataset DatasetOptions::read(bool allowInvalid, std::ostream* bar) const {
  std::optional<Progress> progress;
  return readDataset(path_, columns_, allowInvalid, [&](const Table& table) {
    if (!progress) progress.emplace("reading", table.size(), bar);
    progress->update(table.bytesRead());
    throwIfStopped();
  });
}

}  // namespace cli
