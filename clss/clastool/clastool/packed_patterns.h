// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_PACKED_PATTERNS_H_
#define CLSS_CLASTOOL_CLASTOOL_PACKED_PATTERNS_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "code_grid.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"

/// The measurements of a training set, laid out for the neighbour search: as rows of doubles, and
/// as codes (vx_CodeGrid), 32 patterns side by side.
///
/// The patterns stay with their provider, which keeps them alive and tells what it appends. A host
/// may still assign to a pattern that it shares; every packed pattern bears a mark, and by the
/// counter which that moves the copy notices and steps aside for good.
///
/// A set of the same few patterns over and over isn't packed: a few references in an archive must
/// not grow into many copies.
class vx_PackedPatterns {
 public:
  using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

  static constexpr std::size_t kLanes = 32;

  /// Codes of two measurements, those of one pattern next to each other: as bytes, the first one
  /// the lower of its word, of 32 patterns; as words, of 16 patterns.
  struct alignas(64) Line {
    std::array<std::uint16_t, kLanes> words;
  };

  explicit vx_PackedPatterns(const Patterns& patterns);
  vx_PackedPatterns(const vx_PackedPatterns&) = delete;
  vx_PackedPatterns& operator=(const vx_PackedPatterns&) = delete;
  ~vx_PackedPatterns();

  /// Takes up the last of `patterns`, the others being those that it holds; false where it is
  /// better made anew.
  bool append(const Patterns& patterns) noexcept;

  /// False for measurements that are invalid or not finite, patterns without any or with none
  /// behind their handles, a set that the grid can't tell apart; and once a pattern was changed.
  bool isUsable() const;

  std::size_t size() const { return patterns_.size(); }
  std::size_t numMeasurements() const { return numMeasurements_; }
  const vxFeaturePattern& pattern(std::size_t index) const { return *patterns_[index]; }
  const double* row(std::size_t index) const { return rows_.data() + index * numMeasurements_; }

  const vx_CodeGrid& grid() const { return grid_; }
  /// The greatest among the patterns.
  const vx_CodeGrid::Residual& residual() const { return residual_; }
  /// Blocks of 32 patterns, the last one padded with any codes, of numLines() lines each: one for
  /// two measurements of bytes; of words one for the first 16 patterns, one for the others.
  const Line* lines() const { return lines_.data(); }
  std::size_t numLines() const { return isWide() ? 2 * numPairs() : numPairs(); }
  std::size_t numPairs() const { return (numMeasurements_ + 1) / 2; }
  bool isWide() const { return grid_.isWide(); }
  std::size_t numBlocks() const { return (size() + kLanes - 1) / kLanes; }

 private:
  bool mark_(const Patterns& patterns);
  bool isFit_(const vxFeaturePattern* pattern) const;
  bool makeGrid_();
  bool layOut_(std::size_t index);
  void encode_(std::size_t index);
  bool holds_(const vxFeaturePattern& pattern, std::size_t index) const;
  bool isUpToDate_() const;
  void clear_() noexcept;

  const std::uint64_t number_;  // of this set among all
  std::size_t numMeasurements_ = 0;
  std::vector<const vxFeaturePattern*> patterns_;  // all of them marked
  std::vector<double> rows_;
  std::vector<Line> lines_;
  std::vector<std::uint16_t> codes_;  // of one pattern
  vx_CodeGrid grid_;
  vx_CodeGrid::Residual residual_{0.0, 0.0};
  std::size_t sizeOfGrid_ = 0;  // how many patterns the grid was made for

  mutable std::atomic<std::uint64_t> changesSeen_;
  mutable std::atomic<bool> isOutdated_{false};
};

/// Two codes of a byte each in one word of a line.
inline std::uint16_t vx_bytePair(std::uint16_t first, std::uint16_t second) {
  return static_cast<std::uint16_t>(first | second << 8);
}

#endif  // CLSS_CLASTOOL_CLASTOOL_PACKED_PATTERNS_H_
