// SPDX-License-Identifier: MIT
#ifndef FUZZ_CORPUS_H_
#define FUZZ_CORPUS_H_

#include <string>
#include <vector>

namespace fuzz {

/// The inputs of one target in one file: for each the number of its bytes, in two bytes, the low
/// one first, and the bytes.
std::vector<std::string> readCorpus(const std::string& path);

/// Throws std::length_error for an input that two bytes can't count.
void writeCorpus(const std::string& path, const std::vector<std::string>& inputs);

}  // namespace fuzz

#endif  // FUZZ_CORPUS_H_
