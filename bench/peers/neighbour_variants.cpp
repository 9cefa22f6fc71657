// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "bench/peers/cases.h"
#include "bench/peers/neighbour_race.h"

namespace peers {

namespace {

constexpr std::size_t kDimensions[] = {4, 16, 64};
constexpr std::size_t kK = 5;
constexpr std::size_t kLargestLiteral = 10000;  // beyond it the definition takes its time
constexpr Kind kOtherKinds[] = {Kind::kUniform, Kind::kCounts, Kind::kOffset, Kind::kOutlier,
                                Kind::kUnits};

/// Every kind of data against the mixture, all of one size in one run.
Times timesOfKinds(std::size_t n, std::size_t d, const Extent& extent, Report& report) {
  std::vector<std::unique_ptr<NeighbourRace>> races;
  std::vector<Contestant> contestants;
  const auto add = [&](Kind kind) {
    races.push_back(std::make_unique<NeighbourRace>(NeighbourSetting{n, d, 2.0, kind, false}));
    races.back()->compareAnswers(kK, report);
    contestants.push_back(races.back()->alone(kK));
  };
  add(Kind::kMixture);
  for (const Kind kind : kOtherKinds) add(kind);
  return inTurns(contestants, extent.effort);
}

void measureKinds(const Extent& extent, Report& report) {
  constexpr const char* kGroup = "nearest neighbours, kinds of data: of the mixture's time";
  const std::size_t n = extent.isQuick ? 10000 : 100000;
  for (const std::size_t d : kDimensions) {
    const Times times = timesOfKinds(n, d, extent, report);
    report.times(fmt::format("kinds of data, n = {}, d = {}, k = {}", n, d, kK), times);
    for (const Kind kind : kOtherKinds) {
      const bool isHard = kind == Kind::kUnits && d == 4;
      report.figure(kGroup, fmt::format("{}, n = {}, d = {}", nameOf(kind), n, d),
                    times.at(nameOf(kind)) / times.at(nameOf(Kind::kMixture)), "",
                    atMost(isHard ? 3.0 : 2.0));
    }
  }
}

/// The kinds on which others are tried for their answers, beyond the mixture.
void compareKinds(Report& report) {
  constexpr std::size_t kN = 1000;
  const auto compare = [&](Kind kind, std::size_t d) {
    NeighbourRace({kN, d, 2.0, kind}).compareAnswers(kK, report);
  };
  for (const std::size_t d : kDimensions) {
    for (const Kind kind : kOtherKinds) compare(kind, d);
    compare(Kind::kNearTies, d);
  }
}

/// Of `order`, over sizes up to `largest`: this library's times and those of who knows the order.
std::vector<Times> timesOfOrder(double order, std::size_t largest, bool withLiteral,
                                const Extent& extent, Report& report) {
  std::vector<Times> all;
  for (std::size_t n = 1000; n <= largest; n *= 10) {
    for (const std::size_t d : kDimensions) {
      NeighbourRace race({n, d, order, Kind::kMixture, false, withLiteral});
      race.compareAnswers(kK, report);
      all.push_back(race.times(kK, extent.effort));
      report.times(fmt::format("nearest neighbours, {}, k = {}", race.name(), kK), all.back());
    }
  }
  return all;
}

void measureOrders(const Extent& extent, Report& report) {
  constexpr const char* kGroup = "nearest neighbours, other orders";
  const std::size_t largest = extent.isQuick ? 1000 : 100000;
  for (const double order : {1.0, 3.0}) {
    std::vector<double> ratios;
    for (const Times& times : timesOfOrder(order, largest, false, extent, report)) {
      ratios.push_back(times.at("vxclss") / bestBruteForce(times));
    }
    if (ratios.front() == 0.0) continue;  // no peer
    const std::string what = fmt::format("order {:g}, of the best brute force", order);
    report.figure(kGroup, fmt::format("{}, geometric mean of {} cases", what, ratios.size()),
                  geometricMean(ratios), "", atMost(0.3));
    report.figure(kGroup, what + ", worst case", *std::max_element(ratios.begin(), ratios.end()));
  }
  for (const double order : {0.5, 2.5}) {
    std::vector<double> speedups;
    for (const Times& times :
         timesOfOrder(order, std::min(largest, kLargestLiteral), true, extent, report)) {
      speedups.push_back(times.at("literal form") / times.at("vxclss"));
    }
    report.figure(kGroup, fmt::format("order {:g}, faster than the literal form, least", order),
                  *std::min_element(speedups.begin(), speedups.end()), "x", atLeast(3.0));
  }
}

/// The first run belongs to it: what training leaves for the first run to make is made there.
void measureTraining(const Extent& extent, Report& report) {
  constexpr std::size_t kN = 100000, kD = 16;
  std::vector<vxClassifierDataProviderMemory> sets;
  for (const long seed : {1, 2}) sets.push_back(dataOf(makeRows(Kind::kMixture, kN, kD, seed), 5));
  const vxFeaturePattern query(makeRows(Kind::kMixture, 1, kD, 3).values, {});
  const vxClassifierTrainParamsKNN params(kK);
  vxClassifierTool tool;
  vxClassifierResult result;
  const Times times = inTurns({contestant("vxclss, with the first run",
                                          [&, turn = Rotation(sets.size())]() mutable {
                                            tool.train(sets[turn.next()], params);
                                            tool.run(query, result);
                                          }),
                               contestant("vxclss, train() alone",
                                          [&, turn = Rotation(sets.size())]() mutable {
                                            tool.train(sets[turn.next()], params);
                                          })},
                              extent.effort);
  report.times(fmt::format("training, n = {}, d = {}", kN, kD), times);
  report.figure("nearest neighbours, training", "1e5 x 16, with the first run",
                1e3 * times.at("vxclss, with the first run"), "ms", atMost(8.0));
}

}  // namespace

void measureNeighbourVariants(const Extent& extent, Report& report) {
  compareKinds(report);
  measureKinds(extent, report);
  measureOrders(extent, report);
  measureTraining(extent, report);
}

}  // namespace peers
