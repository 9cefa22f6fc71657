// SPDX-License-Identifier: MIT
// Every archived class while its allocations fail: copies, comparisons, archives.

#include <gtest/gtest.h>

#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "tests/support/archived_types.h"
#include "tests/support/failing_operation.h"
#include "tests/support/faulty_device.h"
#include "tests/support/figures.h"

namespace {

/// A golden archive is far smaller.
constexpr std::size_t kRoom = 10'000;

template <class T>
class AllocationArchiveTest : public testing::Test {
 protected:
  ~AllocationArchiveTest() override { showFigure("failed allocations", failures_); }

  /// Calls `check(sample, number)` for each sample, and counts the failures that it gives.
  template <class Check>
  void forEachSample(Check check) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      SCOPED_TRACE("sample " + samples[i].name);
      failures_ += check(samples[i].object, i);
    }
  }

  static std::string golden(const std::string& sample) {
    return goldenArchive(vfClassName(typeid(T)), sample).bytes;
  }

  const Samples<T> samples = Archived<T>::samples();

 private:
  int failures_ = 0;
};

TYPED_TEST_SUITE(AllocationArchiveTest, ArchivedTypes, ClassNames);

TYPED_TEST(AllocationArchiveTest, CopiesOrLeavesNothing) {
  this->forEachSample([](const TypeParam& object, std::size_t) {
    const std::string before = inPlace(object);
    FailingOperation<std::optional<TypeParam>> copying;
    copying.make = [] { return std::optional<TypeParam>(); };
    copying.act = [&object](auto& copy) { copy.emplace(object); };
    copying.state = [](const auto& copy) { return copy ? inPlace(*copy) : "none"; };
    const int failures = failEachAllocation(copying);
    EXPECT_EQ(inPlace(object), before);
    return failures;
  });
}

TYPED_TEST(AllocationArchiveTest, ClonesOrLeavesNothing) {
  if constexpr (HasClone<TypeParam>::value) {
    this->forEachSample([](const TypeParam& object, std::size_t) {
      const std::string before = inPlace(object);
      const auto attempt = [&](std::size_t number, allocator::Failing failing) {
        const long live = allocator::counts().live;
        bool wasMet = false;
        withFailure(number, failing, wasMet, [&] {
          const auto copy = object.clone();
          // A score function comes without a handle.
          if constexpr (std::is_pointer_v<decltype(object.clone())>) delete copy;
        });
        EXPECT_EQ(allocator::counts().live, live);
        return wasMet;
      };
      const int failures = forEachFailure(attempt);
      EXPECT_EQ(inPlace(object), before);
      return failures;
    });
  }
}

TYPED_TEST(AllocationArchiveTest, AssignsOrLeavesTheTargetAsItWas) {
  this->forEachSample([this](const TypeParam& object, std::size_t i) {
    FailingOperation<TypeParam> assignment;
    assignment.make = [&] { return otherThan(this->samples, i); };
    assignment.act = [&object](TypeParam& target) { target = object; };
    assignment.state = [](const TypeParam& target) { return inPlace(target); };
    if constexpr (isTool<TypeParam>) {
      // A tool releases its classifier before it copies the other's.
      assignment.expectFailed = [](TypeParam& target, const std::string&) {
        EXPECT_TRUE(target.classifier().isNull());
      };
    }
    return failEachAllocation(assignment);
  });
}

TYPED_TEST(AllocationArchiveTest, ComparesOrFails) {
  this->forEachSample([](const TypeParam& object, std::size_t) {
    const TypeParam copy(object);
    const std::optional<bool> expected = areEqual(object, copy);
    const auto attempt = [&](std::size_t number, allocator::Failing failing) {
      const long live = allocator::counts().live;
      bool wasMet = false;
      std::optional<bool> answer;
      const FailureOutcome outcome =
          withFailure(number, failing, wasMet, [&] { answer = areEqual(object, copy); });
      if (outcome == FailureOutcome::kDone) {
        EXPECT_EQ(answer, expected);
      }
      EXPECT_EQ(allocator::counts().live, live);
      return wasMet;
    };
    const int failures = forEachFailure(attempt);
    EXPECT_EQ(areEqual(object, copy), expected);
    return failures;
  });
}

// The same archive all the time: a failure leaves no trace in it.
TYPED_TEST(AllocationArchiveTest, StoresOrLeavesTheArchiveAsItWas) {
  this->forEachSample([this](const TypeParam& object, std::size_t i) {
    FaultyDevice device(kRoom);
    std::ostream stream(&device);
    auto archive = std::make_unique<vxOutputArchive>(stream);
    std::string done;
    const auto attempt = [&](std::size_t number, allocator::Failing failing) {
      bool wasMet = false;
      const FailureOutcome outcome =
          withFailure(number, failing, wasMet, [&] { storeWhole(*archive, object); });
      if (outcome == FailureOutcome::kDone) {
        EXPECT_EQ(toHex(device.written()), toHex(done + this->golden(this->samples[i].name)));
        // The second way of failing begins with a new archive.
        done = device.written();
        archive = std::make_unique<vxOutputArchive>(stream);
      } else {
        EXPECT_EQ(device.written(), done);
        EXPECT_TRUE(stream.good());
      }
      return wasMet;
    };
    return forEachFailure(attempt);
  });
}

TYPED_TEST(AllocationArchiveTest, LoadsOrLeavesTheTargetAsItWas) {
  this->forEachSample([this](const TypeParam& object, std::size_t i) {
    const std::string bytes = this->golden(this->samples[i].name);
    const std::string expected = inPlace(object);
    const auto attempt = [&](std::size_t number, allocator::Failing failing) {
      const long live = allocator::counts().live;
      bool wasMet = false;
      {
        FaultyDevice device(bytes);
        std::istream stream(&device);
        TypeParam target = otherThan(this->samples, i);
        const std::string before = inPlace(target);
        std::shared_ptr<TypeParam> arrived;
        const FailureOutcome outcome = withFailure(number, failing, wasMet, [&] {
          vxInputArchive archive(stream);
          arrived = loadWhole(archive, target);
        });
        if (outcome == FailureOutcome::kDone) {
          EXPECT_NE(arrived, nullptr);
          EXPECT_EQ(toHex(inPlace(*arrived)), toHex(expected));
        } else {
          EXPECT_EQ(outcome, FailureOutcome::kNoMemory);
          expectLeft(target, before);
        }
      }
      EXPECT_EQ(allocator::counts().live, live) << "blocks were lost";
      return wasMet;
    };
    return forEachFailure(attempt);
  });
}

TYPED_TEST(AllocationArchiveTest, LoadsInPlaceOrLeavesTheTargetAsItWas) {
  this->forEachSample([this](const TypeParam& object, std::size_t i) {
    const std::string bytes = inPlace(object);
    FailingOperation<TypeParam> loading;
    loading.make = [&] { return otherThan(this->samples, i); };
    loading.act = [&bytes](TypeParam& target) {
      FaultyDevice device(bytes);
      std::istream stream(&device);
      vxInputArchive archive(stream);
      archive || target;
    };
    loading.state = [](const TypeParam& target) { return inPlace(target); };
    if constexpr (isTool<TypeParam>) {
      loading.expectFailed = [](TypeParam& target, const std::string& before) {
        expectLeft(target, before);
      };
    }
    return failEachAllocation(loading);
  });
}

}  // namespace
