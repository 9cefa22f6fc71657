// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CATEGORY_MODEL_BAYESIAN_H_
#define VXCLSS_CATEGORY_MODEL_BAYESIAN_H_

#include <cstdint>
#include <vector>

#include "vxclss/category_model.h"
#include "vxclss/density.h"
#include "vxclss/distribution_types.h"
#include "vxclss/export.h"
#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"

/// One category as a product of independent densities over groups of measurements.
///
/// Copies share the densities. Equality compares label, number of measurements and densities, not
/// the groups.
class VXCLSS_EXPORT vx_CategoryModelBayesian : public vx_CategoryModel {
 public:
  /// Label 0, no groups.
  vx_CategoryModelBayesian();

  /// One density of type `types[k]` over the measurements in `groups[k]`; the number of
  /// measurements is the sum of the group sizes. A binomial group takes its largest value from
  /// `maxMeasurementValues`, or 1.0 if that is invalid there.
  ///
  /// Throws BadParams if there are fewer groups than types; then, for the first such group,
  /// NotImplemented for ePoisson and eUniform, BadParams for a
  /// value that is no type.
  vx_CategoryModelBayesian(
      long label, const std::vector<std::vector<long>>& groups,
      const std::vector<vxClassifierDistributionTypes::DistributionType>& types,
      const vxFeaturePattern& maxMeasurementValues);
  vx_CategoryModelBayesian(const vx_CategoryModelBayesian&) = default;
  vx_CategoryModelBayesian(vx_CategoryModelBayesian&&) = default;
  vx_CategoryModelBayesian& operator=(const vx_CategoryModelBayesian& other);
  vx_CategoryModelBayesian& operator=(vx_CategoryModelBayesian&&) = default;
  ~vx_CategoryModelBayesian() override;

  const std::vector<std::vector<long>>& measurementGroups() const { return groups_; }
  /// The density of each group.
  std::vector<vxPtrHandle_const<vx_ProbabilityDensityFunction>> densities() const;

  /// Sum of the groups' log densities: the log-likelihood of the category. Diagnostics are not
  /// used.
  ///
  /// Throws InsufficientTrainData, with the category label in its text, if a density has too few
  /// samples; vxBadPointer for a missing density; what a density throws.
  double matchScore(const vxFeaturePattern& pattern, vxDiagObject* diag,
                    unsigned long flags) const override;

  /// Folds the pattern into every density. Diagnostics are not used. What a density throws passes
  /// through; the densities before it have then taken the pattern.
  void adapt(const vxFeaturePattern& pattern, vxDiagObject* diag, unsigned long flags) override;

  bool operator==(const vx_CategoryModelBayesian& other) const;
  bool operator!=(const vx_CategoryModelBayesian& other) const { return !(*this == other); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  friend class vx_BayesianLearner;
  friend class vx_BayesianPlan;

  /// A number that changes whenever the model is assigned to, and that no other model has.
  class Revision {
   public:
    Revision();
    Revision(const Revision&);
    Revision& operator=(const Revision&);
    std::uint64_t number() const { return number_; }

   private:
    std::uint64_t number_;
  };

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  Revision revision_;
  std::vector<std::vector<long>> groups_;
  std::vector<vxPtrHandle<vx_ProbabilityDensityFunction>> densities_;  // one a group
};

#endif  // VXCLSS_CATEGORY_MODEL_BAYESIAN_H_
