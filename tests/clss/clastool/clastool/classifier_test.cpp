// SPDX-License-Identifier: MIT
#include "vxclss/classifier.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/error_matcher.h"
#include "tests/support/host_error.h"
#include "tests/support/mock_technique.h"
#include "tests/support/samples.h"
#include "vxclss/errors.h"

namespace {

using Calls = MockScript::Calls;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::NotTrained;

constexpr wchar_t kOtherTechnique[] = L"Cannot retrain with a different classification technique.";
constexpr wchar_t kNoParams[] = L"Classifier tool was not automatically trained.";
constexpr wchar_t kParamsUntrained[] =
    L"Classifier tool must be trained before requesting the training parameters.";

class ClassifierTest : public testing::Test {
 protected:
  ClassifierTest() {
    script_.name<vxDiagObject>(diag_, "diag");
    script_.name<vxClassifierDataProvider>(data_, "data");
    script_.name<vxFeaturePattern>(pattern_, "pattern");
    script_.name<vxClassifierResult>(result_, "result");
  }

  /// A classifier trained with `params_`, the calls of the training forgotten.
  MockClassifier trained() {
    MockClassifier classifier(script_);
    classifier.train(data_, params_);
    script_.take();
    return classifier;
  }

  MockScript script_;
  MockParams params_{script_, "first"};
  MockParams second_{script_, "second"};
  vxDiagObject diag_;
  vxClassifierDataProviderMemory data_;
  vxFeaturePattern pattern_{{1.0}, {}};
  vxClassifierResult result_;
};

TEST_F(ClassifierTest, TrainsBetweenItsRecordingHooks) {
  MockClassifier classifier(script_);
  classifier.train(data_, params_, &diag_, 5);
  EXPECT_EQ(script_.first(), "isTrained_");
  EXPECT_EQ(script_.take(),
            (Calls{"recordTrainInputs_(diag, 5)", "train_(data, first)", "clone(first)",
                   "recordTrainDetails_(diag, 5)", "recordTrainResults_(diag, 5)"}));
  EXPECT_TRUE(classifier.isTrained());
}

TEST_F(ClassifierTest, RecordsNowhereWithoutADiagnosticsObject) {
  MockClassifier classifier(script_);
  classifier.train(data_, params_);
  EXPECT_EQ(script_.take(),
            (Calls{"recordTrainInputs_(null, 0)", "train_(data, first)", "clone(first)",
                   "recordTrainDetails_(null, 0)", "recordTrainResults_(null, 0)"}));
}

TEST_F(ClassifierTest, UntrainsBeforeItTrainsAgain) {
  MockClassifier classifier = trained();
  classifier.train(data_, second_, &diag_, 7);
  EXPECT_EQ(
      script_.take(),
      (Calls{"untrain_", "recordTrainInputs_(diag, 7)", "train_(data, second)", "clone(second)",
             "recordTrainDetails_(diag, 7)", "recordTrainResults_(diag, 7)"}));
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "second'");
}

/// A hook of the training that throws, the calls made by then, and what is held afterwards.
struct ThrowingHook {
  std::string hook;
  std::size_t calls;
  std::string heldParams;
};

void PrintTo(const ThrowingHook& row, std::ostream* out) { *out << row.hook; }

class ClassifierThrowingHookTest : public ClassifierTest,
                                   public testing::WithParamInterface<ThrowingHook> {};

TEST_P(ClassifierThrowingHookTest, EndsTheTrainingWhereItThrew) {
  const Calls all{"untrain_",      "recordTrainInputs_(diag, 5)",  "train_(data, second)",
                  "clone(second)", "recordTrainDetails_(diag, 5)", "recordTrainResults_(diag, 5)"};
  MockClassifier classifier = trained();
  script_.at[GetParam().hook] = [] { throw HostError(); };
  EXPECT_THROW(classifier.train(data_, second_, &diag_, 5), HostError);
  EXPECT_EQ(script_.take(),
            Calls(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(GetParam().calls)));
  const auto& held = classifier.heldTrainParams_();
  EXPECT_EQ(held.isNull() ? "none" : MockParams::titleOf(*held), GetParam().heldParams);
}

INSTANTIATE_TEST_SUITE_P(Hooks, ClassifierThrowingHookTest,
                         testing::Values(ThrowingHook{"untrain_", 1, "first'"},
                                         ThrowingHook{"recordTrainInputs_", 2, "none"},
                                         ThrowingHook{"train_", 3, "none"},
                                         ThrowingHook{"clone", 4, "none"},
                                         ThrowingHook{"recordTrainDetails_", 5, "second'"},
                                         ThrowingHook{"recordTrainResults_", 6, "second'"}),
                         [](const auto& row) { return row.param.hook; });

TEST_F(ClassifierTest, HoldsNoParametersAfterATrainingThatThrew) {
  MockClassifier classifier(script_);
  script_.at["train_"] = [] { throw HostError(); };
  EXPECT_THROW(classifier.train(data_, params_), HostError);
  EXPECT_TRUE(classifier.isTrained());
  expectThrows<BadMethod>([&] { classifier.trainParams(); }, kNoParams);
  expectThrows<BadMethod>([&] { classifier.retrain(params_); }, kOtherTechnique);
}

TEST_F(ClassifierTest, StartsATrainingWithoutDiagnostics) {
  MockClassifier classifier(script_);
  classifier.trainStart(params_);
  EXPECT_EQ(script_.first(), "isTrained_");
  EXPECT_EQ(script_.take(), (Calls{"trainStart_(first)", "clone(first)"}));
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_EQ(MockParams::titleOf(*classifier.heldTrainParams_()), "first'");
  expectThrows<NotTrained>([&] { classifier.trainParams(); }, kParamsUntrained);
}

TEST_F(ClassifierTest, UntrainsBeforeItStartsATraining) {
  MockClassifier classifier = trained();
  script_.startsTo = true;
  classifier.trainStart(second_);
  EXPECT_EQ(script_.take(), (Calls{"untrain_", "trainStart_(second)", "clone(second)"}));
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "second'");
}

TEST_F(ClassifierTest, HoldsNoParametersAfterAStartThatThrew) {
  MockClassifier classifier = trained();
  script_.at["trainStart_"] = [] { throw HostError(); };
  EXPECT_THROW(classifier.trainStart(second_), HostError);
  EXPECT_EQ(script_.take(), (Calls{"untrain_", "trainStart_(second)"}));
  EXPECT_TRUE(classifier.heldTrainParams_().isNull());
}

TEST_F(ClassifierTest, LeavesPatternAndLabelOfIncrementalTrainingToTheTechnique) {
  MockClassifier classifier = trained();
  classifier.trainIncremental(pattern_, -7, &diag_, 3);
  EXPECT_EQ(script_.first(), "isTrained_");
  EXPECT_EQ(script_.take(), (Calls{"trainIncremental_(pattern, -7)"}));
}

TEST_F(ClassifierTest, RefusesIncrementalTrainingWhenUntrained) {
  MockClassifier classifier(script_);
  expectThrows<NotTrained>([&] { classifier.trainIncremental(pattern_, -7); },
                           L"Classifier tool must be trained before incremental training.");
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierTest, RetrainsWithoutDiagnostics) {
  MockClassifier classifier = trained();
  classifier.retrain(second_, &diag_, 3);
  EXPECT_EQ(script_.first(), "isTrained_");
  EXPECT_EQ(script_.take(),
            (Calls{"isSameTechnique_(second, first')", "retrain_(second)", "clone(second)"}));
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "second'");
}

TEST_F(ClassifierTest, RetrainsWithTheParametersThatItHolds) {
  MockClassifier classifier = trained();
  classifier.retrain(*classifier.trainParams());
  EXPECT_EQ(script_.take(),
            (Calls{"isSameTechnique_(first', first')", "retrain_(first')", "clone(first')"}));
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "first''");
}

TEST_F(ClassifierTest, KeepsItsParametersWhenRetrainingThrows) {
  MockClassifier classifier = trained();
  script_.at["retrain_"] = [] { throw HostError(); };
  EXPECT_THROW(classifier.retrain(second_), HostError);
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "first'");
}

TEST_F(ClassifierTest, RefusesToRetrainWithAnotherTechnique) {
  MockClassifier classifier = trained();
  const MockParams other(script_, "other", 2);
  expectThrows<BadMethod>([&] { classifier.retrain(other); }, kOtherTechnique);
  EXPECT_EQ(script_.take(), (Calls{"isSameTechnique_(other, first')"}));
  EXPECT_EQ(MockParams::titleOf(*classifier.trainParams()), "first'");
}

TEST_F(ClassifierTest, RefusesToRetrainAModelThatHasNoParameters) {
  MockClassifier classifier(script_);
  classifier.trained(true);
  expectThrows<BadMethod>([&] { classifier.retrain(params_); }, kOtherTechnique);
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierTest, AsksForTrainingBeforeTheTechniqueWhenItRetrains) {
  MockClassifier classifier(script_);
  classifier.trainStart(params_);
  script_.take();
  const MockParams other(script_, "other", 2);
  expectThrows<NotTrained>([&] { classifier.retrain(other); },
                           L"Classifier tool must be trained before retraining.");
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierTest, RunsBetweenItsRecordingHooksWithoutAskingWhetherItCan) {
  const MockClassifier classifier = trained();
  classifier.run(pattern_, result_, &diag_, 9);
  EXPECT_EQ(script_.first(), "isTrained_");
  EXPECT_EQ(script_.take(),
            (Calls{"recordRunInputs_(diag, 9, pattern)", "run_(pattern, result)",
                   "recordRunDetails_(diag, 9)", "recordRunResults_(diag, 9, pattern, result)"}));
  classifier.run(pattern_, result_);
  EXPECT_EQ(script_.takeLast(), "recordRunResults_(null, 0, pattern, result)");
}

TEST_F(ClassifierTest, RecordsNoResultOfARunThatThrew) {
  const MockClassifier classifier = trained();
  script_.at["run_"] = [] { throw HostError(); };
  EXPECT_THROW(classifier.run(pattern_, result_, &diag_, 9), HostError);
  EXPECT_EQ(script_.take(), (Calls{"recordRunInputs_(diag, 9, pattern)", "run_(pattern, result)"}));
}

TEST_F(ClassifierTest, RefusesToRunUntrained) {
  const MockClassifier classifier(script_);
  expectThrows<NotTrained>([&] { classifier.run(pattern_, result_, &diag_, 9); },
                           L"Classifier tool must be trained before running.");
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierTest, DropsItsParametersWhenItIsUntrained) {
  MockClassifier classifier = trained();
  classifier.untrain();
  EXPECT_EQ(script_.take(), (Calls{"untrain_"}));
  EXPECT_FALSE(classifier.isTrained());
  EXPECT_TRUE(classifier.heldTrainParams_().isNull());
  classifier.untrain();
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierTest, KeepsTheParametersOfATrainingThatLeftItUntrained) {
  script_.trainsTo = false;
  MockClassifier classifier = trained();
  classifier.untrain();
  EXPECT_EQ(script_.take(), Calls());
  EXPECT_EQ(MockParams::titleOf(*classifier.heldTrainParams_()), "first'");
  expectThrows<NotTrained>([&] { classifier.trainParams(); }, kParamsUntrained);
}

TEST_F(ClassifierTest, SharesItsParametersWithWhoAsksForThem) {
  const MockClassifier classifier = trained();
  EXPECT_EQ(classifier.trainParams(), classifier.trainParams());
  EXPECT_NE(classifier.trainParams().get(), &params_);
}

TEST_F(ClassifierTest, HasNoParametersToShowForAModelGivenByHand) {
  MockClassifier classifier(script_);
  expectThrows<NotTrained>([&] { classifier.trainParams(); }, kParamsUntrained);
  classifier.trained(true);
  expectThrows<BadMethod>([&] { classifier.trainParams(); }, kNoParams);
}

TEST_F(ClassifierTest, SharesItsParametersWithItsCopies) {
  const MockClassifier classifier = trained();
  const MockClassifier copy(classifier);
  EXPECT_EQ(copy.trainParams(), classifier.trainParams());
  EXPECT_EQ(copy.referenceCount(), 0);

  MockClassifier assigned(script_);
  assigned = classifier;
  EXPECT_EQ(assigned.trainParams(), classifier.trainParams());
  MockClassifier& alias = assigned;
  assigned = alias;
  EXPECT_EQ(assigned.trainParams(), classifier.trainParams());
}

TEST_F(ClassifierTest, ComparesStateThenParameters) {
  const MockParams equal(script_, "equal");
  const MockParams unequal(script_, "unequal", 1, 8);
  MockClassifier a = trained();
  MockClassifier b(script_);
  EXPECT_FALSE(a.isEquivalent(b));
  EXPECT_FALSE(b.isEquivalent(a));

  b.train(data_, equal);
  script_.take();
  EXPECT_TRUE(a.isEquivalent(b));
  EXPECT_EQ(script_.take(), (Calls{"isEqual_(first', equal')"}));

  b.train(data_, unequal);
  EXPECT_FALSE(a.isEquivalent(b));
  EXPECT_FALSE(b.isEquivalent(a));
}

TEST_F(ClassifierTest, IsEquivalentWithoutParametersOnlyToOneThatHasNoneEither) {
  const MockClassifier automatic = trained();
  MockClassifier byHand(script_);
  byHand.trained(true);
  MockClassifier byHandToo(script_);
  byHandToo.trained(true);
  EXPECT_TRUE(byHand.isEquivalent(byHandToo));
  EXPECT_FALSE(byHand.isEquivalent(automatic));
  EXPECT_FALSE(automatic.isEquivalent(byHand));

  MockClassifier started(script_);
  started.trainStart(params_);
  EXPECT_FALSE(started.isEquivalent(automatic));
  EXPECT_FALSE(automatic.isEquivalent(started));
  EXPECT_TRUE(MockClassifier(script_).isEquivalent(MockClassifier(script_)));
  EXPECT_FALSE(started.isEquivalent(MockClassifier(script_)));
}

}  // namespace
