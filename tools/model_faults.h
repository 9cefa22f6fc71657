// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_FAULTS_H_
#define TOOLS_MODEL_FAULTS_H_

#include <string>
#include <vector>

#include "tools/model_file.h"

namespace cli {

/// What is wrong with a model that could be read, a line each, printable: archives bring back
/// values that setters refuse, and names that fit nothing. Empty for what train, tree and retrain
/// make. Classifies typical patterns, too. Keeps an eye on stop requests.
std::vector<std::string> modelFaults(const Model& model);

}  // namespace cli

#endif  // TOOLS_MODEL_FAULTS_H_
