// SPDX-License-Identifier: MIT
#include "vxclss/result.h"

#include "record_archive.h"
#include "result_weighting.h"
#include "vxclss/errors.h"

vxClassifierCategoryResult::vxClassifierCategoryResult(long categoryLabel, double matchScore,
                                                       double classScore, double expectedCost)
    : categoryLabel_(categoryLabel),
      matchScore_(matchScore),
      classScore_(classScore),
      expectedCost_(expectedCost) {
  if (categoryLabel < 0) throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
  const auto isOutside = [](double score) { return score < 0.0 || score > 1.0; };
  if (isOutside(matchScore) || isOutside(classScore)) {
    throw vxClassifierDefs::BadParams(L"Scores must be >= 0.0 and <= 1.0");
  }
  if (expectedCost < 0.0) throw vxClassifierDefs::BadParams(L"Costs must be >= 0.0");
}

bool vxClassifierCategoryResult::operator==(const vxClassifierCategoryResult& other) const {
  return categoryLabel_ == other.categoryLabel_ && matchScore_ == other.matchScore_ &&
         classScore_ == other.classScore_ && expectedCost_ == other.expectedCost_;
}

vxClassifierResult::vxClassifierResult(
    const std::vector<vxClassifierCategoryResult>& categoryResults, double matchScoreFactorLog)
    : matchScoreFactorLog_(matchScoreFactorLog) {
  vx_ResultWeighting::scale(categoryResults, categoryResults_);
}

vxClassifierResult::vxClassifierResult(const std::vector<vxClassifierCategoryResult>& matchResults,
                                       const vxClassifierFrequencies& frequencies,
                                       const vxClassifierCosts& costs, double matchScoreFactorLog)
    : matchScoreFactorLog_(matchScoreFactorLog) {
  vx_ResultWeighting::weigh(matchResults.data(), matchResults.size(), frequencies, costs,
                            categoryResults_);
}

bool vxClassifierResult::operator==(const vxClassifierResult& other) const {
  return categoryResults_ == other.categoryResults_ &&
         matchScoreFactorLog_ == other.matchScoreFactorLog_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierCategoryResult& result) {
  const auto fields = [&archive](vxClassifierCategoryResult& target) {
    archive || target.categoryLabel_ || target.matchScore_ || target.classScore_ ||
        target.expectedCost_;
  };
  return vx_transferRecord(archive, result, {"clss/clastool/clastool", __LINE__}, fields, 0, 0.0,
                           0.0, 0.0);
}

vxArchive& operator||(vxArchive& archive, vxClassifierResult& result) {
  const auto fields = [&archive](vxClassifierResult& target) {
    vfTransferVector(archive, target.categoryResults_, vxClassifierCategoryResult(0, 0, 0, 0));
    archive || target.matchScoreFactorLog_;
  };
  return vx_transferRecord(archive, result, {"clss/clastool/clastool", __LINE__}, fields);
}
