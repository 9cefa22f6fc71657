// SPDX-License-Identifier: MIT
#include "vxfoundation/status.h"

#include <atomic>
#include <cstdint>

#include "stop_status.h"
#include "vxfoundation/exception.h"

namespace {

using Converter = void (*)(long status);

struct Registration {
  std::uint32_t module;
  std::atomic<Converter> converter;
  Registration* next;
};

// Grows by one entry a module and never shrinks, so that it can be read without a lock.
std::atomic<Registration*> converters{nullptr};

Registration* findConverter(std::uint32_t module) {
  Registration* entry = converters.load(std::memory_order_acquire);
  while (entry != nullptr && entry->module != module) entry = entry->next;
  return entry;
}

}  // namespace

void vfThrowExceptionOnFailure(long status) {
  const auto word = static_cast<std::uint32_t>(status);
  if ((word & 0x80000000) == 0) return;

  if (const Registration* entry = findConverter((word & 0x7fffffff) >> 5)) {
    if (const Converter convert = entry->converter.load(std::memory_order_acquire)) convert(status);
  }
  if (word == kStopStatus) throw vxStopRequested();
  throw vxStatusException(status);
}

void vfRegisterExceptionConverter(long module, void (*converter)(long status)) {
  const auto number = static_cast<std::uint32_t>(module);
  if (Registration* entry = findConverter(number)) {
    entry->converter.store(converter, std::memory_order_release);
    return;
  }
  auto* entry = new Registration{number, {converter}, converters.load(std::memory_order_relaxed)};
  while (!converters.compare_exchange_weak(entry->next, entry, std::memory_order_release,
                                           std::memory_order_relaxed)) {
  }
}
