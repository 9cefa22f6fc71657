// SPDX-License-Identifier: MIT
#include "vxclss/decision_tree.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/numbers.h"
#include "tests/support/tree_samples.h"

namespace {

const vxComparisonPredicate kFirstIsGreater(0, 1);

/// Asks kFirstIsGreater; its leaves have the labels {1, 2} and {3, 1}.
vxDecisionTreeNode sampleNode() {
  return vxDecisionTreeNode(kFirstIsGreater, leafWith({1, 2}), leafWith({3, 1}));
}

std::vector<long> leafLabels(const TreeHandle& tree) {
  return dynamic_cast<const vxDecisionTreeLeaf&>(*tree).categoryLabels();
}

TEST(DecisionTreeLeafTest, HoldsACopyOfItsResult) {
  vxClassifierResult result = resultWith({4, 2}, -1.5);
  const vxClassifierResult before = result;
  const vxDecisionTreeLeaf leaf(result);
  result = vxClassifierResult();
  EXPECT_EQ(leaf.classifierResult(), before);
}

TEST(DecisionTreeLeafTest, ReplacesItsResult) {
  vxDecisionTreeLeaf leaf = leafWith({1});
  leaf.classifierResult(resultWith({4, 2}, 0.5));
  EXPECT_EQ(leaf.classifierResult(), resultWith({4, 2}, 0.5));
  leaf.classifierResult(leaf.classifierResult());
  EXPECT_EQ(leaf.classifierResult(), resultWith({4, 2}, 0.5));
}

TEST(DecisionTreeLeafTest, ListsItsLabelsInTheResultsOrder) {
  EXPECT_EQ(leafWith({7, 0, 5}).categoryLabels(), (std::vector<long>{7, 0, 5}));
  EXPECT_EQ(leafWith({7, 0, 5}).numCategories(), 3);
  EXPECT_EQ(leafWith({}).categoryLabels(), std::vector<long>());
  EXPECT_EQ(leafWith({}).numCategories(), 0);
}

TEST(DecisionTreeLeafTest, KeepsLabelsThatAnArchiveRepeats) {
  EXPECT_EQ(leafWith({5, 5, 7, 5}).categoryLabels(), (std::vector<long>{5, 5, 7, 5}));
  EXPECT_EQ(leafWith({5, 5, 7, 5}).numCategories(), 4);
}

TEST(DecisionTreeLeafTest, IsEqualToALeafWithAnEqualResult) {
  const vxDecisionTreeLeaf leaf = leafWith({1, 2}, 0.5);
  EXPECT_TRUE(leaf == leafWith({1, 2}, 0.5));
  EXPECT_TRUE(leaf != leafWith({2, 1}, 0.5));
  EXPECT_TRUE(leaf != leafWith({1, 2}, 0.25));
  EXPECT_FALSE(leaf.isEqual(vxDecisionTreeNode()));
  EXPECT_FALSE(leaf.isEqual(HostTree({1, 2})));
}

TEST(DecisionTreeLeafTest, DiffersFromItselfIfItsResultHoldsANaN) {
  const vxDecisionTreeLeaf leaf = leafWith({1}, kNaN);
  EXPECT_FALSE(leaf == leaf);
  EXPECT_FALSE(leaf.isEqual(*leaf.clone()));
}

TEST(DecisionTreeLeafTest, ClonesIntoALeafOfItsOwn) {
  vxDecisionTreeLeaf leaf = leafWith({1, 2});
  const vxPtrHandle<vxDecisionTree> clone = leaf.clone();
  EXPECT_EQ(clone->referenceCount(), 1);
  leaf.classifierResult(resultWith({9}));
  EXPECT_EQ(clone->categoryLabels(), (std::vector<long>{1, 2}));
}

TEST(DecisionTreeNodeTest, HasOneEmptyLeafForBothAnswersByDefault) {
  const vxDecisionTreeNode node;
  EXPECT_EQ(node.trueTree(), node.falseTree());
  EXPECT_EQ(leafLabels(node.trueTree()), std::vector<long>());
  EXPECT_TRUE(vxRangePredicate().isEqual(*node.predicateFunction()));
  EXPECT_EQ(node.numCategories(), 0);
  EXPECT_NE(node.trueTree(), vxDecisionTreeNode().trueTree());
}

TEST(DecisionTreeNodeTest, StoresClonesOfWhatItIsMadeOf) {
  vxComparisonPredicate predicate(0, 1);
  vxDecisionTreeLeaf trueLeaf = leafWith({1});
  vxDecisionTreeLeaf falseLeaf = leafWith({2});
  const vxDecisionTreeNode node(predicate, trueLeaf, falseLeaf);
  predicate = vxComparisonPredicate(5, 6);
  trueLeaf.classifierResult(resultWith({8}));
  falseLeaf.classifierResult(resultWith({9}));
  EXPECT_TRUE(kFirstIsGreater.isEqual(*node.predicateFunction()));
  EXPECT_EQ(leafLabels(node.trueTree()), (std::vector<long>{1}));
  EXPECT_EQ(leafLabels(node.falseTree()), (std::vector<long>{2}));
  EXPECT_EQ(trueLeaf.referenceCount() + falseLeaf.referenceCount() + predicate.referenceCount(), 0);
}

TEST(DecisionTreeNodeTest, ClonesOneSubtreeTwiceForBothAnswers) {
  const vxDecisionTreeLeaf leaf = leafWith({1});
  const vxDecisionTreeNode node(kFirstIsGreater, leaf, leaf);
  EXPECT_NE(node.trueTree(), node.falseTree());
  EXPECT_TRUE(node.trueTree()->isEqual(*node.falseTree()));
}

TEST(DecisionTreeNodeTest, ClonesSharedObjectsToo) {
  const TreeHandle leaf(new vxDecisionTreeLeaf(leafWith({1})));
  const PredicateHandle predicate(new vxRangePredicate);
  const vxDecisionTreeNode node(*predicate, *leaf, *leaf);
  EXPECT_NE(node.trueTree(), leaf);
  EXPECT_NE(node.falseTree(), leaf);
  EXPECT_NE(node.predicateFunction(), predicate);
  EXPECT_EQ(leaf->referenceCount(), 1);
}

TEST(DecisionTreeNodeTest, ReplacesEachPartByAClone) {
  vxDecisionTreeNode node = sampleNode();
  vxDecisionTreeLeaf leaf = leafWith({8});
  vxRangePredicate predicate({1.0, 2.0}, {3});
  node.trueTree(leaf);
  EXPECT_EQ(node, vxDecisionTreeNode(kFirstIsGreater, leafWith({8}), leafWith({3, 1})));
  node.falseTree(sampleNode());
  EXPECT_EQ(node, vxDecisionTreeNode(kFirstIsGreater, leafWith({8}), sampleNode()));
  node.predicateFunction(predicate);
  const vxDecisionTreeNode expected(predicate, leafWith({8}), sampleNode());
  leaf.classifierResult(resultWith({9}));
  predicate = vxRangePredicate();
  EXPECT_EQ(node, expected);
}

TEST(DecisionTreeNodeTest, SharesSubtreesAndPredicateWithItsCopies) {
  const vxDecisionTreeNode node = sampleNode();
  const vxDecisionTreeNode copy(node);
  vxDecisionTreeNode assigned;
  assigned = node;
  const vxPtrHandle<vxDecisionTree> clone = node.clone();
  const std::vector<const vxDecisionTree*> copies = {&copy, &assigned, clone.get()};
  for (const vxDecisionTree* tree : copies) {
    const vxDecisionTreeNode& other = asNode(*tree);
    EXPECT_EQ(other.trueTree(), node.trueTree());
    EXPECT_EQ(other.falseTree(), node.falseTree());
    EXPECT_EQ(other.predicateFunction(), node.predicateFunction());
  }
  EXPECT_EQ(node.trueTree()->referenceCount(), 5) << "four nodes and the handle asked";
}

TEST(DecisionTreeNodeTest, ChangesNoneOfItsCopies) {
  vxDecisionTreeNode node = sampleNode();
  const vxDecisionTreeNode copy(node);
  node.trueTree(leafWith({8}));
  node.falseTree(leafWith({9}));
  node.predicateFunction(vxRangePredicate());
  EXPECT_EQ(copy, sampleNode());
}

TEST(DecisionTreeNodeTest, CanBeAssignedItself) {
  vxDecisionTreeNode node = sampleNode();
  node = *&node;
  EXPECT_EQ(node, sampleNode());
}

TEST(DecisionTreeNodeTest, CanBeAssignedOneOfItsDescendants) {
  const vxDecisionTreeNode inner = sampleNode();
  for (const bool onTheTrueSide : {true, false}) {
    vxDecisionTreeNode node = onTheTrueSide
                                  ? vxDecisionTreeNode(vxRangePredicate(), inner, leafWith({4}))
                                  : vxDecisionTreeNode(vxRangePredicate(), leafWith({4}), inner);
    vxDecisionTreeNode root(vxValidityPredicate(), node, leafWith({5}));
    const vxDecisionTree* child = root.trueTree().get();
    const vxDecisionTree* grandchild =
        onTheTrueSide ? asNode(*child).trueTree().get() : asNode(*child).falseTree().get();
    root = asNode(*grandchild);
    EXPECT_EQ(root, sampleNode());
  }
}

TEST(DecisionTreeNodeTest, CanTakeItselfAndItsOwnPartsThroughItsSetters) {
  vxDecisionTreeNode node(kFirstIsGreater, sampleNode(), leafWith({4}));
  node.trueTree(*asNode(*node.trueTree()).falseTree().get());
  EXPECT_EQ(node, vxDecisionTreeNode(kFirstIsGreater, leafWith({3, 1}), leafWith({4})));
  const vxDecisionTree* trueTree = node.trueTree().get();
  node.trueTree(*trueTree);
  const vxPredicateFunction* predicate = node.predicateFunction().get();
  node.predicateFunction(*predicate);
  EXPECT_EQ(node, vxDecisionTreeNode(kFirstIsGreater, leafWith({3, 1}), leafWith({4})));

  const vxDecisionTreeNode before(node);
  node.falseTree(node);
  EXPECT_EQ(node, vxDecisionTreeNode(kFirstIsGreater, leafWith({3, 1}), before));
  EXPECT_EQ(asNode(*node.falseTree()).falseTree(), before.falseTree()) << "shared, not cyclic";
}

TEST(DecisionTreeNodeTest, ListsTheFalseBranchsLabelsFirst) {
  EXPECT_EQ(sampleNode().categoryLabels(), (std::vector<long>{3, 1, 2}));
  EXPECT_EQ(sampleNode().numCategories(), 3);
  const vxDecisionTreeNode node(kFirstIsGreater, leafWith({9, 2}), sampleNode());
  EXPECT_EQ(node.categoryLabels(), (std::vector<long>{3, 1, 2, 9}));
}

TEST(DecisionTreeNodeTest, KeepsRepeatedLabelsOfTheFalseBranchOnly) {
  EXPECT_EQ(
      vxDecisionTreeNode(kFirstIsGreater, leafWith({2, 2, 6}), leafWith({6, 6})).categoryLabels(),
      (std::vector<long>{6, 6, 2}));
}

TEST(DecisionTreeNodeTest, AsksAHostsTreeForItsLabels) {
  const vxDecisionTreeNode node(kFirstIsGreater, HostTree({4, 4, 3}), HostTree({3, 3}));
  EXPECT_EQ(node.categoryLabels(), (std::vector<long>{3, 3, 4}));
}

TEST(DecisionTreeNodeTest, HasNoLabelsWhereASubtreeIsMissing) {
  const TreeHandle none;
  const TreeHandle leaf(new vxDecisionTreeLeaf(leafWith({1})));
  const PredicateHandle noPredicate;
  for (const auto& [trueTree, falseTree] : {std::pair(none, leaf), {leaf, none}, {none, none}}) {
    const vxDecisionTreeNode node = nodeWith(trueTree, falseTree, noPredicate);
    expectThrows<vxBadPointer>([&] { node.categoryLabels(); }, L"");
    expectThrows<vxBadPointer>([&] { node.numCategories(); }, L"");
    const vxDecisionTreeNode above(kFirstIsGreater, node, leafWith({1}));
    expectThrows<vxBadPointer>([&] { above.categoryLabels(); }, L"");
  }
  EXPECT_EQ(nodeWith(leaf, leaf, noPredicate).categoryLabels(), (std::vector<long>{1}));
}

TEST(DecisionTreeNodeTest, IsEqualToOneOfTheSameStructure) {
  const vxDecisionTreeNode node = sampleNode();
  EXPECT_TRUE(node == sampleNode());
  EXPECT_TRUE(node != vxDecisionTreeNode(vxRangePredicate(), leafWith({1, 2}), leafWith({3, 1})));
  EXPECT_TRUE(node != vxDecisionTreeNode(kFirstIsGreater, leafWith({1}), leafWith({3, 1})));
  EXPECT_TRUE(node != vxDecisionTreeNode(kFirstIsGreater, leafWith({1, 2}), leafWith({3})));
  EXPECT_FALSE(node.isEqual(*node.trueTree()));
  EXPECT_FALSE(node.isEqual(HostTree({3, 1, 2})));
}

TEST(DecisionTreeNodeTest, DiffersFromItsMirrorImage) {
  EXPECT_FALSE(sampleNode() ==
               vxDecisionTreeNode(vxComparisonPredicate(1, 0), leafWith({3, 1}), leafWith({1, 2})));
}

TEST(DecisionTreeNodeTest, AsksAHostsTreeWhetherItIsEqual) {
  const vxDecisionTreeNode node(kFirstIsGreater, HostTree({1}), HostTree({2}));
  EXPECT_TRUE(node == vxDecisionTreeNode(kFirstIsGreater, HostTree({1}), HostTree({2})));
  EXPECT_FALSE(node == vxDecisionTreeNode(kFirstIsGreater, HostTree({1}), HostTree({3})));
}

TEST(DecisionTreeNodeTest, DiffersFromItselfIfASharedLeafHoldsANaN) {
  const vxDecisionTreeNode node(kFirstIsGreater, leafWith({1}), leafWith({1}, kNaN));
  const vxDecisionTreeNode copy(node);
  EXPECT_EQ(copy.falseTree(), node.falseTree());
  EXPECT_FALSE(node == node);
  EXPECT_FALSE(node == copy);
}

/// A node from one letter a part: 0 none, a and b two that differ.
vxDecisionTreeNode lettered(const std::string& parts) {
  const auto tree = [](char letter) {
    return letter == '0' ? TreeHandle() : TreeHandle(new vxDecisionTreeLeaf(leafWith({letter})));
  };
  const auto predicate = [](char letter) {
    return letter == '0' ? PredicateHandle() : PredicateHandle(new vxValidityPredicate({letter}));
  };
  return nodeWith(tree(parts[1]), tree(parts[2]), predicate(parts[0]));
}

struct Comparison {
  const char* name;
  std::string a;
  std::string b;
  const char* outcome;
};

class IncompleteNodeTest : public testing::TestWithParam<Comparison> {};

TEST_P(IncompleteNodeTest, ComparesPredicatesThenTrueThenFalseSubtrees) {
  const Comparison& row = GetParam();
  const auto compare = [](const vxDecisionTreeNode& a, const vxDecisionTreeNode& b) -> std::string {
    try {
      return a == b ? "equal" : "different";
    } catch (const vxBadPointer&) {
      return "vxBadPointer";
    }
  };
  EXPECT_EQ(compare(lettered(row.a), lettered(row.b)), row.outcome);
  EXPECT_EQ(compare(lettered(row.b), lettered(row.a)), row.outcome);
}

INSTANTIATE_TEST_SUITE_P(
    Node, IncompleteNodeTest,
    testing::Values(Comparison{"Complete", "aaa", "aaa", "equal"},
                    Comparison{"NoPredicate", "aaa", "0aa", "vxBadPointer"},
                    Comparison{"NoPredicateInBoth", "0aa", "0aa", "vxBadPointer"},
                    Comparison{"NoPredicateOthersDiffer", "abb", "0aa", "vxBadPointer"},
                    Comparison{"NoTrueTree", "aaa", "a0a", "vxBadPointer"},
                    Comparison{"NoTrueTreeInBoth", "a0a", "a0a", "vxBadPointer"},
                    Comparison{"NoTrueTreeFalseTreesDiffer", "a0b", "aaa", "vxBadPointer"},
                    Comparison{"PredicatesDifferNoTrueTree", "a0a", "b0a", "different"},
                    Comparison{"NoFalseTree", "aaa", "aa0", "vxBadPointer"},
                    Comparison{"NoFalseTreeInBoth", "aa0", "aa0", "vxBadPointer"},
                    Comparison{"TrueTreesDifferNoFalseTree", "aa0", "ab0", "different"},
                    Comparison{"PredicatesDifferNothingElse", "a00", "b00", "different"}),
    [](const auto& test) { return test.param.name; });

TEST(DecisionTreeNodeTest, DiffersFromALeafWithoutLookingAtItsParts) {
  EXPECT_FALSE(lettered("000").isEqual(leafWith({1})));
  EXPECT_FALSE(leafWith({1}).isEqual(lettered("000")));
  EXPECT_FALSE(lettered("000").isEqual(HostTree({1})));
}

class DerivedNode : public vxDecisionTreeNode {
  using vxDecisionTreeNode::vxDecisionTreeNode;
};

TEST(DecisionTreeNodeTest, CanBeDerivedFrom) {
  const DerivedNode derived(kFirstIsGreater, sampleNode(), leafWith({4}));
  EXPECT_EQ(derived.categoryLabels(), (std::vector<long>{4, 3, 1, 2}));
}

/// A host's tree that compares nothing.
class IncomparableTree : public HostTree {
 public:
  using HostTree::HostTree;
  bool isEqual(const vxDecisionTree& other) const override {
    return vxDecisionTree::isEqual(other);
  }
};

TEST(DecisionTreeTest, HasNothingToCompareOfItsOwn) {
  EXPECT_TRUE(IncomparableTree({1}).isEqual(IncomparableTree({2})));
}

TEST(DecisionTreeTest, CanBeMoved) {
  vxDecisionTreeLeaf leaf = leafWith({1, 2});
  const vxDecisionTreeLeaf taker(std::move(leaf));
  EXPECT_EQ(taker, leafWith({1, 2}));
  vxDecisionTreeLeaf target = leafWith({3});
  target = leafWith({1, 2});
  EXPECT_EQ(target, taker);
}

TEST(DecisionTreeTest, IsStoredAnewAfterEachChange) {
  vxDecisionTreeLeaf leaf = leafWith({1});
  EXPECT_EQ(*arrivedAfterChange(leaf, [&] { leaf.classifierResult(resultWith({2})); }),
            leafWith({2}));
  const vxDecisionTreeLeaf other = leafWith({3});
  EXPECT_EQ(*arrivedAfterChange(leaf, [&] { leaf = other; }), other);

  vxDecisionTreeNode node = sampleNode();
  EXPECT_EQ(*arrivedAfterChange(node, [&] { node.trueTree(leafWith({7})); }), node);
  EXPECT_EQ(*arrivedAfterChange(node, [&] { node.falseTree(leafWith({8})); }), node);
  EXPECT_EQ(*arrivedAfterChange(node, [&] { node.predicateFunction(vxRangePredicate()); }), node);
  EXPECT_EQ(node, vxDecisionTreeNode(vxRangePredicate(), leafWith({7}), leafWith({8})));
  const vxDecisionTreeNode empty;
  EXPECT_EQ(*arrivedAfterChange(node, [&] { node = empty; }), empty);
}

}  // namespace
