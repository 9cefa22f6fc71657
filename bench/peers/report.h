// SPDX-License-Identifier: MIT
#ifndef BENCH_PEERS_REPORT_H_
#define BENCH_PEERS_REPORT_H_

#include <iosfwd>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "bench/peers/measure.h"

namespace peers {

/// The bound that a figure is to keep: with registers wider than the plain processor's, without.
struct Goal {
  enum Side { kNone, kAtMost, kAtLeast };
  Side side = kNone;
  double wide = std::numeric_limits<double>::quiet_NaN();
  double plain = wide;
};

inline Goal atMost(double bound) { return {Goal::kAtMost, bound, bound}; }
inline Goal atMost(double wide, double plain) { return {Goal::kAtMost, wide, plain}; }
inline Goal atLeast(double bound) { return {Goal::kAtLeast, bound, bound}; }

/// What a run has measured: times, the figures that follow from them, and how answers agree.
class Report {
 public:
  /// Whether the libraries were built with code for wider registers; decides which goals count.
  static bool hasWideRegisters();

  /// A fact about the run: the machine, a version.
  void fact(const std::string& name, const std::string& value);

  /// The times of one piece of work, in seconds. Printed at once to `std::cerr`, for whoever waits.
  void times(const std::string& work, const Times& times);

  /// A line of the table; `unit` is empty for a ratio.
  void figure(const std::string& group, const std::string& what, double value,
              const std::string& unit = "", const Goal& goal = {});

  /// A point of a plot: the times at `x`.
  void point(const std::string& plot, double x, const Times& times);

  /// Adds to what is known of `who`: of so many answers, so many differ from the definition's.
  void answers(const std::string& who, long compared, long different);

  /// An answer of this library that is not what its definition gives. The run goes on.
  void wrong(const std::string& what);
  bool isRight() const { return wrong_.empty(); }

  void print(std::ostream& out) const;
  void writeJson(const std::string& path) const;

 private:
  struct Figure {
    std::string group, what, unit;
    double value;
    Goal goal;
  };
  struct Point {
    std::string plot;
    double x;
    Times times;
  };
  struct Answers {
    std::string who;
    long compared, different;
  };

  static double bound_(const Goal& goal);
  static std::string state_(const Figure& figure);

  std::vector<std::pair<std::string, std::string>> facts_;
  std::vector<std::pair<std::string, Times>> times_;
  std::vector<Figure> figures_;
  std::vector<Point> points_;
  std::vector<Answers> answers_;
  std::vector<std::string> wrong_;
};

}  // namespace peers

#endif  // BENCH_PEERS_REPORT_H_
