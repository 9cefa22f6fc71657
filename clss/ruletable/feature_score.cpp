// SPDX-License-Identifier: MIT
#include "vxclss/feature_score.h"

#include <algorithm>
#include <typeinfo>

#include "score_in_line.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"

namespace {

// Archived: never renumber.
constexpr unsigned long kIgnoreTag = 5682;
constexpr unsigned long kOneSidedTag = 33385;
constexpr unsigned long kTwoSidedTag = 59820;

bool isOutsideUnit(double y) { return y < 0.0 || y > 1.0; }

bool isBetween(double x1, double x0, double xc) {
  return !((x1 > x0 && x1 > xc) || (x1 < x0 && x1 < xc));
}

void checkOrder(const vxClassifierFeatureScoreOneSided& side) {
  if (!vx_ScoreInLine::isInOrder(side)) {
    throw vxClassifierDefs::BadParams(L"x1 must lie between x0 and xc");
  }
}

template <class T>
bool isSameClass(const T& score, const vxClsFtSc& other) {
  return typeid(score) == typeid(other);
}

}  // namespace

vxClsFtSc::~vxClsFtSc() = default;

vxClassifierFeatureScoreIgnore::vxClassifierFeatureScoreIgnore() = default;

vxClassifierFeatureScoreIgnore::~vxClassifierFeatureScoreIgnore() = default;

double vxClassifierFeatureScoreIgnore::score(double) const { return -1.0; }

vxClassifierFeatureScoreIgnore* vxClassifierFeatureScoreIgnore::clone() const {
  return new vxClassifierFeatureScoreIgnore(*this);
}

bool vxClassifierFeatureScoreIgnore::operator==(const vxClsFtSc& other) const {
  return isSameClass(*this, other);
}

vxClassifierFeatureScoreOneSided::vxClassifierFeatureScoreOneSided() = default;

vxClassifierFeatureScoreOneSided::~vxClassifierFeatureScoreOneSided() = default;

void vxClassifierFeatureScoreOneSided::init(double x0, double x1, double xc, double y0, double y1) {
  if (isOutsideUnit(y0)) throw vxClassifierDefs::BadParams(L"y0 must be between 0 and 1");
  if (isOutsideUnit(y1)) throw vxClassifierDefs::BadParams(L"y1 must be between 0 and 1");
  if (!isBetween(x1, x0, xc)) {
    // Hosts compare with "be lie"; score() words it differently.
    throw vxClassifierDefs::BadParams(L"x1 must be lie between x0 and xc");
  }
  x0_ = x0;
  x1_ = x1;
  xc_ = xc;
  y0_ = y0;
  y1_ = y1;
  xChanged_();
}

void vxClassifierFeatureScoreOneSided::x0(double value) {
  x0_ = value;
  xChanged_();
}

void vxClassifierFeatureScoreOneSided::x1(double value) {
  x1_ = value;
  xChanged_();
}

void vxClassifierFeatureScoreOneSided::xc(double value) {
  xc_ = value;
  xChanged_();
}

void vxClassifierFeatureScoreOneSided::y0(double value) {
  if (isOutsideUnit(value)) throw vxClassifierDefs::BadParams(L"y0 must be between 0 and 1");
  y0_ = value;
}

void vxClassifierFeatureScoreOneSided::y1(double value) {
  if (isOutsideUnit(value)) throw vxClassifierDefs::BadParams(L"y1 must be between 0 and 1");
  y1_ = value;
}

double vxClassifierFeatureScoreOneSided::score(double x) const {
  checkOrder(*this);
  const bool rises = sign_ > 0.0;
  if (rises ? x > xc_ : x < xc_) return 0.0;
  if (rises ? x >= x1_ : x <= x1_) return y1_;
  if (rises ? x <= x0_ : x >= x0_) return y0_;
  return (y0_ * x1_ - y1_ * x0_ - (y0_ - y1_) * x) / (x1_ - x0_);
}

void vxClassifierFeatureScoreOneSided::xChanged_() noexcept {
  if (!isBetween(x1_, x0_, xc_)) {
    sign_ = 0.0;
  } else {
    sign_ = x0_ <= x1_ && x1_ <= xc_ ? 1.0 : -1.0;
  }
}

vxClassifierFeatureScoreOneSided* vxClassifierFeatureScoreOneSided::clone() const {
  return new vxClassifierFeatureScoreOneSided(*this);
}

bool vxClassifierFeatureScoreOneSided::operator==(const vxClsFtSc& other) const {
  if (!isSameClass(*this, other)) return false;
  const auto& side = static_cast<const vxClassifierFeatureScoreOneSided&>(other);
  return x0_ == side.x0_ && x1_ == side.x1_ && xc_ == side.xc_ && y0_ == side.y0_ &&
         y1_ == side.y1_;
}

vxClassifierFeatureScoreTwoSided::vxClassifierFeatureScoreTwoSided() {
  init(0.0, -1.0, -1.0, 0.0, 1.0, 1.0, 1.0, 0.0, 1.0, 0.0);
}

vxClassifierFeatureScoreTwoSided::~vxClassifierFeatureScoreTwoSided() = default;

void vxClassifierFeatureScoreTwoSided::init(double x0, double x1, double xc, double x0h, double x1h,
                                            double xch, double y0, double y1, double y0h,
                                            double y1h) {
  const double lowest = std::min({x0h, x1h, xch});
  if (x0 > lowest || x1 > lowest || xc > lowest) {
    throw vxClassifierDefs::BadParams(L"x0 > lowest || x1 > lowest || xc > lowest");
  }
  vxClassifierFeatureScoreOneSided low;
  low.init(x0, x1, xc, y0, y1);
  high_.init(x0h, x1h, xch, y0h, y1h);
  low_ = low;
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::x0(double value) {
  low_.x0(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::x1(double value) {
  low_.x1(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::xc(double value) {
  low_.xc(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::x0h(double value) {
  high_.x0(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::x1h(double value) {
  high_.x1(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::xch(double value) {
  high_.xc(value);
  xChanged_();
}

void vxClassifierFeatureScoreTwoSided::y0(double value) { low_.y0(value); }

void vxClassifierFeatureScoreTwoSided::y1(double value) { low_.y1(value); }

void vxClassifierFeatureScoreTwoSided::y0h(double value) {
  if (isOutsideUnit(value)) throw vxClassifierDefs::BadParams(L"y0h must be between 0 and 1");
  high_.y0(value);
}

void vxClassifierFeatureScoreTwoSided::y1h(double value) {
  if (isOutsideUnit(value)) throw vxClassifierDefs::BadParams(L"y1h must be between 0 and 1");
  high_.y1(value);
}

double vxClassifierFeatureScoreTwoSided::score(double x) const {
  checkOrder(low_);
  checkOrder(high_);
  if (!isInOrder_) throw vxClassifierDefs::BadParams(L"Bad x values");
  return x < lowest_ ? low_.score(x) : high_.score(x);
}

void vxClassifierFeatureScoreTwoSided::xChanged_() noexcept {
  lowest_ = std::min({high_.x0(), high_.x1(), high_.xc()});
  const bool overlap = low_.x0() > lowest_ || low_.x1() > lowest_ || low_.xc() > lowest_;
  isInOrder_ = !overlap && vx_ScoreInLine::isInOrder(low_) && vx_ScoreInLine::isInOrder(high_);
}

vxClassifierFeatureScoreTwoSided* vxClassifierFeatureScoreTwoSided::clone() const {
  return new vxClassifierFeatureScoreTwoSided(*this);
}

bool vxClassifierFeatureScoreTwoSided::operator==(const vxClsFtSc& other) const {
  if (!isSameClass(*this, other)) return false;
  const auto& band = static_cast<const vxClassifierFeatureScoreTwoSided&>(other);
  return low_ == band.low_ && high_ == band.high_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreIgnore&) { return archive; }

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreOneSided& score) {
  vx_Transfer transfer(archive);
  vfTransferStaged(archive, score, [&archive](vxClassifierFeatureScoreOneSided& target) {
    archive || target.x0_ || target.x1_ || target.xc_ || target.y0_ || target.y1_;
    if (archive.isLoading()) target.xChanged_();
  });
  transfer.complete();
  return archive;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreTwoSided& score) {
  vx_Transfer transfer(archive);
  vfTransferStaged(archive, score, [&archive](vxClassifierFeatureScoreTwoSided& target) {
    archive || target.low_ || target.high_;
    if (archive.isLoading()) target.xChanged_();
  });
  transfer.complete();
  return archive;
}

namespace {

template <class Score>
void storeScore(vxArchive& archive, unsigned long tag, const vxClsFtSc& score) {
  Score copy = static_cast<const Score&>(score);
  archive || tag || copy;
}

template <class Score>
void loadScore(vxArchive& archive, vxPtrHandle<vxClsFtSc>& handle) {
  Score loaded;
  archive || loaded;
  handle.reset(loaded.clone());
}

}  // namespace

vxArchive& operator||(vxArchive& archive, vxPtrHandle<vxClsFtSc>& score) {
  vx_Transfer transfer(archive);
  if (archive.isStoring()) {
    const vxClsFtSc& function = *score;
    const std::type_info& type = typeid(function);
    if (type == typeid(vxClassifierFeatureScoreIgnore)) {
      storeScore<vxClassifierFeatureScoreIgnore>(archive, kIgnoreTag, function);
    } else if (type == typeid(vxClassifierFeatureScoreOneSided)) {
      storeScore<vxClassifierFeatureScoreOneSided>(archive, kOneSidedTag, function);
    } else if (type == typeid(vxClassifierFeatureScoreTwoSided)) {
      storeScore<vxClassifierFeatureScoreTwoSided>(archive, kTwoSidedTag, function);
    }
  } else {
    unsigned long tag = 0;
    archive || tag;
    if (tag == kIgnoreTag) {
      loadScore<vxClassifierFeatureScoreIgnore>(archive, score);
    } else if (tag == kOneSidedTag) {
      loadScore<vxClassifierFeatureScoreOneSided>(archive, score);
    } else if (tag == kTwoSidedTag) {
      loadScore<vxClassifierFeatureScoreTwoSided>(archive, score);
    }
  }
  transfer.complete();
  return archive;
}
