// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DECISION_TREE_H_
#define VXCLSS_DECISION_TREE_H_

#include <vector>

#include "vxclss/export.h"
#include "vxclss/predicate.h"
#include "vxclss/result.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A binary tree of questions with a ready-made classification result at each leaf.
///
/// A tree is a graph: nodes may share subtrees. What visits it takes time in the number of
/// distinct objects, whatever the number of paths, and no stack in proportion to its depth.
/// Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxDecisionTree : public vxPersistent, public vxRepBase {
 public:
  ~vxDecisionTree() override;

  /// Every label that some leaf can give. A node lists those below its false subtree first, then
  /// those below its true one that are not there yet. Throws vxBadPointer for a missing subtree.
  virtual std::vector<long> categoryLabels() const = 0;

  /// A copy of the concrete object; a node's copy shares its subtrees.
  virtual vxPtrHandle<vxDecisionTree> clone() const = 0;

  /// True here: the base has nothing to compare.
  virtual bool isEqual(const vxDecisionTree& other) const;

  /// The size of categoryLabels().
  long numCategories() const;

 protected:
  vxDecisionTree() = default;
  vxDecisionTree(const vxDecisionTree&) = default;
  vxDecisionTree(vxDecisionTree&&) = default;
  vxDecisionTree& operator=(const vxDecisionTree&) = default;
  vxDecisionTree& operator=(vxDecisionTree&&) = default;

  void dispatchSerialize(vxArchive& archive) override;
};

/// The end of a walk: the result that a pattern gets there. Equality compares the results.
class VXCLSS_EXPORT vxDecisionTreeLeaf : public vxDecisionTree {
 public:
  explicit vxDecisionTreeLeaf(const vxClassifierResult& classifierResult);
  vxDecisionTreeLeaf(const vxDecisionTreeLeaf&) = default;
  vxDecisionTreeLeaf(vxDecisionTreeLeaf&&) = default;
  vxDecisionTreeLeaf& operator=(const vxDecisionTreeLeaf& other);
  vxDecisionTreeLeaf& operator=(vxDecisionTreeLeaf&&) = default;
  ~vxDecisionTreeLeaf() override;

  const vxClassifierResult& classifierResult() const { return classifierResult_; }
  void classifierResult(const vxClassifierResult& result);

  /// The labels in the result's order, repeats included.
  std::vector<long> categoryLabels() const override;
  vxPtrHandle<vxDecisionTree> clone() const override;
  bool isEqual(const vxDecisionTree& other) const override;
  bool operator==(const vxDecisionTreeLeaf& other) const { return isEqual(other); }
  bool operator!=(const vxDecisionTreeLeaf& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  vxClassifierResult classifierResult_;
};

/// A question and what follows from either answer.
///
/// What a caller hands in is cloned; copies of a node share what it holds. Equality compares the
/// predicates, then the true subtrees, then the false ones; it throws vxBadPointer for a missing
/// one.
class VXCLSS_EXPORT vxDecisionTreeNode : public vxDecisionTree {
 public:
  /// A predicate that asks whether measurement 0 is valid, and one empty leaf for both answers.
  vxDecisionTreeNode();
  vxDecisionTreeNode(const vxPredicateFunction& predicate, const vxDecisionTree& trueTree,
                     const vxDecisionTree& falseTree);
  vxDecisionTreeNode(const vxDecisionTreeNode&) = default;
  vxDecisionTreeNode& operator=(const vxDecisionTreeNode& other);
  ~vxDecisionTreeNode() override;

  vxPtrHandle_const<vxDecisionTree> trueTree() const { return trueTree_; }
  void trueTree(const vxDecisionTree& tree);

  vxPtrHandle_const<vxDecisionTree> falseTree() const { return falseTree_; }
  void falseTree(const vxDecisionTree& tree);

  vxPtrHandle_const<vxPredicateFunction> predicateFunction() const { return predicate_; }
  void predicateFunction(const vxPredicateFunction& predicate);

  std::vector<long> categoryLabels() const override;
  vxPtrHandle<vxDecisionTree> clone() const override;
  bool isEqual(const vxDecisionTree& other) const override;
  bool operator==(const vxDecisionTreeNode& other) const { return isEqual(other); }
  bool operator!=(const vxDecisionTreeNode& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_TreeWalk;
  using Subtree = vxPtrHandle_const<vxDecisionTree>;

  static vxDecisionTreeNode* soleNode_(const Subtree& subtree);
  static void release_(Subtree subtree);

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  Subtree trueTree_;
  Subtree falseTree_;
  vxPtrHandle_const<vxPredicateFunction> predicate_;
};

#endif  // VXCLSS_DECISION_TREE_H_
