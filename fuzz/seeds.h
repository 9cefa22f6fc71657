// SPDX-License-Identifier: MIT
#ifndef FUZZ_SEEDS_H_
#define FUZZ_SEEDS_H_

#include <string>
#include <vector>

namespace fuzz {

/// What a target starts from without a corpus: for archived classes each golden archive, with the
/// object by pointer and in place, for the command's readers small files of each kind, for the
/// comparisons bytes of a fixed seed. Throws std::invalid_argument for an unknown target.
std::vector<std::string> seedsOf(const std::string& target);

}  // namespace fuzz

#endif  // FUZZ_SEEDS_H_
