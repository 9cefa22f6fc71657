// SPDX-License-Identifier: MIT
#ifndef TOOLS_EVAL_CALIBRATION_H_
#define TOOLS_EVAL_CALIBRATION_H_

#include <cstddef>
#include <vector>

#include "tools/eval/record.h"
#include "tools/eval/scores.h"

namespace eval {

/// The decisions whose class score is in [low, high), the last bin in [low, 1].
struct CalibrationBin {
  double low;
  double high;
  long decisions;
  long correct;
  double meanClassScore;  // NaN in an empty bin, as are the next two
  double shareCorrect;
  Interval interval;  // of shareCorrect
};

/// Whether class scores are the probabilities that they are said to be: `numBins` bins of equal
/// width over [0, 1]. A decision whose class score is NaN is in no bin.
std::vector<CalibrationBin> calibration(const std::vector<Record>& records,
                                        std::size_t numBins = 10);

/// The mean of |shareCorrect - meanClassScore|, weighted by decisions; NaN without any.
double calibrationError(const std::vector<CalibrationBin>& bins);

}  // namespace eval

#endif  // TOOLS_EVAL_CALIBRATION_H_
