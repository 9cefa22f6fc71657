// SPDX-License-Identifier: MIT
#include "clastool/clastool/lent.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/allocation_meter.h"

namespace {

/// A class for each test, so that none finds what another one left.
template <int test>
struct Room {
  std::vector<int> numbers;
};

TEST(LentTest, KeepsItsRoomForTheNextCall) {
  const int* numbers = nullptr;
  {
    vx_Lent<Room<1>> lent;
    lent->numbers.assign(100, 7);
    numbers = lent->numbers.data();
  }
  const AllocationMeter meter;
  vx_Lent<Room<1>> lent;
  lent->numbers.assign(100, 8);
  EXPECT_EQ((*lent).numbers.data(), numbers);
  EXPECT_EQ(meter.calls(), 0u);
}

TEST(LentTest, GivesACallInsideTheCallAnotherOne) {
  vx_Lent<Room<2>> outer;
  outer->numbers.assign(3, 1);
  {
    vx_Lent<Room<2>> inner;
    EXPECT_NE(&*inner, &*outer);
    inner->numbers.assign(5, 2);
  }
  vx_Lent<Room<2>> next;
  EXPECT_NE(&*next, &*outer);
  EXPECT_EQ(outer->numbers, std::vector<int>(3, 1));
}

TEST(LentTest, IsGivenBackWhereTheCallThrows) {
  const Room<3>* first = nullptr;
  try {
    vx_Lent<Room<3>> lent;
    first = &*lent;
    throw std::runtime_error("stop");
  } catch (const std::runtime_error&) {
  }
  vx_Lent<Room<3>> lent;
  EXPECT_EQ(&*lent, first);
}

TEST(LentTest, BelongsToItsThread) {
  vx_Lent<Room<4>> here;
  std::thread([&] {
    vx_Lent<Room<4>> lent;
    EXPECT_NE(&*lent, &*here);
  }).join();
}

/// Lends once more when everything else of its thread is gone.
struct LendsAtTheEnd {
  ~LendsAtTheEnd() {
    vx_Lent<Room<5>> lent;
    lent->numbers.assign(10, 1);
  }
};

TEST(LentTest, LeaksNothingThatAThreadLendsAtItsEnd) {
  std::thread([] {
    static thread_local LendsAtTheEnd last;  // made first, so destroyed last
    static_cast<void>(&last);
    vx_Lent<Room<5>> lent;
    lent->numbers.assign(10, 1);
  }).join();
}

}  // namespace
