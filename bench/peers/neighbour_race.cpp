// SPDX-License-Identifier: MIT
#include "bench/peers/neighbour_race.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace peers {

namespace {

constexpr std::size_t kCategories = 5;
constexpr double kComparedMeasurements = 4e6;  // powers taken to compare answers, about

}  // namespace

NeighbourRace::NeighbourRace(const NeighbourSetting& setting)
    : setting_(setting),
      rows_(makeRows(setting.kind, setting.n, setting.d, /*seed=*/1)),
      queryRows_(makeQueries(setting.kind, setting.d)),
      patterns_(patternsOf(rows_)),
      queries_(patternsOf(queryRows_)) {
  train_(tool_, kCategories);
  const auto add = [this](NeighbourPeerPtr peer) {
    if (peer != nullptr) peers_.push_back(std::move(peer));
  };
  const double order = setting.order;
  add(makeFaiss(rows_, queryRows_, order));
  add(makeOpenCv(rows_, queryRows_, order));
  add(makePlainScan(rows_, queryRows_, order));
  if (order != 2.0) add(makeFlannLinear(rows_, queryRows_, order));
  if (setting.withTrees) add(makeFlannTree(rows_, queryRows_, order));
  if (setting.withTrees) add(makeNanoflann(rows_, queryRows_, order));
  if (setting.withLiteral) add(makeLiteralScan(patterns_, queries_, order));
}

std::string NeighbourRace::name() const {
  std::string name = fmt::format("n = {}, d = {}", setting_.n, setting_.d);
  if (setting_.order != 2.0) name += fmt::format(", order {:g}", setting_.order);
  if (setting_.kind != Kind::kMixture) name += ", " + nameOf(setting_.kind);
  return name;
}

Times NeighbourRace::times(std::size_t k, const Effort& effort) {
  std::vector<Contestant> contestants = {alone(k)};
  contestants.front().name = "vxclss";
  for (const NeighbourPeerPtr& peer : peers_) {
    contestants.push_back(
        contestant(peer->name(), [&search = *peer, k, turn = Rotation(kQueries)]() mutable {
          search.search(turn.next(), k);
        }));
  }
  return inTurns(contestants, effort);
}

Contestant NeighbourRace::alone(std::size_t k) {
  retrain_(tool_, k);
  return contestant(nameOf(setting_.kind), [this, turn = Rotation(kQueries)]() mutable {
    tool_.run(*queries_[turn.next()], result_);
  });
}

void NeighbourRace::compareAnswers(std::size_t k, Report& report) {
  // A category for each row, so that the result tells which rows were found.
  vxClassifierTool tool;
  train_(tool, setting_.n);
  retrain_(tool, k);
  const NeighbourPeerPtr definition = makeLiteralScan(patterns_, queries_, setting_.order);
  const double affordable = kComparedMeasurements / static_cast<double>(setting_.n * setting_.d);
  const auto compared = static_cast<std::size_t>(std::clamp(affordable, 2.0, double{kQueries}));
  for (std::size_t query = 0; query < compared; ++query) {
    definition->search(query, k);
    std::vector<long> expected = definition->found();
    const std::vector<double> distances = distances_(query, expected);

    vxClassifierResult result;
    tool.run(*queries_[query], result);
    std::vector<long> found;
    for (const auto& category : result.categoryResults()) found.push_back(category.categoryLabel());
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    const bool isRight = found == expected;
    report.answers("neighbours, vxclss", 1, isRight ? 0 : 1);
    if (!isRight) report.wrong(fmt::format("neighbours, {}, k = {}", name(), k));

    const bool isHard = setting_.kind != Kind::kMixture;
    for (const NeighbourPeerPtr& peer : peers_) {
      peer->search(query, k);
      report.answers("neighbours, " + peer->name() + (isHard ? ", " + nameOf(setting_.kind) : ""),
                     1, distances_(query, peer->found()) == distances ? 0 : 1);
    }
  }
}

void NeighbourRace::train_(vxClassifierTool& tool, std::size_t numCategories) const {
  std::vector<long> labels;
  for (std::size_t i = 0; i < setting_.n; ++i) labels.push_back(labelOf(i, numCategories));
  vxClassifierDataProviderMemory data;
  data.data(patterns_, labels);
  tool.train(data, vxClassifierTrainParamsKNN(1));
}

void NeighbourRace::retrain_(vxClassifierTool& tool, std::size_t k) const {
  tool.retrain(vxClassifierTrainParamsKNN(
      static_cast<long>(k), vxPatternDistanceMetricNorm(setting_.order), vxClassifierCosts(1.0)));
}

std::vector<double> NeighbourRace::distances_(std::size_t query,
                                              const std::vector<long>& indices) const {
  std::vector<double> distances;
  for (const long i : indices) {
    distances.push_back(literalDistance(
        *queries_[query], *patterns_.at(static_cast<std::size_t>(i)), setting_.order));
  }
  std::sort(distances.begin(), distances.end());
  return distances;
}

double bestBruteForce(const Times& times) {
  double best = std::numeric_limits<double>::infinity();
  for (const char* name : {"FAISS flat", "OpenCV brute force", "FLANN linear"}) {
    const auto found = times.find(name);
    if (found != times.end()) best = std::min(best, found->second);
  }
  return best;
}

}  // namespace peers
