// SPDX-License-Identifier: MIT
#include "row_work.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "errors.h"

namespace vxpy {
namespace {

constexpr std::ptrdiff_t kLargestBlock = 1024;  // rows that a thread takes at once

/// One batch that several threads work on. Blocks are handed out in order, so when a row fails, all
/// rows before it are done or in hands, and the first row that fails is always found.
class SharedBatch {
 public:
  SharedBatch(std::ptrdiff_t rows, int threads)
      : rows_(rows), firstBad_(rows), block_(blockOf(rows, threads)) {}

  /// The first row, alone, which tells whether the rows are slow.
  void tryFirst(Slowness& slowness, const std::function<RowWork()>& newWork) noexcept {
    if (rows_ == 0) return;
    try {
      const Watcher watcher(watch_);
      const RowWork work = newWork();
      slowness.measure([&work] { work(0); });
      next_ = 1;
    } catch (...) {
      if (!watch_.isStopped()) keep_(std::current_exception(), 0);
    }
  }

  void work(const std::function<RowWork()>& newWork) noexcept {
    std::ptrdiff_t row = 0;
    try {
      Watcher watcher(watch_);
      const RowWork work = newWork();
      while ((row = next_.fetch_add(block_)) < firstBad_) {
        const std::ptrdiff_t end = std::min(row + block_, rows_);
        for (; row < end; ++row) {
          if (watcher.wantsStop()) return;
          work(row);
        }
      }
    } catch (...) {
      if (!watch_.isStopped()) keep_(std::current_exception(), row);
    }
  }

  /// Throws what the batch has ended with, if anything. Needs the GIL.
  void finish() const {
    if (watch_.isStopped()) throw py::error_already_set();
    if (error_) throwFromRow(error_, firstBad_);
  }

 private:
  static std::ptrdiff_t blockOf(std::ptrdiff_t rows, int threads) {
    if (threads == 1) return std::max<std::ptrdiff_t>(rows, 1);
    return std::clamp<std::ptrdiff_t>(rows / (threads * std::ptrdiff_t{16}), 1, kLargestBlock);
  }

  void keep_(std::exception_ptr error, std::ptrdiff_t row) noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (error_ && row >= firstBad_) return;
    error_ = std::move(error);
    firstBad_ = row;
  }

  const std::ptrdiff_t rows_;
  std::atomic<std::ptrdiff_t> next_{0};
  std::atomic<std::ptrdiff_t> firstBad_;
  const std::ptrdiff_t block_;
  Watch watch_;
  std::mutex mutex_;
  std::exception_ptr error_;
};

}  // namespace

int threadsOf(const py::object& jobs) {
  if (jobs.is_none()) return 1;
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(jobs.ptr()));
  if (!number) throw py::error_already_set();
  const long wanted = PyLong_AsLong(number.ptr());
  if (wanted == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
  if (wanted == 0) throw py::value_error("n_jobs is 0; give a number of threads, or -1 for all");
  if (wanted > 0) return static_cast<int>(std::min(wanted, 1024L));
  const auto usable =
      static_cast<long>(py::len(py::module_::import("os").attr("sched_getaffinity")(0)));
  return static_cast<int>(std::max(1L, usable + 1 + wanted));
}

void refuseJobs(const py::object& jobs) {
  if (!jobs.is_none()) throw py::type_error("n_jobs is for the rows of a batch, not for one row");
}

void forEachRow(std::ptrdiff_t rows, int threads, Slowness* slowness,
                const std::function<RowWork()>& newWork) {
  threads = static_cast<int>(std::clamp<std::ptrdiff_t>(rows, 1, threads));
  SharedBatch batch(rows, threads);
  LibraryCall call;
  {
    const py::gil_scoped_release release;
    if (slowness != nullptr) {
      if (!slowness->isKnown()) batch.tryFirst(*slowness, newWork);
      if (slowness->isKnown()) call.attend();
    }
    std::vector<std::thread> others;
    try {
      for (int i = 1; i < threads; ++i) others.emplace_back([&] { batch.work(newWork); });
    } catch (const std::system_error&) {
      // The threads that the system gives do all the rows.
    }
    batch.work(newWork);
    for (std::thread& thread : others) thread.join();
  }
  batch.finish();
}

}  // namespace vxpy
