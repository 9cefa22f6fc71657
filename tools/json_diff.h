// SPDX-License-Identifier: MIT
#ifndef TOOLS_JSON_DIFF_H_
#define TOOLS_JSON_DIFF_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/json_text.h"

namespace cli {

/// A place where two values differ. One side is empty where only the other has the place.
struct JsonDifference {
  std::vector<std::string> path;
  std::optional<Json> a;
  std::optional<Json> b;
};

/// How modelJson() of two models differ, in the order of `a`.
///
/// Objects are compared key by key. Elements that say what they are about, by their category, their
/// measurements or the pair of categories of a cost, are compared with their likes, wherever those
/// stand; a different order is then told as one of its own. Lists of equally many numbers are
/// compared number by number, under the names of the measurements that stand beside them. All else
/// differs as a whole.
std::vector<JsonDifference> jsonDifferences(const Json& a, const Json& b);

}  // namespace cli

#endif  // TOOLS_JSON_DIFF_H_
