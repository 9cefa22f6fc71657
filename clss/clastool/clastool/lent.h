// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_LENT_H_
#define CLSS_CLASTOOL_CLASTOOL_LENT_H_

#include <memory>

/// A T lent for the time of one call, as the thread's last call left it: what it holds keeps its
/// room. A call inside the call (an attention handler may run whatever it likes) gets another one.
template <class T>
class vx_Lent {
 public:
  vx_Lent() : held_(spare_) {
    spare_ = nullptr;
    if (held_ == nullptr) held_ = std::make_unique<T>();
  }
  vx_Lent(const vx_Lent&) = delete;
  vx_Lent& operator=(const vx_Lent&) = delete;
  ~vx_Lent() {
    static thread_local const Keeper keeper;
    if (spare_ == nullptr && !isOver_) spare_ = held_.release();
  }

  T& operator*() { return *held_; }
  T* operator->() { return held_.get(); }

 private:
  /// Frees the spare one when the thread ends; what the thread lends after that isn't kept.
  struct Keeper {
    Keeper() {}
    ~Keeper() {
      delete spare_;
      spare_ = nullptr;
      isOver_ = true;
    }
  };

  static inline thread_local T* spare_ = nullptr;
  static inline thread_local bool isOver_ = false;

  std::unique_ptr<T> held_;
};

#endif  // CLSS_CLASTOOL_CLASTOOL_LENT_H_
