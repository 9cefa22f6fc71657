// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_FAULTY_DEVICE_H_
#define TESTS_SUPPORT_FAULTY_DEVICE_H_

#include <algorithm>
#include <cstddef>
#include <ios>
#include <streambuf>
#include <string>
#include <utility>

enum class DeviceFault { kEnds, kFails, kThrows };

/// Reads from bytes or writes to some, and takes no memory for it. At one byte it may fault: end
/// there, set the fail bit of its stream, or throw Broken. It holds one byte ready, as a stream
/// that waits for each would.
class FaultyDevice : public std::streambuf {
 public:
  struct Broken {};

  explicit FaultyDevice(std::string toRead) : toRead_(std::move(toRead)) {}
  explicit FaultyDevice(std::size_t room) { written_.reserve(room); }

  void faultAt(std::size_t byte, DeviceFault fault, std::ios& stream) {
    at_ = byte;
    fault_ = fault;
    stream_ = &stream;
  }
  void repair() { stream_ = nullptr; }

  /// Holds all bytes ready, as a stream of a text in memory does.
  void offerAll() {
    setg(toRead_.data(), toRead_.data(), toRead_.data() + toRead_.size());
    next_ = toRead_.size();
  }

  /// How many bytes were read, and which ones were written.
  std::size_t numRead() const { return next_ - static_cast<std::size_t>(egptr() - gptr()); }
  const std::string& written() const { return written_; }

 protected:
  int_type underflow() override {
    if (next_ == toRead_.size() || isFault(next_)) return traits_type::eof();
    setg(&toRead_[next_], &toRead_[next_], &toRead_[next_] + 1);
    ++next_;
    return traits_type::to_int_type(*gptr());
  }
  int_type overflow(int_type character) override {
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    for (std::streamsize i = 0; i < count; ++i) {
      if (written_.size() == written_.capacity() || isFault(written_.size())) return i;
      written_ += bytes[i];
    }
    return count;
  }

 private:
  bool isFault(std::size_t byte) const {
    if (stream_ == nullptr || byte < at_) return false;
    if (fault_ == DeviceFault::kThrows) throw Broken();
    if (fault_ == DeviceFault::kFails) stream_->setstate(std::ios_base::failbit);
    return true;
  }

  std::string toRead_;
  std::size_t next_ = 0;
  std::string written_;
  std::size_t at_ = 0;
  DeviceFault fault_ = DeviceFault::kEnds;
  std::ios* stream_ = nullptr;
};

#endif  // TESTS_SUPPORT_FAULTY_DEVICE_H_
