// SPDX-License-Identifier: MIT
#include "vxclss/train_params_bayesian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>

#include "tests/support/archive_helpers.h"
#include "tests/support/unknown_version.h"
#include "vxclss/classifier_bayesian.h"
#include "vxclss/errors.h"
#include "vxclss/train_params_knn.h"

namespace {

using Types = vxClassifierDistributionTypes;

/// Reaches the hooks that the tool and the framework use.
class ParamsProbe : public vxClassifierTrainParamsBayesian {
 public:
  using vxClassifierTrainParamsBayesian::isEqual_;
  using vxClassifierTrainParamsBayesian::isSameTechnique_;
  using vxClassifierTrainParamsBayesian::newClassifier_;
  using vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian;
};

vxClassifierFrequencies frequencies() {
  vxClassifierFrequencies made(2.0);
  made.categoryFrequencyOverride(7, 0.5);
  return made;
}

vxClassifierCosts costs() {
  vxClassifierCosts made(3.0);
  made.misclassificationCostOverride(1, 2, 7.0);
  return made;
}

ParamsProbe params() {
  return {Types(Types::eBinomial), frequencies(), costs(), {{9.0, 4.0}, {1}}};
}
ParamsProbe plainParams() {
  return {Types(), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), {{}, {}}};
}

struct ChangeRow {
  const char* name;
  void (*change)(vxClassifierTrainParamsBayesian&);
};

const ChangeRow kChanges[] = {
    {"types", [](auto& p) { p.distributionTypes(Types(Types::eUniform)); }},
    {"frequencies", [](auto& p) { p.categoryFrequencies(vxClassifierFrequencies(0.25)); }},
    {"costs", [](auto& p) { p.misclassificationCosts(vxClassifierCosts(0.0)); }},
    {"maxima",
     [](auto& p) {
       p.maxMeasurementValues({{9.0, 4.0}, {0}});
     }},
};

TEST(TrainParamsBayesianTest, HoldsWhatItIsMadeFrom) {
  const ParamsProbe made = params();
  EXPECT_TRUE(made.distributionTypes() == Types(Types::eBinomial));
  EXPECT_TRUE(made.categoryFrequencies() == frequencies());
  EXPECT_TRUE(made.misclassificationCosts() == costs());
  EXPECT_TRUE(made.maxMeasurementValues() == vxFeaturePattern({9.0, 4.0}, {1}));
  EXPECT_TRUE(made.throwIfNotReady());
}

TEST(TrainParamsBayesianTest, CopiesWhatItIsGiven) {
  Types types;
  ParamsProbe made = plainParams();
  made.distributionTypes(types);
  types.defaultDistributionType(Types::eUniform);
  EXPECT_TRUE(made.distributionTypes() == Types());
  made.distributionTypes(made.distributionTypes());
  made.categoryFrequencies(made.categoryFrequencies());
  made.misclassificationCosts(made.misclassificationCosts());
  made.maxMeasurementValues(made.maxMeasurementValues());
  EXPECT_TRUE(made == plainParams());
}

TEST(TrainParamsBayesianTest, ComparesAllFour) {
  EXPECT_TRUE(params() == params());
  EXPECT_FALSE(params() != params());
  for (const ChangeRow& row : kChanges) {
    SCOPED_TRACE(row.name);
    ParamsProbe changed = params();
    row.change(changed);
    EXPECT_FALSE(changed == params());
    EXPECT_TRUE(params() != changed);
    EXPECT_FALSE(params().isEqual_(changed));
  }
}

TEST(TrainParamsBayesianTest, DoesNotCompareTheBasePart) {
  ParamsProbe lenient = params();
  lenient.throwIfNotReady(false);
  EXPECT_TRUE(lenient == params());
}

TEST(TrainParamsBayesianTest, DiffersFromItselfWithANaNAmongTheMaxima) {
  ParamsProbe odd = params();
  odd.maxMeasurementValues({{std::nan("")}, {}});
  EXPECT_FALSE(odd == odd);
}

TEST(TrainParamsBayesianTest, IsOfNoOtherTechnique) {
  const vxClassifierTrainParamsKNN other(1);
  EXPECT_FALSE(params().isEqual_(other));
  EXPECT_FALSE(params().isSameTechnique_(other));
  EXPECT_TRUE(params().isSameTechnique_(plainParams()));
}

TEST(TrainParamsBayesianTest, MakesAnUntrainedBayesianClassifier) {
  const std::unique_ptr<vx_Classifier> made(params().newClassifier_());
  ASSERT_NE(dynamic_cast<vx_ClassifierBayesian*>(made.get()), nullptr);
  EXPECT_FALSE(made->isTrained());
  EXPECT_EQ(made->referenceCount(), 0);
}

TEST(TrainParamsBayesianTest, CopiesWithoutTheReadinessFlag) {
  ParamsProbe source = params();
  source.throwIfNotReady(false);
  const ParamsProbe copy(source);
  EXPECT_TRUE(copy == source);
  EXPECT_TRUE(copy.throwIfNotReady());

  const vxPtrHandle<vxClassifierTrainParams> clone = source.clone();
  EXPECT_EQ(clone->referenceCount(), 1);
  EXPECT_TRUE(dynamic_cast<const vxClassifierTrainParamsBayesian&>(*clone) == source);
  EXPECT_TRUE(clone->throwIfNotReady());

  ParamsProbe assigned = plainParams();
  assigned.throwIfNotReady(false);
  assigned = params();
  EXPECT_TRUE(assigned == params());
  EXPECT_FALSE(assigned.throwIfNotReady());
  const ParamsProbe& same = assigned;
  assigned = same;
  EXPECT_TRUE(assigned == params());
}

TEST(TrainParamsBayesianTest, IsIndependentOfItsCopies) {
  for (const ChangeRow& row : kChanges) {
    SCOPED_TRACE(row.name);
    ParamsProbe source = params();
    const ParamsProbe copy(source);
    row.change(source);
    EXPECT_TRUE(copy == params());
  }
}

TEST(TrainParamsBayesianTest, IsArchivedWithCostsBeforeFrequencies) {
  ParamsProbe source(Types(Types::eBinomial), vxClassifierFrequencies(2.0), vxClassifierCosts(3.0),
                     {{1.0, 0.5}, {1}});
  EXPECT_EQ(storedHex(source),
            packedHex("00 00"
                      "00 01000000 00 00000000 00 00000000 00 00000000 00 00000000 00 00000000"
                      "00 0000000000000840 00 00000000 00 00000000 00 00000000"
                      "00 0000000000000040 00 00000000 00 00000000"
                      "00 00 02000000 000000000000f03f 000000000000e03f 00 02000000 0100"));
  ParamsProbe target = plainParams();
  load(stored(source), target);
  EXPECT_TRUE(target == source);
}

TEST(TrainParamsBayesianTest, LoadsThroughAPointerWithTheFlagSet) {
  ParamsProbe source = params();
  source.throwIfNotReady(false);
  vxPtrHandle<vxClassifierTrainParams> clone = source.clone();
  vxPtrHandle<vxClassifierTrainParams> read;
  load(stored(clone), read);
  ASSERT_TRUE(read);
  EXPECT_TRUE(dynamic_cast<const vxClassifierTrainParamsBayesian&>(*read) == source);
  EXPECT_TRUE(read->throwIfNotReady());
}

TEST(TrainParamsBayesianTest, RefusesAnUnknownVersionWithoutAName) {
  ParamsProbe source = plainParams();
  for (const std::size_t level : {0u, 1u}) {
    std::string bytes = stored(source);
    bytes[level] = '\x01';
    ParamsProbe target = params();
    expectUnknownVersion([&] { load(bytes, target); }, "");
    EXPECT_TRUE(target == params());
  }
}

TEST(TrainParamsBayesianTest, IsLeftAloneByATruncatedArchive) {
  ParamsProbe source = plainParams();
  forEachTruncation(stored(source), [](const std::string& bytes) {
    ParamsProbe target = params();
    EXPECT_THROW(load(bytes, target), vxArchive::Errors);
    EXPECT_TRUE(target == params());
  });
}

TEST(TrainParamsBayesianTest, IsStoredAnewAfterEachChange) {
  for (const ChangeRow& row : kChanges) {
    SCOPED_TRACE(row.name);
    const vxPtrHandle<vxClassifierTrainParams> clone = params().clone();
    auto& source = dynamic_cast<vxClassifierTrainParamsBayesian&>(*clone);
    std::ostringstream out(std::ios::binary);
    vxOutputArchive output(out);
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(output, &source, unused);
    row.change(source);
    vxPersistent::serializePointer(output, &source, unused);
    vxPtrHandle<vxClassifierTrainParamsBayesian> arrived[2];
    load(out.str(), arrived[0], arrived[1]);
    EXPECT_TRUE(*arrived[0] == params());
    EXPECT_TRUE(*arrived[1] == source);
  }
}

}  // namespace
