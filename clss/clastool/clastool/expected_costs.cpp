// SPDX-License-Identifier: MIT
#include "expected_costs.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "label_places.h"
#include "vxclss/costs.h"

// Each sum has its own order of additions, which the last bit and so the order of far categories
// hang on. The additions stay as they are; what is saved is this:
//
// - Adding 0.0 or -0.0 changes no sum: it starts from 0.0, and a sum of two numbers is -0.0 only if
//   both are. So the own term may as well be left out as be a zero, and where all costs are finite,
//   a category of weight zero is no row at all.
// - Without overrides row j adds the same term to every sum but its own. So the sums that come
//   later share what was added before their own row, and beyond it many sums advance together, each
//   in a lane of its own. Halving the triangle of these additions leaves rectangles of lanes by
//   rows: n^2 / 2 additions, as many at a time as the processor has lanes for.
// - A sum with overrides goes through its rows like that, in a group of such sums, and breaks off
//   at each row that has a term of its own for one of them: n^2 additions and some 40 cycles for
//   each override, all of them looked up once before.

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr std::size_t kLeaf = vx_LaneAdder::kMultiple;
constexpr std::size_t kWidest = 64;

}  // namespace

void vx_ExpectedCosts::sum(const vxClassifierCosts& costs, vx_LabelPlaces& places,
                           const double* weights, std::size_t count, double* sums) {
  adder_ = vx_LaneAdder::forSimd();
  fillRows_(costs, weights, count);
  special_.clear();
  if (!costs.overrideCosts_.empty()) findExceptions_(costs, places, weights, count);
  if (special_.size() < count) {
    triangle_.resize(terms_.size());
    sumTriangle_(0, terms_.size());
    for (std::size_t i = 0; i < count; ++i) {
      sums[i] = rowOf_[i] == kNone ? prefixes_.back() : triangle_[rowOf_[i]];
    }
  }
  if (!special_.empty()) sumSpecial_(sums);
}

void vx_ExpectedCosts::sumFew(const vxClassifierCosts& costs, vx_LabelPlaces& places,
                              const double* weights, std::size_t count, double* sums) {
  const double cost = costs.defaultCost_;
  if (costs.overrideCosts_.empty()) {
    double prefix = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
      double sum = prefix;
      for (std::size_t j = i + 1; j < count; ++j) sum += cost * weights[j];
      sums[i] = sum;
      prefix += cost * weights[i];
    }
    return;
  }
  std::array<double, vx_LabelPlaces::kFew * vx_LabelPlaces::kFew> terms;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < count; ++j) terms[i * count + j] = cost * weights[j];
  }
  places.prepare();
  // From the back, so that of a pair that a damaged archive names twice the first one counts.
  for (std::size_t k = costs.overrideCosts_.size(); k > 0; --k) {
    const std::size_t i = places.find(costs.overrideAssignedLabels_[k - 1]);
    if (i == vx_LabelPlaces::kNowhere) continue;
    const std::size_t j = places.find(costs.overrideTrueLabels_[k - 1]);
    if (j == vx_LabelPlaces::kNowhere) continue;
    terms[i * count + j] = costs.overrideCosts_[k - 1] * weights[j];
  }
  for (std::size_t i = 0; i < count; ++i) {
    terms[i * count + i] = 0.0;
    sums[i] = 0.0;
    for (std::size_t j = 0; j < count; ++j) sums[i] += terms[i * count + j];
  }
}

void vx_ExpectedCosts::fillRows_(const vxClassifierCosts& costs, const double* weights,
                                 std::size_t count) {
  const auto isFinite = [](double cost) { return std::isfinite(cost); };
  const double cost = costs.defaultCost_;
  const bool dropsZeros = isFinite(cost) && std::all_of(costs.overrideCosts_.begin(),
                                                        costs.overrideCosts_.end(), isFinite);
  rowOf_.assign(count, kNone);
  terms_.clear();
  prefixes_.assign(1, 0.0);
  for (std::size_t i = 0; i < count; ++i) {
    if (dropsZeros && weights[i] == 0.0) continue;
    rowOf_[i] = terms_.size();
    terms_.push_back(cost * weights[i]);
    prefixes_.push_back(prefixes_.back() + terms_.back());
  }
}

void vx_ExpectedCosts::findExceptions_(const vxClassifierCosts& costs, vx_LabelPlaces& places,
                                       const double* weights, std::size_t count) {
  places.prepare();
  numExceptions_ = 0;
  const std::size_t most = costs.overrideCosts_.size() + count;
  if (exceptions_.size() < most) exceptions_.resize(most);
  firstOfRow_.assign(terms_.size(), kNone);
  specialNumber_.assign(count, kNone);
  // From the back, so that of a pair that a damaged archive names twice the first one counts.
  for (std::size_t k = costs.overrideCosts_.size(); k > 0; --k) {
    const std::size_t assigned = places.find(costs.overrideAssignedLabels_[k - 1]);
    if (assigned == vx_LabelPlaces::kNowhere) continue;
    const std::size_t trueOne = places.find(costs.overrideTrueLabels_[k - 1]);
    if (trueOne == vx_LabelPlaces::kNowhere || trueOne == assigned) continue;
    if (rowOf_[trueOne] == kNone) continue;
    addException_(rowOf_[trueOne], assigned, costs.overrideCosts_[k - 1] * weights[trueOne]);
    specialNumber_[assigned] = 0;
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (specialNumber_[i] == kNone) continue;
    specialNumber_[i] = special_.size();
    special_.push_back(i);
    if (rowOf_[i] != kNone) addException_(rowOf_[i], i, 0.0);
  }
  groupExceptions_();
}

void vx_ExpectedCosts::addException_(std::size_t row, std::size_t lane, double term) {
  exceptions_[numExceptions_] = {row, lane, term, firstOfRow_[row]};
  firstOfRow_[row] = numExceptions_++;
}

// From lists by row to lists by group that are ascending by row. An item overtakes its row's
// others, so a pair named twice comes in the order of findExceptions_().
void vx_ExpectedCosts::groupExceptions_() {
  firstOfGroup_.assign(special_.size() / adder_.width + 1, kNone);
  for (std::size_t row = terms_.size(); row > 0; --row) {
    std::size_t next = kNone;
    for (std::size_t k = firstOfRow_[row - 1]; k != kNone; k = next) {
      Exception& exception = exceptions_[k];
      next = exception.next;
      exception.lane = specialNumber_[exception.lane];
      std::size_t& first = firstOfGroup_[exception.lane / adder_.width];
      exception.next = first;
      first = k;
    }
  }
}

void vx_ExpectedCosts::sumTriangle_(std::size_t begin, std::size_t end) {
  const std::size_t size = end - begin;
  if (size <= kLeaf) {
    for (std::size_t i = begin; i < end; ++i) {
      double sum = prefixes_[i];
      for (std::size_t j = i + 1; j < end; ++j) sum += terms_[j];
      triangle_[i] = sum;
    }
    return;
  }
  std::size_t lanes = kLeaf;
  while (2 * lanes < size) lanes *= 2;
  const std::size_t middle = begin + lanes;
  sumTriangle_(begin, middle);
  adder_.add(&triangle_[begin], lanes, &terms_[middle], end - middle);
  sumTriangle_(middle, end);
}

void vx_ExpectedCosts::sumSpecial_(double* sums) {
  for (std::size_t begin = 0; begin < special_.size(); begin += adder_.width) {
    const std::size_t first = firstOfGroup_[begin / adder_.width];
    const std::size_t lanes = std::min(adder_.width, special_.size() - begin);
    const std::size_t advanced = (lanes + kLeaf - 1) / kLeaf * kLeaf;
    std::size_t row = exceptions_[first].row;
    std::array<double, kWidest> group;
    group.fill(prefixes_[row]);
    for (std::size_t k = first; k != kNone;) {
      const std::size_t own = exceptions_[k].row;
      adder_.add(group.data(), advanced, &terms_[row], own - row);
      std::size_t next = k;
      for (; next != kNone && exceptions_[next].row == own; next = exceptions_[next].next) {
        exceptions_[next].term = group[exceptions_[next].lane - begin] + exceptions_[next].term;
      }
      adder_.add(group.data(), advanced, &terms_[own], 1);
      for (; k != next; k = exceptions_[k].next) {
        group[exceptions_[k].lane - begin] = exceptions_[k].term;
      }
      row = own + 1;
    }
    adder_.add(group.data(), advanced, terms_.data() + row, terms_.size() - row);
    for (std::size_t lane = 0; lane < lanes; ++lane) sums[special_[begin + lane]] = group[lane];
  }
}
