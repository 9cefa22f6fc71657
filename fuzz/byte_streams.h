// SPDX-License-Identifier: MIT
#ifndef FUZZ_BYTE_STREAMS_H_
#define FUZZ_BYTE_STREAMS_H_

#include <cstddef>
#include <cstdint>
#include <streambuf>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace fuzz {

/// Reads an input where it lies, and writes down each transfer if asked to.
class ByteSource : public std::streambuf {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size, std::vector<Token>* tokens = nullptr)
      : tokens_(tokens) {
    char* const begin = const_cast<char*>(reinterpret_cast<const char*>(data));
    setg(begin, begin, begin + size);
  }

  std::size_t consumed() const { return static_cast<std::size_t>(gptr() - eback()); }

 protected:
  std::streamsize xsgetn(char* to, std::streamsize count) override {
    const std::size_t offset = consumed();
    const std::streamsize read = std::streambuf::xsgetn(to, count);
    if (tokens_ != nullptr && read > 0)
      tokens_->push_back({offset, static_cast<std::size_t>(read)});
    return read;
  }

 private:
  std::vector<Token>* tokens_;
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
