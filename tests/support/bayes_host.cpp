// SPDX-License-Identifier: MIT
#include "tests/support/bayes_host.h"

#include <list>

#include "tests/support/archive_helpers.h"
#include "tests/support/bayes_archive.h"

namespace host {

namespace {

vxPtrHandle_const<vx_ProbabilityDensityFunction> wrapped(
    const vx_ProbabilityDensityFunction& density) {
  using Handle = vxPtrHandle_const<vx_ProbabilityDensityFunction>;
  if (const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&density)) {
    return Handle(new WrappedNormal(*normal));
  }
  return Handle(new WrappedBinomial(dynamic_cast<const vx_PDFBinomial&>(density)));
}

}  // namespace

vx_ClassifierBayesian wrapped(const vx_ClassifierBayesian& classifier) {
  const DensityRegistration registration;
  std::vector<vxPtrHandle_const<vx_ProbabilityDensityFunction>> densities;
  std::list<vx_CategoryModelBayesian> models;
  std::vector<const vxPersistent*> pointers;
  for (const auto& handle : classifier.categoryModels()) {
    const auto& model = dynamic_cast<const vx_CategoryModelBayesian&>(*handle);
    ArchivedBayesModel archived{
        model.categoryLabel(), model.numMeasurements(), model.measurementGroups(), {}};
    for (const auto& density : model.densities()) {
      densities.push_back(wrapped(*density));
      archived.densities.push_back(densities.back().get());
    }
    models.push_back(bayesModel(archived));
    pointers.push_back(&models.back());
  }
  return loaded<vx_ClassifierBayesian>(
      bayesClassifierBytes(classifier.trainParams().get(), classifier.categoryLabels(), pointers));
}

}  // namespace host
