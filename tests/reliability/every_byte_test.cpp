// SPDX-License-Identifier: MIT
// Every golden archive cut at each byte and with each byte changed, and what is promised of memory.
//
// The short form tries some of the 255 other values of each byte, chosen by a fixed rule; the long
// form all of them (docs/reliability.md).

#include <gtest/gtest.h>

#include <istream>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/support/archived_types.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/faulty_device.h"
#include "tests/support/figures.h"
#include "tests/support/memory_bound.h"

namespace {

// How many other values of a byte, or counts at a place, the short form tries.
unsigned numTried(const std::string& golden, unsigned all) {
  constexpr std::size_t kLarge = 256;
  if (isLongForm()) return all;
  return golden.size() > kLarge ? 1 : 5;
}

/// A rule may arrive without a function, where the number of one was not known and none stood in
/// its place. It runs into vxBadPointer, and so does whoever stores it.
template <class T>
constexpr bool mayLackFunctions =
    std::is_same_v<T, vxClassifierRule> || std::is_same_v<T, vxClassifierRuleTable>;

template <class T>
bool lacksFunctions(const T& object) {
  try {
    inPlace(object);
    return false;
  } catch (const vxBadPointer&) {
    EXPECT_TRUE(mayLackFunctions<T>);
    return true;
  }
}

template <class T>
class EveryByteTest : public testing::Test {
 protected:
  ~EveryByteTest() override { showFigure("archives tried", tried_); }

  template <class Check>
  void forEachSample(Check check) {
    for (std::size_t i = 0; i < samples_.size(); ++i) {
      SCOPED_TRACE("sample " + samples_[i].name);
      check(goldenArchive(vfClassName(typeid(T)), samples_[i].name).bytes, i);
    }
  }

  /// Loads bytes that need not be an archive, and uses what arrives. Every other time they are all
  /// at hand, and else come one by one.
  void tryLoad(const std::string& bytes, std::size_t i) {
    ++tried_;
    const long live = allocator::counts().live;
    {
      FaultyDevice device(bytes);
      if (tried_ % 2 == 0) device.offerAll();
      std::istream stream(&device);
      T target = otherThan(samples_, i);
      const std::string before = inPlace(target);
      std::shared_ptr<T> arrived;
      const allocator::Meter meter;
      const bool isLoaded = succeedsOrRefuses([&] {
        vxInputArchive archive(stream);
        arrived = loadWhole(archive, target);
      });
      expectWithinBound(meter, device.numRead());
      if (!isLoaded) {
        expectLeft(target, before);
      } else if (arrived != nullptr && lacksFunctions(*arrived)) {
        Archived<T>::use(*arrived);
        areEqual(*arrived, target);
      } else if (arrived != nullptr) {
        expectUsable(*arrived, otherThan(samples_, i));
      }
    }
    EXPECT_EQ(allocator::counts().live, live) << "blocks were lost";
  }

 private:
  const Samples<T> samples_ = Archived<T>::samples();
  long long tried_ = 0;
};

TYPED_TEST_SUITE(EveryByteTest, ArchivedTypes, ClassNames);

TYPED_TEST(EveryByteTest, MayBeTheLastOne) {
  this->forEachSample([this](const std::string& golden, std::size_t i) {
    forEachTruncation(golden, [&](const std::string& bytes) {
      for (int both = 0; both < 2; ++both) this->tryLoad(bytes, i);
    });
  });
}

TYPED_TEST(EveryByteTest, MayHaveAnyOtherValue) {
  this->forEachSample([this](const std::string& golden, std::size_t i) {
    for (unsigned place = 0; place < golden.size(); ++place) {
      const unsigned first = 1 + place * 37 % 255;  // 37 has no divisor in common with 255
      for (unsigned k = 0; k < numTried(golden, 255) && !this->HasFailure(); ++k) {
        const unsigned change = 1 + (first + k * 43) % 255;
        SCOPED_TRACE("byte " + std::to_string(place) + " ^ " + std::to_string(change));
        std::string bytes = golden;
        bytes[place] = static_cast<char>(static_cast<unsigned char>(bytes[place]) ^ change);
        this->tryLoad(bytes, i);
      }
    }
  });
}

// Four bytes at a time are a count, wherever one stands.
TYPED_TEST(EveryByteTest, MayBeginAHugeCount) {
  this->forEachSample([this](const std::string& golden, std::size_t i) {
    const char* const counts[] = {"ffffffff", "ffffff7f", "00000080", "00000001", "00000100"};
    for (std::size_t place = 0; place + 4 <= golden.size(); ++place) {
      for (std::size_t k = 0; k < numTried(golden, 5); ++k) {
        const char* const count = counts[(place + k) % 5];
        SCOPED_TRACE("byte " + std::to_string(place) + ": " + count);
        std::string bytes = golden;
        bytes.replace(place, 4, fromHex(count));
        this->tryLoad(bytes, i);
        if (this->HasFailure()) return;
      }
    }
  });
}

}  // namespace
