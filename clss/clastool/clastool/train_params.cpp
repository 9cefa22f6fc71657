// SPDX-License-Identifier: MIT
#include "vxclss/train_params.h"

#include "vxfoundation/archive.h"

vxClassifierTrainParams::vxClassifierTrainParams(const vxClassifierTrainParams& other)
    : vxPersistent(other), vxRepBase(other) {}

vxClassifierTrainParams& vxClassifierTrainParams::operator=(const vxClassifierTrainParams&) {
  mutating_();
  return *this;
}

vxClassifierTrainParams::~vxClassifierTrainParams() = default;

void vxClassifierTrainParams::throwIfNotReady(bool value) { throwIfNotReady_ = value; }

bool vxClassifierTrainParams::isEqual_(const vxClassifierTrainParams&) const { return true; }

void vxClassifierTrainParams::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vxClassifierTrainParams)}) {
    vxPersistent::dispatchSerialize(archive);
  }
}
