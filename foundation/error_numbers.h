// SPDX-License-Identifier: MIT
#ifndef FOUNDATION_ERROR_NUMBERS_H_
#define FOUNDATION_ERROR_NUMBERS_H_

/// The foundation's block of error numbers: hosts report them, so never renumber.
struct vx_ErrorNumbers {
  static constexpr long kBadPointer = 0x10000000;
  static constexpr long kStopRequested = 0x10000001;
  static constexpr long kStatus = 0x10000002;
  static constexpr long kBadMatrix = 0x10000003;
  static constexpr long kUnknownVersion = 0x10000004;
  static constexpr long kMalformed = 0x10000005;
  static constexpr long kUnstorable = 0x10000006;
  static constexpr long kStreamFailure = 0x10000007;
};

#endif  // FOUNDATION_ERROR_NUMBERS_H_
