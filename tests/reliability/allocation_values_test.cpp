// SPDX-License-Identifier: MIT
// Records, providers, trees, rules and generators while their allocations fail.

#include <gtest/gtest.h>

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/archived_types.h"
#include "tests/support/failing_operation.h"
#include "tests/support/faulty_device.h"
#include "tests/support/figures.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "vxclss/data_generator.h"

namespace {

using Types = vxClassifierDistributionTypes;
using Labels = std::vector<long>;

template <class R>
std::string printed(const R& value) {
  return testing::PrintToString(value);
}

/// An object that its constructor gives, or nothing.
template <class T>
NamedOperation constructing(const std::string& name, const std::function<T()>& make) {
  return answering<T>(name, make, &inPlace<T>);
}

template <class T>
NamedOperation changing(const std::string& name, const std::function<T()>& make,
                        const std::function<void(T&)>& act) {
  return ::changing<T>(name, make, act, &inPlace<T>);
}

template <class T>
T sample() {
  return Archived<T>::samples().back().object;
}

std::vector<vxClassifierCategoryResult> categories(long count) {
  std::vector<vxClassifierCategoryResult> results;
  for (long i = 0; i < count; ++i) {
    results.push_back({i, 1.0 / static_cast<double>(1 + i % 7), 0.5, static_cast<double>(i % 5)});
  }
  return results;
}

std::vector<NamedOperation> recordOperations() {
  using Pattern = vxFeaturePattern;
  using Provider = vxClassifierDataProviderMemory;
  using Costs = vxClassifierCosts;
  using Frequencies = vxClassifierFrequencies;
  using Result = vxClassifierResult;
  const auto pattern = sharedPattern({7.0, 8.0});
  const std::vector<vxClassifierCategoryResult> few = categories(3);
  const std::vector<vxClassifierCategoryResult> many = categories(100);
  const auto weighted = [](const auto& results) {
    return Result(results, sample<Frequencies>(), sample<Costs>(), 1.0);
  };
  return {
      constructing<Pattern>("Pattern",
                            [] {
                              return Pattern({1.0, 2.0, 3.0}, {1});
                            }),
      answering<Labels>(
          "PatternInvalidIndices",
          [] {
            return Pattern({1.0, 2.0}, {1}).invalidFeatureIndices();
          },
          &printed<Labels>),
      changing<Provider>("ProviderData", &Archived<Provider>::filled,
                         [pattern](Provider& provider) {
                           provider.data({pattern, pattern}, {0, -1});
                         }),
      changing<Provider>("ProviderAddData", &Archived<Provider>::filled,
                         [pattern](Provider& provider) { provider.addData(pattern, 4); }),
      changing<Provider>(
          "ProviderSetName", &Archived<Provider>::filled,
          [](Provider& provider) { provider.setName(L"a name that no string has room for"); }),
      changing<Provider>(
          "ProviderSetDescription", &Archived<Provider>::filled,
          [](Provider& provider) { provider.setDescription(L"a text that needs some room"); }),
      answering<std::wstring>(
          "ProviderName", [] { return Archived<Provider>::filled().name(); },
          &printed<std::wstring>),
      changing<Costs>("CostsOverride", &sample<Costs>,
                      [](Costs& costs) { costs.misclassificationCostOverride(5, 6, 7.0); }),
      changing<Frequencies>(
          "FrequenciesOverride", &sample<Frequencies>,
          [](Frequencies& frequencies) { frequencies.categoryFrequencyOverride(5, 6.0); }),
      constructing<Result>("ResultOfFew", [few] { return Result(few, 1.0); }),
      constructing<Result>("ResultOfMany", [many] { return Result(many, 1.0); }),
      constructing<Result>("WeightedResultOfFew", [few, weighted] { return weighted(few); }),
      constructing<Result>("WeightedResultOfMany", [many, weighted] { return weighted(many); }),
      changing<Types>("TypesOverride", &Archived<Types>::filled,
                      [](Types& types) { types.distributionTypeOverride(1, 1, Types::eNormal); }),
      changing<Types>("TypesSetDependent", &Archived<Types>::filled,
                      [](Types& types) {
                        types.setDependent(4, {2, 7, 2});
                      }),
      changing<Types>(
          "TypesMergeSets",
          [] {
            Types types = Archived<Types>::filled();
            types.setDependent(3, {5, 6});
            types.setDependent(3, {8});
            return types;
          },
          [](Types& types) {
            types.setDependent(3, {6, 9, 1, 4});
          }),
  };
}

std::vector<NamedOperation> parameterOperations() {
  using Bayesian = vxClassifierTrainParamsBayesian;
  using Knn = vxClassifierTrainParamsKNN;
  return {
      constructing<Bayesian>("Bayesian", &Archived<Bayesian>::filled),
      changing<Bayesian>("BayesianTypes", &Archived<Bayesian>::plain,
                         [](Bayesian& params) { params.distributionTypes(sample<Types>()); }),
      changing<Bayesian>(
          "BayesianFrequencies", &Archived<Bayesian>::plain,
          [](Bayesian& params) { params.categoryFrequencies(sample<vxClassifierFrequencies>()); }),
      changing<Bayesian>(
          "BayesianCosts", &Archived<Bayesian>::plain,
          [](Bayesian& params) { params.misclassificationCosts(sample<vxClassifierCosts>()); }),
      changing<Bayesian>("BayesianMaxima", &Archived<Bayesian>::plain,
                         [](Bayesian& params) {
                           params.maxMeasurementValues({{1.0, 2.0}, {0}});
                         }),
      constructing<Knn>("KnnOfK", [] { return Knn(3); }),
      constructing<Knn>("Knn", &Archived<Knn>::filled),
      changing<Knn>("KnnMetric", &Archived<Knn>::filled,
                    [](Knn& params) { params.distanceMetric(vxPatternDistanceMetricNorm(1.0)); }),
      changing<Knn>("KnnCosts", &Archived<Knn>::filled,
                    [](Knn& params) {
                      vxClassifierCosts costs(2.0);
                      costs.misclassificationCostOverride(1, 0, 2.0);
                      params.misclassificationCosts(costs);
                    }),
  };
}

std::vector<NamedOperation> treeOperations() {
  using Leaf = vxDecisionTreeLeaf;
  using Node = vxDecisionTreeNode;
  const vx_ClassifierDecisionTree trained = Archived<vx_ClassifierDecisionTree>::trained();
  const auto tree = trained.decisionTree();
  const auto same = tree->clone();
  return {
      constructing<vxRangePredicate>("Range",
                                     [] {
                                       return vxRangePredicate({1.0, 2.0}, {3, 4});
                                     }),
      constructing<vxValidityPredicate>("Validity",
                                        [] {
                                          return vxValidityPredicate({3, 4});
                                        }),
      answering<Labels>(
          "RangeIndices", [] { return sample<vxRangePredicate>().measurementIndices(); },
          &printed<Labels>),
      constructing<Leaf>("Leaf", &Archived<Leaf>::filled),
      answering<Labels>(
          "LeafLabels", [] { return Archived<Leaf>::filled().categoryLabels(); }, &printed<Labels>),
      changing<Leaf>(
          "LeafResult", &Archived<Leaf>::filled,
          [](Leaf& leaf) { leaf.classifierResult(vxClassifierResult(categories(3), 1.0)); }),
      constructing<Node>("DefaultNode", [] { return Node(); }),
      constructing<Node>("Node", &Archived<Node>::filled),
      changing<Node>("NodeTrueTree", &Archived<Node>::filled,
                     [](Node& node) { node.trueTree(Leaf(vxClassifierResult())); }),
      changing<Node>("NodeFalseTree", &Archived<Node>::filled,
                     [](Node& node) { node.falseTree(Archived<Leaf>::filled()); }),
      changing<Node>("NodePredicate", &Archived<Node>::filled,
                     [](Node& node) { node.predicateFunction(vxRangePredicate()); }),
      answering<Labels>(
          "NodeLabels", [tree] { return tree->categoryLabels(); }, &printed<Labels>),
      answering<long>(
          "NodeNumCategories", [tree] { return tree->numCategories(); }, &printed<long>),
      answering<bool>(
          "NodeIsEqual", [tree, same] { return tree->isEqual(*same); }, &printed<bool>),
  };
}

std::vector<NamedOperation> ruleOperations() {
  using Rule = vxClassifierRule;
  using Table = vxClassifierRuleTable;
  const auto rule = Archived<Rule>::oneSided(3);
  const auto functions = rule.scoringMethods();
  return {
      changing<Rule>(
          "RuleInit", [] { return Rule(); },
          [functions](Rule& target) { target.init(functions, 2); }),
      changing<Table>("TableTrain", &sample<Table>,
                      [rule](Table& table) {
                        table.train({rule, rule, rule});
                      }),
      constructing<vxClassifierFeatureVector>("FeatureVector",
                                              [] {
                                                return vxClassifierFeatureVector({1.0, 2.0});
                                              }),
      answering<long>(
          "TableClassify",
          [] {
            return sample<Table>().classifyHardThreshold(vxClassifierFeatureVector({1.0, 2.0}),
                                                         0.0);
          },
          &printed<long>),
  };
}

// What failed keeps the patterns made until then and hands those out ever after, so what is seen is
// a beginning of what it would have been; if that is too short for a combining one, an error.
template <class Generator>
NamedOperation generating(const std::string& name, const std::function<Generator()>& make) {
  FailingOperation<Generator> operation;
  operation.make = make;
  operation.act = [](Generator& generator) { generator.generateData(); };
  operation.state = [](const Generator& generator) {
    return inPlace(Generator(generator).generateData());
  };
  operation.expectFailed = [make](Generator& generator, const std::string&) {
    const vxClassifierDataProviderMemory whole = make().generateData();
    vxClassifierDataProviderMemory data;
    try {
      data = generator.generateData();
      EXPECT_GT(data.numPatterns(), 0);
    } catch (const vxClassifierDefs::BadIndex&) {
      EXPECT_TRUE((std::is_same_v<Generator, vx_TotalDataGenerator>));
    }
    ASSERT_LE(data.numPatterns(), whole.numPatterns());
    for (long i = 0; i < data.numPatterns(); ++i) {
      EXPECT_TRUE(*data.featurePattern(i) == *whole.featurePattern(i));
      EXPECT_EQ(data.categoryLabel(i), whole.categoryLabel(i));
    }
  };
  return named(name, operation);
}

/// The making of one and a copy of it.
template <class Generator>
NamedOperation copyingGenerator(const std::string& name, const std::function<Generator()>& make) {
  return answering<Generator>(
      name,
      [make] {
        const Generator made = make();
        return Generator(made);
      },
      [](const Generator& generator) { return inPlace(Generator(generator).generateData()); });
}

std::vector<NamedOperation> generatorOperations() {
  const auto category = [] {
    return vx_ClassDataGenerator({{0.0, 1.0}, {10.0, 2.0}, {5.0, 1.0}}, 6);
  };
  const auto total = [category] { return vx_TotalDataGenerator({category(), category()}); };
  return {
      copyingGenerator<vx_ClassDataGenerator>("CopiedClassGenerator", category),
      copyingGenerator<vx_TotalDataGenerator>("CopiedTotalGenerator", total),
      generating<vx_ClassDataGenerator>("ClassGenerator", category),
      generating<vx_TotalDataGenerator>("TotalGenerator", total),
  };
}

/// Storing and loading of a value that travels by itself.
template <class T>
void addTransfers(const std::string& name, T value, std::vector<NamedOperation>& operations) {
  const std::string bytes = stored(value);
  operations.push_back(answering<std::string>(
      "Store" + name,
      [value, room = bytes.size()] {
        FaultyDevice device(room);
        std::ostream stream(&device);
        vxOutputArchive output(stream);
        T copy = value;
        static_cast<vxArchive&>(output) || copy;
        return device.written();
      },
      &toHex));
  operations.push_back(changing<T>(
      "Load" + name, [] { return T(); },
      [bytes](T& target) {
        FaultyDevice device(bytes);
        std::istream stream(&device);
        vxInputArchive input(stream);
        static_cast<vxArchive&>(input) || target;
      }));
}

std::vector<NamedOperation> transferOperations() {
  constexpr std::size_t kMuch = 20'000;  // more than an archive gathers before it writes
  std::vector<NamedOperation> operations;
  addTransfers("Text", std::wstring(300, L'x'), operations);
  addTransfers("Flags", std::vector<bool>(kMuch, true), operations);
  addTransfers("Longs", std::vector<long>(300, -2), operations);
  addTransfers("Doubles", std::vector<double>(kMuch, 0.5), operations);
  addTransfers("Texts", std::vector<std::wstring>(30, L"of some length"), operations);
  addTransfers("Matrix", vxNMMatrix(20, 30), operations);
  return operations;
}

/// What is refused, the text of the refusal.
template <class Error>
NamedOperation refusing(const std::string& name, const std::function<void()>& call) {
  return answering<std::wstring>(
      name,
      [call] {
        try {
          call();
        } catch (const Error& error) {
          return error.message(true);
        }
        return std::wstring();
      },
      &printed<std::wstring>);
}

std::vector<NamedOperation> refusals() {
  namespace Defs = vxClassifierDefs;
  return {
      refusing<Defs::BadIndex>("Pattern", [] { vxFeaturePattern({1.0}, {1}); }),
      refusing<Defs::BadFeatures>(
          "ProviderAddData",
          [] { Archived<vxClassifierDataProviderMemory>::filled().addData(sharedPattern({}), 1); }),
      refusing<Defs::BadParams>("Frequencies", [] { vxClassifierFrequencies(0.0); }),
      refusing<Defs::BadParams>(
          "Result",
          [] { vxClassifierResult({vxClassifierCategoryResult(1, 0.5, 0.0, 0.0)}, 0.0); }),
      refusing<Defs::NotTrained>("Run",
                                 [] {
                                   vxClassifierResult result;
                                   vxClassifierTool().run({{1.0}, {}}, result);
                                 }),
      refusing<vxArchive::Malformed>(
          "Load", [] { loaded<std::vector<bool>>(std::string("\0\1\0\0\0\2", 6)); }),
      refusing<vxStatusException>("Status",
                                  [] { vfThrowExceptionOnFailure(static_cast<long>(0x800000A3)); }),
  };
}

std::vector<NamedOperation> textOperations() {
  using Error = vxClassifierDefs::BadParams;
  const auto wide = [] {
    std::wstring text;
    vfConvertString(text, "twelve bytes and some more of them \xc3\xa9");
    return text;
  };
  return {
      constructing<Error>("Error", [] { return Error(L"a text that needs some room"); }),
      answering<std::wstring>(
          "ErrorMessage", [] { return Error(L"a text that needs some room").message(true); },
          &printed<std::wstring>),
      answering<std::wstring>("Convert", wide, &printed<std::wstring>),
      answering<std::wstring>(
          "Number", [] { return vfStr(-1234567890); }, &printed<std::wstring>),
      answering<bool>(
          "OutputArchive",
          [] {
            std::ostream stream(nullptr);
            return vxOutputArchive(stream).isStoring();
          },
          &printed<bool>),
      answering<bool>(
          "InputArchive",
          [] {
            std::istream stream(nullptr);
            return vxInputArchive(stream).isLoading();
          },
          &printed<bool>),
      answering<std::string>(
          "Narrow", [wide] { return vfNarrow(wide()); }, &printed<std::string>),
      answering<std::string>(
          "ClassName", [] { return vfClassName(typeid(vxClassifierTool)); }, &printed<std::string>),
      answering<std::size_t>(
          "RegisteredNames", [] { return vx_Instantiator::registeredNames().size(); },
          &printed<std::size_t>),
      answering<vxNMMatrix>(
          "Matrix", [] { return vxNMMatrix(2, 3); }, &inPlace<vxNMMatrix>),
      changing<vxNMMatrix>(
          "MatrixAssign", [] { return vxNMMatrix(1, 1); },
          [](vxNMMatrix& matrix) {
            const vxNMMatrix other(2, 3);
            matrix = other;
          }),
  };
}

class AllocationValuesTest : public testing::TestWithParam<NamedOperation> {};

TEST_P(AllocationValuesTest, FailsAndLeavesItsObjectAsItWas) {
  showFigure("failed allocations", GetParam().failEachAllocation());
}

INSTANTIATE_TEST_SUITE_P(Records, AllocationValuesTest, testing::ValuesIn(recordOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Parameters, AllocationValuesTest, testing::ValuesIn(parameterOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Trees, AllocationValuesTest, testing::ValuesIn(treeOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Rules, AllocationValuesTest, testing::ValuesIn(ruleOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Generators, AllocationValuesTest, testing::ValuesIn(generatorOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Texts, AllocationValuesTest, testing::ValuesIn(textOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Transfers, AllocationValuesTest, testing::ValuesIn(transferOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Refusals, AllocationValuesTest, testing::ValuesIn(refusals()), nameOf);

template <class T>
class AllocationErrorTest : public testing::Test {};
using ErrorTypes =
    testing::Types<vxClassifierDefs::BadParams, vxClassifierDefs::NotTrained, vxArchive::Malformed,
                   vxArchive::Unstorable, vxArchive::StreamFailure>;
TYPED_TEST_SUITE(AllocationErrorTest, ErrorTypes, ClassNames);

// Whatever is thrown in its place: the caller has given the object away.
TYPED_TEST(AllocationErrorTest, IsFreedWhenItIsRethrown) {
  const auto attempt = [](std::size_t number, allocator::Failing failing) {
    const long live = allocator::counts().live;
    bool wasMet = false;
    auto* error = new TypeParam(L"a text that needs some room, in memory of its own");
    withFailure(number, failing, wasMet, [error] { error->suicideAndRethrow(); });
    EXPECT_EQ(allocator::counts().live, live);
    return wasMet;
  };
  showFigure("failed allocations", forEachFailure(attempt));
}

TEST(AllocationRegistryTest, KeepsNoClassWhoseRegistrationFailed) {
  struct AClassWithALongName : vxPersistent {};
  const std::vector<std::string> before = vx_Instantiator::registeredNames();
  const auto attempt = [](std::size_t number, allocator::Failing failing) {
    bool wasMet = false;
    withFailure(number, failing, wasMet, [] {
      const vx_Instantiator registration(typeid(AClassWithALongName),
                                         []() -> vxPersistent* { return nullptr; });
    });
    return wasMet;
  };
  showFigure("failed allocations", forEachFailure(attempt));
  EXPECT_EQ(vx_Instantiator::registeredNames(), before);
}

}  // namespace
