// SPDX-License-Identifier: MIT
#include "examples/inspect_parts/parts_csv.h"

#include <fstream>
#include <locale>
#include <stdexcept>
#include <string>
#include <utility>

namespace parts {
namespace {

std::string textOf(const Decision& decision) {
  switch (decision.verdict) {
    case Decision::kUnknown:
      return "unknown";
    case Decision::kUnsure:
      return "unsure";
    default:
      return nameOf(static_cast<Kind>(decision.label));
  }
}

}  // namespace

PartsCsv::PartsCsv(std::filesystem::path path, bool withDecisions)
    : path_(std::move(path)), withDecisions_(withDecisions) {
  rows_.imbue(std::locale::classic());
  rows_ << "picture,x,y";
  for (const char* name : kMeasurementNames) rows_ << "," << name;
  rows_ << ",kind" << (withDecisions_ ? ",decision,class_score,fit" : "") << "\n";
}

void PartsCsv::add(int picture, const Sighting& sighting, const Decision* decision) {
  const cv::Point middle = (sighting.blob.box.tl() + sighting.blob.box.br()) / 2;
  rows_ << picture << "," << middle.x << "," << middle.y;
  for (long i = 0; i < kNumMeasurements; ++i) {
    rows_ << ",";
    if (sighting.blob.pattern->isValid(i)) {
      rows_ << sighting.blob.pattern->featureMeasurement(i, true);
    }
  }
  rows_ << "," << (sighting.kinds.size() == 1 ? nameOf(sighting.kinds.front()) : "");
  if (withDecisions_) {
    rows_ << "," << textOf(*decision) << "," << decision->classScore << "," << decision->fit;
  }
  rows_ << "\n";
}

void PartsCsv::write() const {
  std::ofstream file(path_, std::ios::binary);
  file << rows_.str();
  file.close();
  if (!file) throw std::runtime_error(path_.string() + ": cannot be written");
}

}  // namespace parts
