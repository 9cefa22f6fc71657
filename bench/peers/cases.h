// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_CASES_H_
#define BENCH_PEERS_CASES_H_

#include "bench/peers/measure.h"
#include "bench/peers/report.h"

namespace peers {

/// How much of everything to do.
struct Extent {
  Effort effort;
  bool isQuick = false;
  bool withPlots = false;
};

// Each compares answers, measures, and reports times and figures; what needs a library that wasn't
// found is left out.

void measureNeighbours(const Extent& extent, Report& report);
void measureNeighbourVariants(const Extent& extent, Report& report);
void measureBayes(const Extent& extent, Report& report);
void measureWeighting(const Extent& extent, Report& report);
void measureTrees(const Extent& extent, Report& report);
void measureRules(const Extent& extent, Report& report);
void measureArchives(const Extent& extent, Report& report);

}  // namespace peers

#endif  // BENCH_PEERS_CASES_H_
