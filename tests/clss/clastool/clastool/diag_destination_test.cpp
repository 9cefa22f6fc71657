// SPDX-License-Identifier: MIT
// The foundation records into the object that it was given and leaves the flags alone, which hides
// from every test which of the two a hook receives. So the framework is compiled here once more,
// under other names, against a foundation that redirects.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vxclss/data_provider.h"
#include "vxclss/errors.h"
#include "vxclss/feature_pattern.h"
#include "vxclss/result.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/diag.h"

class RedirectingDiag {
 public:
  static RedirectingDiag* getRecordingDestination(RedirectingDiag* given, unsigned long& flags) {
    flags += 100;
    return given == nullptr ? nullptr : given->target;
  }

  std::string name;
  RedirectingDiag* target = nullptr;
};

#define vxDiagObject RedirectingDiag
#define vx_Classifier RedirectedClassifier
#define vxClassifierTrainParams RedirectedTrainParams
#define vxClassifierTool RedirectedTool
#include "clss/clastool/clastool/classifier.cpp"    // NOLINT(bugprone-suspicious-include)
#include "clss/clastool/clastool/train_params.cpp"  // NOLINT(bugprone-suspicious-include)

namespace {

using Calls = std::vector<std::string>;

class Params : public RedirectedTrainParams {
 public:
  vxPtrHandle<RedirectedTrainParams> clone() const override {
    return vxPtrHandle<RedirectedTrainParams>(new Params(*this));
  }

 protected:
  bool isSameTechnique_(const RedirectedTrainParams&) const override { return true; }
  RedirectedClassifier* newClassifier_() const override { return nullptr; }
};

class Classifier : public RedirectedClassifier {
 public:
  explicit Classifier(Calls& calls) : calls_(calls) {}
  vxPtrHandle<RedirectedClassifier> clone() const override { return {}; }

 protected:
  void train_(const vxClassifierDataProvider&, const RedirectedTrainParams&) override {
    trained_ = true;
  }
  void retrain_(const RedirectedTrainParams&) override {}
  void trainStart_(const RedirectedTrainParams&) override {}
  void trainIncremental_(const vxFeaturePattern&, long) override {}
  void untrain_() override { trained_ = false; }
  bool isTrained_() const override { return trained_; }
  void checkRunnable_() const override {}
  void run_(const vxFeaturePattern&, vxClassifierResult&) const override {}

 private:
  void note_(const std::string& hook, const RedirectingDiag* diag, unsigned long flags) const {
    calls_.push_back(hook + " " + (diag == nullptr ? "null" : diag->name) + " " +
                     std::to_string(flags));
  }
  void recordTrainInputs_(RedirectingDiag* diag, unsigned long flags) const override {
    note_("train inputs", diag, flags);
  }
  void recordTrainDetails_(RedirectingDiag* diag, unsigned long flags) const override {
    note_("train details", diag, flags);
  }
  void recordTrainResults_(RedirectingDiag* diag, unsigned long flags) const override {
    note_("train results", diag, flags);
  }
  void recordRunInputs_(RedirectingDiag* diag, unsigned long flags,
                        const vxFeaturePattern&) const override {
    note_("run inputs", diag, flags);
  }
  void recordRunDetails_(RedirectingDiag* diag, unsigned long flags) const override {
    note_("run details", diag, flags);
  }
  void recordRunResults_(RedirectingDiag* diag, unsigned long flags, const vxFeaturePattern&,
                         const vxClassifierResult&) const override {
    note_("run results", diag, flags);
  }

  Calls& calls_;
  bool trained_ = false;
};

class DiagDestinationTest : public testing::Test {
 protected:
  RedirectingDiag destination_{"destination"};
  RedirectingDiag caller_{"caller", &destination_};
  RedirectingDiag silent_{"silent", nullptr};
  Calls calls_;
  Classifier classifier_{calls_};
};

TEST_F(DiagDestinationTest, GivesTrainDetailsAloneTheCallersOwnObject) {
  classifier_.train(vxClassifierDataProviderMemory(), Params(), &caller_, 5);
  EXPECT_EQ(calls_, (Calls{"train inputs destination 105", "train details caller 105",
                           "train results destination 105"}));
}

TEST_F(DiagDestinationTest, GivesEveryRunHookTheDestination) {
  classifier_.train(vxClassifierDataProviderMemory(), Params());
  calls_.clear();
  vxClassifierResult result;
  classifier_.run(vxFeaturePattern({1.0}, {}), result, &caller_, 5);
  EXPECT_EQ(calls_, (Calls{"run inputs destination 105", "run details destination 105",
                           "run results destination 105"}));
}

TEST_F(DiagDestinationTest, GivesTheHooksNothingWhereNothingIsRecorded) {
  classifier_.train(vxClassifierDataProviderMemory(), Params(), &silent_, 0);
  EXPECT_EQ(calls_,
            (Calls{"train inputs null 100", "train details silent 100", "train results null 100"}));
}

}  // namespace
