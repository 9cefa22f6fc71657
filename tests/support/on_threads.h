// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ON_THREADS_H_
#define TESTS_SUPPORT_ON_THREADS_H_

#include <atomic>
#include <thread>
#include <vector>

/// Runs `body(thread)` on `count` threads, which begin together.
template <class Body>
void onThreads(int count, const Body& body) {
  std::atomic<int> waiting{count};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      body(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

#endif  // TESTS_SUPPORT_ON_THREADS_H_
