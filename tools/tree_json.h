// SPDX-License-Identifier: MIT
#ifndef TOOLS_TREE_JSON_H_
#define TOOLS_TREE_JSON_H_

#include <string>

#include "tools/model_file.h"

namespace cli {

/// Reads a decision tree from a JSON file, in the form that `vxclss tree --help` describes. Throws
/// InputError, which names the place in the file.
Model readTree(const std::string& path);

}  // namespace cli

#endif  // TOOLS_TREE_JSON_H_
