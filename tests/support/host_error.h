// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_HOST_ERROR_H_
#define TESTS_SUPPORT_HOST_ERROR_H_

/// What a host's own class throws.
struct HostError {};

#endif  // TESTS_SUPPORT_HOST_ERROR_H_
