// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_SHAPE_H_
#define EXAMPLES_INSPECT_PARTS_SHAPE_H_

#include <functional>
#include <string>

#include "examples/inspect_parts/random.h"

namespace parts {

/// What may lie on the belt: first what is to be told apart, then what doesn't belong there.
enum class Kind { kWasher, kNut, kBolt, kPin, kSpring, kGear, kClip, kLink };
constexpr int kNumKnown = 5;
constexpr int kNumKinds = 8;

inline bool isKnown(Kind kind) { return static_cast<int>(kind) < kNumKnown; }
std::string nameOf(Kind kind);

/// The surface of one part in coordinates of its own: mm, the origin in the middle, x along it.
struct Shape {
  /// How far the part reaches from its middle.
  double reachX;
  double reachY;

  /// How much of the light the material gives back, (0, 1].
  double finish;

  /// Above the belt; 0 where there is no part.
  std::function<double(double x, double y)> height;
};

/// A part as machines make it: sizes vary a little, those of bolts, pins and springs more.
Shape makeShape(Kind kind, Random& random);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_SHAPE_H_
