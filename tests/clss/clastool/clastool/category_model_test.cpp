// SPDX-License-Identifier: MIT
#include "vxclss/category_model.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

#include "tests/support/archive_helpers.h"
#include "tests/support/unknown_version.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/handle.h"

namespace {

static_assert(std::is_abstract_v<vx_CategoryModel>);
static_assert(std::is_base_of_v<vxPersistent, vx_CategoryModel>);
static_assert(std::is_base_of_v<vxRepBase, vx_CategoryModel>);

/// A host's model, which adds nothing to the base.
class HostCategoryModel : public vx_CategoryModel {
 public:
  double matchScore(const vxFeaturePattern&, vxDiagObject*, unsigned long) const override {
    return 1.0;
  }
  void adapt(const vxFeaturePattern&, vxDiagObject*, unsigned long) override {}

 private:
  static vxPersistent* make() { return new HostCategoryModel; }
  static const vx_Instantiator sExemplar;
};

const vx_Instantiator HostCategoryModel::sExemplar(typeid(HostCategoryModel),
                                                   &HostCategoryModel::make);

HostCategoryModel model(long label, long numMeasurements) {
  HostCategoryModel made;
  made.categoryLabel(label);
  made.numMeasurements(numMeasurements);
  return made;
}

TEST(CategoryModelTest, StartsWithZeros) {
  const HostCategoryModel fresh;
  EXPECT_EQ(fresh.categoryLabel(), 0);
  EXPECT_EQ(fresh.numMeasurements(), 0);
}

TEST(CategoryModelTest, StoresWithoutChecks) {
  for (const long value :
       {-1L, 0L, 7L, std::numeric_limits<long>::min(), std::numeric_limits<long>::max()}) {
    const HostCategoryModel set = model(value, value);
    EXPECT_EQ(set.categoryLabel(), value);
    EXPECT_EQ(set.numMeasurements(), value);
  }
}

TEST(CategoryModelTest, ComparesBothFields) {
  EXPECT_TRUE(model(3, 4) == model(3, 4));
  EXPECT_FALSE(model(3, 4) != model(3, 4));
  EXPECT_FALSE(model(3, 4) == model(4, 4));
  EXPECT_FALSE(model(3, 4) == model(3, 3));
  EXPECT_TRUE(model(3, 4) != model(4, 3));
}

TEST(CategoryModelTest, CopiesAndAssigns) {
  const HostCategoryModel source = model(3, 4);
  HostCategoryModel copy(source);
  EXPECT_TRUE(copy == source);
  copy = model(5, 6);
  EXPECT_TRUE(copy == model(5, 6));
  const HostCategoryModel& same = copy;
  copy = same;
  EXPECT_TRUE(copy == model(5, 6));
  EXPECT_TRUE(source == model(3, 4));
}

TEST(CategoryModelTest, IsArchivedFieldByField) {
  HostCategoryModel source = model(3, -4);
  EXPECT_EQ(storedHex(source), packedHex("00 03000000 fcffffff"));
  HostCategoryModel target;
  load(fromHex("00 05000000 06000000"), target);
  EXPECT_TRUE(target == model(5, 6));
}

TEST(CategoryModelTest, RefusesAnUnknownVersionWithoutAName) {
  for (int version = 1; version < 256; ++version) {
    std::string bytes = fromHex("00 05000000 06000000");
    bytes[0] = static_cast<char>(version);
    HostCategoryModel target = model(3, 4);
    expectUnknownVersion([&] { load(bytes, target); }, "");
    EXPECT_TRUE(target == model(3, 4));
  }
}

TEST(CategoryModelTest, IsLeftAloneByATruncatedArchive) {
  forEachTruncation(fromHex("00 05000000 06000000"), [](const std::string& bytes) {
    HostCategoryModel target = model(3, 4);
    EXPECT_THROW(load(bytes, target), vxArchive::Errors);
    EXPECT_TRUE(target == model(3, 4));
  });
}

TEST(CategoryModelTest, DoesNotStoreANumberBeyond32Bits) {
  if (sizeof(long) == 4) GTEST_SKIP() << "a long has no other bits";
  HostCategoryModel tooLarge = model(std::numeric_limits<long>::max(), 0);
  EXPECT_THROW(stored(tooLarge), vxArchive::Unstorable);
}

TEST(CategoryModelTest, IsStoredAnewAfterEachChange) {
  struct Row {
    const char* name;
    void (*change)(HostCategoryModel&);
  };
  const Row rows[] = {
      {"label", [](HostCategoryModel& changed) { changed.categoryLabel(9); }},
      {"measurements", [](HostCategoryModel& changed) { changed.numMeasurements(9); }},
      {"assignment", [](HostCategoryModel& changed) { changed = model(9, 9); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    HostCategoryModel source = model(3, 4);
    std::ostringstream out(std::ios::binary);
    vxOutputArchive output(out);
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(output, &source, unused);
    row.change(source);
    vxPersistent::serializePointer(output, &source, unused);

    vxPtrHandle<HostCategoryModel> arrived[2];
    load(out.str(), arrived[0], arrived[1]);
    EXPECT_TRUE(*arrived[0] == model(3, 4));
    EXPECT_TRUE(*arrived[1] == source);
  }
}

}  // namespace
