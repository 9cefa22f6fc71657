// SPDX-License-Identifier: MIT
#include "bench/peers/measure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <limits>

namespace peers {

namespace {

constexpr double kNanoseconds = 1e-9;

/// How often the work fits into a turn. The first calls warm up what the contestant keeps.
long repeatsFor(const Contestant& contestant, double secondsPerTurn) {
  contestant.turn(1);
  for (long repeats = 1;;) {
    const double seconds = contestant.turn(repeats);
    if (seconds >= secondsPerTurn / 2) {
      return std::max(1L, std::lround(static_cast<double>(repeats) * secondsPerTurn / seconds));
    }
    repeats *= 2;
  }
}

}  // namespace

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + kNanoseconds * static_cast<double>(time.tv_nsec);
}

Times inTurns(const std::vector<Contestant>& contestants, const Effort& effort) {
  const std::size_t count = contestants.size();
  std::vector<long> repeats;
  for (const Contestant& contestant : contestants) {
    repeats.push_back(repeatsFor(contestant, effort.secondsPerTurn));
  }
  std::vector<std::vector<double>> seconds(count);
  for (int round = 0; round < effort.rounds; ++round) {
    for (std::size_t turn = 0; turn < count; ++turn) {
      // Each round begins with another one: nobody always follows the same neighbour's cache.
      const std::size_t i = (turn + static_cast<std::size_t>(round)) % count;
      if (repeats[i] > 1) contestants[i].turn(1);
      seconds[i].push_back(contestants[i].turn(repeats[i]) / static_cast<double>(repeats[i]));
    }
  }
  Times times;
  for (std::size_t i = 0; i < count; ++i) times[contestants[i].name] = median(seconds[i]);
  return times;
}

double median(std::vector<double> values) {
  if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double geometricMean(const std::vector<double>& values) {
  double sumOfLogs = 0.0;
  for (const double value : values) sumOfLogs += std::log(value);
  return std::exp(sumOfLogs / static_cast<double>(values.size()));
}

}  // namespace peers
