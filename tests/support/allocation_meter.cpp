// SPDX-License-Identifier: MIT
#include "tests/support/allocation_meter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t takenBytes = 0;
thread_local std::size_t takenCalls = 0;

void* take(std::size_t size) noexcept {
  takenBytes += size;
  ++takenCalls;
  return std::malloc(size == 0 ? 1 : size);
}

void* takeOrThrow(std::size_t size) {
  void* const memory = take(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

AllocationMeter::AllocationMeter() : bytesBefore_(takenBytes), callsBefore_(takenCalls) {}
std::size_t AllocationMeter::bytes() const { return takenBytes - bytesBefore_; }
std::size_t AllocationMeter::calls() const { return takenCalls - callsBefore_; }

// Every form but the over-aligned ones, so that a sanitizer never sees one of its own meet one of
// these.
void* operator new(std::size_t size) { return takeOrThrow(size); }
void* operator new[](std::size_t size) { return takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
