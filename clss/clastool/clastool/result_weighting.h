// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_RESULT_WEIGHTING_H_
#define CLSS_CLASTOOL_CLASTOOL_RESULT_WEIGHTING_H_

#include <cstddef>
#include <vector>

#include "vxclss/result.h"

class vx_LabelPlaces;

/// Makes the categories of results. What many of them take meanwhile each thread keeps for its
/// next result, so only what is made takes memory, and none where `categories` has room.
class vx_ResultWeighting {
 public:
  using Categories = std::vector<vxClassifierCategoryResult>;

  /// Makes of `result` what the constructor makes of `count` matches, which are not its own.
  ///
  /// `result` is written after the last check and poll: a failing call leaves it as it was.
  static void weigh(const vxClassifierCategoryResult* matches, std::size_t count,
                    const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                    double matchScoreFactorLog, vxClassifierResult& result);

  /// The same for the categories alone.
  static void weigh(const vxClassifierCategoryResult* matches, std::size_t count,
                    const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                    Categories& categories);

  /// The given categories by expected cost, with class scores scaled to a sum of 1.
  static void scale(const Categories& given, Categories& categories);

 private:
  class Room;

  static void fillPriors_(const vxClassifierCategoryResult* matches, std::size_t count,
                          const vxClassifierFrequencies& frequencies, vx_LabelPlaces& places,
                          double* priors);
};

#endif  // CLSS_CLASTOOL_CLASTOOL_RESULT_WEIGHTING_H_
