// SPDX-License-Identifier: MIT
#include "tools/eval/report/mark.h"

#include <fmt/format.h>

#include "tools/eval/report/html.h"

namespace eval {
namespace {

constexpr long kShapes = 6;

/// Of equal area, as far as the eye can tell.
std::string shape(long kind, double s) {
  const auto c = [](double value) { return coordinate(value); };
  switch (kind) {
    case 0:  // circle
      return fmt::format("m{},0a{},{} 0 1 0 {},0a{},{} 0 1 0 {},0z", c(-s), c(s), c(s), c(2.0 * s),
                         c(s), c(s), c(-2.0 * s));
    case 1:  // square
      return fmt::format("m{0},{0}h{1}v{1}h{2}z", c(-0.9 * s), c(1.8 * s), c(-1.8 * s));
    case 2:  // triangle
      return fmt::format("m0,{}l{},{}h{}z", c(-1.2 * s), c(1.2 * s), c(2.1 * s), c(-2.4 * s));
    case 3:  // diamond
      return fmt::format("m0,{0}l{1},{1}l{0},{1}l{0},{0}z", c(-1.3 * s), c(1.3 * s));
    case 4: {  // cross
      const double t = 0.8 * s;
      return fmt::format("m{1},{2}h{0}v{0}h{0}v{0}h{3}v{0}h{3}v{3}h{3}v{3}h{0}z", c(t), c(-t / 2.0),
                         c(-1.5 * t), c(-t));
    }
    default:  // triangle, upside down
      return fmt::format("m0,{}l{},{}h{}z", c(1.2 * s), c(-1.2 * s), c(-2.1 * s), c(2.4 * s));
  }
}

}  // namespace

std::string markPath(long label, double x, double y, double size) {
  // Eight colours and six shapes part 24 ways; one step more a round of colours parts all 48.
  const long kind = (label + label / 24) % kShapes;
  return fmt::format("M{},{}{}", coordinate(x), coordinate(y), shape(kind, size));
}

std::string markPicture(long label) {
  return fmt::format(
      "<svg class=\"mark c{}\" viewBox=\"0 0 14 14\" width=\"14\" height=\"14\" "
      "aria-hidden=\"true\"><path d=\"{}\"/></svg>",
      label % kColours, markPath(label, 7.0, 7.0, 5.0));
}

}  // namespace eval
