// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_EXCEPTION_H_
#define VXFOUNDATION_EXCEPTION_H_

#include <iosfwd>
#include <memory>
#include <string>

#include "vxfoundation/export.h"
#include "vxfoundation/persistent.h"

/// Root of all errors that the libraries throw. It is not a std::exception: a `main` catches both.
class VXFOUNDATION_EXPORT vxException : public vxPersistent {
 public:
  ~vxException() override;

  /// A number fixed per class, for hosts that report errors by number.
  virtual long errorNumber() const = 0;

  /// For an error on the heap (one that an archive brought): frees it and throws a copy by value.
  virtual void suicideAndRethrow() = 0;

 protected:
  vxException() = default;
  vxException(const vxException&) = default;
  vxException& operator=(const vxException&) = default;
};

/// An error with a message, which is archived with it.
class VXFOUNDATION_EXPORT vxExceptionWithString : public vxException {
 public:
  vxExceptionWithString(const vxExceptionWithString&) = default;
  vxExceptionWithString& operator=(const vxExceptionWithString&) = default;
  ~vxExceptionWithString() override;

  /// The text; `withNumber` puts the error number in front of it ("0x10004200: K must be >= 1").
  std::wstring message(bool withNumber = false) const;

  /// Writes the text.
  virtual void message_(std::wostream& out) const;

 protected:
  explicit vxExceptionWithString(const std::wstring& message);
  void dispatchSerialize(vxArchive& archive) override;

 private:
  std::wstring text_;
};

/// The body of every leaf's suicideAndRethrow(): `error` is gone afterwards.
template <class Leaf>
[[noreturn]] void vx_suicideAndRethrow(Leaf* error) {
  const std::unique_ptr<Leaf> owner(error);  // frees it, also where copying fails
  throw Leaf(*error);
}

/// An empty handle was dereferenced, or an object is not of the class that its user needs.
/// Carries no message.
class VXFOUNDATION_EXPORT vxBadPointer : public vxExceptionWithString {
 public:
  vxBadPointer();
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// The host asked for long operations to stop.
class VXFOUNDATION_EXPORT vxStopRequested : public vxExceptionWithString {
 public:
  vxStopRequested();
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// A failure status that no registered converter knows.
class VXFOUNDATION_EXPORT vxStatusException : public vxExceptionWithString {
 public:
  explicit vxStatusException(long status);
  long errorNumber() const override;
  void suicideAndRethrow() override;

  /// The status as it was given to vfThrowExceptionOnFailure().
  long status() const { return status_; }

 private:
  long status_;
};

#endif  // VXFOUNDATION_EXCEPTION_H_
