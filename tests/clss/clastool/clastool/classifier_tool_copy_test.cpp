// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/support/host_error.h"
#include "tests/support/mock_technique.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"

namespace {

using Calls = MockScript::Calls;

class ClassifierToolCopyTest : public testing::Test {
 protected:
  void train(vxClassifierTool& tool, const MockParams& params) {
    tool.train(data_, params);
    script_.take();
  }

  MockScript script_;
  MockParams params_{script_, "first"};
  MockParams second_{script_, "second", 1, 8};
  vxClassifierDataProviderMemory data_;
};

TEST_F(ClassifierToolCopyTest, OwnsAClassifierOfItsOwn) {
  vxClassifierTool tool;
  train(tool, params_);
  vxClassifierTool copy(tool);
  EXPECT_EQ(script_.take(), (Calls{"cloneClassifier"}));
  EXPECT_TRUE(copy == tool);
  EXPECT_NE(copy.classifier(), tool.classifier());

  tool.retrain(second_);
  EXPECT_EQ(MockParams::titleOf(*copy.trainParams()), "first'");
  EXPECT_TRUE(copy != tool);
  tool.untrain();
  EXPECT_TRUE(copy.isTrained());
  copy.untrain();
  EXPECT_TRUE(copy == tool);
}

TEST_F(ClassifierToolCopyTest, IsEmptyAfterAnUntrainedSource) {
  vxClassifierTool untrained;
  train(untrained, params_);
  untrained.untrain();
  EXPECT_TRUE(vxClassifierTool(untrained).classifier().isNull());

  vxClassifierTool target;
  train(target, second_);
  target = untrained;
  EXPECT_TRUE(target.classifier().isNull());
  EXPECT_FALSE(untrained.classifier().isNull());
  train(target, second_);
  target = vxClassifierTool();
  EXPECT_TRUE(target.classifier().isNull());
}

TEST_F(ClassifierToolCopyTest, ReleasesItsClassifierBeforeItClonesTheOther) {
  vxClassifierTool source;
  train(source, params_);
  vxClassifierTool target;
  train(target, second_);
  target = source;
  EXPECT_EQ(script_.take(), (Calls{"~MockClassifier", "cloneClassifier"}));
  EXPECT_TRUE(target == source);
}

TEST_F(ClassifierToolCopyTest, IsEmptyWhenTheOtherCannotBeCloned) {
  vxClassifierTool source;
  train(source, params_);
  vxClassifierTool target;
  train(target, second_);
  script_.at["cloneClassifier"] = [] { throw HostError(); };
  EXPECT_THROW(target = source, HostError);
  EXPECT_TRUE(target.classifier().isNull());
  EXPECT_TRUE(source.isTrained());
  EXPECT_THROW(vxClassifierTool{source}, HostError);
}

TEST_F(ClassifierToolCopyTest, IsUntrainedByAssignmentToItself) {
  vxClassifierTool tool;
  train(tool, params_);
  const vxClassifierTool& same = tool;
  tool = same;
  EXPECT_FALSE(tool.isTrained());
  EXPECT_TRUE(tool.classifier().isNull());
  EXPECT_EQ(script_.take(), (Calls{"~MockClassifier"}));
}

TEST_F(ClassifierToolCopyTest, ComparesTrainingThenEquivalence) {
  vxClassifierTool empty;
  vxClassifierTool untrained;
  train(untrained, params_);
  untrained.untrain();
  vxClassifierTool first;
  train(first, params_);
  vxClassifierTool second;
  train(second, second_);
  script_.take();

  EXPECT_TRUE(empty == untrained);
  EXPECT_TRUE(untrained == empty);
  EXPECT_FALSE(empty == first);
  EXPECT_FALSE(first == untrained);
  EXPECT_EQ(script_.take(), Calls());
  EXPECT_FALSE(first == second);
  EXPECT_TRUE(first != second);
  EXPECT_EQ(script_.takeLast(), "isEqual_(first', second')");
}

TEST_F(ClassifierToolCopyTest, DiffersFromAToolOfAnotherTechnique) {
  vxClassifierTool mock;
  train(mock, params_);
  vxClassifierTool knn;
  knn.train(providerOf({{{1.0}, 2}}), vxClassifierTrainParamsKNN(1));
  EXPECT_FALSE(knn == mock);
  EXPECT_FALSE(mock == knn);
}

}  // namespace
