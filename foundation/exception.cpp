// SPDX-License-Identifier: MIT
#include "vxfoundation/exception.h"

#include <cstdint>
#include <locale>
#include <ostream>
#include <sstream>

#include "error_numbers.h"
#include "vxfoundation/archive.h"

vxException::~vxException() = default;

vxExceptionWithString::vxExceptionWithString(const std::wstring& message) : text_(message) {}

vxExceptionWithString::~vxExceptionWithString() = default;

std::wstring vxExceptionWithString::message(bool withNumber) const {
  std::wostringstream out;
  out.imbue(std::locale::classic());
  out.exceptions(std::ios_base::badbit);  // a lack of memory is told, not swallowed
  if (withNumber)
    out << std::showbase << std::hex << static_cast<std::uint32_t>(errorNumber()) << std::dec
        << L": ";
  message_(out);
  return out.str();
}

void vxExceptionWithString::message_(std::wostream& out) const { out << text_; }

vxBadPointer::vxBadPointer() : vxExceptionWithString(std::wstring()) {}
long vxBadPointer::errorNumber() const { return vx_ErrorNumbers::kBadPointer; }
void vxBadPointer::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxStopRequested::vxStopRequested() : vxExceptionWithString(L"The host asked to stop") {}
long vxStopRequested::errorNumber() const { return vx_ErrorNumbers::kStopRequested; }
void vxStopRequested::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxStatusException::vxStatusException(long status)
    : vxExceptionWithString(L"An operation failed with a status that has no exception of its own"),
      status_(status) {}
long vxStatusException::errorNumber() const { return vx_ErrorNumbers::kStatus; }
void vxStatusException::suicideAndRethrow() { vx_suicideAndRethrow(this); }

void vxExceptionWithString::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxExceptionWithString)}) {
    vxException::dispatchSerialize(archive);
    archive || text_;
  }
}
