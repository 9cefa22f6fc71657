// SPDX-License-Identifier: MIT
//
// Binned reliability (A. H. Murphy, R. L. Winkler, "Reliability of subjective probability forecasts
// of precipitation and temperature", Applied Statistics 26(1), 1977, 41-47).
#include "tools/eval/calibration.h"

#include <algorithm>
#include <cmath>

namespace eval {

std::vector<CalibrationBin> calibration(const std::vector<Record>& records, std::size_t numBins) {
  const auto width = static_cast<double>(numBins);
  std::vector<CalibrationBin> bins;
  for (std::size_t i = 0; i < numBins; ++i) {
    const auto place = static_cast<double>(i);
    bins.push_back({place / width, (place + 1.0) / width, 0, 0, 0.0, 0.0, {}});
  }
  for (const Record& record : records) {
    const double score = record.decision().classScore();
    if (std::isnan(score)) continue;
    // The bounds decide, not the product, which may round up to the next bin's number.
    auto place = std::min(static_cast<std::size_t>(score * width), numBins - 1);
    if (score < bins[place].low) --place;
    CalibrationBin& bin = bins[place];
    ++bin.decisions;
    bin.correct += record.isCorrect() ? 1 : 0;
    bin.meanClassScore += score;
  }
  for (CalibrationBin& bin : bins) {
    const auto count = static_cast<double>(bin.decisions);
    bin.meanClassScore /= count;
    bin.shareCorrect = static_cast<double>(bin.correct) / count;
    bin.interval = wilsonInterval(bin.correct, bin.decisions);
  }
  return bins;
}

double calibrationError(const std::vector<CalibrationBin>& bins) {
  double sum = 0.0;
  double decisions = 0.0;
  for (const CalibrationBin& bin : bins) {
    if (bin.decisions == 0) continue;
    const auto count = static_cast<double>(bin.decisions);
    sum += count * std::fabs(bin.shareCorrect - bin.meanClassScore);
    decisions += count;
  }
  return sum / decisions;
}

}  // namespace eval
