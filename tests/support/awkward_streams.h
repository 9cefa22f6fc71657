// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_AWKWARD_STREAMS_H_
#define TESTS_SUPPORT_AWKWARD_STREAMS_H_

#include <algorithm>
#include <cstddef>
#include <streambuf>
#include <string>
#include <utility>

/// Takes a number of bytes and no more, as a full disk does.
class FullDisk : public std::streambuf {
 public:
  explicit FullDisk(std::size_t room) : room_(room) {}
  const std::string& bytes() const { return bytes_; }

 protected:
  int_type overflow(int_type character) override {
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const std::size_t size = std::min(static_cast<std::size_t>(count), room_ - bytes_.size());
    bytes_.append(bytes, size);
    return static_cast<std::streamsize>(size);
  }

 private:
  std::size_t room_;
  std::string bytes_;
};

/// Throws Broken from every read and write once a number of bytes has passed.
class BrokenDevice : public std::streambuf {
 public:
  struct Broken {};

  explicit BrokenDevice(std::string bytes) : bytes_(std::move(bytes)) {}

 protected:
  int_type overflow(int_type) override { throw Broken(); }
  std::streamsize xsputn(const char*, std::streamsize) override { throw Broken(); }
  int_type underflow() override {
    if (next_ == bytes_.size()) throw Broken();
    setg(&bytes_[next_], &bytes_[next_], &bytes_[next_] + 1);
    ++next_;
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string bytes_;
  std::size_t next_ = 0;
};

#endif  // TESTS_SUPPORT_AWKWARD_STREAMS_H_
