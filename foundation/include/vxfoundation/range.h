// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_RANGE_H_
#define VXFOUNDATION_RANGE_H_

#include "vxfoundation/export.h"

class vxArchive;

/// A closed numeric interval.
///
/// Both ends are inside; one whose low end is above its high end contains nothing. NaN is in no
/// range but the full one. Equality compares the ends exactly.
class VXFOUNDATION_EXPORT vxRange {
 public:
  vxRange(double low, double high) : low_(low), high_(high) {}

  /// The interval that contains every double, infinities and NaN included: (-inf, +inf).
  static vxRange FullRange();

  double low() const { return low_; }
  double high() const { return high_; }
  bool isWithin(double value) const;

  bool operator==(const vxRange& other) const { return low_ == other.low_ && high_ == other.high_; }
  bool operator!=(const vxRange& other) const { return !(*this == other); }

 private:
  double low_;
  double high_;
};

/// Transfers both ends; a failed load leaves `range` as it was.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, vxRange& range);

#endif  // VXFOUNDATION_RANGE_H_
