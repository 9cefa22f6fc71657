// SPDX-License-Identifier: MIT
// The command's readers of rules and trees in JSON: an InputError, or something that runs.

#include <string>
#include <vector>

#include "fuzz/input_file.h"
#include "fuzz/target.h"
#include "tools/error.h"
#include "tools/rules_json.h"
#include "tools/tree_json.h"

VX_FUZZ_TARGET(json) {
  static fuzz::InputFile file;
  const std::string& path = file.holding(data, size);
  try {
    const cli::RuleFile rules = cli::readRules(path);
    const std::vector<double> values(rules.features.size(), 0.5);
    const long label = rules.table.classifyHardThreshold(vxClassifierFeatureVector(values), 0.25);
    fuzz::demand(label < static_cast<long>(rules.categories.size()), "a label has a name");
  } catch (const cli::InputError&) {
  }
  try {
    const cli::Model model = cli::readTree(path);
    const std::vector<double> values(model.names.measurements.size(), 0.5);
    vxClassifierResult result;
    model.tool.run(vxFeaturePattern(values, {}), result);
    fuzz::demand(!result.categoryResults().empty(), "a tree that was read answers");
  } catch (const cli::InputError&) {
  }
}
