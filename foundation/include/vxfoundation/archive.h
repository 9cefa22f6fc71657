// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_ARCHIVE_H_
#define VXFOUNDATION_ARCHIVE_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "vxfoundation/exception.h"
#include "vxfoundation/export.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A two-way archive: `archive || a || b` stores when storing and loads when loading.
///
/// There is no conversion to bool, so a value without a transfer of its own does not compile.
/// Every failure of a transfer is under vxArchive::Errors, bad_alloc or the stream's own. A load
/// that fails leaves its target as it was; a handle is released first and ends empty.
/// One archive belongs to one thread; different ones may store one object at the same time.
class VXFOUNDATION_EXPORT vxArchive {
 public:
  class Errors;
  class UnknownVersion;
  class Malformed;
  class Unstorable;
  class StreamFailure;

  /// How deep objects may nest, by pointer or in place; more is Unstorable, or Malformed.
  static constexpr int kMaximumNesting = 1000;

  vxArchive(const vxArchive&) = delete;
  vxArchive& operator=(const vxArchive&) = delete;
  virtual ~vxArchive();

  bool isStoring() const noexcept { return storing_; }
  bool isLoading() const noexcept { return !storing_; }

  /// 4 bytes; a value that does not fit 32 bits throws Unstorable.
  vxArchive& operator||(long& value);
  vxArchive& operator||(unsigned long& value);

  /// 8 bytes, IEEE 754; every bit survives, those of a NaN too.
  vxArchive& operator||(double& value);

  /// A count and 4 bytes a character, embedded zeros included.
  vxArchive& operator||(std::wstring& value);

 private:
  friend class vxInputArchive;
  friend class vxOutputArchive;
  friend class vxPersistent;
  friend class vx_ArchiveNesting;
  friend class vx_Transfer;
  friend struct vx_ArchiveBytes;
  friend VXFOUNDATION_EXPORT vxPersistent* vx_loadShared(vxArchive& archive);

  struct Pointer {
    vxPersistent* object;
    bool ownedByCaller;
  };

  explicit vxArchive(bool storing) : storing_(storing) {}

  // Only what vx_ArchiveBytes can't do on the spot.
  virtual void transferBytes_(unsigned char* bytes, std::size_t count) = 0;
  virtual Pointer transferPointer_(const vxPersistent* object) = 0;
  virtual void completeOutermost_() {}
  virtual void abandonOutermost_() noexcept {}

  const bool storing_;
  unsigned char* free_ = nullptr;  // storing: the room that a transfer under way has left
  unsigned char* end_ = nullptr;
  std::ios* source_ = nullptr;  // loading
  int nesting_ = 0;
  int openTransfers_ = 0;
  bool hasAbandoned_ = false;  // an inner one of the outermost transfer under way
};

/// Base of all errors of a transfer.
class VXFOUNDATION_EXPORT vxArchive::Errors : public vxExceptionWithString {
 public:
  Errors(const Errors&) = default;
  Errors& operator=(const Errors&) = default;
  ~Errors() override;

 protected:
  using vxExceptionWithString::vxExceptionWithString;
};

/// A version byte that the reading class does not know.
class VXFOUNDATION_EXPORT vxArchive::UnknownVersion : public Errors {
 public:
  explicit UnknownVersion(const std::string& name = {}, long number = 0);
  long errorNumber() const override;
  void suicideAndRethrow() override;

  /// A class name or a source unit, or none; and a line, or 0.
  const std::string& name() const { return name_; }
  long number() const { return number_; }

 private:
  std::string name_;
  long number_;
};

/// Bytes that no archive writes.
class VXFOUNDATION_EXPORT vxArchive::Malformed : public Errors {
 public:
  explicit Malformed(const std::wstring& message = std::wstring());
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// A value that an archive can't hold.
class VXFOUNDATION_EXPORT vxArchive::Unstorable : public Errors {
 public:
  explicit Unstorable(const std::wstring& message = std::wstring());
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// A stream that did not take what was written.
class VXFOUNDATION_EXPORT vxArchive::StreamFailure : public Errors {
 public:
  explicit StreamFailure(const std::wstring& message = std::wstring());
  long errorNumber() const override;
  void suicideAndRethrow() override;
};

/// Stores to a binary stream, which must outlive the archive.
///
/// All bytes of an outermost transfer reach the stream before it returns; a stream with a buffer
/// may still fail to write them, which a flush or close tells. A transfer that fails leaves the
/// archive as it was if none of its bytes had been handed to a stream that was good; otherwise the
/// stream may hold a torn transfer and every later one throws StreamFailure.
class VXFOUNDATION_EXPORT vxOutputArchive : public vxArchive {
 public:
  explicit vxOutputArchive(std::ostream& stream);
  ~vxOutputArchive() override;

 private:
  struct State;

  void transferBytes_(unsigned char* bytes, std::size_t count) override;
  Pointer transferPointer_(const vxPersistent* object) override;
  void completeOutermost_() override;
  void abandonOutermost_() noexcept override;
  std::size_t numGathered_() const;

  std::unique_ptr<State> state_;
};

/// Loads from a binary stream, which must outlive the archive; reads no byte beyond its transfers.
///
/// The bytes are not trusted: whatever they are, loading ends in a valid object or in an exception,
/// with memory in proportion to the bytes that were really there. Counted objects that arrived
/// through pointers are kept until the archive ends.
class VXFOUNDATION_EXPORT vxInputArchive : public vxArchive {
 public:
  explicit vxInputArchive(std::istream& stream);
  ~vxInputArchive() override;

 private:
  struct State;

  void transferBytes_(unsigned char* bytes, std::size_t count) override;
  Pointer transferPointer_(const vxPersistent* object) override;

  std::unique_ptr<State> state_;
};

/// One byte.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, unsigned char& value);

/// An object in place, without a class name or back-references.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, vxPersistent& object);

/// Version byte 0, count, one byte a flag.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, std::vector<bool>& flags);

/// Version byte 0, count, elements; the same bytes as an element at a time.
VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, std::vector<double>& values);

/// Transfers a version byte of 0; when loading, another value throws UnknownVersion(name, number).
VXFOUNDATION_EXPORT void vfTransferVersion(vxArchive& archive, const char* name = "",
                                           long number = 0);

/// Transfers what stands before the elements of a vector: version byte 0 and `count`. Gives the
/// count; loading ignores the argument.
VXFOUNDATION_EXPORT std::size_t vfTransferVectorHead(vxArchive& archive, std::size_t count);

/// Transfers `count` bare doubles; loading replaces `values`, which grows as the bytes arrive.
VXFOUNDATION_EXPORT void vfTransferElements(vxArchive& archive, std::vector<double>& values,
                                            std::size_t count);

/// Makes several transfers one: what is stored reaches the stream at complete(), and not at all if
/// the scope is left before (but for what did not fit the buffer).
class VXFOUNDATION_EXPORT vx_Transfer {
 public:
  explicit vx_Transfer(vxArchive& archive) : archive_(archive) { ++archive_.openTransfers_; }
  vx_Transfer(const vx_Transfer&) = delete;
  vx_Transfer& operator=(const vx_Transfer&) = delete;
  ~vx_Transfer() {
    if (open_) abandon_();
  }
  void complete() {
    if (archive_.openTransfers_ == 1) completeOutermost_();
    open_ = false;
    --archive_.openTransfers_;
  }

 private:
  void completeOutermost_();
  void abandon_() noexcept;

  vxArchive& archive_;
  bool open_ = true;
};

/// Counts one more object that nests in the archive; throws when it is one too many.
class VXFOUNDATION_EXPORT vx_ArchiveNesting {
 public:
  explicit vx_ArchiveNesting(vxArchive& archive);
  vx_ArchiveNesting(const vx_ArchiveNesting&) = delete;
  vx_ArchiveNesting& operator=(const vx_ArchiveNesting&) = delete;
  ~vx_ArchiveNesting() { --archive_.nesting_; }

 private:
  vxArchive& archive_;
};

/// One pass of the calling thread: the transfer of one object, with its visit marks.
class VXFOUNDATION_EXPORT vx_ArchivePass {
 public:
  explicit vx_ArchivePass(const vxPersistent& object);
  vx_ArchivePass(const vx_ArchivePass&) = delete;
  vx_ArchivePass& operator=(const vx_ArchivePass&) = delete;
  ~vx_ArchivePass();

  static vx_ArchivePass* innermost();
  const vxPersistent* object() const { return object_; }
  bool haveVisited(const vxPersistent* object, const std::type_info& level) const;
  void setVisited(const vxPersistent* object, const std::type_info& level);

 private:
  struct Mark {
    const vxPersistent* object;
    const std::type_info* level;
  };

  const vxPersistent* object_;
  vx_ArchivePass* outer_;
  std::size_t count_ = 0;
  Mark marks_[6];           // most hierarchies fit
  std::vector<Mark> more_;  // those that don't
};

/// One class level of a transfer: its visit mark and its version byte. True when the level's
/// fields and its bases are still to be transferred:
///
///     void Derived::dispatchSerialize(vxArchive& archive) {
///       if (const vx_ArchiveLevel level{archive, *this, typeid(Derived)}) {
///         Base::dispatchSerialize(archive);
///         vfTransferStaged(archive, *this, [&archive](Derived& target) {
///           archive || target.first_ || target.second_;
///         });
///       }
///     }
///
/// Loading another version byte than 0 throws UnknownVersion(name, 0).
class VXFOUNDATION_EXPORT vx_ArchiveLevel {
 public:
  vx_ArchiveLevel(vxArchive& archive, const vxPersistent& object, const std::type_info& level,
                  const char* name = "");
  explicit operator bool() const { return first_; }

 private:
  std::optional<vx_ArchivePass> pass_;  // when no transfer of the object has opened one
  bool first_;
};

/// Gives `fields(value)` when storing. When loading, gives `fields` a new T made from `arguments`
/// and moves that into `value` once everything was read, so that a failure leaves `value` alone.
template <class T, class Fields, class... Arguments>
void vfTransferStaged(vxArchive& archive, T& value, Fields&& fields, Arguments&&... arguments) {
  if (archive.isStoring()) {
    fields(value);
    return;
  }
  T loaded(std::forward<Arguments>(arguments)...);
  fields(loaded);
  value = std::move(loaded);
}

/// A vector: version byte 0, count, then the elements, each with its own transfer. Loading makes
/// each element from `blank` first; the vector grows as the bytes arrive.
template <class T>
vxArchive& vfTransferVector(vxArchive& archive, std::vector<T>& values, const T& blank) {
  vx_Transfer transfer(archive);
  const std::size_t count = vfTransferVectorHead(archive, values.size());
  if (archive.isStoring()) {
    for (T& value : values) archive || value;
  } else {
    std::vector<T> loaded;
    while (loaded.size() < count) {
      loaded.push_back(blank);
      archive || loaded.back();
    }
    values.swap(loaded);
  }
  transfer.complete();
  return archive;
}

template <class T>
vxArchive& operator||(vxArchive& archive, std::vector<T>& values) {
  return vfTransferVector(archive, values, T());
}

/// Loads what serializePointer() would, or null where no handle could own that.
VXFOUNDATION_EXPORT vxPersistent* vx_loadShared(vxArchive& archive);

template <class Handle>
vxArchive& vx_transferHandle(vxArchive& archive, Handle& handle) {
  if (archive.isStoring()) {
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(archive, handle.get(), unused);
  } else {
    handle.reset();
    handle.assignChecked(vx_loadShared(archive));
  }
  return archive;
}

/// A shared object through its handle. Loading releases the handle first; an object of another
/// class leaves it empty.
template <class T>
vxArchive& operator||(vxArchive& archive, vxPtrHandle<T>& handle) {
  return vx_transferHandle(archive, handle);
}
template <class T>
vxArchive& operator||(vxArchive& archive, vxPtrHandle_const<T>& handle) {
  return vx_transferHandle(archive, handle);
}

#endif  // VXFOUNDATION_ARCHIVE_H_
