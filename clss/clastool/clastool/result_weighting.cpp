// SPDX-License-Identifier: MIT
#include "result_weighting.h"

#include <array>
#include <optional>

#include "cost_order.h"
#include "expected_costs.h"
#include "label_places.h"
#include "lent.h"
#include "vxclss/errors.h"
#include "vxfoundation/attention.h"
#include "vxfoundation/status.h"

namespace {

constexpr std::size_t kFew = vx_LabelPlaces::kFew;

void checkUniqueLabels(vx_LabelPlaces& places, const vxClassifierCategoryResult* categories,
                       std::size_t count) {
  if (!places.assign(categories, count)) {
    throw vxClassifierDefs::BadParams(L"The category labels of the match results must be unique.");
  }
}

double sumOf(const double* numbers, std::size_t count) {
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) sum += numbers[i];
  return sum;
}

// Where it says true, the constructor of these arguments throws.
bool isRefused(double matchScore, double classScore, double expectedCost) {
  return (matchScore < 0.0) | (matchScore > 1.0) | (classScore < 0.0) | (classScore > 1.0) |
         (expectedCost < 0.0);
}

void throwFirstRefusal(const vxClassifierCategoryResult* matches, const double* classScores,
                       const vx_PlacedCost* costs, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    vxClassifierCategoryResult(matches[i].categoryLabel(), matches[i].matchScore(), classScores[i],
                               costs[i].cost);
  }
}

}  // namespace

// Few categories, where every nanosecond counts, are dealt with on the stack.
class vx_ResultWeighting::Room {
 public:
  explicit Room(std::size_t count) {
    if (count <= kFew) return;
    Many& many = *many_.emplace();
    many.numbers.resize(2 * count);
    many.order.resize(2 * count);
    capacity_ = count;
    numbers_ = many.numbers.data();
    order_ = many.order.data();
  }

  vx_LabelPlaces& places() { return many_ ? (**many_).places : fewPlaces_; }
  /// Prior frequencies, then weights, then class scores.
  double* weights() { return numbers_; }
  vx_PlacedCost* order() { return order_; }

  const double* sumCosts(const vxClassifierCosts& costs, std::size_t count) {
    double* const sums = numbers_ + capacity_;
    if (many_) {
      (**many_).costs.sum(costs, places(), weights(), count, sums);
    } else {
      vx_ExpectedCosts::sumFew(costs, places(), weights(), count, sums);
    }
    return sums;
  }
  const vx_PlacedCost* sortOrder(std::size_t count) {
    return vx_sortByCost(order_, order_ + capacity_, count);
  }

 private:
  struct Many {
    vx_LabelPlaces places;
    vx_ExpectedCosts costs;
    std::vector<double> numbers;
    std::vector<vx_PlacedCost> order;
  };

  std::optional<vx_Lent<Many>> many_;
  vx_LabelPlaces fewPlaces_;
  std::array<double, 2 * kFew> fewNumbers_;
  std::array<vx_PlacedCost, 2 * kFew> fewOrder_;
  std::size_t capacity_ = kFew;
  double* numbers_ = fewNumbers_.data();
  vx_PlacedCost* order_ = fewOrder_.data();
};

void vx_ResultWeighting::weigh(const vxClassifierCategoryResult* matches, std::size_t count,
                               const vxClassifierFrequencies& frequencies,
                               const vxClassifierCosts& costs, double matchScoreFactorLog,
                               vxClassifierResult& result) {
  weigh(matches, count, frequencies, costs, result.categoryResults_);
  result.matchScoreFactorLog_ = matchScoreFactorLog;
}

void vx_ResultWeighting::weigh(const vxClassifierCategoryResult* matches, std::size_t count,
                               const vxClassifierFrequencies& frequencies,
                               const vxClassifierCosts& costs, Categories& categories) {
  Room room(count);
  checkUniqueLabels(room.places(), matches, count);

  double* const weights = room.weights();
  fillPriors_(matches, count, frequencies, room.places(), weights);
  const double sumOfPriors = sumOf(weights, count);
  if (count == 0 || sumOfPriors == 0.0) {
    throw vxClassifierDefs::BadParams(L"At least one of the category frequencies must be > 0.");
  }

  for (std::size_t i = 0; i < count; ++i) {
    if (const long status = vfCheckAttention()) vfThrowExceptionOnFailure(status);
    weights[i] = matches[i].matchScore() * weights[i] / sumOfPriors;
  }
  const double sumOfWeights = sumOf(weights, count);
  if (sumOfWeights == 0.0) {
    throw vxClassifierDefs::BadParams(
        L"At least one of the resulting classification scores must be > 0.");
  }

  const double* const sums = room.sumCosts(costs, count);
  vx_PlacedCost* const order = room.order();
  bool isAnyRefused = false;
  for (std::size_t i = 0; i < count; ++i) {
    order[i] = {sums[i] / sumOfWeights, i};
    weights[i] /= sumOfWeights;
    isAnyRefused |= isRefused(matches[i].matchScore(), weights[i], order[i].cost);
  }
  if (isAnyRefused) throwFirstRefusal(matches, weights, order, count);
  const vx_PlacedCost* const sorted = room.sortOrder(count);
  categories.reserve(count);
  categories.clear();
  for (std::size_t i = 0; i < count; ++i) {
    categories.push_back(matches[sorted[i].place]);
    categories.back().classScore_ = weights[sorted[i].place];
    categories.back().expectedCost_ = sorted[i].cost;
  }
}

void vx_ResultWeighting::scale(const Categories& given, Categories& categories) {
  const std::size_t count = given.size();
  Room room(count);
  checkUniqueLabels(room.places(), given.data(), count);
  for (std::size_t i = 0; i < count; ++i) room.order()[i] = {given[i].expectedCost(), i};
  const vx_PlacedCost* const sorted = room.sortOrder(count);

  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) sum += given[sorted[i].place].classScore();
  if (count == 0 || sum == 0.0) {
    throw vxClassifierDefs::BadParams(L"At least one of the classification scores must be > 0.");
  }
  categories.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const vxClassifierCategoryResult& category = given[sorted[i].place];
    categories.emplace_back(category.categoryLabel(), category.matchScore(),
                            category.classScore() / sum, category.expectedCost());
  }
}

void vx_ResultWeighting::fillPriors_(const vxClassifierCategoryResult* matches, std::size_t count,
                                     const vxClassifierFrequencies& frequencies,
                                     vx_LabelPlaces& places, double* priors) {
  for (std::size_t i = 0; i < count; ++i) {
    const long label = matches[i].categoryLabel();
    priors[i] = label < 0 ? frequencies.categoryFrequency(label) : frequencies.defaultFrequency_;
  }
  if (frequencies.overrideFrequencies_.empty()) return;
  places.prepare();
  // From the back, so that of a label that a damaged archive names twice the first one counts.
  for (std::size_t k = frequencies.overrideFrequencies_.size(); k > 0; --k) {
    const std::size_t place = places.find(frequencies.overrideLabels_[k - 1]);
    if (place != vx_LabelPlaces::kNowhere) priors[place] = frequencies.overrideFrequencies_[k - 1];
  }
}
