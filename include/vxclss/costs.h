// SPDX-License-Identifier: MIT
#ifndef VXCLSS_COSTS_H_
#define VXCLSS_COSTS_H_

#include <vector>

#include "vxclss/export.h"

class vxArchive;

/// What it costs to mistake one category for another: a default and overrides for ordered pairs.
///
/// Costs are >= 0, in any unit. A correct decision costs nothing and may not be asked for.
/// Equality compares the overrides in the order in which their pairs were first set.
class VXCLSS_EXPORT vxClassifierCosts {
 public:
  /// Throws BadParams if defaultCost < 0.
  explicit vxClassifierCosts(double defaultCost);
  vxClassifierCosts(const vxClassifierCosts&) = default;
  vxClassifierCosts(vxClassifierCosts&&) noexcept = default;
  vxClassifierCosts& operator=(const vxClassifierCosts& other) {
    return *this = vxClassifierCosts(other);
  }
  vxClassifierCosts& operator=(vxClassifierCosts&&) noexcept = default;

  double defaultMisclassificationCost() const { return defaultCost_; }
  /// Throws BadParams if cost < 0.
  void defaultMisclassificationCost(double cost);

  /// Gives a pair its own cost, in place of the default or of an earlier one. The pair is ordered:
  /// (1, 2) and (2, 1) are different entries.
  /// Throws BadParams if cost < 0; BadLabel if the labels are equal, then if one is < 0.
  void misclassificationCostOverride(long trueLabel, long assignedLabel, double cost);

  /// The cost of assigning a pattern of `trueLabel` to `assignedLabel`.
  /// Throws BadLabel if the labels are equal, then if one is < 0.
  double misclassificationCost(long trueLabel, long assignedLabel) const;

  /// Back to the default for every pair.
  void clearMisclassificationOverrides();

  bool operator==(const vxClassifierCosts& other) const;
  bool operator!=(const vxClassifierCosts& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs);
  friend class vx_ExpectedCosts;

  long misclOverrideIndex_(long trueLabel, long assignedLabel) const;

  double defaultCost_ = 0.0;
  std::vector<long> overrideTrueLabels_;
  std::vector<long> overrideAssignedLabels_;  // these three have one length
  std::vector<double> overrideCosts_;
};

/// A failed load leaves `costs` as they were.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs);

#endif  // VXCLSS_COSTS_H_
