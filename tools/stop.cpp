// SPDX-License-Identifier: MIT
#include "tools/stop.h"

#include <signal.h>
#include <unistd.h>
#include <vxfoundation/vxfoundation.h>

#include <atomic>

#include "tools/exit_code.h"

namespace cli {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> stopRequested{false};
std::atomic<const char*> doomedFile{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free &&
                  std::atomic<const char*>::is_always_lock_free,
              "a signal handler may touch nothing that locks");

struct sigaction oldActions[3];

/// The second signal is for a process that hangs in a read: only a pipe's writer could wake that.
void onSignal(int /*number*/) {
  if (!stopRequested.exchange(true)) return;
  if (const char* path = doomedFile.load()) unlink(path);
  _exit(kExitStopped);
}

bool wantsStop(void* /*context*/) { return stopRequested.load(std::memory_order_relaxed); }

}  // namespace

StopSignals::StopSignals() {
  stopRequested = false;
  struct sigaction action = {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  for (int i = 0; i < 3; ++i) {
    sigaction(kSignals[i], nullptr, &oldActions[i]);
    // A shell's background job and nohup want the signal ignored.
    if (oldActions[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
  vfSetAttentionHandler(wantsStop, nullptr);
}

StopSignals::~StopSignals() {
  vfSetAttentionHandler(nullptr, nullptr);
  for (int i = 0; i < 3; ++i) sigaction(kSignals[i], &oldActions[i], nullptr);
  stopRequested = false;
}

void throwIfStopped() {
  if (wantsStop(nullptr)) throw vxStopRequested();
}

void removeWhenKilled(const char* path) { doomedFile = path; }

}  // namespace cli
