// SPDX-License-Identifier: MIT
#ifndef TOOLS_STOP_H_
#define TOOLS_STOP_H_

namespace cli {

/// While one lives, SIGINT, SIGTERM and SIGHUP ask for a stop, which long operations of the library
/// notice through its attention hook. A second signal ends the process at once.
///
/// There is at most one at a time.
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();
};

/// Throws vxStopRequested if a stop was asked for.
void throwIfStopped();

/// The file that a second signal removes before it ends the process; null for none. The text must
/// outlive the setting.
void removeWhenKilled(const char* path);

}  // namespace cli

#endif  // TOOLS_STOP_H_
