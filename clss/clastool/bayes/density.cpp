// SPDX-License-Identifier: MIT
#include "vxclss/density.h"

#include "vxfoundation/archive.h"

vx_ProbabilityDensityFunction::~vx_ProbabilityDensityFunction() = default;

void vx_ProbabilityDensityFunction::serialize_(vxArchive& archive, unsigned char version) {
  if (version != 0) throw vxArchive::UnknownVersion();
  vxPersistent::dispatchSerialize(archive);
}

void vx_ProbabilityDensityFunction::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_ProbabilityDensityFunction)}) {
    serialize_(archive, 0);
  }
}
