// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_FAILING_ALLOCATOR_H_
#define TESTS_SUPPORT_FAILING_ALLOCATOR_H_

#include <cstddef>

/// Counts and fails what the calling thread takes from `operator new`. A program that uses it links
/// failing_allocator.cpp, which replaces every form of the operators.
namespace allocator {

/// Of one thread since it began.
struct Counts {
  std::size_t calls;
  std::size_t bytesTaken;  // as asked for; what was given back stays in
  long live;               // blocks; below 0 where another thread took what this one gave back
  long bytesInUse;         // as malloc set them aside
};
Counts counts();

/// Bytes asked for, and the most in use at once, since construction.
class Meter {
 public:
  Meter();
  std::size_t bytesTaken() const;
  std::size_t peak() const;

 private:
  Counts before_;
};

enum class Failing { kOnce, kForGood };

/// While it lives, allocation `number` of the thread, counted from 1, fails; for good: that one and
/// every later one. One at a time.
class Fault {
 public:
  Fault(std::size_t number, Failing failing);
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;
  ~Fault();

  /// Whether an allocation has failed.
  bool wasMet() const;
};

}  // namespace allocator

#endif  // TESTS_SUPPORT_FAILING_ALLOCATOR_H_
