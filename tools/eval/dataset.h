// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_DATASET_H_
#define TOOLS_EVAL_DATASET_H_

#include <vxclss/vxclss.h>

#include <string>
#include <vector>

namespace eval {

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

/// Labelled patterns and what their numbers stand for. The last three vectors are parallel.
struct Dataset {
  std::vector<std::string> measurements;  // names, UTF-8
  std::vector<std::string> categories;    // the name of each label, UTF-8
  std::vector<PatternHandle> patterns;
  std::vector<long> labels;  // in [-1, categories.size()), -1 where the category is unknown
  std::vector<long> rows;    // by which people find each pattern again
};

}  // namespace eval

#endif  // TOOLS_EVAL_DATASET_H_
