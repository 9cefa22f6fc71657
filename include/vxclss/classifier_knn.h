// SPDX-License-Identifier: MIT
#ifndef VXCLSS_CLASSIFIER_KNN_H_
#define VXCLSS_CLASSIFIER_KNN_H_

#include <vector>

#include "vxclss/classifier.h"
#include "vxclss/data_provider.h"
#include "vxclss/export.h"
#include "vxclss/train_params_knn.h"
#include "vxfoundation/handle.h"

class vx_NeighbourSearch;

/// The k-nearest-neighbour technique (T. M. Cover, P. E. Hart, "Nearest neighbor pattern
/// classification", IEEE Transactions on Information Theory 13(1), 1967, 21-27).
///
/// A category's match score is its share of the k stored patterns nearest to the query; categories
/// without a neighbour get no result. Copies share the stored patterns.
///
/// k, metric and costs are not archived with the classifier: one that was loaded runs with
/// vxClassifierTrainParamsKNN(1) until it is trained or retrained.
///
/// Equality: equal held parameters, and equal stored patterns if trained.
class VXCLSS_EXPORT vx_ClassifierKNN : public vx_Classifier {
 public:
  vx_ClassifierKNN();
  vx_ClassifierKNN(const vx_ClassifierKNN&) = default;
  vx_ClassifierKNN& operator=(const vx_ClassifierKNN& other);
  ~vx_ClassifierKNN() override;

  /// The stored patterns, empty when untrained.
  vxPtrHandle_const<vxClassifierDataProviderMemory> data() const { return data_; }

  /// What the search runs with.
  const vxClassifierTrainParamsKNN& params() const { return params_; }

  vxPtrHandle<vx_Classifier> clone() const override;
  bool isEquivalent(const vx_Classifier& other) const override;
  bool operator==(const vx_ClassifierKNN& other) const;
  bool operator!=(const vx_ClassifierKNN& other) const { return !(*this == other); }

 protected:
  /// Keeps every pattern whose label is not -1, shared.
  ///
  /// Throws BadFeatures for an invalid measurement, in an unlabelled pattern too; the classifier
  /// is then trained on nothing.
  void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;

  /// Changes k, metric and costs. Throws vxBadPointer if no parameters are held.
  void retrain_(const vxClassifierTrainParams& params) override;

  /// Does nothing: patterns can be added only to a trained classifier.
  void trainStart_(const vxClassifierTrainParams& params) override;

  /// Adds a copy of the pattern, also one with invalid measurements or the label -1; with the
  /// former every later run throws BadFeatures. Throws vxBadPointer when untrained.
  void trainIncremental_(const vxFeaturePattern& pattern, long label) override;

  void untrain_() override;
  bool isTrained_() const override;

  /// Throws InsufficientTrainData if no pattern is stored; vxBadPointer when untrained.
  void checkRunnable_() const override;

  /// Throws what checkRunnable_() does; BadFeatures if the query has an invalid measurement or
  /// another number of measurements than the stored patterns; what the metric throws. Polls the
  /// attention check once a stored pattern. Linear in the number of stored patterns. The first run
  /// after loading, or after many patterns were added, also lays the patterns out for the search.
  void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;

  void dispatchSerialize(vxArchive& archive) override;

 private:
  void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                        const vxFeaturePattern& pattern) const override;
  void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                         const vxClassifierResult& result) const override;

  /// The stored patterns nearest to the query, nearest first: min(k, number stored) indices and
  /// their distances. Of equal distances the later pattern ranks nearer, but one that equals the
  /// last place of a full list is not admitted.
  void findNearestNeighbors_(const vxFeaturePattern& pattern, long k, std::vector<long>& indices,
                             std::vector<double>& distances) const;
  /// The same neighbours, in no particular order; false where the search has to go by its
  /// definition.
  bool findQuickly_(const vxFeaturePattern& pattern, vx_NeighbourSearch& search) const;
  void fillMatchResults_(const std::vector<long>& indices,
                         std::vector<vxClassifierCategoryResult>& results) const;

  static vxPersistent* make();
  static vx_Instantiator sExemplar;

  vxPtrHandle<vxClassifierDataProviderMemory> data_;
  vxClassifierTrainParamsKNN params_;
};

#endif  // VXCLSS_CLASSIFIER_KNN_H_
