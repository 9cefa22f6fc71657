// SPDX-License-Identifier: MIT
#ifndef FUZZ_INPUT_FILE_H_
#define FUZZ_INPUT_FILE_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/target.h"

namespace fuzz {

/// An input as a file, for what reads by path. The file has no place on any disk.
class InputFile {
 public:
  InputFile() : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
    demand(descriptor_ >= 0, "a file in memory");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() { close(descriptor_); }

  /// The path under which it holds these bytes, until the next call.
  const std::string& holding(const std::uint8_t* data, std::size_t size) {
    demand(ftruncate(descriptor_, 0) == 0 &&
               pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
           "a write to memory");
    return path_;
  }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace fuzz

#endif  // FUZZ_INPUT_FILE_H_
