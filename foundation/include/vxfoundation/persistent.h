// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_PERSISTENT_H_
#define VXFOUNDATION_PERSISTENT_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

#include "vxfoundation/export.h"

class vxArchive;
struct vx_Lifeline;

/// Base of every class that is archived as an object.
///
/// Derive virtually where a class combines several persistent bases. Each concrete class that is
/// to be loaded through a pointer registers with a vx_Instantiator.
class VXFOUNDATION_EXPORT vxPersistent {
 public:
  virtual ~vxPersistent();

 protected:
  /// Transfers this object: every class level does its own part and calls its bases'. The level
  /// of vxPersistent itself has no bytes. See vx_ArchiveLevel for how a level is written.
  virtual void dispatchSerialize(vxArchive& archive);

 public:
  /// For a class that holds state which loading does not bring back; does nothing here.
  virtual void reInit();

  /// The same as `archive || *this`.
  virtual void loadSimple(vxArchive& archive);

  /// Whether `level` of `object` was already transferred in the calling thread's innermost pass,
  /// and the mark that it was. A pass is the transfer of one object, from its outermost
  /// dispatchSerialize to its return; outside any pass there are no marks.
  static bool haveVisited(const vxPersistent* object, const std::type_info& level);
  static void setVisited(const vxPersistent* object, const std::type_info& level);

  /// Transfers an object through a pointer: stored once per archive, a back-reference afterwards.
  ///
  /// Storing reads `object` (may be null) and leaves `objectRef` alone; loading sets `objectRef`
  /// to a new object, to the one that an earlier pointer brought, or to null. A counted object is
  /// kept by the archive until that ends, so take a handle before; any other one belongs to the
  /// caller from its first appearance on.
  ///
  /// Throws vxArchive::Errors: Unstorable for a class that is not registered, an object that
  /// reaches itself or one nested too deep; Malformed for bytes that no archive writes.
  static void serializePointer(vxArchive& archive, const vxPersistent* object,
                               vxPersistent*& objectRef);

 protected:
  vxPersistent() noexcept = default;
  vxPersistent(const vxPersistent&) noexcept {}
  vxPersistent(vxPersistent&& other) noexcept { other.mutating_(); }
  vxPersistent& operator=(const vxPersistent&) noexcept {
    mutating_();
    return *this;
  }
  vxPersistent& operator=(vxPersistent&& other) noexcept {
    mutating_();
    other.mutating_();
    return *this;
  }

  /// Tells archives that hold this object by back-reference that its content changes: it will be
  /// stored anew. Assignment and destruction call it; so does every operation that changes a
  /// stored field.
  void mutating_() noexcept;

 private:
  friend class vxArchive;
  friend class vxInputArchive;
  friend class vxOutputArchive;
  friend VXFOUNDATION_EXPORT vxArchive& operator||(vxArchive& archive, vxPersistent& object);

  std::uint64_t storedStamp_() const;
  void attach_(vx_Lifeline* lifeline) noexcept;

  // 0: not stored by pointer since the last change. Odd: the number by which archives know the
  // content. Even: the address of a vx_Lifeline, which then holds that number.
  mutable std::atomic<std::uint64_t> stamp_{0};
};

/// Registers one concrete class, so that an archive can recreate its objects by name.
///
/// One static object per class, built while its library is loaded; the destructor withdraws the
/// class. Of two registrations with equal names the first stands, and objects of the other class
/// can't be stored through a pointer. (Give the classes names of their own: clang takes two of one
/// name in unnamed namespaces for the same class, and so do archives then.) Registering is safe
/// while other threads archive; withdrawing needs them to have finished with the class.
class VXFOUNDATION_EXPORT vx_Instantiator {
 public:
  /// Gives a new, default-constructed object that the caller owns.
  using Make = vxPersistent* (*)();

  vx_Instantiator(const std::type_info& type, Make factory);
  vx_Instantiator(const vx_Instantiator&) = delete;
  vx_Instantiator& operator=(const vx_Instantiator&) = delete;
  ~vx_Instantiator();

  /// The name under which the class stands in archives: readable, the same for every compiler.
  const std::string& name() const { return name_; }
  const std::type_info& type() const { return type_; }
  vxPersistent* make() const { return make_(); }

  /// The registration of a class name, null if there is none.
  static const vx_Instantiator* find(const std::string& name);

  /// Every registered class name, ascending.
  static std::vector<std::string> registeredNames();

 private:
  std::string name_;
  const std::type_info& type_;
  Make make_;
  std::atomic<vx_Instantiator*> next_{nullptr};
};

/// The readable name of a type, as archives write it ("vxFeaturePattern").
VXFOUNDATION_EXPORT std::string vfClassName(const std::type_info& type);

#endif  // VXFOUNDATION_PERSISTENT_H_
