// SPDX-License-Identifier: MIT
// Most heights follow from the distance to the nearest edge, so that edges come out bevelled.
#include "examples/inspect_parts/shape.h"

#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace parts {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// A flat top with bevelled edges; `inside` is the distance to the nearest edge, negative outside.
double plate(double inside, double thickness, double bevel) {
  if (inside <= 0.0) return 0.0;
  const double t = std::min(inside / bevel, 1.0);
  return thickness - bevel + bevel * std::sqrt(t * (2.0 - t));
}

/// A round bar, seen `across` from its axis.
double bar(double across, double radius, double axisHeight) {
  const double rest = radius * radius - across * across;
  return rest > 0.0 ? axisHeight + std::sqrt(rest) : 0.0;
}

double insideHexagon(double x, double y, double halfWidth) {
  const double slant = std::sqrt(0.75);
  return halfWidth -
         std::max({std::fabs(y), std::fabs(slant * x + 0.5 * y), std::fabs(slant * x - 0.5 * y)});
}

double insideBox(double x, double y, double halfX, double halfY, double corner) {
  const double dx = std::fabs(x) - halfX + corner;
  const double dy = std::fabs(y) - halfY + corner;
  return corner - std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) -
         std::min(std::max(dx, dy), 0.0);
}

Shape washer(Random& random) {
  const double outer = random.around(7.0, 0.15);
  const double inner = random.around(3.7, 0.1);
  return {outer, outer, random.around(0.72, 0.02), [=](double x, double y) {
            const double r = std::hypot(x, y);
            return plate(std::min(outer - r, r - inner), 1.4, 0.5);
          }};
}

Shape nut(Random& random) {
  const double halfWidth = random.around(5.6, 0.12);
  const double hole = random.around(2.9, 0.08);
  const double reach = halfWidth / std::sqrt(0.75);
  return {reach, reach, random.around(0.56, 0.02), [=](double x, double y) {
            const double r = std::hypot(x, y);
            const double inside = std::min(insideHexagon(x, y, halfWidth), r - hole);
            if (inside <= 0.0) return 0.0;
            const double turnedOff = 0.5 * std::max(r - halfWidth + 0.2, 0.0);
            const double countersunk = 0.9 * std::max(hole + 0.7 - r, 0.0);
            return plate(inside, 4.0, 0.3) - turnedOff - countersunk;
          }};
}

/// The head at the left, lying on one of its flats; the thread winds around most of the shank.
Shape bolt(Random& random) {
  const double length = random.around(19.0, 1.6);
  const double radius = random.around(2.3, 0.05);
  const double head = random.around(4.0, 0.1);
  const double headWidth = random.around(4.5, 0.1);
  const double left = -0.5 * (length + head);
  const double neck = left + head;
  const double end = neck + length;
  return {
      end, headWidth, random.around(0.48, 0.02), [=](double x, double y) {
        if (x <= neck) {
          const double inside = insideBox(x - 0.5 * (left + neck), y, 0.5 * head, headWidth, 0.7);
          const double facet = 0.35 * std::max(std::fabs(y) - 0.5 * headWidth, 0.0);
          return inside > 0.0 ? plate(inside, 6.5, 0.6) - facet : 0.0;
        }
        if (x >= end) return 0.0;
        const double tip = 0.7 * std::max(x - (end - 1.0), 0.0);
        const double turn = (x + 0.15 * y) / 1.2;
        const double groove =
            x > neck + 0.25 * length ? 0.4 * std::fabs(2.0 * (turn - std::floor(turn)) - 1.0) : 0.0;
        return bar(y, radius - tip - groove, headWidth);
      }};
}

Shape pin(Random& random) {
  const double halfLength = 0.5 * random.around(17.0, 1.4);
  const double radius = random.around(1.7, 0.05);
  return {halfLength, radius, random.around(0.88, 0.02), [=](double x, double y) {
            const double toEnd = halfLength - std::fabs(x);
            return toEnd > 0.0 ? bar(y, radius - 0.6 * std::max(0.8 - toEnd, 0.0), radius) : 0.0;
          }};
}

/// A helix of wire. As it moves along x, only a part of a turn lies above any point.
Shape spring(Random& random) {
  constexpr int kSteps = 96;  // a turn
  const double radius = random.around(3.1, 0.06);
  const double wire = random.around(0.52, 0.015);
  const double advance = random.around(2.5, 0.12) / kSteps;
  const int last = kSteps * (6 + random.below(3));
  const double start = random.between(0.0, 2.0 * kPi);
  std::array<vxPair<double>, kSteps> turn;  // y and height of the wire's axis
  for (int i = 0; i < kSteps; ++i) {
    const double angle = start + 2.0 * kPi * i / kSteps;
    turn.at(static_cast<std::size_t>(i)) = {radius * std::sin(angle),
                                            radius * (1.0 + std::cos(angle)) + wire};
  }
  const double halfLength = 0.5 * last * advance;
  return {halfLength + wire, radius + wire, random.around(0.66, 0.02), [=](double x, double y) {
            const double along = x + halfLength;
            const int first = std::max(static_cast<int>((along - wire) / advance), 0);
            const int end = std::min(static_cast<int>((along + wire) / advance) + 1, last + 1);
            double height = 0.0;
            for (int i = first; i < end; ++i) {
              const auto& [axisY, axisHeight] = turn[static_cast<std::size_t>(i % kSteps)];
              const double dx = along - i * advance;
              const double dy = y - axisY;
              const double rest = wire * wire - dx * dx - dy * dy;
              if (rest > 0.0) height = std::max(height, axisHeight + std::sqrt(rest));
            }
            return height;
          }};
}

Shape gear(Random& random) {
  const double root = random.around(6.3, 0.1);
  const double hole = random.around(2.2, 0.1);
  const double numTeeth = 12.0 + random.below(4);
  return {root + 1.3, root + 1.3, random.around(0.62, 0.02), [=](double x, double y) {
            const double r = std::hypot(x, y);
            const double tooth =
                std::clamp(0.5 + 1.2 * std::cos(numTeeth * std::atan2(y, x)), 0.0, 1.0);
            const double hub = r < 3.9 ? 0.8 : 0.0;
            return hub * (r > hole) + plate(std::min(root + 1.3 * tooth - r, r - hole), 3.0, 0.4);
          }};
}

/// A ring that is open at the right and ends in two lugs with a hole each.
Shape clip(Random& random) {
  const double outer = random.around(6.4, 0.1);
  const double inner = outer - 1.5;
  const double halfGap = random.around(0.36, 0.02);
  return {outer + 0.6, outer + 0.6, random.around(0.55, 0.02), [=](double x, double y) {
            const double r = std::hypot(x, y);
            const double lugX = x - (inner + 0.9) * std::cos(halfGap + 0.2);
            const double lugY = std::fabs(y) - (inner + 0.9) * std::sin(halfGap + 0.2);
            const double toLug = std::hypot(lugX, lugY);
            const double lug = std::min(1.6 - toLug, toLug - 0.6);
            const bool open = std::fabs(std::atan2(y, x)) < halfGap;
            const double ring = open ? -1.0 : std::min({outer - r, r - inner, toLug - 0.6});
            return plate(std::max(ring, lug), 1.2, 0.35);
          }};
}

/// A flat link of a chain with a hole at each end.
Shape link(Random& random) {
  const double halfLength = random.around(9.0, 0.2);
  const double halfWidth = random.around(4.2, 0.1);
  return {halfLength, halfWidth, random.around(0.66, 0.02), [=](double x, double y) {
            const double toHole = std::hypot(std::fabs(x) - (halfLength - halfWidth), y) - 1.9;
            const double waist = 0.9 * std::max(1.0 - std::fabs(x) / 4.0, 0.0);
            return plate(
                std::min(insideBox(x, y, halfLength, halfWidth, halfWidth) - waist, toHole), 2.0,
                0.5);
          }};
}

struct Entry {
  const char* name;
  Shape (*make)(Random&);
};
constexpr std::array<Entry, kNumKinds> kKinds = {{{"washer", &washer},
                                                  {"nut", &nut},
                                                  {"bolt", &bolt},
                                                  {"pin", &pin},
                                                  {"spring", &spring},
                                                  {"gear", &gear},
                                                  {"clip", &clip},
                                                  {"link", &link}}};

const Entry& entryOf(Kind kind) { return kKinds.at(static_cast<std::size_t>(kind)); }

}  // namespace

std::string nameOf(Kind kind) { return entryOf(kind).name; }

Shape makeShape(Kind kind, Random& random) { return entryOf(kind).make(random); }

}  // namespace parts
