// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_CLASSIFIERS_H_
#define VXCLSS_PYTHON_CLASSIFIERS_H_

#include <memory>

#include "bindings.h"

namespace vxpy {

/// Python's object for the classifier that a tool holds; it keeps `owner` and cannot be changed.
py::object classifierOf(const vxPtrHandle_const<vx_Classifier>& classifier,
                        std::shared_ptr<const void> owner);

/// Puts what a classifier was trained with in force after loading: an archive holds the parameters,
/// but a nearest-neighbour classifier comes back with k = 1. `trained` is a tool or a classifier.
/// Throws vxArchive::Malformed for parts that don't fit each other.
template <class Trained>
void restoreParams(Trained& trained) {
  if (!trained.isTrained()) return;
  try {
    const vxPtrHandle<vxClassifierTrainParams> params = trained.trainParams()->clone();
    params->throwIfNotReady(false);  // it may never have been ready
    trained.retrain(*params);
  } catch (const vxClassifierDefs::BadMethod&) {
    // Trained without parameters, so that there is nothing to restore.
  } catch (const vxBadPointer&) {
    throw vxArchive::Malformed(L"Parameters of another technique");
  }
}

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_CLASSIFIERS_H_
