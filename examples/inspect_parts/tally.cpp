// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/tally.h"

#include <cstddef>
#include <iomanip>
#include <ostream>

namespace parts {

void Tally::add(const Sighting& sighting, const Decision& decision) {
  const long label = sighting.label();
  const bool isOnePart = sighting.kinds.size() == 1;
  const std::size_t index = static_cast<std::size_t>(label >= 0  ? label
                                                     : isOnePart ? kUnknownRow
                                                                 : kNoPartRow);
  Row& row = rows_.at(index)[sighting.blob.isCutOff ? 1 : 0];
  ++row.numFound;
  if (decision.verdict != Decision::kAccepted) {
    ++row.numRejected;
  } else if (decision.label == label) {
    ++row.numRight;
  } else {
    ++row.numWrong;
  }
}

std::string Tally::nameOfRow_(int row) {
  if (row == kUnknownRow) return "other kinds";
  if (row == kNoPartRow) return "touching parts";
  return nameOf(static_cast<Kind>(row));
}

void Tally::print(std::ostream& out) const {
  const auto line = [&](const std::string& name, const Row& row, bool hasRight) {
    out << std::left << std::setw(24) << name << std::right << std::setw(6) << row.numFound
        << std::setw(8) << (hasRight ? std::to_string(row.numRight) : "-") << std::setw(8)
        << row.numWrong << std::setw(10) << row.numRejected << "\n";
  };
  out << std::left << std::setw(24) << "" << std::right << std::setw(6) << "found" << std::setw(8)
      << "right" << std::setw(8) << "wrong" << std::setw(10) << "rejected"
      << "\n";
  for (int row = 0; row < static_cast<int>(rows_.size()); ++row) {
    for (const bool isCutOff : {false, true}) {
      const Row& counts = rows_.at(static_cast<std::size_t>(row))[isCutOff ? 1 : 0];
      if (isCutOff && counts.numFound == 0) continue;
      line(nameOfRow_(row) + (isCutOff ? ", cut off" : ""), counts, row < kNumKnown);
    }
  }
  if (numLost_ > 0) out << "parts that were not found: " << numLost_ << "\n";
}

}  // namespace parts
