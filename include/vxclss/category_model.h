// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CATEGORY_MODEL_H_
#define VXCLSS_CATEGORY_MODEL_H_

#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/diag.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// Base of the models that describe one category each.
class VXCLSS_EXPORT vx_CategoryModel : public vxPersistent, public vxRepBase {
 public:
  ~vx_CategoryModel() override;

  /// The category described; 0 in a new object. Stored without a check.
  long categoryLabel() const { return categoryLabel_; }
  void categoryLabel(long label);

  /// Measurements per pattern that the model expects; 0 in a new object. Stored without a check.
  long numMeasurements() const { return numMeasurements_; }
  void numMeasurements(long number);

  /// How well the pattern matches the category.
  virtual double matchScore(const vxFeaturePattern& pattern, vxDiagObject* diag,
                            unsigned long flags) const = 0;

  /// Updates the model with one more pattern of its category.
  virtual void adapt(const vxFeaturePattern& pattern, vxDiagObject* diag, unsigned long flags) = 0;

  /// Compares category label and number of measurements.
  bool operator==(const vx_CategoryModel& other) const;
  bool operator!=(const vx_CategoryModel& other) const { return !(*this == other); }

 protected:
  vx_CategoryModel() = default;
  vx_CategoryModel(const vx_CategoryModel&) = default;
  vx_CategoryModel(vx_CategoryModel&&) = default;
  vx_CategoryModel& operator=(const vx_CategoryModel&) = default;
  vx_CategoryModel& operator=(vx_CategoryModel&&) = default;

  void dispatchSerialize(vxArchive& archive) override;

 private:
  long categoryLabel_ = 0;
  long numMeasurements_ = 0;
};

#endif  // VXCLSS_CATEGORY_MODEL_H_
