// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <typeinfo>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/plain_rules.h"
#include "vxclss/errors.h"
#include "vxclss/feature_score.h"

namespace {

using Handle = vxPtrHandle<vxClsFtSc>;
using Ignore = vxClassifierFeatureScoreIgnore;
using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;

// 0, 1, 1, 1, 0 and 0, -1, -1, 1, 0.
const std::string kOneSided =
    "0000000000000000 000000000000f03f 000000000000f03f 000000000000f03f 0000000000000000 ";
const std::string kLowSide =
    "0000000000000000 000000000000f0bf 000000000000f0bf 000000000000f03f 0000000000000000 ";

// 5682, 33385, 59820.
const std::string kIgnoreTag = "32160000 ";
const std::string kOneSidedTag = "69820000 ";
const std::string kTwoSidedTag = "ace90000 ";

TEST(FeatureScoreArchiveTest, HasBareValuesWithoutAVersion) {
  Ignore ignore;
  EXPECT_EQ(stored(ignore), "");
  OneSided one;
  EXPECT_EQ(storedHex(one), packedHex(kOneSided));
  TwoSided two;
  EXPECT_EQ(storedHex(two), packedHex(kLowSide + kOneSided));
}

TEST(FeatureScoreArchiveTest, HasATagInFrontOfTheValuesOfAHandle) {
  Handle ignore(new Ignore);
  Handle one(new OneSided);
  Handle two(new TwoSided);
  EXPECT_EQ(storedHex(ignore), packedHex(kIgnoreTag));
  EXPECT_EQ(storedHex(one), packedHex(kOneSidedTag + kOneSided));
  EXPECT_EQ(storedHex(two), packedHex(kTwoSidedTag + kLowSide + kOneSided));
  EXPECT_EQ(storedHex(one, one), packedHex(kOneSidedTag + kOneSided + kOneSidedTag + kOneSided))
      << "values, not references";
}

TEST(FeatureScoreArchiveTest, RoundTripsIntoAnyHandle) {
  Handle rows[] = {Handle(new Ignore), plain::Function{{{2, 5, 10, 1, 0.5}}}.handle(),
                   plain::Function{{{10, 5, 2, 1, 0.5}}}.handle(),
                   plain::Function{{{3, 2, 1, 0.1, 0.2}, {4, 5, 6, 0.3, 0.4}}}.handle()};
  for (Handle& source : rows) {
    for (const Handle& former : {Handle(), Handle(new Ignore), Handle(new OneSided)}) {
      Handle target = former;
      load(stored(source), target);
      ASSERT_FALSE(target.isNull());
      EXPECT_TRUE(*target == *source);
      const vxClsFtSc& arrived = *target;
      const vxClsFtSc& sent = *source;
      EXPECT_EQ(typeid(arrived), typeid(sent));
      EXPECT_EQ(target->referenceCount(), 1);
      EXPECT_NE(target, former) << "a new function, also where one of the class stood";
    }
  }
}

TEST(FeatureScoreArchiveTest, BringsASharedFunctionBackAsSeveral) {
  Handle shared(new OneSided);
  Handle a;
  Handle b;
  load(stored(shared, shared), a, b);
  EXPECT_NE(a, b);
  EXPECT_TRUE(*a == *b);
}

TEST(FeatureScoreArchiveTest, KeepsTheFunctionWhereTheTagIsUnknown) {
  for (const char* tag : {"00000000", "33160000", "6882 0000", "ace90001", "ffffffff"}) {
    Handle target(new OneSided);
    const Handle before = target;
    load(fromHex(tag), target);
    EXPECT_EQ(target, before) << tag;
    Handle empty;
    load(fromHex(tag), empty);
    EXPECT_TRUE(empty.isNull()) << tag;
  }
}

TEST(FeatureScoreArchiveTest, ReadsNothingAfterAnUnknownTag) {
  Handle first(new Ignore);
  Handle second;
  load(fromHex("01000000" + kOneSidedTag + kOneSided), first, second);
  EXPECT_TRUE(*first == Ignore());
  EXPECT_TRUE(*second == OneSided());
}

TEST(FeatureScoreArchiveTest, StoresNothingForAHostsFunction) {
  Handle host(new HostScore([](double) { return 1.0; }));
  EXPECT_EQ(stored(host), "");
  Handle one(new OneSided);
  EXPECT_EQ(storedHex(host, one, host), packedHex(kOneSidedTag + kOneSided));
}

class DerivedScore : public OneSided {};

TEST(FeatureScoreArchiveTest, StoresNothingForAClassDerivedFromOneOfTheThree) {
  Handle derived(new DerivedScore);
  EXPECT_EQ(stored(derived), "");
}

TEST(FeatureScoreArchiveTest, CannotStoreAnEmptyHandle) {
  Handle empty;
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive archive(stream);
  expectThrows<vxBadPointer>([&] { archive || empty; }, L"");
  EXPECT_EQ(stream.str(), "");
}

TEST(FeatureScoreArchiveTest, LoadsValuesThatNoSetterAcceptsAndReportsThemWhenItScores) {
  double values[] = {0.0, 5.0, 1.0, 7.0, -2.0};
  std::string bytes;
  for (double& value : values) bytes += stored(value);
  OneSided one;
  load(bytes, one);
  EXPECT_EQ(one.x1(), 5.0);
  EXPECT_EQ(one.y0(), 7.0);
  EXPECT_EQ(one.y1(), -2.0);
  expectThrows<vxClassifierDefs::BadParams>([&] { one.score(0); },
                                            L"x1 must lie between x0 and xc");
  TwoSided two;
  load(fromHex(kOneSided + kLowSide), two);
  expectThrows<vxClassifierDefs::BadParams>([&] { two.score(0); }, L"Bad x values");
}

TEST(FeatureScoreArchiveTest, KeepsEveryBit) {
  OneSided one;
  one.x0(-0.0);
  one.x1(std::numeric_limits<double>::quiet_NaN());
  one.xc(0.1);
  OneSided arrived;
  load(stored(one), arrived);
  EXPECT_EQ(plain::bitsOf(arrived.x0()), plain::bitsOf(one.x0()));
  EXPECT_EQ(plain::bitsOf(arrived.x1()), plain::bitsOf(one.x1()));
  EXPECT_EQ(storedHex(arrived), storedHex(one));
}

TEST(FeatureScoreArchiveTest, LeavesItsTargetAloneWhereTheBytesEnd) {
  Handle two(new TwoSided);
  forEachTruncation(stored(two), [](const std::string& bytes) {
    Handle target(new Ignore);
    const Handle before = target;
    EXPECT_THROW(loadFront(bytes, target), vxArchive::Malformed);
    EXPECT_EQ(target, before);
  });
  forEachTruncation(fromHex(kLowSide + kOneSided), [](const std::string& bytes) {
    TwoSided target;
    target.y0(0.5);
    const TwoSided before(target);
    EXPECT_THROW(loadFront(bytes, target), vxArchive::Malformed);
    EXPECT_EQ(target, before);
  });
}

}  // namespace
