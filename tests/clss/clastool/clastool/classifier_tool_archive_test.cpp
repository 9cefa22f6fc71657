// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/support/archive_helpers.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"

namespace {

class ClassifierToolArchiveTest : public testing::Test {
 protected:
  ClassifierToolArchiveTest() { tool_.train(data_, params_); }

  static vxClassifierResult run(const vxClassifierTool& tool, double x) {
    vxClassifierResult result;
    tool.run(vxFeaturePattern({x}, {}), result);
    return result;
  }

  const vxClassifierDataProviderMemory data_ =
      providerOf({{{0.0}, 4}, {{1.0}, 5}, {{2.0}, 5}, {{9.0}, 6}});
  const vxClassifierTrainParamsKNN params_{3, vxPatternDistanceMetricNorm(1.0),
                                           vxClassifierCosts(2.0)};
  vxClassifierTool tool_;
};

TEST_F(ClassifierToolArchiveTest, RestoresAnEmptyToolAsAnEmptyOne) {
  vxClassifierTool empty;
  vxClassifierTool read(tool_);
  load(stored(empty), read);
  EXPECT_TRUE(read.classifier().isNull());
}

TEST_F(ClassifierToolArchiveTest, RestoresATrainedToolThatComparesEqual) {
  vxClassifierTool read;
  load(stored(tool_), read);
  EXPECT_TRUE(read == tool_);
  EXPECT_TRUE(tool_ == read);
  EXPECT_NE(read.classifier(), tool_.classifier());
  EXPECT_EQ(dynamic_cast<const vxClassifierTrainParamsKNN&>(*read.trainParams()), params_);
  EXPECT_EQ(storedHex(read), storedHex(tool_));
}

TEST_F(ClassifierToolArchiveTest, RestoresAToolThatHoldsAnUntrainedClassifier) {
  tool_.untrain();
  vxClassifierTool read;
  load(stored(tool_), read);
  EXPECT_FALSE(read.classifier().isNull());
  EXPECT_FALSE(read.isTrained());
  expectThrows<vxClassifierDefs::NotTrained>([&] { read.retrain(params_); },
                                             L"Classifier tool must be trained before retraining.");
  EXPECT_TRUE(read == tool_);
}

TEST_F(ClassifierToolArchiveTest, RunsWithDefaultParametersUntilItIsRetrained) {
  vxClassifierTool read;
  load(stored(tool_), read);
  EXPECT_EQ(labelsOf(run(read, 0.0)), (std::vector<long>{4}));
  EXPECT_TRUE(read == tool_);

  read.retrain(*read.trainParams(), nullptr, 0);
  EXPECT_EQ(labelsOf(run(read, 0.0)), (std::vector<long>{5, 4}));
  EXPECT_EQ(run(read, 0.0), run(tool_, 0.0));
  EXPECT_TRUE(read == tool_);
}

TEST_F(ClassifierToolArchiveTest, ReplacesWhatATrainedToolHeld) {
  vxClassifierTool other;
  other.train(providerOf({{{0.0, 0.0}, 8}}), vxClassifierTrainParamsKNN(1));
  load(stored(tool_), other);
  EXPECT_TRUE(other == tool_);
}

TEST_F(ClassifierToolArchiveTest, ReleasesItsClassifierBeforeItReadsAnother) {
  vxClassifierTool target(tool_);
  const vxPtrHandle_const<vx_Classifier> before = target.classifier();
  EXPECT_EQ(before->referenceCount(), 2);
  load(stored(tool_), target);
  EXPECT_EQ(before->referenceCount(), 1);
  EXPECT_NE(target.classifier(), before);
}

TEST_F(ClassifierToolArchiveTest, IsEmptyAfterALoadThatFailedInItsClassifier) {
  forEachTruncation(stored(tool_), [&](const std::string& bytes) {
    vxClassifierTool target(tool_);
    EXPECT_THROW(load(bytes, target), vxArchive::Errors);
    // The classifier held is released where the other one's bytes begin, after the version byte.
    EXPECT_EQ(target.classifier().isNull(), !bytes.empty());
    target.train(data_, params_);
    EXPECT_TRUE(target == tool_);
  });
}

TEST_F(ClassifierToolArchiveTest, RefusesAnotherVersionAndKeepsItsClassifier) {
  vxClassifierTool target(tool_);
  for (int version = 1; version < 256; ++version) {
    std::string bytes = stored(tool_);
    bytes[0] = static_cast<char>(version);
    EXPECT_THROW(load(bytes, target), vxArchive::UnknownVersion);
    EXPECT_TRUE(target == tool_);
  }
}

TEST_F(ClassifierToolArchiveTest, IsEmptyWhereAnObjectOfAnotherClassStands) {
  unsigned char version = 0;
  vxPtrHandle_const<vxFeaturePattern> pattern = sharedPattern({1.0});
  vxClassifierTool target(tool_);
  load(stored(version, pattern), target);
  EXPECT_TRUE(target.classifier().isNull());
}

TEST_F(ClassifierToolArchiveTest, SharesNothingBetweenTwoToolsOfOneArchive) {
  vxClassifierTool copy(tool_);
  vxClassifierTool a;
  vxClassifierTool b;
  load(stored(tool_, copy), a, b);
  EXPECT_TRUE(a == b);
  EXPECT_NE(a.classifier(), b.classifier());
  a.untrain();
  EXPECT_TRUE(b == tool_);
}

TEST_F(ClassifierToolArchiveTest, CanBeStoredAgainAfterItChanged) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  vxClassifierTool tool(tool_);
  archive || tool;
  tool.retrain(vxClassifierTrainParamsKNN(2));
  archive || tool;
  tool.untrain();
  archive || tool;

  vxClassifierTool first;
  vxClassifierTool second;
  vxClassifierTool third(tool_);
  load(stream.str(), first, second, third);
  EXPECT_TRUE(first == tool_);
  ASSERT_TRUE(second.isTrained());
  EXPECT_EQ(dynamic_cast<const vxClassifierTrainParamsKNN&>(*second.trainParams()).k(), 2);
  EXPECT_FALSE(third.isTrained());
}

TEST_F(ClassifierToolArchiveTest, HasNoParametersWhereTheArchiveHoldsNone) {
  vxClassifierTool tool;
  const vxPersistent* none = nullptr;
  load(hostileToolBytes(none, HostileSet{{sharedPattern({1.0})}, {6}}), tool);
  EXPECT_TRUE(tool.isTrained());
  expectThrows<vxClassifierDefs::BadMethod>([&] { tool.trainParams(); },
                                            L"Classifier tool was not automatically trained.");
  expectThrows<vxClassifierDefs::BadMethod>(
      [&] { tool.retrain(params_); }, L"Cannot retrain with a different classification technique.");
  EXPECT_FALSE(tool == tool_);
  EXPECT_FALSE(tool_ == tool);
}

}  // namespace
