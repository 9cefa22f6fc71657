// SPDX-License-Identifier: MIT
#include "tests/support/failing_allocator.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

thread_local allocator::Counts takenByThread{};
thread_local long mostInUse = 0;

// The countdown to the next failure, 0 where none is asked for.
thread_local std::size_t untilFailure = 0;
thread_local bool failsForGood = false;
thread_local bool hasFailed = false;

bool isToFail() noexcept {
  if (untilFailure == 0) return false;
  if (untilFailure > 1) {
    --untilFailure;
    return false;
  }
  hasFailed = true;
  if (!failsForGood) untilFailure = 0;
  return true;
}

void* noted(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return nullptr;
  ++takenByThread.calls;
  takenByThread.bytesTaken += size;
  ++takenByThread.live;
  takenByThread.bytesInUse += static_cast<long>(malloc_usable_size(memory));
  mostInUse = std::max(mostInUse, takenByThread.bytesInUse);
  return memory;
}

void* take(std::size_t size) noexcept {
  if (isToFail()) return nullptr;
  return noted(std::malloc(std::max<std::size_t>(size, 1)), size);
}

void* take(std::size_t size, std::align_val_t alignment) noexcept {
  if (isToFail()) return nullptr;
  const auto step = static_cast<std::size_t>(alignment);
  return noted(std::aligned_alloc(step, (std::max<std::size_t>(size, 1) + step - 1) / step * step),
               size);
}

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void giveBack(void* memory) noexcept {
  if (memory == nullptr) return;
  --takenByThread.live;
  takenByThread.bytesInUse -= static_cast<long>(malloc_usable_size(memory));
  std::free(memory);
}

}  // namespace

namespace allocator {

Counts counts() { return takenByThread; }

Meter::Meter() : before_(takenByThread) { mostInUse = takenByThread.bytesInUse; }
std::size_t Meter::bytesTaken() const { return takenByThread.bytesTaken - before_.bytesTaken; }
std::size_t Meter::peak() const { return static_cast<std::size_t>(mostInUse - before_.bytesInUse); }

Fault::Fault(std::size_t number, Failing failing) {
  untilFailure = number;
  failsForGood = failing == Failing::kForGood;
  hasFailed = false;
}
Fault::~Fault() { untilFailure = 0; }
bool Fault::wasMet() const { return hasFailed; }

}  // namespace allocator

using std::align_val_t;
using std::nothrow_t;

void* operator new(std::size_t n) { return orThrow(take(n)); }
void* operator new[](std::size_t n) { return orThrow(take(n)); }
void* operator new(std::size_t n, const nothrow_t&) noexcept { return take(n); }
void* operator new[](std::size_t n, const nothrow_t&) noexcept { return take(n); }
void* operator new(std::size_t n, align_val_t a) { return orThrow(take(n, a)); }
void* operator new[](std::size_t n, align_val_t a) { return orThrow(take(n, a)); }
void* operator new(std::size_t n, align_val_t a, const nothrow_t&) noexcept { return take(n, a); }
void* operator new[](std::size_t n, align_val_t a, const nothrow_t&) noexcept { return take(n, a); }
void operator delete(void* p) noexcept { giveBack(p); }
void operator delete[](void* p) noexcept { giveBack(p); }
void operator delete(void* p, std::size_t) noexcept { giveBack(p); }
void operator delete[](void* p, std::size_t) noexcept { giveBack(p); }
void operator delete(void* p, const nothrow_t&) noexcept { giveBack(p); }
void operator delete[](void* p, const nothrow_t&) noexcept { giveBack(p); }
void operator delete(void* p, align_val_t) noexcept { giveBack(p); }
void operator delete[](void* p, align_val_t) noexcept { giveBack(p); }
void operator delete(void* p, std::size_t, align_val_t) noexcept { giveBack(p); }
void operator delete[](void* p, std::size_t, align_val_t) noexcept { giveBack(p); }
void operator delete(void* p, align_val_t, const nothrow_t&) noexcept { giveBack(p); }
void operator delete[](void* p, align_val_t, const nothrow_t&) noexcept { giveBack(p); }
