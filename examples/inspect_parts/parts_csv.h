// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_PARTS_CSV_H_
#define EXAMPLES_INSPECT_PARTS_PARTS_CSV_H_

#include <filesystem>
#include <sstream>

#include "examples/inspect_parts/inspection.h"
#include "examples/inspect_parts/sighting.h"

namespace parts {

/// A table of measured parts that the vxclss command reads: a row a part, its place in the picture
/// first. A measurement that could not be taken is an empty cell, as is a kind that is none.
class PartsCsv {
 public:
  /// With decisions, three more columns tell what was decided of each part.
  PartsCsv(std::filesystem::path path, bool withDecisions);

  /// `decision` is not null in a table with decisions.
  void add(int picture, const Sighting& sighting, const Decision* decision);

  /// Throws std::runtime_error if the file can't be written.
  void write() const;

 private:
  std::filesystem::path path_;
  bool withDecisions_;
  std::ostringstream rows_;
};

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_PARTS_CSV_H_
