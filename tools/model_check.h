// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_CHECK_H_
#define TOOLS_MODEL_CHECK_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/model_file.h"

namespace cli {

/// What the bytes of a file turned out to be.
struct ModelCheck {
  FileState state = FileState::kSound;
  std::vector<std::string> faults;  // printable; at least one unless sound
  std::optional<Model> model;       // if it could be read
};

/// A model file is sound if it can be read, holds nothing that modelFaults() finds, and is written
/// again byte for byte.
///
/// No mark stands at the start of a model file, but the class of its classifier does: where there
/// is none, the bytes are no model, and where they stop making sense behind it, they are damaged. A
/// version that is not known may be damage as well.
ModelCheck checkModel(const std::string& bytes);

}  // namespace cli

#endif  // TOOLS_MODEL_CHECK_H_
