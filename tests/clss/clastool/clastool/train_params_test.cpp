// SPDX-License-Identifier: MIT
#include "vxclss/train_params.h"

#include <gtest/gtest.h>

#include "tests/support/archive_helpers.h"
#include "tests/support/class_names.h"
#include "tests/support/mock_technique.h"
#include "vxclss/category_model.h"
#include "vxclss/train_params_knn.h"

namespace {

/// What a host derives that compares nothing.
class PlainParams : public vxClassifierTrainParams {
 public:
  using vxClassifierTrainParams::isEqual_;
  vxPtrHandle<vxClassifierTrainParams> clone() const override {
    return vxPtrHandle<vxClassifierTrainParams>(new PlainParams(*this));
  }

 protected:
  bool isSameTechnique_(const vxClassifierTrainParams&) const override { return true; }
  vx_Classifier* newClassifier_() const override { return nullptr; }
};

template <class Params>
class TrainParamsFlagTest : public testing::Test {};

struct MakeKnn {
  static vxClassifierTrainParamsKNN make() { return vxClassifierTrainParamsKNN(3); }
};
struct MakePlain {
  static PlainParams make() { return {}; }
};
using Makers = testing::Types<MakeKnn, MakePlain>;
TYPED_TEST_SUITE(TrainParamsFlagTest, Makers, CaseNumbers);

TYPED_TEST(TrainParamsFlagTest, IsTrueInANewObjectAndCanBeSet) {
  auto params = TypeParam::make();
  EXPECT_TRUE(params.throwIfNotReady());
  params.throwIfNotReady(false);
  EXPECT_FALSE(params.throwIfNotReady());
  params.throwIfNotReady(true);
  EXPECT_TRUE(params.throwIfNotReady());
}

TYPED_TEST(TrainParamsFlagTest, IsTrueInEveryCopy) {
  auto params = TypeParam::make();
  params.throwIfNotReady(false);
  const auto copy(params);
  EXPECT_TRUE(copy.throwIfNotReady());
  EXPECT_TRUE(params.clone()->throwIfNotReady());
}

TYPED_TEST(TrainParamsFlagTest, IsLeftAloneByAssignment) {
  auto off = TypeParam::make();
  off.throwIfNotReady(false);
  auto on = TypeParam::make();
  on = off;
  EXPECT_TRUE(on.throwIfNotReady());
  off = TypeParam::make();
  EXPECT_FALSE(off.throwIfNotReady());
}

TYPED_TEST(TrainParamsFlagTest, IsLeftAloneByMoving) {
  auto off = TypeParam::make();
  off.throwIfNotReady(false);
  auto moved(std::move(off));
  EXPECT_TRUE(moved.throwIfNotReady());
  moved = TypeParam::make();
  EXPECT_TRUE(moved.throwIfNotReady());
}

TEST(TrainParamsTest, ArchivesNoFlag) {
  vxClassifierTrainParamsKNN on(3);
  vxClassifierTrainParamsKNN off(3);
  off.throwIfNotReady(false);
  EXPECT_EQ(storedHex(static_cast<vxPersistent&>(on)), storedHex(static_cast<vxPersistent&>(off)));

  vxPtrHandle<vxClassifierTrainParams> pointer(off.clone());
  pointer->throwIfNotReady(false);
  vxPtrHandle<vxClassifierTrainParams> read;
  load(stored(pointer), read);
  ASSERT_FALSE(read.isNull());
  EXPECT_TRUE(read->throwIfNotReady());
}

TEST(TrainParamsTest, KeepsTheFlagOfWhatIsLoadedInPlace) {
  vxClassifierTrainParamsKNN source(4);
  vxClassifierTrainParamsKNN target(3);
  target.throwIfNotReady(false);
  load(stored(static_cast<vxPersistent&>(source)), static_cast<vxPersistent&>(target));
  EXPECT_EQ(target.k(), 4);
  EXPECT_FALSE(target.throwIfNotReady());
}

TEST(TrainParamsTest, HasNothingToCompareInItsBase) {
  EXPECT_TRUE(PlainParams().isEqual_(PlainParams()));
  EXPECT_TRUE(PlainParams().isEqual_(vxClassifierTrainParamsKNN(3)));
}

TEST(TrainParamsTest, StartsACopyWithoutReferences) {
  const vxPtrHandle<PlainParams> held(new PlainParams);
  const PlainParams copy(*held);
  EXPECT_EQ(held->referenceCount(), 1);
  EXPECT_EQ(copy.referenceCount(), 0);
}

}  // namespace
