// SPDX-License-Identifier: MIT
#include "archive.h"

#include <istream>
#include <optional>
#include <ostream>
#include <streambuf>
#include <utility>

#include "interrupts.h"

namespace vxpy {
namespace {

// Shorter archives are not worth to wait for the GIL again, which may take 5 ms each time.
constexpr std::size_t kShort = 65536;

/// Goes on without the GIL when the text becomes long.
class StringSink : public std::streambuf {
 public:
  std::string text() && {
    release_.reset();
    return std::move(text_);
  }

 protected:
  int_type overflow(int_type byte) override {
    if (!traits_type::eq_int_type(byte, traits_type::eof())) {
      text_.push_back(traits_type::to_char_type(byte));
      grown_();
    }
    return traits_type::not_eof(byte);
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    text_.append(bytes, static_cast<std::size_t>(count));
    grown_();
    return count;
  }

 private:
  void grown_() {
    if (!release_ && text_.size() > kShort) release_.emplace();
  }

  std::string text_;
  std::optional<py::gil_scoped_release> release_;
};

class MemorySource : public std::streambuf {
 public:
  explicit MemorySource(const Py_buffer& bytes) {
    char* const begin = static_cast<char*>(bytes.buf);  // only read
    setg(begin, begin, begin + bytes.len);
  }
  bool isAtEnd() const { return gptr() == egptr(); }
};

struct HeldBuffer : Py_buffer {
  explicit HeldBuffer(const py::object& owner) {
    if (PyObject_GetBuffer(owner.ptr(), this, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  HeldBuffer(const HeldBuffer&) = delete;
  HeldBuffer& operator=(const HeldBuffer&) = delete;
  ~HeldBuffer() { PyBuffer_Release(this); }
};

}  // namespace

py::bytes storedBytes(const std::function<void(vxArchive&)>& store) {
  const LibraryCall call;
  StringSink sink;
  {
    std::ostream stream(&sink);
    vxOutputArchive archive(stream);
    store(archive);
  }
  return py::bytes(std::move(sink).text());
}

void loadBytes(const py::object& data, const std::function<void(vxArchive&)>& load) {
  if (PyObject_CheckBuffer(data.ptr()) == 0) {
    throw py::type_error("an archive is bytes or another object with a buffer, not " +
                         std::string(Py_TYPE(data.ptr())->tp_name));
  }
  const HeldBuffer bytes(data);
  const LibraryCall call;
  std::optional<py::gil_scoped_release> release;
  if (static_cast<std::size_t>(bytes.len) > kShort) release.emplace();
  MemorySource source(bytes);
  std::istream stream(&source);
  vxInputArchive archive(stream);
  load(archive);
  if (!source.isAtEnd()) throw vxArchive::Malformed(L"Bytes after the end");
}

}  // namespace vxpy
