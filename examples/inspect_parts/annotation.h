// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_ANNOTATION_H_
#define EXAMPLES_INSPECT_PARTS_ANNOTATION_H_

#include <opencv2/core.hpp>
#include <vector>

#include "examples/inspect_parts/inspection.h"
#include "examples/inspect_parts/measuring.h"

namespace parts {

/// The picture for people: every blob outlined in the colour of what it was taken for, named, and
/// counted below. `decisions` are parallel to `blobs`. Of the belt between them only the light is
/// kept, so that the file stays small.
cv::Mat3b annotated(const cv::Mat1b& picture, const std::vector<Blob>& blobs,
                    const std::vector<Decision>& decisions);

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_ANNOTATION_H_
