// SPDX-License-Identifier: MIT
#include "tools/eval/confusion.h"

#include <vxclss/vxclss.h>

namespace eval {
namespace {

double share(long part, long whole) {
  return static_cast<double>(part) / static_cast<double>(whole);
}

}  // namespace

Confusion::Confusion(std::size_t numCategories)
    : cells_(numCategories, std::vector<std::vector<std::size_t>>(numCategories)) {}

void Confusion::add(long trueLabel, long decidedLabel, std::size_t which) {
  for (const long label : {trueLabel, decidedLabel}) {
    if (label < 0 || label >= numCategories()) {
      throw vxClassifierDefs::BadLabel(L"No category of the evaluation has this label");
    }
  }
  cells_[static_cast<std::size_t>(trueLabel)][static_cast<std::size_t>(decidedLabel)].push_back(
      which);
}

const std::vector<std::size_t>& Confusion::members(long trueLabel, long decidedLabel) const {
  return cells_.at(static_cast<std::size_t>(trueLabel)).at(static_cast<std::size_t>(decidedLabel));
}

long Confusion::count(long trueLabel, long decidedLabel) const {
  return static_cast<long>(members(trueLabel, decidedLabel).size());
}

long Confusion::numOf(long trueLabel) const {
  long sum = 0;
  for (long decided = 0; decided < numCategories(); ++decided) sum += count(trueLabel, decided);
  return sum;
}

long Confusion::numDecided(long decidedLabel) const {
  long sum = 0;
  for (long label = 0; label < numCategories(); ++label) sum += count(label, decidedLabel);
  return sum;
}

long Confusion::numPatterns() const {
  long sum = 0;
  for (long label = 0; label < numCategories(); ++label) sum += numOf(label);
  return sum;
}

long Confusion::numCorrect() const {
  long sum = 0;
  for (long label = 0; label < numCategories(); ++label) sum += count(label, label);
  return sum;
}

double Confusion::accuracy() const { return share(numCorrect(), numPatterns()); }

double Confusion::recall(long trueLabel) const {
  return share(count(trueLabel, trueLabel), numOf(trueLabel));
}

double Confusion::precision(long decidedLabel) const {
  return share(count(decidedLabel, decidedLabel), numDecided(decidedLabel));
}

double Confusion::f1(long label) const {
  return share(2 * count(label, label), numOf(label) + numDecided(label));
}

}  // namespace eval
