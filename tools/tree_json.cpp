// SPDX-License-Identifier: MIT
#include "tools/tree_json.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <limits>
#include <utility>
#include <vector>

#include "tools/json_file.h"
#include "tools/library_error.h"
#include "tools/text.h"

namespace cli {
namespace {

using Predicate = vxPtrHandle_const<vxPredicateFunction>;
using Tree = vxPtrHandle_const<vxDecisionTree>;

/// No archive holds more levels.
constexpr std::size_t kDeepest = 1000;

/// What `make` makes; what the library refuses of it is refused at `place`.
template <class Make>
auto madeAt(const JsonValue& place, const Names& names, Make&& make) {
  try {
    return make();
  } catch (const vxClassifierDefs::Errors& error) {
    place.refuse(libraryText(error, names));
  }
}

/// One name, or a list of them.
std::vector<long> measurementsAt(const JsonValue& value, const Names& names) {
  std::vector<long> indices;
  if (!value.isArray()) return {value.positionIn(names.measurements, "measurement")};
  for (const JsonValue& element : value.elements()) {
    indices.push_back(element.positionIn(names.measurements, "measurement"));
  }
  if (indices.empty()) value.refuse("an empty list");
  return indices;
}

Predicate comparison(const JsonValue& value, const Names& names) {
  const std::vector<JsonValue> parts = value.elements();
  if (parts.size() != 3) value.refuse("not a measurement, \">\" or \"<\", and a measurement");
  const long left = parts[0].positionIn(names.measurements, "measurement");
  const long right = parts[2].positionIn(names.measurements, "measurement");
  const std::string sign = parts[1].text();
  if (sign != ">" && sign != "<") parts[1].refuse(shown(sign) + " is neither \">\" nor \"<\"");
  return madeAt(value, names, [&] {
    return Predicate(sign == ">" ? new vxComparisonPredicate(left, right)
                                 : new vxComparisonPredicate(right, left));
  });
}

Predicate range(const JsonValue& value, const Names& names) {
  value.allowOnly({"of", "from", "to"});
  const std::vector<long> indices = measurementsAt(value.member("of"), names);
  const double infinity = std::numeric_limits<double>::infinity();
  const double low = value.has("from") ? value.member("from").number() : -infinity;
  const double high = value.has("to") ? value.member("to").number() : infinity;
  if (low > high) value.refuse(fmt::format("\"from\" {} is above \"to\" {}", low, high));
  return Predicate(new vxRangePredicate(vxRange(low, high), indices));
}

Predicate predicateAt(const JsonValue& value, const Names& names) {
  value.allowOnly({"compare", "range", "valid"});
  if (value.keys().size() != 1) value.refuse("not one of compare, range, valid");
  if (value.has("compare")) return comparison(value.member("compare"), names);
  if (value.has("range")) return range(value.member("range"), names);
  return Predicate(new vxValidityPredicate(measurementsAt(value.member("valid"), names)));
}

vxClassifierCategoryResult categoryResult(const JsonValue& value, const Names& names) {
  value.allowOnly({"category", "match_score", "class_score", "expected_cost"});
  const long label = value.member("category").positionIn(names.categories, "category");
  const double matchScore = value.member("match_score").number();
  const double classScore = value.member("class_score").number();
  const double cost = value.member("expected_cost").number();
  return madeAt(value, names,
                [&] { return vxClassifierCategoryResult(label, matchScore, classScore, cost); });
}

Tree leafAt(const JsonValue& value, const Names& names) {
  std::vector<vxClassifierCategoryResult> results;
  if (value.isText()) {
    const long label = value.positionIn(names.categories, "category");
    results.emplace_back(label, 1.0, 1.0, 0.0);
  } else {
    value.allowOnly({"results"});
    for (const JsonValue& element : value.member("results").elements()) {
      results.push_back(categoryResult(element, names));
    }
  }
  return madeAt(value, names,
                [&] { return Tree(new vxDecisionTreeLeaf(vxClassifierResult(results, 0.0))); });
}

/// A node whose subtrees are still to be read.
struct OpenNode {
  JsonValue value;
  Predicate predicate;
  Tree trueTree;
};

/// The nodes on the way to the next leaf stand on a stack of its own.
Tree treeAt(const JsonValue& root, const Names& names) {
  std::vector<OpenNode> open;
  JsonValue next = root;
  while (true) {
    if (open.size() == kDeepest) next.refuse("more levels than a model file holds");
    if (next.has("if")) {
      next.allowOnly({"if", "true", "false"});
      open.push_back({next, predicateAt(next.member("if"), names), {}});
      next = next.member("true");
      continue;
    }
    if (!next.isText() && !next.has("results")) {
      next.refuse("neither a category, nor \"if\", \"true\" and \"false\", nor \"results\"");
    }
    Tree done = leafAt(next, names);
    while (!open.empty() && open.back().trueTree) {
      done = Tree(new vxDecisionTreeNode(*open.back().predicate, *open.back().trueTree, *done));
      open.pop_back();
    }
    if (open.empty()) return done;
    open.back().trueTree = done;
    next = open.back().value.member("false");
  }
}

}  // namespace

Model readTree(const std::string& path) {
  const JsonFile file(path);
  const JsonValue root = file.root();
  root.allowOnly({"measurements", "categories", "tree"});
  Model model;
  model.names.measurements = root.member("measurements").names();
  model.names.categories = root.member("categories").names();
  model.tool.train(*treeAt(root.member("tree"), model.names));
  return model;
}

}  // namespace cli
