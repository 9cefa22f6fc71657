// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_LENT_H_
#define CLSS_CLASTOOL_CLASTOOL_LENT_H_

#include <memory>
#include <utility>

/// A T lent for the time of one call, as the thread's last call left it: what it holds keeps its
/// room. A call inside the call (an attention handler may run whatever it likes) gets another one.
template <class T>
class vx_Lent {
 public:
  vx_Lent() : place_(ofThread_), held_(std::exchange(place_.spare, nullptr)) {
    if (held_ != nullptr) return;
    static thread_local const Keeper keeper;
    held_ = std::make_unique<T>();
  }
  vx_Lent(const vx_Lent&) = delete;
  vx_Lent& operator=(const vx_Lent&) = delete;
  ~vx_Lent() {
    if (place_.spare == nullptr && !place_.isOver) place_.spare = held_.release();
  }

  T& operator*() { return *held_; }
  T* operator->() { return held_.get(); }

 private:
  /// Needs no destructor, so that finding a thread's costs one call and no more.
  struct Place {
    T* spare = nullptr;
    bool isOver = false;
  };

  /// Frees the spare one when the thread ends; what the thread lends after that isn't kept.
  struct Keeper {
    Keeper() {}
    ~Keeper() {
      delete std::exchange(ofThread_.spare, nullptr);
      ofThread_.isOver = true;
    }
  };

  static inline thread_local Place ofThread_;

  Place& place_;
  std::unique_ptr<T> held_;
};

#endif  // CLSS_CLASTOOL_CLASTOOL_LENT_H_
