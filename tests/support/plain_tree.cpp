// SPDX-License-Identifier: MIT
#include "tests/support/plain_tree.h"

#include <algorithm>
#include <limits>

namespace plain {

namespace {

// An index past the end is invalid, and has no measurement to ask for.
bool isUsable(const vxFeaturePattern& pattern, long index) {
  std::vector<long> invalid = vxFeaturePattern(pattern).invalidFeatureIndices();
  return index < pattern.numMeasurements() &&
         std::find(invalid.begin(), invalid.end(), index) == invalid.end();
}

double value(const vxFeaturePattern& pattern, long index) {
  return pattern.featureMeasurements(false).at(static_cast<std::size_t>(index));
}

}  // namespace

bool outcome(const vxPredicateFunction& predicate, const vxFeaturePattern& pattern) {
  if (const auto* comparison = dynamic_cast<const vxComparisonPredicate*>(&predicate)) {
    const long first = comparison->measurementIndex1();
    const long second = comparison->measurementIndex2();
    return isUsable(pattern, first) && isUsable(pattern, second) &&
           value(pattern, first) > value(pattern, second);
  }
  if (const auto* range = dynamic_cast<const vxRangePredicate*>(&predicate)) {
    for (const long index : range->measurementIndices()) {
      if (!isUsable(pattern, index)) return false;
      if (!range->measurementRange().isWithin(value(pattern, index))) return false;
    }
    return true;
  }
  for (const long index :
       dynamic_cast<const vxValidityPredicate&>(predicate).measurementIndices()) {
    if (!isUsable(pattern, index)) return false;
  }
  return true;
}

std::vector<long> categoryLabels(const vxDecisionTree& tree) {
  if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&tree)) {
    std::vector<long> labels;
    for (const auto& category : leaf->classifierResult().categoryResults()) {
      labels.push_back(category.categoryLabel());
    }
    return labels;
  }
  const vxDecisionTreeNode& node = asNode(tree);
  std::vector<long> labels = categoryLabels(*node.falseTree());
  for (const long label : categoryLabels(*node.trueTree())) {
    if (std::find(labels.begin(), labels.end(), label) == labels.end()) labels.push_back(label);
  }
  return labels;
}

bool isEqual(const vxDecisionTree& a, const vxDecisionTree& b) {
  const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&a);
  const auto* otherLeaf = dynamic_cast<const vxDecisionTreeLeaf*>(&b);
  if ((leaf == nullptr) != (otherLeaf == nullptr)) return false;
  if (leaf != nullptr) return leaf->classifierResult() == otherLeaf->classifierResult();
  const vxDecisionTreeNode& node = asNode(a);
  const vxDecisionTreeNode& other = asNode(b);
  return (*node.predicateFunction()).isEqual(*other.predicateFunction()) &&
         isEqual(*node.trueTree(), *other.trueTree()) &&
         isEqual(*node.falseTree(), *other.falseTree());
}

const vxClassifierResult& walk(const vxDecisionTree& tree, const vxFeaturePattern& pattern,
                               long& levels) {
  ++levels;
  if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&tree)) {
    return leaf->classifierResult();
  }
  const vxDecisionTreeNode& node = asNode(tree);
  const bool answer = outcome(*node.predicateFunction(), pattern);
  return walk(answer ? *node.trueTree() : *node.falseTree(), pattern, levels);
}

}  // namespace plain

TreeHandle RandomTrees::tree(int numNodes, bool holes) {
  std::vector<TreeHandle> pool;
  for (int i = 0; i < 3; ++i) pool.emplace_back(new vxDecisionTreeLeaf(leaf_(holes)));
  for (int i = 0; i < numNodes; ++i) {
    // The newer half, so that the tree becomes deep.
    const auto pick = [&] {
      const int size = static_cast<int>(pool.size());
      return pool[static_cast<std::size_t>(size / 2 + below(size - size / 2))];
    };
    const TreeHandle trueTree = pick();
    const TreeHandle falseTree = pick();
    const PredicateHandle predicate = predicate_();
    if (holes) {
      const auto kept = [this](auto handle) {
        return below(10) == 0 ? decltype(handle)() : handle;
      };
      pool.emplace_back(
          new vxDecisionTreeNode(nodeWith(kept(trueTree), kept(falseTree), kept(predicate))));
    } else {
      pool.emplace_back(new vxDecisionTreeNode(*predicate, *trueTree, *falseTree));
    }
  }
  return pool.back();
}

vxFeaturePattern RandomTrees::pattern() {
  std::vector<double> measurements;
  std::vector<long> invalid;
  const int count = below(6);
  for (int i = 0; i < count; ++i) {
    measurements.push_back(below(4));
    if (below(5) == 0) invalid.push_back(i);
  }
  return {measurements, invalid};
}

TreeHandle RandomTrees::unshared(const vxDecisionTree& tree, bool alter) {
  int untilAltered = alter ? 1 + below(6) : 0;
  return copy_(tree, untilAltered);
}

vxDecisionTreeLeaf RandomTrees::leaf_(bool mayDiffer) {
  std::vector<long> labels;
  for (int i = below(4); i > 0; --i) labels.push_back(below(5));  // repeats too
  const bool differs = mayDiffer && below(4) == 0;
  return leafWith(labels, differs ? std::numeric_limits<double>::quiet_NaN() : 0.0);
}

PredicateHandle RandomTrees::predicate_() {
  const std::vector<long> indices[] = {{}, {0}, {3, 1}, {5}};
  const std::vector<long>& list = indices[below(4)];
  switch (below(3)) {
    case 0:
      return PredicateHandle(new vxComparisonPredicate(below(2), 2 + below(2)));
    case 1:
      return PredicateHandle(new vxRangePredicate({1.0, 2.0}, list));
    default:
      return PredicateHandle(new vxValidityPredicate(list));
  }
}

// Counts down through leaves and predicates to the one that becomes another one.
TreeHandle RandomTrees::copy_(const vxDecisionTree& tree, int& untilAltered) {
  if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&tree)) {
    if (--untilAltered == 0) return TreeHandle(new vxDecisionTreeLeaf(leafWith({77})));
    return TreeHandle(new vxDecisionTreeLeaf(*leaf));
  }
  const vxDecisionTreeNode& node = asNode(tree);
  const bool alters = --untilAltered == 0;
  const TreeHandle trueTree = copy_(*node.trueTree(), untilAltered);
  const TreeHandle falseTree = copy_(*node.falseTree(), untilAltered);
  if (alters) {
    return TreeHandle(new vxDecisionTreeNode(vxComparisonPredicate(8, 9), *trueTree, *falseTree));
  }
  return TreeHandle(new vxDecisionTreeNode(*node.predicateFunction(), *trueTree, *falseTree));
}
