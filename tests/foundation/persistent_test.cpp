// SPDX-License-Identifier: MIT
#include "vxfoundation/persistent.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
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
using samples::Node;

/// Nothing of its own to archive.
class Bare : public vxPersistent {
 public:
  static bool wasVisited(const vxPersistent* object) {
    return haveVisited(object, typeid(vxPersistent));
  }
};

/// Looks at the visit marks while it is transferred.
class Watcher : public vxPersistent {
 public:
  bool markedBefore = true;
  bool markedAfter = false;
  bool otherLevelMarked = true;
  bool otherObjectMarked = true;
  bool partSawMarks = true;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    Bare other;
    markedBefore = haveVisited(this, typeid(Watcher));
    setVisited(this, typeid(Watcher));
    markedAfter = haveVisited(this, typeid(Watcher));
    otherLevelMarked = haveVisited(this, typeid(vxPersistent));
    otherObjectMarked = haveVisited(&other, typeid(Watcher));
    part_.owner = this;
    archive || part_;
    partSawMarks = part_.sawMark;
    markedAfter = markedAfter && haveVisited(this, typeid(Watcher));
  }

 private:
  class Part : public vxPersistent {
   public:
    const vxPersistent* owner = nullptr;
    bool sawMark = true;

   protected:
    void dispatchSerialize(vxArchive&) override { sawMark = haveVisited(owner, typeid(Watcher)); }
  };

  Part part_;
};

/// More levels than a pass holds without a list.
template <int kLevel>
class Tall : public Tall<kLevel - 1> {
 protected:
  void dispatchSerialize(vxArchive& archive) override {
    // Twice at every level: the marks must stop the second walk.
    for (int i = 0; i < 2; ++i) {
      if (const vx_ArchiveLevel level{archive, *this, typeid(Tall)}) {
        Tall<kLevel - 1>::dispatchSerialize(archive);
        Tall<kLevel - 1>::dispatchSerialize(archive);
      }
    }
  }
};
template <>
class Tall<0> : public vxPersistent {};

/// Written exactly as the comment at vx_ArchiveLevel shows.
class Plain : public vxPersistent, public vxRepBase {
 public:
  explicit Plain(long number = 0) : number_(number) {}
  long number() const { return number_; }

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Plain)}) {
      vxPersistent::dispatchSerialize(archive);
      archive || number_;
    }
  }

 private:
  static vxPersistent* make() { return new Plain; }
  static const vx_Instantiator sExemplar;

  long number_;
};
const vx_Instantiator Plain::sExemplar(typeid(Plain), &Plain::make);

/// Lets others call its hook, and has a part whose hook it calls itself.
class Direct : public vxPersistent {
 public:
  void transfer(vxArchive& archive) { dispatchSerialize(archive); }

  std::vector<Direct> parts;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Direct)}) {
      for (Direct& part : parts) {
        part.transfer(archive);
        part.transfer(archive);
      }
    }
  }
};

void storePointer(vxArchive& archive, const vxPersistent& object) {
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(archive, &object, unused);
  EXPECT_EQ(unused, nullptr);
}

/// What two pointers of an archive bring: whether they are one object, and their numbers.
struct TwoLoaded {
  explicit TwoLoaded(const std::string& bytes) { load(bytes, first, second); }
  bool areOne() const { return first == second; }

  vxPtrHandle<Plain> first;
  vxPtrHandle<Plain> second;
};

/// Stores `object` by pointer, changes it, and stores it by pointer again.
template <class Change>
TwoLoaded storedAroundAChange(Plain& object, Change&& change) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storePointer(archive, object);
  change(object);
  storePointer(archive, object);
  return TwoLoaded(stream.str());
}

TEST(PersistentTest, WritesNothingForTheBaseItself) {
  Bare bare;
  EXPECT_EQ(storedHex(bare), "");
}

TEST(PersistentTest, DoesNothingInReInit) {
  Node node(5);
  node.reInit();
  EXPECT_EQ(node.label(), 5);
}

TEST(PersistentTest, TransfersTheSameThroughLoadSimple) {
  Node source(5);
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  source.loadSimple(output);
  EXPECT_EQ(out.str(), stored(source));

  std::istringstream in(out.str(), std::ios::binary);
  vxInputArchive input(in);
  Node target;
  target.loadSimple(input);
  EXPECT_EQ(target.label(), 5);
}

TEST(VisitMarkTest, StandsForOneLevelOfOneObjectInTheInnermostPass) {
  for (int round = 0; round < 2; ++round) {
    Watcher watcher;
    EXPECT_EQ(storedHex(watcher), "");
    EXPECT_FALSE(watcher.markedBefore);
    EXPECT_TRUE(watcher.markedAfter);
    EXPECT_FALSE(watcher.otherLevelMarked);
    EXPECT_FALSE(watcher.otherObjectMarked);
    EXPECT_FALSE(watcher.partSawMarks);
    EXPECT_FALSE(vxPersistent::haveVisited(&watcher, typeid(Watcher))) << "the pass is over";
  }
}

TEST(VisitMarkTest, IsNotKeptOutsideAPass) {
  const Bare bare;
  vxPersistent::setVisited(&bare, typeid(vxPersistent));
  EXPECT_FALSE(Bare::wasVisited(&bare));
}

TEST(VisitMarkTest, DoesNotOutliveAPassThatFails) {
  Bottom bottom;
  EXPECT_THROW(load(fromHex("00 01"), bottom), vxArchive::UnknownVersion);
  EXPECT_FALSE(vxPersistent::haveVisited(&bottom, typeid(Bottom)));
  Bottom source;
  source.base = 11;
  load(stored(source), bottom);
  EXPECT_EQ(bottom.base, 11);
}

TEST(VisitMarkTest, WritesEachLevelOfADiamondOnce) {
  Bottom bottom;
  const std::string expected = packedHex("00 00 00 01000000 02000000 00 03000000 04000000");
  EXPECT_EQ(storedHex(bottom), expected);
  EXPECT_EQ(storedHex(bottom, bottom), expected + expected) << "twice in one archive";
}

TEST(VisitMarkTest, ReadsEachLevelOfADiamondOnce) {
  Bottom source;
  source.base = 11;
  source.left = 12;
  source.right = 13;
  source.bottom = 14;
  Bottom target;
  load(stored(source, source), target, target);
  EXPECT_EQ(target.base, 11);
  EXPECT_EQ(target.left, 12);
  EXPECT_EQ(target.right, 13);
  EXPECT_EQ(target.bottom, 14);
}

TEST(VisitMarkTest, NamesEachLevelOfADiamondThatIsOfAnotherVersion) {
  const struct {
    const char* bytes;
    std::string name;
    long number;
  } rows[] = {{"01", "clss/bottom", 77},
              {"00 02", "samples::Left", 0},
              {"00 00 ff", "samples::Base", 0},
              {"00 00 00 01000000 02000000 01", "samples::Right", 0}};
  for (const auto& row : rows) {
    Bottom target;
    try {
      load(fromHex(row.bytes), target);
      ADD_FAILURE() << row.name;
    } catch (const vxArchive::UnknownVersion& error) {
      EXPECT_EQ(error.name(), row.name);
      EXPECT_EQ(error.number(), row.number);
    }
  }
}

TEST(VisitMarkTest, HoldsForHierarchiesOfAnyHeight) {
  Tall<12> tall;
  EXPECT_EQ(storedHex(tall), std::string(std::size_t{2} * 12, '0'));
}

TEST(VisitMarkTest, BelongsToOneCallOfTheHookWhereThatIsCalledDirectly) {
  Direct direct;
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  direct.transfer(archive);
  direct.transfer(archive);
  EXPECT_EQ(toHex(stream.str()), "0000");

  direct.parts.resize(2);
  EXPECT_EQ(storedHex(direct), packedHex("00 0000 0000")) << "each part twice";
}

TEST(StampTest, MakesABackReferenceOfAnUnchangedObject) {
  Plain object(1);
  const TwoLoaded two = storedAroundAChange(object, [](Plain&) {});
  EXPECT_TRUE(two.areOne());
}

TEST(StampTest, StoresAnObjectAnewAfterAnAssignment) {
  Plain object(1);
  const TwoLoaded two = storedAroundAChange(object, [](Plain& plain) { plain = Plain(2); });
  EXPECT_FALSE(two.areOne());
  EXPECT_EQ(two.first->number(), 1);
  EXPECT_EQ(two.second->number(), 2);
}

TEST(StampTest, KeepsTheBackReferenceOfAnObjectThatIsOnlyCopied) {
  Plain object(1);
  const TwoLoaded two = storedAroundAChange(object, [](Plain& plain) {
    const Plain copy(plain);
    Plain target(3);
    target = plain;
    EXPECT_EQ(copy.number() + target.number(), 2);
  });
  EXPECT_TRUE(two.areOne());
}

TEST(StampTest, StoresAnObjectAnewOnceItWasMovedFrom) {
  Plain object(1);
  const TwoLoaded constructed = storedAroundAChange(object, [](Plain& plain) {
    const Plain taker(std::move(plain));
    EXPECT_EQ(taker.number(), 1);
  });
  EXPECT_FALSE(constructed.areOne());

  Plain other(1);
  const TwoLoaded assigned = storedAroundAChange(other, [](Plain& plain) {
    Plain taker(2);
    taker = std::move(plain);
    EXPECT_EQ(taker.number(), 1);
  });
  EXPECT_FALSE(assigned.areOne());
}

TEST(StampTest, StoresACopyAsAnObjectOfItsOwn) {
  Plain object(1);
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storePointer(archive, object);
  const Plain copy(object);
  storePointer(archive, copy);
  EXPECT_FALSE(TwoLoaded(stream.str()).areOne());
}

TEST(StampTest, StoresAnObjectAnewAfterLoadingIntoIt) {
  Plain other(2);
  const std::string bytes = stored(other);
  Plain object(1);
  const TwoLoaded two = storedAroundAChange(object, [&](Plain& plain) { load(bytes, plain); });
  EXPECT_FALSE(two.areOne());
  EXPECT_EQ(two.second->number(), 2);
}

TEST(StampTest, StoresANewObjectAtTheAddressOfAnOldOne) {
  alignas(Plain) unsigned char place[sizeof(Plain)];
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  for (const long number : {1, 2}) {
    auto* object = new (place) Plain(number);
    storePointer(archive, *object);
    object->~Plain();
  }
  const TwoLoaded two(stream.str());
  EXPECT_FALSE(two.areOne());
  EXPECT_EQ(two.first->number(), 1);
  EXPECT_EQ(two.second->number(), 2);
}

TEST(StampTest, StoresAnObjectAnewAfterItsOwnClassChangedIt) {
  const vxPtrHandle<Node> node(new Node(1));
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  storePointer(archive, *node);
  node->label(2);
  storePointer(archive, *node);
  vxPtrHandle<Node> first;
  vxPtrHandle<Node> second;
  load(stream.str(), first, second);
  EXPECT_EQ(first->label(), 1);
  EXPECT_EQ(second->label(), 2);
}

TEST(StampTest, IsKnownToEachArchiveForItself) {
  Plain object(1);
  std::ostringstream streams[2];
  vxOutputArchive first(streams[0]);
  vxOutputArchive second(streams[1]);
  storePointer(first, object);
  storePointer(second, object);
  storePointer(first, object);
  storePointer(second, object);
  EXPECT_EQ(streams[0].str(), streams[1].str());
  EXPECT_TRUE(TwoLoaded(streams[1].str()).areOne());
}

TEST(StampTest, StoresALoadedObjectLikeAnyOther) {
  Plain object(1);
  TwoLoaded loadedTwice = storedAroundAChange(object, [](Plain& plain) { plain = Plain(2); });
  const TwoLoaded again(stored(loadedTwice.second, loadedTwice.second));
  EXPECT_TRUE(again.areOne());
  EXPECT_EQ(again.first->number(), 2);
}

}  // namespace
