// SPDX-License-Identifier: MIT
#ifndef FUZZ_BYTE_STREAMS_H_
#define FUZZ_BYTE_STREAMS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <streambuf>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace fuzz {

/// Reads an input where it lies.
class ByteSource : public std::streambuf {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) {
    char* const begin = const_cast<char*>(reinterpret_cast<const char*>(data));
    setg(begin, begin, begin + size);
  }

  std::size_t consumed() const { return static_cast<std::size_t>(gptr() - eback()); }
};

/// Reads an input and writes down each transfer. It holds nothing ready, because an archive takes
/// what a buffer holds ready without a call.
class TracedSource : public std::streambuf {
 public:
  TracedSource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  const std::vector<Token>& tokens() const { return tokens_; }

 protected:
  std::streamsize xsgetn(char* to, std::streamsize count) override {
    const std::size_t read = std::min(static_cast<std::size_t>(count), size_ - offset_);
    if (read == 0) return 0;
    std::copy_n(data_ + offset_, read, to);
    tokens_.push_back({offset_, read});
    offset_ += read;
    return static_cast<std::streamsize>(read);
  }
  int_type underflow() override {
    return offset_ == size_ ? traits_type::eof() : static_cast<int_type>(data_[offset_]);
  }
  int_type uflow() override {
    return offset_ == size_ ? traits_type::eof() : static_cast<int_type>(data_[offset_++]);
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t offset_ = 0;
  std::vector<Token> tokens_;
};

class ByteSink : public std::streambuf {
 public:
  std::string bytes;

 protected:
  std::streamsize xsputn(const char* from, std::streamsize count) override {
    bytes.append(from, static_cast<std::size_t>(count));
    return count;
  }
  int_type overflow(int_type byte) override {
    if (byte != traits_type::eof()) bytes.push_back(traits_type::to_char_type(byte));
    return traits_type::not_eof(byte);
  }
};

}  // namespace fuzz

#endif  // FUZZ_BYTE_STREAMS_H_
