// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/support/archive_helpers.h"
#include "tests/support/centroid_technique.h"
#include "tests/support/hostile_archive.h"
#include "tests/support/samples.h"
#include "vxclss/classifier_knn.h"
#include "vxclss/classifier_tool.h"
#include "vxclss/errors.h"

namespace {

using host::CentroidClassifier;
using host::CentroidParams;
using vxClassifierDefs::BadMethod;

class HostTechniqueTest : public testing::Test {
 protected:
  vxClassifierTool trained(double scale = 1.0) const {
    vxClassifierTool tool;
    tool.train(data_, CentroidParams(scale));
    return tool;
  }
  static std::vector<vxClassifierCategoryResult> run(const vxClassifierTool& tool, double x) {
    vxClassifierResult result;
    tool.run(vxFeaturePattern({x}, {}), result);
    return result.categoryResults();
  }

  const vxClassifierDataProviderMemory data_ = providerOf({{{0.0}, 4}, {{2.0}, 4}, {{5.0}, 9}});
};

TEST_F(HostTechniqueTest, TrainsAndRunsThroughTheTool) {
  const vxClassifierTool tool = trained();
  const auto results = run(tool, 4.0);
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0].categoryLabel(), 9);
  EXPECT_EQ(results[0].matchScore(), 0.5);
  EXPECT_EQ(results[1].categoryLabel(), 4);
  EXPECT_EQ(results[1].matchScore(), 0.25);
  EXPECT_EQ(dynamic_cast<const CentroidParams&>(*tool.trainParams()).scale(), 1.0);
}

TEST_F(HostTechniqueTest, RetrainsWithItsOwnParametersOnly) {
  vxClassifierTool tool = trained();
  tool.retrain(CentroidParams(3.0));
  EXPECT_EQ(run(tool, 4.0)[0].matchScore(), 0.75);
  expectRefused<BadMethod>(
      tool, [&] { tool.retrain(vxClassifierTrainParamsKNN(1)); },
      L"Cannot retrain with a different classification technique.");

  vxClassifierTool knn;
  knn.train(data_, vxClassifierTrainParamsKNN(1));
  expectRefused<BadMethod>(
      knn, [&] { knn.retrain(CentroidParams()); },
      L"Cannot retrain with a different classification technique.");
  knn.train(data_, CentroidParams());
  EXPECT_TRUE(knn == trained());
}

TEST_F(HostTechniqueTest, ReportsItsErrorsThroughTheTool) {
  vxClassifierTool tool;
  expectThrows<vxClassifierDefs::InsufficientTrainData>(
      [&] { tool.train(vxClassifierDataProviderMemory(), CentroidParams()); }, L"no centroid");
  EXPECT_FALSE(tool.isTrained());
  expectThrows<vxClassifierDefs::BadLabel>(
      [&] {
        tool.train(providerOf({{{1.0}, -1}}), CentroidParams());
      },
      L"Category labels must be >= 0");
  EXPECT_TRUE(tool.isTrained());
  expectThrows<vxClassifierDefs::NotImplemented>(
      [&] { tool.train(data_, CentroidParams(0.0)); },
      L"The classification method specified by the training parameters is not implemented.");
  EXPECT_TRUE(tool.classifier().isNull());
}

TEST_F(HostTechniqueTest, LearnsPatternByPattern) {
  CentroidClassifier classifier;
  classifier.trainStart(CentroidParams());
  EXPECT_TRUE(classifier.isTrained());
  for (long i = 0; i < data_.numPatterns(); ++i) {
    classifier.trainIncremental(*data_.featurePattern(i), data_.categoryLabel(i));
  }
  EXPECT_TRUE(classifier.isEquivalent(*trained().classifier()));
}

TEST_F(HostTechniqueTest, IsCopiedAndComparedByTheTool) {
  vxClassifierTool tool = trained();
  const vxClassifierTool copy(tool);
  EXPECT_TRUE(copy == tool);
  tool.retrain(CentroidParams(3.0));
  EXPECT_TRUE(copy != tool);
  EXPECT_TRUE(copy == trained());
  EXPECT_EQ(run(copy, 4.0)[0].matchScore(), 0.5);
}

TEST_F(HostTechniqueTest, ComesBackFromAnArchiveUnderItsOwnName) {
  const host::CentroidRegistration registration;
  vxClassifierTool tool = trained(2.0);
  const std::string bytes = stored(tool);
  EXPECT_NE(bytes.find("host::CentroidClassifier"), std::string::npos);
  EXPECT_NE(bytes.find("host::CentroidParams"), std::string::npos);
  EXPECT_NE(bytes.find("host::CentroidModel"), std::string::npos);

  vxClassifierTool read;
  load(bytes, read);
  EXPECT_TRUE(read == tool);
  EXPECT_EQ(run(read, 4.0), run(tool, 4.0));
  EXPECT_EQ(toHex(stored(read)), toHex(bytes));
}

TEST_F(HostTechniqueTest, SurvivesEveryDamageToItsArchive) {
  const host::CentroidRegistration registration;
  vxClassifierTool tool = trained(2.0);
  const auto check = [](const std::string& bytes) {
    vxClassifierTool read;
    if (!succeedsOrRefuses([&] { loadFront(bytes, read); })) {
      EXPECT_TRUE(read.classifier().isNull());
    }
    // Whatever came, it can be used.
    vxClassifierTool copy(read);
    static_cast<void>(copy == read);
    vxClassifierResult result;
    try {
      read.run(vxFeaturePattern({4.0}, {}), result);
    } catch (const vxException&) {
    }
  };
  forEachTruncation(stored(tool), check);
  forEachByteChange(stored(tool), check);
}

TEST_F(HostTechniqueTest, IsUnknownToAnArchiveThatDoesNotHaveItRegistered) {
  vxClassifierTool tool = trained();
  EXPECT_THROW(stored(tool), vxArchive::Unstorable);

  std::string bytes;
  {
    const host::CentroidRegistration registration;
    bytes = stored(tool);
  }
  vxClassifierTool read(tool);
  EXPECT_THROW(load(bytes, read), vxArchive::Malformed);
  EXPECT_TRUE(read.classifier().isNull());
}

TEST_F(HostTechniqueTest, NeverMeetsTheParametersOfAnotherTechnique) {
  const host::CentroidRegistration registration;
  const CentroidParams params;
  vxClassifierTool tool;
  load(hostileToolBytes(&params, HostileSet{{sharedPattern({1.0})}, {6}}), tool);
  ASSERT_TRUE(tool.isTrained());
  EXPECT_EQ(run(tool, 0.0)[0].categoryLabel(), 6);

  // The parameters say that they are of one technique, the classifier that it is of the other.
  expectThrows<vxBadPointer>([&] { tool.retrain(CentroidParams(2.0)); }, L"");
  expectThrows<BadMethod>([&] { tool.retrain(vxClassifierTrainParamsKNN(1)); },
                          L"Cannot retrain with a different classification technique.");
  EXPECT_TRUE(tool.isTrained());
  EXPECT_EQ(dynamic_cast<const CentroidParams&>(*tool.trainParams()).scale(), 1.0);
  EXPECT_EQ(run(tool, 0.0)[0].categoryLabel(), 6);
}

}  // namespace
