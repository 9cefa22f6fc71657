// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/attention_counter.h"
#include "tests/support/plain_tree.h"
#include "tests/support/small_stack.h"
#include "tests/support/tree_samples.h"
#include "vxclss/classifier_decision_tree.h"

namespace {

enum class Shape { eTrueSide, eFalseSide, eZigzag, eBothSides };

/// A tree of that many nodes in a row, the deepest one above a leaf of label `bottom`. Each level
/// asks whether measurement 0 is valid; the other side of a level is a leaf.
TreeHandle chain(Shape shape, int numLevels, long bottom = 0) {
  const vxRangePredicate predicate;
  const vxDecisionTreeLeaf leaf = leafWith({1, 2});
  TreeHandle tree(new vxDecisionTreeLeaf(leafWith({bottom, 3})));
  for (int level = 0; level < numLevels; ++level) {
    const bool below = shape == Shape::eTrueSide || (shape == Shape::eZigzag && level % 2 == 0);
    if (shape == Shape::eBothSides) {
      tree.reset(new vxDecisionTreeNode(predicate, *tree, *tree));
    } else if (below) {
      tree.reset(new vxDecisionTreeNode(predicate, *tree, leaf));
    } else {
      tree.reset(new vxDecisionTreeNode(predicate, leaf, *tree));
    }
  }
  return tree;
}

/// Polls of the attention check in a walk to a leaf, which has these labels.
long pollsOfWalk(const vxDecisionTree& tree, const vxFeaturePattern& pattern,
                 const std::vector<long>& labels) {
  vx_ClassifierDecisionTree classifier;
  classifier.trainManual(tree);
  vxClassifierResult result;
  const AttentionCounter counter;
  classifier.run(pattern, result);
  EXPECT_EQ(vxDecisionTreeLeaf(result).categoryLabels(), labels);
  return counter.polls();
}

const vxFeaturePattern kValid({1.0}, {});
const vxFeaturePattern kInvalid({1.0}, {0});

struct Chain {
  const char* name;
  Shape shape;
};
void PrintTo(const Chain& row, std::ostream* out) { *out << row.name; }

const auto kShapes =
    testing::Values(Chain{"TrueSide", Shape::eTrueSide}, Chain{"FalseSide", Shape::eFalseSide},
                    Chain{"Zigzag", Shape::eZigzag}, Chain{"BothSides", Shape::eBothSides});
const auto shapeName = [](const auto& test) { return test.param.name; };

class DeepTreeTest : public testing::TestWithParam<Chain> {};

TEST_P(DeepTreeTest, NeedsNoStackFor200000Levels) {
  constexpr int kLevels = 200'000;
  const Shape shape = GetParam().shape;
  onSmallStack([shape] {
    TreeHandle tree = chain(shape, kLevels);
    const TreeHandle same = chain(shape, kLevels);
    const TreeHandle otherBelow = chain(shape, kLevels, 9);
    EXPECT_TRUE(tree->isEqual(*same));
    EXPECT_TRUE(tree->isEqual(*tree->clone()));
    EXPECT_FALSE(tree->isEqual(*otherBelow));
    EXPECT_FALSE(otherBelow->isEqual(*tree));

    const bool deepIsFalse = shape == Shape::eFalseSide;
    const auto labels = deepIsFalse                  ? std::vector<long>{0, 3, 1, 2}
                        : shape == Shape::eBothSides ? std::vector<long>{0, 3}
                                                     : std::vector<long>{1, 2, 0, 3};
    EXPECT_EQ(tree->categoryLabels(), labels);
    EXPECT_EQ(otherBelow->numCategories(), static_cast<long>(labels.size()));

    if (shape != Shape::eZigzag) {
      EXPECT_EQ(pollsOfWalk(*tree, deepIsFalse ? kInvalid : kValid, {0, 3}), kLevels + 1);
    }
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*tree);
    const AllocationMeter meter;
    tree.reset();
    classifier.untrain();
    EXPECT_EQ(meter.calls(), 0u) << "destruction takes no memory";
  });
}

TEST_P(DeepTreeTest, IsStoredExactlyAsDeepAsItCanBeLoaded) {
  // The leaf, or the predicate beside it, is one level more.
  constexpr int kDeepest = vxArchive::kMaximumNesting - 1;
  TreeHandle tree = chain(GetParam().shape, kDeepest);
  const auto arrived = loaded<TreeHandle>(stored(tree));
  EXPECT_TRUE(arrived->isEqual(*tree));
  EXPECT_EQ(arrived->categoryLabels(), tree->categoryLabels());

  for (const int numLevels : {kDeepest + 1, 200'000}) {
    TreeHandle deeper = chain(GetParam().shape, numLevels);
    EXPECT_THROW(stored(deeper), vxArchive::Unstorable) << numLevels;
  }
}

TEST_P(DeepTreeTest, KeepsTheLowerHalfWhereSomeoneHoldsIt) {
  const Shape shape = GetParam().shape;
  onSmallStack([shape] {
    TreeHandle tree = chain(shape, 100'000);
    TreeHandle half = tree;
    for (int level = 0; level < 50'000; ++level) {
      const bool isTrueSide =
          shape != Shape::eFalseSide && !(shape == Shape::eZigzag && (99'999 - level) % 2 == 1);
      half = isTrueSide ? asNode(*half).trueTree() : asNode(*half).falseTree();
    }
    tree.reset();
    EXPECT_EQ(half->referenceCount(), 1);
    EXPECT_TRUE(half->isEqual(*chain(shape, 50'000)));
  });
}

INSTANTIATE_TEST_SUITE_P(Chains, DeepTreeTest, kShapes, shapeName);

/// One object on both sides of each of `numLevels` levels, as only an archive brings it.
vxDecisionTreeNode sharedLevels(int numLevels) {
  TreeHandle tree(new vxDecisionTreeLeaf(leafWith({4, 4, 5})));
  const PredicateHandle predicate(new vxRangePredicate);
  for (int level = 0; level < numLevels; ++level) {
    tree.reset(new vxDecisionTreeNode(nodeWith(tree, tree, predicate)));
  }
  return asNode(*tree);
}

TEST(SharedTreeTest, TakesNoTimeInTheNumberOfPaths) {
  constexpr int kLevels = 60;
  const vxDecisionTreeNode exact = sharedLevels(kLevels);
  EXPECT_EQ(exact.trueTree(), exact.falseTree());
  const TreeHandle clones = chain(Shape::eBothSides, kLevels);
  for (const TreeHandle& tree : {TreeHandle(exact.clone()), clones}) {
    const std::vector<long> labels =
        tree == clones ? std::vector<long>{0, 3} : leafWith({4, 4, 5}).categoryLabels();
    EXPECT_EQ(tree->categoryLabels(), labels);
    EXPECT_TRUE(tree->isEqual(*tree));
    EXPECT_TRUE(tree->isEqual(*tree->clone()));

    TreeHandle source = tree;
    auto arrived = loaded<TreeHandle>(stored(source));
    EXPECT_TRUE(arrived->isEqual(*tree));
    EXPECT_TRUE(tree->isEqual(*arrived));
    EXPECT_LT(stored(arrived).size(), 10'000u);
    EXPECT_EQ(pollsOfWalk(*arrived, kValid, labels), kLevels + 1);

    const AllocationMeter meter;
    arrived.reset();
    EXPECT_EQ(meter.calls(), 0u);
  }
}

TEST(SharedTreeTest, ComparesGraphsThatShareDifferently) {
  // Sixty levels that share one object each, against the same with two.
  const vxDecisionTreeNode exact = sharedLevels(60);
  TreeHandle twice(new vxDecisionTreeLeaf(leafWith({4, 4, 5})));
  for (int level = 0; level < 60; ++level) {
    twice.reset(new vxDecisionTreeNode(vxRangePredicate(), *twice, *twice));
  }
  EXPECT_TRUE(exact.isEqual(*twice));
  EXPECT_TRUE(twice->isEqual(exact));
  const TreeHandle shallower = asNode(*twice).falseTree();
  EXPECT_FALSE(exact.isEqual(*shallower));
  EXPECT_FALSE(shallower->isEqual(exact));
}

TEST(SharedTreeTest, MergesLabelsAsAPlainRecursionDoes) {
  RandomTrees random(52);
  for (int round = 0; round < 3000; ++round) {
    const TreeHandle tree = random.tree(1 + random.below(12));
    ASSERT_EQ(tree->categoryLabels(), plain::categoryLabels(*tree)) << "round " << round;
    ASSERT_EQ(tree->numCategories(), static_cast<long>(tree->categoryLabels().size()));
  }
}

/// What comparing comes to; nothing where it meets an empty handle.
template <class Compare>
std::optional<bool> outcomeOf(Compare compare) {
  try {
    return compare();
  } catch (const vxBadPointer&) {
    return std::nullopt;
  }
}

TEST(SharedTreeTest, IsEqualWhereAPlainRecursionSaysSo) {
  RandomTrees random(53);
  int numEqual = 0;
  for (int round = 0; round < 2000; ++round) {
    const TreeHandle a = random.tree(random.below(8));
    const int kind = random.below(3);
    const TreeHandle b = kind == 0 ? random.tree(random.below(8)) : random.unshared(*a, kind == 1);
    const bool expected = plain::isEqual(*a, *b);
    ASSERT_EQ(a->isEqual(*b), expected) << "round " << round;
    ASSERT_EQ(b->isEqual(*a), expected) << "round " << round;
    numEqual += expected ? 1 : 0;
  }
  EXPECT_GT(numEqual, 500);
  EXPECT_LT(numEqual, 1500);
}

TEST(SharedTreeTest, MeetsEmptyHandlesAndNaNsInTheOrderOfAPlainRecursion) {
  RandomTrees random(54);
  int counts[3] = {};
  for (int round = 0; round < 2000; ++round) {
    const TreeHandle a = random.tree(random.below(6), true);
    // A copy shares the subtrees, so only what is in them can make a difference.
    const TreeHandle b = random.below(2) == 0 ? TreeHandle(a->clone()) : random.tree(3, true);
    const auto expected = outcomeOf([&] { return plain::isEqual(*a, *b); });
    ASSERT_EQ(outcomeOf([&] { return a->isEqual(*b); }), expected) << "round " << round;
    const auto reversed = outcomeOf([&] { return plain::isEqual(*b, *a); });
    ASSERT_EQ(outcomeOf([&] { return b->isEqual(*a); }), reversed) << "round " << round;
    ++counts[expected ? (*expected ? 1 : 2) : 0];

    const auto labels = [](auto&& list) {
      try {
        return std::optional(list());
      } catch (const vxBadPointer&) {
        return std::optional<std::vector<long>>();
      }
    };
    ASSERT_EQ(labels([&] { return a->categoryLabels(); }),
              labels([&] { return plain::categoryLabels(*a); }))
        << "round " << round;
  }
  for (const int count : counts) EXPECT_GT(count, 100);
}

/// A tree of a host that counts those alive.
class CountedTree : public HostTree {
 public:
  explicit CountedTree(std::atomic<int>& alive) : HostTree({1}), alive_(alive) { ++alive_; }
  CountedTree(const CountedTree& other) : HostTree(other), alive_(other.alive_) { ++alive_; }
  CountedTree& operator=(const CountedTree&) = delete;
  ~CountedTree() override { --alive_; }

  vxPtrHandle<vxDecisionTree> clone() const override {
    return vxPtrHandle<vxDecisionTree>(new CountedTree(*this));
  }

 private:
  std::atomic<int>& alive_;
};

TreeHandle countedChain(std::atomic<int>& alive, int numLevels) {
  TreeHandle tree(new CountedTree(alive));
  for (int level = 0; level < numLevels; ++level) {
    const CountedTree leaf(alive);
    tree.reset(level % 2 == 0 ? new vxDecisionTreeNode(vxRangePredicate(), *tree, leaf)
                              : new vxDecisionTreeNode(vxRangePredicate(), leaf, *tree));
  }
  return tree;
}

TEST(SharedTreeTest, FreesEveryObjectOnce) {
  std::atomic<int> alive{0};
  {
    TreeHandle tree = countedChain(alive, 50);
    EXPECT_EQ(alive, 51);
    const vxDecisionTreeNode copy = asNode(*tree);
    tree.reset();
    EXPECT_EQ(alive, 51) << "the copy holds the rest";
    vxDecisionTreeNode above(vxRangePredicate(), copy, copy);
    above.trueTree(vxDecisionTreeNode());
    EXPECT_EQ(alive, 51);
  }
  EXPECT_EQ(alive, 0);
}

TEST(SharedTreeTest, CanBeReleasedOnTwoThreadsAtOnce) {
  std::atomic<int> alive{0};
  for (int round = 0; round < 200; ++round) {
    TreeHandle first = countedChain(alive, 40);
    TreeHandle second(first->clone());
    std::atomic<int> waiting{2};
    const auto release = [&waiting](TreeHandle& tree) {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      EXPECT_EQ(tree->numCategories(), 1);
      tree.reset();
    };
    std::thread other([&] { release(second); });
    release(first);
    other.join();
    ASSERT_EQ(alive, 0) << "round " << round;
  }
}

TEST(SharedTreeTest, CanBeReleasedAfterAnotherThreadHasReadIt) {
  std::atomic<int> alive{0};
  // An odd number, so that the first subtree to go is the shared one.
  TreeHandle first = countedChain(alive, 11);
  TreeHandle second(first->clone());
  // The flag orders nothing; the reference counts have to.
  std::atomic<bool> isReleased{false};
  std::thread other([&] {
    EXPECT_EQ(first->numCategories(), 1);
    first.reset();
    isReleased.store(true, std::memory_order_relaxed);
  });
  while (!isReleased.load(std::memory_order_relaxed)) std::this_thread::yield();
  second.reset();
  other.join();
  EXPECT_EQ(alive, 0);
}

}  // namespace
