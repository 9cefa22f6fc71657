// SPDX-License-Identifier: MIT
#ifndef VXCLSS_RESULT_H_
#define VXCLSS_RESULT_H_

#include <vector>

#include "vxclss/costs.h"
#include "vxclss/export.h"
#include "vxclss/frequencies.h"

class vxArchive;

/// What a classification says of one category. Equality is exact.
class VXCLSS_EXPORT vxClassifierCategoryResult {
 public:
  /// Throws BadLabel if categoryLabel < 0; BadParams if matchScore is outside [0, 1], then if
  /// classScore is, then if expectedCost < 0. A NaN passes every check.
  vxClassifierCategoryResult(long categoryLabel, double matchScore, double classScore,
                             double expectedCost);

  long categoryLabel() const { return categoryLabel_; }
  /// How well the pattern matches the category, [0, 1].
  double matchScore() const { return matchScore_; }
  /// The category's share of all match scores weighted by frequency (its posterior), [0, 1].
  double classScore() const { return classScore_; }
  /// Expected cost of deciding for the category, >= 0.
  double expectedCost() const { return expectedCost_; }

  bool operator==(const vxClassifierCategoryResult& other) const;
  bool operator!=(const vxClassifierCategoryResult& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierCategoryResult& result);
  friend class vx_ResultWeighting;

  long categoryLabel_;
  double matchScore_;
  double classScore_;
  double expectedCost_;
};

/// What a classification says of every category, the cheapest decision first.
///
/// Labels are unique. Categories of equal expected cost keep the order in which they were given.
/// Equality compares all categories in order, and the factor.
class VXCLSS_EXPORT vxClassifierResult {
 public:
  /// No categories, factor 0.
  vxClassifierResult() = default;

  /// From categories whose class scores and expected costs are known: sorts them and scales the
  /// class scores to a sum of 1.
  /// Throws BadParams if two labels are equal, then if there is no class score > 0.
  vxClassifierResult(const std::vector<vxClassifierCategoryResult>& categoryResults,
                     double matchScoreFactorLog);

  /// From match scores m: with prior p_i of category i, its class score is the posterior
  /// m_i p_i / sum_k m_k p_k, and its expected cost is sum_{j != i} cost(j, i) posterior_j
  /// (C. M. Bishop, Pattern Recognition and Machine Learning, Springer 2006, section 1.5.2).
  /// What `matchResults` hold beside label and match score is not used.
  ///
  /// Throws BadParams if two labels are equal; if there is no category or the frequencies sum to
  /// 0; if every weighted score is 0. Polls the attention check once a category.
  vxClassifierResult(const std::vector<vxClassifierCategoryResult>& matchResults,
                     const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                     double matchScoreFactorLog);

  /// Ascending by expected cost.
  const std::vector<vxClassifierCategoryResult>& categoryResults() const {
    return categoryResults_;
  }

  /// Natural logarithm of the factor by which the technique scaled the match scores.
  double matchScoreFactorLog() const { return matchScoreFactorLog_; }

  bool operator==(const vxClassifierResult& other) const;
  bool operator!=(const vxClassifierResult& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierResult& result);
  friend class vx_ResultWeighting;

  std::vector<vxClassifierCategoryResult> categoryResults_;
  double matchScoreFactorLog_ = 0.0;
};

/// A failed load leaves its target as it was.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierCategoryResult& result);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierResult& result);

#endif  // VXCLSS_RESULT_H_
