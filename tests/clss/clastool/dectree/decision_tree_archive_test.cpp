// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/plain_tree.h"
#include "tests/support/samples.h"
#include "tests/support/tree_samples.h"
#include "tests/support/unknown_version.h"
#include "vxclss/decision_tree.h"

namespace {

const std::string kLeaf = newClassHex("vxDecisionTreeLeaf");
const std::string kNode = newClassHex("vxDecisionTreeNode");
const std::string kComparison = newClassHex("vxComparisonPredicate");
const std::string kRange = newClassHex("vxRangePredicate");

const std::string kEmptyResult = "00 00 00000000 0000000000000000 ";
const std::string kFullRange = "00 00 000000000000f0ff 000000000000f07f 00 01000000 00000000 ";

/// A handle to a fresh tree or predicate.
template <class T>
TreeHandle treeOf(const T& tree) {
  return TreeHandle(tree.clone());
}
template <class T>
PredicateHandle predicateOf(const T& predicate) {
  return PredicateHandle(predicate.clone());
}

TEST(DecisionTreeArchiveTest, HasALeafsResultAfterItsVersions) {
  vxDecisionTreeLeaf leaf = leafWith({3}, -3.5);
  EXPECT_EQ(storedHex(leaf), packedHex("00 00  00 00 01000000  00 03000000 000000000000e03f "
                                       "000000000000d03f 0000000000000000  0000000000000cc0"));
}

TEST(DecisionTreeArchiveTest, HasTheSharedLeafOfADefaultNodeOnce) {
  vxDecisionTreeNode node;
  const std::string parts = "00 00 " + kLeaf + "00 00" + kEmptyResult;
  EXPECT_EQ(storedHex(node), packedHex(parts + "03 00000000 " + kRange + kFullRange));

  vxDecisionTreeNode other(vxComparisonPredicate(0, 1), leafWith({1}), leafWith({2}));
  load(stored(node), other);
  EXPECT_EQ(other, node);
  EXPECT_EQ(other.trueTree(), other.falseTree()) << "shared again";
}

TEST(DecisionTreeArchiveTest, HasTrueTreeThenFalseTreeThenPredicate) {
  const TreeHandle none;
  const vxDecisionTreeNode inner = nodeWith(none, none, predicateOf(vxComparisonPredicate(3, 2)));
  vxDecisionTreeNode node(vxComparisonPredicate(1, 4), inner, leafWith({}));
  EXPECT_EQ(storedHex(node),
            packedHex("00 00 " + kNode + "00 00 00 00 " + kComparison + "00 00 03000000 02000000" +
                      kLeaf + "00 00" + kEmptyResult +  // the third class
                      "02 01000000 00 00 01000000 04000000"));
}

TEST(DecisionTreeArchiveTest, WritesNullForWhatIsMissing) {
  vxDecisionTreeNode node = nodeWith(TreeHandle(), TreeHandle(), PredicateHandle());
  EXPECT_EQ(storedHex(node), "0000000000");
  EXPECT_TRUE(node.trueTree().isNull());
  EXPECT_TRUE(node.falseTree().isNull());
  EXPECT_TRUE(node.predicateFunction().isNull());
}

TEST(DecisionTreeArchiveTest, SharesWhatIsSharedAcrossLevels) {
  const TreeHandle leaf = treeOf(leafWith({1}));
  const PredicateHandle predicate = predicateOf(vxRangePredicate());
  // Within one archive the leaf of the inner node is the leaf of the outer one.
  TreeHandle inner = treeOf(nodeWith(leaf, leaf, predicate));
  unsigned char version = 0;
  TreeHandle sharedLeaf = asNode(*inner).trueTree();
  PredicateHandle sharedPredicate = asNode(*inner).predicateFunction();
  vxDecisionTreeNode node;
  load(stored(version, version, inner, sharedLeaf, sharedPredicate), node);

  const vxDecisionTreeNode& below = asNode(*node.trueTree());
  EXPECT_EQ(below.trueTree(), node.falseTree());
  EXPECT_EQ(below.falseTree(), node.falseTree());
  EXPECT_EQ(below.predicateFunction(), node.predicateFunction());
  vxDecisionTreeNode again;
  load(stored(node), again);
  EXPECT_EQ(storedHex(again), storedHex(node));
  EXPECT_EQ(again, node);
}

TEST(DecisionTreeArchiveTest, RoundTripsRandomTrees) {
  RandomTrees random(41);
  for (int round = 0; round < 300; ++round) {
    TreeHandle tree = random.tree(1 + random.below(10));
    const std::string bytes = stored(tree);
    auto arrived = loaded<TreeHandle>(bytes);
    ASSERT_TRUE(arrived->isEqual(*tree)) << "round " << round;
    ASSERT_EQ(toHex(stored(arrived)), toHex(bytes)) << "round " << round;
    ASSERT_EQ(arrived->categoryLabels(), plain::categoryLabels(*tree)) << "round " << round;
  }
}

TEST(DecisionTreeArchiveTest, HasNothingWhereAnObjectOfAnotherClassStands) {
  const vxPtrHandle_const<vxFeaturePattern> pattern = sharedPattern({1.0});
  const TreeHandle leaf = treeOf(leafWith({1}));
  const PredicateHandle predicate = predicateOf(vxRangePredicate());

  const vxDecisionTreeNode wrongTrees = nodeWith(pattern, predicate, predicate);
  EXPECT_TRUE(wrongTrees.trueTree().isNull());
  EXPECT_TRUE(wrongTrees.falseTree().isNull());
  EXPECT_TRUE(vxRangePredicate().isEqual(*wrongTrees.predicateFunction())) << "still in step";

  const vxDecisionTreeNode wrongPredicate = nodeWith(leaf, leaf, leaf);
  EXPECT_EQ(wrongPredicate.categoryLabels(), (std::vector<long>{1}));
  EXPECT_TRUE(wrongPredicate.predicateFunction().isNull());
}

TEST(DecisionTreeArchiveTest, RefusesATreeThatReachesItself) {
  vxDecisionTreeNode node;
  const vxDecisionTreeNode before(node);
  TreeHandle handle;
  EXPECT_THROW(loadFront(fromHex(kNode + "00 00 03 00000000 00 00"), handle), vxArchive::Malformed);
  EXPECT_THROW(loadFront(fromHex("00 00" + kNode + "00 00 00 03 00000000 00"), node),
               vxArchive::Malformed);
  EXPECT_EQ(node, before);
}

TEST(DecisionTreeArchiveTest, RefusesAnotherVersionAtEveryLevel) {
  // The leaf's two levels stand before the three version bytes of its result, all within a node.
  vxDecisionTreeNode node(vxComparisonPredicate(0, 1), leafWith({3}), leafWith({4}));
  const std::string bytes = stored(node);
  const std::size_t leaf = fromHex("00 00" + kLeaf).size();
  const std::size_t predicate = bytes.size() - fromHex("00 00 00000000 01000000").size();
  const std::pair<std::size_t, std::string> places[] = {{0, ""},
                                                        {1, ""},
                                                        {leaf, ""},
                                                        {leaf + 1, ""},
                                                        {leaf + 2, recordUnit()},
                                                        {leaf + 3, ""},
                                                        {predicate, ""},
                                                        {predicate + 1, ""},
                                                        {leaf + 8, recordUnit()}};
  for (const auto& [place, name] : places) {
    SCOPED_TRACE(place);
    std::string changed = bytes;
    changed.at(place) = '\xff';
    vxDecisionTreeNode target;
    expectUnknownVersion([&] { load(changed, target); }, name);
    EXPECT_EQ(target, vxDecisionTreeNode());
  }
}

TEST(DecisionTreeArchiveTest, LeavesItsTargetAloneWhereTheBytesEnd) {
  vxDecisionTreeNode node(vxComparisonPredicate(0, 1), leafWith({3}), leafWith({4}));
  forEachTruncation(stored(node), [](const std::string& bytes) {
    vxDecisionTreeNode target(vxRangePredicate(), leafWith({5}), leafWith({6}));
    const vxDecisionTreeNode before(target);
    EXPECT_THROW(loadFront(bytes, target), vxArchive::Malformed);
    EXPECT_EQ(target, before);
  });
}

TEST(DecisionTreeArchiveTest, CannotHoldAHostsClassThatIsNotRegistered) {
  vxDecisionTreeNode node(vxRangePredicate(), HostTree({1}), leafWith({2}));
  EXPECT_THROW(stored(node), vxArchive::Unstorable);
  node = vxDecisionTreeNode(HostPredicate([](const vxFeaturePattern&) { return true; }),
                            leafWith({1}), leafWith({2}));
  EXPECT_THROW(stored(node), vxArchive::Unstorable);
}

}  // namespace
