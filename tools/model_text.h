// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_TEXT_H_
#define TOOLS_MODEL_TEXT_H_

#include <string>

#include "tools/model_file.h"

namespace cli {

/// The name of a measurement or a category, printable; "measurement 7", "category 7" without one.
std::string measurementName(const Names& names, long index);
std::string categoryName(const Names& names, long label);

/// A trained model in words.
std::string modelText(const Model& model);

}  // namespace cli

#endif  // TOOLS_MODEL_TEXT_H_
