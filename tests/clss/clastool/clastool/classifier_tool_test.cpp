// SPDX-License-Identifier: MIT
#include "vxclss/classifier_tool.h"

#include <gtest/gtest.h>

#include <new>
#include <ostream>
#include <stdexcept>
#include <string>

#include "tests/support/error_matcher.h"
#include "tests/support/host_error.h"
#include "tests/support/mock_technique.h"
#include "tests/support/samples.h"
#include "vxclss/errors.h"

namespace {

using Calls = MockScript::Calls;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;

constexpr wchar_t kNotImplemented[] =
    L"The classification method specified by the training parameters is not implemented.";
constexpr wchar_t kOtherTechnique[] = L"Cannot retrain with a different classification technique.";
constexpr wchar_t kNoParams[] = L"Classifier tool was not automatically trained.";
constexpr wchar_t kParamsUntrained[] =
    L"Classifier tool must be trained before requesting the training parameters.";
constexpr wchar_t kRetrainUntrained[] = L"Classifier tool must be trained before retraining.";
constexpr wchar_t kRunUntrained[] = L"Classifier tool must be trained before running.";

/// A library error that a host has extended; `detail` is lost where it is copied as its base.
struct HostRefusal : vxClassifierDefs::InsufficientTrainData {
  explicit HostRefusal(int number) : InsufficientTrainData(L"too few"), detail(number) {}
  int detail;
};

class ClassifierToolTest : public testing::Test {
 protected:
  ClassifierToolTest() {
    script_.name<vxDiagObject>(diag_, "diag");
    script_.name<vxClassifierDataProvider>(data_, "data");
    script_.name<vxFeaturePattern>(pattern_, "pattern");
    script_.name<vxClassifierResult>(result_, "result");
  }

  /// A trained tool, the calls of the training forgotten.
  void train(vxClassifierTool& tool) {
    tool.train(data_, params_);
    script_.take();
  }
  std::string heldTitle(const vxClassifierTool& tool) {
    return MockParams::titleOf(*tool.trainParams());
  }

  MockScript script_;
  MockParams params_{script_, "first"};
  MockParams second_{script_, "second"};
  MockParams otherTechnique_{script_, "other", 2};
  vxDiagObject diag_;
  vxClassifierDataProviderMemory data_;
  vxFeaturePattern pattern_{{1.0}, {}};
  vxClassifierResult result_;
};

TEST_F(ClassifierToolTest, IsEmptyBeforeItsFirstTraining) {
  vxClassifierTool tool;
  EXPECT_FALSE(tool.isTrained());
  EXPECT_TRUE(tool.classifier().isNull());
  tool.untrain();
  EXPECT_TRUE(tool == vxClassifierTool());
  EXPECT_FALSE(tool != vxClassifierTool());
  expectThrows<NotTrained>([&] { tool.run(pattern_, result_); }, kRunUntrained);
  expectThrows<NotTrained>([&] { tool.trainParams(); }, kParamsUntrained);
  expectThrows<NotTrained>([&] { tool.retrain(params_); }, kRetrainUntrained);
  EXPECT_EQ(script_.take(), Calls());
}

TEST_F(ClassifierToolTest, TrainsANewClassifierAndAsksWhetherItCanRun) {
  vxClassifierTool tool;
  tool.train(data_, params_, &diag_, 5);
  EXPECT_EQ(script_.take(),
            (Calls{"newClassifier_(first)", "recordTrainInputs_(diag, 5)", "train_(data, first)",
                   "clone(first)", "recordTrainDetails_(diag, 5)", "recordTrainResults_(diag, 5)",
                   "checkRunnable_"}));
  EXPECT_TRUE(tool.isTrained());
  EXPECT_EQ(heldTitle(tool), "first'");
  EXPECT_EQ(tool.trainParams(), tool.trainParams());
}

TEST_F(ClassifierToolTest, AsksNothingWhereTheParametersDoNotWantIt) {
  params_.throwIfNotReady(false);
  script_.at["checkRunnable_"] = [] { throw vxClassifierDefs::InsufficientTrainData(L"none"); };
  vxClassifierTool tool;
  tool.train(data_, params_);
  EXPECT_EQ(script_.takeLast(), "recordTrainResults_(null, 0)");
  EXPECT_TRUE(tool.isTrained());

  second_.throwIfNotReady(false);
  tool.retrain(second_);
  EXPECT_EQ(script_.takeLast(), "clone(second)");
  EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierToolTest, ReplacesATrainedClassifierByOneOfAnyTechnique) {
  vxClassifierTool tool;
  train(tool);
  tool.train(data_, otherTechnique_);
  EXPECT_EQ(script_.take(), (Calls{"untrain_", "newClassifier_(other)", "~MockClassifier",
                                   "recordTrainInputs_(null, 0)", "train_(data, other)",
                                   "clone(other)", "recordTrainDetails_(null, 0)",
                                   "recordTrainResults_(null, 0)", "checkRunnable_"}));
  EXPECT_EQ(script_.classifiersAlive, 1);
  EXPECT_EQ(heldTitle(tool), "other'");
}

TEST_F(ClassifierToolTest, KeepsTheClassifierThatCannotBeUntrained) {
  vxClassifierTool tool;
  train(tool);
  const auto before = tool.classifier();
  script_.at["untrain_"] = [] { throw HostError(); };
  EXPECT_THROW(tool.train(data_, second_), HostError);
  EXPECT_EQ(script_.take(), (Calls{"untrain_"}));
  EXPECT_EQ(tool.classifier(), before);
  EXPECT_TRUE(tool.isTrained());
  script_.at.clear();
}

/// Something that a hook throws.
struct Thrown {
  const char* name;
  void (*raise)();
};

void PrintTo(const Thrown& row, std::ostream* out) { *out << row.name; }
std::string nameOf(const testing::TestParamInfo<Thrown>& row) { return row.param.name; }

const Thrown kLibraryErrors[] = {
    {"BadParams", [] { throw vxClassifierDefs::BadParams(L"x"); }},
    {"NotTrained", [] { throw vxClassifierDefs::NotTrained(L"x"); }},
    {"BadIndex", [] { throw vxClassifierDefs::BadIndex(L"x"); }},
    {"BadLabel", [] { throw vxClassifierDefs::BadLabel(L"x"); }},
    {"BadMethod", [] { throw vxClassifierDefs::BadMethod(L"x"); }},
    {"NotImplemented", [] { throw vxClassifierDefs::NotImplemented(L"x"); }},
    {"BadFeatures", [] { throw vxClassifierDefs::BadFeatures(L"x"); }},
    {"InsufficientTrainData", [] { throw vxClassifierDefs::InsufficientTrainData(L"x"); }},
};
const Thrown kOtherExceptions[] = {
    {"Int", [] { throw 1; }},
    {"BadAlloc", [] { throw std::bad_alloc(); }},
    {"StandardError", [] { throw std::runtime_error("x"); }},
    {"BadPointer", [] { throw vxBadPointer(); }},
    {"StopRequest", [] { throw vxStopRequested(); }},
    {"HostError", [] { throw HostError(); }},
};

class ClassifierToolThrownTest : public ClassifierToolTest,
                                 public testing::WithParamInterface<Thrown> {};

TEST_P(ClassifierToolThrownTest, MeansNotImplementedFromTheMakingOfAClassifier) {
  script_.at["newClassifier_"] = GetParam().raise;
  vxClassifierTool empty;
  expectThrows<NotImplemented>([&] { empty.train(data_, params_); }, kNotImplemented);
  EXPECT_TRUE(empty.classifier().isNull());

  script_.at.clear();
  vxClassifierTool tool;
  train(tool);
  script_.at["newClassifier_"] = GetParam().raise;
  expectThrows<NotImplemented>([&] { tool.train(data_, second_); }, kNotImplemented);
  EXPECT_EQ(script_.take(), (Calls{"untrain_", "newClassifier_(second)", "~MockClassifier"}));
  EXPECT_TRUE(tool.classifier().isNull());
  expectThrows<NotTrained>([&] { tool.trainParams(); }, kParamsUntrained);
}

INSTANTIATE_TEST_SUITE_P(Library, ClassifierToolThrownTest, testing::ValuesIn(kLibraryErrors),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Other, ClassifierToolThrownTest, testing::ValuesIn(kOtherExceptions),
                         nameOf);

TEST_F(ClassifierToolTest, MeetsAnEmptyHandleWhereTheParametersMakeNull) {
  script_.makesNull = true;
  vxClassifierTool tool;
  expectThrows<vxBadPointer>([&] { tool.train(data_, params_); }, L"");
  EXPECT_TRUE(tool.classifier().isNull());
}

/// `body()` throws what `raise` does; tells whether by type and, for a library error, text.
template <class Body>
std::string describe(Body&& body) {
  try {
    body();
  } catch (const vxExceptionWithString& error) {
    return vfClassName(typeid(error)) + ": " + testing::PrintToString(error.message());
  } catch (const std::exception& error) {
    return vfClassName(typeid(error));
  } catch (int number) {
    return std::to_string(number);
  } catch (const HostError&) {
    return "HostError";
  }
  return "nothing";
}

class ReadinessLibraryErrorTest : public ClassifierToolThrownTest {};
class ReadinessOtherExceptionTest : public ClassifierToolThrownTest {};

TEST_P(ReadinessLibraryErrorTest, UntrainsTheToolAndReachesTheCaller) {
  vxClassifierTool tool;
  script_.at["checkRunnable_"] = GetParam().raise;
  EXPECT_EQ(describe([&] { tool.train(data_, params_); }), describe(GetParam().raise));
  EXPECT_EQ(script_.takeLast(), "untrain_");
  EXPECT_FALSE(tool.isTrained());
  EXPECT_FALSE(tool.classifier().isNull());
  expectThrows<NotTrained>([&] { tool.trainParams(); }, kParamsUntrained);

  script_.at.clear();
  train(tool);
  script_.at["checkRunnable_"] = GetParam().raise;
  EXPECT_EQ(describe([&] { tool.retrain(second_); }), describe(GetParam().raise));
  EXPECT_EQ(script_.take(), (Calls{"isSameTechnique_(second, first')", "retrain_(second)",
                                   "clone(second)", "checkRunnable_", "untrain_"}));
  EXPECT_FALSE(tool.isTrained());
}

TEST_P(ReadinessOtherExceptionTest, PassesThroughATrainedTool) {
  vxClassifierTool tool;
  script_.at["checkRunnable_"] = GetParam().raise;
  EXPECT_EQ(describe([&] { tool.train(data_, params_); }), describe(GetParam().raise));
  EXPECT_EQ(script_.takeLast(), "checkRunnable_");
  EXPECT_TRUE(tool.isTrained());

  EXPECT_EQ(describe([&] { tool.retrain(second_); }), describe(GetParam().raise));
  EXPECT_EQ(script_.takeLast(), "checkRunnable_");
  EXPECT_TRUE(tool.isTrained());
  EXPECT_EQ(heldTitle(tool), "second'");
}

INSTANTIATE_TEST_SUITE_P(Errors, ReadinessLibraryErrorTest, testing::ValuesIn(kLibraryErrors),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Errors, ReadinessOtherExceptionTest, testing::ValuesIn(kOtherExceptions),
                         nameOf);

TEST_F(ClassifierToolTest, RethrowsTheVeryErrorOfTheReadinessCheck) {
  vxClassifierTool tool;
  script_.at["checkRunnable_"] = [] { throw HostRefusal(42); };
  try {
    tool.train(data_, params_);
    FAIL() << "threw nothing";
  } catch (const HostRefusal& error) {
    EXPECT_EQ(error.detail, 42);
  }
}

TEST_F(ClassifierToolTest, ChecksRetrainingWithTheFlagOfTheParametersThatItIsGiven) {
  params_.throwIfNotReady(false);
  script_.at["checkRunnable_"] = [] { throw vxClassifierDefs::InsufficientTrainData(L"none"); };
  vxClassifierTool tool;
  tool.train(data_, params_);
  // The clone that the tool holds has the flag of every copy.
  EXPECT_TRUE(tool.trainParams()->throwIfNotReady());
  expectThrows<vxClassifierDefs::InsufficientTrainData>(
      [&] { tool.retrain(*tool.trainParams(), nullptr, 0); }, L"none");
  EXPECT_FALSE(tool.isTrained());
}

TEST_F(ClassifierToolTest, HoldsWhatATrainingThatThrewHasLeft) {
  vxClassifierTool tool;
  script_.at["train_"] = [] { throw vxClassifierDefs::BadFeatures(L"half way"); };
  expectThrows<vxClassifierDefs::BadFeatures>([&] { tool.train(data_, params_); }, L"half way");
  EXPECT_EQ(script_.takeLast(), "train_(data, first)");
  EXPECT_TRUE(tool.isTrained());
  expectThrows<BadMethod>([&] { tool.trainParams(); }, kNoParams);
  expectThrows<BadMethod>([&] { tool.retrain(params_); }, kOtherTechnique);

  script_.trainsTo = false;
  EXPECT_THROW(tool.train(data_, params_), vxClassifierDefs::BadFeatures);
  EXPECT_FALSE(tool.isTrained());
  EXPECT_FALSE(tool.classifier().isNull());
}

TEST_F(ClassifierToolTest, RefusesToRetrainWithAnotherTechnique) {
  vxClassifierTool tool;
  train(tool);
  const vxClassifierTool before(tool);
  script_.take();
  expectThrows<BadMethod>([&] { tool.retrain(otherTechnique_); }, kOtherTechnique);
  EXPECT_EQ(script_.take(), (Calls{"isSameTechnique_(other, first')"}));
  EXPECT_TRUE(tool == before);
}

TEST_F(ClassifierToolTest, HandsDiagnosticsOfARunThrough) {
  vxClassifierTool tool;
  train(tool);
  tool.run(pattern_, result_, &diag_, 6);
  EXPECT_EQ(script_.take(),
            (Calls{"recordRunInputs_(diag, 6, pattern)", "run_(pattern, result)",
                   "recordRunDetails_(diag, 6)", "recordRunResults_(diag, 6, pattern, result)"}));
}

TEST_F(ClassifierToolTest, KeepsAnUntrainedClassifierButRefusesItsUse) {
  vxClassifierTool tool;
  train(tool);
  const auto before = tool.classifier();
  tool.untrain();
  tool.untrain();
  EXPECT_EQ(script_.take(), (Calls{"untrain_"}));
  EXPECT_EQ(tool.classifier(), before);
  EXPECT_FALSE(tool.isTrained());
  expectThrows<NotTrained>([&] { tool.retrain(otherTechnique_); }, kRetrainUntrained);
  expectThrows<NotTrained>([&] { tool.run(pattern_, result_); }, kRunUntrained);
  expectThrows<NotTrained>([&] { tool.trainParams(); }, kParamsUntrained);
  tool.train(data_, second_);
  EXPECT_NE(tool.classifier(), before);
}

TEST_F(ClassifierToolTest, UntrainsInItsDestructorAndSwallowsWhatThatThrows) {
  {
    vxClassifierTool tool;
    train(tool);
  }
  EXPECT_EQ(script_.take(), (Calls{"untrain_", "~MockClassifier"}));
  for (const auto& rows : {kLibraryErrors[0], kOtherExceptions[0], kOtherExceptions[5]}) {
    vxClassifierTool tool;
    script_.at.clear();
    train(tool);
    script_.at["untrain_"] = rows.raise;
  }
  EXPECT_EQ(script_.classifiersAlive, 0);
}

}  // namespace
