// SPDX-License-Identifier: MIT
#include "tools/tree_text.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <cmath>
#include <vector>

#include "tools/model_text.h"

namespace cli {
namespace {

std::string nameList(const std::vector<long>& indices, const Names& names) {
  std::vector<std::string> all;
  for (const long index : indices) all.push_back(measurementName(names, index));
  return fmt::format("{}", fmt::join(all, ", "));
}

std::string rangeText(const vxRangePredicate& predicate, const Names& names) {
  const std::vector<long> indices = predicate.measurementIndices();
  const vxRange range = predicate.measurementRange();
  const std::string list = nameList(indices, names);
  if (indices.empty()) return "always";
  if (range == vxRange::FullRange()) return list + " valid";
  if (std::isinf(range.low()) && range.low() < 0.0)
    return fmt::format("{} <= {}", list, range.high());
  if (std::isinf(range.high()) && range.high() > 0.0)
    return fmt::format("{} >= {}", list, range.low());
  return fmt::format("{} in [{}, {}]", list, range.low(), range.high());
}

std::string leafText(const vxDecisionTreeLeaf& leaf, const Names& names) {
  std::string text;
  for (const vxClassifierCategoryResult& result : leaf.classifierResult().categoryResults()) {
    if (!text.empty()) text += "; ";
    text += categoryName(names, result.categoryLabel());
    if (result.matchScore() == 1.0 && result.classScore() == 1.0 && result.expectedCost() == 0.0) {
      continue;
    }
    text += fmt::format(" (match score {}, class score {}, expected cost {})", result.matchScore(),
                        result.classScore(), result.expectedCost());
  }
  return text.empty() ? "no category" : text;
}

class TreeDrawing {
 public:
  TreeDrawing(const vxDecisionTree* root, const Names& names)
      : names_(names), times_(timesReached(root)) {
    draw_(root);
  }

  const std::string& text() const { return text_; }

 private:
  struct Place {
    const vxDecisionTree* tree;
    std::string start;  // of the line
    std::string below;  // start of the lines of its subtrees
  };

  void draw_(const vxDecisionTree* root) {
    std::vector<Place> open{{root, "", ""}};
    while (!open.empty()) {
      const Place place = open.back();
      open.pop_back();
      text_ += place.start;
      const auto* node = dynamic_cast<const vxDecisionTreeNode*>(place.tree);
      if (node == nullptr) {
        const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(place.tree);
        text_ += leaf != nullptr ? leafText(*leaf, names_) : "missing";
      } else if (drawNode_(*node)) {
        open.push_back({node->falseTree().get(), place.below + "└─ no: ", place.below + "   "});
        open.push_back({node->trueTree().get(), place.below + "├─ yes: ", place.below + "│  "});
      }
      text_ += '\n';
    }
  }

  /// Whether its subtrees are to follow.
  bool drawNode_(const vxDecisionTreeNode& node) {
    if (times_[&node] > 1) {
      const auto [entry, isNew] = numbers_.emplace(&node, numbers_.size() + 1);
      if (!isNew) {
        text_ += fmt::format("as [{}]", entry->second);
        return false;
      }
      text_ += fmt::format("[{}] ", entry->second);
    }
    const auto predicate = node.predicateFunction();
    text_ += (predicate ? predicateText(*predicate, names_) : std::string("missing")) + "?";
    return true;
  }

  const Names& names_;
  std::map<const vxDecisionTreeNode*, long> times_;
  std::map<const vxDecisionTreeNode*, std::size_t> numbers_;  // of shared nodes drawn so far
  std::string text_;
};

}  // namespace

std::string predicateText(const vxPredicateFunction& predicate, const Names& names) {
  if (const auto* compare = dynamic_cast<const vxComparisonPredicate*>(&predicate)) {
    return fmt::format("{} > {}", measurementName(names, compare->measurementIndex1()),
                       measurementName(names, compare->measurementIndex2()));
  }
  if (const auto* range = dynamic_cast<const vxRangePredicate*>(&predicate)) {
    return rangeText(*range, names);
  }
  if (const auto* validity = dynamic_cast<const vxValidityPredicate*>(&predicate)) {
    const std::vector<long> indices = validity->measurementIndices();
    return indices.empty() ? "always" : nameList(indices, names) + " valid";
  }
  return "a predicate of another kind";
}

std::map<const vxDecisionTreeNode*, long> timesReached(const vxDecisionTree* root) {
  std::map<const vxDecisionTreeNode*, long> times;
  std::vector<const vxDecisionTree*> open{root};
  while (!open.empty()) {
    const auto* node = dynamic_cast<const vxDecisionTreeNode*>(open.back());
    open.pop_back();
    if (node == nullptr || ++times[node] > 1) continue;
    open.push_back(node->falseTree().get());
    open.push_back(node->trueTree().get());
  }
  return times;
}

std::string treeText(const vxDecisionTree* tree, const Names& names) {
  return TreeDrawing(tree, names).text();
}

}  // namespace cli
