// SPDX-License-Identifier: MIT
#ifndef CLSS_RULETABLE_SCORE_IN_LINE_H_
#define CLSS_RULETABLE_SCORE_IN_LINE_H_

#include <cstdint>
#include <cstring>

#include "vxclss/feature_score.h"

/// What score() of functions in order answers, in line for the rules (but that a signalling NaN
/// comes back as a quiet one, as it does from the product that a rule puts it into).
///
/// Where a value lies on a function is a matter of chance, so a branch on it would be guessed wrong
/// half of the time, which costs more than all the arithmetic: masks choose instead. The line is
/// always computed, and divided by 1 where it isn't wanted; that is exact, and 0 never divides. A
/// falling function is looked at in the mirror, since changing signs is exact too.
struct vx_ScoreInLine {
  /// Whether score() has nothing to complain of.
  static bool isInOrder(const vxClassifierFeatureScoreOneSided& side) { return side.sign_ != 0.0; }
  static bool isInOrder(const vxClassifierFeatureScoreTwoSided& band) { return band.isInOrder_; }

  static double score(const vxClassifierFeatureScoreOneSided& side, double x) {
    const double mirrored = side.sign_ * x;
    const bool isBeyond = mirrored > side.sign_ * side.xc_;
    const bool isSecond = mirrored >= side.sign_ * side.x1_;
    const bool isFirst = mirrored <= side.sign_ * side.x0_;
    const bool isFlat = isBeyond | isSecond | isFirst;
    const double flat = select_(isBeyond, 0.0, select_(isSecond, side.y1_, side.y0_));
    const double line = side.y0_ * side.x1_ - side.y1_ * side.x0_ - (side.y0_ - side.y1_) * x;
    return select_(isFlat, flat, line) / select_(isFlat, 1.0, side.x1_ - side.x0_);
  }

  static double score(const vxClassifierFeatureScoreTwoSided& band, double x) {
    const vxClassifierFeatureScoreOneSided* const sides[] = {&band.high_, &band.low_};
    return score(*sides[x < band.lowest_ ? 1 : 0], x);
  }

 private:
  static double select_(bool condition, double yes, double no) {
    const std::uint64_t bits =
        bits_(no) ^ ((bits_(yes) ^ bits_(no)) & (0 - std::uint64_t{condition}));
    double selected;
    std::memcpy(&selected, &bits, sizeof(selected));
    return selected;
  }

  static std::uint64_t bits_(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
  }
};

#endif  // CLSS_RULETABLE_SCORE_IN_LINE_H_
