// SPDX-License-Identifier: MIT
#include "tests/support/plain_distribution_types.h"

#include <cstddef>
#include <cstdint>

#include "tests/support/archive_helpers.h"
#include "vxclss/errors.h"

namespace plain {

namespace {

void checkCategory(long category) {
  if (category < 0) throw vxClassifierDefs::BadLabel(L"Cateogory labels must be >= 0");
}

void checkMeasurement(long measurement) {
  if (measurement < 0) {
    throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
  }
}

bool holds(const std::vector<long>& list, long value) {
  for (const long entry : list) {
    if (entry == value) return true;
  }
  return false;
}

void append(std::string& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xff);
}
void append(std::string& bytes, long value) { append(bytes, static_cast<std::uint32_t>(value)); }
void appendHead(std::string& bytes, std::size_t count) {
  bytes += '\0';
  append(bytes, static_cast<std::uint32_t>(count));
}

}  // namespace

DistributionTypes::Type DistributionTypes::distributionType(long category, long measurement) const {
  checkCategory(category);
  checkMeasurement(measurement);
  for (const Override& entry : overrides) {
    if (entry.category == category && entry.measurement == measurement) return entry.type;
  }
  return defaultType;
}

void DistributionTypes::distributionTypeOverride(long category, long measurement, Type type) {
  if (type == defaultType) return;
  for (const Set& set : sets) {
    if (set.category == category && holds(set.members, measurement)) {
      throw vxClassifierDefs::BadParams(
          L"Cannot override distribution type of a feature measurement that is already part of a dependency set.");
    }
  }
  checkCategory(category);
  checkMeasurement(measurement);
  for (Override& entry : overrides) {
    if (entry.category == category && entry.measurement == measurement) {
      entry.type = type;
      return;
    }
  }
  overrides.push_back({category, measurement, type});
}

void DistributionTypes::setDependent(long category, const std::vector<long>& measurements) {
  checkCategory(category);
  for (const long measurement : measurements) checkMeasurement(measurement);
  std::vector<long> unique;
  for (const long measurement : measurements) {
    if (!holds(unique, measurement)) unique.push_back(measurement);
  }
  if (unique.empty()) return;
  for (const long measurement : unique) {
    if (distributionType(category, measurement) != distributionType(category, unique[0])) {
      throw vxClassifierDefs::BadParams(
          L"The distribution types of dependent feature measurements must be the same.");
    }
  }

  std::vector<long> rest = unique;
  std::vector<std::size_t> overlapping;
  for (std::size_t k = 0; k < sets.size(); ++k) {
    if (sets[k].category != category) continue;
    bool overlaps = false;
    std::size_t r = 0;
    while (r < rest.size()) {
      if (!holds(sets[k].members, rest[r])) {
        ++r;
        continue;
      }
      overlaps = true;
      rest[r] = rest[rest.size() - 1];
      rest.resize(rest.size() - 1);
    }
    if (overlaps) overlapping.push_back(k);
  }
  if (overlapping.empty()) {
    sets.push_back({category, unique});
    return;
  }

  // The first one takes what is new, then the members of the others, which leave the list.
  Set& merged = sets[overlapping[0]];
  for (const long member : rest) merged.members.push_back(member);
  for (std::size_t i = 1; i < overlapping.size(); ++i) {
    for (const long member : sets[overlapping[i]].members) merged.members.push_back(member);
  }
  for (std::size_t i = overlapping.size() - 1; i > 0; --i) {
    sets.erase(sets.begin() + static_cast<std::ptrdiff_t>(overlapping[i]));
  }
}

bool DistributionTypes::isDependent(long category, const std::vector<long>& measurements) const {
  checkCategory(category);
  if (measurements.empty()) return false;
  for (const long measurement : measurements) checkMeasurement(measurement);
  const Set* set = setOf(category, measurements[0]);
  if (set == nullptr) return false;
  for (const long measurement : measurements) {
    if (!holds(set->members, measurement)) return false;
  }
  return true;
}

const DistributionTypes::Set* DistributionTypes::setOf(long category, long measurement) const {
  for (const Set& set : sets) {
    if (set.category == category && holds(set.members, measurement)) return &set;
  }
  return nullptr;
}

std::string DistributionTypes::bytes() const {
  std::string bytes(1, '\0');
  append(bytes, static_cast<std::uint32_t>(defaultType));
  appendHead(bytes, overrides.size());
  for (const Override& entry : overrides) append(bytes, entry.category);
  appendHead(bytes, overrides.size());
  for (const Override& entry : overrides) append(bytes, entry.measurement);
  appendHead(bytes, overrides.size());
  for (const Override& entry : overrides) append(bytes, static_cast<std::uint32_t>(entry.type));
  appendHead(bytes, sets.size());
  for (const Set& set : sets) append(bytes, set.category);
  appendHead(bytes, sets.size());
  for (const Set& set : sets) {
    appendHead(bytes, set.members.size());
    for (const long member : set.members) append(bytes, member);
  }
  return bytes;
}

vxClassifierDistributionTypes DistributionTypes::record() const {
  return loaded<vxClassifierDistributionTypes>(bytes());
}

}  // namespace plain
