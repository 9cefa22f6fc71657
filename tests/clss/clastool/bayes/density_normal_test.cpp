// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"
#include "tests/support/bayes_host.h"
#include "tests/support/unknown_version.h"
#include "vxclss/density.h"
#include "vxclss/errors.h"

namespace {

using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using Patterns = std::vector<vxFeaturePattern>;

constexpr wchar_t kNoData[] = L"No valid data has been used to train the distribution";
constexpr wchar_t kOtherSize[] =
    L"Must call clear before updating with feature vectors of different sizes";

vx_PDFMultivariateNormal densityOf(const Patterns& patterns) {
  vx_PDFMultivariateNormal density;
  density.updateWithData(patterns);
  return density;
}

vx_PDFMultivariateNormal sampleDensity() {
  return densityOf({{{1.0, 2.0}, {}}, {{3.0, 8.0}, {}}, {{8.0, 5.0}, {}}});
}

template <class T>
std::string bytesOf(const T& object) {
  return stored(const_cast<T&>(object));  // storing changes nothing
}

TEST(DensityNormalTest, StartsEmpty) {
  const vx_PDFMultivariateNormal density;
  EXPECT_FALSE(density.isValid());
  EXPECT_EQ(density.sampleCount(), 0);
  EXPECT_EQ(density.mean().rows(), 0);
  EXPECT_EQ(density.covariance().rows(), 0);
  EXPECT_TRUE(density == vx_PDFMultivariateNormal());
}

TEST(DensityNormalTest, ShowsMeanAndCovariance) {
  const vx_PDFMultivariateNormal density = sampleDensity();
  EXPECT_TRUE(density.isValid());
  EXPECT_EQ(density.sampleCount(), 3);
  EXPECT_EQ(density.mean().rows(), 2);
  EXPECT_EQ(density.mean().columns(), 1);
  EXPECT_DOUBLE_EQ(density.mean().element(1, 0), 5.0);
  EXPECT_DOUBLE_EQ(density.covariance().element(0, 0), 13.0);
  EXPECT_DOUBLE_EQ(density.covariance().element(0, 1), 3.0);
  EXPECT_DOUBLE_EQ(density.covariance().element(1, 0), 3.0);
}

TEST(DensityNormalTest, IsTheFamiliarDensity) {
  // Variances 13 and 9, covariance 3: determinant 108.
  const double expected = -std::log(2.0 * std::acos(-1.0)) - 0.5 * std::log(108.0);
  EXPECT_NEAR(sampleDensity().logValue({{4.0, 5.0}, {}}), expected, 1e-14);
}

TEST(DensityNormalTest, IsTheMarginalDensityOfTheValidMeasurements) {
  const double expected = -0.5 * (std::log(2.0 * std::acos(-1.0) * 9.0) + 1.0);
  EXPECT_NEAR(sampleDensity().logValue({{std::nan(""), 8.0}, {0}}), expected, 1e-14);
  EXPECT_EQ(sampleDensity().logValue({{1.0, 2.0}, {0, 1}}), 0.0);
}

TEST(DensityNormalTest, NeedsTwoSamplesOfEachValidMeasurement) {
  vx_PDFMultivariateNormal density;
  expectRefused<InsufficientTrainData>(
      density,
      [&] {
        density.logValue({{1.0}, {}});
      },
      kNoData);
  expectThrows<InsufficientTrainData>([&] { density.logValue({{1.0}, {0}}); }, kNoData);
  density.updateWithData({{{1.0, 1.0}, {}}});
  EXPECT_TRUE(density.isValid());
  expectRefused<InsufficientTrainData>(
      density,
      [&] {
        density.logValue({{1.0, 1.0}, {}});
      },
      kNoData);
  EXPECT_EQ(density.logValue({{1.0, 1.0}, {0, 1}}), 0.0);
  density.updateWithData({{{2.0, 1.0}, {1}}});
  expectRefused<InsufficientTrainData>(
      density,
      [&] {
        density.logValue({{1.0, 1.0}, {}});
      },
      kNoData);
  EXPECT_NO_THROW(density.logValue({{1.0, 1.0}, {1}}));
}

TEST(DensityNormalTest, HasAStatusForAPatternOfAnotherSize) {
  try {
    sampleDensity().logValue({{1.0, 2.0, 3.0}, {}});
    ADD_FAILURE() << "threw nothing";
  } catch (const vxStatusException& error) {
    const auto word = static_cast<std::uint32_t>(error.status());
    EXPECT_EQ((word & 0x7fffffff) >> 5, 91u);
    EXPECT_NE(word, 0x80000B61u);
    EXPECT_NE(word, 0x80000B62u);
  }
}

TEST(DensityNormalTest, RefusesSamplesOfAnotherSizeUntilCleared) {
  vx_PDFMultivariateNormal density = densityOf({{{1.0, 2.0, 3.0}, {}}});
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({{{1.0, 2.0}, {}}});
      },
      kOtherSize);
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({{{1.0, 2.0, 3.0}, {}}, {{1.0, 2.0}, {}}});
      },
      kOtherSize);
  density.clear();
  EXPECT_FALSE(density.isValid());
  EXPECT_TRUE(density == vx_PDFMultivariateNormal());
  density.updateWithData({{{1.0, 2.0}, {}}});
  EXPECT_EQ(density.mean().rows(), 2);
}

TEST(DensityNormalTest, RefusesAFirstUpdateOfMixedSizes) {
  vx_PDFMultivariateNormal density;
  expectRefused<BadParams>(
      density,
      [&] {
        density.updateWithData({{{1.0}, {}}, {{1.0, 2.0}, {}}});
      },
      kOtherSize);
  EXPECT_NO_THROW(density.updateWithData({{{1.0, 2.0}, {}}}));
}

TEST(DensityNormalTest, DividesByTheNormalizer) {
  vx_PDFMultivariateNormal density;
  density.updateWithDataNormalize({{{2.0}, {}}, {{4.0}, {}}}, 10.0);
  EXPECT_DOUBLE_EQ(density.mean().element(0, 0), 0.3);
  EXPECT_DOUBLE_EQ(density.covariance().element(0, 0), 0.02);
  vx_PDFMultivariateNormal plain;
  plain.updateWithDataNormalize({{{2.0}, {}}, {{4.0}, {}}}, 1.0);
  EXPECT_TRUE(plain == densityOf({{{2.0}, {}}, {{4.0}, {}}}));
}

TEST(DensityNormalTest, LearnsTheSameHoweverItsSamplesAreGrouped) {
  std::mt19937_64 random(4);
  Patterns patterns;
  for (int i = 0; i < 30; ++i) {
    std::vector<long> invalid;
    if (random() % 3 == 0) invalid.push_back(static_cast<long>(random() % 3));
    patterns.push_back({{std::ldexp(static_cast<double>(random()), -60), 1.0 / (1.0 + i),
                         static_cast<double>(random() % 100)},
                        invalid});
  }
  vx_PDFMultivariateNormal oneByOne;
  for (const vxFeaturePattern& pattern : patterns) oneByOne.updateWithData({pattern});
  EXPECT_EQ(bytesOf(oneByOne), bytesOf(densityOf(patterns)));
}

TEST(DensityNormalTest, ComparesCountMeanAndCovariance) {
  const vx_PDFMultivariateNormal density =
      loaded<vx_PDFMultivariateNormal>(normalBytes({1.0, 2.0}, {3.0, 0.5, 0.5, 4.0}, 7));
  const std::vector<std::string> others = {
      normalBytes({1.0, 2.0}, {3.0, 0.5, 0.5, 4.0}, 8),
      normalBytes({1.0, 2.5}, {3.0, 0.5, 0.5, 4.0}, 7),
      normalBytes({1.0, 2.0}, {3.0, 0.5, 0.5, 4.5}, 7),
      normalBytes({1.0}, {3.0}, 7),
  };
  EXPECT_TRUE(density == vx_PDFMultivariateNormal(density));
  for (const std::string& bytes : others) {
    const auto other = loaded<vx_PDFMultivariateNormal>(bytes);
    EXPECT_FALSE(density == other);
    EXPECT_TRUE(density != other);
    EXPECT_FALSE(density.isEquivalent(other));
  }
  EXPECT_FALSE(density.isEquivalent(vx_PDFBinomial({{1.0}, {}})));
  EXPECT_FALSE(density.isEquivalent(host::WrappedNormal(density)));
  const auto odd = densityOf({{{std::nan("")}, {}}, {{1.0}, {}}});
  EXPECT_FALSE(odd == odd);
}

TEST(DensityNormalTest, CopiesAreIndependent) {
  vx_PDFMultivariateNormal source = sampleDensity();
  const double before = source.logValue({{1.0, 1.0}, {}});
  const vx_PDFMultivariateNormal copy(source);
  vx_PDFMultivariateNormal assigned;
  assigned = source;
  source.updateWithData({{{100.0, 0.0}, {}}});
  EXPECT_TRUE(copy == sampleDensity());
  EXPECT_TRUE(assigned == sampleDensity());
  EXPECT_EQ(copy.logValue({{1.0, 1.0}, {}}), before);
  EXPECT_NE(source.logValue({{1.0, 1.0}, {}}), before);
  const vx_PDFMultivariateNormal& same = source;
  const std::string bytes = bytesOf(source);
  source = same;
  EXPECT_EQ(bytesOf(source), bytes);
}

TEST(DensityNormalTest, IsArchivedFieldByField) {
  EXPECT_EQ(toHex(bytesOf(densityOf({{{1.0}, {}}, {{3.0}, {}}}))),
            packedHex("00 00 01000000 01000000 0000000000000040"
                      "01000000 01000000 0000000000000040 02000000"));
  EXPECT_EQ(toHex(bytesOf(vx_PDFMultivariateNormal())),
            packedHex("00 00 00000000 00000000 00000000 00000000 00000000"));
}

TEST(DensityNormalTest, ArchivesTheMarksOfFewSamples) {
  // One sample of measurement 0, none of measurement 1.
  const vx_PDFMultivariateNormal density = densityOf({{{2.0, 5.0}, {1}}});
  EXPECT_EQ(toHex(bytesOf(density)),
            packedHex("00 00 02000000 01000000 0000000000000040 0000000000000080"
                      "02000000 02000000 0000000000000080 0000000000000000"
                      "0000000000000000 0000000000000080 01000000"));
  const auto copy = loaded<vx_PDFMultivariateNormal>(bytesOf(density));
  EXPECT_EQ(bytesOf(copy), bytesOf(density));
  expectThrows<InsufficientTrainData>([&] { copy.logValue({{2.0, 5.0}, {1}}); }, kNoData);
}

TEST(DensityNormalTest, AnswersBitForBitAsBeforeItWasStored) {
  std::mt19937_64 random(8);
  for (int round = 0; round < 40; ++round) {
    Patterns patterns;
    for (int i = 0; i < 3 + round % 9; ++i) {
      std::vector<long> invalid;
      if (round % 2 == 0 && random() % 2 == 0) invalid.push_back(static_cast<long>(random() % 3));
      patterns.push_back(
          {{std::ldexp(static_cast<double>(random()), -62), 0.1, static_cast<double>(random() % 7)},
           invalid});
    }
    const vx_PDFMultivariateNormal density = densityOf(patterns);
    const auto copy = loaded<vx_PDFMultivariateNormal>(bytesOf(density));
    EXPECT_TRUE(copy == density);
    for (const Patterns& queries :
         {patterns, Patterns{{{0.5, 0.1, 3.0}, {}}, {{0, 0, 0}, {1, 2}}}}) {
      for (const vxFeaturePattern& query : queries) {
        double expected = -1.0;
        try {
          expected = density.logValue(query);
        } catch (const InsufficientTrainData&) {
          expectThrows<InsufficientTrainData>([&] { copy.logValue(query); }, kNoData);
          continue;
        }
        EXPECT_EQ(copy.logValue(query), expected);
      }
    }
  }
}

TEST(DensityNormalTest, LearnsOnFromAnArchive) {
  auto copy = loaded<vx_PDFMultivariateNormal>(bytesOf(sampleDensity()));
  copy.updateWithData({{{0.0, 1.0}, {}}});
  vx_PDFMultivariateNormal whole = sampleDensity();
  whole.updateWithData({{{0.0, 1.0}, {}}});
  EXPECT_EQ(copy.sampleCount(), 4);
  EXPECT_NEAR(copy.covariance().element(0, 1), whole.covariance().element(0, 1), 1e-13);
  EXPECT_NEAR(copy.logValue({{1.0, 1.0}, {}}), whole.logValue({{1.0, 1.0}, {}}), 1e-13);
}

TEST(DensityNormalTest, SurvivesTheLargestArchivedCount) {
  auto density = loaded<vx_PDFMultivariateNormal>(normalBytes({0.0}, {1.0}, 2147483647));
  EXPECT_TRUE(std::isfinite(density.logValue({{0.5}, {}})));
  density.updateWithData({{{0.5}, {}}});
  EXPECT_TRUE(density.isValid());
  EXPECT_TRUE(std::isfinite(density.logValue({{0.5}, {}})));
}

TEST(DensityNormalTest, RefusesImpossibleShapes) {
  const char* const rows[] = {
      "00 00 01000000 02000000 0000000000000000 0000000000000000"
      "01000000 01000000 0000000000000000 02000000",                          // wide mean
      "00 00 01000000 01000000 0000000000000000 00000000 00000000 02000000",  // no covariance
      "00 00 00000000 00000000 01000000 01000000 0000000000000000 02000000",  // no mean
      "00 00 01000000 01000000 0000000000000000 01000000 02000000"
      "0000000000000000 0000000000000000 02000000",  // not square
      "00 00 01000000 01000000 0000000000000000 01000000 01000000"
      "0000000000000000 ffffffff",  // count -1
  };
  for (const char* row : rows) {
    SCOPED_TRACE(row);
    vx_PDFMultivariateNormal density = sampleDensity();
    EXPECT_THROW(load(fromHex(row), density), vxArchive::Malformed);
    EXPECT_EQ(bytesOf(density), bytesOf(sampleDensity()));
  }
}

TEST(DensityNormalTest, RefusesAnUnknownVersionWithoutAName) {
  for (const std::size_t level : {0u, 1u}) {
    std::string bytes = bytesOf(sampleDensity());
    bytes[level] = '\x01';
    vx_PDFMultivariateNormal density;
    expectUnknownVersion([&] { load(bytes, density); }, "");
    EXPECT_FALSE(density.isValid());
  }
}

TEST(DensityNormalTest, IsStoredAnewAfterEachChange) {
  struct Row {
    const char* name;
    void (*change)(vx_PDFMultivariateNormal&);
  };
  const Row rows[] = {
      {"update",
       [](auto& density) {
         density.updateWithData({{{9.0, 9.0}, {}}});
       }},
      {"clear", [](auto& density) { density.clear(); }},
      {"assignment", [](auto& density) { density = vx_PDFMultivariateNormal(); }},
      {"load", [](auto& density) { load(normalBytes({0.0}, {1.0}, 4), density); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    vx_PDFMultivariateNormal source = sampleDensity();
    std::ostringstream out(std::ios::binary);
    vxOutputArchive output(out);
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(output, &source, unused);
    row.change(source);
    vxPersistent::serializePointer(output, &source, unused);
    vxPtrHandle<vx_PDFMultivariateNormal> arrived[2];
    load(out.str(), arrived[0], arrived[1]);
    EXPECT_TRUE(*arrived[0] == sampleDensity());
    EXPECT_TRUE(*arrived[1] == source);
  }
}

}  // namespace
