// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/belt.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "examples/inspect_parts/patch.h"

namespace parts {
namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 800;
constexpr double kPi = 3.14159265358979323846;
constexpr int kGap = 9;           // pixels at least between parts that don't touch
constexpr int kMaxOverlap = 120;  // pixels at most of parts that do
constexpr int kApproach = 260;    // pixels from which one part is moved towards another

/// The pixels of the patch, widened by `gap` on all sides.
cv::Mat1b maskOf(const Patch& patch, int gap) {
  cv::Mat1b mask;
  cv::compare(patch.cover, 0.25, mask, cv::CMP_GT);
  cv::copyMakeBorder(mask, mask, gap, gap, gap, gap, cv::BORDER_CONSTANT, 0);
  cv::dilate(mask, mask,
             cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(2 * gap + 1, 2 * gap + 1)));
  return mask;
}

class Belt {
 public:
  explicit Belt(long seed)
      : random_(seed),
        grey_(kHeight, kWidth, 0.0F),
        cover_(kHeight, kWidth, 0.0F),
        owner_(kHeight, kWidth, std::uint16_t{0}) {}

  bool putFree(Kind kind) {
    const Patch patch = makePatch_(kind);
    return tryPlaces_(kind, patch, [&] {
      return cv::Point(random_.below(kWidth - patch.grey.cols),
                       random_.below(kHeight - patch.grey.rows));
    });
  }

  /// A quarter to a half of it is outside.
  bool putCutOff(Kind kind) {
    const Patch patch = makePatch_(kind);
    return tryPlaces_(kind, patch, [&] {
      const auto beyond = [&](int size) {
        return static_cast<int>(size * random_.between(0.25, 0.5));
      };
      cv::Point place(random_.below(kWidth - patch.grey.cols),
                      random_.below(kHeight - patch.grey.rows));
      switch (random_.below(4)) {
        case 0:
          place.x = -beyond(patch.grey.cols);
          break;
        case 1:
          place.x = kWidth - patch.grey.cols + beyond(patch.grey.cols);
          break;
        case 2:
          place.y = -beyond(patch.grey.rows);
          break;
        default:
          place.y = kHeight - patch.grey.rows + beyond(patch.grey.rows);
      }
      return place;
    });
  }

  /// Moves it towards the middle of a part that lies there already, until they touch.
  bool putTouching(Kind kind) {
    const Patch patch = makePatch_(kind);
    const cv::Mat1b mask = maskOf(patch, 0);
    for (int attempt = 0; attempt < 100 && !middles_.empty(); ++attempt) {
      const cv::Point target =
          middles_.at(static_cast<std::size_t>(random_.below(static_cast<int>(middles_.size())))) -
          cv::Point(patch.grey.cols / 2, patch.grey.rows / 2);
      const double direction = random_.between(0.0, 2.0 * kPi);
      for (int away = kApproach; away > 0; --away) {
        const cv::Point place(target.x + static_cast<int>(away * std::cos(direction)),
                              target.y + static_cast<int>(away * std::sin(direction)));
        if (!isInside_(patch, place)) continue;
        const int numShared = numShared_(mask, place);
        if (numShared == 0) continue;
        if (numShared > kMaxOverlap) break;
        put_(kind, patch, place);
        return true;
      }
    }
    return false;
  }

  BeltPicture photograph();

 private:
  Patch makePatch_(Kind kind) {
    const Shape shape = makeShape(kind, random_);
    return renderPatch(shape, random_.between(0.0, 2.0 * kPi), random_);
  }

  /// Of a few places where nothing lies, the one farthest from everything.
  template <class Place>
  bool tryPlaces_(Kind kind, const Patch& patch, const Place& place) {
    const cv::Mat1b mask = maskOf(patch, kGap);
    double farthest = -1.0;
    cv::Point best;
    int numGood = 0;
    for (int attempt = 0; attempt < 300 && numGood < 5; ++attempt) {
      const cv::Point at = place();
      if (numShared_(mask, at - cv::Point(kGap, kGap)) > 0) continue;
      ++numGood;
      const double distance = distanceToOthers_(middle_(patch, at));
      if (distance <= farthest) continue;
      farthest = distance;
      best = at;
    }
    if (numGood > 0) put_(kind, patch, best);
    return numGood > 0;
  }

  static cv::Point middle_(const Patch& patch, cv::Point place) {
    return place + cv::Point(patch.grey.cols / 2, patch.grey.rows / 2);
  }
  double distanceToOthers_(cv::Point place) const {
    double nearest = kWidth;
    for (const cv::Point& other : middles_) nearest = std::min(nearest, cv::norm(place - other));
    return nearest;
  }

  static cv::Rect window_(const Patch& patch, cv::Point place) {
    return cv::Rect(place, patch.grey.size()) & cv::Rect(0, 0, kWidth, kHeight);
  }
  static bool isInside_(const Patch& patch, cv::Point place) {
    return window_(patch, place).size() == patch.grey.size();
  }

  /// Pixels that the mask would share with what lies there.
  int numShared_(const cv::Mat1b& mask, cv::Point place) const;
  void put_(Kind kind, const Patch& patch, cv::Point place);
  cv::Mat1f surface_();

  Random random_;
  cv::Mat1f grey_;
  cv::Mat1f cover_;
  cv::Mat1w owner_;
  std::vector<Kind> kinds_;
  std::vector<cv::Point> middles_;
};

int Belt::numShared_(const cv::Mat1b& mask, cv::Point place) const {
  const cv::Rect whole(place, mask.size());
  const cv::Rect seen = whole & cv::Rect(0, 0, kWidth, kHeight);
  return cv::countNonZero(mask(seen - whole.tl()) & (owner_(seen) != 0));
}

void Belt::put_(Kind kind, const Patch& patch, cv::Point place) {
  kinds_.push_back(kind);
  middles_.push_back(middle_(patch, place));
  const auto number = static_cast<std::uint16_t>(kinds_.size());
  const cv::Rect seen = window_(patch, place);
  for (int row = seen.y; row < seen.br().y; ++row) {
    for (int column = seen.x; column < seen.br().x; ++column) {
      const float cover = patch.cover(row - place.y, column - place.x);
      if (cover <= cover_(row, column)) continue;
      cover_(row, column) = cover;
      grey_(row, column) = patch.grey(row - place.y, column - place.x);
      if (cover > 0.25F) owner_(row, column) = number;
    }
  }
}

/// Dark woven rubber with worn places.
cv::Mat1f Belt::surface_() {
  cv::Mat1f worn(kHeight / 80, kWidth / 80);
  for (float& place : worn) place = static_cast<float>(random_.around(0.0, 0.012));
  cv::Mat1f surface;
  cv::resize(worn, surface, cv::Size(kWidth, kHeight), 0.0, 0.0, cv::INTER_CUBIC);
  const double phase = random_.between(0.0, 12.0);
  for (int row = 0; row < kHeight; ++row) {
    for (int column = 0; column < kWidth; ++column) {
      const double weave =
          std::sin(2.0 * kPi * (column + phase) / 6.0) * std::sin(2.0 * kPi * row / 6.0);
      surface(row, column) += static_cast<float>(0.15 + 0.012 * weave);
    }
  }
  return surface;
}

BeltPicture Belt::photograph() {
  const cv::Mat1f belt = surface_();
  // The light comes from above left, so shadows fall below right.
  cv::Mat1f shadow;
  const cv::Mat shift = (cv::Mat_<double>(2, 3) << 1, 0, 7, 0, 1, 8);
  cv::warpAffine(cover_, shadow, shift, cover_.size());
  cv::GaussianBlur(shadow, shadow, cv::Size(), 5.0);

  const double gain = random_.around(1.0, 0.05);
  const double tiltX = random_.around(0.0, 0.06);
  const double tiltY = random_.around(0.0, 0.06);
  BeltPicture picture{cv::Mat1b(kHeight, kWidth), kinds_, owner_};
  for (int row = 0; row < kHeight; ++row) {
    for (int column = 0; column < kWidth; ++column) {
      const double x = 2.0 * column / kWidth - 1.0;
      const double y = 2.0 * row / kHeight - 1.0;
      const double light = gain * (1.0 + tiltX * x + tiltY * y - 0.10 * (x * x + y * y));
      const double cover = cover_(row, column);
      const double reflected = cover * grey_(row, column) + (1.0 - cover) * belt(row, column) *
                                                                (1.0 - 0.65 * shadow(row, column));
      picture.grey(row, column) =
          cv::saturate_cast<std::uint8_t>(random_.around(270.0 * light * reflected, 2.5));
    }
  }
  return picture;
}

/// Every kind from `first` to before `last` in turn, one after the other.
class Turns {
 public:
  Turns(int first, int last, int start) : first_(first), count_(last - first), next_(start) {}
  Kind next() { return static_cast<Kind>(first_ + next_++ % count_); }

 private:
  int first_;
  int count_;
  int next_;
};

}  // namespace

BeltPicture renderBelt(const BeltContent& content, long seed) {
  Belt belt(seed);
  const int start = static_cast<int>(seed % 1000);
  Turns known(0, kNumKnown, start);
  Turns unknown(kNumKnown, kNumKinds, start);
  const int numFree = content.numKnown - content.numTouching - content.numCutOff;
  for (int i = 0; i < content.numCutOff; ++i) belt.putCutOff(known.next());
  for (int i = 0; i < content.numUnknown; ++i) belt.putFree(unknown.next());
  for (int i = 0; i < numFree; ++i) belt.putFree(known.next());
  for (int i = 0; i < content.numTouching; ++i) belt.putTouching(known.next());
  return belt.photograph();
}

}  // namespace parts
