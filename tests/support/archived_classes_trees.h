// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_CLASSES_TREES_H_
#define TESTS_SUPPORT_ARCHIVED_CLASSES_TREES_H_

#include <limits>
#include <memory>
#include <vector>

#include "tests/support/archived_classes.h"
#include "vxclss/classifier_decision_tree.h"
#include "vxclss/decision_tree.h"
#include "vxclss/predicate.h"
#include "vxclss/rule_table.h"

/// The library has no equality of feature vectors; the archive test compares them like this.
inline bool operator==(const vxClassifierFeatureVector& a, const vxClassifierFeatureVector& b) {
  return a.featureValues() == b.featureValues();
}

/// A score function through its handle, which tells classes apart by numbers. Equality compares
/// the functions.
struct ArchivedScoreHandle {
  vxPtrHandle<vxClsFtSc> function;

  bool operator==(const ArchivedScoreHandle& other) const { return *function == *other.function; }
};
inline vxArchive& operator||(vxArchive& archive, ArchivedScoreHandle& handle) {
  return archive || handle.function;
}

/// Uses of every predicate, tree and score function.
inline void usePredicate(const vxPredicateFunction& predicate) {
  tryAll(
      [&] {
        return predicate.outcome({{1.0, 2.0}, {}});
      },
      [&] {
        return predicate.outcome({{}, {}});
      },
      [&] { return predicate.clone(); }, [&] { return predicate.isEqual(predicate); });
}
inline void useTree(const vxDecisionTree& tree) {
  tryAll([&] { return tree.categoryLabels(); }, [&] { return tree.numCategories(); },
         [&] { return tree.isEqual(*tree.clone()); },
         [&] {
           vx_ClassifierDecisionTree classifier;
           classifier.trainManual(tree);
           vxClassifierResult result;
           classifier.run({{1.0, 2.0}, {}}, result);
         });
}
inline void useScore(const vxClsFtSc& score) {
  const std::unique_ptr<vxClsFtSc> copy(score.clone());
  for (const double x : {-1.0, 0.0, 0.5, std::numeric_limits<double>::quiet_NaN()}) {
    tryAll([&] { return copy->score(x); });
  }
  tryAll([&] { return *copy == score; });
}

template <>
struct Archived<vxComparisonPredicate> {
  static Samples<vxComparisonPredicate> samples() {
    return {{"plain", {0, 1}}, {"rich", {2147483647, 3}}};
  }
  static void use(const vxComparisonPredicate& predicate) { usePredicate(predicate); }
};

template <>
struct Archived<vxRangePredicate> {
  static Samples<vxRangePredicate> samples() {
    return {{"plain", {}}, {"rich", {{-1.5, 2.0}, {4, 0, 4}}}};
  }
  static void use(const vxRangePredicate& predicate) {
    usePredicate(predicate);
    tryAll([&] { return predicate.measurementIndices(); },
           [&] { return predicate.measurementRange().isWithin(1.0); });
  }
};

template <>
struct Archived<vxValidityPredicate> {
  static Samples<vxValidityPredicate> samples() {
    return {{"plain", {}}, {"rich", vxValidityPredicate({7, 1})}};
  }
  static void use(const vxValidityPredicate& predicate) {
    usePredicate(predicate);
    tryAll([&] { return predicate.measurementIndices(); });
  }
};

template <>
struct Archived<vxDecisionTreeLeaf> {
  static vxDecisionTreeLeaf filled() {
    const std::vector<vxClassifierCategoryResult> categories = {{3, 0.5, 0.25, 2.0}};
    return vxDecisionTreeLeaf(vxClassifierResult(categories, -3.5));
  }
  static Samples<vxDecisionTreeLeaf> samples() {
    return {{"empty", vxDecisionTreeLeaf(vxClassifierResult())}, {"rich", filled()}};
  }
  static void use(const vxDecisionTreeLeaf& leaf) { useTree(leaf); }
};

/// No node within a node: in place, the class of the outer one has no name yet.
template <>
struct Archived<vxDecisionTreeNode> {
  static vxDecisionTreeNode filled() {
    return vxDecisionTreeNode(vxComparisonPredicate(0, 1), Archived<vxDecisionTreeLeaf>::filled(),
                              vxDecisionTreeLeaf(vxClassifierResult()));
  }
  static Samples<vxDecisionTreeNode> samples() { return {{"plain", {}}, {"rich", filled()}}; }
  static void use(const vxDecisionTreeNode& node) {
    useTree(node);
    tryAll([&] { usePredicate(*node.predicateFunction()); }, [&] { useTree(*node.trueTree()); },
           [&] { useTree(*node.falseTree()); });
  }
};

template <>
struct Archived<vx_ClassifierDecisionTree> {
  static vx_ClassifierDecisionTree trained() {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(vxDecisionTreeNode(vxValidityPredicate({1}), vxDecisionTreeNode(),
                                              Archived<vxDecisionTreeNode>::filled()));
    return classifier;
  }
  static Samples<vx_ClassifierDecisionTree> samples() {
    return {{"untrained", {}}, {"trained", trained()}};
  }
  static void use(const vx_ClassifierDecisionTree& classifier) {
    vxClassifierResult result;
    tryAll(
        [&] {
          classifier.run({{1.0, 2.0}, {}}, result);
        },
        [&] { return classifier.trainParams(); }, [&] { useTree(*classifier.decisionTree()); },
        [&] {
          vx_ClassifierDecisionTree copy(classifier);
          copy.retrain(*copy.trainParams());
        },
        [&] { vx_ClassifierDecisionTree(classifier).untrain(); });
  }
};

template <>
struct Archived<vxClassifierFeatureScoreOneSided> {
  static vxClassifierFeatureScoreOneSided filled() {
    vxClassifierFeatureScoreOneSided score;
    score.init(10.0, 5.0, 2.0, 0.75, 0.5);
    return score;
  }
  static Samples<vxClassifierFeatureScoreOneSided> samples() {
    return {{"plain", {}}, {"rich", filled()}};
  }
  static void use(const vxClassifierFeatureScoreOneSided& score) { useScore(score); }
};

template <>
struct Archived<vxClassifierFeatureScoreTwoSided> {
  static vxClassifierFeatureScoreTwoSided filled() {
    vxClassifierFeatureScoreTwoSided score;
    score.init(3.0, 2.0, 1.0, 4.0, 5.0, 6.0, 0.25, 0.5, 0.75, 1.0);
    return score;
  }
  static Samples<vxClassifierFeatureScoreTwoSided> samples() {
    return {{"plain", {}}, {"rich", filled()}};
  }
  static void use(const vxClassifierFeatureScoreTwoSided& score) {
    useScore(score);
    useScore(score.Low());
    useScore(score.High());
  }
};

template <>
struct Archived<ArchivedScoreHandle> {
  template <class T>
  static ArchivedScoreHandle holding(const T& score) {
    return {vxPtrHandle<vxClsFtSc>(score.clone())};
  }
  static Samples<ArchivedScoreHandle> samples() {
    return {{"ignore", holding(vxClassifierFeatureScoreIgnore())},
            {"one-sided", holding(Archived<vxClassifierFeatureScoreOneSided>::filled())},
            {"two-sided", holding(Archived<vxClassifierFeatureScoreTwoSided>::filled())}};
  }
  static void use(const ArchivedScoreHandle& score) { useScore(*score.function); }
};

template <>
struct Archived<vxClassifierFeatureVector> {
  static Samples<vxClassifierFeatureVector> samples() {
    return {{"empty", vxClassifierFeatureVector(std::vector<double>())},
            {"rich", vxClassifierFeatureVector({1.5, -0.0, 0.1})}};
  }
  static void use(const vxClassifierFeatureVector& vector) {
    tryAll([&] { return vxClassifierRule().score(vector); });
  }
};

/// All of one size: an unknown number leaves what stood there, and an empty handle can't be stored.
template <>
struct Archived<vxClassifierRule> {
  static vxClassifierRule oneSided(long label) {
    const auto one = Archived<vxClassifierFeatureScoreOneSided>::filled();
    vxClassifierRule rule;
    rule.init({vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore),
               vxPtrHandle<vxClsFtSc>(one.clone())},
              label);
    return rule;
  }
  static vxClassifierRule twoSided(long label) {
    const auto two = Archived<vxClassifierFeatureScoreTwoSided>::filled();
    vxClassifierRule rule;
    rule.init({vxPtrHandle<vxClsFtSc>(two.clone()),
               vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore)},
              label);
    return rule;
  }
  static Samples<vxClassifierRule> samples() {
    return {{"one-sided", oneSided(8)}, {"two-sided", twoSided(0)}};
  }
  static void use(const vxClassifierRule& rule) {
    const std::vector<double> values(rule.scoringMethods().size(), 1.0);
    tryAll([&] { return rule.score(vxClassifierFeatureVector(values)); });
  }
};

template <>
struct Archived<vxClassifierRuleTable> {
  static Samples<vxClassifierRuleTable> samples() {
    using Rule = Archived<vxClassifierRule>;
    vxClassifierRuleTable first;
    first.train({Rule::oneSided(3), Rule::twoSided(0)});
    vxClassifierRuleTable second;
    second.train({Rule::twoSided(5), Rule::twoSided(5)});
    return {{"first", first}, {"second", second}};
  }
  static void use(const vxClassifierRuleTable& table) {
    const vxClassifierFeatureVector vector({1.0, 2.0});
    tryAll([&] { return table.classifyHardThreshold(vector, 0.0); },
           [&] { return table.classifyHardThreshold(vector, 1.0); },
           [&] { vxClassifierRuleTable().train(table.rules()); });
  }
};

#endif  // TESTS_SUPPORT_ARCHIVED_CLASSES_TREES_H_
