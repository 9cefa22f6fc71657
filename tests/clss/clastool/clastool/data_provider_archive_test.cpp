// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/unknown_version.h"
#include "vxclss/data_provider.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/handle.h"

namespace {

using Provider = vxClassifierDataProviderMemory;
using Handle = vxPtrHandle_const<vxFeaturePattern>;

/// The base's own level.
class BaseLevel : public Provider {
 public:
  void archive(vxArchive& archive) { vxClassifierDataProvider::dispatchSerialize(archive); }
};

Handle pattern(const std::vector<double>& measurements) {
  return Handle(new vxFeaturePattern(measurements, {}));
}

/// Two patterns of two measurements, named.
Provider filled() {
  Provider provider;
  provider.setName(L"parts");
  provider.setDescription(L"of line 3");
  provider.data({pattern({1, 2}), pattern({3, 4})}, {7, -1});
  return provider;
}

TEST(DataProviderTest, ArchivesOneVersionByteInTheBase) {
  BaseLevel base;
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  base.archive(output);
  EXPECT_EQ(toHex(out.str()), "00");
  std::istringstream in(std::string("\1"), std::ios::binary);
  vxInputArchive input(in);
  expectUnknownVersion([&] { base.archive(input); }, "");
}

TEST(DataProviderMemoryTest, IsArchivedFieldByField) {
  Provider empty;
  EXPECT_EQ(storedHex(empty), packedHex("00 00  00000000 00000000  00 00000000  00 00000000"));

  Provider provider;
  provider.setName(L"n");
  provider.setDescription(L"de");
  const Handle shared = pattern({0.5});
  provider.data({shared, shared}, {4, -1});
  const std::string bytes = packedHex(
      "00 00"
      "01000000 6e000000"
      "02000000 64000000 65000000"
      "00 02000000"
      "01 10000000 767846656174757265506174 7465726e"  // vxFeaturePattern
      "00 00 01000000 000000000000e03f 00 01000000 01"
      "03 00000000"
      "00 02000000 04000000 ffffffff");
  EXPECT_EQ(storedHex(provider), bytes);

  Provider target = filled();
  load(fromHex(bytes), target);
  EXPECT_TRUE(target == provider);
  EXPECT_TRUE(target.featurePattern(0) == target.featurePattern(1)) << "still shared";
}

TEST(DataProviderMemoryTest, RefusesUnknownVersionsWithoutAName) {
  Provider source;
  for (const std::size_t version : {0u, 1u, 10u, 15u}) {  // two levels and two vectors
    SCOPED_TRACE(version);
    std::string bytes = stored(source);
    ASSERT_EQ(bytes[version], '\0');
    bytes[version] = '\x01';
    Provider target = filled();
    expectUnknownVersion([&] { load(bytes, target); }, "");
    EXPECT_TRUE(target == filled());
  }
}

TEST(DataProviderMemoryTest, RefusesALabelTooFewOrTooMany) {
  for (const char* const archive : {"00 00  00000000 00000000  00 00000000  00 01000000 00000000",
                                    "00 00  00000000 00000000  00 01000000 00  00 00000000"}) {
    Provider target = filled();
    EXPECT_THROW(load(fromHex(archive), target), vxArchive::Malformed) << archive;
    EXPECT_TRUE(target == filled());
  }
}

TEST(DataProviderMemoryTest, EmptiesAHandleOfAnotherClass) {
  // An empty provider stands where a pattern belongs.
  const std::string name = "vxClassifierDataProviderMemory";
  const std::string bytes = fromHex("00 00 00000000 00000000 00 01000000 01 1e000000") + name +
                            fromHex(
                                "00 00 00000000 00000000 00 00000000 00 00000000"
                                "00 01000000 05000000");
  Provider target;
  load(bytes, target);
  EXPECT_TRUE(target.featurePattern(0).isNull());
  EXPECT_EQ(target.categoryLabel(0), 5);
}

TEST(DataProviderMemoryTest, DoesNotStoreALabelBeyond32Bits) {
  if (sizeof(long) == 4) GTEST_SKIP() << "a long has no other bits";
  Provider provider;
  provider.addData(pattern({1}), static_cast<long>(0x80000000LL));
  EXPECT_THROW(stored(provider), vxArchive::Unstorable);
}

TEST(DataProviderMemoryTest, IsStoredAnewAfterEachChange) {
  struct Row {
    const char* name;
    void (*change)(Provider&);
  };
  const Row rows[] = {
      {"data", [](Provider& provider) { provider.data({}, {}); }},
      {"addData",
       [](Provider& provider) {
         provider.addData(pattern({5, 6}), 0);
       }},
      {"setName", [](Provider& provider) { provider.setName(L"new"); }},
      {"setDescription", [](Provider& provider) { provider.setDescription(L"new"); }},
      {"assignment", [](Provider& provider) { provider = Provider(); }},
      {"move", [](Provider& provider) { Provider(std::move(provider)); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Provider provider = filled();
    std::ostringstream out(std::ios::binary);
    vxOutputArchive output(out);
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(output, &provider, unused);
    row.change(provider);
    vxPersistent::serializePointer(output, &provider, unused);

    vxPtrHandle<Provider> arrived[2];
    load(out.str(), arrived[0], arrived[1]);
    EXPECT_TRUE(*arrived[0] == filled());
    EXPECT_TRUE(*arrived[1] == provider);
    EXPECT_FALSE(arrived[0] == arrived[1]);
  }
}

}  // namespace
