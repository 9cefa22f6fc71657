// SPDX-License-Identifier: MIT
#include "vxclss/distribution_types.h"

#include <algorithm>
#include <utility>

#include "make_room.h"
#include "record_archive.h"
#include "vxclss/errors.h"

namespace {

constexpr long kArchiveLine = 262;  // hosts report it with an unknown version: never renumber

bool contains(const std::vector<long>& list, long value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

void checkCategory(long category) {
  // "Cateogory" is what hosts compare with.
  if (category < 0) throw vxClassifierDefs::BadLabel(L"Cateogory labels must be >= 0");
}

void checkMeasurement(long measurement) {
  if (measurement < 0) {
    throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
  }
}

std::vector<long> withoutRepeats(const std::vector<long>& list) {
  std::vector<long> unique;
  for (const long value : list) {
    if (!contains(unique, value)) unique.push_back(value);
  }
  return unique;
}

}  // namespace

vxClassifierDistributionTypes::vxClassifierDistributionTypes(DistributionType defaultType)
    : defaultType_(defaultType) {}

void vxClassifierDistributionTypes::defaultDistributionType(DistributionType type) {
  defaultType_ = type;
}

vxClassifierDistributionTypes::DistributionType vxClassifierDistributionTypes::distributionType(
    long category, long measurement) const {
  const long index = distOverrideIndex_(category, measurement);
  return index >= 0 ? overrideTypes_[static_cast<std::size_t>(index)] : defaultType_;
}

void vxClassifierDistributionTypes::distributionTypeOverride(long category, long measurement,
                                                             DistributionType type) {
  // Callers rely on the default being accepted unchecked and leaving an earlier override alone.
  if (type == defaultType_) return;
  if (dependencySet_(category, measurement) != nullptr) {
    throw vxClassifierDefs::BadParams(
        L"Cannot override distribution type of a feature measurement that is already part of a dependency set.");
  }
  const long index = distOverrideIndex_(category, measurement);
  if (index >= 0) {
    overrideTypes_[static_cast<std::size_t>(index)] = type;
    return;
  }
  vx_makeRoom(overrideCategories_, overrideMeasurements_, overrideTypes_);
  overrideCategories_.push_back(category);
  overrideMeasurements_.push_back(measurement);
  overrideTypes_.push_back(type);
}

void vxClassifierDistributionTypes::clearDistributionOverrides() {
  overrideCategories_.clear();
  overrideMeasurements_.clear();
  overrideTypes_.clear();
}

void vxClassifierDistributionTypes::setDependent(long category,
                                                 const std::vector<long>& measurements) {
  checkCategory(category);
  std::for_each(measurements.begin(), measurements.end(), checkMeasurement);
  std::vector<long> added = withoutRepeats(measurements);
  if (added.empty()) return;
  const DistributionType type = distributionType(category, added.front());
  for (const long measurement : added) {
    if (distributionType(category, measurement) != type) {
      throw vxClassifierDefs::BadParams(
          L"The distribution types of dependent feature measurements must be the same.");
    }
  }

  // `added` shrinks to what no set holds yet. A freed place takes the last element, which is
  // examined next: that order is the one in which the merged set keeps them.
  std::vector<bool> overlaps(dependencySets_.size(), false);
  for (std::size_t k = 0; k < dependencySets_.size(); ++k) {
    if (dependencyCategories_[k] != category) continue;
    for (std::size_t r = 0; r < added.size();) {
      if (contains(dependencySets_[k], added[r])) {
        overlaps[k] = true;
        added[r] = added.back();
        added.pop_back();
      } else {
        ++r;
      }
    }
  }
  if (std::find(overlaps.begin(), overlaps.end(), true) != overlaps.end()) {
    mergeSets_(overlaps, added);
    return;
  }
  vx_makeRoom(dependencyCategories_);
  dependencySets_.push_back(std::move(added));
  dependencyCategories_.push_back(category);
}

bool vxClassifierDistributionTypes::isDependent(long category,
                                                const std::vector<long>& measurements) const {
  checkCategory(category);
  if (measurements.empty()) return false;
  std::for_each(measurements.begin(), measurements.end(), checkMeasurement);
  const std::vector<long>* set = dependencySet_(category, measurements.front());
  return set != nullptr && std::all_of(measurements.begin(), measurements.end(),
                                       [set](long member) { return contains(*set, member); });
}

bool vxClassifierDistributionTypes::operator==(const vxClassifierDistributionTypes& other) const {
  return defaultType_ == other.defaultType_ && overrideCategories_ == other.overrideCategories_ &&
         overrideMeasurements_ == other.overrideMeasurements_ &&
         overrideTypes_ == other.overrideTypes_ &&
         dependencyCategories_ == other.dependencyCategories_ &&
         dependencySets_ == other.dependencySets_;
}

long vxClassifierDistributionTypes::distOverrideIndex_(long category, long measurement) const {
  checkCategory(category);
  checkMeasurement(measurement);
  for (std::size_t i = 0; i < overrideCategories_.size(); ++i) {
    if (overrideCategories_[i] == category && overrideMeasurements_[i] == measurement) {
      return static_cast<long>(i);
    }
  }
  return -1;
}

const std::vector<long>* vxClassifierDistributionTypes::dependencySet_(long category,
                                                                       long measurement) const {
  for (std::size_t k = 0; k < dependencySets_.size(); ++k) {
    if (dependencyCategories_[k] == category && contains(dependencySets_[k], measurement)) {
      return &dependencySets_[k];
    }
  }
  return nullptr;
}

// The first overlapping set takes `added`, then the members of the later ones.
void vxClassifierDistributionTypes::mergeSets_(const std::vector<bool>& overlaps,
                                               const std::vector<long>& added) {
  std::vector<long> categories;
  std::vector<std::vector<long>> sets;
  std::size_t merged = overlaps.size();  // its place among `sets`, once it is there
  for (std::size_t k = 0; k < overlaps.size(); ++k) {
    const std::vector<long>& set = dependencySets_[k];
    if (overlaps[k] && merged < sets.size()) {
      sets[merged].insert(sets[merged].end(), set.begin(), set.end());
      continue;
    }
    categories.push_back(dependencyCategories_[k]);
    sets.push_back(set);
    if (!overlaps[k]) continue;
    merged = sets.size() - 1;
    sets[merged].insert(sets[merged].end(), added.begin(), added.end());
  }
  dependencyCategories_.swap(categories);
  dependencySets_.swap(sets);
}

vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes& types) {
  const auto fields = [&archive](vxClassifierDistributionTypes& target) {
    archive || target.defaultType_ || target.overrideCategories_ || target.overrideMeasurements_ ||
        target.overrideTypes_ || target.dependencyCategories_ || target.dependencySets_;
    if (target.overrideCategories_.size() != target.overrideTypes_.size() ||
        target.overrideMeasurements_.size() != target.overrideTypes_.size()) {
      throw vxArchive::Malformed(L"Distribution overrides that differ in number");
    }
    if (target.dependencyCategories_.size() != target.dependencySets_.size()) {
      throw vxArchive::Malformed(L"Dependency sets that differ in number from their categories");
    }
  };
  return vx_transferRecord(archive, types, {"clss/clastool/bayes", kArchiveLine}, fields);
}

vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes::DistributionType& type) {
  unsigned long value = type;
  archive || value;
  if (archive.isLoading())
    type = static_cast<vxClassifierDistributionTypes::DistributionType>(value);
  return archive;
}
