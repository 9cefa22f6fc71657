// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_KNN_PROBE_H_
#define TESTS_SUPPORT_KNN_PROBE_H_

#include "vxclss/classifier_knn.h"

/// A nearest-neighbour classifier whose hooks can be called one by one.
class KnnProbe : public vx_ClassifierKNN {
 public:
  using vx_ClassifierKNN::checkRunnable_;
  using vx_ClassifierKNN::isTrained_;
  using vx_ClassifierKNN::retrain_;
  using vx_ClassifierKNN::run_;
  using vx_ClassifierKNN::train_;
  using vx_ClassifierKNN::trainIncremental_;
  using vx_ClassifierKNN::trainStart_;
  using vx_ClassifierKNN::untrain_;
};

#endif  // TESTS_SUPPORT_KNN_PROBE_H_
