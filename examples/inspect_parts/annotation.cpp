// SPDX-License-Identifier: MIT
// Everything is drawn at twice the size and then reduced to three quarters, which makes lines and
// letters smooth.
#include "examples/inspect_parts/annotation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <string>

#include "examples/inspect_parts/shape.h"

namespace parts {
namespace {

constexpr int kScale = 2;
constexpr int kLegendHeight = 58 * kScale;
constexpr int kFont = cv::FONT_HERSHEY_DUPLEX;
constexpr double kFontSize = 0.70 * kScale;
constexpr int kFontWeight = kScale;
constexpr int kMargin = 5 * kScale;

cv::Scalar rgb(int red, int green, int blue) { return cv::Scalar(blue, green, red); }

const std::array<cv::Scalar, kNumKnown> kColours = {rgb(79, 195, 247), rgb(129, 213, 134),
                                                    rgb(255, 171, 64), rgb(206, 147, 216),
                                                    rgb(255, 236, 110)};
const cv::Scalar kRejected = rgb(255, 82, 82);
const cv::Scalar kLabelGround = rgb(18, 20, 24);
const cv::Scalar kQuiet = rgb(170, 176, 184);

const cv::Scalar& colourOf(const Decision& decision) {
  return decision.verdict == Decision::kAccepted
             ? kColours.at(static_cast<std::size_t>(decision.label))
             : kRejected;
}

std::string labelOf(const Decision& decision, bool isCutOff) {
  switch (decision.verdict) {
    case Decision::kUnknown:
      return "unknown";
    case Decision::kUnsure:
      return "unsure";
    default:
      break;
  }
  return nameOf(static_cast<Kind>(decision.label)) + (isCutOff ? ", cut off" : "");
}

cv::Size sizeOf(const std::string& text) {
  int below = 0;
  cv::Size size = cv::getTextSize(text, kFont, kFontSize, kFontWeight, &below);
  return {size.width, size.height};
}

/// The picture without grain, the parts having no influence on the belt beside them.
cv::Mat1b smoothBelt(const cv::Mat1b& picture, const cv::Mat1b& parts) {
  cv::Mat1f light, weight;
  picture.convertTo(light, CV_32F);
  cv::Mat1f(parts.size(), 1.0F).copyTo(weight, ~parts);
  cv::multiply(light, weight, light);
  constexpr double kSpread = 7.0;
  cv::GaussianBlur(light, light, cv::Size(), kSpread);
  cv::GaussianBlur(weight, weight, cv::Size(), kSpread);
  cv::divide(light, cv::max(weight, 1e-3F), light);
  cv::Mat1b belt;
  light.convertTo(belt, CV_8U);
  return belt;
}

class Canvas {
 public:
  Canvas(const cv::Mat1b& picture, const std::vector<Blob>& blobs);

  void outline(const Blob& blob, const cv::Scalar& colour);

  /// Beside the blob, where it hides the least.
  void name(const Blob& blob, const std::string& text, const cv::Scalar& colour);

  void legend(const std::vector<Decision>& decisions);
  cv::Mat3b reduced() const;

 private:
  std::vector<cv::Rect> placesFor_(const cv::Rect& box, cv::Size label) const;
  void write_(const std::string& text, cv::Point left, const cv::Scalar& colour);

  cv::Size picture_;
  cv::Mat3b image_;
  cv::Mat1b taken_;  // by parts and names
};

Canvas::Canvas(const cv::Mat1b& picture, const std::vector<Blob>& blobs)
    : picture_(picture.size() * kScale), taken_(picture_, std::uint8_t{0}) {
  cv::Mat1b parts(picture.size(), std::uint8_t{0});
  for (const Blob& blob : blobs) {
    cv::drawContours(parts, blob.outlines, -1, cv::Scalar(255), cv::FILLED);
  }
  cv::resize(parts, taken_, picture_, 0.0, 0.0, cv::INTER_NEAREST);
  cv::dilate(parts, parts, cv::Mat(), cv::Point(-1, -1), 2);
  cv::Mat1b shown = smoothBelt(picture, parts);
  cv::Mat1b withoutGrain;
  cv::bilateralFilter(picture, withoutGrain, 5, 20.0, 2.0);
  withoutGrain.copyTo(shown, parts);
  cv::Mat1b large;
  cv::resize(shown, large, picture_, 0.0, 0.0, cv::INTER_CUBIC);
  cv::Mat3b colour;
  cv::cvtColor(large, colour, cv::COLOR_GRAY2BGR);
  cv::copyMakeBorder(colour, image_, 0, kLegendHeight, 0, 0, cv::BORDER_CONSTANT, kLabelGround);
}

void Canvas::outline(const Blob& blob, const cv::Scalar& colour) {
  constexpr double kTint = 0.14;
  const cv::Rect box(blob.box.tl() * kScale, blob.box.size() * kScale);
  std::vector<std::vector<cv::Point>> outlines = blob.outlines;
  for (auto& line : outlines) {
    for (cv::Point& point : line) point = point * kScale + cv::Point(kScale / 2, kScale / 2);
  }
  cv::Mat3b view = image_(box);
  cv::Mat3b tinted = view.clone();
  cv::drawContours(tinted, outlines, -1, colour, cv::FILLED, cv::LINE_AA, cv::noArray(), 1,
                   -box.tl());
  cv::addWeighted(tinted, kTint, view, 1.0 - kTint, 0.0, view);
  cv::drawContours(image_, outlines, -1, colour, 2 * kScale - 1, cv::LINE_AA);
}

std::vector<cv::Rect> Canvas::placesFor_(const cv::Rect& box, cv::Size label) const {
  const cv::Point middle = (box.tl() + box.br()) / 2;
  const int left = middle.x - label.width / 2;
  const int top = middle.y - label.height / 2;
  std::vector<cv::Rect> places;
  for (const int away : {kMargin, 5 * kMargin}) {
    places.push_back({{left, box.y - label.height - away}, label});
    places.push_back({{left, box.br().y + away}, label});
    places.push_back({{box.br().x + away, top}, label});
    places.push_back({{box.x - label.width - away, top}, label});
  }
  for (cv::Rect& place : places) {
    place.x = std::clamp(place.x, kMargin, picture_.width - label.width - kMargin);
    place.y = std::clamp(place.y, kMargin, picture_.height - label.height - kMargin);
  }
  return places;
}

void Canvas::name(const Blob& blob, const std::string& text, const cv::Scalar& colour) {
  const cv::Size size = sizeOf(text) + cv::Size(3 * kMargin, 3 * kMargin);
  const cv::Rect box(blob.box.tl() * kScale, blob.box.size() * kScale);
  const std::vector<cv::Rect> places = placesFor_(box, size);
  const cv::Rect place =
      *std::min_element(places.begin(), places.end(), [&](const cv::Rect& a, const cv::Rect& b) {
        return cv::countNonZero(taken_(a)) < cv::countNonZero(taken_(b));
      });
  taken_(place) = 255;
  cv::Mat3b view = image_(place);
  cv::addWeighted(view, 0.25, cv::Mat3b(place.size(), cv::Vec3b(24, 20, 18)), 0.75, 0.0, view);
  cv::rectangle(image_, place, colour, kScale / 2, cv::LINE_AA);
  write_(text, {place.x + 3 * kMargin / 2, place.y + place.height / 2}, colour);
}

void Canvas::write_(const std::string& text, cv::Point left, const cv::Scalar& colour) {
  cv::putText(image_, text, left + cv::Point(0, sizeOf(text).height / 2), kFont, kFontSize, colour,
              kFontWeight, cv::LINE_AA);
}

void Canvas::legend(const std::vector<Decision>& decisions) {
  const int middle = picture_.height + kLegendHeight / 2;
  constexpr int kRadius = 9 * kScale;
  int x = 4 * kMargin;
  const auto entry = [&](const std::string& name, const cv::Scalar& colour, auto counts) {
    const long count = std::count_if(decisions.begin(), decisions.end(), counts);
    const std::string text = name + " " + std::to_string(count);
    cv::circle(image_, {x + kRadius, middle}, kRadius, colour, cv::FILLED, cv::LINE_AA);
    x += 2 * kRadius + 2 * kMargin;
    write_(text, {x, middle}, kQuiet);
    x += sizeOf(text).width + 7 * kMargin;
  };
  for (long label = 0; label < kNumKnown; ++label) {
    entry(nameOf(static_cast<Kind>(label)), kColours.at(static_cast<std::size_t>(label)),
          [&](const Decision& d) { return d.verdict == Decision::kAccepted && d.label == label; });
  }
  entry("rejected", kRejected, [](const Decision& d) { return d.verdict != Decision::kAccepted; });
}

cv::Mat3b Canvas::reduced() const {
  cv::Mat3b image;
  cv::resize(image_, image, image_.size() * 3 / (4 * kScale), 0.0, 0.0, cv::INTER_AREA);
  // The last bit of a shade shows nothing and takes a sixth of the file.
  cv::bitwise_and(image, cv::Scalar::all(0xFE), image);
  return image;
}

}  // namespace

cv::Mat3b annotated(const cv::Mat1b& picture, const std::vector<Blob>& blobs,
                    const std::vector<Decision>& decisions) {
  Canvas canvas(picture, blobs);
  for (std::size_t i = 0; i < blobs.size(); ++i) {
    canvas.outline(blobs[i], colourOf(decisions.at(i)));
  }
  for (std::size_t i = 0; i < blobs.size(); ++i) {
    canvas.name(blobs[i], labelOf(decisions[i], blobs[i].isCutOff), colourOf(decisions[i]));
  }
  canvas.legend(decisions);
  return canvas.reduced();
}

}  // namespace parts
