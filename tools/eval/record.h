// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_RECORD_H_
#define TOOLS_EVAL_RECORD_H_

#include <vxclss/vxclss.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace eval {

/// What was decided on one pattern of known category.
struct Record {
  std::size_t pattern = 0;  // its index in the data
  long round = 0;           // of the split, [0, rounds)
  long trueLabel = 0;
  vxClassifierResult result;  // holds a category at least
  double fit = std::nan("");  // absoluteFit(), NaN if it wasn't asked for

  const vxClassifierCategoryResult& decision() const { return result.categoryResults().at(0); }
  long decidedLabel() const { return decision().categoryLabel(); }
  bool isCorrect() const { return decidedLabel() == trueLabel; }

  /// What the result says of a category; null if nothing.
  const vxClassifierCategoryResult* categoryResult(long label) const;

  /// 0 for a category that the result leaves out.
  double classScore(long label) const;

  /// The largest class score less the second largest, which is 0 if there is but one category.
  double margin() const;
};

}  // namespace eval

#endif  // TOOLS_EVAL_RECORD_H_
