// SPDX-License-Identifier: MIT
#include "tests/support/error_matcher.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "vxfoundation/matrix.h"

namespace {

class Derived : public vxBadMatrix {
 public:
  using vxBadMatrix::vxBadMatrix;
};

constexpr long kNumber = 0x10000003;

TEST(ErrorMatcherTest, AcceptsTheErrorThatIsExpected) {
  expectThrows<vxBadMatrix>([] { throw vxBadMatrix(L"text"); }, L"text", kNumber);
  expectThrows<vxBadMatrix>([] { throw vxBadMatrix(L"text"); }, L"text");
  const int object = 5;
  expectRefused<vxBadMatrix>(
      object, [] { throw vxBadMatrix(); }, L"");
}

TEST(ErrorMatcherTest, RefusesEverythingElse) {
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] {}, L""), "threw nothing");
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] { throw vxBadPointer(); }, L""),
                          "threw vxBadPointer");
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] { throw std::runtime_error("why"); }, L""),
                          "why");
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] { throw vxBadMatrix(L"text"); }, L"texts"),
                          "message");
  EXPECT_NONFATAL_FAILURE(
      expectThrows<vxBadMatrix>([] { throw vxBadMatrix(L"text"); }, L"text", kNumber + 1),
      "errorNumber");
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] { throw Derived(); }, L""), "Derived");
}

TEST(ErrorMatcherTest, SeesAnObjectThatAFailedCallChanged) {
  static int object;
  object = 5;
  EXPECT_NONFATAL_FAILURE(expectRefused<vxBadMatrix>(
                              object,
                              [] {
                                object = 6;
                                throw vxBadMatrix();
                              },
                              L""),
                          "object == before");
}

TEST(ErrorMatcherTest, ReportsTheLineOfItsCaller) {
  EXPECT_NONFATAL_FAILURE(expectThrows<vxBadMatrix>([] {}, L""), "error_matcher_test.cpp");
}

}  // namespace
