// SPDX-License-Identifier: MIT
#include "vxfoundation/range.h"

#include <limits>

#include "vxfoundation/archive.h"

vxRange vxRange::FullRange() {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  return vxRange(-infinity, infinity);
}

bool vxRange::isWithin(double value) const {
  return (low_ <= value && value <= high_) || *this == FullRange();
}

vxArchive& operator||(vxArchive& archive, vxRange& range) {
  vx_Transfer transfer(archive);
  double low = range.low();
  double high = range.high();
  archive || low || high;
  if (archive.isLoading()) range = vxRange(low, high);
  transfer.complete();
  return archive;
}
