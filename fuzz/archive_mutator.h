// SPDX-License-Identifier: MIT
#ifndef FUZZ_ARCHIVE_MUTATOR_H_
#define FUZZ_ARCHIVE_MUTATOR_H_

#include <cstddef>
#include <cstdint>

// What libFuzzer calls, and what it brings itself (https://llvm.org/docs/LibFuzzer.html).
extern "C" {
std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed);
std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize,
                                      const std::uint8_t* second, std::size_t secondSize,
                                      std::uint8_t* out, std::size_t maxSize, unsigned seed);
}

#endif  // FUZZ_ARCHIVE_MUTATOR_H_
