// SPDX-License-Identifier: MIT
#ifndef TOOLS_RULES_JSON_H_
#define TOOLS_RULES_JSON_H_

#include <vxclss/vxclss.h>

#include <string>
#include <vector>

namespace cli {

/// A rule table, and what its features and labels are called.
struct RuleFile {
  std::vector<std::string> features;
  std::vector<std::string> categories;
  vxClassifierRuleTable table;
};

/// Reads rules from a JSON file, in the form that `vxclss rules --help` describes. Throws
/// InputError, which names the place in the file.
RuleFile readRules(const std::string& path);

}  // namespace cli

#endif  // TOOLS_RULES_JSON_H_
