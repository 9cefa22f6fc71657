// SPDX-License-Identifier: MIT
// The search with metrics of a host, with stored patterns that no training would have kept, and
// with a host that wants it to stop.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/host_metric.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/plain_knn.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"

namespace {

/// Patterns at 0, 1, 2, ... with those numbers as labels.
std::vector<LabelledSample> line(long count) {
  std::vector<LabelledSample> samples;
  for (long i = 0; i < count; ++i) samples.push_back({{static_cast<double>(i)}, i});
  return samples;
}

plain::TrainingSet setOf(const vxClassifierDataProviderMemory& data) {
  plain::TrainingSet set;
  for (long i = 0; i < data.numPatterns(); ++i) {
    set.patterns.push_back(data.featurePattern(i));
    set.labels.push_back(data.categoryLabel(i));
  }
  return set;
}

/// A classifier and its plain twin, trained alike.
struct Pair {
  Pair(const vxClassifierDataProviderMemory& data, long k, const vxPatternDistanceMetric& metric) {
    const vxClassifierCosts costs(1.0);
    knn.train(data, vxClassifierTrainParamsKNN(k, metric, costs));
    const vxPtrHandle<vxPatternDistanceMetric> clone = metric.clone();
    twin.train(setOf(data),
               {k, [clone](const auto& a, const auto& b) { return clone->distance(a, b); }, costs});
  }

  void expectSameRun(const vxFeaturePattern& query, long stopAt = 0) {
    EXPECT_EQ(outcomeOfRun(knn, query, stopAt), outcomeOfRun(twin, query, stopAt));
  }

  vx_ClassifierKNN knn;
  plain::Knn twin;
};

/// What became of a run of a tool that was loaded with `set` and runs with two neighbours.
std::string outcomeOfHostileRun(const HostileSet& set, const vxFeaturePattern& query) {
  vxClassifierTrainParamsKNN params(2);
  vxClassifierTool tool;
  load(hostileToolBytes(&params, set), tool);
  params.throwIfNotReady(false);
  tool.retrain(params);
  const std::string outcome = outcomeOfRun(tool, query);
  return outcome.substr(0, outcome.find("; "));
}

/// What a metric of a host may answer for the pattern at `x`, asked for the `call`th time.
struct OddMetric {
  const char* name;
  double (*answer)(double x, long call);
};

void PrintTo(const OddMetric& row, std::ostream* out) { *out << row.name; }

class NeighbourSearchMetricTest : public testing::TestWithParam<OddMetric> {};

TEST_P(NeighbourSearchMetricTest, FollowsWhateverTheMetricAnswers) {
  for (const long k : {1L, 2L, 3L, 7L, 12L, 13L}) {
    // Both count their calls alone.
    const auto metric = [calls = 0L](const vxFeaturePattern&, const vxFeaturePattern& b) mutable {
      return GetParam().answer(b.featureMeasurement(0, true), ++calls);
    };
    Pair pair(providerOf(line(12)), k, HostMetric(metric));
    pair.expectSameRun({{0}, {}});
    pair.expectSameRun({{0}, {}});
  }
}

INSTANTIATE_TEST_SUITE_P(
    Host, NeighbourSearchMetricTest,
    testing::Values(
        OddMetric{"Negative", [](double x, long) { return -x; }},
        OddMetric{"Constant", [](double, long) { return 4.0; }},
        OddMetric{"ZerosOfBothSigns", [](double, long call) { return call % 2 ? 0.0 : -0.0; }},
        OddMetric{"NaN", [](double, long) { return kNaN; }},
        OddMetric{"NaNNowAndThen", [](double x, long call) { return call % 3 ? 9.0 - x : kNaN; }},
        OddMetric{"NaNFirst", [](double x, long) { return x < 3.0 ? kNaN : x; }},
        OddMetric{
            "MinusInfinity",
            [](double x, long) { return x == 5.0 ? -std::numeric_limits<double>::infinity() : x; }},
        OddMetric{"DownAndUp", [](double x, long) { return (x - 6.0) * (x - 6.0); }},
        OddMetric{"ThrowsAtOnce", [](double, long) -> double { throw HostError(); }},
        OddMetric{"ThrowsOnTheWay",
                  [](double x, long call) { return call == 8 ? throw HostError() : x; }}),
    [](const auto& row) { return row.param.name; });

TEST(NeighbourSearchHostTest, GivesTheMetricTheQueryThenTheStoredPatternItself) {
  const vxClassifierDataProviderMemory data = providerOf(line(5));
  const vxFeaturePattern query({2}, {});
  auto seen = std::make_shared<std::vector<std::pair<const void*, const void*>>>();
  const HostMetric metric([seen](const vxFeaturePattern& a, const vxFeaturePattern& b) {
    seen->emplace_back(&a, &b);
    return 1.0;
  });
  vx_ClassifierKNN classifier;
  classifier.train(data, vxClassifierTrainParamsKNN(2, metric, vxClassifierCosts(1.0)));
  vxClassifierResult result;
  classifier.run(query, result);
  ASSERT_EQ(seen->size(), 5u);
  for (long i = 0; i < 5; ++i) {
    EXPECT_EQ((*seen)[static_cast<std::size_t>(i)].first, &query);
    EXPECT_EQ((*seen)[static_cast<std::size_t>(i)].second, data.featurePattern(i).get());
  }
}

TEST(NeighbourSearchHostTest, AsksAMetricThatRefinesTheNorm) {
  Pair pair(providerOf(line(6)), 2, FarthestFirst(2.0));
  pair.expectSameRun({{0}, {}});
  vxClassifierResult result;
  pair.knn.run({{0}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{4, 5}));
}

TEST(NeighbourSearchHostTest, PollsOncePerStoredPatternAndOncePerCategory) {
  const Pair pair(providerOf(line(9)), 4, vxPatternDistanceMetricNorm(2.0));
  EXPECT_EQ(outcomeOfRun(pair.knn, {{0}, {}}).rfind("done after 13 polls", 0), 0u);
}

TEST(NeighbourSearchHostTest, StopsAtAnyPollAndLeavesTheResultAlone) {
  for (const long k : {1L, 4L, 20L}) {
    Pair pair(providerOf(line(9)), k, vxPatternDistanceMetricNorm(2.0));
    for (long stopAt = 1; stopAt <= 20; ++stopAt) pair.expectSameRun({{4}, {}}, stopAt);
    EXPECT_EQ(
        outcomeOfRun(pair.knn, {{4}, {}}, 9),
        "vxStopRequested: " + vfNarrow(vxStopRequested().message()) + " after 9 polls; " +
            bitsOf(vxClassifierResult({vxClassifierCategoryResult(77, 0.5, 1.0, 3.0)}, 0.25)));
  }
}

TEST(NeighbourSearchHostTest, PassesOnWhatTheAttentionHandlerThrows) {
  vx_ClassifierKNN classifier;
  classifier.train(providerOf(line(3)), vxClassifierTrainParamsKNN(1));
  vxClassifierResult result;
  vfSetAttentionHandler([](void*) -> bool { throw HostError(); }, nullptr);
  EXPECT_THROW(classifier.run({{0}, {}}, result), HostError);
  vfSetAttentionHandler(nullptr, nullptr);
  EXPECT_EQ(result, vxClassifierResult());
}

/// Stored patterns as an archive may bring them, and what a run makes of them.
struct HostileCase {
  const char* name;
  HostileSet set;
  vxFeaturePattern query;
  const char* outcome;
};

const char kPolls0[] =
    "vxClassifierDefs::BadFeatures: K-nearest neighbor classification does not support invalid "
    "measurements after 0 polls";

void PrintTo(const HostileCase& row, std::ostream* out) { *out << row.name; }

std::vector<HostileCase> hostileCases() {
  const auto one = sharedPattern({1});
  const auto two = sharedPattern({2});
  const auto pair = sharedPattern({1, 1});
  const auto invalid = sharedPattern({3}, {0});
  const vxPtrHandle_const<vxFeaturePattern> none;
  return {
      {"NoPatterns",
       {{}, {}},
       {{0}, {}},
       "vxClassifierDefs::InsufficientTrainData: No valid data was provided for training. after 0 "
       "polls"},
      {"FirstHandleIsEmpty", {{none, one}, {1, 2}}, {{0}, {}}, "vxBadPointer:  after 0 polls"},
      {"InvalidQueryBeforeAnEmptyFirstHandle", {{none, one}, {1, 2}}, {{0}, {0}}, kPolls0},
      {"LaterHandleIsEmpty",
       {{one, two, none, one}, {1, 2, 3, 4}},
       {{0}, {}},
       "vxBadPointer:  after 3 polls"},
      {"LengthOfTheFirstCounts", {{one, pair}, {1, 2}}, {{0, 0}, {}}, kPolls0},
      {"LaterPatternIsLonger",
       {{one, two, pair, none}, {1, 2, 3, 4}},
       {{0}, {}},
       "vxClassifierDefs::BadFeatures: Pattern distance function requires the number of "
       "measurementsin the two patterns to be equal after 3 polls"},
      {"FirstPatternIsInvalid",
       {{invalid, pair}, {1, 2}},
       {{0}, {}},
       "vxClassifierDefs::BadFeatures: Access to full feature vector requires that all features "
       "are valid. after 1 polls"},
      {"LaterPatternIsInvalid",
       {{one, two, two, invalid, none}, {1, 2, 3, 4, 5}},
       {{0}, {}},
       "vxClassifierDefs::BadFeatures: Access to full feature vector requires that all features "
       "are valid. after 4 polls"},
      {"NeighbourIsUnlabelled",
       {{one, two}, {-1, 2}},
       {{0}, {}},
       "vxClassifierDefs::BadLabel: Category labels must be >= 0 after 2 polls"},
      {"NeighbourHasAnyLabel",
       {{one, two}, {5, -7}},
       {{0}, {}},
       "vxClassifierDefs::BadLabel: Category labels must be >= 0 after 2 polls"},
      {"FarPatternHasAnyLabel",
       {{one, two, sharedPattern({9})}, {5, 5, -7}},
       {{0}, {}},
       "done after 4 polls"},
  };
}

class NeighbourSearchHostileTest : public testing::TestWithParam<HostileCase> {};

TEST_P(NeighbourSearchHostileTest, FailsWhereItMeetsTheFirstBadPattern) {
  EXPECT_EQ(outcomeOfHostileRun(GetParam().set, GetParam().query), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(Stored, NeighbourSearchHostileTest, testing::ValuesIn(hostileCases()),
                         [](const auto& row) { return row.param.name; });

TEST(NeighbourSearchHostTest, MeetsAMissingMetricAtTheFirstStoredPattern) {
  vxPtrHandle<vxClassifierTrainParamsKNN> params;
  load(hostileParamsBytes(2, nullptr), params);
  vxClassifierTool tool;
  tool.train(providerOf(line(3)), *params);
  EXPECT_EQ(outcomeOfRun(tool, {{0}, {}}).rfind("vxBadPointer:  after 1 polls", 0), 0u);
  EXPECT_EQ(outcomeOfRun(tool, {{0, 0}, {}}).rfind(kPolls0, 0), 0u);
}

TEST(NeighbourSearchHostTest, SearchesWithAnyOrderThatAnArchiveBrings) {
  const vxClassifierDataProviderMemory data = providerOf(line(7));
  for (double order : {kNaN, 0.0, -1.0, -0.5}) {
    for (const long k : {1L, 2L, 4L, 9L}) {
      double placeholder = 1234.5;
      const vxPatternDistanceMetricNorm metric(placeholder);
      std::string bytes = hostileParamsBytes(k, &metric);
      bytes.replace(bytes.find(stored(placeholder)), sizeof(order), stored(order));
      vxPtrHandle<vxClassifierTrainParamsKNN> params;
      load(bytes, params);
      vx_ClassifierKNN knn;
      knn.train(data, *params);
      plain::Knn twin;
      twin.train(setOf(data), {k, plain::norm(order), vxClassifierCosts(1.0)});
      for (const double x : {0.0, 0.5, 3.0}) {
        EXPECT_EQ(outcomeOfRun(knn, {{x}, {}}), outcomeOfRun(twin, {{x}, {}})) << order << ' ' << k;
      }
    }
  }
}

TEST(NeighbourSearchHostTest, SeesAStoredPatternThatTheHostChanges) {
  const vxPtrHandle<vxFeaturePattern> pattern(new vxFeaturePattern({9}, {}));
  vxClassifierDataProviderMemory data = providerOf(line(3));
  data.addData(pattern, 8);
  Pair pair(data, 2, vxPatternDistanceMetricNorm(2.0));
  pair.expectSameRun({{0}, {}});
  for (const vxFeaturePattern& changed :
       {vxFeaturePattern({0}, {}), vxFeaturePattern({0, 0}, {}), vxFeaturePattern({0}, {0}),
        vxFeaturePattern({kNaN}, {}), vxFeaturePattern({9}, {})}) {
    *pattern = changed;
    pair.expectSameRun({{0}, {}});
  }
}

TEST(NeighbourSearchHostTest, SeesWhatIsAddedThroughACopy) {
  vx_ClassifierKNN classifier;
  classifier.train(providerOf(line(3)), vxClassifierTrainParamsKNN(1));
  vx_ClassifierKNN copy(classifier);
  vxClassifierResult result;
  classifier.run({{10}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{2}));
  copy.trainIncremental({{10}, {}}, 6);
  classifier.run({{10}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{6}));
}

TEST(NeighbourSearchHostTest, SeesWhatTheHostDoesToATrainingSetThatAnArchiveSharesWithIt) {
  vx_ClassifierKNN original;
  original.train(providerOf(line(3)), vxClassifierTrainParamsKNN(1));
  vxPtrHandle_const<vxClassifierDataProviderMemory> set = original.data();
  vxPtrHandle<vx_Classifier> pointer = original.clone();
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive output(stream);
  static_cast<vxArchive&>(output) || set || pointer;

  vxPtrHandle<vxClassifierDataProviderMemory> data;
  vxPtrHandle<vx_Classifier> classifier;
  load(stream.str(), data, classifier);
  vxClassifierResult result;
  classifier->run({{10}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{2}));
  data->addData(sharedPattern({10}), 6);
  classifier->run({{10}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{6}));
  data->data({}, {});
  EXPECT_EQ(outcomeOfRun(*classifier, {{10}, {}}).rfind("vxClassifierDefs::InsufficientTrain", 0),
            0u);
  data->data({sharedPattern({1, 1})}, {3});
  classifier->run({{10, 10}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{3}));
}

TEST(NeighbourSearchHostTest, SeesAMetricThatTheHostChanges) {
  // One clone for all: the host keeps a hand on what the classifier uses.
  class Kept : public vxPatternDistanceMetricNorm {
   public:
    Kept() : vxPatternDistanceMetricNorm(2.0), kept_(new vxPatternDistanceMetricNorm(2.0)) {}
    vxPtrHandle<vxPatternDistanceMetric> clone() const override { return kept_; }
    const vxPtrHandle<vxPatternDistanceMetricNorm>& kept() const { return kept_; }

   private:
    vxPtrHandle<vxPatternDistanceMetricNorm> kept_;
  };
  const Kept metric;
  Pair pair(providerOf({{{0, 5}, 1}, {{4, 4}, 2}}), 1, metric);
  for (const double order : {2.0, 1.0, 3.0, 2.0}) {
    metric.kept()->order(order);
    pair.expectSameRun({{0, 0}, {}});
    vxClassifierResult result;
    pair.knn.run({{0, 0}, {}}, result);
    EXPECT_EQ(labelsOf(result), (std::vector<long>{1}));
  }
  metric.kept()->order(10.0);
  pair.expectSameRun({{0, 0}, {}});
  vxClassifierResult result;
  pair.knn.run({{0, 0}, {}}, result);
  EXPECT_EQ(labelsOf(result), (std::vector<long>{2}));
}

}  // namespace
