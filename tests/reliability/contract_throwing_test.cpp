// SPDX-License-Identifier: MIT
// Hosts whose own classes throw in the middle of an operation. What they throw passes unchanged,
// and the objects at hand are as documented.

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/host_metric.h"
#include "tests/support/mock_technique.h"
#include "tests/support/outcome.h"
#include "tests/support/samples.h"
#include "tests/support/technique_samples.h"
#include "tests/support/tree_samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/errors.h"
#include "vxclss/rule_table.h"

namespace {

std::string stateOf(const vxClassifierTool& tool) {
  if (tool.classifier().isNull()) return "empty";
  if (!tool.isTrained()) return "untrained";
  try {
    tool.trainParams();
    return "trained";
  } catch (const vxClassifierDefs::BadMethod&) {
    return "trained without parameters";
  }
}

/// A provider that throws HostError at one of the calls of one of its methods.
class ThrowingProvider : public vxClassifierDataProvider {
 public:
  ThrowingProvider(std::string method, long at) : method_(std::move(method)), at_(at) {}

  std::wstring name() const override { return reach("name", data_.name()); }
  std::wstring description() const override { return reach("description", data_.description()); }
  long numMeasurements() const override {
    return reach("numMeasurements", data_.numMeasurements());
  }
  long numPatterns() const override { return reach("numPatterns", data_.numPatterns()); }
  vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
    return reach("featurePattern", data_.featurePattern(index));
  }
  long categoryLabel(long index) const override {
    return reach("categoryLabel", data_.categoryLabel(index));
  }

 private:
  template <class T>
  T reach(const std::string& method, const T& answer) const {
    if (method == method_ && calls_++ == at_) throw HostError();
    return answer;
  }

  const vxClassifierDataProviderMemory data_ = techniqueData();
  std::string method_;
  long at_;
  mutable long calls_ = 0;
};

struct ProviderRow {
  std::string method;
  long at;
  std::string knn;
  std::string bayesian;
};

TEST(ThrowingProviderTest, LeavesTheToolAsTheTechniqueLeftIt) {
  const std::string partly = "trained without parameters";
  // A Bayesian training asks neither for the name nor for the description.
  const ProviderRow rows[] = {{"name", 0, partly, "trained"},
                              {"description", 0, partly, "trained"},
                              {"numPatterns", 0, partly, "untrained"},
                              {"numMeasurements", 0, "trained", "untrained"},
                              {"featurePattern", 0, partly, "untrained"},
                              {"featurePattern", 12, partly, partly},
                              {"categoryLabel", 0, partly, "untrained"},
                              {"categoryLabel", 23, partly, partly}};
  for (const ProviderRow& row : rows) {
    for (const Technique& technique : techniques()) {
      if (!technique.params) continue;
      SCOPED_TRACE(technique.name + ", " + row.method + " " + std::to_string(row.at));
      vxClassifierTool tool = technique.trained();
      const ThrowingProvider provider(row.method, row.at);
      const std::string outcome = outcomeOf([&] { tool.train(provider, *technique.params); });
      const std::string& expected = technique.name == "KNN" ? row.knn : row.bayesian;
      EXPECT_EQ(outcome, expected == "trained" ? "done" : "HostError");
      EXPECT_EQ(stateOf(tool), expected);

      vxClassifierResult result;
      const std::string before = bitsOf(result);
      if (expected != "trained") {
        EXPECT_THROW(tool.run(techniqueQuery(1), result), vxException);
        EXPECT_EQ(bitsOf(result), before);
      }
      technique.train(tool);
      EXPECT_TRUE(tool == technique.trained());
    }
  }
}

TEST(ThrowingMetricTest, LeavesTheResultOfARunAsItWas) {
  long calls = 0;
  long throwsAt = 0;
  const HostMetric metric([&](const vxFeaturePattern& a, const vxFeaturePattern& b) {
    if (++calls == throwsAt) throw HostError();
    return vxPatternDistanceMetricNorm(1.0).distance(a, b);
  });
  vxClassifierTool tool;
  tool.train(techniqueData(), vxClassifierTrainParamsKNN(3, metric, vxClassifierCosts(1.0)));
  vxClassifierResult result;
  tool.run(techniqueQuery(1), result);
  const std::string expected = bitsOf(result);
  const long all = calls;
  for (throwsAt = 1; throwsAt <= all; ++throwsAt) {
    calls = 0;
    EXPECT_THROW(tool.run(techniqueQuery(2), result), HostError);
    EXPECT_EQ(bitsOf(result), expected);
  }
  throwsAt = 0;
  tool.run(techniqueQuery(1), result);
  EXPECT_EQ(bitsOf(result), expected);
}

TEST(ThrowingMetricTest, LeavesTheParametersAsTheyWereWhenItCannotBeCloned) {
  class Uncloneable : public vxPatternDistanceMetricNorm {
   public:
    using vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm;
    vxPtrHandle<vxPatternDistanceMetric> clone() const override { throw HostError(); }
  };
  vxClassifierTrainParamsKNN params = knnParams(3);
  const std::string before = stored(params);
  EXPECT_THROW(params.distanceMetric(Uncloneable(1.0)), HostError);
  EXPECT_EQ(toHex(stored(params)), toHex(before));
  const long live = allocator::counts().live;
  EXPECT_THROW(vxClassifierTrainParamsKNN(1, Uncloneable(1.0), vxClassifierCosts(1.0)), HostError);
  EXPECT_EQ(allocator::counts().live, live);
}

/// Throws HostError at poll `at`, counted from 1, while it lives.
class ThrowingHandler {
 public:
  explicit ThrowingHandler(long at) : at_(at) { vfSetAttentionHandler(&poll, this); }
  ThrowingHandler(const ThrowingHandler&) = delete;
  ThrowingHandler& operator=(const ThrowingHandler&) = delete;
  ~ThrowingHandler() { vfSetAttentionHandler(nullptr, nullptr); }
  bool hasThrown() const { return polls_ >= at_; }

 private:
  static bool poll(void* context) {
    auto* const handler = static_cast<ThrowingHandler*>(context);
    if (++handler->polls_ == handler->at_) throw HostError();
    return false;
  }
  long at_;
  long polls_ = 0;
};

TEST(ThrowingHandlerTest, LeavesTheResultOfARunAsItWas) {
  for (const Technique& technique : techniques()) {
    const vxClassifierTool reference = technique.trained();
    vxClassifierResult expected;
    reference.run(techniqueQuery(1), expected);
    bool hasThrown = true;
    for (long at = 1; hasThrown; ++at) {
      const vxClassifierTool tool(reference);
      vxClassifierResult result;
      const std::string before = bitsOf(result);
      const ThrowingHandler handler(at);
      const std::string outcome = outcomeOf([&] { tool.run(techniqueQuery(1), result); });
      hasThrown = handler.hasThrown();
      EXPECT_EQ(outcome, hasThrown ? "HostError" : "done");
      EXPECT_EQ(bitsOf(result), hasThrown ? before : bitsOf(expected));
    }
  }
}

// What is no error of the library does not tell that the classifier can't run.
TEST(ThrowingHandlerTest, LeavesAToolTrainedInItsReadinessCheck) {
  const Technique bayesian = techniques()[0];
  const auto data = techniqueData();
  vxClassifierTool tool;
  {
    const ThrowingHandler handler(1);
    EXPECT_THROW(tool.train(data, *bayesian.params), HostError);
  }
  EXPECT_EQ(stateOf(tool), "trained");
  EXPECT_TRUE(tool == bayesian.trained());
}

struct HookRow {
  std::string operation;
  std::string hook;
  std::string state;
  std::string outcome = "HostError";

  friend std::ostream& operator<<(std::ostream& out, const HookRow& row) {
    return out << row.operation << " " << row.hook;
  }
};

class ThrowingHookTest : public testing::TestWithParam<HookRow> {
 protected:
  void perform(const std::string& operation, vxClassifierTool& tool) {
    vxClassifierResult result;
    if (operation == "train") {
      tool.train(data_, params_);
    } else if (operation == "retrain") {
      tool.retrain(params_);
    } else if (operation == "run") {
      tool.run({{1.0}, {}}, result);
    } else if (operation == "untrain") {
      tool.untrain();
    } else if (operation == "assign") {
      vxClassifierTool source;
      source.train(data_, params_);
      script_.at = actions_;
      tool = source;
    }
  }

  MockScript script_;
  std::map<std::string, std::function<void()>> actions_;
  const vxClassifierDataProviderMemory data_;
  const MockParams params_{script_};
};

TEST_P(ThrowingHookTest, PassesAndLeavesTheToolAsDocumented) {
  const HookRow& row = GetParam();
  {
    vxClassifierTool tool;
    tool.train(data_, params_);
    actions_[row.hook] = [] { throw HostError(); };
    if (row.operation != "assign") script_.at = actions_;
    EXPECT_EQ(outcomeOf([&] { perform(row.operation, tool); }), row.outcome);
    script_.at.clear();
    EXPECT_EQ(stateOf(tool), row.state);
    tool.train(data_, params_);
    EXPECT_EQ(stateOf(tool), "trained");
    script_.at["untrain_"] = [] { throw HostError(); };  // swallowed when the tool goes
  }
  EXPECT_EQ(script_.classifiersAlive, 0);
}

const std::string kNotImplemented =
    "vxClassifierDefs::NotImplemented: The classification method specified by the training "
    "parameters is not implemented.";

INSTANTIATE_TEST_SUITE_P(
    Hooks, ThrowingHookTest,
    testing::Values(
        HookRow{"train", "isTrained_", "trained"}, HookRow{"train", "untrain_", "trained"},
        HookRow{"train", "newClassifier_", "empty", kNotImplemented},
        HookRow{"train", "recordTrainInputs_", "untrained"},
        HookRow{"train", "train_", "trained without parameters"},
        HookRow{"train", "clone", "trained without parameters"},
        HookRow{"train", "recordTrainDetails_", "trained"},
        HookRow{"train", "recordTrainResults_", "trained"},
        HookRow{"train", "checkRunnable_", "trained"},
        HookRow{"retrain", "isSameTechnique_", "trained"},
        HookRow{"retrain", "retrain_", "trained"}, HookRow{"retrain", "clone", "trained"},
        HookRow{"retrain", "checkRunnable_", "trained"}, HookRow{"run", "isTrained_", "trained"},
        HookRow{"run", "recordRunInputs_", "trained"}, HookRow{"run", "run_", "trained"},
        HookRow{"run", "recordRunDetails_", "trained"},
        HookRow{"run", "recordRunResults_", "trained"}, HookRow{"untrain", "untrain_", "trained"},
        HookRow{"assign", "isTrained_", "empty"}, HookRow{"assign", "cloneClassifier", "empty"}));

TEST(ThrowingPredicateTest, LeavesTheResultOfARunAsItWas) {
  const HostPredicate predicate([](const vxFeaturePattern&) -> bool { throw HostError(); });
  vxClassifierTool tool;
  tool.train(vxDecisionTreeNode(predicate, leafWith({1}), leafWith({2})));
  vxClassifierResult result({vxClassifierCategoryResult(3, 1.0, 1.0, 0.0)}, 0.0);
  const std::string before = bitsOf(result);
  EXPECT_THROW(tool.run(techniqueQuery(1), result), HostError);
  EXPECT_EQ(bitsOf(result), before);
  EXPECT_EQ(tool.decisionTree()->categoryLabels(), (std::vector<long>{2, 1}));
}

TEST(ThrowingTreeTest, LeavesTheToolAsItWasWhenItCannotBeCloned) {
  class Uncloneable : public vxDecisionTreeLeaf {
   public:
    using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
    vxPtrHandle<vxDecisionTree> clone() const override { throw HostError(); }
  };
  const Technique knn = techniques()[1];
  vxClassifierTool tool = knn.trained();
  EXPECT_THROW(tool.train(Uncloneable(vxClassifierResult())), HostError);
  EXPECT_TRUE(tool == knn.trained());
}

TEST(ThrowingTreeTest, LeavesTheNodeAsItWasWhenAPartCannotBeCloned) {
  class UncloneableTree : public vxDecisionTreeLeaf {
   public:
    using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
    vxPtrHandle<vxDecisionTree> clone() const override { throw HostError(); }
  };
  class UncloneablePredicate : public vxRangePredicate {
   public:
    using vxRangePredicate::vxRangePredicate;
    vxPtrHandle<vxPredicateFunction> clone() const override { throw HostError(); }
  };
  const UncloneableTree tree{vxClassifierResult()};
  const UncloneablePredicate predicate({0.0, 1.0}, {0});
  vxDecisionTreeNode node = sampleTree();
  const std::string before = stored(node);
  const long live = allocator::counts().live;
  EXPECT_THROW(node.trueTree(tree), HostError);
  EXPECT_THROW(node.falseTree(tree), HostError);
  EXPECT_THROW(node.predicateFunction(predicate), HostError);
  EXPECT_THROW(vxDecisionTreeNode(vxRangePredicate(), leafWith({1}), tree), HostError);
  EXPECT_THROW(vxDecisionTreeNode(predicate, leafWith({1}), leafWith({2})), HostError);
  EXPECT_EQ(allocator::counts().live, live);
  EXPECT_EQ(toHex(stored(node)), toHex(before));
}

TEST(ThrowingClassifierTest, KeepsItsModelWhenAPatternCannotBeAdded) {
  MockScript script;
  MockClassifier classifier(script);
  classifier.train(vxClassifierDataProviderMemory(), MockParams(script));
  script.at["trainIncremental_"] = [] { throw HostError(); };
  EXPECT_THROW(classifier.trainIncremental({{1.0}, {}}, 1), HostError);
  EXPECT_TRUE(classifier.isTrained());
  EXPECT_FALSE(classifier.heldTrainParams_().isNull());
}

TEST(ThrowingClassifierTest, HoldsNoParametersWhenATrainingCannotStart) {
  MockScript script;
  script.startsTo = true;
  for (const char* hook : {"trainStart_", "clone"}) {
    MockClassifier classifier(script);
    classifier.train(vxClassifierDataProviderMemory(), MockParams(script));
    script.at[hook] = [] { throw HostError(); };
    EXPECT_THROW(classifier.trainStart(MockParams(script)), HostError);
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_TRUE(classifier.heldTrainParams_().isNull());
    script.at.clear();
  }
}

TEST(ThrowingComparisonTest, Passes) {
  class Incomparable : public vx_ClassifierKNN {
   public:
    vxPtrHandle<vx_Classifier> clone() const override {
      return vxPtrHandle<vx_Classifier>(new Incomparable(*this));
    }
    bool isEquivalent(const vx_Classifier&) const override { throw HostError(); }
  };
  class IncomparableParams : public vxClassifierTrainParamsKNN {
   public:
    using vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN;
    vxPtrHandle<vxClassifierTrainParams> clone() const override {
      return vxPtrHandle<vxClassifierTrainParams>(new IncomparableParams(*this));
    }

   protected:
    bool isEqual_(const vxClassifierTrainParams&) const override { throw HostError(); }
    vx_Classifier* newClassifier_() const override { return new Incomparable; }
  };
  vxClassifierTool tool;
  tool.train(techniqueData(), IncomparableParams(1));
  const vxClassifierTool other(tool);
  EXPECT_THROW(static_cast<void>(tool == other), HostError);
  vx_ClassifierKNN classifier;
  classifier.train(techniqueData(), IncomparableParams(1));
  const vx_ClassifierKNN copy(classifier);
  EXPECT_THROW(static_cast<void>(classifier == copy), HostError);
  EXPECT_EQ(stateOf(tool), "trained");
  EXPECT_TRUE(classifier.isTrained());
}

TEST(ThrowingScoreTest, PassesThroughTheRuleTable) {
  class Throwing : public vxClassifierFeatureScoreIgnore {
   public:
    double score(double) const override { throw HostError(); }
    Throwing* clone() const override { return new Throwing(*this); }
  };
  vxClassifierRule rule;
  rule.init({vxPtrHandle<vxClsFtSc>(new Throwing)}, 1);
  vxClassifierRuleTable table;
  table.train({rule});
  EXPECT_THROW(table.classifyHardThreshold(vxClassifierFeatureVector({1.0}), 0.5), HostError);
  EXPECT_EQ(table.rules().size(), 1u);
}

/// An object of a host that throws while it is transferred, or while it is made.
class Moody : public vxPersistent, public vxRepBase {
 public:
  static inline bool isNeverMade = false;
  static inline bool throwsWhenMade = false;
  static inline bool throwsWhenTransferred = false;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Moody)}) {
      archive || number_;
      if (throwsWhenTransferred) throw HostError();
    }
  }

 private:
  static vxPersistent* make() {
    if (throwsWhenMade) throw HostError();
    return isNeverMade ? nullptr : new Moody;
  }
  static const vx_Instantiator sExemplar;

  long number_ = 7;
};
const vx_Instantiator Moody::sExemplar(typeid(Moody), &Moody::make);

class ThrowingObjectTest : public testing::Test {
 protected:
  ~ThrowingObjectTest() override {
    Moody::isNeverMade = Moody::throwsWhenMade = Moody::throwsWhenTransferred = false;
  }
  vxPtrHandle<Moody> object_{new Moody};
};

TEST_F(ThrowingObjectTest, LeavesAnOutputArchiveAsItWas) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  Moody::throwsWhenTransferred = true;
  EXPECT_THROW(archive || object_, HostError);
  EXPECT_EQ(stream.str(), "");
  Moody::throwsWhenTransferred = false;
  archive || object_;
  EXPECT_EQ(toHex(stream.str()), toHex(stored(object_)));
}

TEST_F(ThrowingObjectTest, MayMakeNothing) {
  const std::string bytes = stored(object_);
  Moody::isNeverMade = true;
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive archive(stream);
  vxPtrHandle<Moody> target;
  EXPECT_THROW(archive || target, vxArchive::Malformed);
  EXPECT_TRUE(target.isNull());
}

TEST_F(ThrowingObjectTest, LeavesNothingBehindWhenItIsLoaded) {
  const std::string bytes = stored(object_);
  for (bool* throws : {&Moody::throwsWhenMade, &Moody::throwsWhenTransferred}) {
    *throws = true;
    const long live = allocator::counts().live;
    {
      std::istringstream stream(bytes, std::ios::binary);
      vxInputArchive archive(stream);
      vxPtrHandle<Moody> target;
      EXPECT_THROW(archive || target, HostError);
      EXPECT_TRUE(target.isNull());
      while (stream.good()) succeedsOrRefuses([&] { archive || target; });
    }
    EXPECT_EQ(allocator::counts().live, live);
    *throws = false;
  }
}

}  // namespace
