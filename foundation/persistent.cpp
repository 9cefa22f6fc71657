// SPDX-License-Identifier: MIT
#include "vxfoundation/persistent.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "lifeline.h"
#include "vxfoundation/archive.h"

#if defined(__GNUG__)
#include <cxxabi.h>
#endif

namespace {

static_assert(alignof(vx_Lifeline) >= 2, "the low bit of a stamp tells a number from an address");

// Odd numbers; 64 bits never run out.
std::atomic<std::uint64_t> nextStamp{1};

bool isNumber(std::uint64_t stamp) { return (stamp & 1) != 0; }

vx_Lifeline* lifelineOf(std::uint64_t stamp) {
  return isNumber(stamp) ? nullptr : reinterpret_cast<vx_Lifeline*>(stamp);
}

// The newest registration comes first. A list without a lock, since a library may be loaded while
// other threads archive.
std::atomic<vx_Instantiator*> registrations{nullptr};

}  // namespace

vxPersistent::~vxPersistent() {
  const std::uint64_t stamp = stamp_.load(std::memory_order_relaxed);
  if (vx_Lifeline* lifeline = lifelineOf(stamp)) {
    lifeline->alive.store(false, std::memory_order_release);
    lifeline->release();
  }
}

void vxPersistent::dispatchSerialize(vxArchive&) {}

void vxPersistent::reInit() {}

void vxPersistent::loadSimple(vxArchive& archive) { archive || *this; }

bool vxPersistent::haveVisited(const vxPersistent* object, const std::type_info& level) {
  const vx_ArchivePass* pass = vx_ArchivePass::innermost();
  return pass != nullptr && pass->haveVisited(object, level);
}

void vxPersistent::setVisited(const vxPersistent* object, const std::type_info& level) {
  if (vx_ArchivePass* pass = vx_ArchivePass::innermost()) pass->setVisited(object, level);
}

void vxPersistent::serializePointer(vxArchive& archive, const vxPersistent* object,
                                    vxPersistent*& objectRef) {
  const vxArchive::Pointer transferred = archive.transferPointer_(object);
  if (archive.isLoading()) objectRef = transferred.object;
}

void vxPersistent::mutating_() noexcept {
  const std::uint64_t stamp = stamp_.load(std::memory_order_relaxed);
  if (stamp == 0) return;
  vx_Lifeline* lifeline = lifelineOf(stamp);
  (lifeline == nullptr ? stamp_ : lifeline->stamp).store(0, std::memory_order_relaxed);
}

std::uint64_t vxPersistent::storedStamp_() const {
  const std::uint64_t value = stamp_.load(std::memory_order_relaxed);
  vx_Lifeline* lifeline = lifelineOf(value);
  std::atomic<std::uint64_t>& slot = lifeline == nullptr ? stamp_ : lifeline->stamp;

  std::uint64_t stamp = slot.load(std::memory_order_relaxed);
  if (stamp != 0) return stamp;
  const std::uint64_t fresh = nextStamp.fetch_add(2, std::memory_order_relaxed);
  // Of two threads that store the object at once, one gives the number and both use it.
  return slot.compare_exchange_strong(stamp, fresh, std::memory_order_relaxed) ? fresh : stamp;
}

void vxPersistent::attach_(vx_Lifeline* lifeline) noexcept {
  lifeline->stamp.store(stamp_.load(std::memory_order_relaxed), std::memory_order_relaxed);
  stamp_.store(reinterpret_cast<std::uintptr_t>(lifeline), std::memory_order_relaxed);
}

vx_Instantiator::vx_Instantiator(const std::type_info& type, Make factory)
    : name_(vfClassName(type)), type_(type), make_(factory) {
  vx_Instantiator* head = registrations.load(std::memory_order_relaxed);
  do {
    next_.store(head, std::memory_order_relaxed);
  } while (!registrations.compare_exchange_weak(head, this, std::memory_order_release,
                                                std::memory_order_relaxed));
}

vx_Instantiator::~vx_Instantiator() {
  std::atomic<vx_Instantiator*>* link = &registrations;
  while (vx_Instantiator* entry = link->load(std::memory_order_acquire)) {
    if (entry != this) {
      link = &entry->next_;
    } else if (link->compare_exchange_strong(entry, next_.load(std::memory_order_relaxed))) {
      return;
    } else {
      // Another class was registered in front of this one meanwhile.
      link = &registrations;  // GCOVR_EXCL_LINE
    }
  }
}

const vx_Instantiator* vx_Instantiator::find(const std::string& name) {
  const vx_Instantiator* oldest = nullptr;
  for (const vx_Instantiator* entry = registrations.load(std::memory_order_acquire);
       entry != nullptr; entry = entry->next_.load(std::memory_order_acquire)) {
    if (entry->name_ == name) oldest = entry;
  }
  return oldest;
}

std::vector<std::string> vx_Instantiator::registeredNames() {
  std::vector<std::string> names;
  for (const vx_Instantiator* entry = registrations.load(std::memory_order_acquire);
       entry != nullptr; entry = entry->next_.load(std::memory_order_acquire)) {
    names.push_back(entry->name_);
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

std::string vfClassName(const std::type_info& type) {
#if defined(__GNUG__)
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  if (status == -1) throw std::bad_alloc();
  return status == 0 ? name.get() : type.name();
#else
  // The other compilers give "class vxFeaturePattern".
  const std::string name = type.name();
  const std::size_t blank = name.find(' ');
  const bool prefixed = name.rfind("class ", 0) == 0 || name.rfind("struct ", 0) == 0;
  return prefixed ? name.substr(blank + 1) : name;
#endif
}
