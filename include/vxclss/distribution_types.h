// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DISTRIBUTION_TYPES_H_
#define VXCLSS_DISTRIBUTION_TYPES_H_

#include <cstdint>
#include <vector>

#include "vxclss/export.h"

class vxArchive;

/// Which distribution models each measurement of each category, and which measurements of a
/// category depend on each other.
///
/// A default type and overrides for pairs of category and measurement; dependency sets per
/// category, which share no measurement. Type values are not checked here but when a model is
/// made. Equality compares overrides and sets in the order in which they were made.
class VXCLSS_EXPORT vxClassifierDistributionTypes {
 public:
  enum DistributionType : std::uint32_t {
    eNormal = 0,    ///< (multivariate) normal
    eBinomial = 1,  ///< binomial, of one measurement
    ePoisson = 2,   ///< refused by training: not implemented
    eUniform = 3,   ///< refused by training: not implemented
  };

  explicit vxClassifierDistributionTypes(DistributionType defaultType = eNormal);
  vxClassifierDistributionTypes(const vxClassifierDistributionTypes&) = default;
  vxClassifierDistributionTypes(vxClassifierDistributionTypes&&) noexcept = default;
  vxClassifierDistributionTypes& operator=(const vxClassifierDistributionTypes& other) {
    return *this = vxClassifierDistributionTypes(other);
  }
  vxClassifierDistributionTypes& operator=(vxClassifierDistributionTypes&&) noexcept = default;

  DistributionType defaultDistributionType() const { return defaultType_; }
  /// Leaves overrides as they are, those whose type is now the default too.
  void defaultDistributionType(DistributionType type);

  /// The override of the pair, or the default.
  /// Throws BadLabel if category < 0, then BadIndex if measurement < 0.
  DistributionType distributionType(long category, long measurement) const;

  /// Gives a pair its own type.
  ///
  /// A type equal to the default changes nothing, whatever the arguments: an earlier override
  /// stays. Otherwise throws BadParams if the measurement is in a dependency set of the category;
  /// then BadLabel if category < 0, BadIndex if measurement < 0.
  void distributionTypeOverride(long category, long measurement, DistributionType type);

  /// Back to the default everywhere; dependency sets stay.
  void clearDistributionOverrides();

  /// Makes measurements of a category one dependency set, merged with every set that shares one
  /// of them: the merged set stands where the first of those stood. Repeats are harmless, an empty
  /// list changes nothing.
  ///
  /// Throws BadLabel if category < 0; BadIndex if an index is < 0; BadParams if the listed
  /// measurements differ in type.
  void setDependent(long category, const std::vector<long>& measurements);

  /// Whether all listed measurements are in one dependency set of the category; false for an empty
  /// list. Throws BadLabel if category < 0; BadIndex if an index is < 0.
  bool isDependent(long category, const std::vector<long>& measurements) const;

  bool operator==(const vxClassifierDistributionTypes& other) const;
  bool operator!=(const vxClassifierDistributionTypes& other) const { return !(*this == other); }

 private:
  friend class vx_ClassifierBayesian;
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierDistributionTypes& types);

  long distOverrideIndex_(long category, long measurement) const;
  const std::vector<long>* dependencySet_(long category, long measurement) const;
  void mergeSets_(const std::vector<bool>& overlaps, const std::vector<long>& added);

  DistributionType defaultType_;
  std::vector<long> overrideCategories_;
  std::vector<long> overrideMeasurements_;  // these three have one length
  std::vector<DistributionType> overrideTypes_;
  std::vector<long> dependencyCategories_;
  std::vector<std::vector<long>> dependencySets_;  // these two have one length
};

/// A failed load leaves its target as it was.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes& types);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                    vxClassifierDistributionTypes::DistributionType& type);

#endif  // VXCLSS_DISTRIBUTION_TYPES_H_
