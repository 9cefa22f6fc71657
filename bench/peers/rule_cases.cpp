// SPDX-License-Identifier: MIT
#include <vxclss/vxclss.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/peers/cases.h"
#include "bench/peers/data.h"

namespace peers {

namespace {

constexpr std::size_t kRules = 100;
constexpr std::size_t kFeatures = 16;
constexpr double kPlateau = 0.25;  // half the width of a band's top
constexpr double kEnd = 1.5;       // and of its foot

/// A rising and a falling line with a flat top between them, as a C program would keep it.
struct Band {
  double foot, top, topEnd, footEnd;

  double score(double x) const {
    if (x < topEnd) return x >= top ? 1.0 : x <= foot ? 0.0 : (x - foot) / (top - foot);
    return x <= topEnd ? 1.0 : x >= footEnd ? 0.0 : (footEnd - x) / (footEnd - topEnd);
  }
};

/// kFeatures bands a rule, one rule after the other.
std::vector<Band> randomBands() {
  vxRandomUniform random(1);
  std::vector<Band> bands;
  while (bands.size() < kRules * kFeatures) {
    const double x = random.next(0.0, 1.0);
    bands.push_back({x - kEnd, x - kPlateau, x + kPlateau, x + kEnd});
  }
  return bands;
}

vxClassifierRuleTable tableOf(const std::vector<Band>& bands) {
  std::vector<vxClassifierRule> rules(kRules);
  for (std::size_t i = 0; i < kRules; ++i) {
    std::vector<vxPtrHandle<vxClsFtSc>> methods;
    for (std::size_t j = 0; j < kFeatures; ++j) {
      const Band& band = bands[i * kFeatures + j];
      const vxPtrHandle<vxClassifierFeatureScoreTwoSided> method(
          new vxClassifierFeatureScoreTwoSided);
      method->init(band.top, band.foot, band.foot, band.topEnd, band.footEnd, band.footEnd, 1.0,
                   0.0, 1.0, 0.0);
      methods.push_back(method);
    }
    rules[i].init(methods, static_cast<long>(i));
  }
  vxClassifierRuleTable table;
  table.train(rules);
  return table;
}

/// The first rule whose geometric mean of scores is above the threshold, -1 if there is none.
long plainLoop(const std::vector<Band>& bands, const std::vector<double>& values,
               double threshold) {
  for (std::size_t i = 0; i < kRules; ++i) {
    double product = 1.0;
    for (std::size_t j = 0; j < kFeatures; ++j) {
      product *= bands[i * kFeatures + j].score(values[j]);
    }
    if (product > 0.0) product = std::pow(product, 1.0 / kFeatures);
    if (product > threshold) return static_cast<long>(i);
  }
  return -1;
}

}  // namespace

void measureRules(const Extent& extent, Report& report) {
  const std::vector<Band> bands = randomBands();
  const vxClassifierRuleTable table = tableOf(bands);
  vxRandomUniform random(2);
  std::vector<vxClassifierFeatureVector> queries;
  while (queries.size() < kQueries) {
    std::vector<double> values(kFeatures);
    for (double& x : values) x = random.next(0.0, 1.0);
    queries.emplace_back(values);
  }
  for (const vxClassifierFeatureVector& query : queries) {
    for (const double threshold : {0.7, 0.8, 0.9, 0.95, 1.0}) {
      const bool isRight = table.classifyHardThreshold(query, threshold) ==
                           plainLoop(bands, query.featureValues(), threshold);
      report.answers("rule table, vxclss", 1, isRight ? 0 : 1);
      if (!isRight) report.wrong("rule table");
    }
  }

  // No rule is above 1.0, so that every one of them is scored.
  volatile long label = 0;
  const Times times =
      inTurns({contestant("vxclss",
                          [&, turn = Rotation(kQueries)]() mutable {
                            label = table.classifyHardThreshold(queries[turn.next()], 1.0);
                          }),
               contestant("plain loop",
                          [&, turn = Rotation(kQueries)]() mutable {
                            label = plainLoop(bands, queries[turn.next()].featureValues(), 1.0);
                          })},
              extent.effort);
  report.times("rule table, 100 rules x 16 two-sided features, none passes", times);
  report.figure("rule table, 100 rules x 16 two-sided features", "none passes, of a plain loop",
                times.at("vxclss") / times.at("plain loop"), "", atMost(1.0));
}

}  // namespace peers
