// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "vxfoundation/archive.h"

namespace {

using samples::Everything;
using samples::kNodeName;
using samples::Node;
using samples::Trouble;
using NodeHandle = vxPtrHandle<Node>;

/// An object by pointer, then an error by pointer, as a host's file may hold them.
std::string compositeBytes() {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  vxPtrHandle<Everything> object = Everything::filled();
  archive || object;
  const Trouble error(L"e");
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(archive, &error, unused);
  vxPersistent::serializePointer(archive, &error, unused);
  return stream.str();
}

/// Loads compositeBytes() or what became of them; what arrives must be fit to store and compare.
void loadComposite(const std::string& bytes) {
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive archive(stream);
  vxPtrHandle<Everything> object;
  archive || object;
  vxPersistent* loaded = nullptr;
  vxPersistent::serializePointer(archive, nullptr, loaded);
  auto* error = dynamic_cast<Trouble*>(loaded);
  const std::unique_ptr<Trouble> owner(error);
  vxPersistent* again = nullptr;
  vxPersistent::serializePointer(archive, nullptr, again);
  // A changed byte may make it a second object, which is the caller's too.
  const std::unique_ptr<Trouble> secondOwner(again == loaded ? nullptr
                                                             : dynamic_cast<Trouble*>(again));
  if (object) {
    const std::string once = stored(object);
    auto second = ::loaded<vxPtrHandle<Everything>>(once);
    EXPECT_EQ(toHex(stored(second)), toHex(once));
  }
}

/// A list of that many nodes, each within the one before, as bytes.
std::string nestedNodes(int depth) {
  std::string bytes = fromHex("01 " + kNodeName + "00 00000000");
  for (int i = 1; i < depth; ++i) bytes += fromHex("02 00000000 00 00000000");
  return bytes + '\0';
}

template <class T>
void expectMalformed(const std::string& digits) {
  T target{};
  EXPECT_THROW(loadFront(fromHex(digits), target), vxArchive::Malformed) << digits;
}

TEST(HostileArchiveTest, RefusesEveryTruncation) {
  const int nodes = Node::numAlive();
  const int errors = Trouble::numAlive();
  forEachTruncation(compositeBytes(), [&](const std::string& bytes) {
    EXPECT_THROW(loadComposite(bytes), vxArchive::Malformed);
    EXPECT_EQ(Node::numAlive(), nodes);
    EXPECT_EQ(Trouble::numAlive(), errors);
  });
}

TEST(HostileArchiveTest, EndsInAnObjectOrAnErrorWhateverByteChanges) {
  const int nodes = Node::numAlive();
  const int errors = Trouble::numAlive();
  int accepted = 0;
  int refused = 0;
  forEachByteChange(compositeBytes(), [&](const std::string& bytes) {
    ++(succeedsOrRefuses([&] { loadComposite(bytes); }) ? accepted : refused);
    ASSERT_EQ(Node::numAlive(), nodes);
    ASSERT_EQ(Trouble::numAlive(), errors);
  });
  EXPECT_GT(accepted, 1000) << "a number may be any other number";
  EXPECT_GT(refused, 1000);
}

TEST(HostileArchiveTest, RefusesAClassThatIsNotRegistered) {
  expectMalformed<NodeHandle>("01 01000000 41 00 00000000 00");
  expectMalformed<NodeHandle>("01 00000000 00 00000000 00");
  // "samples::Nodf", a name with a zero in it, and a name that is nowhere near its length.
  expectMalformed<NodeHandle>("01 0d000000 73616d706c65733a3a4e6f6466 00 00000000 00");
  expectMalformed<NodeHandle>("01 0e000000 73616d706c65733a3a4e6f646500 00 00000000 00");
  expectMalformed<NodeHandle>("01 ffffffff 73616d706c65");
}

TEST(HostileArchiveTest, RefusesAKindOfPointerThatDoesNotExist) {
  for (const char* kind : {"04", "05", "7f", "80", "ff"}) {
    expectMalformed<NodeHandle>(std::string(kind) + " 00000000 00 00000000 00");
  }
}

TEST(HostileArchiveTest, RefusesAReferenceToNothing) {
  expectMalformed<NodeHandle>("03 00000000");
  expectMalformed<NodeHandle>("03 ffffffff");
  expectMalformed<NodeHandle>("02 00000000 00 00000000 00");
  expectMalformed<std::vector<NodeHandle>>("00 02000000 01 " + kNodeName +
                                           "00 00000000 00  03 01000000");
  expectMalformed<std::vector<NodeHandle>>("00 02000000 01 " + kNodeName +
                                           "00 00000000 00  02 01000000 00 00000000 00");
}

TEST(HostileArchiveTest, RefusesAReferenceToAnObjectWhoseLoadFailed) {
  std::istringstream stream(fromHex("01 " + kNodeName + "01  03 00000000"), std::ios::binary);
  vxInputArchive archive(stream);
  NodeHandle node;
  EXPECT_THROW(archive || node, vxArchive::UnknownVersion);
  EXPECT_THROW(archive || node, vxArchive::Malformed);
  EXPECT_TRUE(node.isNull());
}

TEST(HostileArchiveTest, RefusesAClassThatIsNamedTwice) {
  const std::string node = "01 " + kNodeName + "00 00000000 00 ";
  expectMalformed<std::vector<NodeHandle>>("00 02000000 " + node + node);
}

TEST(HostileArchiveTest, RefusesAFlagThatIsNeither0Nor1) {
  for (const char* flag : {"02", "80", "ff"}) {
    std::vector<bool> target = {true};
    const std::string digits = std::string("00 02000000 01 ") + flag;
    EXPECT_THROW(load(fromHex(digits), target), vxArchive::Malformed);
    EXPECT_EQ(target, std::vector<bool>{true});
  }
}

TEST(HostileArchiveTest, AllowsObjectsToNestAThousandDeepAndNoDeeper) {
  static_assert(vxArchive::kMaximumNesting == 1000, "the archives that exist rely on it");
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  NodeHandle deep = Node::list(1001);
  EXPECT_THROW(archive || deep, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), "");

  NodeHandle allowed = deep->next();
  archive || allowed;
  const auto read = loaded<NodeHandle>(stream.str());
  EXPECT_EQ(read->label(), 2);
  EXPECT_EQ(storedHex(NodeHandle(read)), toHex(stream.str()));
}

TEST(HostileArchiveTest, CountsObjectsInPlaceAmongThoseThatNest) {
  NodeHandle list = Node::list(1001);
  EXPECT_THROW(stored(*list), vxArchive::Unstorable);
  EXPECT_NO_THROW(stored(*list->next()));

  Everything holder;
  holder.nodes = {list->next()->next()};
  EXPECT_NO_THROW(stored(holder));
  holder.nodes = {list->next()};
  EXPECT_THROW(stored(holder), vxArchive::Unstorable);
}

TEST(HostileArchiveTest, CountsNestingAnewForEveryObject) {
  NodeHandle list = Node::list(1000);
  std::vector<NodeHandle> nodes = {list, NodeHandle(new Node(1)), list, NodeHandle()};
  const auto read = loaded<std::vector<NodeHandle>>(stored(nodes));
  EXPECT_EQ(read.size(), 4u);
}

TEST(HostileArchiveTest, RefusesBytesThatNestDeeper) {
  const int before = Node::numAlive();
  {
    const auto allowed = loaded<NodeHandle>(nestedNodes(1000));
    EXPECT_EQ(Node::numAlive(), before + 1000);
  }
  NodeHandle target;
  EXPECT_THROW(load(nestedNodes(1001), target), vxArchive::Malformed);
  EXPECT_THROW(load(nestedNodes(100000), target), vxArchive::Malformed);
  Node inPlace;
  EXPECT_THROW(load(fromHex("00 00000000") + nestedNodes(1000), inPlace), vxArchive::Malformed);
  EXPECT_TRUE(target.isNull());
  inPlace = Node();
  EXPECT_EQ(Node::numAlive(), before + 1);
}

/// Loads a T from bytes that promise far more than they hold, and counts the memory that takes.
template <class T>
std::size_t bytesTaken(const std::string& bytes) {
  std::istringstream stream(bytes, std::ios::binary);
  T target{};
  const AllocationMeter meter;
  vxInputArchive archive(stream);
  EXPECT_THROW(archive || target, vxArchive::Malformed);
  return meter.bytes();
}

TEST(HostileArchiveTest, ReservesLittleForACountAlone) {
  constexpr std::size_t kLittle = 1 << 15;
  const std::string count = fromHex("00 ffffffff");
  EXPECT_LT(bytesTaken<std::vector<bool>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::vector<double>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::vector<long>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::vector<std::wstring>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::vector<vxNMMatrix>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::vector<NodeHandle>>(count), kLittle);
  EXPECT_LT(bytesTaken<std::wstring>(fromHex("ffffffff")), kLittle);
  EXPECT_LT(bytesTaken<NodeHandle>(fromHex("01 ffffffff")), kLittle);
  EXPECT_LT(bytesTaken<NodeHandle>(fromHex("01 00040000")), kLittle);
  EXPECT_LT(bytesTaken<vxNMMatrix>(fromHex("ffffff7f ffffff7f")), kLittle);
  EXPECT_LT(bytesTaken<vxNMMatrix>(fromHex("00000100 00000100")), kLittle);
}

TEST(HostileArchiveTest, TakesMemoryInProportionToTheBytesThatAreThere) {
  constexpr std::size_t kBytes = 1 << 20;
  // A vector that grows takes all its sizes one after another, twice the last one in the end.
  constexpr std::size_t kMostBytes = 16 * kBytes;
  const std::string content(kBytes, '\0');
  const std::string count = fromHex("00 ffffffff");
  EXPECT_LT(bytesTaken<std::vector<bool>>(count + content), kMostBytes);
  EXPECT_LT(bytesTaken<std::vector<double>>(count + content), kMostBytes);
  EXPECT_LT(bytesTaken<std::vector<long>>(count + content), kMostBytes);
  EXPECT_LT(bytesTaken<std::wstring>(fromHex("ffffffff") + content), kMostBytes);
  EXPECT_LT(bytesTaken<vxNMMatrix>(fromHex("ffffff7f 01000000") + content), kMostBytes);
  // An element may be larger than its shortest form: a handle for one byte, a string for four.
  EXPECT_LT(bytesTaken<std::vector<NodeHandle>>(count + content), 4 * kMostBytes);
  EXPECT_LT(bytesTaken<std::vector<std::wstring>>(count + content), 4 * kMostBytes);
}

TEST(HostileArchiveTest, TakesMemoryInProportionForObjects) {
  std::string bytes = fromHex("00 ffffffff 01 " + kNodeName + "00 00000000 00");
  for (int i = 0; i < 100000; ++i) bytes += fromHex("02000000000000000000") + '\0';
  EXPECT_LT(bytesTaken<std::vector<NodeHandle>>(bytes), 40 * bytes.size());
}

}  // namespace
