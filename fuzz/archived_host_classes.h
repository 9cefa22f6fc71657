// SPDX-License-Identifier: MIT
#ifndef FUZZ_ARCHIVED_HOST_CLASSES_H_
#define FUZZ_ARCHIVED_HOST_CLASSES_H_

#include <string>
#include <vector>

#include "fuzz/archived.h"
#include "tests/support/archived_classes.h"
#include "tests/support/archived_samples.h"

/// A vector by itself, as every class archives its own.
template <class T>
struct ArchivedVector {
  std::vector<T> elements;

  bool operator==(const ArchivedVector& other) const { return elements == other.elements; }
};
template <class T>
vxArchive& operator||(vxArchive& archive, ArchivedVector<T>& vector) {
  return archive || vector.elements;
}

template <class T>
struct Archived<ArchivedVector<T>> {
  static Samples<ArchivedVector<T>> samples() {
    return {{"empty", {}}, {"rich", {{T(), T(), T()}}}};
  }
  static void use(const ArchivedVector<T>&) {}
};

// The classes of a host: what they hold is what an archive transfers.
template <>
inline constexpr bool fuzz::isHostClass<samples::Everything> = true;
template <>
inline constexpr bool fuzz::isHostClass<samples::Node> = true;
template <>
inline constexpr bool fuzz::isHostClass<samples::Trouble> = true;

template <>
struct Archived<samples::Everything> {
  static Samples<samples::Everything> samples() {
    return {{"empty", {}}, {"rich", *samples::Everything::filled()}};
  }
  static void use(const samples::Everything& object) {
    tryAll([&] { return object.matrix.element(0, 1); }, [&] { return object.range.isWithin(0.5); },
           [&] { return object.constant->label(); }, [&] { return object.diamond->bottom; },
           [&] { return object.matrix == object.matrix && object.range == object.range; });
  }
};
template <>
struct Archived<samples::Node> {
  static Samples<samples::Node> samples() { return {{"rich", *samples::Node::list(3)}}; }
  static void use(const samples::Node& node) {
    tryAll([&] { return node.next()->label(); });
  }
};
template <>
struct Archived<samples::Trouble> {
  static Samples<samples::Trouble> samples() { return {{"rich", samples::Trouble(L"t")}}; }
  static void use(const samples::Trouble& trouble) {
    tryAll([&] { return trouble.message(true); });
  }
};

#endif  // FUZZ_ARCHIVED_HOST_CLASSES_H_
