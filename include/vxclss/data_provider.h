// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DATA_PROVIDER_H_
#define VXCLSS_DATA_PROVIDER_H_

#include <string>
#include <vector>

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A source of labelled patterns; every training reads one through this interface only.
///
/// A label is >= 0 for a category, -1 for an unknown one. A host may derive its own.
class VXCLSS_EXPORT vxClassifierDataProvider : public vxPersistent, public vxRepBase {
 public:
  ~vxClassifierDataProvider() override;

  /// Free texts that tell people what the data is.
  virtual std::wstring name() const = 0;
  virtual std::wstring description() const = 0;

  /// Measurements per pattern.
  virtual long numMeasurements() const = 0;
  virtual long numPatterns() const = 0;

  /// The pattern and its label; index in [0, numPatterns()).
  virtual vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const = 0;
  virtual long categoryLabel(long index) const = 0;

  /// What isEqual_() of the left operand says.
  bool operator==(const vxClassifierDataProvider& other) const { return isEqual_(other); }
  bool operator!=(const vxClassifierDataProvider& other) const { return !(*this == other); }

 protected:
  vxClassifierDataProvider() = default;
  vxClassifierDataProvider(const vxClassifierDataProvider&) = default;
  vxClassifierDataProvider(vxClassifierDataProvider&&) = default;
  vxClassifierDataProvider& operator=(const vxClassifierDataProvider&) = default;
  vxClassifierDataProvider& operator=(vxClassifierDataProvider&&) = default;

  /// True here: the base has nothing to compare.
  virtual bool isEqual_(const vxClassifierDataProvider& other) const;

  void dispatchSerialize(vxArchive& archive) override;
};

/// Patterns and their labels in memory.
///
/// All patterns have the same number of measurements and every label is >= -1. Copies share the
/// patterns. Equality compares patterns by content, then name, description and labels; an object
/// of another class is unequal.
///
/// Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxClassifierDataProviderMemory : public vxClassifierDataProvider {
 public:
  vxClassifierDataProviderMemory();
  vxClassifierDataProviderMemory(const vxClassifierDataProviderMemory&) = default;
  vxClassifierDataProviderMemory(vxClassifierDataProviderMemory&&) = default;
  vxClassifierDataProviderMemory& operator=(const vxClassifierDataProviderMemory& other);
  vxClassifierDataProviderMemory& operator=(vxClassifierDataProviderMemory&&) = default;
  ~vxClassifierDataProviderMemory() override;

  /// Replaces the whole content.
  ///
  /// Throws BadFeatures if the vectors differ in length; then, for two or more patterns,
  /// BadFeatures if one differs from the first in its number of measurements (vxBadPointer for an
  /// empty handle met there); then BadLabel if a label is < -1.
  void data(const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns,
            const std::vector<long>& labels);

  /// Appends one pattern, shared.
  ///
  /// Throws BadFeatures if there are patterns already and this one differs from them in its number
  /// of measurements (vxBadPointer for an empty handle); then BadLabel if label < -1.
  void addData(const vxPtrHandle_const<vxFeaturePattern>& pattern, long label);

  std::wstring name() const override;
  void setName(const std::wstring& name);
  std::wstring description() const override;
  void setDescription(const std::wstring& description);

  /// That of the first pattern, 0 if there is none; vxBadPointer if its handle is empty.
  long numMeasurements() const override;
  long numPatterns() const override;

  /// Both throw BadIndex for an index outside [0, numPatterns()).
  vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override;
  long categoryLabel(long index) const override;

 protected:
  bool isEqual_(const vxClassifierDataProvider& other) const override;
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::wstring name_;
  std::wstring description_;
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns_;
  std::vector<long> labels_;  // as long as patterns_
};

#endif  // VXCLSS_DATA_PROVIDER_H_
