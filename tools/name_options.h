// SPDX-License-Identifier: MIT
#ifndef TOOLS_NAME_OPTIONS_H_
#define TOOLS_NAME_OPTIONS_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/number_options.h"
#include "tools/table.h"

namespace cli {

// Names may hold every character that separates them in an option, so each place where one could
// end is tried, and a text is refused unless exactly one reading names what there is. All functions
// throw InputError, which begins with the option.

/// What stands before and behind the last '=' of an option's text, without blanks.
struct Assignment {
  std::string_view names;  // part of the text
  std::string value;
};

/// `form` shows how the text should look ("COLUMN=VALUE"); `check` is what the value has to pass.
Assignment assignment(const std::string& option, const std::string& text, const std::string& form,
                      const OptionCheck& check);

/// Position of the name, without the blanks around it, in `names`; -1 if it isn't there.
long positionOf(const std::vector<std::string>& names, std::string_view name);

/// Label of the category of that name. `owner` is who should have it: "data" or "model".
long labelNamed(const std::string& option, const std::string& text, const Names& names,
                std::string_view category, const std::string& owner);

/// Labels of "TRUE,ASSIGNED", which differ.
std::pair<long, long> labelPair(const std::string& option, const std::string& text,
                                const Names& names, std::string_view pair,
                                const std::string& owner);

/// Measurements, and the category that they are meant for; -1 for every category.
struct Selection {
  long category = -1;
  std::vector<long> measurements;
};

/// What "[CATEGORY:]COLUMN" means.
Selection selectedColumn(const std::string& option, const std::string& text, const Names& names,
                         std::string_view selection);

/// What "[CATEGORY:]COLUMN,COLUMN,..." means.
Selection selectedColumns(const std::string& option, const std::string& text, const Names& names);

}  // namespace cli

#endif  // TOOLS_NAME_OPTIONS_H_
