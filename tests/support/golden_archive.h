// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_GOLDEN_ARCHIVE_H_
#define TESTS_SUPPORT_GOLDEN_ARCHIVE_H_

#include <cstddef>
#include <string>
#include <vector>

/// One section of a file in tests/data/archives, whose README.md tells the form.
struct GoldenArchive {
  /// A version byte, and the name that an UnknownVersion carries where it has another value.
  struct Version {
    std::size_t offset;
    std::string name;
  };

  std::string sample;
  std::string bytes;
  std::vector<Version> versions;
};

/// All sections of a class's file, none if there is no such file.
std::vector<GoldenArchive> goldenArchives(const std::string& className);

/// The section of one sample; a failure of the test if there is none.
GoldenArchive goldenArchive(const std::string& className, const std::string& sample);

/// If the environment asks for it, puts `bytes` in place of a section's own, and keeps its notes.
void updateGoldenArchive(const std::string& className, const std::string& sample,
                         const std::string& bytes);

#endif  // TESTS_SUPPORT_GOLDEN_ARCHIVE_H_
