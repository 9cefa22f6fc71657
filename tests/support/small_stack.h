// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_SMALL_STACK_H_
#define TESTS_SUPPORT_SMALL_STACK_H_

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

/// Runs `body()` in a thread whose stack holds a few thousand calls and no more.
template <class Body>
void onSmallStack(Body body) {
  constexpr std::size_t kStack = 256 * 1024;
  const auto run = [](void* argument) -> void* {
    try {
      (*static_cast<Body*>(argument))();
    } catch (...) {
      ADD_FAILURE() << "threw something";
    }
    return nullptr;
  };
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

#endif  // TESTS_SUPPORT_SMALL_STACK_H_
