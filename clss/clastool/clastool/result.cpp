// SPDX-License-Identifier: MIT
#include "vxclss/result.h"

#include <algorithm>

#include "record_archive.h"
#include "vxclss/errors.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

using CategoryResults = std::vector<vxClassifierCategoryResult>;

// Up to here comparing all pairs, or inserting one by one, is faster than what scales better.
constexpr std::size_t kFew = 32;

bool hasRepeatedLabel(const CategoryResults& results) {
  if (results.size() <= kFew) {
    for (std::size_t i = 1; i < results.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (results[i].categoryLabel() == results[j].categoryLabel()) return true;
      }
    }
    return false;
  }
  std::vector<long> labels;
  labels.reserve(results.size());
  for (const vxClassifierCategoryResult& result : results) labels.push_back(result.categoryLabel());
  std::sort(labels.begin(), labels.end());
  return std::adjacent_find(labels.begin(), labels.end()) != labels.end();
}

void checkUniqueLabels(const CategoryResults& results) {
  if (hasRepeatedLabel(results)) {
    throw vxClassifierDefs::BadParams(L"The category labels of the match results must be unique.");
  }
}

bool isCheaper(const vxClassifierCategoryResult& a, const vxClassifierCategoryResult& b) {
  return a.expectedCost() < b.expectedCost();
}

void insertionSort(CategoryResults& results, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin + 1; i < end; ++i) {
    const vxClassifierCategoryResult moving = results[i];
    std::size_t place = i;
    for (; place > begin && isCheaper(moving, results[place - 1]); --place) {
      results[place] = results[place - 1];
    }
    results[place] = moving;
  }
}

// A stable merge sort. The standard one may read past its range when costs are NaN, since < is no
// ordering then; this one stays within bounds whatever < says.
void sortByExpectedCost(CategoryResults& results) {
  const std::size_t count = results.size();
  for (std::size_t begin = 0; begin < count; begin += kFew) {
    insertionSort(results, begin, std::min(begin + kFew, count));
  }
  if (count <= kFew) return;

  CategoryResults source = results;
  for (std::size_t width = kFew; width < count; width *= 2) {
    source.swap(results);
    for (std::size_t begin = 0; begin < count; begin += 2 * width) {
      const std::size_t middle = std::min(begin + width, count);
      const std::size_t end = std::min(begin + 2 * width, count);
      std::size_t left = begin;
      std::size_t right = middle;
      for (std::size_t place = begin; place < end; ++place) {
        const bool takeRight =
            left == middle || (right < end && isCheaper(source[right], source[left]));
        results[place] = source[takeRight ? right++ : left++];
      }
    }
  }
}

}  // namespace

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

vxClassifierResult::vxClassifierResult(const CategoryResults& categoryResults,
                                       double matchScoreFactorLog)
    : categoryResults_(categoryResults), matchScoreFactorLog_(matchScoreFactorLog) {
  checkUniqueLabels(categoryResults_);
  sortByExpectedCost(categoryResults_);

  double sum = 0.0;
  for (const vxClassifierCategoryResult& result : categoryResults_) sum += result.classScore();
  if (categoryResults_.empty() || sum == 0.0) {
    throw vxClassifierDefs::BadParams(L"At least one of the classification scores must be > 0.");
  }
  for (vxClassifierCategoryResult& result : categoryResults_) {
    result = vxClassifierCategoryResult(result.categoryLabel(), result.matchScore(),
                                        result.classScore() / sum, result.expectedCost());
  }
}

vxClassifierResult::vxClassifierResult(const CategoryResults& matchResults,
                                       const vxClassifierFrequencies& frequencies,
                                       const vxClassifierCosts& costs, double matchScoreFactorLog)
    : matchScoreFactorLog_(matchScoreFactorLog) {
  checkUniqueLabels(matchResults);
  const std::size_t count = matchResults.size();

  std::vector<double> priors(count);
  double sumOfPriors = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    priors[i] = frequencies.categoryFrequency(matchResults[i].categoryLabel());
    sumOfPriors += priors[i];
  }
  if (count == 0 || sumOfPriors == 0.0) {
    throw vxClassifierDefs::BadParams(L"At least one of the category frequencies must be > 0.");
  }

  std::vector<double> weights(count);
  double sumOfWeights = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    vfThrowExceptionOnFailure(vfCheckAttention());
    weights[i] = matchResults[i].matchScore() * priors[i] / sumOfPriors;
    sumOfWeights += weights[i];
  }
  if (sumOfWeights == 0.0) {
    throw vxClassifierDefs::BadParams(
        L"At least one of the resulting classification scores must be > 0.");
  }

  categoryResults_.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const long assigned = matchResults[i].categoryLabel();
    double cost = 0.0;
    for (std::size_t j = 0; j < count; ++j) {
      if (j == i) continue;
      cost += costs.misclassificationCost(matchResults[j].categoryLabel(), assigned) * weights[j];
    }
    categoryResults_.emplace_back(assigned, matchResults[i].matchScore(), weights[i] / sumOfWeights,
                                  cost / sumOfWeights);
  }
  sortByExpectedCost(categoryResults_);
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
