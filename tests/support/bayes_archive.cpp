// SPDX-License-Identifier: MIT
#include "tests/support/bayes_archive.h"

#include <cstddef>
#include <sstream>
#include <utility>

#include "tests/support/archive_helpers.h"

namespace {

void writePointers(vxArchive& archive, const std::vector<const vxPersistent*>& objects) {
  writeVersions(archive, 1);
  auto count = static_cast<unsigned long>(objects.size());
  archive || count;
  for (const vxPersistent* object : objects) writePointer(archive, object);
}

template <class Write>
std::string written(Write&& write) {
  std::ostringstream stream(std::ios::binary);
  vxOutputArchive output(stream);
  write(static_cast<vxArchive&>(output));
  return stream.str();
}

}  // namespace

std::string bayesModelBytes(const ArchivedBayesModel& model) {
  return written([copy = model](vxArchive& archive) mutable {
    writeVersions(archive, 2);
    archive || copy.label || copy.numMeasurements || copy.groups;
    writePointers(archive, copy.densities);
  });
}

vx_CategoryModelBayesian bayesModel(const ArchivedBayesModel& model) {
  return loaded<vx_CategoryModelBayesian>(bayesModelBytes(model));
}

std::string bayesClassifierBytes(const vxPersistent* params, std::vector<long> labels,
                                 const std::vector<const vxPersistent*>& models) {
  return written([&](vxArchive& archive) {
    writeVersions(archive, 2);
    writePointer(archive, params);
    archive || labels;
    writePointers(archive, models);
  });
}

std::string normalBytes(const std::vector<double>& mean, const std::vector<double>& covariance,
                        long sampleCount) {
  const auto d = static_cast<long>(mean.size());
  vxNMMatrix means(d, 1);
  vxNMMatrix covariances(d, d);
  for (long i = 0; i < d; ++i) {
    means.element(i, 0, mean[static_cast<std::size_t>(i)]);
    for (long j = 0; j < d; ++j) {
      covariances.element(i, j, covariance.at(static_cast<std::size_t>(i * d + j)));
    }
  }
  return written([&](vxArchive& archive) {
    writeVersions(archive, 2);
    archive || means || covariances || sampleCount;
  });
}

std::string binomialBytes(long numTrials, double theta, double maximumValue) {
  return written([&](vxArchive& archive) {
    writeVersions(archive, 2);
    archive || numTrials || theta || maximumValue;
  });
}
