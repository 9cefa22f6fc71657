// SPDX-License-Identifier: MIT
#include "archive.h"

#include <istream>
#include <ostream>
#include <streambuf>

namespace vxpy {
namespace {

class StringSink : public std::streambuf {
 public:
  std::string text;

 protected:
  int_type overflow(int_type byte) override {
    if (!traits_type::eq_int_type(byte, traits_type::eof())) {
      text.push_back(traits_type::to_char_type(byte));
    }
    return traits_type::not_eof(byte);
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    text.append(bytes, static_cast<std::size_t>(count));
    return count;
  }
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
  StringSink sink;
  {
    std::ostream stream(&sink);
    vxOutputArchive archive(stream);
    store(archive);
  }
  return py::bytes(sink.text);
}

void loadBytes(const py::object& data, const std::function<void(vxArchive&)>& load) {
  if (PyObject_CheckBuffer(data.ptr()) == 0) {
    throw py::type_error("an archive is bytes or another object with a buffer, not " +
                         std::string(Py_TYPE(data.ptr())->tp_name));
  }
  const HeldBuffer bytes(data);
  MemorySource source(bytes);
  std::istream stream(&source);
  vxInputArchive archive(stream);
  load(archive);
  if (!source.isAtEnd()) throw vxArchive::Malformed(L"Bytes after the end");
}

}  // namespace vxpy
