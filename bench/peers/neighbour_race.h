// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_NEIGHBOUR_RACE_H_
#define BENCH_PEERS_NEIGHBOUR_RACE_H_

#include <vxclss/vxclss.h>

#include <string>
#include <vector>

#include "bench/peers/measure.h"
#include "bench/peers/neighbour_peer.h"
#include "bench/peers/report.h"

namespace peers {

struct NeighbourSetting {
  std::size_t n = 0;
  std::size_t d = 0;
  double order = 2.0;
  Kind kind = Kind::kMixture;
  bool withTrees = true;
  bool withLiteral = false;
};

/// This library and others over the same stored rows and queries.
class NeighbourRace {
 public:
  explicit NeighbourRace(const NeighbourSetting& setting);
  NeighbourRace(const NeighbourRace&) = delete;
  NeighbourRace& operator=(const NeighbourRace&) = delete;

  /// "n = 1000, d = 4", and what else is not as usual.
  std::string name() const;

  Times times(std::size_t k, const Effort& effort);

  /// This library alone, as a contestant named for the kind of data; refers to the race.
  Contestant alone(std::size_t k);

  /// Whether this library finds the definition's neighbours, the very ones, and the others as near
  /// ones.
  void compareAnswers(std::size_t k, Report& report);

 private:
  void train_(vxClassifierTool& tool, std::size_t numCategories) const;
  void retrain_(vxClassifierTool& tool, std::size_t k) const;
  std::vector<double> distances_(std::size_t query, const std::vector<long>& indices) const;

  NeighbourSetting setting_;
  Rows rows_;
  Rows queryRows_;
  Patterns patterns_;
  Patterns queries_;
  vxClassifierTool tool_;
  vxClassifierResult result_;
  std::vector<NeighbourPeerPtr> peers_;
};

/// The time of the fastest brute-force library among `times`; infinity if there is none.
double bestBruteForce(const Times& times);

}  // namespace peers

#endif  // BENCH_PEERS_NEIGHBOUR_RACE_H_
