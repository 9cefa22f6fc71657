// SPDX-License-Identifier: MIT
// Every golden archive through streams that end, fail or throw at each byte.

#include <gtest/gtest.h>

#include <istream>
#include <memory>
#include <ostream>
#include <string>

#include "tests/support/archived_types.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/faulty_device.h"
#include "tests/support/figures.h"

namespace {

enum class Outcome { kDone, kRefused, kStreamThrew };

/// What became of a transfer whose stream may throw.
template <class Body>
Outcome outcomeOf(const Body& body) {
  try {
    body();
    return Outcome::kDone;
  } catch (const vxArchive::Errors&) {
    return Outcome::kRefused;
  } catch (const FaultyDevice::Broken&) {
    return Outcome::kStreamThrew;
  } catch (const std::ios_base::failure&) {
    return Outcome::kStreamThrew;
  }
}

struct Stream {
  DeviceFault fault;
  std::ios_base::iostate exceptions;  // of the stream itself
};

/// Streams that tell of a fault by their state, and such that throw.
const Stream kStreams[] = {{DeviceFault::kEnds, std::ios_base::goodbit},
                           {DeviceFault::kFails, std::ios_base::goodbit},
                           {DeviceFault::kThrows, std::ios_base::goodbit},
                           {DeviceFault::kThrows, std::ios_base::badbit},
                           {DeviceFault::kEnds, std::ios_base::failbit | std::ios_base::badbit}};

template <class T>
class StreamsTest : public testing::Test {
 protected:
  ~StreamsTest() override { showFigure("faults of streams", faults_); }

  /// Calls `check(sample, golden bytes, byte, stream)` for every byte and kind of stream.
  template <class Check>
  void forEachFault(Check check) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const std::string golden = goldenArchive(vfClassName(typeid(T)), samples[i].name).bytes;
      for (std::size_t byte = 0; byte < golden.size(); ++byte) {
        for (const Stream& kind : kStreams) {
          SCOPED_TRACE(samples[i].name + ", byte " + std::to_string(byte));
          const long live = allocator::counts().live;
          check(i, golden, byte, kind);
          EXPECT_EQ(allocator::counts().live, live) << "blocks were lost";
          ++faults_;
          if (this->HasFailure()) return;
        }
      }
    }
  }

  /// What throws is the stream's own where it was told to, an error of the archive elsewhere.
  static Outcome expectedWriting(const Stream& kind) {
    return kind.exceptions == std::ios_base::goodbit ? Outcome::kRefused : Outcome::kStreamThrew;
  }
  /// A load asks the stream's buffer, so what that throws passes in any case.
  static Outcome expectedReading(const Stream& kind) {
    return kind.fault == DeviceFault::kThrows ? Outcome::kStreamThrew : expectedWriting(kind);
  }

  const Samples<T> samples = Archived<T>::samples();

 private:
  long long faults_ = 0;
};

TYPED_TEST_SUITE(StreamsTest, ArchivedTypes, ClassNames);

TYPED_TEST(StreamsTest, ReadFrom) {
  this->forEachFault(
      [this](std::size_t i, const std::string& golden, std::size_t byte, const Stream& kind) {
        FaultyDevice device(golden);
        std::istream stream(&device);
        device.faultAt(byte, kind.fault, stream);
        stream.exceptions(kind.exceptions);
        TypeParam target = otherThan(this->samples, i);
        const std::string before = inPlace(target);
        const Outcome outcome = outcomeOf([&] {
          vxInputArchive archive(stream);
          loadWhole(archive, target);
        });
        EXPECT_EQ(outcome, this->expectedReading(kind));
        EXPECT_FALSE(stream.good());
        expectLeft(target, before);

        // The bytes are all right, read from their beginning.
        FaultyDevice sound(golden);
        std::istream again(&sound);
        vxInputArchive archive(again);
        EXPECT_NE(loadWhole(archive, target), nullptr);
      });
}

TYPED_TEST(StreamsTest, WriteTo) {
  this->forEachFault(
      [this](std::size_t i, const std::string& golden, std::size_t byte, const Stream& kind) {
        FaultyDevice device(golden.size() + byte);
        std::ostream stream(&device);
        device.faultAt(byte, kind.fault, stream);
        stream.exceptions(kind.exceptions);
        const TypeParam& object = this->samples[i].object;
        vxOutputArchive archive(stream);
        EXPECT_EQ(outcomeOf([&] { storeWhole(archive, object); }), this->expectedWriting(kind));
        EXPECT_EQ(toHex(device.written()), toHex(golden.substr(0, byte)));

        // Some bytes may be there: the archive takes no more, whatever becomes of the stream.
        device.repair();
        stream.exceptions(std::ios_base::goodbit);
        stream.clear();
        EXPECT_EQ(outcomeOf([&] { storeWhole(archive, object); }), Outcome::kRefused);
        EXPECT_EQ(device.written().size(), byte);
        EXPECT_EQ(toHex(inPlace(object)), toHex(inPlace(TypeParam(object))));
      });
}

// Before any byte of a transfer: none reaches the stream, and the archive goes on.
TYPED_TEST(StreamsTest, GoOnAfterAFailureThatCameBefore) {
  for (const auto& sample : this->samples) {
    FaultyDevice device(10'000);
    std::ostream stream(&device);
    vxOutputArchive archive(stream);
    stream.setstate(std::ios_base::failbit);
    EXPECT_EQ(outcomeOf([&] { storeWhole(archive, sample.object); }), Outcome::kRefused);
    stream.clear();
    storeWhole(archive, sample.object);
    const std::string golden = goldenArchive(vfClassName(typeid(TypeParam)), sample.name).bytes;
    EXPECT_EQ(toHex(device.written()), toHex(golden));
  }
}

/// A value that travels by itself, not as a part of an object.
template <class Value>
void expectToGoOn(Value value) {
  FaultyDevice device(1000);
  std::ostream stream(&device);
  vxOutputArchive output(stream);
  vxArchive& archive = output;
  stream.setstate(std::ios_base::failbit);
  EXPECT_THROW(archive || value, vxArchive::StreamFailure);
  stream.clear();
  archive || value;
  EXPECT_EQ(toHex(device.written()), storedHex(value));
}

TEST(PrimitiveStreamsTest, GoOnAfterAFailureThatCameBefore) {
  expectToGoOn<unsigned char>(7);
  expectToGoOn<long>(-2);
  expectToGoOn<unsigned long>(2);
  expectToGoOn<double>(0.5);
  expectToGoOn<std::wstring>(L"text");
  expectToGoOn<std::vector<bool>>({true, false});
  expectToGoOn<std::vector<double>>({0.5, 1.5});
  expectToGoOn<vxNMMatrix>(vxNMMatrix(2, 2));
  expectToGoOn<vxRange>(vxRange(0.0, 1.0));
}

}  // namespace
