// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ALLOCATION_METER_H_
#define TESTS_SUPPORT_ALLOCATION_METER_H_

#include <cstddef>

/// Counts what the calling thread takes from `operator new` while the meter lives. A program that
/// uses it links allocation_meter.cpp, which replaces the operators.
class AllocationMeter {
 public:
  AllocationMeter();

  /// Bytes and calls since construction; what was given back meanwhile stays in.
  std::size_t bytes() const;
  std::size_t calls() const;

 private:
  std::size_t bytesBefore_;
  std::size_t callsBefore_;
};

#endif  // TESTS_SUPPORT_ALLOCATION_METER_H_
