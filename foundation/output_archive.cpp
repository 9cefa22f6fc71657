// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <ostream>
#include <utility>

#include "archive_bytes.h"
#include "stamp_table.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/text.h"

namespace {

// What a transfer holds back until it is complete; more goes to the stream in such pieces.
constexpr std::size_t kBlockBytes = 1 << 16;
constexpr std::size_t kFirstBlockBytes = 512;

}  // namespace

struct vxOutputArchive::State {
  explicit State(std::ostream& out) : stream(out) {}

  std::ostream& stream;
  std::vector<unsigned char> block;  // of the outermost transfer under way
  bool partlyWritten = false;
  bool torn = false;

  // What back-references may name, and how much of it stands in transfers that are complete.
  vx_StampTable objects;
  std::vector<unsigned char> isComplete;  // by number; what is missing is not
  std::vector<const std::type_info*> classes;
  std::size_t latestClass = 0;
  std::size_t completeObjects = 0;
  std::size_t completeClasses = 0;

  void write(const unsigned char* bytes, std::size_t count) {
    if (count == 0) return;
    torn = stream.good();  // unless the stream takes all; one that had failed takes nothing
    if (!stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count))) {
      throw StreamFailure(L"The stream did not take the archive's bytes");
    }
    torn = false;
  }

  void writePart(const unsigned char* bytes, std::size_t count) {
    write(bytes, count);
    partlyWritten = true;
  }

  // The number of a class in this archive, or that of classes there are if it is new.
  std::size_t classNumber(const std::type_info& type) {
    if (latestClass < classes.size() && classes[latestClass] == &type) return latestClass;
    latestClass = 0;
    while (latestClass < classes.size() && *classes[latestClass] != type) ++latestClass;
    return latestClass;
  }
};

vxOutputArchive::vxOutputArchive(std::ostream& stream)
    : vxArchive(true), state_(std::make_unique<State>(stream)) {}

vxOutputArchive::~vxOutputArchive() = default;

// For what does not fit the room left, where there is any: outside of transfers there is none.
void vxOutputArchive::transferBytes_(unsigned char* bytes, std::size_t count) {
  State& state = *state_;
  if (state.torn) throw StreamFailure(L"An earlier failure left this archive incomplete");
  if (openTransfers_ == 0) {
    state.write(bytes, count);
    return;
  }
  std::size_t used = numGathered_();
  if (used + count > kBlockBytes) {
    // Should a class swallow what the stream throws, bytes are missing all the same.
    const bool hadAbandoned = std::exchange(hasAbandoned_, true);
    state.writePart(state.block.data(), used);
    free_ = end_ = nullptr;
    used = 0;
    if (count > kBlockBytes) state.writePart(bytes, count);
    hasAbandoned_ = hadAbandoned;
    if (count > kBlockBytes) return;
  }
  if (used + count > state.block.size()) {
    const std::size_t larger = std::max({kFirstBlockBytes, 2 * state.block.size(), used + count});
    state.block.resize(std::min(larger, kBlockBytes));
  }
  free_ = state.block.data() + used;
  end_ = state.block.data() + state.block.size();
  std::memcpy(free_, bytes, count);
  free_ += count;
}

vxArchive::Pointer vxOutputArchive::transferPointer_(const vxPersistent* object) {
  const Pointer nothing = {nullptr, false};
  vx_Transfer transfer(*this);
  const auto putKind = [this](vx_PointerKind kind) {
    vx_ArchiveBytes::byte(*this, static_cast<unsigned char>(kind));
  };

  if (object == nullptr) {
    putKind(vx_PointerKind::kNull);
    transfer.complete();
    return nothing;
  }

  State& state = *state_;
  const std::size_t numKnown = state.objects.size();
  vx_checkedCount(numKnown + 1);
  const std::uint32_t number = state.objects.add(object->storedStamp_());
  if (number < numKnown) {
    const bool isComplete = number < state.isComplete.size() && state.isComplete[number] != 0;
    if (!isComplete) throw Unstorable(L"An object can't be stored inside itself");
    putKind(vx_PointerKind::kReference);
    vx_ArchiveBytes::word(*this, number);
    transfer.complete();
    return nothing;
  }

  const std::type_info& type = typeid(*object);
  const std::size_t classNumber = state.classNumber(type);
  if (classNumber < state.classes.size()) {
    putKind(vx_PointerKind::kKnownClass);
    vx_ArchiveBytes::word(*this, static_cast<std::uint32_t>(classNumber));
  } else {
    std::string name = vfClassName(type);
    const vx_Instantiator* registered = vx_Instantiator::find(name);
    // Two classes may share a name, say in unnamed namespaces: only the first can be loaded.
    if (registered == nullptr || registered->type() != type || name.size() > kLongestClassName) {
      std::wstring wide;
      vfConvertString(wide, name);
      throw Unstorable(L"Objects of a class that is not registered can't be stored: " + wide);
    }
    state.classes.push_back(&type);
    putKind(vx_PointerKind::kNewClass);
    vx_ArchiveBytes::word(*this, vx_checkedCount(name.size()));
    auto* const characters = reinterpret_cast<unsigned char*>(name.data());
    vx_ArchiveBytes::transfer(*this, characters, name.size());
  }

  const vx_ArchiveNesting nesting(*this);
  const vx_ArchivePass pass(*object);
  const_cast<vxPersistent*>(object)->dispatchSerialize(*this);  // storing changes nothing
  if (number >= state.isComplete.size()) state.isComplete.resize(number + std::size_t{1});
  state.isComplete[number] = 1;
  transfer.complete();
  return nothing;
}

void vxOutputArchive::completeOutermost_() {
  State& state = *state_;
  if (state.torn) throw StreamFailure(L"An earlier failure left this archive incomplete");
  state.write(state.block.data(), numGathered_());
  free_ = end_ = nullptr;
  state.partlyWritten = false;
  state.completeObjects = state.objects.size();
  state.completeClasses = state.classes.size();
}

void vxOutputArchive::abandonOutermost_() noexcept {
  State& state = *state_;
  state.torn = state.torn || state.partlyWritten;
  free_ = end_ = nullptr;
  state.classes.resize(state.completeClasses);
  state.objects.shrink(state.completeObjects);
  if (state.isComplete.size() > state.completeObjects) {
    state.isComplete.resize(state.completeObjects);
  }
}

std::size_t vxOutputArchive::numGathered_() const {
  return free_ == nullptr ? 0 : static_cast<std::size_t>(free_ - state_->block.data());
}
