// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_RANDOM_H_
#define EXAMPLES_INSPECT_PARTS_RANDOM_H_

#include <vxfoundation/vxfoundation.h>

namespace parts {

/// Random numbers of one picture; a seed gives the same ones on every machine.
class Random {
 public:
  explicit Random(long seed) : uniform_(seed), gaussian_(seed) {}

  /// In [low, high).
  double between(double low, double high) { return uniform_.next(low, high); }
  double around(double mean, double spread) { return gaussian_.next(mean, spread); }

  /// In [0, n), for n >= 1.
  int below(int n) { return static_cast<int>(uniform_.next(0.0, n)); }
  bool happens(double probability) { return uniform_.next(0.0, 1.0) < probability; }

 private:
  vxRandomUniform uniform_;
  vxRandomGaussian gaussian_;
};

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_RANDOM_H_
