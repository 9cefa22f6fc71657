// SPDX-License-Identifier: MIT
#include "vxfoundation/exception.h"

#include <gtest/gtest.h>

#include <exception>
#include <sstream>
#include <string>
#include <type_traits>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"
#include "tests/support/error_matcher.h"
#include "tests/support/grouping_locale.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/matrix.h"

namespace {

using samples::Trouble;

template <class Derived, class Base>
constexpr bool kIsUnder = std::is_convertible_v<Derived*, Base*>;

static_assert(kIsUnder<vxException, vxPersistent>);
static_assert(kIsUnder<vxExceptionWithString, vxException>);
static_assert(kIsUnder<vxBadPointer, vxExceptionWithString>);
static_assert(kIsUnder<vxStopRequested, vxExceptionWithString>);
static_assert(kIsUnder<vxStatusException, vxExceptionWithString>);
static_assert(kIsUnder<vxBadMatrix, vxExceptionWithString>);
static_assert(kIsUnder<vxArchive::Errors, vxExceptionWithString>);
static_assert(kIsUnder<vxArchive::UnknownVersion, vxArchive::Errors>);
static_assert(kIsUnder<vxArchive::Malformed, vxArchive::Errors>);
static_assert(kIsUnder<vxArchive::Unstorable, vxArchive::Errors>);
static_assert(kIsUnder<vxArchive::StreamFailure, vxArchive::Errors>);
static_assert(!kIsUnder<vxException, std::exception>, "a main catches both");
static_assert(std::is_abstract_v<vxException>);
static_assert(!std::is_constructible_v<vxExceptionWithString, std::wstring>, "only below");

/// Makes the `Leaf` that a test throws.
template <class Leaf>
Leaf* newError() {
  return new Leaf;
}
template <>
vxStatusException* newError() {
  return new vxStatusException(7);
}

template <class Leaf>
class FoundationErrorTest : public testing::Test {};
using Leaves = testing::Types<vxBadPointer, vxStopRequested, vxStatusException, vxBadMatrix,
                              vxArchive::UnknownVersion, vxArchive::Malformed,
                              vxArchive::Unstorable, vxArchive::StreamFailure>;
struct LeafName {
  template <class Leaf>
  static std::string GetName(int) {
    const std::string name = vfClassName(typeid(Leaf));
    return name.substr(name.rfind(':') + 1);
  }
};
TYPED_TEST_SUITE(FoundationErrorTest, Leaves, LeafName);

TYPED_TEST(FoundationErrorTest, ThrowsItsExactClassFromTheHeap) {
  vxException* error = newError<TypeParam>();
  const long number = error->errorNumber();
  const std::wstring text = static_cast<TypeParam*>(error)->message();
  expectThrows<TypeParam>([error] { error->suicideAndRethrow(); }, text, number);
}

TYPED_TEST(FoundationErrorTest, HasANumberOutsideTheLibrariesBlock) {
  vxException* error = newError<TypeParam>();
  EXPECT_GE(error->errorNumber(), 0x10000000);
  EXPECT_LE(error->errorNumber(), 0x7fffffff);
  EXPECT_FALSE(error->errorNumber() >= 0x10004200 && error->errorNumber() <= 0x10004207);
  EXPECT_THROW(error->suicideAndRethrow(), vxException);
}

TYPED_TEST(FoundationErrorTest, IsNotRegisteredForArchives) {
  EXPECT_EQ(vx_Instantiator::find(vfClassName(typeid(TypeParam))), nullptr);
}

TEST(ExceptionTest, GivesEveryFoundationClassANumberOfItsOwnForGood) {
  // Hosts report these, so they never change.
  EXPECT_EQ(vxBadPointer().errorNumber(), 0x10000000);
  EXPECT_EQ(vxStopRequested().errorNumber(), 0x10000001);
  EXPECT_EQ(vxStatusException(0).errorNumber(), 0x10000002);
  EXPECT_EQ(vxBadMatrix().errorNumber(), 0x10000003);
  EXPECT_EQ(vxArchive::UnknownVersion().errorNumber(), 0x10000004);
  EXPECT_EQ(vxArchive::Malformed().errorNumber(), 0x10000005);
  EXPECT_EQ(vxArchive::Unstorable().errorNumber(), 0x10000006);
  EXPECT_EQ(vxArchive::StreamFailure().errorNumber(), 0x10000007);
}

TEST(ExceptionTest, CarriesItsMessage) {
  const Trouble error(std::wstring(L"k \u2265 1\0!", 7));
  EXPECT_EQ(error.message(), std::wstring(L"k \u2265 1\0!", 7));
  EXPECT_EQ(Trouble().message(), L"");
}

TEST(ExceptionTest, PutsTheNumberInHexadecimalInFrontOfTheMessage) {
  EXPECT_EQ(Trouble(L"text").message(true), L"0x20000001: text");
  EXPECT_EQ(vxBadPointer().message(false), L"");
  EXPECT_EQ(vxBadPointer().message(true).substr(0, 10), L"0x10000000");
}

TEST(ExceptionTest, WritesItsMessageToAStream) {
  std::wostringstream out;
  const vxExceptionWithString& error = Trouble(L"text");
  error.message_(out);
  EXPECT_EQ(out.str(), L"text");
}

TEST(ExceptionTest, KeepsItsMessageInAnyLocale) {
  const GroupingLocale locale;
  EXPECT_EQ(Trouble(L"1234567").message(true), L"0x20000001: 1234567");
}

TEST(ExceptionTest, CopiesAndAssignsItsMessage) {
  const Trouble source(L"source");
  const Trouble copy(source);
  EXPECT_EQ(copy.message(), L"source");
  Trouble target(L"target");
  target = source;
  EXPECT_EQ(target.message(), L"source");
  EXPECT_EQ(target.errorNumber(), source.errorNumber());
}

TEST(ExceptionTest, IsCaughtAsAnyOfItsBases) {
  EXPECT_THROW(throw Trouble(L"text"), vxExceptionWithString);
  EXPECT_THROW(throw Trouble(L"text"), vxException);
  EXPECT_THROW(throw Trouble(L"text"), vxPersistent);
  EXPECT_THROW(throw vxArchive::UnknownVersion(), vxArchive::Errors);
}

TEST(ExceptionTest, FreesTheHeapObjectThatItRethrows) {
  const int before = Trouble::numAlive();
  vxException* error = new Trouble(L"text");
  expectThrows<Trouble>([error] { error->suicideAndRethrow(); }, L"text", 0x20000001);
  EXPECT_EQ(Trouble::numAlive(), before);
}

TEST(ExceptionTest, IsArchivedWithItsMessage) {
  Trouble error(L"k\u2265");
  // The host's level, the foundation's level, count, characters.
  EXPECT_EQ(storedHex(error), packedHex("00 00 02000000 6b000000 65220000"));

  Trouble read(L"old");
  load(stored(error), read);
  EXPECT_EQ(read.message(), L"k\u2265");
}

TEST(ExceptionTest, RefusesAnotherVersionAtEachLevelAndStaysAsItWas) {
  const struct {
    const char* bytes;
    std::string name;
  } rows[] = {{"01 00 00000000", "samples::Trouble"}, {"00 01 00000000", ""}};
  for (const auto& row : rows) {
    Trouble target(L"old");
    try {
      load(fromHex(row.bytes), target);
      ADD_FAILURE() << row.bytes;
    } catch (const vxArchive::UnknownVersion& error) {
      EXPECT_EQ(error.name(), row.name);
      EXPECT_EQ(error.number(), 0);
    }
    EXPECT_EQ(target.message(), L"old");
  }
}

TEST(ExceptionTest, KeepsItsMessageWhenItsBytesAreCutShort) {
  Trouble error(L"new");
  forEachTruncation(stored(error), [](const std::string& bytes) {
    Trouble target(L"old");
    EXPECT_THROW(load(bytes, target), vxArchive::Malformed);
    EXPECT_EQ(target.message(), L"old");
  });
}

TEST(UnknownVersionTest, CarriesANameAndANumber) {
  const vxArchive::UnknownVersion named("clss/clastool/clastool", 262);
  EXPECT_EQ(named.name(), "clss/clastool/clastool");
  EXPECT_EQ(named.number(), 262);
  const vxArchive::UnknownVersion plain;
  EXPECT_EQ(plain.name(), "");
  EXPECT_EQ(plain.number(), 0);
}

}  // namespace
