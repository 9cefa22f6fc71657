// SPDX-License-Identifier: MIT
#include "vxfoundation/archive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/allocation_meter.h"
#include "tests/support/archive_helpers.h"
#include "tests/support/archived_classes.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/archived_classes_trees.h"
#include "tests/support/class_names.h"
#include "tests/support/golden_archive.h"
#include "tests/support/unknown_version.h"

namespace {

/// Every archived class, each with an entry in archived_classes.h and golden bytes.
using ArchivedTypes =
    testing::Types<vxClassifierDefs::BadFeatures, vxClassifierDefs::BadIndex,
                   vxClassifierDefs::BadLabel, vxClassifierDefs::BadMethod,
                   vxClassifierDefs::BadParams, vxClassifierDefs::InsufficientTrainData,
                   vxClassifierDefs::NotImplemented, vxClassifierDefs::NotTrained, vxFeaturePattern,
                   vxClassifierDataProviderMemory, vxClassifierCosts, vxClassifierFrequencies,
                   vxClassifierCategoryResult, vxClassifierResult, vxPatternDistanceMetricNorm,
                   vxClassifierTrainParamsKNN, vx_ClassifierKNN, vxClassifierDistributionTypes,
                   vxClassifierTrainParamsBayesian, vx_PDFMultivariateNormal, vx_PDFBinomial,
                   vx_CategoryModelBayesian, vx_ClassifierBayesian, vxComparisonPredicate,
                   vxRangePredicate, vxValidityPredicate, vxDecisionTreeLeaf, vxDecisionTreeNode,
                   vx_ClassifierDecisionTree, vxClassifierFeatureScoreOneSided,
                   vxClassifierFeatureScoreTwoSided, ArchivedScoreHandle, vxClassifierFeatureVector,
                   vxClassifierRule, vxClassifierRuleTable, vxClassifierTool>;

template <class T>
constexpr bool isPersistent = std::is_base_of_v<vxPersistent, T>;
/// Score functions have none; the rules that hold them do.
template <class T>
constexpr bool hasVersion =
    !std::is_base_of_v<vxClsFtSc, T> && !std::is_same_v<T, ArchivedScoreHandle>;
template <class T>
constexpr bool isTool = std::is_same_v<T, vxClassifierTool>;

template <class T, class = void>
struct HasClone : std::false_type {};
template <class T>
struct HasClone<T, std::void_t<decltype(std::declval<const T&>().clone())>> : std::true_type {};

/// Storing changes nothing.
template <class T>
std::string inPlace(const T& object) {
  return stored(const_cast<T&>(object));
}

template <class T>
std::string byPointer(const T& object) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive output(stream);
  vxPersistent* unused = nullptr;
  vxPersistent::serializePointer(output, &object, unused);
  return stream.str();
}

/// Through a pointer, so that the class name is there too, if the class has a name.
template <class T>
std::string whole(const T& object) {
  if constexpr (isPersistent<T>) {
    return byPointer(object);
  } else {
    return inPlace(object);
  }
}

/// What a pointer brings; null for an object of another class.
template <class T>
std::shared_ptr<T> loadPointer(const std::string& bytes) {
  std::istringstream stream(bytes, std::ios::binary);
  vxInputArchive input(stream);
  vxPersistent* object = nullptr;
  vxPersistent::serializePointer(input, nullptr, object);
  if constexpr (std::is_base_of_v<vxRepBase, T>) {
    vxPtrHandle<T> handle;
    handle.assignChecked(object);
    return std::shared_ptr<T>(handle.get(), [handle](T*) {});
  } else {
    return std::dynamic_pointer_cast<T>(std::shared_ptr<vxPersistent>(object));
  }
}

template <class T>
class ArchiveTest : public testing::Test {
 protected:
  static std::string name() { return vfClassName(typeid(T)); }

  /// An object with another content than sample `i`.
  T other(std::size_t i) const { return samples[(i + 1) % samples.size()].object; }

  /// Calls `check(sample, number)` for each sample.
  template <class Check>
  void forEachSample(Check check) const {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      SCOPED_TRACE("sample " + samples[i].name);
      check(samples[i], i);
    }
  }

  /// Nothing where the comparison meets an empty handle.
  static std::optional<bool> isEqual(const T& a, const T& b) {
    try {
      if constexpr (std::is_base_of_v<vxException, T>) {
        return a.message() == b.message();
      } else {
        return a == b;
      }
    } catch (const vxBadPointer&) {
      return std::nullopt;
    }
  }

  static void expectSame(const T& object, const T& expected) {
    EXPECT_EQ(toHex(inPlace(object)), toHex(inPlace(expected)));
    // An object with a NaN differs from itself.
    EXPECT_EQ(isEqual(object, expected), isEqual(expected, expected));
    EXPECT_EQ(isEqual(expected, object), isEqual(expected, expected));
  }

  /// A failed load leaves an object as it was; a tool has released its classifier, unless its own
  /// version byte failed.
  static void expectLeft(const T& target, const std::string& before) {
    const std::string left = inPlace(target);
    const bool isEmptyTool = isTool<T> && left == inPlace(vxClassifierTool());
    if (left != before && !isEmptyTool) ADD_FAILURE() << "left as " << toHex(left);
  }

  /// Everything can be done to an object that arrived, and it arrives the same again.
  static void expectUsable(const T& object, T target) {
    tryAll([&object] { return isEqual(object, object); });
    Archived<T>::use(object);
    const std::string bytes = inPlace(object);
    const T copy(object);
    if constexpr (isTool<T>) {
      EXPECT_EQ(inPlace(copy), object.isTrained() ? bytes : inPlace(vxClassifierTool()));
    } else {
      EXPECT_EQ(inPlace(copy), bytes);
    }
    if constexpr (isPersistent<T> && HasClone<T>::value) {
      EXPECT_EQ(inPlace(*object.clone()), bytes);
    }
    load(bytes, target);
    EXPECT_EQ(inPlace(target), bytes);
  }

  /// Loads bytes that need not be an archive, in place or through a pointer.
  void tryLoad(const std::string& bytes, bool throughPointer, std::size_t number) const {
    // However large a count, memory is taken for what has arrived only.
    constexpr std::size_t kMemory = 100'000;
    T target = other(number);
    const std::string before = inPlace(target);
    std::shared_ptr<T> arrived;
    const AllocationMeter meter;
    const bool loaded = succeedsOrRefuses([&] {
      if (!throughPointer) {
        loadFront(bytes, target);
      } else if constexpr (isPersistent<T>) {
        arrived = loadPointer<T>(bytes);
      }
    });
    EXPECT_LT(meter.bytes(), kMemory);
    if (!loaded) {
      expectLeft(target, before);
    } else if (!throughPointer) {
      expectUsable(target, other(number));
    } else if (arrived != nullptr) {
      expectUsable(*arrived, other(number));
    }
  }

  /// Every other value of every byte; of a large archive, some values that hit counts and kinds.
  template <class Check>
  static void forEachChange(const std::string& bytes, Check check) {
    constexpr std::size_t kSmall = 64;
    if (bytes.size() <= kSmall) {
      forEachByteChange(bytes, check);
      return;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      for (const int change : {0x01, 0x02, 0x03, 0x10, 0x40, 0x7f, 0x80, 0xff}) {
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
    this->expectUsable(target, this->other(i));
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
        this->expectLeft(target, before);
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
      this->expectLeft(target, before);
    });
    if constexpr (isPersistent<TypeParam>) {
      forEachTruncation(byPointer(sample.object), [](const std::string& bytes) {
        EXPECT_THROW(loadPointer<TypeParam>(bytes), vxArchive::Errors);
      });
    }
  });
}

TYPED_TEST(ArchiveTest, SurvivesEachByteChange) {
  this->forEachSample([this](const Sample<TypeParam>& sample, std::size_t i) {
    this->forEachChange(inPlace(sample.object),
                        [&](const std::string& bytes) { this->tryLoad(bytes, false, i); });
    if constexpr (isPersistent<TypeParam>) {
      this->forEachChange(byPointer(sample.object),
                          [&](const std::string& bytes) { this->tryLoad(bytes, true, i); });
    }
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
