// SPDX-License-Identifier: MIT
#include "vxfoundation/handle.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/error_matcher.h"

namespace {

class Part : public vxRepBase {
 public:
  explicit Part(int* deaths = nullptr) : deaths_(deaths) {}
  ~Part() override {
    if (deaths_ != nullptr) ++*deaths_;
  }
  virtual int teeth() const { return 0; }

  int size = 0;
  vxPtrHandle<Part> neighbour;

 private:
  int* deaths_;
};

class Gear : public Part {
 public:
  using Part::Part;
  int teeth() const override { return 12; }
};

class Coated : public virtual Part {
 public:
  int coats = 2;
};
class Painted : public virtual Part {
 public:
  int colour = 3;
};
class Fancy : public Coated, public Painted {};

class Box : public vxPersistent, public vxRepBase {};
class Crate : public Box {};
class Label : public vxPersistent {};

using PartHandle = vxPtrHandle<Part>;
using ConstPartHandle = vxPtrHandle_const<Part>;

static_assert(std::is_constructible_v<PartHandle, Part*>);
static_assert(!std::is_convertible_v<Part*, PartHandle>, "taking a reference must be visible");
static_assert(!std::is_convertible_v<const Part*, ConstPartHandle>);
static_assert(std::is_constructible_v<ConstPartHandle, const Part*>);
static_assert(!std::is_constructible_v<PartHandle, const Part*>);
static_assert(!std::is_convertible_v<PartHandle, bool> &&
              std::is_constructible_v<bool, PartHandle>);
static_assert(std::is_convertible_v<vxPtrHandle<Gear>, PartHandle>);
static_assert(std::is_convertible_v<vxPtrHandle<Gear>, ConstPartHandle>);
static_assert(std::is_convertible_v<vxPtrHandle_const<Gear>, ConstPartHandle>);
static_assert(std::is_convertible_v<PartHandle, ConstPartHandle>);
static_assert(!std::is_constructible_v<vxPtrHandle<Gear>, PartHandle>);
static_assert(!std::is_constructible_v<PartHandle, ConstPartHandle>);
static_assert(!std::is_constructible_v<PartHandle, vxPtrHandle_const<Gear>>);
static_assert(!std::is_constructible_v<PartHandle, vxPtrHandle<Box>>);
static_assert(std::is_same_v<decltype(*std::declval<const PartHandle&>()), Part&>);
static_assert(std::is_same_v<decltype(*std::declval<ConstPartHandle&>()), const Part&>);
static_assert(std::is_same_v<decltype(std::declval<ConstPartHandle&>().operator->()), const Part*>);
static_assert(std::is_same_v<decltype(std::declval<ConstPartHandle&>().get()), const Part*>);
static_assert(std::is_nothrow_move_constructible_v<PartHandle>, "vectors must move, not copy");
static_assert(std::is_same_v<decltype(std::declval<const Part&>().referenceCount()), long>);

TEST(RepBaseTest, CountsFromZero) {
  const Part part;
  EXPECT_EQ(part.referenceCount(), 0);
}

TEST(RepBaseTest, GivesACopyACountOfItsOwn) {
  const PartHandle first(new Part);
  const PartHandle second(first);
  const Part copy(*first);
  EXPECT_EQ(first->referenceCount(), 2);
  EXPECT_EQ(copy.referenceCount(), 0);
}

TEST(RepBaseTest, KeepsBothCountsInAnAssignment) {
  const PartHandle held(new Part);
  const PartHandle heldTwice(new Part);
  const PartHandle second(heldTwice);
  held->size = 5;
  *heldTwice = *held;
  EXPECT_EQ(heldTwice->size, 5);
  EXPECT_EQ(heldTwice->referenceCount(), 2);
  EXPECT_EQ(held->referenceCount(), 1);
}

TEST(InterlockedTest, GivesTheNewValue) {
  std::atomic<std::int32_t> count{41};
  EXPECT_EQ(vfInterlockedIncrement(count), 42);
  EXPECT_EQ(vfInterlockedDecrement(count), 41);
  EXPECT_EQ(count.load(), 41);
}

TEST(PtrHandleTest, IsEmptyByDefault) {
  const PartHandle handle;
  EXPECT_EQ(handle.get(), nullptr);
  EXPECT_TRUE(handle.isNull());
  EXPECT_FALSE(handle);
  EXPECT_TRUE(PartHandle(nullptr).isNull());
}

TEST(PtrHandleTest, GivesItsObject) {
  auto* part = new Gear;
  const PartHandle handle(part);
  EXPECT_EQ(handle.get(), part);
  EXPECT_FALSE(handle.isNull());
  EXPECT_TRUE(handle);
  EXPECT_EQ(handle->teeth(), 12);
  EXPECT_EQ(&*handle, part);
}

TEST(PtrHandleTest, ThrowsBadPointerWithoutAMessageWhenEmpty) {
  const PartHandle empty;
  const ConstPartHandle emptyConst;
  expectThrows<vxBadPointer>([&] { static_cast<void>(empty->size); }, L"");
  expectThrows<vxBadPointer>([&] { static_cast<void>(*empty); }, L"");
  expectThrows<vxBadPointer>([&] { static_cast<void>(emptyConst->size); }, L"");
  expectThrows<vxBadPointer>([&] { static_cast<void>(*emptyConst); }, L"");
}

TEST(PtrHandleTest, DeletesOnceWithTheLastHandle) {
  int deaths = 0;
  PartHandle first(new Part(&deaths));
  {
    const PartHandle second(first);
    const ConstPartHandle third(first);
    EXPECT_EQ(first->referenceCount(), 3);
    first.reset();
    EXPECT_EQ(third->referenceCount(), 2);
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(PtrHandleTest, ResetsToANewObject) {
  int deaths = 0;
  PartHandle handle(new Part(&deaths));
  auto* next = new Part(&deaths);
  handle.reset(next);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(handle.get(), next);
  EXPECT_EQ(next->referenceCount(), 1);
}

TEST(PtrHandleTest, SurvivesAResetToItsOwnObject) {
  int deaths = 0;
  PartHandle handle(new Part(&deaths));
  handle.reset(handle.get());
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(handle->referenceCount(), 1);
}

TEST(PtrHandleTest, SurvivesSelfAssignment) {
  int deaths = 0;
  PartHandle handle(new Part(&deaths));
  PartHandle& same = handle;
  handle = same;
  EXPECT_EQ(handle->referenceCount(), 1);
  handle = std::move(same);
  ASSERT_TRUE(handle);
  EXPECT_EQ(handle->referenceCount(), 1);
  EXPECT_EQ(deaths, 0);
}

TEST(PtrHandleTest, MovesWithoutTouchingTheCount) {
  PartHandle source(new Part);
  const Part* part = source.get();
  PartHandle target(std::move(source));
  EXPECT_TRUE(source.isNull());
  EXPECT_EQ(target.get(), part);
  EXPECT_EQ(part->referenceCount(), 1);

  int deaths = 0;
  PartHandle assigned(new Part(&deaths));
  assigned = std::move(target);
  EXPECT_EQ(deaths, 1);
  EXPECT_TRUE(target.isNull());
  EXPECT_EQ(assigned.get(), part);
  EXPECT_EQ(part->referenceCount(), 1);
}

TEST(PtrHandleTest, AdvancesAlongAListThatItOwns) {
  for (const bool moving : {false, true}) {
    int deaths = 0;
    PartHandle head(new Part(&deaths));
    head->neighbour.reset(new Part(&deaths));
    Part* const second = head->neighbour.get();
    if (moving) {
      head = std::move(head->neighbour);
    } else {
      head = head->neighbour;
    }
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(head.get(), second);
    EXPECT_EQ(second->referenceCount(), 1);
  }
}

TEST(PtrHandleTest, SwapsTwoObjects) {
  PartHandle first(new Part);
  PartHandle second;
  const Part* part = first.get();
  first.swap(second);
  EXPECT_TRUE(first.isNull());
  EXPECT_EQ(second.get(), part);
  EXPECT_EQ(part->referenceCount(), 1);
}

TEST(PtrHandleTest, SharesADerivedObjectWithHandlesToItsBase) {
  int deaths = 0;
  {
    vxPtrHandle<Gear> gear(new Gear(&deaths));
    PartHandle part = gear;
    ConstPartHandle constPart = gear;
    constPart = part;
    EXPECT_EQ(gear->referenceCount(), 3);
    EXPECT_EQ(constPart->teeth(), 12);
    gear.reset();
    part = vxPtrHandle<Gear>(new Gear(&deaths));
    EXPECT_EQ(constPart->referenceCount(), 1);
  }
  EXPECT_EQ(deaths, 2);
}

TEST(PtrHandleTest, ComparesIdentityNotContent) {
  const vxPtrHandle<Gear> gear(new Gear);
  const PartHandle same = gear;
  const PartHandle other(new Gear);
  EXPECT_TRUE(gear == same);
  EXPECT_FALSE(gear != same);
  EXPECT_TRUE(ConstPartHandle(same) == gear);
  EXPECT_FALSE(same == other);
  EXPECT_TRUE(same != other);
  EXPECT_TRUE(PartHandle() == vxPtrHandle<Gear>());
  EXPECT_TRUE(same != PartHandle());
}

TEST(PtrHandleTest, CountsInAVirtualBase) {
  const vxPtrHandle<Fancy> fancy(new Fancy);
  const vxPtrHandle<Painted> painted = fancy;
  const PartHandle part = fancy;
  EXPECT_EQ(part->referenceCount(), 3);
  EXPECT_EQ(painted->colour, 3);
  EXPECT_TRUE(part == painted);
}

TEST(PtrHandleTest, TakesWhatAnArchiveProducedWhenTheClassIsRight) {
  vxPersistent* produced = new Crate;
  vxPtrHandle<Box> handle;
  handle.assignChecked(produced);
  EXPECT_EQ(handle.get(), produced);
  EXPECT_EQ(handle->referenceCount(), 1);

  vxPtrHandle_const<Crate> constHandle;
  constHandle.assignChecked(produced);
  EXPECT_EQ(handle->referenceCount(), 2);
}

TEST(PtrHandleTest, IsEmptyAfterAnAssignmentOfAnotherClassOrOfNull) {
  Label label;
  vxPersistent* const wrong[] = {&label, nullptr};
  for (vxPersistent* object : wrong) {
    vxPtrHandle<Crate> handle(new Crate);
    handle.assignChecked(object);
    EXPECT_TRUE(handle.isNull());
  }
  const vxPtrHandle<Box> box(new Box);
  vxPtrHandle<Crate> crate;
  crate.assignChecked(box.get());
  EXPECT_TRUE(crate.isNull());
  EXPECT_EQ(box->referenceCount(), 1);
}

TEST(PtrHandleTest, IsCopiedAndReleasedOnSeveralThreads) {
  constexpr int kThreads = 4;
  constexpr int kCopies = 5000;
  int deaths = 0;
  PartHandle origin(new Part(&deaths));
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([mine = origin] {
      for (int copy = 0; copy < kCopies; ++copy) {
        PartHandle next(mine);
        const ConstPartHandle last(next);
        next.reset();
      }
    });
  }
  origin.reset();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(deaths, 1);  // by whichever thread came last
}

}  // namespace
