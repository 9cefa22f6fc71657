// SPDX-License-Identifier: MIT
#include "vxclss/density.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/class_names.h"
#include "tests/support/unknown_version.h"

namespace {

/// The versioned entries of a density and of its base in reach.
template <class Density>
struct Opened : Density {
  explicit Opened(const Density& density) : Density(density) {}

  void serialize(vxArchive& archive, unsigned char version) {
    Density::serialize_(archive, version);
  }
  void serializeBase(vxArchive& archive, unsigned char version) {
    vx_ProbabilityDensityFunction::serialize_(archive, version);
  }
};

template <class T>
class DensityTest : public testing::Test {};

using Densities = testing::Types<vx_PDFMultivariateNormal, vx_PDFBinomial>;
TYPED_TEST_SUITE(DensityTest, Densities, ClassNames);

TYPED_TEST(DensityTest, RefusesAnotherVersionAtBothLevels) {
  for (const auto& sample : Archived<TypeParam>::samples()) {
    SCOPED_TRACE(sample.name);
    Opened<TypeParam> density(sample.object);
    std::ostringstream stream(std::ios::binary);
    vxOutputArchive archive(stream);
    expectUnknownVersion([&] { density.serialize(archive, 1); }, "");
    expectUnknownVersion([&] { density.serializeBase(archive, 1); }, "");
    EXPECT_TRUE(stream.str().empty());
    EXPECT_TRUE(density == sample.object);
  }
}

}  // namespace
