// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_FAILING_OPERATION_H_
#define TESTS_SUPPORT_FAILING_OPERATION_H_

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "tests/support/failing_allocator.h"
#include "vxfoundation/exception.h"

/// One public operation, whose allocations are made to fail one after another.
template <class Subject>
struct FailingOperation {
  std::function<Subject()> make;
  std::function<void(Subject&)> act;
  /// All that can be seen of a subject.
  std::function<std::string(const Subject&)> state;
  /// What a subject may be after a failure, told its state before; unset: as it was, and the
  /// operation succeeds when tried again.
  std::function<void(Subject&, const std::string&)> expectFailed = {};
  /// Whether an error of the library may stand for the failed allocation.
  bool mayRefuse = false;
};

enum class FailureOutcome { kDone, kNoMemory, kRefused };

/// Calls `body` while allocation `number` fails.
template <class Body>
FailureOutcome withFailure(std::size_t number, allocator::Failing failing, bool& wasMet,
                           const Body& body) {
  FailureOutcome outcome = FailureOutcome::kDone;
  const allocator::Fault fault(number, failing);
  try {
    body();
  } catch (const std::bad_alloc&) {
    outcome = FailureOutcome::kNoMemory;
  } catch (const vxException&) {
    outcome = FailureOutcome::kRefused;
  }
  wasMet = fault.wasMet();
  return outcome;
}

/// Calls `attempt(number, failing)` with 1, 2, ... for each way of failing until it says that no
/// allocation failed; gives how many did.
template <class Attempt>
int forEachFailure(const Attempt& attempt) {
  int failures = 0;
  for (const auto failing : {allocator::Failing::kOnce, allocator::Failing::kForGood}) {
    for (std::size_t number = 1; !testing::Test::HasFailure(); ++number) {
      const testing::ScopedTrace trace(
          __FILE__, __LINE__,
          "allocation " + std::to_string(number) +
              (failing == allocator::Failing::kOnce ? "" : " and all later ones"));
      if (!attempt(number, failing)) break;
      ++failures;
    }
  }
  return failures;
}

/// Fails each allocation of the operation, once and for good; gives the number of failures.
template <class Subject>
int failEachAllocation(const FailingOperation<Subject>& operation) {
  // What is made once a process is made here.
  std::string done;
  {
    Subject subject = operation.make();
    operation.act(subject);
    done = operation.state(subject);
  }
  const auto attempt = [&](std::size_t number, allocator::Failing failing) {
    Subject subject = operation.make();
    const std::string before = operation.state(subject);
    bool wasMet = false;
    const FailureOutcome outcome =
        withFailure(number, failing, wasMet, [&] { operation.act(subject); });
    if (outcome == FailureOutcome::kDone) {
      EXPECT_EQ(operation.state(subject), done);
      return wasMet;
    }
    EXPECT_TRUE(outcome == FailureOutcome::kNoMemory || operation.mayRefuse);
    if (operation.expectFailed) {
      operation.expectFailed(subject, before);
    } else {
      EXPECT_EQ(operation.state(subject), before);
      operation.act(subject);
      EXPECT_EQ(operation.state(subject), done);
    }
    return wasMet;
  };
  return forEachFailure([&](std::size_t number, allocator::Failing failing) {
    const long live = allocator::counts().live;
    const bool wasMet = attempt(number, failing);
    // A failed expectation keeps its text.
    if (!testing::Test::HasFailure()) {
      EXPECT_EQ(allocator::counts().live, live) << "blocks were lost";
    }
    return wasMet;
  });
}

/// An operation of any subject, for a table of named rows.
struct NamedOperation {
  std::string name;
  std::function<int()> failEachAllocation;
};

inline std::string nameOf(const testing::TestParamInfo<NamedOperation>& info) {
  return info.param.name;
}

template <class Subject>
NamedOperation named(const std::string& name, FailingOperation<Subject> operation) {
  return {name, [operation = std::move(operation)] { return failEachAllocation(operation); }};
}

/// A call that gives an R, or nothing; `text` shows one.
template <class R>
NamedOperation answering(const std::string& name, const std::function<R()>& call,
                         const std::function<std::string(const R&)>& text) {
  FailingOperation<std::optional<R>> operation;
  operation.make = [] { return std::optional<R>(); };
  operation.act = [call](std::optional<R>& answer) { answer.emplace(call()); };
  operation.state = [text](const std::optional<R>& answer) {
    return answer ? text(*answer) : "nothing";
  };
  return named(name, operation);
}

/// A call that changes a T, or leaves it as it was.
template <class T>
NamedOperation changing(const std::string& name, const std::function<T()>& make,
                        const std::function<void(T&)>& act,
                        const std::function<std::string(const T&)>& state) {
  return named(name, FailingOperation<T>{make, act, state});
}

/// How a failed test shows a row.
inline std::ostream& operator<<(std::ostream& out, const NamedOperation& operation) {
  return out << operation.name;
}

#endif  // TESTS_SUPPORT_FAILING_OPERATION_H_
