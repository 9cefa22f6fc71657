// SPDX-License-Identifier: MIT
#include "tools/eval/fit.h"

#include <algorithm>

#include "tools/eval/nearest.h"

namespace eval {

double absoluteFit(const vxClassifierTool& tool, const vxFeaturePattern& pattern,
                   const vxClassifierResult& result) {
  const vxPtrHandle_const<vx_Classifier> classifier = tool.classifier();
  if (dynamic_cast<const vx_ClassifierBayesian*>(classifier.get()) != nullptr) {
    return -result.matchScoreFactorLog();
  }
  if (const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(classifier.get())) {
    return -nearestStored(*knn, pattern, -1).distance;
  }
  double best = 0.0;
  for (const vxClassifierCategoryResult& category : result.categoryResults()) {
    best = std::max(best, category.matchScore());
  }
  return best;
}

}  // namespace eval
