// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <cmath>
#include <numeric>

#include "bench/peers/bayes_peer.h"
#include "bench/peers/cases.h"
#include "bench/peers/data.h"
#include "bench/peers/plain_density.h"
#include "bench/peers/sklearn_peer.h"

namespace peers {

namespace {

enum Grouping { kSingle, kFull };

/// Rows of a unit spread around a mean of their category, the categories in turn.
Rows bayesRows(std::size_t n, std::size_t d, std::size_t numCategories, long seed) {
  vxRandomGaussian means(/*seed=*/9), random(seed);
  std::vector<double> centres(numCategories * d);
  for (double& x : centres) x = means.next(0.0, 1.0);
  Rows rows{n, d, std::vector<double>(n * d)};
  for (std::size_t i = 0; i < rows.values.size(); ++i) {
    const std::size_t category = i / d % numCategories;
    rows.values[i] = random.next(centres[category * d + i % d], 1.0);
  }
  return rows;
}

vxClassifierTrainParamsBayesian paramsFor(Grouping grouping, std::size_t numCategories,
                                          std::size_t d) {
  vxClassifierDistributionTypes types;
  std::vector<long> all(d);
  std::iota(all.begin(), all.end(), 0L);
  for (std::size_t label = 0; grouping == kFull && label < numCategories; ++label) {
    types.setDependent(static_cast<long>(label), all);
  }
  return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern({}, {})};
}

/// This library and others, trained on the same rows.
class BayesRace {
 public:
  BayesRace(Grouping grouping, std::size_t numCategories, std::size_t d, SklearnPeer* sklearn)
      : grouping_(grouping),
        numCategories_(numCategories),
        rows_(bayesRows(numCategories * 4 * d, d, numCategories, /*seed=*/1)),
        queryRows_(bayesRows(kQueries, d, numCategories, /*seed=*/2)),
        queries_(patternsOf(queryRows_)),
        sklearn_(grouping == kSingle ? sklearn : nullptr) {
    tool_.train(dataOf(rows_, numCategories), paramsFor(grouping, numCategories, d));
    if (sklearn_ != nullptr) sklearn_->fit(rows_, numCategories, queryRows_);
    if (grouping == kFull) openCv_ = makeOpenCvBayes(rows_, queryRows_, numCategories);
  }

  std::string name() const {
    return fmt::format("{}, C = {}, d = {}",
                       grouping_ == kSingle ? "single measurements" : "full covariance",
                       numCategories_, rows_.d);
  }

  Times times(const Effort& effort) {
    std::vector<Contestant> contestants = {
        contestant("vxclss", [this, turn = Rotation(kQueries)]() mutable {
          tool_.run(*queries_[turn.next()], result_);
        })};
    if (sklearn_ != nullptr) {
      contestants.push_back(sklearn_->oneRow());
      for (const long batch : {100, 1000}) contestants.push_back(sklearn_->perRowOf(batch));
    }
    if (openCv_ != nullptr) {
      contestants.push_back(contestant(
          "OpenCV NormalBayes",
          [this, turn = Rotation(kQueries)]() mutable { openCv_->predict(turn.next()); }));
    }
    return inTurns(contestants, effort);
  }

  void compareAnswers(Report& report) {
    const PlainDensities densities(rows_, numCategories_, grouping_ == kFull);
    std::vector<long> labels;
    for (std::size_t query = 0; query < kQueries; ++query) {
      tool_.run(*queries_[query], result_);
      labels.push_back(result_.categoryResults().front().categoryLabel());
      const bool isRight = densities.agree(queryRows_.row(query), result_);
      report.answers("Bayes scores, vxclss (beyond 1e-9 of the largest)", 1, isRight ? 0 : 1);
      if (!isRight) report.wrong("Bayes, " + name());
    }
    const std::vector<long> theirs = sklearn_ != nullptr ? sklearn_->labels() : labels;
    for (std::size_t query = 0; query < kQueries; ++query) {
      if (sklearn_ != nullptr) {
        report.answers("Bayes decisions, GaussianNB", 1, theirs[query] == labels[query] ? 0 : 1);
      }
      if (openCv_ != nullptr) {
        report.answers("Bayes decisions, OpenCV", 1,
                       openCv_->predict(query) == labels[query] ? 0 : 1);
      }
    }
  }

 private:
  Grouping grouping_;
  std::size_t numCategories_;
  Rows rows_;
  Rows queryRows_;
  Patterns queries_;
  vxClassifierTool tool_;
  vxClassifierResult result_;
  SklearnPeer* sklearn_;
  BayesPeerPtr openCv_;
};

/// Adds the ratio to `other` if that took part.
void ratio(const Times& times, const std::string& other, const std::string& what, const Goal& goal,
           Report& report) {
  const auto found = times.find(other);
  if (found == times.end()) return;
  report.figure("Bayes", what + ", of " + other, times.at("vxclss") / found->second, "", goal);
}

Times measureRun(Grouping grouping, std::size_t numCategories, std::size_t d, double microseconds,
                 SklearnPeer* sklearn, const Extent& extent, Report& report) {
  BayesRace race(grouping, numCategories, d, sklearn);
  race.compareAnswers(report);
  const Times times = race.times(extent.effort);
  report.times("Bayes, " + race.name(), times);
  report.figure("Bayes", race.name(), 1e6 * times.at("vxclss"), "us", atMost(microseconds));
  const Goal batch = atMost(numCategories == 300 ? 0.5 : 0.25);
  ratio(times, "GaussianNB, one row", race.name(), {}, report);
  ratio(times, "GaussianNB, a row of 100", race.name(), batch, report);
  ratio(times, "GaussianNB, a row of 1000", race.name(), {}, report);
  ratio(times, "OpenCV NormalBayes", race.name(), atMost(0.3), report);
  return times;
}

void measureTraining(Grouping grouping, SklearnPeer* sklearn, const Extent& extent,
                     Report& report) {
  constexpr std::size_t kN = 100000, kD = 32, kCategories = 10;
  const Rows rows = bayesRows(kN, kD, kCategories, /*seed=*/1);
  const vxClassifierDataProviderMemory data = dataOf(rows, kCategories);
  const vxClassifierTrainParamsBayesian params = paramsFor(grouping, kCategories, kD);
  vxClassifierTool tool;
  std::vector<Contestant> contestants = {contestant("vxclss", [&] { tool.train(data, params); })};
  BayesPeerPtr openCv;
  if (grouping == kSingle && sklearn != nullptr) {
    sklearn->fit(rows, kCategories, rows);
    contestants.push_back(sklearn->training());
  }
  if (grouping == kFull) openCv = makeOpenCvBayes(rows, rows, kCategories);
  if (openCv != nullptr) {
    contestants.push_back(contestant("OpenCV NormalBayes", [&] { openCv->train(); }));
  }
  const Times times = inTurns(contestants, extent.effort);
  const std::string what = fmt::format("training 1e5 x 32, C = 10, {}",
                                       grouping == kSingle ? "single" : "full covariance");
  report.times("Bayes, " + what, times);
  ratio(times, "GaussianNB", what, atMost(0.3), report);
  ratio(times, "OpenCV NormalBayes", what, atMost(0.8, 1.0), report);
}

void plot(SklearnPeer* sklearn, const Extent& extent, Report& report) {
  constexpr std::size_t kD = 16;
  for (const std::size_t numCategories : {2, 5, 10, 30, 100, 300, 1000}) {
    report.point("Bayes by C", static_cast<double>(numCategories),
                 BayesRace(kSingle, numCategories, kD, sklearn).times(extent.effort));
    if (numCategories > 300) continue;
    report.point("Bayes, full covariance, by C", static_cast<double>(numCategories),
                 BayesRace(kFull, numCategories, kD, sklearn).times(extent.effort));
  }
}

}  // namespace

void measureBayes(const Extent& extent, Report& report) {
  const std::unique_ptr<SklearnPeer> sklearn = SklearnPeer::start(report);
  measureRun(kSingle, 3, 8, 0.24, sklearn.get(), extent, report);
  measureRun(kSingle, 300, 32, 28.0, sklearn.get(), extent, report);
  measureRun(kFull, 30, 32, 6.0, sklearn.get(), extent, report);
  measureTraining(kSingle, sklearn.get(), extent, report);
  measureTraining(kFull, sklearn.get(), extent, report);
  if (extent.withPlots) plot(sklearn.get(), extent, report);
}

}  // namespace peers
