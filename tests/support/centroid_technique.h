// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_CENTROID_TECHNIQUE_H_
#define TESTS_SUPPORT_CENTROID_TECHNIQUE_H_

#include <vector>

#include "vxclss/category_model.h"
#include "vxclss/classifier.h"
#include "vxclss/train_params.h"

/// A technique as a host would write it: a category matches by the distance to the mean of its
/// patterns.
namespace host {

/// `scale` is the distance at which a match score falls to one half.
class CentroidParams : public vxClassifierTrainParams {
 public:
  explicit CentroidParams(double scale = 1.0) : scale_(scale) {}

  double scale() const { return scale_; }
  vxPtrHandle<vxClassifierTrainParams> clone() const override;
  static vxPersistent* make() { return new CentroidParams; }

 protected:
  bool isEqual_(const vxClassifierTrainParams& other) const override;
  bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
  vx_Classifier* newClassifier_() const override;
  void dispatchSerialize(vxArchive& archive) override;

 private:
  double scale_;
};

/// Sum and number of the patterns of one category.
class CentroidModel : public vx_CategoryModel {
 public:
  double matchScore(const vxFeaturePattern& pattern, vxDiagObject* diag,
                    unsigned long flags) const override;
  void adapt(const vxFeaturePattern& pattern, vxDiagObject* diag, unsigned long flags) override;
  bool operator==(const CentroidModel& other) const;
  static vxPersistent* make() { return new CentroidModel; }

  double scale = 1.0;

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  std::vector<double> sums_;
  long count_ = 0;
};

class CentroidClassifier : public vx_Classifier {
 public:
  CentroidClassifier() = default;
  CentroidClassifier(const CentroidClassifier& other);

  vxPtrHandle<vx_Classifier> clone() const override;
  bool isEquivalent(const vx_Classifier& other) const override;
  static vxPersistent* make() { return new CentroidClassifier; }

 protected:
  void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;
  void retrain_(const vxClassifierTrainParams& params) override;
  void trainStart_(const vxClassifierTrainParams& params) override;
  void trainIncremental_(const vxFeaturePattern& pattern, long label) override;
  void untrain_() override;
  bool isTrained_() const override { return trained_ != 0; }
  void checkRunnable_() const override;
  void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;
  void dispatchSerialize(vxArchive& archive) override;

 private:
  void recordTrainInputs_(vxDiagObject*, unsigned long) const override {}
  void recordTrainDetails_(vxDiagObject*, unsigned long) const override {}
  void recordTrainResults_(vxDiagObject*, unsigned long) const override {}
  void recordRunInputs_(vxDiagObject*, unsigned long, const vxFeaturePattern&) const override {}
  void recordRunDetails_(vxDiagObject*, unsigned long) const override {}
  void recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                         const vxClassifierResult&) const override {}

  long trained_ = 0;
  std::vector<vxPtrHandle<CentroidModel>> models_;
};

/// The technique is known to archives while this lives.
class CentroidRegistration {
 private:
  vx_Instantiator params_{typeid(CentroidParams), &CentroidParams::make};
  vx_Instantiator model_{typeid(CentroidModel), &CentroidModel::make};
  vx_Instantiator classifier_{typeid(CentroidClassifier), &CentroidClassifier::make};
};

}  // namespace host

#endif  // TESTS_SUPPORT_CENTROID_TECHNIQUE_H_
