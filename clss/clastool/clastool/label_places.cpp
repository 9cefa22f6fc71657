// SPDX-License-Identifier: MIT
#include "label_places.h"

#include <algorithm>

#include "vxclss/result.h"

namespace {

// A table of as many places a category is filled and read faster than labels are sorted.
constexpr std::size_t kSparsest = 8;

std::size_t distance(long from, long to) {
  return static_cast<std::size_t>(static_cast<unsigned long>(to) -
                                  static_cast<unsigned long>(from));
}

}  // namespace

bool vx_LabelPlaces::assign(const vxClassifierCategoryResult* categories, std::size_t count) {
  categories_ = categories;
  count_ = count;
  isPrepared_ = false;
  if (isAscending_()) return true;
  if (count <= kFew) return differPairwise_();
  isPrepared_ = true;
  return fillTable_();
}

void vx_LabelPlaces::prepare() {
  if (isPrepared_) return;
  isPrepared_ = true;
  if (count_ > kFew) {
    fillTable_();
  } else {
    bits_ = 0;
    for (std::size_t i = 0; i < count_; ++i) bits_ |= bitOf_(categories_[i].categoryLabel());
  }
}

std::size_t vx_LabelPlaces::search_(long label) const {
  if (count_ <= kFew) {
    for (std::size_t i = 0; i < count_; ++i) {
      if (categories_[i].categoryLabel() == label) return i;
    }
    return kNowhere;
  }
  if (!table_.empty()) {
    const std::size_t index = distance(smallest_, label);
    return index < table_.size() ? table_[index] : kNowhere;
  }
  // The last entry not behind the label, halving without a branch to mispredict.
  const std::pair<long, std::size_t>* first = sorted_.data();
  for (std::size_t size = count_; size > 1; size -= size / 2) {
    const std::pair<long, std::size_t>* const middle = first + size / 2;
    first = middle->first <= label ? middle : first;
  }
  return first->first == label ? first->second : kNowhere;
}

bool vx_LabelPlaces::isAscending_() const {
  for (std::size_t i = 1; i < count_; ++i) {
    if (categories_[i - 1].categoryLabel() >= categories_[i].categoryLabel()) return false;
  }
  return true;
}

bool vx_LabelPlaces::differPairwise_() const {
  for (std::size_t i = 1; i < count_; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (categories_[i].categoryLabel() == categories_[j].categoryLabel()) return false;
    }
  }
  return true;
}

bool vx_LabelPlaces::fillTable_() {
  bits_ = ~std::uint64_t{0};
  smallest_ = categories_[0].categoryLabel();
  long largest = smallest_;
  for (std::size_t i = 1; i < count_; ++i) {
    smallest_ = std::min(smallest_, categories_[i].categoryLabel());
    largest = std::max(largest, categories_[i].categoryLabel());
  }
  const std::size_t range = distance(smallest_, largest);
  table_.clear();
  if (range / kSparsest >= count_) return fillSorted_();

  table_.assign(range + 1, kNowhere);
  for (std::size_t i = 0; i < count_; ++i) {
    std::size_t& place = table_[distance(smallest_, categories_[i].categoryLabel())];
    if (place != kNowhere) return false;
    place = i;
  }
  return true;
}

bool vx_LabelPlaces::fillSorted_() {
  sorted_.clear();
  for (std::size_t i = 0; i < count_; ++i) sorted_.emplace_back(categories_[i].categoryLabel(), i);
  if (!isAscending_()) std::sort(sorted_.begin(), sorted_.end());
  const auto isSameLabel = [](const auto& a, const auto& b) { return a.first == b.first; };
  return std::adjacent_find(sorted_.begin(), sorted_.end(), isSameLabel) == sorted_.end();
}
