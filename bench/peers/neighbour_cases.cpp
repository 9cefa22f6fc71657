// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>

#include "bench/peers/cases.h"
#include "bench/peers/neighbour_race.h"

namespace peers {

namespace {

constexpr const char* kGroup = "nearest neighbours, Euclidean";
constexpr std::size_t kDimensions[] = {4, 16, 64};
constexpr std::size_t kNeighbours[] = {1, 5, 25};

/// The ratios of this library's time to that of others, over all cases.
class Ratios {
 public:
  void add(const std::string& work, const Times& times) {
    const double own = times.at("vxclss");
    for (const auto& [name, seconds] : times) {
      if (name != "vxclss") ratios_[name].push_back(own / seconds);
    }
    const double toBest = own / bestBruteForce(times);
    if (toBest > worst_) {
      worst_ = toBest;
      worstWork_ = work;
    }
  }

  void reportTo(Report& report) const {
    for (const auto& [name, ratios] : ratios_) {
      Goal goal;
      if (name == "FAISS flat" || name == "OpenCV brute force") goal = atMost(0.07, 0.2);
      if (name == "plain double scan") goal = atMost(0.3, 0.5);
      const std::string mean = fmt::format("geometric mean of {} cases", ratios.size());
      report.figure(kGroup, "of " + name + ", " + mean, geometricMean(ratios), "", goal);
    }
    if (worst_ > 0.0) {
      report.figure(kGroup, "of the best brute force, worst case (" + worstWork_ + ")", worst_, "",
                    atMost(1.0));
    }
  }

 private:
  std::map<std::string, std::vector<double>> ratios_;
  double worst_ = 0.0;
  std::string worstWork_;
};

void measureGrid(const Extent& extent, Report& report) {
  Ratios ratios;
  std::vector<std::size_t> sizes = {1000, 10000};
  if (!extent.isQuick) sizes.push_back(100000);
  for (const std::size_t n : sizes) {
    for (const std::size_t d : kDimensions) {
      NeighbourRace race({n, d});
      for (const std::size_t k : kNeighbours) {
        race.compareAnswers(k, report);
        const std::string work = fmt::format("{}, k = {}", race.name(), k);
        const Times times = race.times(k, extent.effort);
        report.times("nearest neighbours, " + work, times);
        ratios.add(work, times);
      }
    }
  }
  ratios.reportTo(report);
}

void plot(const Extent& extent, Report& report) {
  constexpr std::size_t kN = 100000, kD = 16, kK = 5;
  for (const std::size_t n : {100, 1000, 10000, 100000, 1000000}) {
    report.point("neighbours by n", static_cast<double>(n),
                 NeighbourRace({n, kD}).times(kK, extent.effort));
  }
  for (const std::size_t d : {2, 4, 8, 16, 32, 64, 128}) {
    report.point("neighbours by d", static_cast<double>(d),
                 NeighbourRace({kN, d}).times(kK, extent.effort));
  }
  NeighbourRace race({kN, kD});
  for (const std::size_t k : {1, 2, 5, 10, 25, 50, 100}) {
    report.point("neighbours by k", static_cast<double>(k), race.times(k, extent.effort));
  }
}

}  // namespace

void measureNeighbours(const Extent& extent, Report& report) {
  measureGrid(extent, report);
  if (extent.withPlots) plot(extent, report);
}

}  // namespace peers
