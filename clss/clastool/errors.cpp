// SPDX-License-Identifier: MIT
#include "vxclss/errors.h"

#include <cstdint>

#include "vxfoundation/archive.h"
#include "vxfoundation/status.h"

namespace vxClassifierDefs {

Errors::Errors(const std::wstring& message) : vxExceptionWithString(message) {}

Errors::~Errors() = default;

void Errors::serialize_(vxArchive& archive, unsigned char version) {
  if (version != 0) throw vxArchive::UnknownVersion("vxClassifierDefs::Errors", 0);
  vxExceptionWithString::dispatchSerialize(archive);
}

void Errors::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Errors), "vxClassifierDefs::Errors"}) {
    serialize_(archive, 0);
  }
}

#define VXCLSS_DEFINE_ERROR(Leaf, number)                                                        \
  Leaf::Leaf(const std::wstring& message) : Errors(message) {}                                   \
  Leaf::~Leaf() = default;                                                                       \
  long Leaf::errorNumber() const { return number; }                                              \
  void Leaf::suicideAndRethrow() { vx_suicideAndRethrow(this); }                                 \
  void Leaf::serialize_(vxArchive& archive, unsigned char version) {                             \
    if (version != 0) throw vxArchive::UnknownVersion("vxClassifierDefs::" #Leaf, 0);            \
    Errors::dispatchSerialize(archive);                                                          \
  }                                                                                              \
  void Leaf::dispatchSerialize(vxArchive& archive) {                                             \
    if (const vx_ArchiveLevel level{archive, *this, typeid(Leaf), "vxClassifierDefs::" #Leaf}) { \
      serialize_(archive, 0);                                                                    \
    }                                                                                            \
  }                                                                                              \
  vxPersistent* Leaf::make() { return new Leaf; }                                                \
  vx_Instantiator Leaf::sExemplar(typeid(Leaf), &Leaf::make)

// Hosts report these numbers: never renumber.
VXCLSS_DEFINE_ERROR(BadParams, 0x10004200);
VXCLSS_DEFINE_ERROR(NotTrained, 0x10004201);
VXCLSS_DEFINE_ERROR(BadIndex, 0x10004202);
VXCLSS_DEFINE_ERROR(BadLabel, 0x10004203);
VXCLSS_DEFINE_ERROR(BadMethod, 0x10004204);
VXCLSS_DEFINE_ERROR(NotImplemented, 0x10004205);
VXCLSS_DEFINE_ERROR(BadFeatures, 0x10004206);
VXCLSS_DEFINE_ERROR(InsufficientTrainData, 0x10004207);

#undef VXCLSS_DEFINE_ERROR

}  // namespace vxClassifierDefs

namespace {

constexpr long kMathKernelModule = 91;

void convertMathKernelStatus(long status) {
  switch (static_cast<std::uint32_t>(status)) {
    case 0x80000B61:
      throw vxClassifierDefs::InsufficientTrainData(
          L"No valid data has been used to train the distribution");
    case 0x80000B62:
      throw vxClassifierDefs::BadParams(
          L"Must call clear before updating with feature vectors of different sizes");
    default:
      return;
  }
}

[[maybe_unused]] const bool mathKernelConverterIsRegistered = [] {
  vfRegisterExceptionConverter(kMathKernelModule, &convertMathKernelStatus);
  return true;
}();

}  // namespace
