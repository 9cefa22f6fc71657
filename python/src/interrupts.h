// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_INTERRUPTS_H_
#define VXCLSS_PYTHON_INTERRUPTS_H_

#include <atomic>
#include <chrono>

#include "bindings.h"

namespace vxpy {

// Ctrl-C is looked for between the rows of a batch, and within them through the library's attention
// hook where a row takes long. Not always: the library asks a hook once for each stored pattern, so
// one that is merely there makes a neighbour search ten times slower.

/// Whether one call into the library shall end; all threads that work for it share this.
class Watch {
 public:
  void stop() noexcept { stopped_.store(true, std::memory_order_relaxed); }
  bool isStopped() const noexcept { return stopped_.load(std::memory_order_relaxed); }

 private:
  std::atomic<bool> stopped_{false};
};

/// While one lives, the attention hook asks it in the thread that made it.
///
/// Python delivers signals to its main thread only. There the watcher looks for them some thirty
/// times a second, with the GIL taken for that moment, and what a signal's handler raises stays
/// Python's error; in other threads it reads the watch alone. Watchers nest, since a signal's
/// handler may call the library again.
class Watcher {
 public:
  explicit Watcher(Watch& watch);
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher();

  /// Cheap enough for inner loops.
  bool wantsStop() {
    if (listens_ && --credit_ <= 0) look_();
    return watch_.isStopped();
  }

 private:
  using Clock = std::chrono::steady_clock;

  void look_();

  Watch& watch_;
  Watcher* const outer_;
  const bool listens_;
  int credit_ = 1;           // calls until the clock is looked at again
  int creditOfOneLook_ = 1;  // such that little time passes between looks, and few calls look
  Clock::time_point lastLook_{};
  Clock::time_point nextSignals_{};
};

/// Whether single runs of a classifier take so long that Ctrl-C has to end them in their midst; a
/// classifier is not known to until it did.
class Slowness {
 public:
  bool isKnown() const noexcept { return isKnown_.load(std::memory_order_relaxed); }

  /// Calls `run` and remembers if it took long.
  template <class Run>
  void measure(const Run& run) {
    if (isKnown()) return run();
    const auto start = std::chrono::steady_clock::now();
    run();
    if (std::chrono::steady_clock::now() - start > std::chrono::milliseconds(20)) {
      isKnown_.store(true, std::memory_order_relaxed);
    }
  }

 private:
  std::atomic<bool> isKnown_{false};
};

/// A call into the library under way, whichever thread makes it.
///
/// The hook is for the whole process and may be set only while nothing runs, so a call sets it when
/// it is the only one; the last call to end removes it.
class LibraryCall {
 public:
  LibraryCall();
  LibraryCall(const LibraryCall&) = delete;
  LibraryCall& operator=(const LibraryCall&) = delete;
  ~LibraryCall();

  /// Sets the hook if this call is alone. Only while none of its threads runs anything.
  void attend();
};

/// Calls `operation` without the GIL; Ctrl-C ends it with what the signal's handler raises, in its
/// midst if it is known to be slow.
template <class Operation>
void runWatched(Slowness* slowness, const Operation& operation) {
  LibraryCall call;
  Watch watch;
  const Watcher watcher(watch);
  if (slowness != nullptr && slowness->isKnown()) call.attend();
  try {
    const py::gil_scoped_release release;
    if (slowness != nullptr) {
      slowness->measure(operation);
    } else {
      operation();
    }
  } catch (const vxStopRequested&) {
    if (!watch.isStopped()) throw;
  }
  if (watch.isStopped()) throw py::error_already_set();
}

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_INTERRUPTS_H_
