// SPDX-License-Identifier: MIT
#include <istream>
#include <limits>

#include "archive_bytes.h"
#include "lifeline.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/text.h"

struct vxInputArchive::State {
  struct Loaded {
    vxPersistent* object = nullptr;  // null while it is still being read
    vxPtrHandle_const<vxRepBase> keeper;
    vx_LifelineHold lifeline;  // of an object without a count
  };

  explicit State(std::istream& in) : stream(in) {}

  std::istream& stream;
  std::vector<Loaded> objects;
  std::vector<const vx_Instantiator*> classes;

  // A read failure must show in the stream as it would after a read through it.
  void markBad() noexcept {
    try {
      stream.setstate(std::ios_base::badbit);
    } catch (...) {
      // A stream that throws on badbit; the read's own exception is on its way.
    }
  }
};

namespace {

const vx_Instantiator& registeredClass(const std::string& name) {
  const vx_Instantiator* registered = vx_Instantiator::find(name);
  if (registered == nullptr) throw vxArchive::Malformed(L"A class that is not registered");
  return *registered;
}

}  // namespace

vxInputArchive::vxInputArchive(std::istream& stream)
    : vxArchive(false), state_(std::make_unique<State>(stream)) {}

vxInputArchive::~vxInputArchive() = default;

void vxInputArchive::transferBytes_(unsigned char* bytes, std::size_t count) {
  std::istream& stream = state_->stream;
  std::streamsize read = 0;
  if (stream.good()) {
    // Not through the stream's own read(): its sentry costs more than most transfers are long.
    try {
      read = stream.rdbuf()->sgetn(reinterpret_cast<char*>(bytes),
                                   static_cast<std::streamsize>(count));
    } catch (...) {
      state_->markBad();
      throw;
    }
  }
  if (read != static_cast<std::streamsize>(count)) {
    stream.setstate(std::ios_base::eofbit | std::ios_base::failbit);
    throw Malformed(L"The archive ends too early");
  }
}

vxArchive::Pointer vxInputArchive::transferPointer_(const vxPersistent*) {
  unsigned char kind = 0;
  *this || kind;
  if (kind == static_cast<unsigned char>(vx_PointerKind::kNull)) return {nullptr, false};

  if (kind == static_cast<unsigned char>(vx_PointerKind::kReference)) {
    const std::uint32_t number = transferWord_(0);
    if (number >= state_->objects.size()) throw Malformed(L"A reference to an unknown object");
    const State::Loaded& known = state_->objects[number];
    if (known.object == nullptr) throw Malformed(L"A reference to an incomplete object");
    if (known.lifeline && !known.lifeline->alive.load(std::memory_order_acquire)) {
      throw Malformed(L"A reference to an object that is gone");
    }
    return {known.object, false};
  }

  const vx_Instantiator* instantiator = nullptr;
  if (kind == static_cast<unsigned char>(vx_PointerKind::kNewClass)) {
    const std::uint32_t length = transferWord_(0);
    if (length > kLongestClassName) throw Malformed(L"A class name of an impossible length");
    std::string name(length, '\0');
    transferBytes_(reinterpret_cast<unsigned char*>(name.data()), name.size());
    instantiator = &registeredClass(name);
    for (const vx_Instantiator* known : state_->classes) {
      if (known == instantiator) throw Malformed(L"A class that is named twice");
    }
    state_->classes.push_back(instantiator);
  } else if (kind == static_cast<unsigned char>(vx_PointerKind::kKnownClass)) {
    const std::uint32_t number = transferWord_(0);
    if (number >= state_->classes.size()) throw Malformed(L"A number of an unknown class");
    instantiator = state_->classes[number];
  } else {
    throw Malformed(L"A pointer of an unknown kind");
  }

  const vx_ArchiveNesting nesting(*this);
  const std::size_t number = state_->objects.size();
  if (number == std::numeric_limits<std::uint32_t>::max()) throw Malformed(L"Too many objects");
  state_->objects.emplace_back();
  std::unique_ptr<vxPersistent> uncounted(instantiator->make());
  vxPersistent* const object = uncounted.get();
  if (auto* counted = dynamic_cast<const vxRepBase*>(object)) {
    state_->objects[number].keeper.reset(counted);
    static_cast<void>(uncounted.release());
  }

  const vx_ArchivePass pass(*object);
  object->dispatchSerialize(*this);

  State::Loaded& loaded = state_->objects[number];
  if (uncounted) {
    loaded.lifeline.reset(new vx_Lifeline);
    object->attach_(loaded.lifeline.get());
    static_cast<void>(uncounted.release());
  }
  const bool ownedByCaller = loaded.lifeline != nullptr;
  loaded.object = object;
  return {object, ownedByCaller};
}
