// SPDX-License-Identifier: MIT
#include "vxclss/category_model_bayesian.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_host.h"
#include "tests/support/unknown_version.h"
#include "vxclss/errors.h"

namespace {

using Types = vxClassifierDistributionTypes;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;
using Groups = std::vector<std::vector<long>>;

constexpr auto kUnknown = static_cast<Types::DistributionType>(4);

const vxFeaturePattern& noMaxima() {
  static const vxFeaturePattern none({}, {});
  return none;
}

vx_CategoryModelBayesian modelOf(long label, const Groups& groups,
                                 const std::vector<Types::DistributionType>& types,
                                 const vxFeaturePattern& maxima = noMaxima()) {
  return {label, groups, types, maxima};
}

void adapt(vx_CategoryModelBayesian& model, const std::vector<vxFeaturePattern>& patterns) {
  for (const vxFeaturePattern& pattern : patterns) model.adapt(pattern, nullptr, 0);
}

double score(const vx_CategoryModelBayesian& model, const vxFeaturePattern& pattern) {
  return model.matchScore(pattern, nullptr, 0);
}

double maximumOf(const vx_CategoryModelBayesian& model, std::size_t k) {
  return dynamic_cast<const vx_PDFBinomial&>(*model.densities().at(k)).maximumValue();
}

template <class T>
std::string bytesOf(const T& object) {
  return stored(const_cast<T&>(object));  // storing changes nothing
}

/// Normal over {2, 0}, binomial over {1}, normal over {3}, three samples in.
vx_CategoryModelBayesian trainedModel() {
  vx_CategoryModelBayesian model = modelOf(
      7, {{2, 0}, {1}, {3}}, {Types::eNormal, Types::eBinomial, Types::eNormal}, {{0.0, 10.0}, {}});
  adapt(model,
        {{{1.0, 2.0, 3.0, 4.0}, {}}, {{2.0, 4.0, 1.0, 8.0}, {}}, {{4.0, 3.0, 3.0, 5.0}, {}}});
  return model;
}

TEST(CategoryModelBayesianTest, HasNoGroupsByDefault) {
  const vx_CategoryModelBayesian model;
  EXPECT_EQ(model.categoryLabel(), 0);
  EXPECT_EQ(model.numMeasurements(), 0);
  EXPECT_TRUE(model.measurementGroups().empty());
  EXPECT_TRUE(model.densities().empty());
  EXPECT_EQ(score(model, {{}, {}}), 0.0);
  EXPECT_TRUE(model == modelOf(0, {}, {}));
}

TEST(CategoryModelBayesianTest, HasADensityOfTheRightKindForEachGroup) {
  const vx_CategoryModelBayesian model =
      modelOf(5, {{0}, {3, 1}, {2}}, {Types::eBinomial, Types::eNormal, Types::eNormal});
  EXPECT_EQ(model.categoryLabel(), 5);
  EXPECT_EQ(model.numMeasurements(), 4);
  EXPECT_EQ(model.measurementGroups(), (Groups{{0}, {3, 1}, {2}}));
  const auto densities = model.densities();
  ASSERT_EQ(densities.size(), 3u);
  EXPECT_TRUE(densities[0]->isEquivalent(vx_PDFBinomial({{1.0}, {}})));
  EXPECT_TRUE(densities[1]->isEquivalent(vx_PDFMultivariateNormal()));
  EXPECT_NE(densities[1], densities[2]);
}

TEST(CategoryModelBayesianTest, CountsTheMeasurementsOfTypedGroupsAlone) {
  const vx_CategoryModelBayesian model = modelOf(5, {{0, 1}, {2, 3, 4}}, {Types::eNormal});
  EXPECT_EQ(model.numMeasurements(), 2);
  EXPECT_EQ(model.densities().size(), 1u);
  EXPECT_EQ(model.measurementGroups().size(), 2u);
  const vx_CategoryModelBayesian none = modelOf(5, {{0, 1}}, {});
  EXPECT_EQ(none.numMeasurements(), 0);
}

TEST(CategoryModelBayesianTest, TakesTheMaximumOfABinomialFromItsMeasurement) {
  const Groups groups = {{2}, {0}, {9}, {1}, {1, 2}};
  const std::vector<Types::DistributionType> types(5, Types::eBinomial);
  const vx_CategoryModelBayesian model = modelOf(1, groups, types, {{5.0, 6.0, 7.0}, {1}});
  EXPECT_EQ(maximumOf(model, 0), 7.0);
  EXPECT_EQ(maximumOf(model, 1), 5.0);
  EXPECT_EQ(maximumOf(model, 2), 1.0);  // past the end
  EXPECT_EQ(maximumOf(model, 3), 1.0);  // invalid
  EXPECT_EQ(maximumOf(model, 4), 1.0);  // the first one decides
  EXPECT_EQ(maximumOf(modelOf(1, {{}}, {Types::eBinomial}, {{5.0}, {}}), 0), 1.0);
}

TEST(CategoryModelBayesianTest, RefusesTheFirstTypeThatItCannotModel) {
  expectThrows<NotImplemented>(
      [] {
        modelOf(1, {{0}, {1}, {2}}, {Types::eNormal, Types::ePoisson, kUnknown});
      },
      L"Poisson distribution is not implemented");
  expectThrows<NotImplemented>(
      [] {
        modelOf(1, {{0}, {1}}, {Types::eUniform, kUnknown});
      },
      L"Uniform distribution is not implemented");
  expectThrows<BadParams>(
      [] {
        modelOf(1, {{0}, {1}}, {kUnknown, Types::ePoisson});
      },
      L"Unknown distribution type");
}

TEST(CategoryModelBayesianTest, RefusesFewerGroupsThanTypes) {
  EXPECT_THROW(modelOf(1, {{0}}, {Types::eNormal, Types::eNormal}), BadParams);
}

TEST(CategoryModelBayesianTest, AddsTheLogDensitiesOfItsGroups) {
  const vx_CategoryModelBayesian model = trainedModel();
  const vxFeaturePattern pattern({1.5, 3.0, 2.0, 6.0}, {});
  const auto densities = model.densities();
  double expected = 0.0;
  expected += densities[0]->logValue({{2.0, 1.5}, {}});
  expected += densities[1]->logValue({{3.0}, {}});
  expected += densities[2]->logValue({{6.0}, {}});
  EXPECT_EQ(score(model, pattern), expected);
}

TEST(CategoryModelBayesianTest, LeavesOutWhatIsInvalidOrMissing) {
  const vx_CategoryModelBayesian model = trainedModel();
  const auto densities = model.densities();
  double expected = 0.0;
  expected += densities[0]->logValue({{2.0, 0.0}, {1}});
  expected += 0.0;
  expected += densities[2]->logValue({{6.0}, {}});
  EXPECT_EQ(score(model, {{1.5, 3.0, 2.0, 6.0}, {0, 1}}), expected);
  EXPECT_EQ(score(model, {{1.5, 3.0, 2.0}, {0}}),
            0.0 + densities[0]->logValue({{2.0, 0.0}, {1}}) + densities[1]->logValue({{3.0}, {}}));
  EXPECT_EQ(score(model, {{}, {}}), 0.0);
}

TEST(CategoryModelBayesianTest, FoldsEachPatternIntoEveryGroup) {
  const vx_CategoryModelBayesian model = trainedModel();
  vx_PDFMultivariateNormal pair;
  pair.updateWithData({{{3.0, 1.0}, {}}, {{1.0, 2.0}, {}}, {{3.0, 4.0}, {}}});
  vx_PDFBinomial binomial({{10.0}, {}});
  binomial.updateWithData({{{2.0}, {}}, {{4.0}, {}}, {{3.0}, {}}});
  EXPECT_TRUE(model.densities()[0]->isEquivalent(pair));
  EXPECT_TRUE(model.densities()[1]->isEquivalent(binomial));
}

TEST(CategoryModelBayesianTest, GivesADensityOfAHostTheReducedPattern) {
  const host::DensityRegistration registration;
  host::WrappedNormal::seen.clear();
  const host::WrappedNormal empty;
  vx_CategoryModelBayesian model = bayesModel({3, 3, {{4, 0, 1}}, {&empty}});
  model.adapt({{5.0, 6.0}, {1}}, nullptr, 0);
  model.adapt({{5.0, 6.0, 7.0, 8.0, 9.0}, {}}, nullptr, 0);
  model.adapt({{7.0, 6.5, 7.0, 8.0, 1.0}, {}}, nullptr, 0);
  score(model, {{1.0}, {0}});
  const auto& seen = host::WrappedNormal::seen;
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_TRUE(seen[0] == vxFeaturePattern({0.0, 5.0, 0.0}, {0, 2}));
  EXPECT_TRUE(seen[1] == vxFeaturePattern({9.0, 5.0, 6.0}, {}));
  EXPECT_TRUE(seen[3] == vxFeaturePattern({0.0, 0.0, 0.0}, {0, 1, 2}));
}

TEST(CategoryModelBayesianTest, NamesItsCategoryWhereADensityLacksData) {
  const vx_CategoryModelBayesian normal = modelOf(12, {{0}}, {Types::eNormal});
  expectThrows<InsufficientTrainData>(
      [&] {
        score(normal, {{1.0}, {}});
      },
      L"No valid data has been used to train the distribution for category 12");
  vx_CategoryModelBayesian binomial = modelOf(3, {{0}}, {Types::eBinomial});
  adapt(binomial, {{{0.5}, {}}});
  expectThrows<InsufficientTrainData>(
      [&] {
        score(binomial, {{1.0}, {}});
      },
      L"Insufficient data has been used to train the distribution for category 3");
  expectThrows<InsufficientTrainData>(
      [&] {
        score(binomial, {{}, {}});
      },
      L"Insufficient data has been used to train the distribution for category 3");
  binomial.categoryLabel(-5);
  expectThrows<InsufficientTrainData>(
      [&] {
        score(binomial, {{1.0}, {}});
      },
      L"Insufficient data has been used to train the distribution for category -5");
}

TEST(CategoryModelBayesianTest, LeavesOtherErrorsAsTheyAre) {
  vx_CategoryModelBayesian model = modelOf(3, {{0}}, {Types::eBinomial});
  adapt(model, {{{0.5}, {}}, {{0.25}, {}}});
  expectThrows<BadParams>(
      [&] {
        score(model, {{1.5}, {}});
      },
      L"Feature measurement must be <= specified maximum value");
  expectThrows<BadParams>(
      [&] {
        adapt(model, {{{1.5}, {}}});
      },
      L"Train data measurement cannot exceed its maximum value when using binomial distribution");
  vx_CategoryModelBayesian pair = modelOf(3, {{0, 1}}, {Types::eBinomial});
  expectThrows<NotImplemented>(
      [&] {
        adapt(pair, {{{0.5, 0.5}, {}}});
      },
      L"Multivariate Binomial Distributions are not implemented");
  expectThrows<InsufficientTrainData>(
      [&] {
        score(pair, {{0.5, 0.5}, {}});
      },
      L"Insufficient data has been used to train the distribution for category 3");
}

TEST(CategoryModelBayesianTest, StopsAtTheFirstGroupThatFails) {
  // The groups before it have then taken the pattern, those after it have not.
  vx_CategoryModelBayesian model =
      modelOf(3, {{0}, {1}, {2}}, {Types::eNormal, Types::eBinomial, Types::eNormal});
  EXPECT_THROW(adapt(model, {{{1.0, 9.0, 3.0}, {}}}), BadParams);
  const auto densities = model.densities();
  EXPECT_TRUE(dynamic_cast<const vx_PDFMultivariateNormal&>(*densities[0]).isValid());
  EXPECT_FALSE(dynamic_cast<const vx_PDFMultivariateNormal&>(*densities[2]).isValid());
}

TEST(CategoryModelBayesianTest, ComparesLabelNumberAndDensitiesButNotTheGroups) {
  const vx_CategoryModelBayesian model = trainedModel();
  EXPECT_TRUE(model == trainedModel());
  EXPECT_FALSE(model != trainedModel());
  const auto densities = model.densities();
  const std::vector<const vxPersistent*> pointers = {densities[0].get(), densities[1].get(),
                                                     densities[2].get()};
  EXPECT_TRUE(model == bayesModel({7, 4, {{9, 8}, {7}, {6}, {5}}, pointers}));
  EXPECT_FALSE(model == bayesModel({8, 4, {{2, 0}, {1}, {3}}, pointers}));
  EXPECT_FALSE(model == bayesModel({7, 5, {{2, 0}, {1}, {3}}, pointers}));
  EXPECT_FALSE(model == bayesModel({7, 4, {{2, 0}, {1}, {3}}, {pointers[0], pointers[1]}}));
  EXPECT_TRUE(model !=
              bayesModel({7, 4, {{2, 0}, {1}, {3}}, {pointers[2], pointers[1], pointers[0]}}));
  vx_CategoryModelBayesian further = trainedModel();
  adapt(further, {{{1.0, 2.0, 3.0, 4.0}, {}}});
  EXPECT_FALSE(model == further);
}

TEST(CategoryModelBayesianTest, SharesItsDensitiesWithItsCopies) {
  vx_CategoryModelBayesian source = trainedModel();
  const vx_CategoryModelBayesian copy(source);
  vx_CategoryModelBayesian assigned;
  assigned = source;
  EXPECT_EQ(copy.densities(), source.densities());
  EXPECT_EQ(assigned.densities(), source.densities());
  adapt(source, {{{4.0, 2.0, 9.0, 4.0}, {}}});
  EXPECT_TRUE(copy == source);
  EXPECT_TRUE(assigned == source);
  EXPECT_EQ(score(copy, {{1, 2, 3, 4}, {}}), score(source, {{1, 2, 3, 4}, {}}));
  EXPECT_FALSE(copy == trainedModel());
  const vx_CategoryModelBayesian& same = source;
  source = same;
  EXPECT_TRUE(source == copy);
}

TEST(CategoryModelBayesianTest, IsArchivedFieldByField) {
  vx_CategoryModelBayesian model = modelOf(-2, {{5, 1}, {0}}, {});
  model.numMeasurements(9);
  EXPECT_EQ(storedHex(model), packedHex("00 00 feffffff 09000000"
                                        "00 02000000 00 02000000 05000000 01000000"
                                        "00 01000000 00000000"
                                        "00 00000000"));
}

TEST(CategoryModelBayesianTest, AnswersBitForBitAsBeforeItWasStored) {
  const vx_CategoryModelBayesian model = trainedModel();
  const auto copy = loaded<vx_CategoryModelBayesian>(bytesOf(model));
  EXPECT_TRUE(copy == model);
  EXPECT_EQ(copy.measurementGroups(), model.measurementGroups());
  EXPECT_NE(copy.densities()[0], model.densities()[0]);
  for (const vxFeaturePattern& pattern :
       {vxFeaturePattern({1.0 / 3, 7, 0.1, 5.5}, {}), vxFeaturePattern({0, 0, 0, 0}, {2})}) {
    EXPECT_EQ(score(copy, pattern), score(model, pattern));
  }
  EXPECT_EQ(bytesOf(copy), bytesOf(model));
}

TEST(CategoryModelBayesianTest, MeetsAnEmptyDensityWithBadPointer) {
  const vxFeaturePattern notADensity({1.0}, {});
  const vx_PDFMultivariateNormal density;
  for (const vxPersistent* object : {static_cast<const vxPersistent*>(nullptr),
                                     static_cast<const vxPersistent*>(&notADensity)}) {
    vx_CategoryModelBayesian model = bayesModel({3, 1, {{0}, {0}}, {object, &density}});
    EXPECT_TRUE(model.densities()[0].isNull());
    expectThrows<vxBadPointer>([&] { score(model, {{1.0}, {}}); }, L"");
    expectThrows<vxBadPointer>([&] { adapt(model, {{{1.0}, {}}}); }, L"");
    expectThrows<vxBadPointer>([&] { static_cast<void>(model == model); }, L"");
    EXPECT_FALSE(model == trainedModel());
    EXPECT_EQ(bytesOf(loaded<vx_CategoryModelBayesian>(bytesOf(model))), bytesOf(model));
  }
}

TEST(CategoryModelBayesianTest, RefusesANegativeMeasurementWhenItIsUsed) {
  vx_PDFMultivariateNormal density;
  density.updateWithData({{{1.0}, {}}, {{2.0}, {}}});
  vx_CategoryModelBayesian model = bayesModel({3, 1, {{-1}}, {&density}});
  constexpr wchar_t kNegative[] = L"Feature measurement indices must be >= 0";
  expectThrows<BadIndex>([&] { score(model, {{1.0}, {}}); }, kNegative);
  expectThrows<BadIndex>([&] { adapt(model, {{{1.0}, {}}}); }, kNegative);
}

TEST(CategoryModelBayesianTest, RefusesAnArchiveWithFewerGroupsThanDensities) {
  const vx_PDFMultivariateNormal density;
  vx_CategoryModelBayesian model = trainedModel();
  const std::string before = bytesOf(model);
  EXPECT_THROW(load(bayesModelBytes({3, 1, {{0}}, {&density, &density}}), model),
               vxArchive::Malformed);
  EXPECT_EQ(bytesOf(model), before);
  EXPECT_EQ(bayesModel({3, 1, {{0}, {1}, {2}}, {&density}}).densities().size(), 1u);
}

TEST(CategoryModelBayesianTest, TakesAGroupThatDoesNotFitItsDensity) {
  vx_PDFMultivariateNormal single;
  single.updateWithData({{{1.0}, {}}, {{2.0}, {}}});
  const vx_CategoryModelBayesian normal = bayesModel({3, 2, {{0, 1}}, {&single}});
  EXPECT_THROW(score(normal, {{1.0, 2.0}, {}}), vxStatusException);
  vx_PDFBinomial binomial({{9.0}, {}});
  binomial.updateWithData({{{1.0}, {}}, {{2.0}, {}}});
  const vx_CategoryModelBayesian pair = bayesModel({3, 2, {{0, 1}}, {&binomial}});
  EXPECT_THROW(score(pair, {{1.0, 2.0}, {}}), NotImplemented);
  const vx_CategoryModelBayesian empty = bayesModel({3, 0, {{}}, {&binomial}});
  EXPECT_THROW(score(empty, {{1.0, 2.0}, {}}), NotImplemented);
}

TEST(CategoryModelBayesianTest, RefusesAnUnknownVersionWithoutAName) {
  for (const std::size_t level : {0u, 1u}) {
    std::string bytes = bytesOf(trainedModel());
    bytes[level] = '\x01';
    vx_CategoryModelBayesian model = trainedModel();
    expectUnknownVersion([&] { load(bytes, model); }, "");
    EXPECT_TRUE(model == trainedModel());
  }
}

TEST(CategoryModelBayesianTest, IsStoredAnewAfterItLearned) {
  vx_CategoryModelBayesian source = trainedModel();
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(output, &source, unused);
  adapt(source, {{{9.0, 9.0, 9.0, 9.0}, {}}});
  vxPersistent::serializePointer(output, &source, unused);
  vxPtrHandle<vx_CategoryModelBayesian> arrived[2];
  load(out.str(), arrived[0], arrived[1]);
  EXPECT_TRUE(*arrived[0] == trainedModel());
  EXPECT_TRUE(*arrived[1] == source);
}

}  // namespace
