// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <istream>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "tests/support/awkward_streams.h"
#include "vxfoundation/archive.h"

// Archives gather what they write and look into what a stream buffer holds. Wherever one piece ends
// and the next begins, bytes and positions are the same.

namespace {

using samples::Everything;
using samples::Node;

/// Holds `pieceSize` bytes ready at a time.
class Pieces : public std::streambuf {
 public:
  Pieces(std::string bytes, std::size_t pieceSize)
      : bytes_(std::move(bytes)), pieceSize_(pieceSize) {}

  /// Bytes that were read.
  std::size_t position() const { return next_ - static_cast<std::size_t>(egptr() - gptr()); }

 protected:
  int_type underflow() override {
    if (next_ == bytes_.size()) return traits_type::eof();
    const std::size_t size = std::min(pieceSize_, bytes_.size() - next_);
    setg(&bytes_[next_], &bytes_[next_], &bytes_[next_] + size);
    next_ += size;
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string bytes_;
  std::size_t pieceSize_;
  std::size_t next_ = 0;
};

std::vector<double> doubles(std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = 0.1 * static_cast<double>(i) - 3.0;
  return values;
}

std::vector<bool> flags(std::size_t count, std::size_t cleared) {
  std::vector<bool> values(count, true);
  for (std::size_t i = cleared; i < count; i += 7) values[i] = false;
  return values;
}

/// Everything, a long vector of each kind, and everything again.
struct Mixture {
  vxPtrHandle<Everything> first;
  std::vector<double> reals;
  std::vector<bool> someCleared;
  std::vector<bool> allSet;
  vxPtrHandle<Everything> second;

  static Mixture filled() {
    const vxPtrHandle<Everything> everything = Everything::filled();
    return {everything, doubles(1500), flags(9001, 3), flags(9001, 9001), everything};
  }
};
vxArchive& operator||(vxArchive& archive, Mixture& mixture) {
  return archive || mixture.first || mixture.reals || mixture.someCleared || mixture.allSet ||
         mixture.second;
}

TEST(ArchivePiecesTest, LoadsTheSameFromPiecesOfAnySize) {
  Mixture source = Mixture::filled();
  const std::string bytes = stored(source);
  for (const std::size_t pieceSize : {1u, 2u, 3u, 5u, 7u, 8u, 9u, 64u, 1000u, 4096u, 100000u}) {
    SCOPED_TRACE(pieceSize);
    Pieces pieces(bytes + "rest", pieceSize);
    std::istream stream(&pieces);
    vxInputArchive archive(stream);
    Mixture target;
    archive || target;
    EXPECT_EQ(pieces.position(), bytes.size());
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(target.reals, source.reals);
    EXPECT_EQ(target.someCleared, source.someCleared);
    EXPECT_EQ(target.allSet, source.allSet);
    EXPECT_TRUE(target.first == target.second);
    EXPECT_EQ(stored(target), bytes);
  }
}

TEST(ArchivePiecesTest, RefusesATruncationInPiecesOfAnySize) {
  Mixture source = Mixture::filled();
  const std::string bytes = stored(source);
  for (const std::size_t pieceSize : {1u, 8u, 4096u}) {
    for (std::size_t size = 0; size < bytes.size(); size += 97) {
      Pieces pieces(bytes.substr(0, size), pieceSize);
      std::istream stream(&pieces);
      vxInputArchive archive(stream);
      Mixture target;
      ASSERT_THROW(archive || target, vxArchive::Malformed) << size << " of " << pieceSize;
      ASSERT_FALSE(stream.good());
    }
  }
}

TEST(ArchivePiecesTest, MovesTheStreamToTheEndOfEveryTransfer) {
  std::stringstream stream(std::ios::binary | std::ios::in | std::ios::out);
  vxOutputArchive output(stream);
  vxInputArchive input(stream);
  std::size_t end = 0;
  // What is stored while the other archive is loading is seen by the next load.
  for (std::size_t i = 0; i < 40; ++i) {
    auto number = static_cast<long>(i);
    std::vector<double> reals = doubles(i * i);
    output || number || reals;
    end += 4 + 5 + 8 * reals.size();
    long readNumber = -1;
    std::vector<double> readReals;
    input || readNumber;
    EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), end - 5 - 8 * reals.size());
    input || readReals;
    EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), end);
    EXPECT_EQ(readNumber, number);
    EXPECT_EQ(readReals, reals);
  }
}

TEST(ArchivePiecesTest, LoadsNothingFromAStreamThatHasFailedThoughBytesAreThere) {
  std::istringstream stream("abcdefgh", std::ios::binary);
  vxInputArchive archive(stream);
  long number = 7;
  archive || number;
  stream.setstate(std::ios::failbit);
  EXPECT_THROW(archive || number, vxArchive::Malformed);
  EXPECT_EQ(number, 0x64636261);
  stream.clear();
  archive || number;
  EXPECT_EQ(number, 0x68676665);
}

/// A transfer of that many vectors of that many doubles.
struct Many {
  std::vector<std::vector<double>> vectors;
};
vxArchive& operator||(vxArchive& archive, Many& many) { return archive || many.vectors; }

TEST(ArchivePiecesTest, WritesTheSameWhateverFillsABlock) {
  // Blocks of 512 bytes to 64 KB, passed by little, at once or by far.
  for (const std::size_t size : {0u, 1u, 62u, 63u, 64u, 65u, 500u, 8190u, 8191u, 8192u, 20000u}) {
    for (const std::size_t count : {1u, 2u, 3u, 20u}) {
      SCOPED_TRACE(testing::Message() << count << " times " << size);
      Many many{std::vector<std::vector<double>>(count, doubles(size))};
      unsigned char version = 0;
      unsigned long length = count;
      std::string expected = stored(version, length);
      for (std::vector<double>& vector : many.vectors) {
        length = vector.size();
        expected += stored(version, length);
        for (double& value : vector) expected += stored(value);
      }
      ASSERT_EQ(stored(many), expected);
      ASSERT_EQ(loaded<std::vector<std::vector<double>>>(expected), many.vectors);
    }
  }
}

TEST(ArchivePiecesTest, WritesNoNumberLaterThatAFailedStreamDidNotTake) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  long lost = 1;
  long number = 2;
  stream.setstate(std::ios::failbit);
  EXPECT_THROW(archive || lost, vxArchive::StreamFailure);
  stream.clear();
  archive || number;
  EXPECT_EQ(toHex(stream.str()), "02000000");
}

TEST(ArchivePiecesTest, IsNotTornByALargeTransferToAStreamThatHadFailed) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  std::vector<double> large = doubles(20000);
  stream.setstate(std::ios::failbit);
  EXPECT_THROW(archive || large, vxArchive::StreamFailure);
  stream.clear();
  ASSERT_EQ(stream.str(), "");
  archive || large;
  EXPECT_EQ(stream.str(), stored(large));
}

/// Goes on where the stream does not take a part, and repairs the stream.
class Unconcerned : public vxPersistent {
 public:
  explicit Unconcerned(std::ostream& out) : stream(out) {}

  std::ostream& stream;
  std::vector<double> part = doubles(7000);

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    for (int i = 0; i < 3; ++i) {
      try {
        for (double& value : part) archive || value;
      } catch (const vxArchive::StreamFailure&) {
        stream.clear();
      }
    }
  }
};

TEST(ArchivePiecesTest, CompletesNoTransferOfWhichAPartIsMissing) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  Unconcerned object(stream);
  stream.setstate(std::ios::failbit);
  EXPECT_THROW(archive || object, vxArchive::Errors);

  const std::size_t before = stream.str().size();
  FullDisk disk(1000);
  std::ostream full(&disk);
  vxOutputArchive other(full);
  Unconcerned second(full);
  EXPECT_THROW(other || second, vxArchive::Errors);
  EXPECT_EQ(stream.str().size(), before);
}

TEST(ArchivePiecesTest, IsTornWhereTheSecondBlockIsRefused) {
  constexpr std::size_t kBlock = 1 << 16;
  Many many{std::vector<std::vector<double>>(300, doubles(100))};
  for (const std::size_t room : {kBlock - 1, kBlock, kBlock + 1, 3 * kBlock}) {
    FullDisk disk(room);
    std::ostream stream(&disk);
    vxOutputArchive archive(stream);
    EXPECT_THROW(archive || many, vxArchive::StreamFailure) << room;
    EXPECT_EQ(disk.bytes(), stored(many).substr(0, disk.bytes().size()));
    stream.clear();
    long number = 1;
    EXPECT_THROW(archive || number, vxArchive::StreamFailure) << room;
  }
}

TEST(ArchivePiecesTest, TakesNoMoreMemoryForAPromiseThanBytesAreThere) {
  constexpr std::size_t kBytes = 1 << 20;
  const std::string bytes = fromHex("00 ffffffff") + std::string(kBytes, '\1');
  for (const std::size_t pieceSize : {std::size_t{1000}, 2 * kBytes}) {
    Pieces pieces(bytes, pieceSize);
    std::istream stream(&pieces);
    std::vector<bool> target;
    const AllocationMeter meter;
    vxInputArchive archive(stream);
    EXPECT_THROW(archive || target, vxArchive::Malformed);
    EXPECT_LT(meter.bytes(), kBytes) << "a flag takes a bit";
  }
}

TEST(ArchivePiecesTest, TakesOneAllocationForAVectorThatIsAllThere) {
  std::vector<double> source = doubles(50000);
  std::istringstream stream(stored(source), std::ios::binary);
  vxInputArchive archive(stream);
  std::vector<double> target;
  const AllocationMeter meter;
  archive || target;
  EXPECT_EQ(meter.calls(), 1u);
  EXPECT_EQ(target, source);
}

}  // namespace
