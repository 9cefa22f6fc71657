// SPDX-License-Identifier: MIT
#include "vxclss/data_provider.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/error_matcher.h"
#include "vxclss/errors.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/handle.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;
using Provider = vxClassifierDataProviderMemory;
using Handle = vxPtrHandle_const<vxFeaturePattern>;

const wchar_t* const kUnequalNumbers =
    L"The number of the feature patterns must be equal to the number of category labels";
const wchar_t* const kUnequalPatterns =
    L"Feature patterns must all have the same number of measurements";
const wchar_t* const kUnequalToTheRest =
    L"Feature pattern must have the same number of measurements as the rest of the data.";
const wchar_t* const kBadLabel = L"Category labels must be >= 0 or unknown";
const wchar_t* const kBadPatternIndex =
    L"Feature pattern index must be >=0 and < number of patterns.";
const wchar_t* const kBadLabelIndex = L"Category label index must be >=0 and < number of patterns.";

static_assert(std::is_base_of_v<vxPersistent, vxClassifierDataProvider>);
static_assert(std::is_base_of_v<vxRepBase, vxClassifierDataProvider>);
static_assert(std::is_abstract_v<vxClassifierDataProvider>);
static_assert(!std::is_assignable_v<vxClassifierDataProvider&, const vxClassifierDataProvider&>);

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

/// A host's provider of one pattern.
class HostProvider : public vxClassifierDataProvider {
 public:
  std::wstring name() const override { return L"host"; }
  std::wstring description() const override { return L""; }
  long numMeasurements() const override { return 1; }
  long numPatterns() const override { return 1; }
  Handle featurePattern(long) const override { return pattern({1.0}); }
  long categoryLabel(long) const override { return 0; }

  void assign(const HostProvider& other) { vxClassifierDataProvider::operator=(other); }
};

/// Shows some of its patterns only.
class Window : public Provider {
 public:
  long numPatterns() const override { return shown; }
  long shown = 0;
};

TEST(DataProviderMemoryTest, StartsEmpty) {
  const Provider provider;
  EXPECT_EQ(provider.name(), L"");
  EXPECT_EQ(provider.description(), L"");
  EXPECT_EQ(provider.numPatterns(), 0);
  EXPECT_EQ(provider.numMeasurements(), 0);
  EXPECT_TRUE(provider == Provider());
}

TEST(DataProviderMemoryTest, HoldsWhatItWasGiven) {
  const Handle first = pattern({1, 2});
  Provider provider;
  provider.data({first, pattern({3, 4})}, {7, -1});
  EXPECT_EQ(provider.numPatterns(), 2);
  EXPECT_EQ(provider.numMeasurements(), 2);
  EXPECT_TRUE(provider.featurePattern(0) == first) << "shared, not copied";
  EXPECT_EQ(first->referenceCount(), 2);
  EXPECT_EQ(provider.categoryLabel(0), 7);
  EXPECT_EQ(provider.categoryLabel(1), -1);

  provider.data({}, {});
  EXPECT_EQ(provider.numPatterns(), 0);
  EXPECT_EQ(first->referenceCount(), 1);
}

TEST(DataProviderMemoryTest, KeepsItsTexts) {
  Provider provider;
  const std::wstring text(L"k\u00e9\0\u4e2d", 4);
  provider.setName(text);
  provider.setDescription(L"d");
  EXPECT_EQ(provider.name(), text);
  EXPECT_EQ(provider.description(), L"d");
  provider.data({pattern({1})}, {0});
  EXPECT_EQ(provider.name(), text) << "data replaces patterns and labels only";
}

TEST(DataProviderMemoryTest, RefusesDataInTheOrderOfItsChecks) {
  const Handle none;
  const Handle one = pattern({1});
  const Handle two = pattern({1, 2});
  struct Row {
    const char* name;
    std::vector<Handle> patterns;
    std::vector<long> labels;
    const wchar_t* text;
  };
  const Row features[] = {
      {"a label too few", {one, one}, {0}, kUnequalNumbers},
      {"a label too many", {}, {0}, kUnequalNumbers},
      {"numbers before measurements", {one, two}, {0}, kUnequalNumbers},
      {"numbers before labels", {one}, {-2, -2}, kUnequalNumbers},
      {"numbers before empty handles", {none, none}, {0}, kUnequalNumbers},
      {"measurements", {one, one, two}, {0, 0, 0}, kUnequalPatterns},
      {"an empty pattern among others", {one, pattern({})}, {0, 0}, kUnequalPatterns},
      {"measurements before labels", {one, two}, {-2, 0}, kUnequalPatterns},
      {"measurements before a later empty handle", {one, two, none}, {0, 0, 0}, kUnequalPatterns},
  };
  for (const Row& row : features) {
    SCOPED_TRACE(row.name);
    Provider provider = filled();
    expectRefused<BadFeatures>(
        provider, [&] { provider.data(row.patterns, row.labels); }, row.text);
  }
  const Row labels[] = {
      {"one pattern", {one}, {-2}, kBadLabel},
      {"the last label", {one, one}, {0, -2}, kBadLabel},
      {"smallest", {one}, {std::numeric_limits<long>::min()}, kBadLabel},
      {"labels, though the only handle is empty", {none}, {-2}, kBadLabel},
  };
  for (const Row& row : labels) {
    SCOPED_TRACE(row.name);
    Provider provider = filled();
    expectRefused<BadLabel>(
        provider, [&] { provider.data(row.patterns, row.labels); }, row.text);
  }
  const Row pointers[] = {
      {"first", {none, one}, {0, 0}, L""},
      {"second", {one, none}, {0, 0}, L""},
      {"before a later mismatch", {one, none, two}, {0, 0, 0}, L""},
      {"before labels", {one, none}, {-2, -2}, L""},
  };
  for (const Row& row : pointers) {
    SCOPED_TRACE(row.name);
    Provider provider = filled();
    expectRefused<vxBadPointer>(
        provider, [&] { provider.data(row.patterns, row.labels); }, row.text);
  }
}

TEST(DataProviderMemoryTest, AcceptsOneEmptyHandleUnseen) {
  Provider provider;
  provider.data({Handle()}, {3});
  EXPECT_EQ(provider.numPatterns(), 1);
  EXPECT_TRUE(provider.featurePattern(0).isNull());
  expectThrows<vxBadPointer>([&] { provider.numMeasurements(); }, L"");
  expectThrows<vxBadPointer>([&] { provider.addData(pattern({1}), 0); }, L"");
  const Provider copy(provider);
  EXPECT_THROW(static_cast<void>(copy == provider), vxBadPointer);
  EXPECT_EQ(provider.numPatterns(), 1);
}

TEST(DataProviderMemoryTest, AddsPatternsOfOneLength) {
  for (const std::size_t length : {0u, 1u, 5u}) {
    Provider provider;
    provider.addData(pattern(std::vector<double>(length)), -1);
    provider.addData(pattern(std::vector<double>(length)), 2);
    EXPECT_EQ(provider.numPatterns(), 2);
    EXPECT_EQ(provider.numMeasurements(), static_cast<long>(length));
    EXPECT_EQ(provider.categoryLabel(0), -1);
    EXPECT_EQ(provider.categoryLabel(1), 2);
    const Handle longer = pattern(std::vector<double>(length + 1));
    expectRefused<BadFeatures>(
        provider, [&] { provider.addData(longer, 0); }, kUnequalToTheRest);
  }
}

TEST(DataProviderMemoryTest, RefusesAnAdditionInTheOrderOfItsChecks) {
  Provider provider = filled();
  expectRefused<BadFeatures>(
      provider, [&] { provider.addData(pattern({1}), -2); }, kUnequalToTheRest);
  expectRefused<vxBadPointer>(
      provider, [&] { provider.addData(Handle(), -2); }, L"");
  expectRefused<BadLabel>(
      provider,
      [&] {
        provider.addData(pattern({1, 2}), -2);
      },
      kBadLabel);

  Provider empty;
  expectRefused<BadLabel>(
      empty, [&] { empty.addData(pattern({1}), -2); }, kBadLabel);
  expectRefused<BadLabel>(
      empty, [&] { empty.addData(Handle(), -2); }, kBadLabel);
  empty.addData(Handle(), -1);
  EXPECT_EQ(empty.numPatterns(), 1) << "nothing is there to compare the first handle with";
}

TEST(DataProviderMemoryTest, RefusesAnIndexOutside) {
  const Provider provider = filled();
  for (const long index :
       {-1L, 2L, std::numeric_limits<long>::min(), std::numeric_limits<long>::max()}) {
    expectThrows<BadIndex>([&] { provider.featurePattern(index); }, kBadPatternIndex);
    expectThrows<BadIndex>([&] { provider.categoryLabel(index); }, kBadLabelIndex);
  }
  expectThrows<BadIndex>([] { Provider().featurePattern(0); }, kBadPatternIndex);
  expectThrows<BadIndex>([] { Provider().categoryLabel(0); }, kBadLabelIndex);
}

TEST(DataProviderMemoryTest, AsksADerivedClassForTheNumberOfPatterns) {
  Window window;
  window.addData(pattern({1}), 0);
  window.addData(pattern({1, 2}), 1);  // nothing is shown, so there is nothing to match
  expectThrows<BadIndex>([&] { window.featurePattern(0); }, kBadPatternIndex);
  expectThrows<BadIndex>([&] { window.categoryLabel(0); }, kBadLabelIndex);
  window.shown = 1;
  EXPECT_EQ(window.categoryLabel(0), 0);
  expectThrows<BadIndex>([&] { window.categoryLabel(1); }, kBadLabelIndex);
  expectThrows<BadFeatures>([&] { window.addData(pattern({1, 2}), 1); }, kUnequalToTheRest);
}

TEST(DataProviderMemoryTest, ComparesContents) {
  const Provider provider = filled();
  EXPECT_TRUE(provider == filled()) << "equal patterns in different objects";
  EXPECT_FALSE(provider != filled());

  Provider changed = filled();
  changed.setName(L"Parts");
  EXPECT_TRUE(provider != changed);
  changed = filled();
  changed.setDescription(L"");
  EXPECT_TRUE(provider != changed);
  changed = filled();
  changed.data({pattern({1, 2}), pattern({3, 4})}, {7, 0});
  EXPECT_TRUE(provider != changed);
  changed = filled();
  changed.data({pattern({1, 2}), pattern({3, 5})}, {7, -1});
  EXPECT_TRUE(provider != changed);
  changed = filled();
  changed.addData(pattern({5, 6}), 0);
  EXPECT_TRUE(provider != changed);
  EXPECT_TRUE(changed != provider);
}

TEST(DataProviderMemoryTest, DiffersFromItselfWhereAPatternHoldsANan) {
  Provider provider;
  provider.addData(pattern({std::numeric_limits<double>::quiet_NaN()}), 0);
  EXPECT_FALSE(provider == provider);
}

TEST(DataProviderMemoryTest, ComparesNumbersOfPatternsBeforePatternsBeforeTexts) {
  Provider withoutPattern;
  withoutPattern.data({Handle()}, {0});
  Provider two;
  two.data({pattern({1}), pattern({1})}, {0, 0});
  EXPECT_FALSE(withoutPattern == two) << "no pattern is looked at";
  Provider renamed(withoutPattern);
  renamed.setName(L"other");
  EXPECT_THROW(static_cast<void>(withoutPattern == renamed), vxBadPointer);
}

TEST(DataProviderMemoryTest, DiffersFromAnotherClassOfProvider) {
  Provider memory;
  memory.addData(pattern({1.0}), 0);
  memory.setName(L"host");
  const HostProvider host;
  EXPECT_FALSE(memory == host);
  EXPECT_TRUE(host == memory) << "the left operand decides";
  const Window window;
  EXPECT_TRUE(Provider() == window) << "a derived class is one of its kind";
}

TEST(DataProviderMemoryTest, SharesPatternsWithItsCopies) {
  const Provider provider = filled();
  Provider copy(provider);
  EXPECT_TRUE(copy == provider);
  EXPECT_TRUE(copy.featurePattern(1) == provider.featurePattern(1));
  copy.addData(pattern({5, 6}), 0);
  EXPECT_TRUE(provider == filled());
  copy = provider;
  EXPECT_TRUE(copy == provider);
  const Provider& same = copy;
  copy = same;
  EXPECT_TRUE(copy == provider);
}

TEST(DataProviderMemoryTest, TakesItsOwnContentBack) {
  Provider provider = filled();
  provider.addData(provider.featurePattern(0), provider.categoryLabel(0));
  EXPECT_TRUE(provider.featurePattern(2) == provider.featurePattern(0));
  EXPECT_EQ(provider.categoryLabel(2), 7);

  const Handle last = provider.featurePattern(2);
  provider.data({provider.featurePattern(1), provider.featurePattern(0)}, {1, 2});
  EXPECT_EQ(provider.numPatterns(), 2);
  EXPECT_TRUE(provider.featurePattern(1) == last);
  provider.setName(provider.name() + provider.description());
  provider.setDescription(provider.name());
  EXPECT_EQ(provider.description(), L"partsof line 3");
}

TEST(DataProviderTest, CopiesNothingInTheBase) {
  const HostProvider first;
  HostProvider second(first);
  second.assign(first);
  EXPECT_TRUE(first == second) << "the base has nothing to compare";
}

}  // namespace
