// SPDX-License-Identifier: MIT
#ifndef TOOLS_DATASET_OPTIONS_H_
#define TOOLS_DATASET_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tools/table.h"

namespace cli {

/// The arguments of every command that reads labelled patterns.
class DatasetOptions {
 public:
  explicit DatasetOptions(CLI::App& command);

  const std::string& path() const { return path_; }

  /// What was given, as arguments that say it again.
  std::vector<std::string> arguments() const;

  /// Reads the file, with a progress bar on `bar` (may be null) and an eye on stop requests.
  Dataset read(bool allowInvalid, std::ostream* bar) const;

 private:
  std::string path_;
  DatasetColumns columns_;
};

}  // namespace cli

#endif  // TOOLS_DATASET_OPTIONS_H_
