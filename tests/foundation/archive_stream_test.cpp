// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <istream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "tests/support/awkward_streams.h"
#include "vxfoundation/archive.h"

namespace {

using samples::Everything;
using samples::Node;
using NodeHandle = vxPtrHandle<Node>;

/// Throws while it is transferred, after everything else was.
class Spoilt : public vxPersistent {
 public:
  NodeHandle node{new Node(1)};
  std::vector<double> reals;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Spoilt)}) {
      archive || node || reals;
      throw 7;
    }
  }
};

class Unregistered : public vxPersistent, public vxRepBase {};

/// Stores an empty handle instead of one that the archive refuses.
class Forgiving : public vxPersistent {
 public:
  vxPtrHandle<Unregistered> extra{new Unregistered};
  NodeHandle first{new Node(1)};
  NodeHandle second{first};

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Forgiving)}) {
      try {
        archive || extra;
      } catch (const vxArchive::Unstorable&) {
        vxPtrHandle<Unregistered> nothing;
        archive || nothing;
      }
      archive || first || second;
    }
  }
};

const std::string& everythingBytes() {
  static const std::string bytes = stored(*Everything::filled());
  return bytes;
}

TEST(OutputArchiveTest, HandsAllBytesOverBeforeATransferReturns) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  unsigned char byte = 1;
  std::wstring text = L"ab";
  archive || byte;
  EXPECT_EQ(stream.str().size(), 1u);
  archive || text;
  EXPECT_EQ(stream.str().size(), 1u + 12u);
  archive || *Everything::filled();
  EXPECT_EQ(stream.str().size(), 13u + everythingBytes().size());
  std::vector<double> large(20000);
  archive || large;
  EXPECT_EQ(stream.str().size(), 13u + everythingBytes().size() + 5u + 160000u);
}

TEST(OutputArchiveTest, LeavesTheStreamToItsOwner) {
  std::ostringstream stream(std::ios::binary);
  stream << "before";
  {
    vxOutputArchive archive(stream);
    long number = 1;
    archive || number;
    stream << "between";
    archive || number;
  }
  stream << "after";
  EXPECT_EQ(toHex(stream.str()),
            toHex("before") + "01000000" + toHex("between") + "01000000" + toHex("after"));
}

TEST(OutputArchiveTest, ReportsAStreamThatTakesNoMore) {
  const vxPtrHandle<Everything> source = Everything::filled();
  for (std::size_t room = 0; room < everythingBytes().size(); ++room) {
    FullDisk disk(room);
    std::ostream stream(&disk);
    vxOutputArchive archive(stream);
    EXPECT_THROW(archive || *source, vxArchive::StreamFailure) << room;
    EXPECT_EQ(disk.bytes(), everythingBytes().substr(0, disk.bytes().size()));
  }
  FullDisk disk(everythingBytes().size());
  std::ostream stream(&disk);
  vxOutputArchive archive(stream);
  archive || *source;
  EXPECT_EQ(disk.bytes(), everythingBytes());
}

TEST(OutputArchiveTest, ReportsAStreamThatTakesNoPrimitive) {
  FullDisk disk(3);
  std::ostream stream(&disk);
  vxOutputArchive archive(stream);
  long number = 1;
  EXPECT_THROW(archive || number, vxArchive::StreamFailure);
}

TEST(OutputArchiveTest, WritesNoMoreOnceATransferIsTorn) {
  FullDisk disk(4);
  std::ostream stream(&disk);
  vxOutputArchive archive(stream);
  double real = 1.0;
  unsigned char byte = 1;
  NodeHandle node(new Node(1));
  EXPECT_THROW(archive || real, vxArchive::StreamFailure);
  const std::string torn = disk.bytes();
  ASSERT_EQ(torn.size(), 4u);

  stream.clear();
  EXPECT_THROW(archive || byte, vxArchive::StreamFailure);
  EXPECT_THROW(archive || node, vxArchive::StreamFailure);
  EXPECT_THROW(archive || *node, vxArchive::StreamFailure);
  EXPECT_EQ(disk.bytes(), torn);
}

TEST(OutputArchiveTest, PassesAStreamsOwnExceptionOnAndIsTornThen) {
  FullDisk disk(4);
  std::ostream stream(&disk);
  stream.exceptions(std::ios::badbit);
  vxOutputArchive archive(stream);
  double real = 1.0;
  EXPECT_THROW(archive || real, std::ios_base::failure);
  EXPECT_THROW(archive || real, vxArchive::StreamFailure);
}

TEST(OutputArchiveTest, PassesADevicesExceptionOnWhereTheStreamDoes) {
  BrokenDevice device("");
  std::ostream stream(&device);
  vxOutputArchive quiet(stream);
  double real = 1.0;
  EXPECT_THROW(quiet || real, vxArchive::StreamFailure);

  std::ostream loudStream(&device);
  loudStream.exceptions(std::ios::badbit);
  vxOutputArchive loud(loudStream);
  EXPECT_THROW(loud || real, BrokenDevice::Broken);
}

TEST(OutputArchiveTest, WritesNothingOfASmallTransferThatFailsAndGoesOn) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  NodeHandle before(new Node(0));
  archive || before;
  const std::string beforeBytes = stream.str();

  // The failed transfer was the first to name Everything and Bottom.
  vxPtrHandle<Everything> object = Everything::filled();
  object->nodes.push_back(Node::list(vxArchive::kMaximumNesting));
  EXPECT_THROW(archive || object, vxArchive::Unstorable);
  EXPECT_EQ(stream.str(), beforeBytes);
  Spoilt spoilt;
  EXPECT_THROW(archive || spoilt, int);
  EXPECT_EQ(stream.str(), beforeBytes);

  object->nodes.pop_back();
  archive || object || before || spoilt.node || object;
  NodeHandle read[3];
  vxPtrHandle<Everything> first;
  vxPtrHandle<Everything> second;
  load(stream.str(), read[0], first, read[1], read[2], second);
  EXPECT_TRUE(read[0] == read[1]);
  EXPECT_EQ(read[2]->label(), 1);
  EXPECT_TRUE(first == second);
  EXPECT_EQ(first->diamond->bottom, 4);
}

TEST(OutputArchiveTest, StoresNothingThatDoesNotLoadAfterAFailureThatAClassSwallowed) {
  Forgiving source;
  std::string bytes;
  if (!succeedsOrRefuses([&] { bytes = stored(source); })) return;
  Forgiving target;
  EXPECT_NO_THROW(load(bytes, target));
  EXPECT_TRUE(target.extra.isNull());
  EXPECT_TRUE(target.first == target.second);
}

TEST(OutputArchiveTest, GoesOnWithAStreamThatHadFailedBeforeTheTransfer) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  NodeHandle node(new Node(1));
  stream.setstate(std::ios::failbit);
  EXPECT_THROW(archive || node, vxArchive::StreamFailure);
  stream.clear();
  ASSERT_EQ(stream.str(), "") << "no byte had reached the stream";
  EXPECT_NO_THROW(archive || node);
  EXPECT_EQ(stream.str(), stored(node));
}

TEST(OutputArchiveTest, IsTornByALargeTransferThatFails) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  Spoilt spoilt;
  spoilt.reals.resize(100000);
  EXPECT_THROW(archive || spoilt, int);
  const std::string torn = stream.str();
  EXPECT_FALSE(torn.empty());

  long number = 1;
  EXPECT_THROW(archive || number, vxArchive::StreamFailure);
  EXPECT_THROW(archive || spoilt.node, vxArchive::StreamFailure);
  EXPECT_EQ(stream.str(), torn);
}

TEST(InputArchiveTest, ReadsNoByteBeyondItsTransfers) {
  std::istringstream stream(everythingBytes() + everythingBytes() + "rest", std::ios::binary);
  for (int round = 1; round <= 2; ++round) {
    vxInputArchive archive(stream);
    Everything target;
    archive || target;
    EXPECT_EQ(target.number, -2);
    EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), round * everythingBytes().size());
  }
  std::string rest;
  stream >> rest;
  EXPECT_EQ(rest, "rest");
}

TEST(InputArchiveTest, LeavesTheStreamGoodAtItsLastByte) {
  std::istringstream stream(everythingBytes(), std::ios::binary);
  vxInputArchive archive(stream);
  Everything target;
  archive || target;
  EXPECT_TRUE(stream.good());
}

TEST(InputArchiveTest, IsMalformedAtTheEndOfTheStreamAndAfterAFailure) {
  std::istringstream stream("abcdef", std::ios::binary);
  vxInputArchive archive(stream);
  long number = 7;
  archive || number;
  EXPECT_EQ(number, 0x64636261);
  EXPECT_THROW(archive || number, vxArchive::Malformed);
  EXPECT_FALSE(stream.good());
  unsigned char byte = 7;
  EXPECT_THROW(archive || byte, vxArchive::Malformed);
  EXPECT_EQ(byte, 7);
}

TEST(InputArchiveTest, PassesAStreamsOwnExceptionOn) {
  std::istringstream stream("abc", std::ios::binary);
  stream.exceptions(std::ios::eofbit | std::ios::failbit | std::ios::badbit);
  vxInputArchive archive(stream);
  long number = 7;
  EXPECT_THROW(archive || number, std::ios_base::failure);
  EXPECT_EQ(number, 7);
}

TEST(InputArchiveTest, PassesADevicesExceptionOnAndLosesNoObject) {
  const int before = Node::numAlive();
  const std::string bytes = everythingBytes();
  for (std::size_t size = 0; size < bytes.size(); size += 5) {
    BrokenDevice device(bytes.substr(0, size));
    std::istream stream(&device);
    stream.exceptions(std::ios::badbit);
    vxInputArchive archive(stream);
    {
      Everything target;
      EXPECT_THROW(archive || target, BrokenDevice::Broken) << size;
    }
    EXPECT_TRUE(stream.bad());
  }
  EXPECT_EQ(Node::numAlive(), before);
}

TEST(InputArchiveTest, ReadsFromAStreamWithoutABufferOfItsOwn) {
  BrokenDevice device(everythingBytes());  // gives one byte at a time
  std::istream stream(&device);
  vxInputArchive archive(stream);
  Everything target;
  archive || target;
  EXPECT_EQ(stored(target), everythingBytes());
  std::istream nowhere(nullptr);
  vxInputArchive empty(nowhere);
  EXPECT_THROW(empty || target, vxArchive::Malformed);
}

}  // namespace
