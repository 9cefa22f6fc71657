// SPDX-License-Identifier: MIT
#include "vxfoundation/archive.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "archive_bytes.h"
#include "error_numbers.h"
#include "vxfoundation/text.h"

namespace {

// What is read or converted in one piece. A count in hostile bytes reserves no more than this
// before its elements have really arrived.
constexpr std::size_t kPieceBytes = 4096;

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

}  // namespace

vxArchive::~vxArchive() = default;

std::uint32_t vxArchive::transferWord_(std::uint32_t word) {
  unsigned char bytes[4];
  vx_encode(word, bytes);
  transferBytes_(bytes, sizeof(bytes));
  return vx_decodeWord(bytes);
}

vxArchive& vxArchive::operator||(long& value) {
  if (storing_ && (value < std::numeric_limits<std::int32_t>::min() ||
                   value > std::numeric_limits<std::int32_t>::max())) {
    throw Unstorable(L"A number does not fit 32 bits");
  }
  const std::uint32_t word = transferWord_(static_cast<std::uint32_t>(value));
  if (isLoading()) value = static_cast<std::int32_t>(word);
  return *this;
}

vxArchive& vxArchive::operator||(unsigned long& value) {
  if (storing_ && value > std::numeric_limits<std::uint32_t>::max()) {
    throw Unstorable(L"A number does not fit 32 bits");
  }
  const std::uint32_t word = transferWord_(static_cast<std::uint32_t>(value));
  if (isLoading()) value = word;
  return *this;
}

vxArchive& vxArchive::operator||(double& value) {
  unsigned char bytes[8];
  vx_encode(value, bytes);
  transferBytes_(bytes, sizeof(bytes));
  if (isLoading()) value = vx_decodeDouble(bytes);
  return *this;
}

vxArchive& vxArchive::operator||(std::wstring& value) {
  vx_Transfer transfer(*this);
  unsigned long count = vx_checkedCount(value.size());
  *this || count;
  if (isStoring()) {
    for (const wchar_t character : value) transferWord_(static_cast<std::uint32_t>(character));
  } else {
    std::wstring loaded;
    while (loaded.size() < count) {
      const std::uint32_t word = transferWord_(0);
      const auto character = static_cast<wchar_t>(word);
      if (static_cast<std::uint32_t>(character) != word) {
        throw Malformed(L"A character that this system's wide strings can't hold");
      }
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
  archive.transferBytes_(&value, 1);
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
  const std::size_t count = vfTransferVectorHead(archive, flags.size());
  std::vector<bool> loaded;
  unsigned char piece[kPieceBytes];
  for (std::size_t done = 0; done < count;) {
    const std::size_t size = std::min(count - done, kPieceBytes);
    if (archive.isStoring()) {
      for (std::size_t i = 0; i < size; ++i) piece[i] = flags[done + i] ? 1 : 0;
    }
    archive.transferBytes_(piece, size);
    if (archive.isLoading()) {
      if (std::any_of(piece, piece + size, [](unsigned char flag) { return flag > 1; })) {
        throw vxArchive::Malformed(L"A flag that is neither 0 nor 1");
      }
      loaded.insert(loaded.end(), piece, piece + size);
    }
    done += size;
  }
  if (archive.isLoading()) flags.swap(loaded);
  transfer.complete();
  return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<double>& values) {
  vx_Transfer transfer(archive);
  const std::size_t count = vfTransferVectorHead(archive, values.size());
  vfTransferElements(archive, values, count);
  transfer.complete();
  return archive;
}

void vfTransferVersion(vxArchive& archive, const char* name, long number) {
  unsigned char version = 0;
  archive || version;
  if (version != 0) throw vxArchive::UnknownVersion(name, number);
}

std::size_t vfTransferVectorHead(vxArchive& archive, std::size_t count) {
  vfTransferVersion(archive);
  return archive.transferWord_(archive.isStoring() ? vx_checkedCount(count) : 0);
}

void vfTransferElements(vxArchive& archive, std::vector<double>& values, std::size_t count) {
  vx_Transfer transfer(archive);
  std::vector<double> loaded;
  unsigned char piece[kPieceBytes];
  constexpr std::size_t kWidth = 8;
  for (std::size_t done = 0; done < count;) {
    const std::size_t size = std::min(count - done, kPieceBytes / kWidth);
    if (archive.isStoring()) {
      for (std::size_t i = 0; i < size; ++i) vx_encode(values[done + i], piece + kWidth * i);
    }
    archive.transferBytes_(piece, kWidth * size);
    if (archive.isLoading()) {
      if (loaded.empty()) loaded.reserve(size);
      for (std::size_t i = 0; i < size; ++i) loaded.push_back(vx_decodeDouble(piece + kWidth * i));
    }
    done += size;
  }
  if (archive.isLoading()) values.swap(loaded);
  transfer.complete();
}

vx_Transfer::vx_Transfer(vxArchive& archive) : archive_(archive) { ++archive_.openTransfers_; }

vx_Transfer::~vx_Transfer() {
  if (!open_) return;
  archive_.hasAbandoned_ = --archive_.openTransfers_ > 0;
  if (!archive_.hasAbandoned_) archive_.abandonOutermost_();
}

void vx_Transfer::complete() {
  if (archive_.openTransfers_ == 1) {
    // A class that swallows the refusal of a part would otherwise store half of that part.
    if (archive_.isStoring() && archive_.hasAbandoned_) {
      throw vxArchive::Unstorable(L"A part of the object was refused");
    }
    archive_.completeOutermost_();
    archive_.hasAbandoned_ = false;
  }
  open_ = false;
  --archive_.openTransfers_;
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
  const vx_ArchivePass* innermost = vx_ArchivePass::innermost();
  if (innermost == nullptr || innermost->object() != &object) pass_.emplace(object);
  first_ = !vxPersistent::haveVisited(&object, level);
  if (first_) {
    vxPersistent::setVisited(&object, level);
    vfTransferVersion(archive, name);
  }
}

vxPersistent* vx_loadShared(vxArchive& archive) {
  const vxArchive::Pointer loaded = archive.transferPointer_(nullptr);
  if (!loaded.ownedByCaller) return loaded.object;
  delete loaded.object;
  return nullptr;
}
