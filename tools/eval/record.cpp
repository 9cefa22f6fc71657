// SPDX-License-Identifier: MIT
#include "tools/eval/record.h"

#include <algorithm>

namespace eval {

const vxClassifierCategoryResult* Record::categoryResult(long label) const {
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    if (category.categoryLabel() == label) return &category;
  }
  return nullptr;
}

double Record::classScore(long label) const {
  const vxClassifierCategoryResult* category = categoryResult(label);
  return category != nullptr ? category->classScore() : 0.0;
}

double Record::margin() const {
  double first = 0.0;
  double second = 0.0;
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    const double score = category.classScore();
    if (std::isnan(score)) return score;
    second = std::max(second, std::min(first, score));
    first = std::max(first, score);
  }
  return first - second;
}

}  // namespace eval
