// SPDX-License-Identifier: MIT
#include "vxclss/category_model.h"

#include "vxfoundation/archive.h"

vx_CategoryModel::~vx_CategoryModel() = default;

void vx_CategoryModel::categoryLabel(long label) {
  mutating_();
  categoryLabel_ = label;
}

void vx_CategoryModel::numMeasurements(long number) {
  mutating_();
  numMeasurements_ = number;
}

bool vx_CategoryModel::operator==(const vx_CategoryModel& other) const {
  return categoryLabel_ == other.categoryLabel_ && numMeasurements_ == other.numMeasurements_;
}

void vx_CategoryModel::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(vx_CategoryModel)}) {
    vxPersistent::dispatchSerialize(archive);
    long label = categoryLabel_;
    long number = numMeasurements_;
    archive || label || number;
    if (archive.isStoring()) return;
    categoryLabel_ = label;
    numMeasurements_ = number;
  }
}
