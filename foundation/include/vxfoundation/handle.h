// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_HANDLE_H_
#define VXFOUNDATION_HANDLE_H_

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "vxfoundation/export.h"
#include "vxfoundation/persistent.h"

/// Adds one to, or takes one from, a count that several threads share; gives the new value.
inline std::int32_t vfInterlockedIncrement(std::atomic<std::int32_t>& count) noexcept {
  return count.fetch_add(1, std::memory_order_relaxed) + 1;
}
inline std::int32_t vfInterlockedDecrement(std::atomic<std::int32_t>& count) noexcept {
  return count.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

/// Throws vxBadPointer: what every empty handle does when it is dereferenced.
[[noreturn]] VXFOUNDATION_EXPORT void vfThrowBadPointer();

/// Base of every reference-counted object: holds the number of handles that refer to it.
///
/// A new object has a count of 0, a copy too: the count belongs to the object, not to its value,
/// so assignment leaves both counts alone. An object that no handle ever held (on the stack, in a
/// member) is never deleted by one.
class VXFOUNDATION_EXPORT vxRepBase {
 public:
  vxRepBase() noexcept = default;
  vxRepBase(const vxRepBase&) noexcept {}
  vxRepBase& operator=(const vxRepBase&) noexcept { return *this; }
  virtual ~vxRepBase();

  /// Number of handles that refer to this object now; other threads may change it at any time.
  /// After a 1, what the last other holder did with the object has happened before.
  long referenceCount() const noexcept { return count_.load(std::memory_order_acquire); }

 private:
  template <class Object>
  friend class vx_HandleBase;

  mutable std::atomic<std::int32_t> count_{0};
};

/// Whether static_cast can go from vxPersistent to Object: not to a class with that as virtual
/// base.
template <class Object, class = void>
inline constexpr bool vx_isPlainBase = false;
template <class Object>
inline constexpr bool vx_isPlainBase<
    Object, std::void_t<decltype(static_cast<Object*>(std::declval<vxPersistent*>()))>> = true;

/// What dynamic_cast gives, at once where the object is of the very class.
template <class Object>
Object* vx_castDown(vxPersistent* object) noexcept {
  if constexpr (vx_isPlainBase<Object> && !std::is_abstract_v<Object>) {
    if (object != nullptr && typeid(*object) == typeid(Object)) return static_cast<Object*>(object);
  }
  return dynamic_cast<Object*>(object);
}

/// What both kinds of handle share; `Object` is `T` or `const T`.
template <class Object>
class vx_HandleBase {
 public:
  /// The object, null when the handle is empty.
  Object* get() const noexcept { return object_; }
  bool isNull() const noexcept { return object_ == nullptr; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// The object; an empty handle throws vxBadPointer.
  Object* operator->() const { return checked_(); }
  Object& operator*() const { return *checked_(); }

  /// Takes a reference to `object` (may be null), then releases the one held before.
  void reset(Object* object = nullptr) noexcept { vx_HandleBase(object).swap(*this); }

  /// Refers to what an archive produced; empty if that is null or not an object of this type.
  void assignChecked(vxPersistent* object) noexcept { reset(vx_castDown<Object>(object)); }

  void swap(vx_HandleBase& other) noexcept { std::swap(object_, other.object_); }

 protected:
  vx_HandleBase() noexcept = default;
  explicit vx_HandleBase(Object* object) noexcept : object_(object) { take_(); }
  vx_HandleBase(const vx_HandleBase& other) noexcept : object_(other.object_) { take_(); }
  vx_HandleBase(vx_HandleBase&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  vx_HandleBase& operator=(const vx_HandleBase& other) noexcept {
    reset(other.object_);
    return *this;
  }
  vx_HandleBase& operator=(vx_HandleBase&& other) noexcept {
    vx_HandleBase(std::move(other)).swap(*this);
    return *this;
  }
  ~vx_HandleBase() { release_(); }

 private:
  Object* checked_() const {
    if (object_ == nullptr) vfThrowBadPointer();
    return object_;
  }
  void take_() noexcept {
    if (object_ == nullptr) return;
    const vxRepBase& rep = *object_;
    vfInterlockedIncrement(rep.count_);
  }
  void release_() noexcept {
    if (object_ == nullptr) return;
    const vxRepBase* rep = object_;
    if (vfInterlockedDecrement(rep->count_) == 0) delete rep;
  }

  Object* object_ = nullptr;
};

/// Handles are equal when they refer to the same object, or both to none.
template <class A, class B>
bool operator==(const vx_HandleBase<A>& a, const vx_HandleBase<B>& b) noexcept {
  return a.get() == b.get();
}
template <class A, class B>
bool operator!=(const vx_HandleBase<A>& a, const vx_HandleBase<B>& b) noexcept {
  return !(a == b);
}

/// A counted reference to one shared object of a class derived from vxRepBase, or to none.
///
/// Copying a handle shares the object; releasing the last one deletes it. Different handles to one
/// object may be copied and released on several threads; one handle must not be changed on two.
template <class T>
class vxPtrHandle : public vx_HandleBase<T> {
 public:
  vxPtrHandle() noexcept = default;
  explicit vxPtrHandle(T* object) noexcept : vx_HandleBase<T>(object) {}

  /// From a handle to a derived class.
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  vxPtrHandle(const vxPtrHandle<U>& other) noexcept : vx_HandleBase<T>(other.get()) {}
};

/// A vxPtrHandle that gives only const access to its object.
template <class T>
class vxPtrHandle_const : public vx_HandleBase<const T> {
 public:
  vxPtrHandle_const() noexcept = default;
  explicit vxPtrHandle_const(const T* object) noexcept : vx_HandleBase<const T>(object) {}

  /// From a handle to the same or a derived class.
  template <class U, class = std::enable_if_t<std::is_convertible_v<const U*, const T*>>>
  vxPtrHandle_const(const vxPtrHandle<U>& other) noexcept : vx_HandleBase<const T>(other.get()) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<const U*, const T*>>>
  vxPtrHandle_const(const vxPtrHandle_const<U>& other) noexcept
      : vx_HandleBase<const T>(other.get()) {}
};

/// Whether a U can be taken for a T without a look at it: not so where a base is virtual.
template <class T, class U, class = void>
constexpr bool vx_isStaticallyCast = false;
template <class T, class U>
constexpr bool vx_isStaticallyCast<
    T, U, std::void_t<decltype(static_cast<const T&>(std::declval<const U&>()))>> = true;

/// `object` as the class that its user needs; vxBadPointer if it is of another one.
template <class T, class U>
const T& vfCheckedCast(const U& object) {
  if constexpr (vx_isStaticallyCast<T, U>) {
    // Mostly it is of that very class, which is seen at once.
    if (typeid(object) == typeid(T)) return static_cast<const T&>(object);
  }
  const T* cast = dynamic_cast<const T*>(&object);
  if (cast == nullptr) vfThrowBadPointer();
  return *cast;
}

#endif  // VXFOUNDATION_HANDLE_H_
