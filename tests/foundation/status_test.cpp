// SPDX-License-Identifier: MIT
#include "vxfoundation/status.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/support/error_matcher.h"
#include "vxfoundation/exception.h"

namespace {

struct Converted {
  long status;
};

std::vector<long> asked;

void throwConverted(long status) {
  asked.push_back(status);
  throw Converted{status};
}
void declineAll(long status) { asked.push_back(status); }
void throwForCodeOneOnly(long status) {
  if ((status & 31) == 1) throw Converted{status};
}

std::uint32_t word(long status) { return static_cast<std::uint32_t>(status); }

/// A failure status of a module, as the kernel that reports it would build it.
long failure(long module, long code) {
  return static_cast<long>(0x80000000UL | static_cast<unsigned long>(module) << 5 |
                           static_cast<unsigned long>(code));
}
/// The same 32 bits in a long of 32 bits, or sign-extended.
long signExtended(long status) { return static_cast<std::int32_t>(word(status)); }

/// Registers a converter for the length of a test.
class Registered {
 public:
  Registered(long module, void (*converter)(long)) : module_(module) {
    vfRegisterExceptionConverter(module, converter);
    asked.clear();
  }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  ~Registered() { vfRegisterExceptionConverter(module_, nullptr); }

 private:
  long module_;
};

/// The status that an unclaimed failure carries, as 32 bits.
std::uint32_t unclaimed(long status) {
  try {
    vfThrowExceptionOnFailure(status);
  } catch (const vxStatusException& error) {
    return word(error.status());
  }
  ADD_FAILURE() << "nothing thrown for " << status;
  return 0;
}

TEST(StatusTest, BuildsTheStatusOfModule91FromItsParts) {
  EXPECT_EQ(word(failure(91, 1)), 0x80000b61u);
  EXPECT_EQ(word(failure(91, 2)), 0x80000b62u);
}

TEST(StatusTest, DoesNothingForASuccess) {
  const Registered everything(91, throwConverted);
  for (const long status : {0L, 1L, 0xb61L, 0x7fffffffL}) {
    EXPECT_NO_THROW(vfThrowExceptionOnFailure(status)) << status;
  }
  EXPECT_TRUE(asked.empty());
}

TEST(StatusTest, LooksOnlyAtTheLow32Bits) {
  if (sizeof(long) == 4) GTEST_SKIP() << "a long has no other bits";
  const Registered kernel(91, throwConverted);
  const auto above = static_cast<long>(0x4000000000000000LL);
  EXPECT_NO_THROW(vfThrowExceptionOnFailure(above | 0xb61));
  EXPECT_THROW(vfThrowExceptionOnFailure(above | failure(91, 1)), Converted);
}

TEST(StatusTest, AsksTheConverterOfTheModule) {
  const long modules[] = {0, 3, 90, 91, 92, 0x3ffffff};
  for (const long module : modules) {
    const Registered registered(module, throwConverted);
    for (const long status : {failure(module, 0), failure(module, 31)}) {
      EXPECT_THROW(vfThrowExceptionOnFailure(status), Converted) << module;
      EXPECT_THROW(vfThrowExceptionOnFailure(signExtended(status)), Converted) << module;
    }
    ASSERT_EQ(asked.size(), 4u);
    EXPECT_EQ(word(asked[0]), word(failure(module, 0)));
    EXPECT_EQ(word(asked[3]), word(failure(module, 31)));
    const long neighbour = module == 0 ? 1 : module - 1;
    EXPECT_THROW(vfThrowExceptionOnFailure(failure(neighbour, 5)), vxException);
    EXPECT_EQ(asked.size(), 4u) << "the neighbour's failures are not its own";
  }
}

TEST(StatusTest, ThrowsAStatusExceptionWhereNoConverterIsRegistered) {
  EXPECT_EQ(unclaimed(failure(77, 4)), word(failure(77, 4)));
  EXPECT_EQ(unclaimed(signExtended(failure(77, 4))), word(failure(77, 4)));
}

TEST(StatusTest, ThrowsAStatusExceptionWhereTheConverterReturns) {
  const Registered registered(78, declineAll);
  EXPECT_EQ(unclaimed(failure(78, 9)), word(failure(78, 9)));
  EXPECT_EQ(asked.size(), 1u);
}

TEST(StatusTest, LeavesEachCodeToItsConverter) {
  const Registered registered(79, throwForCodeOneOnly);
  EXPECT_THROW(vfThrowExceptionOnFailure(failure(79, 1)), Converted);
  EXPECT_EQ(unclaimed(failure(79, 2)), word(failure(79, 2)));
}

TEST(StatusTest, ReplacesAConverterByALaterOne) {
  const Registered first(80, declineAll);
  const Registered second(80, throwConverted);
  EXPECT_THROW(vfThrowExceptionOnFailure(failure(80, 1)), Converted);
  EXPECT_EQ(asked.size(), 1u);
}

TEST(StatusTest, RemovesAConverterByNull) {
  { const Registered registered(81, throwConverted); }
  EXPECT_EQ(unclaimed(failure(81, 1)), word(failure(81, 1)));
}

TEST(StatusTest, KeepsTheConvertersOfSeveralModulesApart) {
  const Registered first(82, throwConverted);
  const Registered second(83, declineAll);
  EXPECT_THROW(vfThrowExceptionOnFailure(failure(82, 1)), Converted);
  EXPECT_EQ(unclaimed(failure(83, 1)), word(failure(83, 1)));
}

TEST(StatusExceptionTest, IsAFoundationErrorWithItsStatus) {
  const vxStatusException error(failure(91, 1));
  EXPECT_EQ(word(error.status()), 0x80000b61u);
  const vxStatusException copy(error);
  EXPECT_EQ(copy.status(), error.status());
  EXPECT_EQ(copy.message(), error.message());
}

}  // namespace
