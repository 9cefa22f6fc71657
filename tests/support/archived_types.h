// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_TYPES_H_
#define TESTS_SUPPORT_ARCHIVED_TYPES_H_

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_classes.h"
#include "tests/support/archived_classes_bayes.h"
#include "tests/support/archived_classes_tool.h"
#include "tests/support/archived_classes_trees.h"
#include "tests/support/class_names.h"
#include "tests/support/golden_archive.h"

/// Every archived class, each with an entry in archived_classes.h and golden bytes.
using ArchivedTypes =
    testing::Types<vxClassifierDefs::BadFeatures, vxClassifierDefs::BadIndex,
                   vxClassifierDefs::BadLabel, vxClassifierDefs::BadMethod,
                   vxClassifierDefs::BadParams, vxClassifierDefs::InsufficientTrainData,
                   vxClassifierDefs::NotImplemented, vxClassifierDefs::NotTrained, vxFeaturePattern,
                   vxClassifierDataProviderMemory, vxClassifierCosts, vxClassifierFrequencies,
                   vxClassifierCategoryResult, vxClassifierResult, vxPatternDistanceMetricNorm,
                   vxClassifierTrainParamsKNN, vx_ClassifierKNN, vxClassifierDistributionTypes,
                   vxClassifierTrainParamsBayesian, vx_PDFMultivariateNormal, vx_PDFBinomial,
                   vx_CategoryModelBayesian, vx_ClassifierBayesian, vxComparisonPredicate,
                   vxRangePredicate, vxValidityPredicate, vxDecisionTreeLeaf, vxDecisionTreeNode,
                   vx_ClassifierDecisionTree, vxClassifierFeatureScoreOneSided,
                   vxClassifierFeatureScoreTwoSided, ArchivedScoreHandle, vxClassifierFeatureVector,
                   vxClassifierRule, vxClassifierRuleTable, vxClassifierTool>;

template <class T>
constexpr bool isPersistent = std::is_base_of_v<vxPersistent, T>;
template <class T>
constexpr bool isTool = std::is_same_v<T, vxClassifierTool>;

template <class T, class = void>
struct HasClone : std::false_type {};
template <class T>
struct HasClone<T, std::void_t<decltype(std::declval<const T&>().clone())>> : std::true_type {};

/// The bytes of an object in place. Storing changes nothing.
template <class T>
std::string inPlace(const T& object) {
  return stored(const_cast<T&>(object));
}

/// An object to load into, of another content than sample `i`.
template <class T>
T otherThan(const Samples<T>& samples, std::size_t i) {
  return samples[(i + 1) % samples.size()].object;
}

/// Stores an object by pointer, so that the class name is there too, if its class has a name.
template <class T>
void storeWhole(vxArchive& archive, const T& object) {
  if constexpr (isPersistent<T>) {
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(archive, &object, unused);
  } else {
    archive || const_cast<T&>(object);
  }
}

/// An object that was stored by pointer; null for one of another class.
template <class T>
std::shared_ptr<T> loadPointer(vxArchive& archive) {
  vxPersistent* object = nullptr;
  vxPersistent::serializePointer(archive, nullptr, object);
  if constexpr (std::is_base_of_v<vxRepBase, T>) {
    vxPtrHandle<T> handle;
    handle.assignChecked(object);
    T* const held = handle.get();
    return std::shared_ptr<T>(held, [handle](T*) {});
  } else {
    std::shared_ptr<vxPersistent> owner;
    if (dynamic_cast<vxRepBase*>(object) == nullptr) owner.reset(object);
    return std::dynamic_pointer_cast<T>(owner);
  }
}

/// What storeWhole() wrote: an object of its own where one came by pointer, else `target` filled.
/// Null for an object of another class.
template <class T>
std::shared_ptr<T> loadWhole(vxArchive& archive, T& target) {
  if constexpr (isPersistent<T>) {
    return loadPointer<T>(archive);
  } else {
    archive || target;
    return std::shared_ptr<T>(std::shared_ptr<T>(), &target);
  }
}

/// Nothing where the comparison meets an empty handle.
template <class T>
std::optional<bool> areEqual(const T& a, const T& b) {
  try {
    if constexpr (std::is_base_of_v<vxException, T>) {
      return a.message() == b.message();
    } else {
      return a == b;
    }
  } catch (const vxBadPointer&) {
    return std::nullopt;
  }
}

/// A failed load leaves an object as it was; a tool has released its classifier, unless its own
/// version byte failed.
template <class T>
void expectLeft(const T& target, const std::string& before) {
  const std::string left = inPlace(target);
  const bool isEmptyTool = isTool<T> && left == inPlace(vxClassifierTool());
  if (left != before && !isEmptyTool) ADD_FAILURE() << "left as " << toHex(left);
}

/// Everything can be done to an object that arrived, and it arrives the same again.
template <class T>
void expectUsable(const T& object, T target) {
  tryAll([&object] { return areEqual(object, object); });
  Archived<T>::use(object);
  const std::string bytes = inPlace(object);
  const T copy(object);
  if constexpr (isTool<T>) {
    EXPECT_EQ(inPlace(copy), object.isTrained() ? bytes : inPlace(vxClassifierTool()));
  } else {
    EXPECT_EQ(inPlace(copy), bytes);
  }
  if constexpr (isPersistent<T> && HasClone<T>::value) {
    EXPECT_EQ(inPlace(*object.clone()), bytes);
  }
  load(bytes, target);
  EXPECT_EQ(inPlace(target), bytes);
}

#endif  // TESTS_SUPPORT_ARCHIVED_TYPES_H_
