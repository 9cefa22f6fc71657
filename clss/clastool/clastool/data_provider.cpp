// SPDX-License-Identifier: MIT
#include "vxclss/data_provider.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "make_room.h"
#include "packed_patterns.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

constexpr long kUnknownLabel = -1;

void checkLabel(long label) {
  if (label < kUnknownLabel) {
    throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0 or unknown");
  }
}

}  // namespace

vxClassifierDataProvider::~vxClassifierDataProvider() = default;

bool vxClassifierDataProvider::isEqual_(const vxClassifierDataProvider&) const { return true; }

void vxClassifierDataProvider::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxClassifierDataProvider)}) {
    vxPersistent::dispatchSerialize(archive);
  }
}

vxClassifierDataProviderMemory::Packed& vxClassifierDataProviderMemory::Packed::operator=(
    Packed other) noexcept {
  other.patterns_ = patterns_.exchange(other.patterns_);
  return *this;
}

vxClassifierDataProviderMemory::Packed::~Packed() { delete patterns_.load(); }

const vx_PackedPatterns* vxClassifierDataProviderMemory::Packed::get(
    const Patterns& patterns) const noexcept {
  vx_PackedPatterns* current = patterns_.load(std::memory_order_acquire);
  if (current != nullptr) return current;
  try {
    auto made = std::make_unique<vx_PackedPatterns>(patterns);
    // Of several threads that make it at once the first publishes; all use that one.
    if (patterns_.compare_exchange_strong(current, made.get())) current = made.release();
    return current;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void vxClassifierDataProviderMemory::Packed::added(const Patterns& patterns) noexcept {
  vx_PackedPatterns* current = patterns_.load(std::memory_order_relaxed);
  if (current != nullptr && !current->append(patterns)) drop();
}

vxClassifierDataProviderMemory::vxClassifierDataProviderMemory() = default;

vxClassifierDataProviderMemory& vxClassifierDataProviderMemory::operator=(
    const vxClassifierDataProviderMemory& other) {
  return *this = vxClassifierDataProviderMemory(other);
}

vxClassifierDataProviderMemory& vxClassifierDataProviderMemory::operator=(
    vxClassifierDataProviderMemory&& other) noexcept {
  if (this == &other) return *this;
  vxClassifierDataProvider::operator=(std::move(other));
  packed_ = std::move(other.packed_);  // while the old patterns are there
  name_ = std::move(other.name_);
  description_ = std::move(other.description_);
  patterns_ = std::move(other.patterns_);
  labels_ = std::move(other.labels_);
  return *this;
}

vxClassifierDataProviderMemory::~vxClassifierDataProviderMemory() {
  packed_.drop();  // while there are patterns
}

void vxClassifierDataProviderMemory::data(
    const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns,
    const std::vector<long>& labels) {
  data_(Patterns(patterns), std::vector<long>(labels));
}

void vxClassifierDataProviderMemory::data_(Patterns&& patterns, std::vector<long>&& labels) {
  if (patterns.size() != labels.size()) {
    throw vxClassifierDefs::BadFeatures(
        L"The number of the feature patterns must be equal to the number of category labels");
  }
  for (std::size_t i = 1; i < patterns.size(); ++i) {
    if (patterns[i]->numMeasurements() != patterns[0]->numMeasurements()) {
      throw vxClassifierDefs::BadFeatures(
          L"Feature patterns must all have the same number of measurements");
    }
  }
  for (const long label : labels) checkLabel(label);

  mutating_();
  packed_.drop();
  patterns_.swap(patterns);
  labels_.swap(labels);
}

void vxClassifierDataProviderMemory::addData(const vxPtrHandle_const<vxFeaturePattern>& pattern,
                                             long label) {
  if (numPatterns() > 0 && pattern->numMeasurements() != numMeasurements()) {
    throw vxClassifierDefs::BadFeatures(
        L"Feature pattern must have the same number of measurements as the rest of the data.");
  }
  checkLabel(label);

  vx_makeRoom(patterns_, labels_);
  mutating_();
  patterns_.push_back(pattern);
  labels_.push_back(label);
  packed_.added(patterns_);
}

std::wstring vxClassifierDataProviderMemory::name() const { return name_; }

void vxClassifierDataProviderMemory::setName(const std::wstring& name) {
  mutating_();
  name_ = name;
}

std::wstring vxClassifierDataProviderMemory::description() const { return description_; }

void vxClassifierDataProviderMemory::setDescription(const std::wstring& description) {
  mutating_();
  description_ = description;
}

long vxClassifierDataProviderMemory::numMeasurements() const {
  return patterns_.empty() ? 0 : patterns_.front()->numMeasurements();
}

long vxClassifierDataProviderMemory::numPatterns() const {
  return static_cast<long>(patterns_.size());
}

vxPtrHandle_const<vxFeaturePattern> vxClassifierDataProviderMemory::featurePattern(
    long index) const {
  if (index < 0 || index >= numPatterns()) {
    throw vxClassifierDefs::BadIndex(
        L"Feature pattern index must be >=0 and < number of patterns.");
  }
  return patterns_[static_cast<std::size_t>(index)];
}

long vxClassifierDataProviderMemory::categoryLabel(long index) const {
  if (index < 0 || index >= numPatterns()) {
    throw vxClassifierDefs::BadIndex(L"Category label index must be >=0 and < number of patterns.");
  }
  return labels_[static_cast<std::size_t>(index)];
}

bool vxClassifierDataProviderMemory::isEqual_(const vxClassifierDataProvider& other) const {
  const auto* memory = dynamic_cast<const vxClassifierDataProviderMemory*>(&other);
  const auto samePattern = [](const vxPtrHandle_const<vxFeaturePattern>& a,
                              const vxPtrHandle_const<vxFeaturePattern>& b) { return *a == *b; };
  return memory != nullptr && patterns_.size() == memory->patterns_.size() &&
         std::equal(patterns_.begin(), patterns_.end(), memory->patterns_.begin(), samePattern) &&
         name_ == memory->name_ && description_ == memory->description_ &&
         labels_ == memory->labels_;
}

void vxClassifierDataProviderMemory::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxClassifierDataProviderMemory)}) {
    vxClassifierDataProvider::dispatchSerialize(archive);
    vfTransferStaged(archive, *this, [&archive](vxClassifierDataProviderMemory& target) {
      archive || target.name_ || target.description_ || target.patterns_ || target.labels_;
      if (target.patterns_.size() != target.labels_.size()) {
        throw vxArchive::Malformed(L"Patterns and category labels that differ in number");
      }
    });
  }
}

vxPersistent* vxClassifierDataProviderMemory::make() { return new vxClassifierDataProviderMemory; }
vx_Instantiator vxClassifierDataProviderMemory::sExemplar(typeid(vxClassifierDataProviderMemory),
                                                          &vxClassifierDataProviderMemory::make);
