// SPDX-License-Identifier: MIT
#ifndef VXCLSS_FREQUENCIES_H_
#define VXCLSS_FREQUENCIES_H_

#include <vector>

#include "vxclss/export.h"

class vxArchive;

/// How often each category occurs, relative to the others: a default and overrides.
///
/// Frequencies are > 0 and need not sum to 1. Equality compares the overrides in the order in
/// which their labels were first set.
class VXCLSS_EXPORT vxClassifierFrequencies {
 public:
  /// Throws BadParams if defaultFrequency <= 0.
  explicit vxClassifierFrequencies(double defaultFrequency);
  vxClassifierFrequencies(const vxClassifierFrequencies&) = default;
  vxClassifierFrequencies(vxClassifierFrequencies&&) noexcept = default;
  vxClassifierFrequencies& operator=(const vxClassifierFrequencies& other) {
    return *this = vxClassifierFrequencies(other);
  }
  vxClassifierFrequencies& operator=(vxClassifierFrequencies&&) noexcept = default;

  double defaultCategoryFrequency() const { return defaultFrequency_; }
  /// Throws BadParams if frequency <= 0.
  void defaultCategoryFrequency(double frequency);

  /// Gives a category its own frequency, in place of the default or of an earlier one.
  /// Throws BadParams if frequency <= 0, then BadLabel if label < 0.
  void categoryFrequencyOverride(long label, double frequency);

  /// The override of the category, or the default. Throws BadLabel if label < 0.
  double categoryFrequency(long label) const;

  /// Back to the default for every category.
  void clearFrequencyOverrides();

  bool operator==(const vxClassifierFrequencies& other) const;
  bool operator!=(const vxClassifierFrequencies& other) const { return !(*this == other); }

 private:
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierFrequencies& frequencies);
  friend class vx_ResultWeighting;

  long freqOverrideIndex_(long label) const;

  double defaultFrequency_ = 1.0;
  std::vector<long> overrideLabels_;
  std::vector<double> overrideFrequencies_;  // as long as overrideLabels_
};

/// A failed load leaves `frequencies` as they were.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierFrequencies& frequencies);

#endif  // VXCLSS_FREQUENCIES_H_
