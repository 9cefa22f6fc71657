// SPDX-License-Identifier: MIT
#ifndef TOOLS_OUTPUT_FILE_H_
#define TOOLS_OUTPUT_FILE_H_

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace cli {

/// Writes to a file descriptor and remembers why a write failed, which a std::ofstream forgets.
class DescriptorBuffer : public std::streambuf {
 public:
  DescriptorBuffer();

  void descriptor(int descriptor) { descriptor_ = descriptor; }

  /// The errno of the first write that failed, 0 if none did.
  int error() const { return error_; }

 protected:
  int_type overflow(int_type byte) override;
  int sync() override;

 private:
  int descriptor_ = -1;
  int error_ = 0;
  std::vector<char> buffer_;
};

/// A file that appears whole or not at all.
///
/// What is written goes to a temporary file beside it, which commit() moves into place; until then
/// an older file of the name stays as it was. Without a commit the temporary is removed. Through a
/// symbolic link the file that it leads to is replaced; permissions are kept.
class OutputFile {
 public:
  /// Throws InputError if the file can't be written, or exists and is not a regular file.
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  std::ostream& stream() { return stream_; }

  /// Throws InputError if any byte could not be written.
  void commit();

 private:
  [[noreturn]] void refuse_(int error) const;
  void createTemporary_();
  void discard_();

  std::string path_;
  std::string target_;
  std::string temporary_;
  int descriptor_ = -1;
  DescriptorBuffer buffer_;
  std::ostream stream_{&buffer_};
};

}  // namespace cli

#endif  // TOOLS_OUTPUT_FILE_H_
