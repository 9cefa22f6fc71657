// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PLAIN_DISTRIBUTION_TYPES_H_
#define TESTS_SUPPORT_PLAIN_DISTRIBUTION_TYPES_H_

#include <string>
#include <vector>

#include "vxclss/distribution_types.h"

/// Distribution types and dependency sets as their definition says it: one list of records for
/// each kind, every step a scan from the front.
namespace plain {

class DistributionTypes {
 public:
  using Type = vxClassifierDistributionTypes::DistributionType;

  struct Override {
    long category;
    long measurement;
    Type type;
  };
  struct Set {
    long category;
    std::vector<long> members;
  };

  explicit DistributionTypes(Type type = vxClassifierDistributionTypes::eNormal)
      : defaultType(type) {}

  Type distributionType(long category, long measurement) const;
  void distributionTypeOverride(long category, long measurement, Type type);
  void clearDistributionOverrides() { overrides.clear(); }
  void setDependent(long category, const std::vector<long>& measurements);
  bool isDependent(long category, const std::vector<long>& measurements) const;

  /// The first set of the category that holds the measurement, or null.
  const Set* setOf(long category, long measurement) const;

  /// What an archive of an equal object holds.
  std::string bytes() const;
  /// The library's object of this content.
  vxClassifierDistributionTypes record() const;

  Type defaultType;
  std::vector<Override> overrides;
  std::vector<Set> sets;
};

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_DISTRIBUTION_TYPES_H_
