// SPDX-License-Identifier: MIT
#ifndef TOOLS_VARIANTS_H_
#define TOOLS_VARIANTS_H_

#include <string>
#include <vector>

#include "tools/table.h"

namespace cli {

/// A technique with its parameters, as one would give them to train.
struct Variant {
  std::string name;                    // printable
  std::string method;                  // of --method
  std::vector<std::string> arguments;  // for train: "--method=knn", "--k=5"
};

/// What is worth a try on the data: nearest neighbours with some k and orders; Bayes with all
/// measurements independent, all dependent, and those that correlate; with frequencies as counted,
/// where categories differ in size; with binomial distributions, where measurements are counts.
std::vector<Variant> variantsFor(const Dataset& data);

}  // namespace cli

#endif  // TOOLS_VARIANTS_H_
