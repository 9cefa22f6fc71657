// SPDX-License-Identifier: MIT
#include "vxfoundation/archive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/archived_types.h"
#include "tests/support/class_names.h"
#include "tests/support/golden_archive.h"
#include "tests/support/unknown_version.h"

namespace {

/// Score functions have none; the rules that hold them do.
template <class T>
constexpr bool hasVersion =
    !std::is_base_of_v<vxClsFtSc, T> && !std::is_same_v<T, ArchivedScoreHandle>;
/// As it is stored by pointer, if the class can be.
template <class T>
std::string whole(const T& object) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive output(stream);
  storeWhole(output, object);
  return stream.str();
}

/// What a pointer brings; null for an object of another class.
template <class T>
std::shared_ptr<T> loadPointer(const std::string& bytes) {
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive input(stream);
  return loadPointer<T>(input);
}

template <class T>
class ArchiveTest : public testing::Test {
 protected:
  static std::string name() { return vfClassName(typeid(T)); }

  /// An object with another content than sample `i`.
  T other(std::size_t i) const { return otherThan(samples, i); }

  /// Calls `check(sample, number)` for each sample.
  template <class Check>
  void forEachSample(Check check) const {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      SCOPED_TRACE("sample " + samples[i].name);
      check(samples[i], i);
    }
  }

  static void expectSame(const T& object, const T& expected) {
    EXPECT_EQ(toHex(inPlace(object)), toHex(inPlace(expected)));
    // An object with a NaN differs from itself.
    EXPECT_EQ(areEqual(object, expected), areEqual(expected, expected));
    EXPECT_EQ(areEqual(expected, object), areEqual(expected, expected));
  }

  /// Loads bytes that need not be an archive into an object.
  void tryLoad(const std::string& bytes, std::size_t number) const {
    // However large a count, memory is taken for what has arrived only.
    constexpr std::size_t kMemory = 100'000;
    T target = other(number);
    const std::string before = inPlace(target);
    const AllocationMeter meter;
    const bool loaded = succeedsOrRefuses([&] { loadFront(bytes, target); });
    EXPECT_LT(meter.bytes(), kMemory);
    if (loaded) {
      expectUsable(target, other(number));
    } else {
      expectLeft(target, before);
    }
  }

  /// Every other value of every byte; of a larger archive, some values that hit counts and kinds.
  template <class Check>
  static void forEachChange(const std::string& bytes, Check check) {
    constexpr std::size_t kSmall = 16;
    if (bytes.size() <= kSmall) {
      forEachByteChange(bytes, check);
      return;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (const int change : {0x01, 0x03, 0x40, 0x80, 0xff}) {
        SCOPED_TRACE("byte " + std::to_string(i) + " ^ " + std::to_string(change));
        std::string changed = bytes;
        changed[i] = static_cast<char>(static_cast<unsigned char>(changed[i]) ^ change);
        check(changed);
      }
    }
  }

  const Samples<T> samples = Archived<T>::samples();
};

TYPED_TEST_SUITE(ArchiveTest, ArchivedTypes, ClassNames);

TYPED_TEST(ArchiveTest, HasTheGoldenBytes) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t) {
    const std::string bytes = whole(sample.object);
    updateGoldenArchive(this->name(), sample.name, bytes);
    EXPECT_EQ(toHex(bytes), toHex(goldenArchive(this->name(), sample.name).bytes));
  });
  EXPECT_EQ(goldenArchives(this->name()).size(), this->samples.size());
}

TYPED_TEST(ArchiveTest, LoadsTheGoldenBytes) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    const std::string bytes = goldenArchive(this->name(), sample.name).bytes;
    if constexpr (isPersistent<TypeParam>) {
      const std::shared_ptr<TypeParam> arrived = loadPointer<TypeParam>(bytes);
      ASSERT_NE(arrived, nullptr);
      EXPECT_EQ(typeid(*arrived), typeid(TypeParam));
      this->expectSame(*arrived, sample.object);
    } else {
      TypeParam target = this->other(i);
      load(bytes, target);
      this->expectSame(target, sample.object);
    }
  });
}

TYPED_TEST(ArchiveTest, RoundTripsInPlace) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    TypeParam target = this->other(i);
    load(inPlace(sample.object), target);
    this->expectSame(target, sample.object);
    expectUsable(target, this->other(i));
  });
}

TYPED_TEST(ArchiveTest, RoundTripsSeveralInOneArchive) {
  TypeParam first = this->samples[0].object;
  TypeParam second = this->samples[1].object;
  const std::string bytes = stored(first, second, first);
  TypeParam targets[] = {this->other(0), this->other(1), this->other(0)};
  load(bytes, targets[0], targets[1], targets[2]);
  this->expectSame(targets[0], first);
  this->expectSame(targets[1], second);
  this->expectSame(targets[2], first);
}

TYPED_TEST(ArchiveTest, RefusesEachUnknownVersion) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    const GoldenArchive golden = goldenArchive(this->name(), sample.name);
    EXPECT_EQ(golden.versions.empty(), !hasVersion<TypeParam>);
    const std::size_t classHead = golden.bytes.size() - inPlace(sample.object).size();
    for (const GoldenArchive::Version& version : golden.versions) {
      for (const char value : {'\x01', '\x02', '\x7f', '\x80', '\xff'}) {
        SCOPED_TRACE(testing::Message() << "byte " << version.offset);
        std::string bytes = golden.bytes;
        bytes.at(version.offset) = value;
        if constexpr (isPersistent<TypeParam>) {
          expectUnknownVersion([&] { loadPointer<TypeParam>(bytes); }, version.name);
        }
        bytes = inPlace(sample.object);
        bytes.at(version.offset - classHead) = value;
        TypeParam target = this->other(i);
        const std::string before = inPlace(target);
        expectUnknownVersion([&] { load(bytes, target); }, version.name);
        expectLeft(target, before);
      }
    }
  });
}

TYPED_TEST(ArchiveTest, RefusesEachTruncation) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    forEachTruncation(inPlace(sample.object), [&](const std::string& bytes) {
      TypeParam target = this->other(i);
      const std::string before = inPlace(target);
      EXPECT_THROW(loadFront(bytes, target), vxArchive::Errors);
      expectLeft(target, before);
    });
    if constexpr (isPersistent<TypeParam>) {
      forEachTruncation(whole(sample.object), [](const std::string& bytes) {
        EXPECT_THROW(loadPointer<TypeParam>(bytes), vxArchive::Errors);
      });
    }
  });
}

// Through a pointer: reliability/every_byte_test.cpp.
TYPED_TEST(ArchiveTest, SurvivesEachByteChangeInPlace) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    this->forEachChange(inPlace(sample.object),
                        [&](const std::string& bytes) { this->tryLoad(bytes, i); });
  });
}

template <class... T>
std::vector<std::string> persistentNames(testing::Types<T...>) {
  std::vector<std::string> names;
  ((isPersistent<T> ? names.push_back(vfClassName(typeid(T))) : void()), ...);
  std::sort(names.begin(), names.end());
  return names;
}

TEST(RegistryTest, HoldsExactlyTheArchivedClasses) {
  // The classes of the tests stand in namespaces of their own.
  std::vector<std::string> names = vx_Instantiator::registeredNames();
  const auto isOurs = [](const std::string& name) { return name.rfind("vx", 0) == 0; };
  names.erase(std::remove_if(names.begin(), names.end(), std::not_fn(isOurs)), names.end());
  EXPECT_EQ(names, persistentNames(ArchivedTypes()));
}

}  // namespace
