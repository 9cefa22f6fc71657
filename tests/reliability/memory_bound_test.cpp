// SPDX-License-Identifier: MIT
// What loading takes, and what is in use while what was loaded runs: never more than a fixed
// multiple of the bytes that were there, however little they are for what they promise.

#include "tests/support/memory_bound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/archived_types.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/faulty_device.h"
#include "tests/support/figures.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/samples.h"
#include "tests/support/technique_samples.h"
#include "tests/support/tree_samples.h"

namespace {

/// What is done with an object that arrived.
using Uses = std::function<void()>;

/// Bytes of an archive, and how to load them.
struct Dense {
  std::string name;
  std::function<std::string()> bytes;
  std::function<Uses(vxArchive&)> load;

  friend std::ostream& operator<<(std::ostream& out, const Dense& dense) {
    return out << dense.name;
  }
};

template <class T>
Uses loadOnly(vxArchive& archive) {
  T value{};
  archive || value;
  return [] {};
}

/// A classifier in place, or a tool.
template <class T>
std::function<Uses(vxArchive&)> loadAndRun(const vxFeaturePattern& query) {
  return [query](vxArchive& archive) -> Uses {
    const auto loaded = std::make_shared<T>();
    archive || *loaded;
    return [query, loaded] {
      vxClassifierResult result;
      for (int i = 0; i < 2; ++i) tryAll([&] { loaded->run(query, result); });
    };
  };
}

vxFeaturePattern wideQuery(long measurements, const std::vector<long>& invalid = {}) {
  return {std::vector<double>(static_cast<std::size_t>(measurements), 0.5), invalid};
}

std::vector<double> wave(long count) {
  std::vector<double> values;
  for (long i = 0; i < count; ++i) values.push_back(std::sin(static_cast<double>(i)));
  return values;
}

/// Many references to few patterns: a copy of each measurement would be a square of the bytes.
std::string sharedPatternsBytes(long references, long measurements) {
  HostileSet set;
  const auto pattern = sharedPattern(wave(measurements));
  for (long i = 0; i < references; ++i) {
    set.patterns.push_back(pattern);
    set.labels.push_back(i % 3);
  }
  const vxClassifierTrainParamsKNN params(1);
  return hostileToolBytes(&params, set);
}

/// A vector of so many elements that are all zeros, or a beginning of one.
std::string zeros(std::size_t bytes) { return fromHex("00 ffffffff") + std::string(bytes, '\0'); }

vx_PDFMultivariateNormal normalOf(long measurements) {
  vx_PDFMultivariateNormal density;
  for (int i = 0; i < 3; ++i) {
    std::vector<double> values = wave(measurements);
    values[0] += i;
    density.updateWithData({{values, {}}});
  }
  return density;
}

/// Many references to one model of many groups that share one density.
std::string sharedModelsBytes(long references, long groups) {
  const vx_PDFMultivariateNormal density = normalOf(1);
  ArchivedBayesModel archived{0, groups, {}, {}};
  for (long m = 0; m < groups; ++m) {
    archived.groups.push_back({m});
    archived.densities.push_back(&density);
  }
  const vx_CategoryModelBayesian model = bayesModel(archived);
  const vxClassifierTrainParamsBayesian params = bayesianParams(1.0);
  std::vector<long> labels;
  for (long i = 0; i < references; ++i) labels.push_back(i);
  return bayesClassifierBytes(
      &params, labels,
      std::vector<const vxPersistent*>(static_cast<std::size_t>(references), &model));
}

/// Many models of one group each, whose densities are one large one.
std::string sharedDensityBytes(long models, long measurements) {
  const vx_PDFMultivariateNormal density = normalOf(measurements);
  std::vector<long> group;
  for (long m = 0; m < measurements; ++m) group.push_back(m);
  std::vector<vx_CategoryModelBayesian> all(static_cast<std::size_t>(models),
                                            bayesModel({0, measurements, {group}, {&density}}));
  std::vector<long> labels;
  for (vx_CategoryModelBayesian& model : all) {
    model.categoryLabel(static_cast<long>(labels.size()));
    labels.push_back(model.categoryLabel());
  }
  std::vector<const vxPersistent*> pointers;
  for (const auto& model : all) pointers.push_back(&model);
  const vxClassifierTrainParamsBayesian params = bayesianParams(1.0);
  return bayesClassifierBytes(&params, labels, pointers);
}

/// A tree of 2^levels paths and as many nodes as levels.
std::string sharedTreeBytes(int levels) {
  vxPtrHandle_const<vxDecisionTree> tree = leafWith({1, 2, 3}).clone();
  for (int i = 0; i < levels; ++i) {
    tree = TreeHandle(new vxDecisionTreeNode(vxRangePredicate({0.0, 1.0}, {0}), *tree, *tree));
  }
  vx_ClassifierDecisionTree classifier;
  classifier.trainManual(*tree);
  return inPlace(classifier);
}

/// As many objects of one class as their bytes allow.
template <class T>
Dense manyObjects(const std::string& name, const T& object) {
  const auto bytes = [object] {
    std::vector<vxPtrHandle<T>> handles;
    for (int i = 0; i < 20'000; ++i) handles.emplace_back(new T(object));
    return stored(handles);
  };
  return {name, bytes, &loadOnly<std::vector<vxPtrHandle<T>>>};
}

/// A model that claims a measurement far beyond any other.
std::string farMeasurementBytes() {
  const vx_PDFMultivariateNormal density = normalOf(1);
  const vx_CategoryModelBayesian model = bayesModel({0, 4'000'000, {{3'999'999}}, {&density}});
  const vxClassifierTrainParamsBayesian params = bayesianParams(1.0);
  return bayesClassifierBytes(&params, {0}, {&model});
}

Uses loadAndCheckRunnable(vxArchive& archive) {
  const auto loaded = std::make_shared<BayesProbe>();
  archive || *loaded;
  return [loaded] { tryAll([&] { loaded->checkRunnable_(); }); };
}

std::string toolBytes(const Technique& technique) { return inPlace(technique.trained()); }

std::vector<Dense> denseArchives() {
  using Tool = vxClassifierTool;
  using Knn = vx_ClassifierKNN;
  using Bayesian = vx_ClassifierBayesian;
  constexpr std::size_t kMuch = 1 << 20;
  const std::vector<Technique> trained = techniques();

  return {
      {"Flags", [] { return zeros(kMuch); }, &loadOnly<std::vector<bool>>},
      {"NoFlags", [] { return fromHex("00 ffffffff 02"); }, &loadOnly<std::vector<bool>>},
      {"Doubles", [] { return zeros(kMuch); }, &loadOnly<std::vector<double>>},
      {"Longs", [] { return zeros(kMuch); }, &loadOnly<std::vector<long>>},
      {"Texts", [] { return zeros(kMuch); }, &loadOnly<std::vector<std::wstring>>},
      {"Matrices", [] { return zeros(kMuch); }, &loadOnly<std::vector<vxNMMatrix>>},
      {"Sets", [] { return zeros(kMuch); }, &loadOnly<std::vector<std::vector<long>>>},
      {"EmptyHandles", [] { return zeros(kMuch); },
       &loadOnly<std::vector<vxPtrHandle<vxFeaturePattern>>>},
      {"Rules", [] { return zeros(kMuch); }, &loadOnly<vxClassifierRuleTable>},
      {"CategoryResults", [] { return fromHex("00") + zeros(kMuch); },
       &loadOnly<vxClassifierResult>},
      {"Characters", [] { return fromHex("ffffffff") + std::string(kMuch, '\0'); },
       &loadOnly<std::wstring>},
      {"IgnoringFunctions",
       [] {
         std::string bytes = fromHex("00 ffffffff");
         for (int i = 0; i < 100'000; ++i) bytes += fromHex("32160000");
         return bytes;
       },
       &loadOnly<vxClassifierRule>},
      manyObjects("EmptyPatterns", vxFeaturePattern({}, {})),
      manyObjects("EmptyProviders", vxClassifierDataProviderMemory()),
      manyObjects("EmptyDensities", vx_PDFMultivariateNormal()),
      manyObjects("EmptyBinomials", vx_PDFBinomial({{1.0}, {}})),
      manyObjects("EmptyModels", vx_CategoryModelBayesian()),
      manyObjects("UntrainedKnn", Knn()),
      manyObjects("UntrainedBayesian", Bayesian()),
      manyObjects("UntrainedTrees", vx_ClassifierDecisionTree()),
      manyObjects("KnnParams", vxClassifierTrainParamsKNN(1)),
      manyObjects("BayesianParams", Archived<vxClassifierTrainParamsBayesian>::plain()),
      manyObjects("Norms", vxPatternDistanceMetricNorm(1.0)),
      manyObjects("Ranges", vxRangePredicate({0.0, 1.0}, {})),
      manyObjects("Comparisons", vxComparisonPredicate(0, 1)),
      manyObjects("Validities", vxValidityPredicate(std::vector<long>())),
      manyObjects("Leaves", vxDecisionTreeLeaf(vxClassifierResult())),
      manyObjects("EmptyNodes", nodeWith(TreeHandle(), TreeHandle(), PredicateHandle())),
      {"Bayes", [trained] { return toolBytes(trained[0]); }, loadAndRun<Tool>(wideQuery(5))},
      {"KNN", [trained] { return toolBytes(trained[1]); }, loadAndRun<Tool>(wideQuery(5))},
      {"Tree", [trained] { return toolBytes(trained[2]); }, loadAndRun<Tool>(wideQuery(5))},
      {"SharedPatterns", [] { return sharedPatternsBytes(3000, 3000); },
       loadAndRun<Tool>(wideQuery(3000))},
      {"SharedNarrowPatterns", [] { return sharedPatternsBytes(50'000, 8); },
       loadAndRun<Tool>(wideQuery(8))},
      {"SharedPatternsWithoutMeasurements", [] { return sharedPatternsBytes(50'000, 0); },
       loadAndRun<Tool>(wideQuery(0))},
      {"SharedModels", [] { return sharedModelsBytes(1000, 1000); },
       loadAndRun<Bayesian>(wideQuery(1000))},
      {"SharedDensity", [] { return sharedDensityBytes(2000, 60); },
       loadAndRun<Bayesian>(wideQuery(60))},
      {"SharedDensityOfAnInvalidMeasurement", [] { return sharedDensityBytes(2000, 60); },
       loadAndRun<Bayesian>(wideQuery(60, {7}))},
      {"WideDensity", [] { return sharedDensityBytes(1, 200); },
       loadAndRun<Bayesian>(wideQuery(200))},
      {"FarMeasurement", &farMeasurementBytes, &loadAndCheckRunnable},
      {"SharedTree", [] { return sharedTreeBytes(300); },
       loadAndRun<vx_ClassifierDecisionTree>(wideQuery(2))},
  };
}

class MemoryBoundTest : public testing::TestWithParam<Dense> {
 protected:
  static void expectBound(FaultyDevice& device) {
    std::istream stream(&device);
    Uses use = [] {};
    const allocator::Meter meter;
    succeedsOrRefuses([&] {
      vxInputArchive archive(stream);
      use = GetParam().load(archive);
    });
    expectWithinBound(meter, device.numRead());
    const std::size_t taken = meter.bytesTaken();
    use();
    EXPECT_LE(meter.peak(), memoryBound(device.numRead()));
    ASSERT_GT(device.numRead(), 0u);
    showFigure("bytes read", static_cast<long long>(device.numRead()));
    showFigure("bytes taken per byte read", static_cast<long long>(taken / device.numRead()));
    showFigure("peak per byte read", static_cast<long long>(meter.peak() / device.numRead()));
  }
};

TEST_P(MemoryBoundTest, HoldsForALoadAndTheFirstRun) {
  FaultyDevice device(GetParam().bytes());
  expectBound(device);
}

// What a stream has at hand need not belong to what its count promises.
TEST_P(MemoryBoundTest, HoldsWhereBytesWithoutEndAreReady) {
  constexpr std::size_t kMore = 1 << 24;
  FaultyDevice device(GetParam().bytes() + std::string(kMore, '\xff'));
  device.offerAll();
  expectBound(device);
}

INSTANTIATE_TEST_SUITE_P(Dense, MemoryBoundTest, testing::ValuesIn(denseArchives()),
                         [](const testing::TestParamInfo<Dense>& row) { return row.param.name; });

// Elements are loaded over those of the target, so a rule or a table is loaded into a copy of it.
TEST(RuleMemoryTest, IsThatOfACopyOfTheTableBesidesTheBound) {
  vxClassifierRule rule;
  rule.init(std::vector(50, vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore)), 1);
  vxClassifierRuleTable table;
  table.train(std::vector(5000, rule));
  std::size_t ofACopy = 0;
  {
    const allocator::Meter meter;
    const vxClassifierRuleTable copy(table);
    ofACopy = meter.bytesTaken();
  }
  for (const std::string& bytes : {std::string(), stored(table)}) {
    FaultyDevice device(bytes);
    std::istream stream(&device);
    vxInputArchive archive(stream);
    const allocator::Meter meter;
    succeedsOrRefuses([&] { archive || table; });
    EXPECT_LE(meter.bytesTaken(), ofACopy + memoryBound(bytes.size()));
  }
}

TEST(PatternMemoryTest, IsThatOfTheNumbersWhileAllAreValid) {
  const std::vector<double> numbers = wave(16);
  const allocator::Meter meter;
  const vxFeaturePattern pattern(numbers, {});
  EXPECT_EQ(meter.bytesTaken(), 16 * sizeof(double));
  const vxFeaturePattern copy(pattern);
  EXPECT_EQ(meter.bytesTaken(), 2 * 16 * sizeof(double));
  const vxFeaturePattern withInvalid(numbers, {3});
  EXPECT_GT(meter.bytesTaken(), 3 * 16 * sizeof(double));
}

}  // namespace
