// SPDX-License-Identifier: MIT
#ifndef TOOLS_EXIT_CODE_H_
#define TOOLS_EXIT_CODE_H_

namespace cli {

/// What the command returns to the shell; the numbers stand in its help.
enum ExitCode : int {
  kExitDone = 0,
  kExitInternal = 1,
  kExitDifferent = 1,  // diff, whose internal errors are kExitBadInput
  kExitBadInput = 2,
  kExitDamaged = 3,  // these three of check
  kExitNotAModel = 4,
  kExitNewer = 5,
  kExitStopped = 130,
};

}  // namespace cli

#endif  // TOOLS_EXIT_CODE_H_
