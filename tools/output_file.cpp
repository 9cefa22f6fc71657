// SPDX-License-Identifier: MIT
#include "tools/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "tools/error.h"
#include "tools/stop.h"

namespace cli {
namespace fs = std::filesystem;

DescriptorBuffer::DescriptorBuffer() : buffer_(std::size_t{1} << 16) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type byte) {
  if (sync() != 0) return traits_type::eof();
  if (traits_type::eq_int_type(byte, traits_type::eof())) return traits_type::not_eof(byte);
  return sputc(traits_type::to_char_type(byte));
}

int DescriptorBuffer::sync() {
  const char* next = pbase();
  while (error_ == 0 && next != pptr()) {
    const ssize_t written = write(descriptor_, next, static_cast<std::size_t>(pptr() - next));
    if (written >= 0) {
      next += written;
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return error_ == 0 ? 0 : -1;
}

OutputFile::OutputFile(const std::string& path) : path_(path), target_(path) {
  if (path.empty()) throw InputError("the output file has no name");
  struct stat existing = {};
  const bool exists = stat(path.c_str(), &existing) == 0;
  if (exists) {
    if (S_ISDIR(existing.st_mode)) throw InputError(path + ": is a directory");
    // Replacing a device or a pipe by a file would be no favour, /dev/null least of all.
    if (!S_ISREG(existing.st_mode)) throw InputError(path + ": is not a regular file");
    if (access(path.c_str(), W_OK) != 0) refuse_(errno);
    target_ = fs::canonical(path).string();
  }
  createTemporary_();
  buffer_.descriptor(descriptor_);
  if (exists && fchmod(descriptor_, existing.st_mode & 07777) != 0) {
    const int error = errno;
    discard_();
    refuse_(error);
  }
}

OutputFile::~OutputFile() { discard_(); }

void OutputFile::commit() {
  errno = EIO;  // for a stream that failed without its buffer
  stream_.flush();
  if (!stream_ || fsync(descriptor_) != 0 ||
      std::rename(temporary_.c_str(), target_.c_str()) != 0) {
    const int error = buffer_.error() != 0 ? buffer_.error() : errno;
    discard_();
    refuse_(error);
  }
  temporary_.clear();
  discard_();
}

void OutputFile::createTemporary_() {
  const fs::path directory = fs::path(target_).parent_path();
  for (int attempt = 0; attempt < 1000; ++attempt) {
    // Known to the signal handler before it is there. Should it be there already, then from a
    // process that is gone, or from this one, which is about to be.
    temporary_ = (directory / fmt::format(".vxclss-{}-{}.tmp", getpid(), attempt)).string();
    removeWhenKilled(temporary_.c_str());
    descriptor_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ >= 0) return;
    const int error = errno;
    removeWhenKilled(nullptr);
    temporary_.clear();
    errno = error;
    if (error != EEXIST) break;
  }
  refuse_(errno);
}

void OutputFile::discard_() {
  removeWhenKilled(nullptr);
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

void OutputFile::refuse_(int error) const {
  throw InputError(fmt::format("{}: {}", path_, std::strerror(error)));
}

}  // namespace cli
