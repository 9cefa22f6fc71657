// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_CONFUSION_H_
#define TOOLS_EVAL_CONFUSION_H_

#include <cstddef>
#include <vector>

namespace eval {

/// How often patterns of each category were decided to be of each, and which ones.
class Confusion {
 public:
  /// For labels in [0, numCategories).
  explicit Confusion(std::size_t numCategories);

  /// Counts one decision; `which` is a number of the caller's. Throws vxClassifierDefs::BadLabel
  /// for a label outside the range.
  void add(long trueLabel, long decidedLabel, std::size_t which);

  long numCategories() const { return static_cast<long>(cells_.size()); }

  /// What add() was told of the cell, in that order. Labels in [0, numCategories()), as below.
  const std::vector<std::size_t>& members(long trueLabel, long decidedLabel) const;
  long count(long trueLabel, long decidedLabel) const;

  /// Patterns of a category, decisions for one, and all.
  long numOf(long trueLabel) const;
  long numDecided(long decidedLabel) const;
  long numPatterns() const;
  long numCorrect() const;

  /// The share decided correctly, of all or of a category; the share of the decisions for a
  /// category that were correct; the harmonic mean of these two. NaN where there is nothing to
  /// take a share of; f1() is 0 where a category has patterns or decisions but no correct one.
  double accuracy() const;
  double recall(long trueLabel) const;
  double precision(long decidedLabel) const;
  double f1(long label) const;

 private:
  std::vector<std::vector<std::vector<std::size_t>>> cells_;  // by true, then by decided label
};

}  // namespace eval

#endif  // TOOLS_EVAL_CONFUSION_H_
