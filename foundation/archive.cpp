// SPDX-License-Identifier: MIT
#include "vxfoundation/archive.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "archive_bytes.h"
#include "error_numbers.h"
#include "vxfoundation/text.h"

namespace {

// The most that is read at once, however much of it is there.
constexpr std::size_t kMostBytes = 1 << 24;

thread_local vx_ArchivePass* innermostPass = nullptr;

std::wstring unknownVersionText(const std::string& name) {
  std::wstring text = L"Unknown archive version";
  if (!name.empty()) {
    std::wstring wide;
    vfConvertString(wide, name);
    text += L" of " + wide;
  }
  return text;
}

void storeFlags(vxArchive& archive, const std::vector<bool>& flags) {
  unsigned char piece[kPieceBytes];
  std::vector<bool>::const_iterator flag = flags.begin();
  for (std::size_t left = flags.size(); left > 0;) {
    const std::size_t size = std::min(left, kPieceBytes);
    for (std::size_t i = 0; i < size; ++i, ++flag) piece[i] = *flag ? 1 : 0;
    vx_ArchiveBytes::transfer(archive, piece, size);
    left -= size;
  }
}

bool areAllSet(const unsigned char* flags, std::size_t count) {
  constexpr std::uint64_t kAllSet = 0x0101010101010101;
  std::size_t i = 0;
  for (std::uint64_t eight; i + 8 <= count; i += 8) {
    std::memcpy(&eight, flags + i, 8);
    if (eight != kAllSet) return false;
  }
  while (i < count && flags[i] == 1) ++i;
  return i == count;
}

std::vector<bool> loadedFlags(vxArchive& archive, std::size_t count) {
  // Setting many at once is fast, and of what patterns hold nearly all are set. But bytes that are
  // there need not be flags, so that the first piece may be the last.
  constexpr std::size_t kMostAhead = 16 * kPieceBytes;
  std::vector<bool> flags(std::min({count, vx_ArchiveBytes::numReady(archive), kMostAhead}), true);
  unsigned char piece[kPieceBytes];
  std::size_t size = 0;
  for (std::size_t done = 0; done < count; done += size) {
    size = std::min(count - done, kPieceBytes);
    vx_ArchiveBytes::transfer(archive, piece, size);
    if (flags.size() < done + size) flags.resize(done + size, true);
    if (areAllSet(piece, size)) continue;
    for (std::size_t i = 0; i < size; ++i) {
      if (piece[i] > 1) throw vxArchive::Malformed(L"A flag that is neither 0 nor 1");
      if (piece[i] == 0) flags[done + i] = false;
    }
  }
  return flags;
}

unsigned char* bytesOf(const std::vector<double>& values, std::size_t index) {
  return reinterpret_cast<unsigned char*>(const_cast<double*>(values.data() + index));
}

void storeDoubles(vxArchive& archive, const std::vector<double>& values, std::size_t count) {
  if (count == 0) return;
  if (vx_isLittleEndian()) {
    vx_ArchiveBytes::transfer(archive, bytesOf(values, 0), 8 * count);
    return;
  }
  for (std::size_t i = 0; i < count; ++i) {  // GCOVR_EXCL_START: another order of bytes
    double value = values[i];
    vx_ArchiveBytes::number(archive, value);
  }  // GCOVR_EXCL_STOP
}

std::vector<double> loadedDoubles(vxArchive& archive, std::size_t count) {
  std::vector<double> values;
  while (values.size() < count) {
    const std::size_t done = values.size();
    // A count is believed as far as the bytes are there.
    const std::size_t ready =
        std::clamp(vx_ArchiveBytes::numReady(archive), kPieceBytes, kMostBytes);
    const std::size_t size = std::min(count - done, ready / 8);
    values.resize(done + size);
    vx_ArchiveBytes::transfer(archive, bytesOf(values, done), 8 * size);
    vx_swapBytes<8>(bytesOf(values, done), size);
  }
  return values;
}

void transferDoubles(vxArchive& archive, std::vector<double>& values, std::size_t count) {
  if (archive.isStoring()) {
    storeDoubles(archive, values, count);
  } else {
    values = loadedDoubles(archive, count);
  }
}

}  // namespace

vxArchive::~vxArchive() = default;

vxArchive& vxArchive::operator||(long& value) {
  if (storing_ && (value < std::numeric_limits<std::int32_t>::min() ||
                   value > std::numeric_limits<std::int32_t>::max())) {
    throw Unstorable(L"A number does not fit 32 bits");
  }
  const std::uint32_t word = vx_ArchiveBytes::word(*this, static_cast<std::uint32_t>(value));
  if (isLoading()) value = static_cast<std::int32_t>(word);
  return *this;
}

vxArchive& vxArchive::operator||(unsigned long& value) {
  if (storing_ && value > std::numeric_limits<std::uint32_t>::max()) {
    throw Unstorable(L"A number does not fit 32 bits");
  }
  const std::uint32_t word = vx_ArchiveBytes::word(*this, static_cast<std::uint32_t>(value));
  if (isLoading()) value = word;
  return *this;
}

vxArchive& vxArchive::operator||(double& value) {
  vx_ArchiveBytes::number(*this, value);
  return *this;
}

vxArchive& vxArchive::operator||(std::wstring& value) {
  vx_Transfer transfer(*this);
  const std::size_t count =
      vx_ArchiveBytes::word(*this, isStoring() ? vx_checkedCount(value.size()) : 0);
  if (isStoring()) {
    for (const wchar_t character : value) {
      vx_ArchiveBytes::word(*this, static_cast<std::uint32_t>(character));
    }
  } else {
    std::wstring loaded;
    while (loaded.size() < count) {
      const std::uint32_t word = vx_ArchiveBytes::word(*this);
      const auto character = static_cast<wchar_t>(word);
      if (static_cast<std::uint32_t>(character) != word) {  // GCOVR_EXCL_START: 16 bits
        throw Malformed(L"A character that this system's wide strings can't hold");
      }  // GCOVR_EXCL_STOP
      loaded += character;
    }
    value.swap(loaded);
  }
  transfer.complete();
  return *this;
}

vxArchive::Errors::~Errors() = default;

vxArchive::UnknownVersion::UnknownVersion(const std::string& name, long number)
    : Errors(unknownVersionText(name)), name_(name), number_(number) {}
long vxArchive::UnknownVersion::errorNumber() const { return vx_ErrorNumbers::kUnknownVersion; }
void vxArchive::UnknownVersion::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxArchive::Malformed::Malformed(const std::wstring& message) : Errors(message) {}
long vxArchive::Malformed::errorNumber() const { return vx_ErrorNumbers::kMalformed; }
void vxArchive::Malformed::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxArchive::Unstorable::Unstorable(const std::wstring& message) : Errors(message) {}
long vxArchive::Unstorable::errorNumber() const { return vx_ErrorNumbers::kUnstorable; }
void vxArchive::Unstorable::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxArchive::StreamFailure::StreamFailure(const std::wstring& message) : Errors(message) {}
long vxArchive::StreamFailure::errorNumber() const { return vx_ErrorNumbers::kStreamFailure; }
void vxArchive::StreamFailure::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxArchive& operator||(vxArchive& archive, unsigned char& value) {
  const unsigned char byte = vx_ArchiveBytes::byte(archive, value);
  if (archive.isLoading()) value = byte;  // an object may be stored by two threads at once
  return archive;
}

vxArchive& operator||(vxArchive& archive, vxPersistent& object) {
  vx_Transfer transfer(archive);
  const vx_ArchiveNesting nesting(archive);
  const vx_ArchivePass pass(object);
  if (archive.isLoading()) object.mutating_();
  object.dispatchSerialize(archive);
  transfer.complete();
  return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<bool>& flags) {
  vx_Transfer transfer(archive);
  const std::size_t count = vx_ArchiveBytes::vectorHead(archive, flags.size());
  if (archive.isStoring()) {
    storeFlags(archive, flags);
  } else {
    flags = loadedFlags(archive, count);
  }
  transfer.complete();
  return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<double>& values) {
  vx_Transfer transfer(archive);
  transferDoubles(archive, values, vx_ArchiveBytes::vectorHead(archive, values.size()));
  transfer.complete();
  return archive;
}

void vfTransferVersion(vxArchive& archive, const char* name, long number) {
  vx_ArchiveBytes::version(archive, name, number);
}

std::size_t vfTransferVectorHead(vxArchive& archive, std::size_t count) {
  return vx_ArchiveBytes::vectorHead(archive, count);
}

void vfTransferElements(vxArchive& archive, std::vector<double>& values, std::size_t count) {
  vx_Transfer transfer(archive);
  transferDoubles(archive, values, count);
  transfer.complete();
}

void vx_Transfer::completeOutermost_() {
  // A class that swallows the refusal of a part would otherwise store half of that part.
  if (archive_.isStoring() && archive_.hasAbandoned_) {
    throw vxArchive::Unstorable(L"A part of the object was refused");
  }
  archive_.completeOutermost_();
  archive_.hasAbandoned_ = false;
}

void vx_Transfer::abandon_() noexcept {
  archive_.hasAbandoned_ = --archive_.openTransfers_ > 0;
  if (!archive_.hasAbandoned_) archive_.abandonOutermost_();
}

vx_ArchiveNesting::vx_ArchiveNesting(vxArchive& archive) : archive_(archive) {
  if (archive_.nesting_ == vxArchive::kMaximumNesting) {
    constexpr const wchar_t* kTooDeep = L"Objects nest too deep";
    if (archive_.isStoring()) throw vxArchive::Unstorable(kTooDeep);
    throw vxArchive::Malformed(kTooDeep);
  }
  ++archive_.nesting_;
}

vx_ArchivePass::vx_ArchivePass(const vxPersistent& object)
    : object_(&object), outer_(innermostPass) {
  innermostPass = this;
}

vx_ArchivePass::~vx_ArchivePass() { innermostPass = outer_; }

vx_ArchivePass* vx_ArchivePass::innermost() { return innermostPass; }

bool vx_ArchivePass::haveVisited(const vxPersistent* object, const std::type_info& level) const {
  const auto matches = [object, &level](const Mark& mark) {
    return mark.object == object && *mark.level == level;
  };
  return std::any_of(marks_, marks_ + count_, matches) ||
         std::any_of(more_.begin(), more_.end(), matches);
}

void vx_ArchivePass::setVisited(const vxPersistent* object, const std::type_info& level) {
  if (count_ < std::size(marks_)) {
    marks_[count_++] = {object, &level};
  } else {
    more_.push_back({object, &level});
  }
}

vx_ArchiveLevel::vx_ArchiveLevel(vxArchive& archive, const vxPersistent& object,
                                 const std::type_info& level, const char* name) {
  vx_ArchivePass* pass = innermostPass;
  if (pass == nullptr || pass->object() != &object) pass = &pass_.emplace(object);
  first_ = !pass->haveVisited(&object, level);
  if (first_) {
    pass->setVisited(&object, level);
    vx_ArchiveBytes::version(archive, name, 0);
  }
}

vxPersistent* vx_loadShared(vxArchive& archive) {
  const vxArchive::Pointer loaded = archive.transferPointer_(nullptr);
  if (!loaded.ownedByCaller) return loaded.object;
  delete loaded.object;
  return nullptr;
}
