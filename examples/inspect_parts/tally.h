// SPDX-License-Identifier: MIT
#ifndef EXAMPLES_INSPECT_PARTS_TALLY_H_
#define EXAMPLES_INSPECT_PARTS_TALLY_H_

#include <array>
#include <iosfwd>
#include <string>

#include "examples/inspect_parts/inspection.h"
#include "examples/inspect_parts/sighting.h"

namespace parts {

/// Counts decisions by what was really there, and by what became of it.
class Tally {
 public:
  void add(const Sighting& sighting, const Decision& decision);

  /// Parts that no blob shows.
  void addLost(long number) { numLost_ += number; }

  void print(std::ostream& out) const;

 private:
  struct Row {
    long numFound = 0, numRight = 0, numWrong = 0, numRejected = 0;
  };
  /// A row for each known kind, one for other kinds, one for touching parts and dirt.
  static constexpr int kUnknownRow = kNumKnown;
  static constexpr int kNoPartRow = kNumKnown + 1;
  static std::string nameOfRow_(int row);

  // The cut-off ones apart: there is less to decide by.
  std::array<std::array<Row, 2>, kNumKnown + 2> rows_;
  long numLost_ = 0;
};

}  // namespace parts

#endif  // EXAMPLES_INSPECT_PARTS_TALLY_H_
