// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "vxfoundation/archive.h"

namespace {

using samples::Bottom;
using samples::kNodeName;
using samples::Node;
using samples::Trouble;
using NodeHandle = vxPtrHandle<Node>;

// "samples::Trouble" with its length.
const std::string kTroubleName = "10000000 73616d706c65733a3a54726f75626c65 ";

/// Loads one pointer after another from bytes that it keeps.
class PointerReader {
 public:
  explicit PointerReader(const std::string& bytes)
      : stream_(bytes, std::ios::binary), archive_(stream_) {}

  vxPersistent* next() {
    vxPersistent* object = nullptr;
    vxPersistent::serializePointer(archive_, nullptr, object);
    return object;
  }
  vxInputArchive& archive() { return archive_; }

 private:
  std::istringstream stream_;
  vxInputArchive archive_;
};

void storePointer(vxArchive& archive, const vxPersistent* object) {
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(archive, object, unused);
}

/// The bytes of one error stored by pointer twice.
std::string oneErrorTwice() {
  const Trouble error(L"x");
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storePointer(archive, &error);
  storePointer(archive, &error);
  return stream.str();
}

TEST(PointerTest, WritesOneByteForNull) {
  NodeHandle empty;
  EXPECT_EQ(storedHex(empty), "00");
  NodeHandle target(new Node(9));
  load(fromHex("00"), target);
  EXPECT_TRUE(target.isNull());
}

TEST(PointerTest, WritesAClassNameOnceAndANumberAfterwards) {
  NodeHandle first(new Node(5));
  NodeHandle second(new Node(6));
  vxPtrHandle<Bottom> bottom(new Bottom);
  EXPECT_EQ(storedHex(first, second, bottom, first, bottom, second),
            packedHex("01 " + kNodeName + "00 05000000 00" +  // a new class and its object
                      "02 00000000 00 06000000 00" +          // another object of class 0
                      "01 0f000000 73616d706c65733a3a426f74746f6d " +
                      "00 00 00 01000000 02000000 00 03000000 04000000" +
                      "03 00000000 03 02000000 03 01000000"));  // objects 0, 2 and 1 again
}

TEST(PointerTest, BringsSharedObjectsBackAsShared) {
  NodeHandle shared(new Node(7));
  std::vector<NodeHandle> source = {shared, NodeHandle(new Node(8, shared)), NodeHandle(), shared};
  const auto target = loaded<std::vector<NodeHandle>>(stored(source));
  ASSERT_EQ(target.size(), 4u);
  EXPECT_TRUE(target[0] == target[3] && target[1]->next() == target[0]);
  EXPECT_EQ(target[0]->referenceCount(), 3);
  EXPECT_EQ(target[0]->label(), 7);
  EXPECT_TRUE(target[2].isNull());
}

TEST(PointerTest, SharesBetweenTheTransfersOfOneArchiveOnly) {
  NodeHandle node(new Node(7));
  const std::string bytes = stored(node) + stored(node);
  std::istringstream stream(bytes, std::ios::binary);
  NodeHandle first;
  NodeHandle second;
  {
    vxInputArchive archive(stream);
    archive || first;
  }
  vxInputArchive archive(stream);
  archive || second;
  EXPECT_FALSE(first == second);
  EXPECT_EQ(first->referenceCount(), 1);
}

TEST(PointerTest, StoresBothFormsOfOneObjectApart) {
  NodeHandle node(new Node(7));
  // In place an object has no number, so the pointer that follows is its first.
  EXPECT_EQ(
      storedHex(*node, node, *node, node),
      packedHex("00 07000000 00  01 " + kNodeName + "00 07000000 00  00 07000000 00  03 00000000"));
}

TEST(PointerTest, GivesAnEmptyHandleForAnotherClassAndFreesTheObject) {
  const int before = Node::numAlive();
  NodeHandle node(new Node(7));
  vxPtrHandle<Bottom> bottom(new Bottom);
  const std::string bytes = stored(node, bottom);
  node.reset();
  {
    PointerReader reader(bytes);
    vxPtrHandle<Bottom> wrong(new Bottom);
    vxPtrHandle<Bottom> right;
    reader.archive() || wrong || right;
    EXPECT_TRUE(wrong.isNull());
    EXPECT_EQ(right->bottom, 4) << "the archive is still in step";
  }
  EXPECT_EQ(Node::numAlive(), before);
}

TEST(PointerTest, GivesAnObjectThatOneHandleCouldNotTakeToAnother) {
  NodeHandle node(new Node(7));
  PointerReader reader(stored(node, node));
  vxPtrHandle<Bottom> wrong;
  NodeHandle right;
  reader.archive() || wrong || right;
  EXPECT_TRUE(wrong.isNull());
  EXPECT_EQ(right->label(), 7);
}

TEST(PointerTest, KeepsCountedObjectsUntilTheArchiveEnds) {
  const int before = Node::numAlive();
  NodeHandle node(new Node(7));
  const std::string bytes = stored(node, node);
  node.reset();
  NodeHandle kept;
  {
    PointerReader reader(bytes);
    NodeHandle dropped;
    reader.archive() || dropped;
    dropped.reset();
    EXPECT_EQ(Node::numAlive(), before + 1);
    reader.archive() || kept;
    EXPECT_EQ(kept->label(), 7);
  }
  EXPECT_EQ(kept->referenceCount(), 1);
  kept.reset();
  EXPECT_EQ(Node::numAlive(), before);
}

TEST(PointerTest, ReleasesAHandleFirstAndLeavesItEmptyWhenTheLoadFails) {
  for (const std::string bytes : {"", "01", "05", "03 00000000"}) {
    NodeHandle target(new Node(9));
    EXPECT_THROW(load(fromHex(bytes), target), vxArchive::Malformed) << bytes;
    EXPECT_TRUE(target.isNull()) << bytes;
  }
}

TEST(PointerTest, RefusesAnObjectThatReachesItself) {
  NodeHandle first(new Node(1));
  NodeHandle second(new Node(2, first));
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  first->next(second);
  EXPECT_THROW(archive || first, vxArchive::Unstorable);
  first->next(first);
  EXPECT_THROW(archive || second, vxArchive::Unstorable);
  EXPECT_THROW(archive || *first, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), "");

  first->next(NodeHandle());
  archive || second;
  EXPECT_EQ(loaded<NodeHandle>(stream.str())->next()->label(), 1);
}

/// Stores its part and breaks off.
class Breaking : public vxPersistent, public vxRepBase {
 public:
  struct Broken {};

  NodeHandle part{new Node(1)};

  static vxPersistent* make() { return new Breaking; }

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    archive || part;
    throw Broken();
  }
};

TEST(PointerTest, RefusesAnObjectThatReachesItselfAfterATransferBrokeOff) {
  const vx_Instantiator exemplar(typeid(Breaking), &Breaking::make);
  vxPtrHandle<Breaking> breaking(new Breaking);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  EXPECT_THROW(archive || breaking, Breaking::Broken);

  // The second object now reaches itself; the second one before was complete.
  NodeHandle inner(new Node(2));
  NodeHandle outer(new Node(3, inner));
  inner->next(inner);
  EXPECT_THROW(archive || outer, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), "");
  inner->next(NodeHandle());
}

/// A class whose name has more characters than archives take.
template <class Sequence>
class LongNamed : public vxPersistent, public vxRepBase {
 public:
  static vxPersistent* make() { return new LongNamed; }
};

TEST(PointerTest, RefusesAClassNameThatIsTooLongToLoad) {
  using Longest = LongNamed<std::make_integer_sequence<int, 300>>;
  const vx_Instantiator exemplar(typeid(Longest), &Longest::make);
  EXPECT_GT(exemplar.name().size(), 1024u);
  vxPtrHandle<Longest> object(new Longest);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  EXPECT_THROW(archive || object, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), "");
}

TEST(PointerTest, RefusesBytesInWhichAnObjectReachesItself) {
  const int before = Node::numAlive();
  NodeHandle target;
  const std::string itself = "01 " + kNodeName + "00 01000000 03 00000000";
  EXPECT_THROW(load(fromHex(itself), target), vxArchive::Malformed);
  const std::string outer = "01 " + kNodeName + "00 01000000 02 00000000 00 02000000 03 00000000";
  EXPECT_THROW(load(fromHex(outer), target), vxArchive::Malformed);
  EXPECT_TRUE(target.isNull());
  EXPECT_EQ(Node::numAlive(), before);
}

TEST(UncountedPointerTest, BelongsToTheCaller) {
  const int before = Trouble::numAlive();
  const std::string bytes = oneErrorTwice();
  EXPECT_EQ(toHex(bytes),
            packedHex("01 " + kTroubleName + "00 00 01000000 78000000" + "03 00000000"));
  std::unique_ptr<vxPersistent> object;
  {
    PointerReader reader(bytes);
    object.reset(reader.next());
  }
  EXPECT_EQ(Trouble::numAlive(), before + 1) << "the archive's end leaves it alone";
  EXPECT_EQ(dynamic_cast<Trouble&>(*object).message(), L"x");
  object.reset();
  EXPECT_EQ(Trouble::numAlive(), before);
}

TEST(UncountedPointerTest, IsGivenAgainWhileItLives) {
  PointerReader reader(oneErrorTwice());
  const std::unique_ptr<vxPersistent> object(reader.next());
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(reader.next(), object.get());
}

TEST(UncountedPointerTest, IsMalformedToReferToOnceItDied) {
  PointerReader reader(oneErrorTwice());
  delete reader.next();
  EXPECT_THROW(reader.next(), vxArchive::Malformed);
}

TEST(UncountedPointerTest, IsRethrownFromTheHeap) {
  PointerReader reader(oneErrorTwice());
  auto* error = dynamic_cast<vxException*>(reader.next());
  ASSERT_NE(error, nullptr);
  expectThrows<Trouble>([error] { error->suicideAndRethrow(); }, L"x", 0x20000001);
  EXPECT_THROW(reader.next(), vxArchive::Malformed);
}

TEST(UncountedPointerTest, IsFreedWhereAHandleCanNotTakeIt) {
  const int before = Trouble::numAlive();
  PointerReader reader(oneErrorTwice());
  NodeHandle handle(new Node(9));
  reader.archive() || handle;
  EXPECT_TRUE(handle.isNull());
  EXPECT_EQ(Trouble::numAlive(), before);
}

TEST(UncountedPointerTest, IsFreedWhenItsLoadFails) {
  const int before = Trouble::numAlive();
  const std::string bothPointers = oneErrorTwice();
  const std::string error = bothPointers.substr(0, bothPointers.size() - 5);
  forEachTruncation(error, [before](const std::string& bytes) {
    PointerReader reader(bytes);
    EXPECT_THROW(reader.next(), vxArchive::Malformed);
    EXPECT_EQ(Trouble::numAlive(), before);
  });
}

TEST(UncountedPointerTest, IsStoredAsOneObjectAndAnewOnceItChanges) {
  PointerReader reader(oneErrorTwice());
  const std::unique_ptr<vxPersistent> object(reader.next());
  auto& error = dynamic_cast<Trouble&>(*object);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storePointer(archive, &error);
  storePointer(archive, &error);
  error = Trouble(L"y");
  storePointer(archive, &error);

  PointerReader again(stream.str());
  const std::unique_ptr<vxPersistent> first(again.next());
  EXPECT_EQ(again.next(), first.get());
  const std::unique_ptr<vxPersistent> second(again.next());
  EXPECT_EQ(dynamic_cast<Trouble&>(*first).message(), L"x");
  EXPECT_EQ(dynamic_cast<Trouble&>(*second).message(), L"y");
}

TEST(UncountedPointerTest, MayBeOnTheStackWhenItIsStored) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  for (const wchar_t* text : {L"a", L"b"}) {
    const Trouble error(text);
    storePointer(archive, &error);
  }
  PointerReader reader(stream.str());
  const std::unique_ptr<vxPersistent> first(reader.next());
  const std::unique_ptr<vxPersistent> second(reader.next());
  EXPECT_EQ(dynamic_cast<Trouble&>(*first).message(), L"a");
  EXPECT_EQ(dynamic_cast<Trouble&>(*second).message(), L"b");
}

}  // namespace
