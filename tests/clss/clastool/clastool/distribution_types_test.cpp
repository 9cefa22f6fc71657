// SPDX-License-Identifier: MIT
#include "vxclss/distribution_types.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "vxclss/errors.h"

namespace {

using Types = vxClassifierDistributionTypes;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

static_assert(std::is_same_v<std::underlying_type_t<Types::DistributionType>, std::uint32_t>);
static_assert(Types::eNormal == 0 && Types::eBinomial == 1 && Types::ePoisson == 2 &&
              Types::eUniform == 3);
static_assert(!std::is_polymorphic_v<Types>);

constexpr wchar_t kBadCategory[] = L"Cateogory labels must be >= 0";
constexpr wchar_t kBadMeasurement[] = L"Feature measurement indices must be >= 0";
constexpr wchar_t kDependent[] =
    L"Cannot override distribution type of a feature measurement that is already part of a dependency set.";
constexpr wchar_t kMixed[] =
    L"The distribution types of dependent feature measurements must be the same.";

constexpr auto kUnknown = static_cast<Types::DistributionType>(77);

TEST(DistributionTypesTest, IsNormalEverywhereUnlessToldOtherwise) {
  const Types types;
  EXPECT_EQ(types.defaultDistributionType(), Types::eNormal);
  EXPECT_EQ(types.distributionType(0, 0), Types::eNormal);
  EXPECT_EQ(types.distributionType(2147483647, 2147483647), Types::eNormal);
  EXPECT_FALSE(types.isDependent(0, {0}));
  EXPECT_TRUE(types == Types(Types::eNormal));
}

TEST(DistributionTypesTest, TakesAnyValueAsAType) {
  Types types(kUnknown);
  EXPECT_EQ(types.distributionType(3, 4), kUnknown);
  types.defaultDistributionType(Types::eUniform);
  types.distributionTypeOverride(3, 4, kUnknown);
  EXPECT_EQ(types.distributionType(3, 4), kUnknown);
  EXPECT_EQ(types.distributionType(3, 5), Types::eUniform);
}

TEST(DistributionTypesTest, GivesAPairItsOwnType) {
  Types types;
  types.distributionTypeOverride(1, 2, Types::eBinomial);
  types.distributionTypeOverride(2, 1, Types::ePoisson);
  EXPECT_EQ(types.distributionType(1, 2), Types::eBinomial);
  EXPECT_EQ(types.distributionType(2, 1), Types::ePoisson);
  EXPECT_EQ(types.distributionType(1, 1), Types::eNormal);
  EXPECT_EQ(types.distributionType(2, 2), Types::eNormal);
}

TEST(DistributionTypesTest, ReplacesAnOverrideInItsPlace) {
  Types types;
  types.distributionTypeOverride(0, 0, Types::eBinomial);
  types.distributionTypeOverride(0, 1, Types::eBinomial);
  types.distributionTypeOverride(0, 0, Types::eUniform);
  Types other;
  other.distributionTypeOverride(0, 0, Types::eUniform);
  other.distributionTypeOverride(0, 1, Types::eBinomial);
  EXPECT_TRUE(types == other);
}

TEST(DistributionTypesTest, KeepsAnOverrideWhenToldTheDefault) {
  Types types;
  types.distributionTypeOverride(0, 3, Types::eBinomial);
  types.distributionTypeOverride(0, 3, Types::eNormal);
  EXPECT_EQ(types.distributionType(0, 3), Types::eBinomial);
}

TEST(DistributionTypesTest, ChecksNothingWhenToldTheDefault) {
  Types types(Types::eBinomial);
  types.setDependent(0, {1, 2});
  const Types before(types);
  types.distributionTypeOverride(-1, 0, Types::eBinomial);
  types.distributionTypeOverride(0, -1, Types::eBinomial);
  types.distributionTypeOverride(0, 1, Types::eBinomial);
  EXPECT_TRUE(types == before);
}

TEST(DistributionTypesTest, KeepsOverridesWhenTheDefaultChanges) {
  Types types;
  types.distributionTypeOverride(0, 0, Types::eBinomial);
  types.defaultDistributionType(Types::eBinomial);
  types.distributionTypeOverride(0, 0, Types::eBinomial);
  types.defaultDistributionType(Types::eNormal);
  EXPECT_EQ(types.distributionType(0, 0), Types::eBinomial);
  EXPECT_EQ(types.distributionType(0, 1), Types::eNormal);
}

TEST(DistributionTypesTest, ChecksCategoryThenMeasurementOfAnOverride) {
  Types types;
  expectRefused<BadLabel>(
      types, [&] { types.distributionTypeOverride(-1, -1, Types::eBinomial); }, kBadCategory);
  expectRefused<BadIndex>(
      types, [&] { types.distributionTypeOverride(0, -1, Types::eBinomial); }, kBadMeasurement);
  expectThrows<BadLabel>([&] { static_cast<void>(types.distributionType(-1, -1)); }, kBadCategory);
  expectThrows<BadIndex>([&] { static_cast<void>(types.distributionType(0, -1)); },
                         kBadMeasurement);
}

TEST(DistributionTypesTest, RefusesAnOverrideOfADependentMeasurement) {
  Types types;
  types.setDependent(0, {1, 2});
  expectRefused<BadParams>(
      types, [&] { types.distributionTypeOverride(0, 2, Types::eBinomial); }, kDependent);
  expectRefused<BadParams>(
      types, [&] { types.distributionTypeOverride(0, 1, kUnknown); }, kDependent);
  types.distributionTypeOverride(0, 3, Types::eBinomial);
  types.distributionTypeOverride(1, 2, Types::eBinomial);
  EXPECT_EQ(types.distributionType(1, 2), Types::eBinomial);
}

TEST(DistributionTypesTest, RefusesToReplaceAnOverrideOnceTheMeasurementIsDependent) {
  Types types;
  types.distributionTypeOverride(0, 1, Types::eBinomial);
  types.setDependent(0, {1});
  expectRefused<BadParams>(
      types, [&] { types.distributionTypeOverride(0, 1, Types::eUniform); }, kDependent);
  types.distributionTypeOverride(0, 1, Types::eNormal);
  EXPECT_EQ(types.distributionType(0, 1), Types::eBinomial);
}

TEST(DistributionTypesTest, LooksForADependencySetBeforeItChecksTheArguments) {
  // Only an archive brings such a set.
  Types types =
      loaded<Types>(fromHex("00 00000000 00 00000000 00 00000000 00 00000000"
                            "00 01000000 ffffffff 00 01000000 00 01000000 ffffffff"));
  expectRefused<BadParams>(
      types, [&] { types.distributionTypeOverride(-1, -1, Types::eBinomial); }, kDependent);
}

TEST(DistributionTypesTest, KeepsTheSetsWhenOverridesAreCleared) {
  Types types;
  types.distributionTypeOverride(0, 3, Types::eBinomial);
  types.setDependent(0, {1, 2});
  types.clearDistributionOverrides();
  EXPECT_EQ(types.distributionType(0, 3), Types::eNormal);
  EXPECT_TRUE(types.isDependent(0, {1, 2}));
  Types other;
  other.setDependent(0, {1, 2});
  EXPECT_TRUE(types == other);
}

TEST(DistributionTypesTest, RefusesASetOfMixedTypes) {
  Types types;
  types.distributionTypeOverride(0, 2, Types::eBinomial);
  expectRefused<BadParams>(
      types,
      [&] {
        types.setDependent(0, {1, 2});
      },
      kMixed);
  expectRefused<BadParams>(
      types,
      [&] {
        types.setDependent(0, {5, 4, 3, 2});
      },
      kMixed);
  types.setDependent(1, {1, 2});
  types.distributionTypeOverride(0, 1, Types::eBinomial);
  types.setDependent(0, {1, 2});
  EXPECT_TRUE(types.isDependent(0, {2, 1}));
}

TEST(DistributionTypesTest, ComparesTypesOfNewMembersAlone) {
  Types types;
  types.setDependent(0, {1, 2});
  types.defaultDistributionType(Types::eBinomial);
  types.distributionTypeOverride(0, 3, Types::eUniform);
  types.setDependent(0, {4, 2});
  expectRefused<BadParams>(
      types,
      [&] {
        types.setDependent(0, {3, 2});
      },
      kMixed);
  EXPECT_TRUE(types.isDependent(0, {1, 4}));
}

TEST(DistributionTypesTest, ChecksCategoryThenAllIndicesOfASet) {
  Types types;
  types.distributionTypeOverride(0, 2, Types::eBinomial);
  expectRefused<BadLabel>(
      types, [&] { types.setDependent(-1, {-1}); }, kBadCategory);
  expectRefused<BadLabel>(
      types, [&] { types.setDependent(-1, {}); }, kBadCategory);
  expectRefused<BadIndex>(
      types,
      [&] {
        types.setDependent(0, {1, 2, -1});
      },
      kBadMeasurement);
}

TEST(DistributionTypesTest, ChecksCategoryThenEmptinessThenIndicesOfAQuestion) {
  Types types;
  types.setDependent(0, {1, 2});
  expectThrows<BadLabel>([&] { static_cast<void>(types.isDependent(-1, {})); }, kBadCategory);
  EXPECT_FALSE(types.isDependent(0, {}));
  expectThrows<BadIndex>([&] { static_cast<void>(types.isDependent(0, {-1})); }, kBadMeasurement);
  expectThrows<BadIndex>(
      [&] {
        static_cast<void>(types.isDependent(0, {9, -1}));
      },
      kBadMeasurement);
  expectThrows<BadIndex>(
      [&] {
        static_cast<void>(types.isDependent(0, {1, -1}));
      },
      kBadMeasurement);
}

TEST(DistributionTypesTest, AnswersWhatIsInOneSet) {
  Types types;
  types.setDependent(0, {1, 2});
  types.setDependent(0, {5});
  types.setDependent(3, {1, 5});
  const std::vector<std::pair<std::vector<long>, bool>> rows = {
      {{1}, true},     {{5}, true},        {{5, 5, 5}, true}, {{2, 1, 2}, true},
      {{1, 5}, false}, {{1, 2, 3}, false}, {{3, 1}, false},   {{3}, false},
  };
  for (const auto& [measurements, isDependent] : rows) {
    SCOPED_TRACE(testing::PrintToString(measurements));
    EXPECT_EQ(types.isDependent(0, measurements), isDependent);
  }
  EXPECT_TRUE(types.isDependent(3, {1, 5}));
  EXPECT_FALSE(types.isDependent(1, {1}));
}

TEST(DistributionTypesTest, ComparesInTheOrderOfEntry) {
  struct Row {
    const char* name;
    void (*change)(Types&);
    void (*other)(Types&);
  };
  const Row rows[] = {
      {"default", [](Types& t) { t.defaultDistributionType(Types::eUniform); }, [](Types&) {}},
      {"override category", [](Types& t) { t.distributionTypeOverride(0, 1, Types::eUniform); },
       [](Types& t) { t.distributionTypeOverride(1, 1, Types::eUniform); }},
      {"override measurement", [](Types& t) { t.distributionTypeOverride(0, 1, Types::eUniform); },
       [](Types& t) { t.distributionTypeOverride(0, 0, Types::eUniform); }},
      {"override type", [](Types& t) { t.distributionTypeOverride(0, 1, Types::eUniform); },
       [](Types& t) { t.distributionTypeOverride(0, 1, Types::eBinomial); }},
      {"order of overrides",
       [](Types& t) {
         t.distributionTypeOverride(0, 1, Types::eUniform);
         t.distributionTypeOverride(0, 2, Types::eUniform);
       },
       [](Types& t) {
         t.distributionTypeOverride(0, 2, Types::eUniform);
         t.distributionTypeOverride(0, 1, Types::eUniform);
       }},
      {"set category", [](Types& t) { t.setDependent(0, {1}); },
       [](Types& t) { t.setDependent(1, {1}); }},
      {"set members",
       [](Types& t) {
         t.setDependent(0, {1, 2});
       },
       [](Types& t) { t.setDependent(0, {1}); }},
      {"order of members",
       [](Types& t) {
         t.setDependent(0, {1, 2});
       },
       [](Types& t) {
         t.setDependent(0, {2, 1});
       }},
      {"order of sets",
       [](Types& t) {
         t.setDependent(0, {1});
         t.setDependent(0, {2});
       },
       [](Types& t) {
         t.setDependent(0, {2});
         t.setDependent(0, {1});
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Types a;
    Types again;
    Types b;
    row.change(a);
    row.change(again);
    row.other(b);
    EXPECT_TRUE(a == again);
    EXPECT_FALSE(a != again);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(b != a);
    const Types copy(a);
    EXPECT_TRUE(copy == a);
    b = a;
    EXPECT_TRUE(b == a);
  }
}

TEST(DistributionTypesTest, IsArchivedFieldByField) {
  Types types(Types::eUniform);
  types.distributionTypeOverride(7, 2, Types::eBinomial);
  types.distributionTypeOverride(0, 2147483647, static_cast<Types::DistributionType>(0xfffffffe));
  types.setDependent(3, {5, 1});
  types.setDependent(0, {4});
  EXPECT_EQ(storedHex(types), packedHex("00 03000000"
                                        "00 02000000 07000000 00000000"
                                        "00 02000000 02000000 ffffff7f"
                                        "00 02000000 01000000 feffffff"
                                        "00 02000000 03000000 00000000"
                                        "00 02000000 00 02000000 05000000 01000000"
                                        "00 01000000 04000000"));
  EXPECT_TRUE(loaded<Types>(stored(types)) == types);
}

TEST(DistributionTypesTest, ArchivesATypeAs32Bits) {
  Types::DistributionType type = Types::eUniform;
  EXPECT_EQ(storedHex(type), "03000000");
  load(fromHex("ffffffff"), type);
  EXPECT_EQ(static_cast<std::uint32_t>(type), 0xffffffffu);
}

TEST(DistributionTypesTest, NamesItsUnitAndLineWhenItRefusesAVersion) {
  Types types(Types::ePoisson);
  types.setDependent(0, {1});
  const Types before(types);
  std::string bytes = stored(types);
  for (int version = 1; version < 256; ++version) {
    bytes[0] = static_cast<char>(version);
    try {
      load(bytes, types);
      ADD_FAILURE() << "threw nothing";
    } catch (const vxArchive::UnknownVersion& error) {
      EXPECT_EQ(error.name(), "clss/clastool/bayes");
      EXPECT_EQ(error.number(), 262);
    }
    EXPECT_TRUE(types == before);
  }
}

TEST(DistributionTypesTest, RefusesListsOfDifferentLength) {
  const char* const rows[] = {
      "00 00000000 00 01000000 00000000 00 00000000 00 00000000 00 00000000 00 00000000",
      "00 00000000 00 00000000 00 01000000 00000000 00 00000000 00 00000000 00 00000000",
      "00 00000000 00 00000000 00 00000000 00 01000000 00000000 00 00000000 00 00000000",
      "00 00000000 00 00000000 00 00000000 00 00000000 00 01000000 00000000 00 00000000",
      "00 00000000 00 00000000 00 00000000 00 00000000 00 00000000 00 01000000 00 00000000",
  };
  for (const char* row : rows) {
    SCOPED_TRACE(row);
    Types types(Types::eBinomial);
    EXPECT_THROW(load(fromHex(row), types), vxArchive::Malformed);
    EXPECT_TRUE(types == Types(Types::eBinomial));
  }
}

TEST(DistributionTypesTest, DoesNotStoreANumberBeyond32Bits) {
  if (sizeof(long) == 4) GTEST_SKIP() << "a long has no other bits";
  constexpr long kLarge = std::numeric_limits<long>::max();
  Types label;
  label.distributionTypeOverride(kLarge, 0, Types::eBinomial);
  EXPECT_THROW(stored(label), vxArchive::Unstorable);
  Types member;
  member.setDependent(0, {kLarge});
  EXPECT_THROW(stored(member), vxArchive::Unstorable);
}

}  // namespace
