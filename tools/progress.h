// SPDX-License-Identifier: MIT
#ifndef TOOLS_PROGRESS_H_
#define TOOLS_PROGRESS_H_

#include <functional>
#include <ostream>
#include <string>

namespace cli {

/// A progress bar, for work that takes longer than a second; gone when the object is.
class Progress {
 public:
  /// Seconds since some fixed moment.
  using Clock = std::function<double()>;

  static double steadySeconds();

  /// Draws nothing without a terminal or if `total` is not > 0.
  Progress(std::string what, double total, std::ostream* terminal, Clock clock = steadySeconds);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// `done` of the total; cheap enough for every pattern.
  void update(double done);

 private:
  std::string what_;
  double total_;
  std::ostream* terminal_;
  Clock clock_;
  double nextDraw_;
  bool drawn_ = false;
};

}  // namespace cli

#endif  // TOOLS_PROGRESS_H_
