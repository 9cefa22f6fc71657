// SPDX-License-Identifier: MIT
#include <ostream>
#include <unordered_map>

#include "archive_bytes.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/text.h"

struct vxOutputArchive::State {
  struct Stored {
    std::uint32_t number;
    bool complete;
  };

  explicit State(std::ostream& out) : stream(out) {}

  std::ostream& stream;
  std::vector<char> buffer;  // of the outermost transfer under way
  bool partlyWritten = false;
  bool torn = false;

  // What back-references may name, and how much of it stands in transfers that are complete.
  std::unordered_map<std::uint64_t, Stored> objects;  // by stamp
  std::vector<const std::type_info*> classes;
  std::size_t completeObjects = 0;
  std::size_t completeClasses = 0;

  void write() {
    if (buffer.empty()) return;
    torn = stream.good();  // unless the stream takes all; one that had failed takes nothing
    if (!stream.write(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
      throw StreamFailure(L"The stream did not take the archive's bytes");
    }
    torn = false;
    buffer.clear();
  }
};

namespace {

// A large object is written in pieces of this size.
constexpr std::size_t kBufferBytes = 1 << 16;

}  // namespace

vxOutputArchive::vxOutputArchive(std::ostream& stream)
    : vxArchive(true), state_(std::make_unique<State>(stream)) {}

vxOutputArchive::~vxOutputArchive() = default;

void vxOutputArchive::transferBytes_(unsigned char* bytes, std::size_t count) {
  if (state_->torn) throw StreamFailure(L"An earlier failure left this archive incomplete");
  state_->buffer.insert(state_->buffer.end(), bytes, bytes + count);
  if (openTransfers_ == 0) {
    state_->write();
  } else if (state_->buffer.size() >= kBufferBytes) {
    state_->write();
    state_->partlyWritten = true;
  }
}

vxArchive::Pointer vxOutputArchive::transferPointer_(const vxPersistent* object) {
  const Pointer nothing = {nullptr, false};
  vx_Transfer transfer(*this);
  const auto putKind = [this](vx_PointerKind kind) {
    auto byte = static_cast<unsigned char>(kind);
    *this || byte;
  };

  if (object == nullptr) {
    putKind(vx_PointerKind::kNull);
    transfer.complete();
    return nothing;
  }

  const auto number = vx_checkedCount(state_->objects.size());
  const auto [entry, isNew] =
      state_->objects.try_emplace(object->storedStamp_(), State::Stored{number, false});
  State::Stored& stored = entry->second;  // stays where it is while more objects come
  if (!isNew) {
    if (!stored.complete) throw Unstorable(L"An object can't be stored inside itself");
    putKind(vx_PointerKind::kReference);
    transferWord_(stored.number);
    transfer.complete();
    return nothing;
  }

  const std::type_info& type = typeid(*object);
  std::size_t classNumber = 0;
  while (classNumber < state_->classes.size() && *state_->classes[classNumber] != type) {
    ++classNumber;
  }
  if (classNumber < state_->classes.size()) {
    putKind(vx_PointerKind::kKnownClass);
    transferWord_(static_cast<std::uint32_t>(classNumber));
  } else {
    std::string name = vfClassName(type);
    const vx_Instantiator* registered = vx_Instantiator::find(name);
    // Two classes may share a name, say in unnamed namespaces: only the first can be loaded.
    if (registered == nullptr || registered->type() != type || name.size() > kLongestClassName) {
      std::wstring wide;
      vfConvertString(wide, name);
      throw Unstorable(L"Objects of a class that is not registered can't be stored: " + wide);
    }
    state_->classes.push_back(&type);
    putKind(vx_PointerKind::kNewClass);
    transferWord_(vx_checkedCount(name.size()));
    transferBytes_(reinterpret_cast<unsigned char*>(name.data()), name.size());
  }

  const vx_ArchiveNesting nesting(*this);
  const vx_ArchivePass pass(*object);
  const_cast<vxPersistent*>(object)->dispatchSerialize(*this);  // storing changes nothing
  stored.complete = true;
  transfer.complete();
  return nothing;
}

void vxOutputArchive::completeOutermost_() {
  if (state_->torn) throw StreamFailure(L"An earlier failure left this archive incomplete");
  state_->write();
  state_->partlyWritten = false;
  state_->completeObjects = state_->objects.size();
  state_->completeClasses = state_->classes.size();
}

void vxOutputArchive::abandonOutermost_() noexcept {
  state_->torn = state_->torn || state_->partlyWritten;
  state_->buffer.clear();
  state_->classes.resize(state_->completeClasses);
  for (auto entry = state_->objects.begin(); entry != state_->objects.end();) {
    const bool known = entry->second.number < state_->completeObjects;
    entry = known ? std::next(entry) : state_->objects.erase(entry);
  }
}
