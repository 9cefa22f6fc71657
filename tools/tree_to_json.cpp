// SPDX-License-Identifier: MIT
#include "tools/tree_to_json.h"

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/model_json.h"
#include "tools/tree_text.h"

namespace cli {
namespace {

Json measurementList(const std::vector<long>& indices, const Names& names) {
  Json list = Json::array();
  for (const long index : indices) list.push_back(measurementJson(names, index));
  return list;
}

Json rangeJson(const vxRangePredicate& predicate, const Names& names) {
  const vxRange range = predicate.measurementRange();
  Json json{{"of", measurementList(predicate.measurementIndices(), names)}};
  if (range.low() != -INFINITY) json["from"] = jsonNumber(range.low());
  if (range.high() != INFINITY) json["to"] = jsonNumber(range.high());
  return json;
}

Json predicateJson(const vxPredicateFunction* predicate, const Names& names) {
  Json json = Json::object();
  if (const auto* compare = dynamic_cast<const vxComparisonPredicate*>(predicate)) {
    json["compare"] = Json::array({measurementJson(names, compare->measurementIndex1()), ">",
                                   measurementJson(names, compare->measurementIndex2())});
  } else if (const auto* range = dynamic_cast<const vxRangePredicate*>(predicate)) {
    json["range"] = rangeJson(*range, names);
  } else if (const auto* validity = dynamic_cast<const vxValidityPredicate*>(predicate)) {
    json["valid"] = measurementList(validity->measurementIndices(), names);
  } else if (predicate != nullptr) {
    json["other"] = true;
  } else {
    return {};
  }
  return json;
}

Json leafJson(const vxClassifierResult& result, const Names& names) {
  Json results = Json::array();
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    const Json name = categoryJson(names, category.categoryLabel());
    if (result.categoryResults().size() == 1 && name.is_string() && category.matchScore() == 1.0 &&
        category.classScore() == 1.0 && category.expectedCost() == 0.0 &&
        result.matchScoreFactorLog() == 0.0) {
      return name;
    }
    results.push_back({{"category", name},
                       {"match_score", jsonNumber(category.matchScore())},
                       {"class_score", jsonNumber(category.classScore())},
                       {"expected_cost", jsonNumber(category.expectedCost())}});
  }
  Json json{{"results", results}};
  if (result.matchScoreFactorLog() != 0.0) {
    json["match_score_factor_log"] = jsonNumber(result.matchScoreFactorLog());
  }
  return json;
}

class TreeWriter {
 public:
  TreeWriter(const vxDecisionTree* root, const Names& names)
      : names_(names), times_(timesReached(root)) {}

  /// No file holds more levels than the stack does.
  Json write(const vxDecisionTree* tree) {
    if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(tree)) {
      return leafJson(leaf->classifierResult(), names_);
    }
    const auto* node = dynamic_cast<const vxDecisionTreeNode*>(tree);
    if (node == nullptr) return {};
    Json json = Json::object();
    if (times_[node] > 1) {
      const auto [entry, isNew] = numbers_.emplace(node, numbers_.size() + 1);
      json[isNew ? "id" : "same_as"] = entry->second;
      if (!isNew) return json;
    }
    json["if"] = predicateJson(node->predicateFunction().get(), names_);
    json["true"] = write(node->trueTree().get());
    json["false"] = write(node->falseTree().get());
    return json;
  }

 private:
  const Names& names_;
  std::map<const vxDecisionTreeNode*, long> times_;
  std::map<const vxDecisionTreeNode*, std::size_t> numbers_;  // of shared nodes written so far
};

}  // namespace

Json treeJson(const vxDecisionTree* tree, const Names& names) {
  return TreeWriter(tree, names).write(tree);
}

}  // namespace cli
