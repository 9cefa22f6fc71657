// SPDX-License-Identifier: MIT
#include "vxfoundation/diag.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

/// What a host passes to see what is recorded.
class Recorder : public vxDiagObject {
 public:
  explicit Recorder(bool* gone = nullptr) : gone_(gone) {}
  ~Recorder() override {
    if (gone_ != nullptr) *gone_ = true;
  }

 private:
  bool* gone_;
};

static_assert(std::is_default_constructible_v<vxDiagObject>);
static_assert(!std::is_abstract_v<vxDiagObject>);
static_assert(!std::is_final_v<vxDiagObject>);
static_assert(std::has_virtual_destructor_v<vxDiagObject>);
static_assert(sizeof(vxDiagObject) == sizeof(void*), "no base and no data");

TEST(DiagObjectTest, RecordsIntoTheObjectThatWasGiven) {
  unsigned long flags = 0;
  vxDiagObject plain;
  Recorder derived;
  EXPECT_EQ(vxDiagObject::getRecordingDestination(&plain, flags), &plain);
  EXPECT_EQ(vxDiagObject::getRecordingDestination(&derived, flags), &derived);
}

TEST(DiagObjectTest, RecordsNothingWithoutAnObject) {
  unsigned long flags = 0xffffffff;
  EXPECT_EQ(vxDiagObject::getRecordingDestination(nullptr, flags), nullptr);
}

TEST(DiagObjectTest, LeavesTheFlagsAlone) {
  vxDiagObject object;
  for (const unsigned long before : {0ul, 1ul, 0x80000000ul, 0xfffffffful}) {
    for (vxDiagObject* given : {&object, static_cast<vxDiagObject*>(nullptr)}) {
      unsigned long flags = before;
      vxDiagObject::getRecordingDestination(given, flags);
      EXPECT_EQ(flags, before);
    }
  }
}

TEST(DiagObjectTest, IsDestroyedThroughItsBase) {
  bool gone = false;
  std::unique_ptr<vxDiagObject> object = std::make_unique<Recorder>(&gone);
  object.reset();
  EXPECT_TRUE(gone);
}

}  // namespace
