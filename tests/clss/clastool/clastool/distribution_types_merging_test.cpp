// SPDX-License-Identifier: MIT
// Dependency sets: what merges into what, and in which order.

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/plain_distribution_types.h"
#include "vxclss/distribution_types.h"
#include "vxclss/errors.h"
#include "vxfoundation/text.h"

namespace {

using Types = vxClassifierDistributionTypes;
using Lists = std::vector<std::vector<long>>;

struct MergeRow {
  const char* name;
  Lists calls;
  Lists sets;  // expected, in order
};

void PrintTo(const MergeRow& row, std::ostream* out) { *out << row.name; }

class DependencyMergeTest : public testing::TestWithParam<MergeRow> {};

TEST_P(DependencyMergeTest, LeavesTheseSets) {
  Types types;
  for (const std::vector<long>& call : GetParam().calls) types.setDependent(0, call);
  plain::DistributionTypes expected;
  for (const std::vector<long>& set : GetParam().sets) expected.sets.push_back({0, set});
  EXPECT_EQ(storedHex(types), toHex(expected.bytes()));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DependencyMergeTest,
    testing::Values(
        MergeRow{"Nothing", {{}}, {}}, MergeRow{"OneMember", {{5}}, {{5}}},
        MergeRow{"RepeatsInOrderOfFirstOccurrence", {{4, 1, 1, 4, 0, 1}}, {{4, 1, 0}}},
        MergeRow{"Disjoint", {{1, 2}, {3, 4}}, {{1, 2}, {3, 4}}},
        MergeRow{"AllKnown", {{1, 2, 3}, {3, 1}}, {{1, 2, 3}}},
        MergeRow{"BridgeIntoTheFirst", {{1, 2}, {5, 6}, {2, 5, 9}}, {{1, 2, 9, 5, 6}}},
        MergeRow{"BridgeNamedBackwards", {{1, 2}, {5, 6}, {6, 9, 1}}, {{1, 2, 9, 5, 6}}},
        MergeRow{
            "OthersKeepTheirOrder", {{0}, {1}, {2}, {3}, {4}, {3, 1}}, {{0}, {1, 3}, {2}, {4}}},
        MergeRow{"ThreeAtOnce", {{1}, {7, 8}, {2}, {3}, {3, 1, 2, 9}}, {{1, 9, 2, 3}, {7, 8}}},
        // 1 goes, 12 takes its place and is examined next.
        MergeRow{"FreedPlaceTakesTheLast", {{1}, {1, 10, 11, 12}}, {{1, 12, 10, 11}}},
        MergeRow{"FreedPlaceTakesAMemberToo", {{1, 12}, {1, 10, 11, 12}}, {{1, 12, 11, 10}}},
        MergeRow{"FreedTwice", {{1}, {2}, {1, 2, 10, 11, 12}}, {{1, 12, 11, 10, 2}}}),
    [](const auto& row) { return row.param.name; });

TEST(DependencyMergeTest, LeavesSetsOfOtherCategoriesAlone) {
  Types types;
  types.setDependent(1, {2, 5});
  types.setDependent(0, {1, 2});
  types.setDependent(2, {1});
  types.setDependent(0, {5, 2});
  plain::DistributionTypes expected;
  expected.sets = {{1, {2, 5}}, {0, {1, 2, 5}}, {2, {1}}};
  EXPECT_EQ(storedHex(types), toHex(expected.bytes()));
  types.distributionTypeOverride(3, 5, Types::eBinomial);
  EXPECT_EQ(types.distributionType(3, 5), Types::eBinomial);
}

/// What `body()` answered, or the class and text of what it threw.
template <class Body>
std::string outcomeOf(Body&& body) {
  try {
    return std::to_string(body());
  } catch (const vxClassifierDefs::Errors& error) {
    return vfClassName(typeid(error)) + ": " + vfNarrow(error.message());
  }
}

/// Random operations on an object and its plain twin.
class RandomOperations {
 public:
  explicit RandomOperations(unsigned seed) : random_(seed) {}

  void step() {
    const long category = pick_(4) - (pick_(30) == 0 ? 1 : 0);
    switch (pick_(8)) {
      case 0:
        both_(
            [category, list = list_()](auto& types) { return types.isDependent(category, list); });
        break;
      case 1:
        both_([category, measurement = pick_(16) - 1, type = type_()](auto& types) {
          types.distributionTypeOverride(category, measurement, type);
          return 0;
        });
        break;
      case 2:
        both_([category, measurement = pick_(16) - 1](auto& types) {
          return static_cast<long>(types.distributionType(category, measurement));
        });
        break;
      case 3:
        rare_();
        break;
      default:
        both_([category, list = list_()](auto& types) {
          types.setDependent(category, list);
          return 0;
        });
    }
    ASSERT_EQ(storedHex(types_), toHex(twin_.bytes()));
    ASSERT_TRUE(types_ == twin_.record());
  }

 private:
  void rare_() {
    if (pick_(12) == 0) {
      types_.clearDistributionOverrides();
      twin_.clearDistributionOverrides();
    } else if (pick_(12) == 0) {
      twin_.defaultType = type_();
      types_.defaultDistributionType(twin_.defaultType);
    } else if (pick_(40) == 0) {
      types_ = Types(types_.defaultDistributionType());
      twin_ = plain::DistributionTypes(twin_.defaultType);
    }
  }

  template <class Operation>
  void both_(Operation operation) {
    EXPECT_EQ(outcomeOf([&] { return operation(types_); }),
              outcomeOf([&] { return operation(twin_); }));
  }

  std::vector<long> list_() {
    std::vector<long> list;
    for (long count = pick_(6); count > 0; --count) list.push_back(pick_(15));
    if (!list.empty() && pick_(20) == 0)
      list[static_cast<std::size_t>(pick_(2)) % list.size()] = -1;
    return list;
  }
  Types::DistributionType type_() { return pick_(3) == 0 ? Types::eBinomial : Types::eNormal; }
  long pick_(long count) {
    return static_cast<long>(random_() % static_cast<std::uint64_t>(count));
  }

  std::mt19937_64 random_;
  Types types_;
  plain::DistributionTypes twin_;
};

TEST(DependencyMergeTest, AgreesWithThePlainDefinitionOverRandomOperations) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomOperations operations(seed);
    for (int i = 0; i < 60; ++i) {
      operations.step();
      if (testing::Test::HasFailure()) return;
    }
  }
}

TEST(DependencyMergeTest, PartitionsTheMeasurementsOfEachCategory) {
  // Measurements belong together exactly if a chain of calls links them.
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    constexpr long kCount = 12;
    Types types;
    std::vector<long> root(kCount);
    for (long i = 0; i < kCount; ++i) root[static_cast<std::size_t>(i)] = -1 - i;
    for (int call = 0; call < 8; ++call) {
      std::vector<long> list;
      for (int i = 0; i < 3; ++i) list.push_back(static_cast<long>(random() % kCount));
      types.setDependent(4, list);
      const long first = list[0];
      for (const long member : list) {
        const long from = root[static_cast<std::size_t>(member)];
        const long into = root[static_cast<std::size_t>(first)];
        for (long& entry : root) {
          if (entry == from || entry == into) entry = first;
        }
      }
    }
    for (long a = 0; a < kCount; ++a) {
      for (long b = 0; b < kCount; ++b) {
        const long rootOfA = root[static_cast<std::size_t>(a)];
        const bool isTogether = rootOfA >= 0 && rootOfA == root[static_cast<std::size_t>(b)];
        EXPECT_EQ(types.isDependent(4, {a, b}), isTogether) << a << " and " << b;
        EXPECT_FALSE(types.isDependent(5, {a, b}));
      }
    }
  }
}

}  // namespace
