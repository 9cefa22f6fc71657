// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_MEASURE_H_
#define BENCH_PEERS_MEASURE_H_

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace peers {

/// Processor time of this process so far, in seconds. Other processes don't lengthen it.
double processorSeconds();

/// One of several that do the same work: does it `repeats` times and gives the processor seconds
/// that this took.
struct Contestant {
  std::string name;
  std::function<double(long repeats)> turn;
};

/// A contestant whose work is one call of `work`.
template <class Work>
Contestant contestant(std::string name, Work work) {
  return {std::move(name), [work](long repeats) mutable {
            const double start = processorSeconds();
            for (long i = 0; i < repeats; ++i) work();
            return processorSeconds() - start;
          }};
}

struct Effort {
  int rounds = 0;
  double secondsPerTurn = 0.0;
};

/// Seconds of one piece of work, by contestant.
using Times = std::map<std::string, double>;

/// The medians over rounds in which every contestant has one turn, so that whatever slows the
/// machine for a while slows all of them.
///
/// A turn repeats the work until it takes `effort.secondsPerTurn`, once at least.
Times inTurns(const std::vector<Contestant>& contestants, const Effort& effort);

/// NaN for no numbers.
double median(std::vector<double> values);
double geometricMean(const std::vector<double>& values);

}  // namespace peers

#endif  // BENCH_PEERS_MEASURE_H_
