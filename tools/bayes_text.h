// SPDX-License-Identifier: MIT
#ifndef TOOLS_BAYES_TEXT_H_
#define TOOLS_BAYES_TEXT_H_

#include <vxclss/vxclss.h>

#include <string>

#include "tools/table.h"

namespace cli {

/// The categories of a trained Bayesian classifier in words: frequencies and densities.
std::string bayesText(const vx_ClassifierBayesian& classifier,
                      const vxClassifierFrequencies& frequencies, const Names& names);

}  // namespace cli

#endif  // TOOLS_BAYES_TEXT_H_
