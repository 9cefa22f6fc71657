// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_classes.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/archived_classes_trees.h"
#include "tests/support/class_names.h"

namespace {

/// Fields of `Derived` and of its base `Level`, transferred in one go.
template <class Derived, class Level>
struct Levels {
  /// A host's class that reaches one level twice, as happens in a diamond.
  class Twice : public Derived {
   public:
    explicit Twice(const Derived& object) : Derived(object) {}

   protected:
    void dispatchSerialize(vxArchive& archive) override {
      Derived::dispatchSerialize(archive);
      Level::dispatchSerialize(archive);
    }
  };

  using Once = Derived;
};

template <class T>
class ArchiveLevelsTest : public testing::Test {};

using AllLevels = testing::Types<
    Levels<vxClassifierDefs::BadFeatures, vxClassifierDefs::BadFeatures>,
    Levels<vxClassifierDefs::BadFeatures, vxClassifierDefs::Errors>,
    Levels<vxClassifierDefs::BadFeatures, vxExceptionWithString>,
    Levels<vxFeaturePattern, vxFeaturePattern>,
    Levels<vxClassifierDataProviderMemory, vxClassifierDataProviderMemory>,
    Levels<vxClassifierDataProviderMemory, vxClassifierDataProvider>,
    Levels<vxPatternDistanceMetricNorm, vxPatternDistanceMetricNorm>,
    Levels<vxPatternDistanceMetricNorm, vxPatternDistanceMetric>,
    Levels<vxClassifierTrainParamsKNN, vxClassifierTrainParamsKNN>,
    Levels<vxClassifierTrainParamsKNN, vxClassifierTrainParams>,
    Levels<vxClassifierTrainParamsBayesian, vxClassifierTrainParamsBayesian>,
    Levels<vx_ClassifierKNN, vx_ClassifierKNN>,
    Levels<vx_ClassifierBayesian, vx_ClassifierBayesian>,
    Levels<vx_ClassifierDecisionTree, vx_ClassifierDecisionTree>,
    Levels<vx_PDFMultivariateNormal, vx_PDFMultivariateNormal>,
    Levels<vx_PDFMultivariateNormal, vx_ProbabilityDensityFunction>,
    Levels<vx_PDFBinomial, vx_PDFBinomial>,
    Levels<vx_CategoryModelBayesian, vx_CategoryModelBayesian>,
    Levels<vxComparisonPredicate, vxComparisonPredicate>,
    Levels<vxComparisonPredicate, vxPredicateFunction>, Levels<vxRangePredicate, vxRangePredicate>,
    Levels<vxValidityPredicate, vxValidityPredicate>,
    Levels<vxDecisionTreeLeaf, vxDecisionTreeLeaf>, Levels<vxDecisionTreeLeaf, vxDecisionTree>,
    Levels<vxDecisionTreeNode, vxDecisionTreeNode>>;
TYPED_TEST_SUITE(ArchiveLevelsTest, AllLevels, CaseNumbers);

TYPED_TEST(ArchiveLevelsTest, TransferTheirFieldsOnceHoweverOftenTheyAreReached) {
  using Once = typename TypeParam::Once;
  using Twice = typename TypeParam::Twice;
  for (const auto& sample : Archived<Once>::samples()) {
    SCOPED_TRACE(sample.name);
    Once once(sample.object);
    Twice twice(sample.object);
    const std::string bytes = stored(once);
    EXPECT_EQ(toHex(stored(twice)), toHex(bytes));

    Twice target(Archived<Once>::samples().front().object);
    load(bytes, target);
    EXPECT_EQ(toHex(stored(target)), toHex(bytes));
  }
}

}  // namespace
