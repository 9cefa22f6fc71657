// SPDX-License-Identifier: MIT
#ifndef VXCLSS_FEATURE_PATTERN_H_
#define VXCLSS_FEATURE_PATTERN_H_

#include <atomic>
#include <cstdint>
#include <vector>

#include "vxclss/export.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// One sample: a vector of measurements, each with a validity flag.
///
/// Measurements are numbered from 0; their units are the host's. An invalid one keeps the number
/// that it was given, hidden behind its flag.
///
/// Equality is exact, so a pattern that holds a NaN differs even from itself.
/// Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxFeaturePattern : public vxPersistent, public vxRepBase {
 public:
  /// All measurements are valid but those whose indices are listed; repeats are harmless.
  ///
  /// Throws BadIndex, for the first listed index that is < 0 or >= measurements.size().
  vxFeaturePattern(const std::vector<double>& measurements,
                   const std::vector<long>& invalidIndices);
  vxFeaturePattern(const vxFeaturePattern&) = default;
  vxFeaturePattern(vxFeaturePattern&& other) noexcept;
  vxFeaturePattern& operator=(const vxFeaturePattern& other);
  vxFeaturePattern& operator=(vxFeaturePattern&& other) noexcept;
  ~vxFeaturePattern() override;

  long numMeasurements() const { return static_cast<long>(measurements_.size()); }

  /// False also past the last measurement. Throws BadIndex if index < 0.
  bool isValid(long index) const;

  /// Number of invalid measurements.
  long numInvalid() const { return numInvalid_; }

  /// Indices of the invalid measurements, ascending.
  std::vector<long> invalidFeatureIndices();

  /// Measurement `index`, or a stand-in where there is none to give.
  ///
  /// Without `throwIfInvalid`: the stored number of an invalid measurement, 0.0 past the last one.
  ///
  /// Throws BadIndex if index < 0, whatever the flag; BadFeatures if `throwIfInvalid` is set and
  /// the measurement is invalid or past the last one.
  double featureMeasurement(long index, bool throwIfInvalid) const;

  /// All measurements, the numbers of invalid ones included.
  /// Throws BadFeatures if `throwIfInvalid` is set and one is invalid.
  const std::vector<double>& featureMeasurements(bool throwIfInvalid) const;

  bool operator==(const vxFeaturePattern& other) const;
  bool operator!=(const vxFeaturePattern& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_PackedPatterns;

  /// How many packed training sets hold a copy of the pattern's measurements. It belongs to the
  /// object, not to its value; changing the value of a packed pattern moves a process-wide counter,
  /// by which those sets see that they must look again.
  class PackedMark {
   public:
    PackedMark() noexcept = default;
    PackedMark(const PackedMark&) noexcept {}
    PackedMark& operator=(const PackedMark&) = delete;

    /// False if the set of this number has added itself before, unless another one came between.
    bool add(std::uint64_t set) noexcept {
      count_.fetch_add(1, std::memory_order_relaxed);
      if (lastSet_.load(std::memory_order_relaxed) == set) return false;
      lastSet_.store(set, std::memory_order_relaxed);
      return true;
    }
    void remove() noexcept { count_.fetch_sub(1, std::memory_order_relaxed); }

    void valueChanges() noexcept {
      if (count_.load(std::memory_order_relaxed) != 0) changes.fetch_add(1);
    }
    static std::atomic<std::uint64_t> changes;

   private:
    std::atomic<std::int32_t> count_{0};
    std::atomic<std::uint64_t> lastSet_{0};
  };

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  std::vector<double> measurements_;
  std::vector<bool> validity_;  // as long as measurements_, or empty where all are valid
  long numInvalid_ = 0;         // what validity_ says
  mutable PackedMark packed_;
};

#endif  // VXCLSS_FEATURE_PATTERN_H_
