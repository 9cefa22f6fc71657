// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_TREE_SAMPLES_H_
#define TESTS_SUPPORT_TREE_SAMPLES_H_

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "vxclss/decision_tree.h"
#include "vxclss/predicate.h"

using TreeHandle = vxPtrHandle_const<vxDecisionTree>;
using PredicateHandle = vxPtrHandle_const<vxPredicateFunction>;

/// A result of these categories in this order. It comes from bytes, since only they can repeat a
/// label.
inline vxClassifierResult resultWith(const std::vector<long>& labels, double factor = 0.0) {
  unsigned char version = 0;
  unsigned long count = labels.size();
  std::string bytes = stored(version, version, count);
  double cost = 0.0;
  for (const long label : labels) {
    vxClassifierCategoryResult category(label, 0.5, 0.25, cost);
    bytes += stored(category);
    cost += 1.0;
  }
  bytes += stored(factor);
  return loaded<vxClassifierResult>(bytes);
}

inline vxDecisionTreeLeaf leafWith(const std::vector<long>& labels, double factor = 0.0) {
  return vxDecisionTreeLeaf(resultWith(labels, factor));
}

/// Asks whether measurement 0 is greater than 1; the labels are {1} where it is, {2} elsewhere.
inline vxDecisionTreeNode sampleTree() {
  return vxDecisionTreeNode(vxComparisonPredicate(0, 1), leafWith({1}), leafWith({2}));
}

/// A node with anything in its three places, empty handles too. It comes from bytes.
template <class True, class False, class Predicate>
vxDecisionTreeNode nodeWith(True trueTree, False falseTree, Predicate predicate) {
  unsigned char version = 0;
  vxDecisionTreeNode node;
  load(stored(version, version, trueTree, falseTree, predicate), node);
  return node;
}

inline const vxDecisionTreeNode& asNode(const vxDecisionTree& tree) {
  return dynamic_cast<const vxDecisionTreeNode&>(tree);
}

/// What stands in front of an object that comes by pointer as the first of its class, in hex.
inline std::string newClassHex(const std::string& name) {
  unsigned long size = name.size();
  return "01" + storedHex(size) + toHex(name) + " ";
}

/// Stores `object` by pointer, makes `change()` and stores it again; gives what arrives second.
template <class T, class Change>
vxPtrHandle<T> arrivedAfterChange(const T& object, Change change) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(archive, &object, unused);
  change();
  vxPersistent::serializePointer(archive, &object, unused);
  vxPtrHandle<T> first;
  vxPtrHandle<T> second;
  load(stream.str(), first, second);
  EXPECT_NE(first, second);
  return second;
}

/// A predicate of a host.
class HostPredicate : public vxPredicateFunction {
 public:
  using Function = std::function<bool(const vxFeaturePattern&)>;

  explicit HostPredicate(Function function) : function_(std::move(function)) {}

  bool outcome(const vxFeaturePattern& pattern) const override { return function_(pattern); }
  vxPtrHandle<vxPredicateFunction> clone() const override {
    return vxPtrHandle<vxPredicateFunction>(new HostPredicate(*this));
  }

 private:
  Function function_;
};

/// A tree of a host that is neither leaf nor node.
class HostTree : public vxDecisionTree {
 public:
  explicit HostTree(std::vector<long> labels) : labels_(std::move(labels)) {}

  std::vector<long> categoryLabels() const override { return labels_; }
  vxPtrHandle<vxDecisionTree> clone() const override {
    return vxPtrHandle<vxDecisionTree>(new HostTree(*this));
  }
  bool isEqual(const vxDecisionTree& other) const override {
    const auto* tree = dynamic_cast<const HostTree*>(&other);
    return tree != nullptr && labels_ == tree->labels_;
  }

 private:
  std::vector<long> labels_;
};

#endif  // TESTS_SUPPORT_TREE_SAMPLES_H_
