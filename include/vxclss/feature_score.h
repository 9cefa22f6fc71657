// SPDX-License-Identifier: MIT
#ifndef VXCLSS_FEATURE_SCORE_H_
#define VXCLSS_FEATURE_SCORE_H_

#include "vxclss/export.h"
#include "vxfoundation/handle.h"

class vxArchive;

/// Maps one feature value to a degree of membership in [0, 1], or to -1: the feature doesn't count.
///
/// Held through handles, so that rules may share one. A host may derive its own, but only the
/// three classes below can be archived. Const operations on one object may run on many threads.
class VXCLSS_EXPORT vxClsFtSc : public vxRepBase {
 public:
  vxClsFtSc() = default;
  vxClsFtSc(const vxClsFtSc&) = default;
  vxClsFtSc& operator=(const vxClsFtSc&) = default;
  ~vxClsFtSc() override;

  virtual double score(double x) const = 0;

  /// A copy of the exact class; the caller owns it.
  virtual vxClsFtSc* clone() const = 0;

  /// False for another class; values are compared exactly.
  virtual bool operator==(const vxClsFtSc& other) const = 0;
  bool operator!=(const vxClsFtSc& other) const { return !(*this == other); }
};

/// A feature that doesn't count: -1 for every value, NaN included.
class VXCLSS_EXPORT vxClassifierFeatureScoreIgnore : public vxClsFtSc {
 public:
  vxClassifierFeatureScoreIgnore();
  ~vxClassifierFeatureScoreIgnore() override;
  vxClassifierFeatureScoreIgnore(const vxClassifierFeatureScoreIgnore&) = default;
  vxClassifierFeatureScoreIgnore& operator=(const vxClassifierFeatureScoreIgnore&) = default;

  double score(double x) const override;
  vxClassifierFeatureScoreIgnore* clone() const override;
  bool operator==(const vxClsFtSc& other) const override;
};

/// y0 up to x0, a straight line from (x0, y0) to (x1, y1), y1 up to the cut-off xc, 0 beyond.
///
/// x1 lies between x0 and xc; with xc < x0 everything runs towards smaller values. The setters of
/// the x values don't check that, score() does.
class VXCLSS_EXPORT vxClassifierFeatureScoreOneSided : public vxClsFtSc {
 public:
  /// 1 up to 0, falling to 0 at 1.
  vxClassifierFeatureScoreOneSided();
  vxClassifierFeatureScoreOneSided(const vxClassifierFeatureScoreOneSided&) = default;
  vxClassifierFeatureScoreOneSided& operator=(const vxClassifierFeatureScoreOneSided&) = default;
  ~vxClassifierFeatureScoreOneSided() override;

  /// Throws BadParams if y0, then if y1 is outside [0, 1], then if x1 is not between x0 and xc.
  void init(double x0, double x1, double xc, double y0, double y1);

  double x0() const { return x0_; }
  void x0(double value);
  double x1() const { return x1_; }
  void x1(double value);
  double xc() const { return xc_; }
  void xc(double value);

  /// The setters throw BadParams for a value outside [0, 1].
  double y0() const { return y0_; }
  void y0(double value);
  double y1() const { return y1_; }
  void y1(double value);

  /// Throws BadParams if x1 is not between x0 and xc.
  double score(double x) const override;
  vxClassifierFeatureScoreOneSided* clone() const override;
  bool operator==(const vxClsFtSc& other) const override;

 private:
  friend struct vx_ScoreInLine;
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierFeatureScoreOneSided& score);

  void xChanged_() noexcept;

  double x0_ = 0.0;
  double x1_ = 1.0;
  double xc_ = 1.0;
  double y0_ = 1.0;
  double y1_ = 0.0;
  double sign_ = 1.0;  // of x1 - x0 and xc - x1: 1 if it rises, else -1; 0 if x1 is not between
};

/// Two one-sided functions for a band of good values: the low one below the smallest x value of
/// the high one, the high one from there on.
///
/// No x value of the low side is above that smallest one. The setters of the x values don't check
/// that, score() does.
class VXCLSS_EXPORT vxClassifierFeatureScoreTwoSided : public vxClsFtSc {
 public:
  /// A triangle: 1 at 0, falling to 0 at -1 and 1.
  vxClassifierFeatureScoreTwoSided();
  vxClassifierFeatureScoreTwoSided(const vxClassifierFeatureScoreTwoSided&) = default;
  vxClassifierFeatureScoreTwoSided& operator=(const vxClassifierFeatureScoreTwoSided&) = default;
  ~vxClassifierFeatureScoreTwoSided() override;

  /// Throws BadParams if a low x value is above the smallest high one; then what the low side's
  /// init() throws, then the high side's.
  void init(double x0, double x1, double xc, double x0h, double x1h, double xch, double y0,
            double y1, double y0h, double y1h);

  const vxClassifierFeatureScoreOneSided& Low() const { return low_; }
  const vxClassifierFeatureScoreOneSided& High() const { return high_; }

  double x0() const { return low_.x0(); }
  void x0(double value);
  double x1() const { return low_.x1(); }
  void x1(double value);
  double xc() const { return low_.xc(); }
  void xc(double value);
  double x0h() const { return high_.x0(); }
  void x0h(double value);
  double x1h() const { return high_.x1(); }
  void x1h(double value);
  double xch() const { return high_.xc(); }
  void xch(double value);

  /// The setters throw BadParams for a value outside [0, 1].
  double y0() const { return low_.y0(); }
  void y0(double value);
  double y1() const { return low_.y1(); }
  void y1(double value);
  double y0h() const { return high_.y0(); }
  void y0h(double value);
  double y1h() const { return high_.y1(); }
  void y1h(double value);

  /// Throws BadParams if x1 of the low side, then of the high one, is not between its x0 and xc;
  /// then if a low x value is above the smallest high one.
  double score(double x) const override;
  vxClassifierFeatureScoreTwoSided* clone() const override;
  bool operator==(const vxClsFtSc& other) const override;

 private:
  friend struct vx_ScoreInLine;
  friend VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive,
                                             vxClassifierFeatureScoreTwoSided& score);

  void xChanged_() noexcept;

  double lowest_ = 0.0;     // x value of the high side
  bool isInOrder_ = false;  // nothing that score() would refuse
  vxClassifierFeatureScoreOneSided low_;
  vxClassifierFeatureScoreOneSided high_;
};

/// The bare values, without a version byte; loaded ones are not checked.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreIgnore& score);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreOneSided& score);
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreTwoSided& score);

/// A number that tells the class, then its values. A function of another class stores nothing;
/// loading an unknown number leaves the handle as it was. Throws vxBadPointer when storing an
/// empty handle.
VXCLSS_EXPORT vxArchive& operator||(vxArchive& archive, vxPtrHandle<vxClsFtSc>& score);

#endif  // VXCLSS_FEATURE_SCORE_H_
