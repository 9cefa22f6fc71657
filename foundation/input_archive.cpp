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

  struct Class {
    explicit Class(const vx_Instantiator& registered) : instantiator(&registered) {}

    // The count of an object that this class made, null if there is none.
    const vxRepBase* repOf(const vxPersistent& object);

    const vx_Instantiator* instantiator;
    const std::type_info* type = nullptr;  // of the object whose bases were looked up, if any
    std::ptrdiff_t repOffset = 0;          // from its first byte
  };

  explicit State(std::istream& in) : stream(in) {}

  std::istream& stream;
  std::vector<Loaded> objects;
  std::vector<Class> classes;

  // A read failure must show in the stream as it would after a read through it.
  void markBad() noexcept {
    try {
      stream.setstate(std::ios_base::badbit);
    } catch (...) {
      // A stream that throws on badbit; the read's own exception is on its way.
    }
  }
};

// All objects of one class have their bases in the same places, so that the cast, which costs more
// than the load of a small object, is needed once.
const vxRepBase* vxInputArchive::State::Class::repOf(const vxPersistent& object) {
  const std::type_info& dynamicType = typeid(object);
  const auto* const firstByte = static_cast<const char*>(dynamic_cast<const void*>(&object));
  if (type == &dynamicType) return reinterpret_cast<const vxRepBase*>(firstByte + repOffset);
  const auto* const rep = dynamic_cast<const vxRepBase*>(&object);
  if (rep == nullptr) return nullptr;
  type = &dynamicType;
  repOffset = reinterpret_cast<const char*>(rep) - firstByte;
  return rep;
}

namespace {

const vx_Instantiator& registeredClass(const std::string& name) {
  const vx_Instantiator* registered = vx_Instantiator::find(name);
  if (registered == nullptr) throw vxArchive::Malformed(L"A class that is not registered");
  return *registered;
}

}  // namespace

vxInputArchive::vxInputArchive(std::istream& stream)
    : vxArchive(false), state_(std::make_unique<State>(stream)) {
  source_ = &stream;
}

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
  const unsigned char kind = vx_ArchiveBytes::byte(*this);
  if (kind == static_cast<unsigned char>(vx_PointerKind::kNull)) return {nullptr, false};

  if (kind == static_cast<unsigned char>(vx_PointerKind::kReference)) {
    const std::uint32_t number = vx_ArchiveBytes::word(*this);
    if (number >= state_->objects.size()) throw Malformed(L"A reference to an unknown object");
    const State::Loaded& known = state_->objects[number];
    if (known.object == nullptr) throw Malformed(L"A reference to an incomplete object");
    if (known.lifeline && !known.lifeline->alive.load(std::memory_order_acquire)) {
      throw Malformed(L"A reference to an object that is gone");
    }
    return {known.object, false};
  }

  std::size_t classNumber = state_->classes.size();
  if (kind == static_cast<unsigned char>(vx_PointerKind::kNewClass)) {
    const std::uint32_t length = vx_ArchiveBytes::word(*this);
    if (length > kLongestClassName) throw Malformed(L"A class name of an impossible length");
    std::string name(length, '\0');
    if (length > 0) {
      auto* const characters = reinterpret_cast<unsigned char*>(name.data());
      vx_ArchiveBytes::transfer(*this, characters, length);
    }
    const vx_Instantiator& registered = registeredClass(name);
    for (const State::Class& known : state_->classes) {
      if (known.instantiator == &registered) throw Malformed(L"A class that is named twice");
    }
    state_->classes.emplace_back(registered);
  } else if (kind == static_cast<unsigned char>(vx_PointerKind::kKnownClass)) {
    classNumber = vx_ArchiveBytes::word(*this);
    if (classNumber >= state_->classes.size()) throw Malformed(L"A number of an unknown class");
  } else {
    throw Malformed(L"A pointer of an unknown kind");
  }

  const vx_ArchiveNesting nesting(*this);
  const std::size_t number = state_->objects.size();
  if (number == std::numeric_limits<std::uint32_t>::max()) throw Malformed(L"Too many objects");
  state_->objects.emplace_back();
  State::Class& itsClass = state_->classes[classNumber];
  std::unique_ptr<vxPersistent> uncounted(itsClass.instantiator->make());
  vxPersistent* const object = uncounted.get();
  if (object == nullptr) throw Malformed(L"A class that makes no objects");
  if (const vxRepBase* counted = itsClass.repOf(*object)) {
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
