// SPDX-License-Identifier: MIT
#ifndef VXCLSS_DATA_PROVIDER_H_
#define VXCLSS_DATA_PROVIDER_H_

#include <atomic>
#include <string>
#include <vector>

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

class vx_PackedPatterns;

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
  vxClassifierDataProviderMemory& operator=(vxClassifierDataProviderMemory&& other) noexcept;
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
  friend class vx_ClassifierKNN;

  using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

  /// The patterns laid out for the neighbour search. Not part of the value: a copy starts without.
  class Packed {
   public:
    Packed() noexcept = default;
    Packed(const Packed&) noexcept {}
    Packed(Packed&& other) noexcept : patterns_(other.patterns_.exchange(nullptr)) {}
    Packed& operator=(Packed other) noexcept;
    ~Packed();

    /// What was made or is made now; null where memory is lacking.
    const vx_PackedPatterns* get(const Patterns& patterns) const noexcept;
    /// Goes on with one more pattern, the last of `patterns`.
    void added(const Patterns& patterns) noexcept;
    void drop() noexcept { *this = Packed(); }

   private:
    mutable std::atomic<vx_PackedPatterns*> patterns_{nullptr};
  };

  void data_(Patterns&& patterns, std::vector<long>&& labels);
  const vx_PackedPatterns* packedPatterns_() const noexcept { return packed_.get(patterns_); }

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::wstring name_;
  std::wstring description_;
  Patterns patterns_;
  std::vector<long> labels_;  // as long as patterns_
  Packed packed_;             // of these patterns; to be dropped before they are
};

#endif  // VXCLSS_DATA_PROVIDER_H_
