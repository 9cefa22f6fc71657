// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_HOSTILE_ARCHIVE_H_
#define TESTS_SUPPORT_HOSTILE_ARCHIVE_H_

#include <string>
#include <vector>

#include "vxclss/feature_pattern.h"
#include "vxfoundation/handle.h"
#include "vxfoundation/persistent.h"

/// A training set as bytes may bring it: empty handles, mixed numbers of measurements, invalid
/// ones, labels below -1.
struct HostileSet {
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;
};

/// The bytes of a tool with a nearest-neighbour classifier that holds `params` (null, or of any
/// class) and is trained on `set`.
std::string hostileToolBytes(const vxPersistent* params, const HostileSet& set);

/// The same with an object of any class, or null, in the place of the training set.
std::string hostileToolBytes(const vxPersistent* params, const vxPersistent* data);

/// The bytes of a pointer to nearest-neighbour parameters with any k and, or null, any object in
/// the place of the metric.
std::string hostileParamsBytes(long k, const vxPersistent* metric);

#endif  // TESTS_SUPPORT_HOSTILE_ARCHIVE_H_
