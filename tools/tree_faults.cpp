// SPDX-License-Identifier: MIT
#include "tools/tree_faults.h"

#include <fmt/format.h>

#include <set>
#include <string>
#include <vector>

#include "tools/model_text.h"
#include "tools/tree_text.h"

namespace cli {
namespace {

void checkLeaf(const vxDecisionTreeLeaf& leaf, const Names& names, FaultList& faults) {
  for (const vxClassifierCategoryResult& result : leaf.classifierResult().categoryResults()) {
    const std::string name = categoryName(names, result.categoryLabel());
    faults.need(isIndexOf(names.categories, result.categoryLabel()), "a leaf decides for " + name);
    faults.need(isShare(result.matchScore()) && isShare(result.classScore()) &&
                    isCost(result.expectedCost()),
                fmt::format("a leaf has scores {} and {} and cost {} for {}", result.matchScore(),
                            result.classScore(), result.expectedCost(), name));
  }
}

void checkPredicate(const vxPredicateFunction* predicate, const Names& names, FaultList& faults) {
  std::vector<long> indices;
  if (const auto* compare = dynamic_cast<const vxComparisonPredicate*>(predicate)) {
    indices = {compare->measurementIndex1(), compare->measurementIndex2()};
  } else if (const auto* range = dynamic_cast<const vxRangePredicate*>(predicate)) {
    indices = range->measurementIndices();
    faults.need(range->measurementRange().low() <= range->measurementRange().high(),
                fmt::format("a question for {}", predicateText(*range, names)));
  } else if (const auto* validity = dynamic_cast<const vxValidityPredicate*>(predicate)) {
    indices = validity->measurementIndices();
  } else {
    faults.need(predicate != nullptr, "the question of a node is missing");
  }
  for (const long index : indices) {
    faults.need(isIndexOf(names.measurements, index),
                fmt::format("a question for measurement {}, which has no name", index));
  }
}

}  // namespace

void findTreeFaults(const vxDecisionTree* tree, const Names& names, FaultList& faults) {
  std::set<const vxDecisionTreeNode*> done;
  std::vector<const vxDecisionTree*> open{tree};
  while (!open.empty()) {
    const vxDecisionTree* next = open.back();
    open.pop_back();
    if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(next)) {
      checkLeaf(*leaf, names, faults);
      continue;
    }
    const auto* node = dynamic_cast<const vxDecisionTreeNode*>(next);
    faults.need(node != nullptr, "a part of the tree is missing");
    if (node == nullptr || !done.insert(node).second) continue;
    checkPredicate(node->predicateFunction().get(), names, faults);
    open.push_back(node->falseTree().get());
    open.push_back(node->trueTree().get());
  }
}

}  // namespace cli
