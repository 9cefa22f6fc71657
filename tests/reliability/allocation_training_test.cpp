// SPDX-License-Identifier: MIT
// Densities, models, classifiers and the tool while their allocations fail.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/archived_types.h"
#include "tests/support/bayes_probe.h"
#include "tests/support/failing_operation.h"
#include "tests/support/figures.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "tests/support/technique_samples.h"

namespace {

using Normal = vx_PDFMultivariateNormal;
using Binomial = vx_PDFBinomial;
using Model = vx_CategoryModelBayesian;

/// More than the measurements that fit what a density keeps on the stack.
constexpr long kMany = 70;

vxFeaturePattern longPattern(long number, const std::vector<long>& invalid = {}) {
  std::vector<double> values;
  for (long m = 0; m < kMany; ++m) values.push_back(std::sin(static_cast<double>(m + 7 * number)));
  return {values, invalid};
}

/// Its archive, and what it learns from one more sample.
std::string stateOf(const Normal& density) {
  Normal more(density);
  const bool isLong = density.mean().rows() == kMany;
  more.updateWithData({isLong ? longPattern(9, {2}) : vxFeaturePattern({0.5, 7.0}, {1})});
  return toHex(inPlace(density)) + toHex(inPlace(more));
}

std::string stateOf(const Binomial& density) {
  Binomial more(density);
  more.updateWithData({{{0.5}, {}}, {{1.25}, {}}});
  return toHex(inPlace(density)) + toHex(inPlace(more));
}

template <class Density>
NamedOperation updating(const std::string& name, const std::function<Density()>& make,
                        const std::vector<vxFeaturePattern>& patterns) {
  return changing<Density>(
      name, make, [patterns](Density& density) { density.updateWithData(patterns); },
      [](const Density& density) { return stateOf(density); });
}

NamedOperation normalizing(const std::string& name, const Normal& density,
                           const std::vector<vxFeaturePattern>& patterns) {
  return changing<Normal>(
      name, [density] { return density; },
      [patterns](Normal& changed) { changed.updateWithDataNormalize(patterns, 2.5); },
      [](const Normal& changed) { return stateOf(changed); });
}

NamedOperation valuing(const std::string& name, const Normal& density,
                       const vxFeaturePattern& pattern) {
  // A copy has no factor yet.
  return answering<double>(
      name, [=] { return Normal(density).logValue(pattern); },
      [](const double& value) { return bitsOf(value); });
}

Normal longDensity(long samples) {
  Normal density;
  for (long i = 0; i < samples; ++i) density.updateWithData({longPattern(i)});
  return density;
}

std::vector<NamedOperation> densityOperations() {
  const auto empty = [] { return Normal(); };
  const auto filled = [] { return Archived<Normal>::filled(); };
  const auto whole = [] {
    Normal density;
    for (int i = 0; i < 8; ++i) {
      density.updateWithData({{{std::sin(3.0 * i), std::cos(7.0 * i)}, {}}});
    }
    return density;
  };
  const auto loadedOne = [whole] { return loaded<Normal>(inPlace(whole())); };
  const vxFeaturePattern valid({0.1, 0.3}, {});
  const vxFeaturePattern partly({0.1, 0.3}, {1});
  const auto emptyBinomial = [] { return Binomial({{4.0}, {}}); };
  return {
      updating<Normal>("NormalFirst", empty, {valid}),
      updating<Normal>("NormalFirstPartly", empty, {partly, valid}),
      updating<Normal>("NormalMore", whole, {valid, valid}),
      updating<Normal>("NormalMorePartly", whole, {valid, partly}),
      updating<Normal>("NormalMoreAfterPartly", filled, {valid, partly}),
      updating<Normal>("NormalLoaded", loadedOne, {valid}),
      updating<Normal>("NormalLoadedPartly", loadedOne, {partly}),
      updating<Normal>("NormalLong", [] { return Normal(); }, {longPattern(1)}),
      updating<Normal>("NormalLongMore", [] { return longDensity(3); }, {longPattern(4, {3})}),
      updating<Normal>("NormalLongLoaded", [] { return loaded<Normal>(inPlace(longDensity(3))); },
                       {longPattern(4)}),
      normalizing("NormalNormalize", whole(), {valid, partly}),
      normalizing("NormalLongNormalize", longDensity(3), {longPattern(4)}),
      answering<vxNMMatrix>(
          "NormalMean", [whole] { return whole().mean(); }, &inPlace<vxNMMatrix>),
      changing<Normal>(
          "NormalClear", whole, [](Normal& density) { density.clear(); },
          [](const Normal& density) { return stateOf(density); }),
      valuing("NormalValue", whole(), valid),
      valuing("NormalMarginal", whole(), partly),
      valuing("NormalLongValue", longDensity(3), longPattern(5)),
      valuing("NormalLongMarginal", longDensity(3), longPattern(5, {1})),
      answering<vxNMMatrix>(
          "NormalCovariance", [whole] { return whole().covariance(); }, &inPlace<vxNMMatrix>),
      answering<Binomial>("Binomial", emptyBinomial, &inPlace<Binomial>),
      updating<Binomial>("BinomialFirst", emptyBinomial, {{{1.0}, {}}}),
      updating<Binomial>("BinomialMore", &Archived<Binomial>::filled, {{{1.5}, {}}, {{0.5}, {0}}}),
      changing<Binomial>(
          "BinomialClear", &Archived<Binomial>::filled, [](Binomial& density) { density.clear(); },
          [](const Binomial& density) { return stateOf(density); }),
  };
}

std::vector<NamedOperation> modelOperations() {
  const auto make = &Archived<Model>::filled;
  const vxFeaturePattern pattern({1.0, 2.0, 3.0}, {0});
  FailingOperation<Model> adapting;
  adapting.make = make;
  adapting.act = [pattern](Model& model) { model.adapt(pattern, nullptr, 0); };
  adapting.state = [](const Model& model) { return toHex(inPlace(model)); };
  // The densities in front of the one that failed have taken the pattern.
  adapting.expectFailed = [adapting](Model& model, const std::string&) {
    Model untouched = adapting.make();
    Model adapted = adapting.make();
    adapting.act(adapted);
    bool hasTaken = true;
    for (std::size_t k = 0; k < model.densities().size(); ++k) {
      hasTaken = hasTaken && model.densities()[k]->isEquivalent(*adapted.densities()[k]);
      const auto& expected = hasTaken ? adapted : untouched;
      EXPECT_TRUE(model.densities()[k]->isEquivalent(*expected.densities()[k])) << k;
    }
    EXPECT_NO_THROW(adapting.act(model));
  };
  return {
      answering<Model>("Model", make, &inPlace<Model>),
      answering<double>(
          "ModelMatchScore", [make, pattern] { return make().matchScore(pattern, nullptr, 0); },
          [](const double& score) { return bitsOf(score); }),
      named("ModelAdapt", adapting),
      answering<std::size_t>(
          "ModelDensities", [make] { return make().densities().size(); },
          [](const std::size_t& size) { return std::to_string(size); }),
  };
}

/// What a classifier or a tool answers.
template <class T>
std::string runsOf(const T& trained) {
  std::string text;
  for (const int query : {1, 2, 4}) {  // the last one has an invalid measurement
    vxClassifierResult result;
    text += outcomeOf([&] { trained.run(techniqueQuery(query), result); });
    text += " " + bitsOf(result) + "\n";
  }
  return text;
}

template <class T>
std::string archiveOf(const T& trained) {
  return toHex(inPlace(trained)) + (trained.isTrained() ? " trained " : " ");
}

/// All that can be seen of it.
template <class T>
std::string stateOf(const T& trained) {
  return archiveOf(trained) + runsOf(trained);
}

/// A training that failed leaves what can be trained anew, and what a run refuses or answers.
template <class T>
void expectTrainable(T& failed, const std::function<void(T&)>& train, const std::string& done) {
  stateOf(failed);
  train(failed);
  EXPECT_EQ(stateOf(failed), done);
}

template <class T>
NamedOperation training(const std::string& name, const std::function<T()>& make,
                        const std::function<void(T&)>& train) {
  T expected = make();
  train(expected);
  FailingOperation<T> operation;
  operation.make = make;
  operation.act = train;
  operation.state = [](const T& trained) { return stateOf(trained); };
  operation.expectFailed = [train, done = stateOf(expected)](T& failed, const std::string&) {
    expectTrainable<T>(failed, train, done);
  };
  operation.mayRefuse = true;
  return named(name, operation);
}

template <class T>
NamedOperation keeping(const std::string& name, const std::function<T()>& make,
                       const std::function<void(T&)>& act) {
  return changing<T>(name, make, act, [](const T& trained) { return stateOf(trained); });
}

/// The parameters are taken before the classifier clones them to show, and a tool checks afterwards
/// that it can run: a failure leaves the old or the new ones in force, and shows old or new ones.
template <class T>
NamedOperation retraining(const std::string& name, const std::function<T()>& make,
                          const std::function<void(T&)>& retrain) {
  struct Seen {
    explicit Seen(const T& trained) : shown(archiveOf(trained)), inForce(runsOf(trained)) {}
    std::string shown;
    std::string inForce;
  };
  T trained = make();
  const Seen old(trained);
  retrain(trained);
  const Seen expected(trained);
  FailingOperation<T> operation = {make, retrain, [](const T& t) { return stateOf(t); }};
  operation.expectFailed = [retrain, old, expected](T& failed, const std::string&) {
    const Seen seen(failed);
    EXPECT_TRUE(seen.shown == old.shown || seen.shown == expected.shown);
    EXPECT_TRUE(seen.inForce == old.inForce || seen.inForce == expected.inForce);
    retrain(failed);
    EXPECT_EQ(stateOf(failed), expected.shown + expected.inForce);
  };
  return named(name, operation);
}

/// Running makes what the classifier keeps for the next run.
template <class T>
NamedOperation running(const std::string& name, const std::function<T()>& make, int query) {
  struct Subject {
    T trained;
    vxClassifierResult result;
  };
  return changing<Subject>(
      name,
      [make] {
        return Subject{make(), vxClassifierResult()};
      },
      [query](Subject& subject) { subject.trained.run(techniqueQuery(query), subject.result); },
      [](const Subject& subject) {
        return toHex(inPlace(subject.trained)) + bitsOf(subject.result);
      });
}

template <class T>
NamedOperation copying(const std::string& name, const std::function<T()>& make) {
  return answering<T>(
      name, [source = make()] { return T(source); }, [](const T& copy) { return stateOf(copy); });
}

std::vector<NamedOperation> classifierOperations() {
  using Knn = vx_ClassifierKNN;
  using Bayesian = vx_ClassifierBayesian;
  using Tree = vx_ClassifierDecisionTree;
  const auto data = techniqueData();
  const auto tree = techniqueTree();
  const std::function<void(Knn&)> trainKnn = [data](Knn& knn) { knn.train(data, knnParams(3)); };
  const std::function<void(Bayesian&)> trainBayesian = [data](Bayesian& bayesian) {
    bayesian.train(data, bayesianParams(1.0));
  };
  const std::function<void(Tree&)> trainTree = [tree](Tree& classifier) {
    classifier.trainManual(*tree);
  };
  const auto knn = [=] {
    Knn trained;
    trainKnn(trained);
    return trained;
  };
  const auto bayesian = [=] {
    Bayesian trained;
    trainBayesian(trained);
    return trained;
  };
  const auto treeClassifier = [=] {
    Tree trained;
    trainTree(trained);
    return trained;
  };
  return {
      training<Knn>(
          "KnnTrain", [] { return Knn(); }, trainKnn),
      training<Knn>("KnnTrainAgain", knn, trainKnn),
      keeping<Knn>(
          "KnnTrainStart", [] { return Knn(); },
          [](Knn& classifier) { classifier.trainStart(knnParams(2)); }),
      keeping<Knn>("KnnTrainIncremental", knn,
                   [](Knn& classifier) { classifier.trainIncremental(techniqueQuery(3), 1); }),
      retraining<Knn>("KnnRetrain", knn, [](Knn& classifier) { classifier.retrain(knnParams(2)); }),
      keeping<Knn>("KnnUntrain", knn, [](Knn& classifier) { classifier.untrain(); }),
      running<Knn>("KnnFirstRun", knn, 2),
      running<Knn>(
          "KnnFirstRunLoaded", [knn] { return loaded<Knn>(inPlace(knn())); }, 2),
      copying<Knn>("KnnCopy", knn),
      training<Bayesian>(
          "BayesianTrain", [] { return Bayesian(); }, trainBayesian),
      training<Bayesian>("BayesianTrainAgain", bayesian, trainBayesian),
      keeping<Bayesian>(
          "BayesianTrainStart", [] { return Bayesian(); },
          [](Bayesian& classifier) { classifier.trainStart(bayesianParams(1.0)); }),
      keeping<Bayesian>(
          "BayesianTrainIncremental", bayesian,
          [](Bayesian& classifier) { classifier.trainIncremental(techniqueQuery(3), 1); }),
      retraining<Bayesian>("BayesianRetrain", bayesian,
                           [](Bayesian& classifier) { classifier.retrain(bayesianParams(5.0)); }),
      keeping<Bayesian>("BayesianUntrain", bayesian,
                        [](Bayesian& classifier) { classifier.untrain(); }),
      running<Bayesian>("BayesianFirstRun", bayesian, 2),
      running<Bayesian>("BayesianFirstRunPartly", bayesian, 4),
      running<Bayesian>(
          "BayesianFirstRunLoaded", [bayesian] { return loaded<Bayesian>(inPlace(bayesian())); },
          2),
      copying<Bayesian>("BayesianCopy", bayesian),
      answering<std::size_t>(
          "BayesianModels", [trained = bayesian()] { return trained.categoryModels().size(); },
          [](const std::size_t& size) { return std::to_string(size); }),
      // The clone is made before anything changes.
      keeping<Tree>(
          "TreeTrainManual", [] { return Tree(); }, trainTree),
      keeping<Tree>("TreeTrainManualAgain", treeClassifier, trainTree),
      running<Tree>("TreeRun", treeClassifier, 2),
      copying<Tree>("TreeCopy", treeClassifier),
  };
}

std::vector<NamedOperation> toolOperations() {
  using Tool = vxClassifierTool;
  const auto data = techniqueData();
  const auto tree = techniqueTree();
  std::vector<NamedOperation> operations;
  for (const Technique& technique : techniques()) {
    const auto empty = [] { return Tool(); };
    const auto trained = [technique] { return technique.trained(); };
    const std::function<void(Tool&)> train = [technique](Tool& tool) { technique.train(tool); };
    const auto knn = [data] {
      Tool tool;
      tool.train(data, knnParams(1));
      return tool;
    };
    const std::string& name = technique.name;
    operations.push_back(training<Tool>(name + "Train", empty, train));
    operations.push_back(training<Tool>(name + "TrainAgain", trained, train));
    operations.push_back(training<Tool>(name + "TrainInPlaceOfAnother", knn, train));
    operations.push_back(running<Tool>(name + "FirstRun", trained, 2));
    operations.push_back(running<Tool>(
        name + "FirstRunLoaded", [trained] { return loaded<Tool>(inPlace(trained())); }, 2));
    operations.push_back(copying<Tool>(name + "Copy", trained));
    operations.push_back(keeping<Tool>(name + "Untrain", trained, [](Tool& t) { t.untrain(); }));
    if (technique.retrain) {
      operations.push_back(retraining<Tool>(name + "Retrain", trained, technique.retrain));
    }
  }
  return operations;
}

class AllocationTrainingTest : public testing::TestWithParam<NamedOperation> {};

TEST_P(AllocationTrainingTest, FailsAndLeavesAStateThatIsDocumented) {
  showFigure("failed allocations", GetParam().failEachAllocation());
}

INSTANTIATE_TEST_SUITE_P(Densities, AllocationTrainingTest, testing::ValuesIn(densityOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Models, AllocationTrainingTest, testing::ValuesIn(modelOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Classifiers, AllocationTrainingTest,
                         testing::ValuesIn(classifierOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Tools, AllocationTrainingTest, testing::ValuesIn(toolOperations()),
                         nameOf);

TEST(AllocationToolTest, TakesAFailureToMakeAClassifierForATechniqueThatIsNotImplemented) {
  const auto data = techniqueData();
  for (const Technique& technique : techniques()) {
    if (!technique.params) continue;
    // The first allocation of a training is the new classifier.
    vxClassifierTool tool = technique.trained();
    bool wasMet = false;
    const FailureOutcome outcome = withFailure(1, allocator::Failing::kOnce, wasMet,
                                               [&] { tool.train(data, *technique.params); });
    EXPECT_EQ(outcome, FailureOutcome::kRefused) << technique.name;
    EXPECT_TRUE(tool.classifier().isNull()) << technique.name;
    expectThrows<vxClassifierDefs::NotTrained>(
        [&] { tool.trainParams(); },
        L"Classifier tool must be trained before requesting the training parameters.");
    EXPECT_NO_THROW(technique.train(tool));
    EXPECT_TRUE(tool == technique.trained()) << technique.name;
  }
}

TEST(AllocationToolTest, TakesNoMemoryToBeDestroyed) {
  for (const Technique& technique : techniques()) {
    auto tool = std::make_unique<vxClassifierTool>(technique.trained());
    vxClassifierResult result;
    tool->run(techniqueQuery(2), result);
    const std::size_t calls = allocator::counts().calls;
    tool.reset();
    EXPECT_EQ(allocator::counts().calls, calls) << technique.name;
  }
}

}  // namespace
