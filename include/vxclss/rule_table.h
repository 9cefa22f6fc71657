// SPDX-License-Identifier: MIT
#ifndef VXCLSS_RULE_TABLE_H_
#define VXCLSS_RULE_TABLE_H_

#include <vector>

#include "vxclss/export.h"
#include "vxclss/feature_score.h"
#include "vxfoundation/handle.h"

class vxArchive;

/// The feature values of one object, in feature order.
class VXCLSS_EXPORT vxClassifierFeatureVector {
 public:
  explicit vxClassifierFeatureVector(const std::vector<double>& featureValues);

  const std::vector<double>& featureValues() const { return featureValues_; }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierFeatureVector& featureVector);

  std::vector<double> featureValues_;
};

/// One category's score function for each feature.
///
/// Copies share the functions. Equality compares them by value, and the labels.
class VXCLSS_EXPORT vxClassifierRule {
 public:
  /// No functions, label 0.
  vxClassifierRule() = default;

  /// Throws BadParams if label < 0, then if there is no function.
  void init(const std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods, long label);

  const std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods() const { return scoringMethods_; }
  long label() const { return label_; }

  /// Geometric mean of the scores that count, [0, 1]; 1.0 if none does, and the product itself if
  /// that is not above 0.
  ///
  /// Throws BadParams if vector and functions differ in number, then if both are empty; what a
  /// function throws; vxBadPointer for a missing one.
  double score(const vxClassifierFeatureVector& featureVector) const;

  bool operator==(const vxClassifierRule& other) const;
  bool operator!=(const vxClassifierRule& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule);

  std::vector<vxPtrHandle<vxClsFtSc>> scoringMethods_;
  long label_ = 0;
};

/// Rules in order of precedence: the first one that scores above a threshold decides.
///
/// Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxClassifierRuleTable {
 public:
  /// No rules: not trained.
  vxClassifierRuleTable() = default;

  /// Throws BadParams if there is no rule, then if one differs from the first in its number of
  /// functions. Labels may repeat.
  void train(const std::vector<vxClassifierRule>& rules);

  const std::vector<vxClassifierRule>& rules() const { return rules_; }

  /// The label of the first rule whose score is above `hardThreshold`, -1 if there is none.
  ///
  /// Throws BadParams if the threshold is outside [0, 1]; NotTrained without rules; BadParams for
  /// an empty vector, then for one that differs from the first rule in size; what a rule throws.
  long classifyHardThreshold(const vxClassifierFeatureVector& featureVector,
                             double hardThreshold) const;

  bool operator==(const vxClassifierRuleTable& other) const { return rules_ == other.rules_; }
  bool operator!=(const vxClassifierRuleTable& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table);

  std::vector<vxClassifierRule> rules_;
};

/// Loaded values are not checked. A failed load leaves its target as it was. Loading a function
/// whose class number is unknown keeps the one that stood in its place.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierFeatureVector& featureVector);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table);

#endif  // VXCLSS_RULE_TABLE_H_
