// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_SIGHTING_H_
#define EXAMPLES_INSPECT_PARTS_SIGHTING_H_

#include <vector>

#include "examples/inspect_parts/belt.h"
#include "examples/inspect_parts/measuring.h"

namespace parts {

/// A blob and what it really shows, as a person would tell who looks at the picture.
struct Sighting {
  Blob blob;
  std::vector<Kind> kinds;  ///< several where parts touch, none for dirt

  /// Of the one part of a known kind that it shows, otherwise -1.
  long label() const {
    return kinds.size() == 1 && isKnown(kinds.front()) ? static_cast<long>(kinds.front()) : -1;
  }
};

/// Segments and measures the picture, and looks up each blob. `numLost`, if given, becomes the
/// number of parts that are in no blob.
std::vector<Sighting> lookAt(const BeltPicture& picture, long* numLost = nullptr);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_SIGHTING_H_
