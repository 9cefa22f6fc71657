// SPDX-License-Identifier: MIT
#include "interrupts.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace vxpy {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenSignals(30);
constexpr milliseconds kShortestBetweenLooks(2);
constexpr milliseconds kLongestBetweenLooks(10);
constexpr int kMostCallsBetweenLooks = 1024;

thread_local Watcher* current = nullptr;
unsigned long mainThread = 0;

// Calls under way, and whether one of them has set the hook.
std::mutex callsMutex;
int calls = 0;
bool isAttended = false;
bool mayAttend = true;

bool isStopWanted(void*) { return current != nullptr && current->wantsStop(); }

void noteMainThread() {
  mainThread =
      py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
}

/// A child has the forking thread alone, which is its main one; other threads' calls are not there.
void afterFork() {
  noteMainThread();
  calls = current == nullptr ? 0 : 1;
}

}  // namespace

Watcher::Watcher(Watch& watch)
    : watch_(watch), outer_(current), listens_(PyThread_get_thread_ident() == mainThread) {
  current = this;
}

Watcher::~Watcher() { current = outer_; }

void Watcher::look_() {
  const Clock::time_point now = Clock::now();
  const auto passed = now - lastLook_;
  lastLook_ = now;
  if (passed < kShortestBetweenLooks) {
    creditOfOneLook_ = std::min(creditOfOneLook_ * 2, kMostCallsBetweenLooks);
  } else if (passed > kLongestBetweenLooks) {
    creditOfOneLook_ = std::max(creditOfOneLook_ / 2, 1);
  }
  credit_ = creditOfOneLook_;
  if (nextSignals_ == Clock::time_point()) {
    nextSignals_ = now + kBetweenSignals;  // the interpreter has looked just before the call
  } else if (now >= nextSignals_ && !watch_.isStopped()) {
    nextSignals_ = now + kBetweenSignals;
    const PyGILState_STATE state = PyGILState_Ensure();
    if (PyErr_CheckSignals() != 0) watch_.stop();
    PyGILState_Release(state);
  }
}

LibraryCall::LibraryCall() {
  const std::lock_guard<std::mutex> lock(callsMutex);
  ++calls;
}

LibraryCall::~LibraryCall() {
  const std::lock_guard<std::mutex> lock(callsMutex);
  if (--calls != 0 || !isAttended) return;
  vfSetAttentionHandler(nullptr, nullptr);
  isAttended = false;
}

void LibraryCall::attend() {
  const std::lock_guard<std::mutex> lock(callsMutex);
  if (calls != 1 || isAttended || !mayAttend) return;
  vfSetAttentionHandler(&isStopWanted, nullptr);
  isAttended = true;
}

void addInterrupts(py::module_& module) {
  noteMainThread();
  py::module_::import("os").attr("register_at_fork")(py::arg("after_in_child") =
                                                         py::cpp_function(&afterFork));
  mayAttend = std::getenv("VXCLSS_NO_ATTENTION_HANDLER") == nullptr;
  module.def(
      "use_attention_handler",
      [](bool allowed) {
        const std::lock_guard<std::mutex> lock(callsMutex);
        mayAttend = allowed;
      },
      py::arg("allowed"),
      "Whether calls may set the process's attention handler, by which Ctrl-C ends a slow row in its\n"
      "midst; otherwise it ends a batch between rows only. A C++ program that embeds Python and has\n"
      "a handler of its own says False here, or sets VXCLSS_NO_ATTENTION_HANDLER in the environment\n"
      "before the import.");
}

}  // namespace vxpy
