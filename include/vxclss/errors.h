// SPDX-License-Identifier: MIT
#ifndef VXCLSS_ERRORS_H_
#define VXCLSS_ERRORS_H_

#include <string>

#include "vxclss/export.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/persistent.h"

/// Every error that the library itself detects. Each carries a fixed English message and a fixed
/// number, and can be stored in an archive like any other object.
namespace vxClassifierDefs {

/// Base of the family: catches any error of the library.
class VXCLSS_EXPORT Errors : public vxExceptionWithString {
 public:
  Errors(const Errors&) = default;
  ~Errors() override;

 protected:
  explicit Errors(const std::wstring& message);
  Errors& operator=(const Errors&) = default;

  void serialize_(vxArchive& archive, unsigned char version);
  void dispatchSerialize(vxArchive& archive) override;
};

// The eight classes differ in nothing but their names and numbers.
#define VXCLSS_DECLARE_ERROR(Leaf)                               \
  class VXCLSS_EXPORT Leaf : public Errors {                     \
   public:                                                       \
    explicit Leaf(const std::wstring& message = std::wstring()); \
    Leaf(const Leaf&) = default;                                 \
    Leaf& operator=(const Leaf&) = default;                      \
    ~Leaf() override;                                            \
    long errorNumber() const override;                           \
    void suicideAndRethrow() override;                           \
                                                                 \
   protected:                                                    \
    void serialize_(vxArchive& archive, unsigned char version);  \
    void dispatchSerialize(vxArchive& archive) override;         \
                                                                 \
   private:                                                      \
    static vxPersistent* make();                                 \
    static vx_Instantiator sExemplar;                            \
  }

/// A bad value of a parameter, score, cost or frequency: 0x10004200.
VXCLSS_DECLARE_ERROR(BadParams);
/// An operation that needs training: 0x10004201.
VXCLSS_DECLARE_ERROR(NotTrained);
/// An index out of range: 0x10004202.
VXCLSS_DECLARE_ERROR(BadIndex);
/// A bad or repeated category label: 0x10004203.
VXCLSS_DECLARE_ERROR(BadLabel);
/// An operation of another technique: 0x10004204.
VXCLSS_DECLARE_ERROR(BadMethod);
/// A feature that the library does not have: 0x10004205.
VXCLSS_DECLARE_ERROR(NotImplemented);
/// A wrong number of measurements, or an invalid one where it must be valid: 0x10004206.
VXCLSS_DECLARE_ERROR(BadFeatures);
/// Too little data: 0x10004207.
VXCLSS_DECLARE_ERROR(InsufficientTrainData);

#undef VXCLSS_DECLARE_ERROR

}  // namespace vxClassifierDefs

#endif  // VXCLSS_ERRORS_H_
